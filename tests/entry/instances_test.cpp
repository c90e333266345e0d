#include "entry/showcase.h"
#include "entry/startup.h"
#include "support/natives.h"
#include "vrlbase/vrlbase.h"

#include <filesystem>
#include <functional>

namespace nativevrl::test::instances {

constexpr const char* nvException = "com/norvane/toolbox/loomkit/NVException";

class Instances : public JvmTest {
protected:
    void SetUp() override {
        JvmTest::SetUp();
        // Its reference to a class stays, and is none of an instance's.
        configureRuntimeOnce(env);
    }

    jint archiveLength() const { return static_cast<jint>(archive.size()); }

    jstring location() { return javaPath(env, folder / "extracted"); }

    /// A request that is met.
    Request complete() {
        Request request;
        request.extractTo = location();
        request.archive = chunkedStream(env, archive, 10000);
        request.length = archiveLength();
        request.first = recorder(env);
        request.second = recorder(env);
        return request;
    }

    jboolean end(jobject handle) { return NVKRT(vrlTerminateInstance)(env, nullptr, handle); }

    std::vector<jbyte> archive = showcaseArchive();
    loomkit::test::TestFolder folder;
};

TEST_F(Instances, LiveFromCreationToTermination) {
    // The first one of all also has the class behind Java objects loaded, which gives up a reference for good.
    end(initializeInstance(env, complete()));
    const Request request = complete();
    const JniCounter counter(env);
    jobject handle = initializeInstance(env, request);
    expectNoThrow(env);
    ASSERT_NE(handle, nullptr);
    EXPECT_NE(addressIn(env, handle), nullptr);
    EXPECT_EQ(counter.pinnedBlocks(), 0);
    EXPECT_EQ(counter.globalReferences(), 2) << "one for each handler";
    jobject active = NVKRT(vrlGetActiveKRT)(env, nullptr);
    EXPECT_EQ(addressIn(env, active), addressIn(env, handle));
    NVKRT(vrlWaitForFiguresToDie)(env, nullptr, handle);
    EXPECT_EQ(end(handle), JNI_TRUE);
    EXPECT_EQ(counter.globalReferences(), 0);
    expectNoThrow(env);
    active = NVKRT(vrlGetActiveKRT)(env, nullptr);
    EXPECT_EQ(addressIn(env, active), nullptr);
}

TEST_F(Instances, AStaleHandleIsAFailureOfTheRuntime) {
    jobject handle = initializeInstance(env, complete());
    EXPECT_EQ(end(handle), JNI_TRUE);
    EXPECT_EQ(end(handle), JNI_FALSE);
    const std::string message = expectThrownClass(env, nvException);
    EXPECT_EQ(message.find("An error occurred while disposing the component.\n"), 0U) << message;
    NVKRT(vrlWaitForFiguresToDie)(env, nullptr, handle);
    const std::string waiting = expectThrownClass(env, nvException);
    EXPECT_EQ(waiting.find("An error occurred while waiting for figures to close.\n"), 0U) << waiting;
    EXPECT_EQ(end(newHandle(env, nullptr)), JNI_FALSE);
    expectThrownClass(env, nvException);
}

TEST_F(Instances, TheCacheNeedsNoLocation) {
    jobject options = javaPath(env, folder.path());
    NVKRT(vrlInitializeApplication)
    (env, nullptr, objectArray(env, "java/lang/String", {javaString(env, u"-cachedir"), options}));
    for (int round = 0; round < 2; ++round) {
        Request request = complete();
        request.useCache = JNI_TRUE;
        request.extractTo = nullptr;
        jobject handle = initializeInstance(env, request);
        expectNoThrow(env);
        ASSERT_NE(handle, nullptr);
        EXPECT_EQ(end(handle), JNI_TRUE);
    }
    vrlTerminateApplicationImpl();
}

TEST_F(Instances, AnImpossibleRequestIsRefusedInFixedWordsAndAFailureOfTheRuntimeHasItsPrefix) {
    const std::string prefix = "An error occurred while initializing the component.\n";
    const auto bytes = [this](std::size_t count, jint length) {
        return [=](Request& request) {
            request.archive = count == 0 ? nullptr : chunkedStream(env, std::vector<jbyte>(count, 7), 5000);
            request.length = length;
            request.componentText = javaString(env, u"solver");
        };
    };
    const std::pair<std::string, std::function<void(Request&)>> refusals[] = {
        {"KPA InputStream is null", bytes(0, 5000)},
        {"KPA InputStream is not valid", [](Request& request) { ++request.length; }},
        {"No valid extract location specified", [](Request& request) { request.extractTo = nullptr; }},
        {prefix + "There is no archive of the component 'solver'.", bytes(0, -1)},
        {prefix + "The archive is empty.", bytes(1, 0)},
        {prefix + "The archive is not a zip file.", bytes(5000, 5000)},
        {prefix + "The archive is truncated", [](Request& request) { request.length /= 2; }},
    };
    for (const auto& [words, spoil] : refusals) {
        Request request = complete();
        spoil(request);
        const JniCounter counter(env);
        EXPECT_EQ(initializeInstance(env, request), nullptr);
        const std::string message = expectThrownClass(env, nvException);
        EXPECT_EQ(message.substr(0, words.size()), words);
        EXPECT_EQ(counter.globalReferences() + counter.pinnedBlocks(), 0);
    }
    EXPECT_FALSE(std::filesystem::exists(folder / "extracted"));
}

TEST_F(Instances, AnExceptionOfTheStreamStands) {
    Request request = complete();
    request.archive = chunkedStream(env, archive, 1000, archiveLength() / 2);
    EXPECT_EQ(initializeInstance(env, request), nullptr);
    expectThrown(env, "java/io/IOException", "the stream broke");
    EXPECT_EQ(callInt(env, request.archive, "reads", "()I"), archiveLength() / 2 / 1000 + 2)
        << "none after the failure";
}

TEST_F(Instances, OutputThatFailsDoesNotEndTheEvaluation) {
    Request request = complete();
    request.first = failingOutput(env, false);
    request.second = failingOutput(env, true);
    jobject handle = initializeInstance(env, request);
    jobject none = objectArray(env, "java/lang/Object", {});
    for (const char16_t* function : {u"say", u"caution"}) {
        jobject inputs = objectArray(env, "java/lang/Object", {javaString(env, u"lost")});
        NVKRT(vrlFeval)
        (env, nullptr, handle, javaString(env, function), 0, places(env, static_cast<jobjectArray>(none)), 1,
         places(env, static_cast<jobjectArray>(inputs)));
        expectNoThrow(env);
    }
    EXPECT_EQ(end(handle), JNI_TRUE);
}

}  // namespace nativevrl::test::instances
