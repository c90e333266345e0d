#include "../qx/nanbits.h"
#include "qx/arrayowner.h"

#include <cstdint>
#include <cstdlib>

/// Bytes that qxDeserialize takes must be the very bytes that qxSerialize makes of the array, but for the bits of a
/// NaN, and no array stays behind.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
    const std::size_t before = qxLiveArrayCount();
    {
        const qxArrayOwner array(qxDeserialize(bytes, count));
        if (array) {
            const qxArrayOwner form(qxSerialize(array.get()));
            if (!form || qxGetN(form.get()) != count ||
                !differInNaNsOnly(bytes, static_cast<const unsigned char*>(form->realData()), count)) {
                std::abort();
            }
            static_cast<void>(qxToText(array.get()));
        }
    }
    if (qxLiveArrayCount() != before) {
        std::abort();
    }
    return 0;
}
