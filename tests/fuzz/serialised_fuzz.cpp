#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "qx/arrayowner.h"

/// Bytes that qxDeserialize takes must be the very bytes that qxSerialize makes of the array, and no array stays
/// behind.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
    const std::size_t before = qxLiveArrayCount();
    {
        const qxArrayOwner array(qxDeserialize(bytes, count));
        if (array) {
            const qxArrayOwner form(qxSerialize(array.get()));
            if (!form || qxGetN(form.get()) != count || std::memcmp(form->realData(), bytes, count) != 0) {
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
