#include "showcase.h"

#include "entry/librarystate.h"
#include "support/natives.h"

#include <new>
#include <stdexcept>

namespace nativevrl::test {

std::vector<jbyte> showcaseArchive() {
    const std::string text = loomkit::test::readText(LOOMKIT_SHOWCASE);
    std::vector<jbyte> bytes(text.begin(), text.end());
    if (bytes.empty()) {
        throw std::runtime_error("the archive " LOOMKIT_SHOWCASE " can't be read");
    }
    return bytes;
}

void forgetStartup() {
    krtStartupOnce.~once_flag();
    new (&krtStartupOnce) std::once_flag;
}

jobject initializeInstance(JNIEnv* env, const Request& request) {
    return NVKRT(vrlInitializeComponentInstance)(env, nullptr, request.useCache, 0, request.componentText,
                                                 request.extractTo, request.archive, request.length, request.second,
                                                 request.first);
}

void ShowcaseTest::SetUp() {
    JvmTest::SetUp();
    warnings = recorder(env);
    ordinaryOutput = recorder(env);
    const std::vector<jbyte> archive = showcaseArchive();
    Request request;
    request.extractTo = javaPath(env, folder / "extracted");
    request.archive = chunkedStream(env, archive, 65536);
    request.length = static_cast<jint>(archive.size());
    request.first = warnings;
    request.second = ordinaryOutput;
    instance = initializeInstance(env, request);
    expectNoThrow(env);
    ASSERT_NE(instance, nullptr);
}

void ShowcaseTest::TearDown() {
    expectNoThrow(env);
    if (instance != nullptr) {
        NVKRT(vrlTerminateInstance)(env, nullptr, instance);
    }
    JvmTest::TearDown();
}

jobjectArray ShowcaseTest::call(const char16_t* function, const std::vector<jobject>& inputs, jint outputCount) {
    jobjectArray results =
        objectArray(env, "java/lang/Object", std::vector<jobject>(static_cast<std::size_t>(outputCount)));
    NVKRT(vrlFeval)
    (env, nullptr, instance, javaString(env, function), outputCount, places(env, results),
     static_cast<jint>(inputs.size()), places(env, objectArray(env, "java/lang/Object", inputs)));
    return results;
}

}  // namespace nativevrl::test
