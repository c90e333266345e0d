#include "vrlkrt/run/instances.h"

#include "vrlbase/exceptions.h"

#include <algorithm>
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

vrlLibrary InstanceRegistry::end(void* handle) {
    // Dropped after the lock: ending the last hold runs code of the component and of its handlers.
    Instances::node_type ended;
    const std::lock_guard<std::mutex> lock(mutex_);
    ended = instances_.extract(locate(handle));
    return ended.mapped()->owner();
}

void InstanceRegistry::endAll(vrlLibrary owner) noexcept {
    Instances ended;
    const std::lock_guard<std::mutex> lock(mutex_);
    for (auto next = instances_.begin(); next != instances_.end();) {
        const auto instance = next++;
        if (instance->second->owner() == owner) {
            ended.insert(instances_.extract(instance));
        }
    }
}

std::shared_ptr<Instance> InstanceRegistry::find(void* handle) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return locate(handle)->second;
}

void* InstanceRegistry::newest(vrlLibrary owner) {
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = std::find_if(instances_.rbegin(), instances_.rend(),
                                    [owner](const auto& entry) { return entry.second->owner() == owner; });
    return found == instances_.rend() ? nullptr : toHandle(found->first);
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
