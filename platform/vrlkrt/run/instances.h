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
    /// Takes an instance out, and tells whose it was; it lives on with the evaluations that are under way. Throws as
    /// `find`.
    vrlLibrary end(void* handle);
    /// Takes all of an owner out, needing no memory for it.
    void endAll(vrlLibrary owner) noexcept;

    /// A hold on an instance, for the length of a call. Throws vrlBaseException for 0, a foreign or a stale handle.
    std::shared_ptr<Instance> find(void* handle);
    /// Handle of the instance of an owner created last that lives; null when there is none.
    void* newest(vrlLibrary owner);

private:
    using Instances = std::map<std::uintptr_t, std::shared_ptr<Instance>>;
    Instances::iterator locate(void* handle);

    std::mutex mutex_;
    std::uintptr_t lastHandle_ = 0;
    Instances instances_;
};

InstanceRegistry& instances();

}  // namespace vrlkrt
