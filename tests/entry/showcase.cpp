#include "showcase.h"

#include "entry/librarystate.h"

#include "com_norvane_toolbox_loomkit_internal_NVKRT.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <new>
#include <stdexcept>

namespace nativevrl::test {

std::vector<jbyte> showcaseArchive() {
    std::ifstream file(LOOMKIT_SHOWCASE, std::ios::binary);
    std::vector<jbyte> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (bytes.empty()) {
        throw std::runtime_error("the archive " LOOMKIT_SHOWCASE " can't be read");
    }
    return bytes;
}

TemporaryFolder::TemporaryFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "loomkit-test-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("there is no temporary folder to be had");
    }
    path_ = pattern;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

void forgetStartup() {
    krtStartupOnce.~once_flag();
    new (&krtStartupOnce) std::once_flag;
}

jobject initializeInstance(JNIEnv* env, const Request& request) {
    return Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlInitializeComponentInstance(
        env, nullptr, request.useCache, 0, request.componentText, request.extractTo, request.archive, request.length,
        request.second, request.first);
}

void ShowcaseTest::SetUp() {
    JvmTest::SetUp();
    warnings = recorder(env);
    ordinaryOutput = recorder(env);
    const std::vector<jbyte> archive = showcaseArchive();
    Request request;
    request.extractTo = javaString(env, (folder.path() / "extracted").u16string());
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
        Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlTerminateInstance(env, nullptr, instance);
    }
    JvmTest::TearDown();
}

jobjectArray ShowcaseTest::call(const char16_t* function, const std::vector<jobject>& inputs, jint outputCount) {
    jobjectArray results =
        objectArray(env, "java/lang/Object", std::vector<jobject>(static_cast<std::size_t>(outputCount)));
    Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlFeval(
        env, nullptr, instance, javaString(env, function), outputCount, places(env, results),
        static_cast<jint>(inputs.size()), places(env, objectArray(env, "java/lang/Object", inputs)));
    return results;
}

}  // namespace nativevrl::test
