#include "testcomponent.h"

#include "vrlbase/vrlbase.h"
#include "vrlkrt/componentinfo.h"

#include <gtest/gtest.h>

namespace {

using Norvane::vrl::vrlBaseException;

std::string initFailure(const vrlExtractedComponentFactory& factory) {
    try {
        vrlTerminateInstanceInternal(vrlInitializeComponentInstance({}, {}, factory));
    } catch (const vrlBaseException& failure) {
        return failure.what();
    } catch (const Norvane::vrl::vrlInternalException& failure) {
        return std::string("internal: ") + failure.what();
    }
    return {};
}

TEST(Instances, ThatCantBeMadeSayWhatIsMissing) {
    const auto changed = [](void (*change)(vrlExtractedComponent&)) {
        vrlExtractedComponent component = describeTestComponent();
        change(component);
        return factoryOf(component);
    };
    const std::pair<vrlExtractedComponentFactory, std::vector<const char*>> cases[] = {
        {changed([](auto& c) { c.abi = 7; }), {"testing", "version 7"}},
        {changed([](auto& c) { c.libraryFile = "/no/such/libtesting.so"; }), {"testing", "/no/such/libtesting.so"}},
        {changed([](auto& c) { c.functions[0].symbol = "absent_symbol"; }), {"testing", "failInner", "absent_symbol"}},
        {changed([](auto& c) { c.functions[0].symbol = ""; }), {"testing", "failInner"}},
        {changed([](auto& c) { c.functions[0].symbol = "malloc"; }), {"testing", "failInner", "malloc"}},
        {changed([](auto& c) { c.functions[0].symbol = "no_function"; }), {"testing", "failInner", "no_function"}},
        {changed([](auto& c) { c.functions[1].name = "failInner"; }), {"testing", "two functions failInner"}},
        {changed([](auto& c) { c.functions[1].name = "krt.info"; }), {"testing", "two functions krt.info"}},
        {[]() -> boost::shared_ptr<vrlExtractedComponent> { throw std::runtime_error("disk full"); },
         {"internal: disk full"}},
        {[]() -> boost::shared_ptr<vrlExtractedComponent> { throw vrlBaseException("bad entry"); }, {"bad entry"}},
        {[] { return boost::shared_ptr<vrlExtractedComponent>(); }, {"no component"}},
        {{}, {"no way to the component"}}};
    for (const auto& [factory, expectedNamed] : cases) {
        const std::string message = initFailure(factory);
        for (const char* named : expectedNamed) {
            EXPECT_NE(message.find(named), std::string::npos) << named << " in: " << message;
        }
    }
}

TEST(Instances, RefuseForeignAndStaleHandlesAndNeverShareOne) {
    TestInstance instance;
    void* stale = instance.handle();
    krtInstance* object = vrlHandleToKrtInstancePtr(stale);
    EXPECT_TRUE(vrlWaitForFiguresToDieInternal(stale, false));
    instance.end();
    int foreign = 0;
    for (void* handle : {static_cast<void*>(nullptr), static_cast<void*>(&foreign), stale}) {
        qxArray* result = nullptr;
        EXPECT_THROW(vrlHandleToKrtInstancePtr(handle), vrlBaseException);
        EXPECT_THROW(vrlTerminateInstanceInternal(handle), vrlBaseException);
        EXPECT_THROW(vrlWaitForFiguresToDieInternal(handle, false), vrlBaseException);
        EXPECT_THROW(vrlLoomkitFeval(handle, "add", 1, &result, 0, nullptr), vrlBaseException);
        EXPECT_THROW(vrlGetComponentInfo(handle), vrlBaseException);
    }
    const TestInstance next;
    EXPECT_NE(next.handle(), stale);
    // What was got from the handle of an ended instance still does its work.
    EXPECT_EQ(object->qxArrayToJavaObject(nullptr), nullptr);
}

TEST(Instances, StartTheRuntimeAndEndWithItAndTheNewestIsActive) {
    vrlTerminateApplicationImpl();
    EXPECT_EQ(vrlGetActiveHKRTINSTANCE(), nullptr);
    TestInstance first;
    EXPECT_TRUE(vrlIsKRTInitialized());
    TestInstance second;
    EXPECT_EQ(vrlGetActiveHKRTINSTANCE(), second.handle());
    second.end();
    EXPECT_EQ(vrlGetActiveHKRTINSTANCE(), first.handle());
    vrlTerminateApplicationImpl();
    EXPECT_THROW(first.end(), vrlBaseException);
}

TEST(Instances, ActiveOneIsTheOneThatRuns) {
    void* active = nullptr;
    void* outer = vrlInitializeComponentInstance(
        {},
        [&active](const char*) {
            active = vrlGetActiveHKRTINSTANCE();
            return 0;
        },
        factoryOf(describeTestComponent()));
    const TestInstance newer;
    vrlLoomkitFeval(outer, "print_both", 0, nullptr, 0, nullptr);
    EXPECT_EQ(active, outer);
    vrlTerminateInstanceInternal(outer);
}

TEST(Instances, GiveUpTheirHandlersAndTheirFolderAtTheirEnd) {
    const auto held = std::make_shared<int>(0);
    const vrlPrintHandler handler = [held](const char*) { return 0; };
    vrlExtractedComponent component = describeTestComponent();
    component.lease = std::make_shared<int>(0);
    const std::weak_ptr<void> lease = component.lease;
    const long before = held.use_count();
    void* handle = vrlInitializeComponentInstance(handler, handler, factoryOf(component));
    component.lease.reset();
    EXPECT_GT(held.use_count(), before);
    EXPECT_FALSE(lease.expired());
    vrlTerminateInstanceInternal(handle);
    EXPECT_EQ(held.use_count(), before);
    EXPECT_TRUE(lease.expired());
}

}  // namespace
