#pragma once

/// What an instance's component is and can do.

#include <string>
#include <vector>

struct vrlFunctionInfo {
    std::string name;
    std::string help;  ///< one line; may be empty
};

struct vrlComponentInfo {
    std::string name;
    std::string version;
    int abi = 0;
    std::vector<vrlFunctionInfo> functions;  ///< in the order of the manifest
};

/// The component behind a handle. Throws vrlBaseException for 0, a foreign or a stale one.
///
/// Callers that have only evaluation get the same through two functions that every component has:
/// `[names, helps] = krt.functions()`, two cell columns of text, and `info = krt.info()`, a struct with
/// the fields name, version, abi and functions (their number).
vrlComponentInfo vrlGetComponentInfo(void* handle);
