#pragma once

#include "krt/krtinstance.h"
#include "vrlkrt/run/component.h"

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>

namespace vrlkrt {

/// An instance. The object stays for the process's life; what it runs goes when it is ended.
class Instance : public krtInstance {};

/// All instances. A handle is a number that is never given twice, so that a stale one is always found out.
class InstanceRegistry {
public:
    /// A handle for an instance to come.
    void* newHandle();
    void add(std::shared_ptr<LoadedComponent> component);
    /// Takes an instance out; what it runs lives on with the evaluations that are under way. Throws as `find`.
    void end(void* handle);
    void endAll();

    /// Throws vrlBaseException for 0, a foreign or a stale handle.
    std::shared_ptr<LoadedComponent> find(void* handle);
    /// The object of an instance that lives. Throws as `find`.
    krtInstance* object(void* handle);
    /// Handle of the instance created last that lives; null when there is none.
    void* newest();

private:
    struct Entry {
        std::unique_ptr<Instance> object;
        std::shared_ptr<LoadedComponent> component;  ///< null once ended
    };
    Entry& entry(void* handle);

    std::mutex mutex_;
    std::uintptr_t lastHandle_ = 0;
    std::map<std::uintptr_t, Entry> entries_;
};

InstanceRegistry& instances();

}  // namespace vrlkrt
