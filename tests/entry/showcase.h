#pragma once

#include "support/javaobjects.h"
#include "support/jvmtest.h"
#include "support/testfolder.h"

#include <string>
#include <vector>

namespace nativevrl::test {

/// Bytes of the archive of the component "showcase".
std::vector<jbyte> showcaseArchive();

/// A path as a Java string.
inline jstring javaPath(JNIEnv* env, const std::string& path) { return env->NewStringUTF(path.c_str()); }

/// Lets the next start configure the runtime, as in a fresh process.
void forgetStartup();

/// What vrlInitializeComponentInstance is asked for; the members have the names of its arguments.
struct Request {
    jboolean useCache = JNI_FALSE;
    jstring componentText = nullptr;
    jstring extractTo = nullptr;
    jobject archive = nullptr;
    jint length = -1;
    jobject second = nullptr;
    jobject first = nullptr;
};
jobject initializeInstance(JNIEnv* env, const Request& request);

/// A test with an instance of the component.
class ShowcaseTest : public JvmTest {
protected:
    void SetUp() override;
    void TearDown() override;

    /// Runs a function of the component with the arguments, and gives the Object[] that its results went into.
    jobjectArray call(const char16_t* function, const std::vector<jobject>& inputs, jint outputCount);

    jobject instance = nullptr;        ///< its handle
    jobject warnings = nullptr;        ///< recorder of errors and warnings
    jobject ordinaryOutput = nullptr;  ///< recorder of ordinary output
    loomkit::test::TestFolder folder;
};

}  // namespace nativevrl::test
