#include "vrlkrt/run/builtins.h"

#include "qx/arrayowner.h"
#include "vrlkrt/run/call.h"

#include <new>

namespace vrlkrt {

namespace {

qxArray* checked(qxArray* array) {
    if (array == nullptr) {
        throw std::bad_alloc();
    }
    return array;
}

/// A cell column with one text of each function of the manifest.
qxArray* textColumn(const std::vector<vrlComponentFunction>& functions, std::string vrlComponentFunction::*text) {
    qxArray* column = checked(qxCreateCellMatrix(static_cast<std::uint32_t>(functions.size()), 1));
    for (std::size_t i = 0; i < functions.size(); ++i) {
        qxSetCell(column, i, checked(qxCreateString((functions[i].*text).c_str())));
    }
    return column;
}

void listFunctions(krtCall* call, int nlhs, qxArray** plhs, int, qxArray* const*) {
    const auto& functions = call->instance->description().functions;
    plhs[0] = textColumn(functions, &vrlComponentFunction::name);
    if (nlhs > 1) {
        plhs[1] = textColumn(functions, &vrlComponentFunction::help);
    }
}

void describeComponent(krtCall* call, int, qxArray** plhs, int, qxArray* const*) {
    const vrlExtractedComponent& component = call->instance->description();
    const char* fields[] = {"name", "version", "abi", "functions"};
    plhs[0] = checked(qxCreateStructMatrix(1, 1, 4, fields));
    qxSetCell(plhs[0], 0, checked(qxCreateString(component.name.c_str())));
    qxSetCell(plhs[0], 1, checked(qxCreateString(component.version.c_str())));
    qxSetCell(plhs[0], 2, checked(qxCreateDoubleScalar(component.abi)));
    qxSetCell(plhs[0], 3, checked(qxCreateDoubleScalar(static_cast<double>(component.functions.size()))));
}

RunnableFunction builtin(const char* name, const char* help, int maximumOutputs, krtEntry entry) {
    return {{name, "", help, 0, 0, maximumOutputs}, entry};
}

}  // namespace

std::map<std::string, RunnableFunction> builtinFunctions() {
    return {{"krt.functions", builtin("krt.functions", "Names and help of the functions.", 2, listFunctions)},
            {"krt.info", builtin("krt.info", "Name, version, abi and number of functions.", 1, describeComponent)}};
}

}  // namespace vrlkrt
