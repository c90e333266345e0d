#pragma once

#include "boundary/arrayhandle.h"
#include "proxies/javalength.h"
#include "proxies/jnvarrayproxy.h"
#include "proxies/jobjectarrayproxy.h"
#include "qx/arrayowner.h"

#include <cstddef>

namespace nativevrl {

/// Row of NVArray wrappers around the slots of a cell, struct or function handle array, which keeps them: each wrapper
/// owns a shared copy, and Java owes it a destroy. A null slot gives a real 0-by-0 double array.
class SlotLeaf {
public:
    using Element = qxArray*;
    static const char* className() { return "[Lcom/norvane/toolbox/loomkit/NVArray;"; }

    SlotLeaf(JNIEnv* env, std::size_t length) : row_(env, javaLength(env, length)) {}

    void write(std::size_t at, qxArray* const* begin, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            const JObjectRef wrapper = wrapped(begin[i]);
            row_.set(static_cast<jsize>(at + i), wrapper.ref());
        }
    }

    [[nodiscard]] jobject detach() { return row_.detach(); }

private:
    JObjectRef wrapped(const qxArray* slot) {
        qxArrayOwner copy(slot != nullptr ? qxCreateSharedDataCopy(slot) : qxCreateDoubleMatrix(0, 0, qxREAL));
        freeForJava(copy.get());
        JObjectRef wrapper(row_.env(), nullptr);
        wrapper.attach(NewJNVArrayProxy(row_.env(), copy.get()).detach());
        static_cast<void>(copy.release());
        return wrapper;
    }

    NewJObjectArrayProxy<JNVArrayProxy> row_;
};

}  // namespace nativevrl
