#include "entry/showcase.h"
#include "entry/startup.h"
#include "vrlbase/vrlbase.h"

#include "com_norvane_toolbox_loomkit_internal_NVKRT.h"

#include <algorithm>
#include <functional>

namespace nativevrl::test {

namespace {

constexpr const char* nvException = "com/norvane/toolbox/loomkit/NVException";

class Instances : public JvmTest {
protected:
    void SetUp() override {
        JvmTest::SetUp();
        // Its reference to a class stays, and is none of an instance's.
        configureRuntimeOnce(env);
    }

    jint archiveLength() const { return static_cast<jint>(archive.size()); }

    jstring location() { return javaString(env, (folder.path() / "extracted").u16string()); }

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

    jboolean end(jobject handle) {
        return Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlTerminateInstance(env, nullptr, handle);
    }

    std::vector<jbyte> archive = showcaseArchive();
    TemporaryFolder folder;
};

TEST_F(Instances, LiveFromCreationToTermination) {
    const Request request = complete();
    const JniCounter counter(env);
    jobject handle = initializeInstance(env, request);
    expectNoThrow(env);
    ASSERT_NE(handle, nullptr);
    EXPECT_NE(addressIn(env, handle), nullptr);
    EXPECT_EQ(counter.pinnedBlocks(), 0);
    EXPECT_EQ(counter.globalReferences(), 2) << "one for each handler";
    jobject active = Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlGetActiveKRT(env, nullptr);
    EXPECT_EQ(addressIn(env, active), addressIn(env, handle));
    Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlWaitForFiguresToDie(env, nullptr, handle);
    EXPECT_EQ(end(handle), JNI_TRUE);
    EXPECT_EQ(counter.globalReferences(), 0);
    expectNoThrow(env);
    active = Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlGetActiveKRT(env, nullptr);
    EXPECT_EQ(addressIn(env, active), nullptr);
}

TEST_F(Instances, AStaleHandleIsAFailureOfTheRuntime) {
    jobject handle = initializeInstance(env, complete());
    EXPECT_EQ(end(handle), JNI_TRUE);
    EXPECT_EQ(end(handle), JNI_FALSE);
    const std::string message = expectThrownClass(env, nvException);
    EXPECT_EQ(message.find("An error occurred while disposing the component.\n"), 0U) << message;
    Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlWaitForFiguresToDie(env, nullptr, handle);
    const std::string waiting = expectThrownClass(env, nvException);
    EXPECT_EQ(waiting.find("An error occurred while waiting for figures to close.\n"), 0U) << waiting;
    EXPECT_EQ(end(newHandle(env, nullptr)), JNI_FALSE);
    expectThrownClass(env, nvException);
}

TEST_F(Instances, TheCacheNeedsNoLocation) {
    jobject options = javaString(env, folder.path().u16string());
    Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlInitializeApplication(
        env, nullptr, objectArray(env, "java/lang/String", {javaString(env, u"-cachedir"), options}));
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

struct Refusal {
    const char* name;
    std::function<void(JNIEnv*, Request&)> spoil;
    const char* message;
};

TEST_F(Instances, AnImpossibleRequestIsRefusedInFixedWords) {
    const Refusal refusals[] = {
        {"no stream, a length", [](JNIEnv*, Request& request) { request.archive = nullptr; },
         "KPA InputStream is null"},
        {"too few bytes", [](JNIEnv*, Request& request) { ++request.length; }, "KPA InputStream is not valid"},
        {"no location", [](JNIEnv*, Request& request) { request.extractTo = nullptr; },
         "No valid extract location specified"},
    };
    for (const Refusal& refusal : refusals) {
        SCOPED_TRACE(refusal.name);
        Request request = complete();
        refusal.spoil(env, request);
        const JniCounter counter(env);
        EXPECT_EQ(initializeInstance(env, request), nullptr);
        expectThrown(env, nvException, refusal.message);
        EXPECT_EQ(counter.globalReferences(), 0);
        EXPECT_EQ(counter.pinnedBlocks(), 0);
    }
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "extracted"));
}

TEST_F(Instances, AFailureOfTheRuntimeHasItsPrefix) {
    const Refusal refusals[] = {
        {"no archive at all",
         [](JNIEnv* env, Request& request) {
             request.archive = nullptr;
             request.length = -1;
             request.componentText = javaString(env, u"solver");
         },
         "solver"},
        {"an empty archive",
         [](JNIEnv* env, Request& request) {
             request.archive = chunkedStream(env, {}, 1);
             request.length = 0;
         },
         ""},
        {"no archive's bytes",
         [](JNIEnv* env, Request& request) {
             request.archive = chunkedStream(env, std::vector<jbyte>(5000, 7), 5000);
             request.length = 5000;
         },
         ""},
        {"half of the archive", [](JNIEnv*, Request& request) { request.length /= 2; }, ""},
    };
    for (const Refusal& refusal : refusals) {
        SCOPED_TRACE(refusal.name);
        Request request = complete();
        refusal.spoil(env, request);
        EXPECT_EQ(initializeInstance(env, request), nullptr);
        const std::string message = expectThrownClass(env, nvException);
        EXPECT_EQ(message.find("An error occurred while initializing the component.\n"), 0U) << message;
        EXPECT_NE(message.find(refusal.message), std::string::npos) << message;
    }
}

TEST_F(Instances, AnExceptionOfTheStreamStands) {
    Request request = complete();
    request.archive = chunkedStream(env, archive, 1000, archiveLength() / 2);
    EXPECT_EQ(initializeInstance(env, request), nullptr);
    expectThrown(env, "java/io/IOException", "the stream broke");
}

/// Adds to a little-endian number of an archive.
void addTo(std::vector<jbyte>& bytes, std::size_t position, std::size_t width, std::size_t addend) {
    for (std::size_t i = 0; i < width; ++i) {
        addend += static_cast<std::uint8_t>(bytes[position + i]);
        bytes[position + i] = static_cast<jbyte>(addend);
        addend >>= 8U;
    }
}

/// An extra field of the directory's last entry makes the archive a whole number of chunks.
void padTo(std::vector<jbyte>& archive, std::size_t chunk) {
    constexpr std::size_t endRecord = 22;
    const std::size_t size = 2 * chunk - archive.size() % chunk;
    const std::string signature = "PK\1\2";
    const auto last = std::find_end(archive.begin(), archive.end(), signature.begin(), signature.end());
    addTo(archive, static_cast<std::size_t>(last - archive.begin()) + 30, 2, size);
    std::vector<jbyte> field{'u', 'x', 0, 0};
    field.resize(size);
    addTo(field, 2, 2, size - 4);
    archive.insert(archive.end() - endRecord, field.begin(), field.end());
    addTo(archive, archive.size() - endRecord + 12, 4, size);
}

TEST_F(Instances, AnArchiveIsReadToItsLengthAndNoFurther) {
    constexpr std::size_t chunk = 4096;
    padTo(archive, chunk);
    std::vector<jbyte> longer = archive;
    longer.insert(longer.end(), 100000, 1);
    for (const auto& [pieces, reads] :
         {std::pair{jint{1}, archive.size()}, std::pair{jint{chunk}, archive.size() / chunk},
          std::pair{jint{100000}, archive.size() / chunk}}) {
        SCOPED_TRACE(pieces);
        Request request = complete();
        request.archive = chunkedStream(env, longer, pieces);
        jobject handle = initializeInstance(env, request);
        expectNoThrow(env);
        ASSERT_NE(handle, nullptr);
        EXPECT_EQ(callInt(env, request.archive, "reads", "()I"), static_cast<jint>(reads));
        end(handle);
    }
}

TEST_F(Instances, OutputThatFailsDoesNotEndTheEvaluation) {
    Request request = complete();
    request.first = failingOutput(env, false);
    request.second = failingOutput(env, true);
    jobject handle = initializeInstance(env, request);
    jobject none = objectArray(env, "java/lang/Object", {});
    for (const char16_t* function : {u"say", u"caution"}) {
        jobject inputs = objectArray(env, "java/lang/Object", {javaString(env, u"lost")});
        Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlFeval(env, nullptr, handle, javaString(env, function), 0,
                                                                 places(env, static_cast<jobjectArray>(none)), 1,
                                                                 places(env, static_cast<jobjectArray>(inputs)));
        expectNoThrow(env);
    }
    EXPECT_EQ(end(handle), JNI_TRUE);
}

}  // namespace

}  // namespace nativevrl::test
