#pragma once

#include "archivetesting.h"

#include "qx/arrayowner.h"

#include <string>
#include <vector>

/// The display form of an array without its last line end.
std::string shownText(const qxArrayOwner& array);

/// An instance of a component for a test, with what it printed.
class ComponentRun {
public:
    explicit ComponentRun(const std::string& archive);
    ~ComponentRun();
    ComponentRun(const ComponentRun&) = delete;
    ComponentRun& operator=(const ComponentRun&) = delete;

    /// Throws vrlBaseException where the function fails. Inputs are borrowed; results may be null.
    std::vector<qxArrayOwner> call(const std::string& function, int nlhs, const std::vector<const qxArray*>& inputs);
    /// The same with inputs written as `kpa call` takes them: "[1 2]", "'text'", "@name".
    std::vector<qxArrayOwner> callWith(const std::string& function, int nlhs, const std::vector<std::string>& words);

    std::string errors;
    std::string output;

private:
    TestFolder folder_;
    void* handle_ = nullptr;
};
