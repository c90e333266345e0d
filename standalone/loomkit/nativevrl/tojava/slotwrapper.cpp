#include "tojava/slotwrapper.h"

#include "boundary/arrayhandle.h"

namespace nativevrl {

jobject wrapSlot(JNIEnv* env, const qxArray* slot) {
    return wrap(env, qxArrayOwner(slot == nullptr ? qxCreateDoubleMatrix(0, 0, qxREAL) : qxCreateSharedDataCopy(slot)));
}

}  // namespace nativevrl
