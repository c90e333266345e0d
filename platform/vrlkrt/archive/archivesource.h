#pragma once

#include <memory>
#include <string>

namespace vrlkrt {

/// Where an extractor has its archive from.
class KpaSource {
public:
    virtual ~KpaSource() = default;
    /// The bytes of the archive, never null; the same at each call. Throws vrlBaseException. Callable from any thread.
    virtual std::shared_ptr<const std::string> bytes() = 0;
};

}  // namespace vrlkrt
