#pragma once

// Instances of the test components, without an archive.

#include "qx/arrayowner.h"
#include "vrlbase/library.h"
#include "vrlkrt/archive/extractedcomponent.h"
#include "vrlkrt/vrlkrt.h"

#include <boost/make_shared.hpp>

#include <string>
#include <vector>

/// This program, as the runtime knows it.
vrlLibrary ourselves();

/// What a component's archive would tell. Change it, then make a factory of it.
vrlExtractedComponent describeTestComponent();
vrlExtractedComponent describeCComponent();
vrlExtractedComponentFactory factoryOf(const vrlExtractedComponent& component);

/// An instance for the length of a test, which keeps what it prints.
class TestInstance {
public:
    explicit TestInstance(const vrlExtractedComponent& component = describeTestComponent());
    ~TestInstance();
    TestInstance(const TestInstance&) = delete;
    TestInstance& operator=(const TestInstance&) = delete;

    void* handle() const { return handle_; }
    void end();

    /// Runs a function; takes the inputs over.
    std::vector<qxArrayOwner> call(const char* function, int nlhs, std::vector<qxArray*> inputs = {});
    /// Runs a function for one result.
    qxArrayOwner call1(const char* function, std::vector<qxArray*> inputs = {});
    /// Runs a function that fails; its message, its stack as texts, and the line of its identifier, which is taken off
    /// the stack. All empty when it does not fail.
    struct Failure {
        std::string message;
        std::vector<std::string> stack;
        std::string identifier;
    };
    Failure failureOf(const char* function, std::vector<qxArray*> inputs = {}, int nlhs = 1);

    std::string errors;
    std::string ordinary;

private:
    void* handle_ = nullptr;
};

qxArray* scalar(double value);
qxArray* text(const char* value);
/// A row of doubles.
qxArray* row(const std::vector<double>& values);
/// A cell row that takes the elements over.
qxArray* cellOf(const std::vector<qxArray*>& elements);
double firstOf(const qxArrayOwner& array);
