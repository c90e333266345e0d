#pragma once

#include "vrlkrt/run/instance.h"

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>

namespace vrlkrt {

/// The instances that live. A handle is a number that is never given twice, so that a stale one is always found out.
class InstanceRegistry {
public:
    /// A handle for an instance to come.
    void* newHandle();
    void add(std::shared_ptr<Instance> instance);
    /// Takes an instance out; it lives on with the evaluations that are under way. Throws as `find`.
    void end(void* handle);
    /// Takes all of them out, needing no memory for it.
    void endAll() noexcept;

    /// A hold on an instance, for the length of a call. Throws vrlBaseException for 0, a foreign or a stale handle.
    std::shared_ptr<Instance> find(void* handle);
    /// Handle of the instance created last that lives; null when there is none.
    void* newest();

private:
    using Instances = std::map<std::uintptr_t, std::shared_ptr<Instance>>;
    Instances::iterator locate(void* handle);

    std::mutex mutex_;
    std::uintptr_t lastHandle_ = 0;
    Instances instances_;
};

InstanceRegistry& instances();

}  // namespace vrlkrt
