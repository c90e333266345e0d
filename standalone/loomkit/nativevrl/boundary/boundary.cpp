#include "boundary/boundary.h"

namespace nativevrl {

void throwRuntimeFailure(JNIEnv* env, std::string& prefix, const std::exception& failure) {
    prefix += failure.what();
    tether::throwNamedException(env, nvExceptionClass, prefix.c_str());
}

}  // namespace nativevrl
