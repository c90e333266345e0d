/// Natives that create component instances and end them.

#include "boundary/boundary.h"
#include "entry/javaprinthandler.h"
#include "entry/javastreamsource.h"
#include "entry/librarystate.h"
#include "entry/startup.h"
#include "proxies/jnativeptrproxy.h"
#include "proxies/jstringproxy.h"
#include "vrlkrt/vrlkrt.h"

#include "com_norvane_toolbox_loomkit_internal_NVKRT.h"

#include <boost/iostreams/stream_buffer.hpp>

#include <exception>
#include <istream>
#include <memory>
#include <new>
#include <optional>
#include <utility>

using namespace nativevrl;

namespace {

/// Where the text of an instance goes: Callables of PrintStreams, for errors with warnings and for the rest.
struct PrintCallables {
    jobject errors = nullptr;
    jobject ordinary = nullptr;
};

/// What Java hands over for a new instance. All borrowed.
struct InstanceRequest {
    jboolean useCache = JNI_FALSE;
    jstring componentText = nullptr;  ///< names the component in the failure to load it without an archive
    jstring extractTo = nullptr;      ///< folder for its files, without the cache
    jobject archive = nullptr;        ///< InputStream over `length` bytes, or null with a length of -1
    jint length = 0;
    PrintCallables output;
};

/// Reports a request that can't be met: always false. The failure leaves by an ordinary return, so what was built so
/// far ends in the usual order.
bool refuse(JNIEnv* env, const char* message) {
    tether::throwNamedException(env, nvExceptionClass, message);
    return false;
}

/// A Java stream as the source of a native one.
struct ArchiveStream {
    ArchiveStream(JNIEnv* env, jobject inputStream)
        : stream(env, inputStream), source(&stream), buffer(source, -1, -1) {}

    JInputStreamProxy stream;
    JInputStreamProxySource source;
    boost::iostreams::stream_buffer<JInputStreamProxySource> buffer;
};

/// What one creation builds. It goes from the last member to the first, so nothing outlives what it was made over.
struct Creation {
    std::optional<ArchiveStream> stream;  ///< none without an archive
    vrlkrt::KpaExtractor extractor;
    boost::shared_ptr<std::istream> archive;  ///< the runtime's stream over the bytes
    std::unique_ptr<char[]> bytes;
    vrlExtractedComponentFactory factory;
};

/// The archive's bytes, read to their announced length; null when the stream held fewer. Room for them that can't be
/// had is an OutOfMemoryError.
std::unique_ptr<char[]> readArchive(JNIEnv* env, ArchiveStream& stream, jint length) {
    std::istream input(&stream.buffer);
    // A negative length is asked for as the huge size that it is when taken as unsigned.
    std::unique_ptr<char[]> bytes(new (std::nothrow) char[static_cast<std::size_t>(length)]);
    if (bytes == nullptr) {
        tether::throwOutOfMemory(env);
    }
    if (!input.eof()) {
        input.read(bytes.get(), length);
        if (static_cast<jint>(input.gcount()) != length) {
            return nullptr;
        }
    }
    return bytes;
}

/// Chooses the way to the archive. False when the request can't be met: then a failure is reported.
bool chooseExtractor(JNIEnv* env, const InstanceRequest& request, Creation& creation) {
    if (request.archive == nullptr && request.length != -1) {
        return refuse(env, "KPA InputStream is null");
    }
    if (request.archive == nullptr) {
        creation.extractor = vrlMakeAlwaysFailExtractor(JStringProxy(env, request.componentText).getStringUTFChars());
        return true;
    }
    creation.stream.emplace(env, request.archive);
    creation.bytes = readArchive(env, *creation.stream, request.length);
    if (creation.bytes == nullptr) {
        return refuse(env, "KPA InputStream is not valid");
    }
    creation.archive = vrlGetKpaStreamFromArraySrc(creation.bytes.get(), request.length);
    creation.extractor = vrlMakeKpaStreamExtractor(creation.archive);
    return true;
}

/// Chooses where the component's files are to lie: in the cache, or in the folder that Java named. False when the
/// request can't be met: then a failure is reported.
bool chooseFactory(JNIEnv* env, const InstanceRequest& request, Creation& creation) {
    if (request.useCache == JNI_TRUE) {
        creation.factory = vrlMakeComponentCacheExtractedComponentFactory(creation.extractor);
        return true;
    }
    JStringProxy location(env, request.extractTo);
    const char* text = location.getStringUTFChars();
    if (text == nullptr) {
        return refuse(env, "No valid extract location specified");
    }
    creation.factory =
        vrlMakeDirectoryExtractedComponentFactory(creation.extractor, dsPathString_<dsMBCSSafeString>(text));
    return true;
}

/// The new instance, with handlers around the two callables.
void* createInstance(const PrintCallables& output, const vrlExtractedComponentFactory& factory) {
    const vrlPrintHandler ordinary = JavaPrintHandler(*sharedEnvInjector, output.ordinary);
    const vrlPrintHandler errors = JavaPrintHandler(*sharedEnvInjector, output.errors);
    return vrlInitializeComponentInstance(errors, ordinary, factory);
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
    NewJNativePtrProxy handle(env, instance.get());
    static_cast<void>(instance.release());
    return handle.detach();
}

jobject initializeInstance(JNIEnv* env, const InstanceRequest& request) {
    Creation creation;
    if (!chooseExtractor(env, request, creation) || !chooseFactory(env, request, creation)) {
        return nullptr;
    }
    std::unique_ptr<void, InstanceEnd> instance(createInstance(request.output, creation.factory));
    creation.factory.clear();
    return handleOf(env, std::move(instance));
}

}  // namespace

jobject Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlInitializeComponentInstance(
    JNIEnv* env, jclass, jboolean useCache, jint, jstring componentText, jstring extractTo, jobject archive,
    jint length, jobject ordinaryOutput, jobject errorOutput) {
    InstanceRequest request;
    request.useCache = useCache;
    request.componentText = componentText;
    request.extractTo = extractTo;
    request.archive = archive;
    request.length = length;
    request.output.errors = errorOutput;
    request.output.ordinary = ordinaryOutput;
    return guarded<jobject>(env, nullptr, [&] {
        configureRuntimeOnce(env);
        return runtimeFacing<jobject>(env, "An error occurred while initializing the component.\n", nullptr,
                                      [&] { return initializeInstance(env, request); });
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
    runtimeFacing(env, "An error occurred while waiting for figures to close.\n", [&] {
        const JNativePtrProxy instance(env, handle);
        vrlWaitForFiguresToDieInternal(instance.address(), false);
    });
}

jobject Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlGetActiveKRT(JNIEnv* env, jclass) {
    return guarded<jobject>(env, nullptr, [&] { return NewJNativePtrProxy(env, vrlGetActiveHKRTINSTANCE()).detach(); });
}
