#pragma once

#include "krt/component.h"
#include "vrlkrt/archive/filestate.h"

#include <atomic>
#include <memory>
#include <optional>
#include <string>

namespace vrlkrt {

/// The shared object of a component, mapped for as long as somebody holds this.
class ComponentLibrary {
public:
    /// Maps the file, which must be in `state` before and after, where that is given. Throws vrlBaseException that
    /// names the component, the file and what is wrong with it, or what the loader says.
    ComponentLibrary(const std::string& component, const std::string& file,
                     const std::optional<FileState>& state = std::nullopt);
    /// Unmaps it, unless it is to stay.
    ~ComponentLibrary();
    ComponentLibrary(const ComponentLibrary&) = delete;
    ComponentLibrary& operator=(const ComponentLibrary&) = delete;

    /// Null when the library itself defines no such function: what it links has names of its own, such as `log`.
    krtEntry entry(const std::string& symbol) const;

    /// Keeps the library mapped for good: a thread of the component runs its code, and nobody can tell until when.
    void pin() noexcept { pinned_ = true; }

private:
    struct Close {
        void operator()(void* library) const noexcept;
    };
    std::unique_ptr<void, Close> library_;
    std::atomic<bool> pinned_{false};
};

}  // namespace vrlkrt
