#include "entry/javastringargv.h"

#include "proxies/jobjectarrayproxy.h"

#include <cstdlib>
#include <memory>

namespace nativevrl {

namespace {

struct MallocBlockEnd {
    void operator()(const char** block) const noexcept { std::free(block); }
};

}  // namespace

JavaStringArgv::JavaStringArgv(JNIEnv* env, jobjectArray strings) {
    JObjectArrayProxy<JStringProxy> array(env, strings);
    proxies_.reserve(static_cast<std::size_t>(array.length()));
    for (jsize i = 0; i < array.length(); ++i) {
        proxies_.push_back(array.get(i));
    }
    const std::size_t count = proxies_.size();
    std::unique_ptr<const char*, MallocBlockEnd> block;
    const char** storage = inlineSlots_;
    if (count > inlineSlotCount) {
        block.reset(static_cast<const char**>(std::malloc(count * sizeof(const char*))));
        storage = block.get();
    }
    if (storage != nullptr) {
        for (std::size_t i = 0; i < count; ++i) {
            storage[i] = proxies_[i].getStringUTFChars();
        }
        static_cast<void>(block.release());  // freed by the destructor
        argv_ = storage;
        count_ = static_cast<unsigned>(count);
    }
}

JavaStringArgv::~JavaStringArgv() {
    proxies_ = {};
    if (argv_ != inlineSlots_) {
        std::free(argv_);
    }
}

}  // namespace nativevrl
