#include "jzi/jzi.h"

namespace jzi {

JavaVMConfig::JavaVMConfig() = default;
JavaVMConfig::~JavaVMConfig() = default;

}  // namespace jzi

JavaVMConfigException::JavaVMConfigException(const std::string& message) : std::runtime_error(message) {}
JavaVMConfigException::~JavaVMConfigException() = default;
