#include "testcomponent.h"

#include "basix/basix.h"
#include "krt/component.h"
#include "support/testfolder.h"
#include "vrlbase/vrlbase.h"
#include "vrlkrt/print/defaultoutput.h"

#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <stdexcept>

namespace {

using loomkit::test::readText;
using loomkit::test::TestFolder;
using Norvane::vrl::vrlBaseException;

int refuse(const char*) { return -1; }

int fail(const char*) { throw std::runtime_error("stream closed"); }

class Printing : public testing::Test {
protected:
    void SetUp() override {
        const char* options[] = {"-logfile", log_.c_str()};
        vrlInitializeApplicationImpl(options, 2);
    }
    void TearDown() override {
        vrlSetDefaultPrintHandlers({}, {});
        vrlTerminateApplicationImpl();
    }

    const TestFolder folder_;
    const std::string log_ = folder_ / "log";
};

TEST_F(Printing, AfterTheInstanceGoesToTheLog) {
    int go[2];
    int done[2];
    ASSERT_EQ(pipe(go) + pipe(done), 0);
    {
        TestInstance instance;
        instance.call("print_later", 0, {scalar(go[0]), scalar(done[1])});
    }
    char byte = 'x';
    ASSERT_EQ(write(go[1], &byte, 1), 1);
    ASSERT_EQ(read(done[0], &byte, 1), 1);
    EXPECT_EQ(readText(log_), "late");
    for (const int file : {go[0], go[1], done[0], done[1]}) {
        close(file);
    }
}

TEST_F(Printing, OutsideOfCallsGoesToTheLibraryThatOpenedAComponentLast) {
    vrlLibrary other = vrlLibraryAt(reinterpret_cast<const void*>(&std::fopen));
    std::string printed;
    const auto print = [&printed](std::string name) {
        return [&printed, name](const char* text) {
            printed += name + text;
            return 0;
        };
    };
    vrlSetDefaultPrintHandlers({}, print("ours "));
    vrlkrt::setDefaultHandlers(other, {{}, print("others' ")});
    krtPrint(nullptr, "1 ");
    vrlkrt::preferDefaultHandlers(other);
    krtPrint(nullptr, "2 ");
    {
        const TestInstance instance;
        krtPrint(nullptr, "3 ");
        EXPECT_THROW(vrlInitializeComponentInstance({}, {}, {}), vrlBaseException);
        krtPrint(nullptr, "4 ");
    }
    krtPrint(nullptr, "5 ");
    vrlkrt::dropDefaultHandlers(other);
    krtPrint(nullptr, "6 ");
    EXPECT_EQ(printed, "ours 1 others' 2 ours 3 ours 4 others' 5 ours 6 ");
}

TEST_F(Printing, ThatFailsGoesToTheLogAndTheFunctionGoesOn) {
    for (const vrlPrintHandler& handler : {vrlPrintHandler(refuse), vrlPrintHandler(fail), vrlPrintHandler()}) {
        void* handle = vrlInitializeComponentInstance({}, handler, factoryOf(describeTestComponent()));
        const qxArrayOwner input(text("lost"));
        qxArray* inputs[] = {input.get()};
        qxArray* result = nullptr;
        vrlLoomkitFeval(handle, "print_text", 1, &result, 1, inputs);
        EXPECT_EQ(firstOf(qxArrayOwner(result)), 1.0);
        vrlTerminateInstanceInternal(handle);
    }
    EXPECT_EQ(readText(log_), "lostA print handler failed: stream closed\nlostlost");
}

TEST_F(Printing, HandsTextOverInTheLocalCodePage) {
    TestInstance instance;
    instance.call("print_text", 0, {text("\xF0\x9F\x98\x80\xC3\xA9")});
    EXPECT_EQ(instance.ordinary, "\xF0\x9F\x98\x80\xC3\xA9");
    ASSERT_TRUE(utSetCodePage("Shift_JIS"));
    instance.ordinary.clear();
    instance.call("print_text", 0, {text("\xE3\x82\xBD")});
    utSetCodePage(nullptr);
    EXPECT_EQ(instance.ordinary, "\x83\x5C");
}

}  // namespace
