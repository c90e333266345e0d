#include "entry/onload.h"

#include "entry/librarystate.h"
#include "proxies/jclassproxy.h"

#include <boost/bind/bind.hpp>
#include <boost/make_shared.hpp>

namespace nativevrl {

boost::shared_ptr<tether::JNIEnvInjector>& sharedEnvInjector = *new boost::shared_ptr<tether::JNIEnvInjector>;
JavaVM* sharedJavaVM = nullptr;
std::once_flag krtStartupOnce;

namespace {

constexpr jint jniVersion = 0x10004;

int getEnv(JavaVM* vm, JNIEnv** env, jint version) { return vm->GetEnv(reinterpret_cast<void**>(env), version); }

int attachCurrentThread(JavaVM* vm, JNIEnv** env, JavaVMAttachArgs* arguments) {
    return vm->AttachCurrentThread(reinterpret_cast<void**>(env), arguments);
}

int detachCurrentThread(JavaVM* vm) { return vm->DetachCurrentThread(); }

/// The name that unknown threads are attached under. Not const, since JNI wants it so; nobody writes to it.
char threadName[] = "<anonymous thread>";

boost::shared_ptr<JavaVMAttachArgs> makeAttachRecord() {
    auto record = boost::make_shared<JavaVMAttachArgs>();
    record->version = jniVersion;
    record->name = threadName;
    record->group = nullptr;
    return record;
}

}  // namespace
}  // namespace nativevrl

using namespace nativevrl;

const char* const nativevrl_version = LOOMKIT_VERSION;
const char* const nativevrl_build_date = LOOMKIT_BUILD_DATE;

jint JNI_com_norvane_toolbox_loomkit_internal_NVKRT_OnLoad(JavaVM* vm) {
    using namespace boost::placeholders;
    const auto record = makeAttachRecord();
    const auto recordPointer = boost::bind(&boost::shared_ptr<JavaVMAttachArgs>::get, record);
    sharedEnvInjector = boost::make_shared<tether::JNIEnvInjector>(
        boost::bind(&getEnv, vm, _1, record->version), boost::bind(&attachCurrentThread, vm, _1, recordPointer),
        boost::bind(&detachCurrentThread, vm));
    sharedJavaVM = vm;
    return jniVersion;
}

void JNI_com_norvane_toolbox_loomkit_internal_NVKRT_OnUnload(JavaVM* vm) {
    JNIEnv* env = nullptr;
    if (getEnv(vm, &env, jniVersion) == JNI_OK) {
        disposeClassProxies(env);
    }
    sharedEnvInjector.reset();
}
