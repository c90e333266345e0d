/// The native that runs a function of a component.

#include "boundary/arrayhandle.h"
#include "boundary/boundary.h"
#include "entry/localqxarraylist.h"
#include "jzi/jzi.h"
#include "krt/krtinstance.h"
#include "proxies/jnativeptrproxy.h"
#include "proxies/jnvarrayproxy.h"
#include "proxies/jnvexceptionproxy.h"
#include "proxies/jnvjavaobjectrefproxy.h"
#include "proxies/jobjectarrayproxy.h"
#include "proxies/jsystemproxies.h"
#include "toarray/jconvert.h"
#include "vrlbase/vrlbase.h"
#include "vrlkrt/vrlkrt.h"

#include "com_norvane_toolbox_loomkit_internal_NVKRT.h"

#include <string>
#include <vector>

using namespace nativevrl;

namespace {

/// An array of the caller's around a Java object, which may be null. The array owns a global reference to it.
qxArray* wrapReferent(JNIEnv* env, krtInstance& instance, const JObjectProxy& referent) {
    jobject reference = env->NewGlobalRef(referent.ref());
    if (reference == nullptr && !referent.isNull()) {
        tether::throwOutOfMemory(env);
    }
    qxArray* array = instance.javaObjectToQxArray(reference);
    if (array == nullptr) {
        env->DeleteGlobalRef(reference);
        tether::throwOutOfMemory(env);
    }
    return array;
}

/// One input as an array of the caller's: a Java object reference wrapped, anything else converted.
qxArray* arrayOfInput(JConvert::JavaKindReader& kindOf, krtInstance& instance, const JObjectProxy& input) {
    JNIEnv* env = kindOf.env();
    if (!input.isNull() && input.isInstanceOf<JNVJavaObjectRefClassProxy>()) {
        const JObjectProxy referent = JNVJavaObjectRefProxy(env, input.ref()).get();
        return wrapReferent(env, instance, referent);
    }
    return JConvert::convertObject(kindOf, input).release();
}

void convertInputs(JNIEnv* env, krtInstance& instance, const JListIteratorProxy& inputs, LocalQxArrayList& arrays) {
    JConvert::JavaKindReader kindOf(env);
    for (unsigned i = 0; inputs.hasNext(); ++i) {
        arrays[i] = arrayOfInput(kindOf, instance, inputs.next());
    }
}

/// The Java object of one result, a local reference of the caller. The array is the new object's from here on.
jobject objectOfResult(JNIEnv* env, krtInstance& instance, qxArray* result) {
    if (result != nullptr && ojIsJavaArray(result)) {
        return NewJNVJavaObjectRefProxy(env, result, &instance).detach();
    }
    return NewJNVArrayProxy(env, setFreeScope(result)).detach();
}

/// Hands the results over, one to each place of the iterator. An array stays in its slot until its object is made
/// and answers for it, so that a failure finds one owner and not two.
void handBack(JNIEnv* env, krtInstance& instance, const JListIteratorProxy& outputs, LocalQxArrayList& arrays) {
    for (unsigned i = 0; outputs.hasNext(); ++i) {
        outputs.next();
        const auto object = adopt(env, objectOfResult(env, instance, arrays[i]));
        arrays[i] = nullptr;
        outputs.set(object.ref());
    }
}

/// What Java hands over for one call. All borrowed.
struct Evaluation {
    jobject instance = nullptr;
    jstring function = nullptr;
    jint nlhs = 0;
    jobject outputs = nullptr;
    jint nrhs = 0;
    jobject inputs = nullptr;
};

void evaluate(JNIEnv* env, const Evaluation& evaluation) {
    const JNativePtrProxy instancePtr(env, evaluation.instance);
    JStringProxy function(env, evaluation.function);
    const JListIteratorProxy outputs(env, evaluation.outputs);
    const JListIteratorProxy inputs(env, evaluation.inputs);
    LocalQxArrayList results(static_cast<unsigned>(evaluation.nlhs));
    LocalQxArrayList arguments(static_cast<unsigned>(evaluation.nrhs));
    void* handle = instancePtr.address();
    krtInstance& instance = *vrlHandleToKrtInstancePtr(handle);
    convertInputs(env, instance, inputs, arguments);
    vrlLoomkitFeval(handle, function.getStringUTFChars(), evaluation.nlhs, results.data(), evaluation.nrhs,
                    arguments.data());
    // A print handler may have left an exception of Java's, which goes before any result.
    tether::throwIfPending(env);
    handBack(env, instance, outputs, results);
}

/// Raises an NVException with the message and the native stack of a failed function. An exception of Java's that is
/// pending stands before it.
void throwWithStack(JNIEnv* env, const Norvane::vrl::vrlBaseException& failure) {
    tether::throwIfPending(env);
    const std::vector<std::string> lines = createStackStrings(failure.getStack());
    NewJObjectArrayProxy<JStringProxy> stack(env, static_cast<jsize>(lines.size()));
    for (std::size_t i = 0; i < lines.size(); ++i) {
        stack.set(static_cast<jsize>(i), NewJStringProxy(env, lines[i].c_str()).ref());
    }
    const NewJStringProxy message(env, failure.getErrorMessage().c_str());
    const NewJNVExceptionProxy exception(env, static_cast<jstring>(message.ref()), stack.array(),
                                         static_cast<jint>(lines.size()));
    env->Throw(static_cast<jthrowable>(exception.ref()));
}

}  // namespace

void Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlFeval(JNIEnv* env, jclass, jobject instance, jstring function,
                                                              jint nlhs, jobject outputs, jint nrhs, jobject inputs) {
    Evaluation evaluation;
    evaluation.instance = instance;
    evaluation.function = function;
    evaluation.nlhs = nlhs;
    evaluation.outputs = outputs;
    evaluation.nrhs = nrhs;
    evaluation.inputs = inputs;
    evaluating(
        env, "An unknown internal error has occurred while trying to run the TAVRIX function.\n",
        [&] { evaluate(env, evaluation); },
        [&](const Norvane::vrl::vrlBaseException& failure) { throwWithStack(env, failure); });
}
