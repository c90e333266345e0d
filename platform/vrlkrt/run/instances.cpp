#include "vrlkrt/run/instances.h"

#include "vrlbase/exceptions.h"

#include <utility>

namespace vrlkrt {

namespace {

using Norvane::vrl::vrlBaseException;

void* toHandle(std::uintptr_t number) { return reinterpret_cast<void*>(number); }

std::uintptr_t toNumber(void* handle) { return reinterpret_cast<std::uintptr_t>(handle); }

}  // namespace

void* InstanceRegistry::newHandle() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return toHandle(++lastHandle_);
}

void InstanceRegistry::add(std::shared_ptr<Instance> instance) {
    const std::uintptr_t number = toNumber(instance->handle());
    const std::lock_guard<std::mutex> lock(mutex_);
    instances_.emplace(number, std::move(instance));
}

void InstanceRegistry::end(void* handle) {
    // Dropped after the lock: ending the last hold runs code of the component and of its handlers.
    Instances::node_type ended;
    const std::lock_guard<std::mutex> lock(mutex_);
    ended = instances_.extract(locate(handle));
}

void InstanceRegistry::endAll() noexcept {
    Instances ended;
    const std::lock_guard<std::mutex> lock(mutex_);
    ended.swap(instances_);
}

std::shared_ptr<Instance> InstanceRegistry::find(void* handle) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return locate(handle)->second;
}

void* InstanceRegistry::newest() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return instances_.empty() ? nullptr : toHandle(instances_.rbegin()->first);
}

InstanceRegistry::Instances::iterator InstanceRegistry::locate(void* handle) {
    if (handle == nullptr) {
        throw vrlBaseException("the handle of the component instance is null");
    }
    const auto found = instances_.find(toNumber(handle));
    if (found == instances_.end()) {
        throw vrlBaseException(toNumber(handle) <= lastHandle_ ? "the component instance has been ended"
                                                               : "there is no component instance of this handle");
    }
    return found;
}

InstanceRegistry& instances() {
    // Left to the process's end: its handlers hold references of a virtual machine that may be gone by then.
    static InstanceRegistry& instance = *new InstanceRegistry;
    return instance;
}

}  // namespace vrlkrt
