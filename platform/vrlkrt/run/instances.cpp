#include "vrlkrt/run/instances.h"

#include "vrlbase/exceptions.h"

#include <utility>
#include <vector>

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

void InstanceRegistry::add(std::shared_ptr<LoadedComponent> component) {
    auto object = std::make_unique<Instance>();
    const std::uintptr_t number = toNumber(component->handle());
    const std::lock_guard<std::mutex> lock(mutex_);
    entries_[number] = {std::move(object), std::move(component)};
}

void InstanceRegistry::end(void* handle) {
    // Dropped after the lock: ending the last hold runs code of the component and of its handlers.
    std::shared_ptr<LoadedComponent> ended;
    const std::lock_guard<std::mutex> lock(mutex_);
    ended.swap(entry(handle).component);
}

void InstanceRegistry::endAll() {
    std::vector<std::shared_ptr<LoadedComponent>> ended;
    const std::lock_guard<std::mutex> lock(mutex_);
    for (auto& [number, entry] : entries_) {
        ended.push_back(std::move(entry.component));
    }
}

std::shared_ptr<LoadedComponent> InstanceRegistry::find(void* handle) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return entry(handle).component;
}

krtInstance* InstanceRegistry::object(void* handle) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return entry(handle).object.get();
}

void* InstanceRegistry::newest() {
    const std::lock_guard<std::mutex> lock(mutex_);
    for (auto entry = entries_.rbegin(); entry != entries_.rend(); ++entry) {
        if (entry->second.component != nullptr) {
            return toHandle(entry->first);
        }
    }
    return nullptr;
}

InstanceRegistry::Entry& InstanceRegistry::entry(void* handle) {
    if (handle == nullptr) {
        throw vrlBaseException("the handle of the component instance is null");
    }
    const auto found = entries_.find(toNumber(handle));
    if (found == entries_.end()) {
        throw vrlBaseException("there is no component instance of this handle");
    }
    if (found->second.component == nullptr) {
        throw vrlBaseException("the component instance has been ended");
    }
    return found->second;
}

InstanceRegistry& instances() {
    // Left to the process's end: its handlers hold references of a virtual machine that may be gone by then.
    static InstanceRegistry& instance = *new InstanceRegistry;
    return instance;
}

}  // namespace vrlkrt
