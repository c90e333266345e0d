#include "testcomponent.h"

#include "krt/component.h"
#include "vrlbase/vrlbase.h"

#include <algorithm>
#include <utility>

namespace {

vrlComponentFunction function(const char* name, const char* symbol) {
    return {name, symbol, std::string("Help of ") + name + ".", {}, {}, {}};
}

}  // namespace

vrlLibrary ourselves() { return vrlLibraryAt(reinterpret_cast<const void*>(&ourselves)); }

vrlExtractedComponent describeTestComponent() {
    vrlExtractedComponent component;
    component.name = "testing";
    component.version = "1.2.3";
    component.abi = KRT_ABI;
    component.libraryFile = TEST_COMPONENT;
    component.functions = {function("failInner", "fail_inner"), function("failOuter", "fail_outer")};
    for (const char* name :
         {"count",          "fail_library",    "fail_foreign", "fail_memory",      "fail_with_arrays",
          "recover",        "recurse",         "repeat",       "make_handle",      "read",
          "raw_throw",      "identity",        "shared_copy",  "pair_of_input",    "pair_of_copies",
          "element",        "element_in_cell", "same_twice",   "cell_and_element", "element_of_temporary",
          "destroy_inputs", "print_both",      "print_text",   "print_later",      "fail_on_thread"}) {
        component.functions.push_back(function(name, name));
    }
    component.functions.push_back({"add", "add", "Sum of two matrices.", 2, 2, 1});
    return component;
}

vrlExtractedComponent describeCComponent() {
    vrlExtractedComponent component;
    component.name = "plain";
    component.version = "1";
    component.abi = KRT_ABI;
    component.libraryFile = C_COMPONENT;
    component.functions = {function("scale", "scale"), function("relay", "relay")};
    return component;
}

vrlExtractedComponentFactory factoryOf(const vrlExtractedComponent& component) {
    return [component] { return boost::make_shared<vrlExtractedComponent>(component); };
}

TestInstance::TestInstance(const vrlExtractedComponent& component)
    : handle_(vrlInitializeComponentInstance(
          [this](const char* printed) {
              errors += printed;
              return 0;
          },
          [this](const char* printed) {
              ordinary += printed;
              return 0;
          },
          factoryOf(component))) {}

TestInstance::~TestInstance() {
    if (handle_ != nullptr) {
        end();
    }
}

void TestInstance::end() { vrlTerminateInstanceInternal(std::exchange(handle_, nullptr)); }

std::vector<qxArrayOwner> TestInstance::call(const char* function, int nlhs, std::vector<qxArray*> inputs) {
    const std::vector<qxArrayOwner> owned(inputs.begin(), inputs.end());
    std::vector<qxArray*> results(static_cast<std::size_t>(std::max(nlhs, 0)));
    vrlLoomkitFeval(handle_, function, nlhs, results.data(), static_cast<int>(inputs.size()), inputs.data());
    return {results.begin(), results.end()};
}

qxArrayOwner TestInstance::call1(const char* function, std::vector<qxArray*> inputs) {
    return std::move(call(function, 1, std::move(inputs)).front());
}

TestInstance::Failure TestInstance::failureOf(const char* function, std::vector<qxArray*> inputs, int nlhs) {
    try {
        call(function, nlhs, std::move(inputs));
    } catch (const Norvane::vrl::vrlBaseException& failure) {
        Failure told{failure.getErrorMessage(), createStackStrings(failure.getStack()), ""};
        if (!told.stack.empty() && told.stack.back().rfind("identifier ", 0) == 0) {
            told.identifier = std::move(told.stack.back());
            told.stack.pop_back();
        }
        return told;
    }
    return {};
}

qxArray* scalar(double value) { return qxCreateDoubleScalar(value); }

qxArray* text(const char* value) { return qxCreateString(value); }

qxArray* row(const std::vector<double>& values) {
    qxArray* array = qxCreateDoubleMatrix(1, static_cast<std::uint32_t>(values.size()), qxREAL);
    std::copy(values.begin(), values.end(), static_cast<double*>(array->realData()));
    return array;
}

qxArray* cellOf(const std::vector<qxArray*>& elements) {
    qxArray* cell = qxCreateCellMatrix(1, static_cast<std::uint32_t>(elements.size()));
    for (std::size_t i = 0; i < elements.size(); ++i) {
        qxSetCell(cell, i, elements[i]);
    }
    return cell;
}

double firstOf(const qxArrayOwner& array) { return krtScalar(array.get()); }
