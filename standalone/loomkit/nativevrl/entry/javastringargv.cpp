#include "entry/javastringargv.h"

#include "proxies/jobjectarrayproxy.h"

namespace nativevrl {

JavaStringArgv::JavaStringArgv(JNIEnv* env, jobjectArray strings) {
    JObjectArrayProxy<JStringProxy> array(env, strings);
    proxies_.reserve(static_cast<std::size_t>(array.length()));
    for (jsize i = 0; i < array.length(); ++i) {
        proxies_.push_back(array.get(i));
    }
    const std::size_t count = proxies_.size();
    if (count > inlineSlotCount) {
        block_.reset(static_cast<const char**>(std::malloc(count * sizeof(const char*))));
    }
    argv_ = count > inlineSlotCount ? block_.get() : inlineSlots_;
    if (argv_ != nullptr) {
        for (std::size_t i = 0; i < count; ++i) {
            argv_[i] = proxies_[i].getStringUTFChars();
        }
        count_ = static_cast<unsigned>(count);
    }
}

}  // namespace nativevrl
