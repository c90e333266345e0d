#pragma once

#include "vrlkrt/archive/filestate.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

/// One function of a component, as its manifest states it. A count that is not given is not checked.
struct vrlComponentFunction {
    std::string name;    ///< what callers say
    std::string symbol;  ///< entry in the component's library
    std::string help;    ///< one line; may be empty
    std::optional<int> minimumInputs;
    std::optional<int> maximumInputs;
    std::optional<int> maximumOutputs;
};

/// A component whose files lie in a folder and are whole.
class vrlExtractedComponent {
public:
    std::string folder;  ///< absolute path of the folder that the archive was extracted to
    std::string name;
    std::string version;
    int abi = 0;              ///< the krtAbi that the component was built for
    std::string libraryFile;  ///< absolute path of the shared object for this platform
    std::optional<vrlkrt::FileState>
        libraryState;  ///< of that file when its content was compared; not given: not checked
    std::vector<vrlComponentFunction> functions;
    std::shared_ptr<void> lease;  ///< keeps the folder in use for as long as somebody holds it
};
