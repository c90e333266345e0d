/// Natives that create component instances and end them.

#include "entry/boundary.h"
#include "entry/javaprinthandler.h"
#include "entry/javastreamsource.h"
#include "entry/javavmconfig.h"
#include "entry/librarystate.h"
#include "proxies/jnativeptrproxy.h"
#include "proxies/jstringproxy.h"
#include "vrlkrt/vrlkrt.h"

#include "com_norvane_toolbox_loomkit_internal_NVKRT.h"

#include <boost/iostreams/stream_buffer.hpp>

#include <exception>
#include <istream>
#include <memory>

using namespace nativevrl;

namespace {

/// What Java hands over for a new instance, in the order of the native's arguments. All borrowed.
struct InstanceRequest {
    jboolean useCache;
    jstring componentText;
    jstring extractTo;
    jobject archive;
    jint length;
    jobject second;
    jobject first;
};

/// Reports a request that can't be met. The failure leaves by an ordinary return, so what was built so far ends in
/// the usual order.
std::nullptr_t refuse(JNIEnv* env, const char* message) {
    tether::throwNamedException(env, nvExceptionClass, message);
    return nullptr;
}

/// The archive's bytes, read from the Java stream to their announced length; null when the stream held fewer.
std::unique_ptr<char[]> readArchive(JNIEnv* env, jobject inputStream, jint length) {
    JInputStreamProxy stream(env, inputStream);
    boost::iostreams::stream_buffer<JInputStreamProxySource> buffer(JInputStreamProxySource(&stream), -1, -1);
    std::istream input(&buffer);
    // A negative length is asked for as the huge size that it is when taken as unsigned.
    std::unique_ptr<char[]> bytes(new char[static_cast<std::size_t>(length)]);
    if (!input.eof()) {
        input.read(bytes.get(), length);
        if (static_cast<jint>(input.gcount()) != length) {
            return nullptr;
        }
    }
    return bytes;
}

/// The folder that Java named, in normal form, or no folder: then a failure is reported.
vrlExtractedComponentFactory directoryFactory(JNIEnv* env, const vrlkrt::KpaExtractor& extractor, jstring extractTo) {
    JStringProxy location(env, extractTo);
    const char* text = location.getStringUTFChars();
    if (text == nullptr) {
        refuse(env, "No valid extract location specified");
        return {};
    }
    return vrlMakeDirectoryExtractedComponentFactory(extractor, dsPathString_<dsMBCSSafeString>(text));
}

vrlExtractedComponentFactory makeFactory(JNIEnv* env, const vrlkrt::KpaExtractor& extractor,
                                         const InstanceRequest& request) {
    return request.useCache == JNI_TRUE ? vrlMakeComponentCacheExtractedComponentFactory(extractor)
                                        : directoryFactory(env, extractor, request.extractTo);
}

/// The new instance, with handlers around the two callables. The runtime takes them in the opposite of Java's order.
void* createInstance(const InstanceRequest& request, const vrlExtractedComponentFactory& factory) {
    const vrlPrintHandler second = JavaPrintHandler(*sharedEnvInjector, request.second);
    const vrlPrintHandler first = JavaPrintHandler(*sharedEnvInjector, request.first);
    return vrlInitializeComponentInstance(first, second, factory);
}

/// Ends an instance that Java will get no handle of.
struct InstanceEnd {
    void operator()(void* handle) const noexcept {
        try {
            vrlTerminateInstanceInternal(handle);
        } catch (const std::exception&) {
            return;
        }
    }
};

/// Java's handle of a new instance, which is ended again when the handle can't be made.
jobject handleOf(JNIEnv* env, std::unique_ptr<void, InstanceEnd> instance) {
    jobject handle = NewJNativePtrProxy(env, instance.get()).detach();
    static_cast<void>(instance.release());
    return handle;
}

jobject initializeInstance(JNIEnv* env, const InstanceRequest& request) {
    vrlkrt::KpaExtractor extractor;
    std::unique_ptr<char[]> bytes;
    if (request.archive == nullptr && request.length != -1) {
        return refuse(env, "KPA InputStream is null");
    }
    if (request.archive == nullptr) {
        extractor = vrlMakeAlwaysFailExtractor(JStringProxy(env, request.componentText).getStringUTFChars());
    } else {
        bytes = readArchive(env, request.archive, request.length);
        if (bytes == nullptr) {
            return refuse(env, "KPA InputStream is not valid");
        }
        extractor = vrlMakeKpaStreamExtractor(vrlGetKpaStreamFromArraySrc(bytes.get(), request.length));
    }
    const vrlExtractedComponentFactory factory = makeFactory(env, extractor, request);
    if (factory.empty()) {
        return nullptr;
    }
    return handleOf(env, std::unique_ptr<void, InstanceEnd>(createInstance(request, factory)));
}

}  // namespace

jobject Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlInitializeComponentInstance(
    JNIEnv* env, jclass, jboolean useCache, jint, jstring componentText, jstring extractTo, jobject archive,
    jint length, jobject second, jobject first) {
    return guarded<jobject>(nullptr, [&] {
        configureRuntimeOnce(env);
        return runtimeFacing<jobject>(env, "An error occurred while initializing the component.\n", nullptr, [&] {
            return initializeInstance(env, {useCache, componentText, extractTo, archive, length, second, first});
        });
    });
}

jboolean Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlTerminateInstance(JNIEnv* env, jclass, jobject handle) {
    return runtimeFacing<jboolean>(env, "An error occurred while disposing the component.\n", JNI_FALSE, [&] {
        const JNativePtrProxy instance(env, handle);
        vrlTerminateInstanceInternal(instance.address());
        return static_cast<jboolean>(JNI_TRUE);
    });
}

void Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlWaitForFiguresToDie(JNIEnv* env, jclass, jobject handle) {
    runtimeFacing(env, "An error occurred while waiting for figures to close.\n", false, [&] {
        const JNativePtrProxy instance(env, handle);
        return vrlWaitForFiguresToDieInternal(instance.address(), false);
    });
}

jobject Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlGetActiveKRT(JNIEnv* env, jclass) {
    return guarded<jobject>(nullptr, [&] { return NewJNativePtrProxy(env, vrlGetActiveHKRTINSTANCE()).detach(); });
}
