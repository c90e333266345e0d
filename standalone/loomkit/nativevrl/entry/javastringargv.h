#pragma once

#include "proxies/jstringproxy.h"

#include <vector>

namespace nativevrl {

/// A Java String[] as an array of NUL-terminated strings for the length of one call. A null array counts as empty,
/// and a null element is a null pointer in its place. When there is no memory for the pointers it stays empty.
class JavaStringArgv {
public:
    static constexpr unsigned inlineSlotCount = 5;

    JavaStringArgv(JNIEnv* env, jobjectArray strings);
    ~JavaStringArgv();
    JavaStringArgv(const JavaStringArgv&) = delete;
    JavaStringArgv& operator=(const JavaStringArgv&) = delete;

    unsigned count() const noexcept { return count_; }
    const char** argv() noexcept { return argv_; }
    bool isInline() const noexcept { return argv_ == inlineSlots_; }

private:
    unsigned count_ = 0;
    const char** argv_ = nullptr;
    const char* inlineSlots_[inlineSlotCount] = {};
    std::vector<JStringProxy> proxies_;  ///< owns the characters that argv_ points to
};

}  // namespace nativevrl
