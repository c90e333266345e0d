#pragma once

#include "proxies/jstringproxy.h"

#include <cstdlib>
#include <memory>
#include <vector>

namespace nativevrl {

/// A Java String[] as an array of NUL-terminated strings for the length of one call. A null array counts as empty,
/// and a null element is a null pointer in its place. When there is no memory for the pointers it stays empty.
class JavaStringArgv {
public:
    static constexpr unsigned inlineSlotCount = 5;

    JavaStringArgv(JNIEnv* env, jobjectArray strings);
    JavaStringArgv(const JavaStringArgv&) = delete;
    JavaStringArgv& operator=(const JavaStringArgv&) = delete;

    unsigned count() const noexcept { return count_; }
    const char** argv() noexcept { return argv_; }
    bool isInline() const noexcept { return argv_ == inlineSlots_; }

private:
    struct BlockEnd {
        void operator()(const char** block) const noexcept { std::free(block); }
    };

    unsigned count_ = 0;
    const char** argv_ = nullptr;  ///< one of the two below; null while there is no memory
    const char* inlineSlots_[inlineSlotCount] = {};
    std::unique_ptr<const char*, BlockEnd> block_;
    std::vector<JStringProxy> proxies_;  ///< owns the characters that argv_ points to, and ends first
};

}  // namespace nativevrl
