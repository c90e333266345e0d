#include "entry/showcase.h"
#include "qx/qx.h"

#include "com_norvane_toolbox_loomkit_internal_NVKRT.h"

namespace nativevrl::test {

namespace {

/// Calls that give arrays to Java close them, so that what is alive can be counted.
class Feval : public ShowcaseTest {
protected:
    /// The array behind a wrapper.
    qxArray* arrayOf(jobject wrapper) {
        return static_cast<qxArray*>(
            addressIn(env, callObject(env, wrapper, "getValue", "()Lcom/norvane/toolbox/loomkit/internal/NativePtr;")));
    }

    double scalarOf(jobject wrapper) { return *static_cast<const double*>(arrayOf(wrapper)->realData()); }

    void closeAll(jobjectArray results) {
        for (std::size_t i = 0; i < lengthOf(env, results); ++i) {
            if (jobject result = elementAt(env, results, i)) {
                callVoid(env, result, "close", "()V");
            }
        }
    }

    void run(jobject outputs, jint outputCount, const char16_t* function, jobject inputs, jint inputCount) {
        Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlFeval(env, nullptr, instance, javaString(env, function),
                                                                 outputCount, outputs, inputCount, inputs);
    }

    jobjectArray objects(const std::vector<jobject>& elements) {
        return objectArray(env, "java/lang/Object", elements);
    }
};

TEST_F(Feval, RunsAFunctionAndHandsItsResultOver) {
    jobject matrix = nested<jdouble>(env, {{1, 2, 3}, {4, 5, 6}});
    const JniCounter counter(env);
    jobjectArray results = call(u"same", {matrix}, 1);
    expectNoThrow(env);
    EXPECT_EQ(counter.pinnedBlocks(), 0);
    EXPECT_EQ(counter.globalReferences(), 0);
    jobject result = elementAt(env, results, 0);
    EXPECT_EQ(classNameOf(env, result), "com/norvane/toolbox/loomkit/NVNumericArray");
    const qxArray* array = arrayOf(result);
    ASSERT_EQ(qxGetNumberOfElements(array), 6U);
    EXPECT_EQ(static_cast<const double*>(array->realData())[2], 2) << "column-major";
    closeAll(results);
}

TEST_F(Feval, AWrapperAsInputStaysItsOwner) {
    jobjectArray first = call(u"same", {boxed<jdouble>(env, 4.5)}, 1);
    jobjectArray second = call(u"same", {elementAt(env, first, 0)}, 1);
    expectNoThrow(env);
    closeAll(first);
    EXPECT_EQ(scalarOf(elementAt(env, second, 0)), 4.5);
    closeAll(second);
}

TEST_F(Feval, AnyNumberOfArgumentsGoesThrough) {
    for (const int count : {0, 1, 10, 11, 100}) {
        SCOPED_TRACE(count);
        jobjectArray results =
            call(u"count", std::vector<jobject>(static_cast<std::size_t>(count), boxed<jint>(env, 1)), 2);
        expectNoThrow(env);
        EXPECT_EQ(scalarOf(elementAt(env, results, 0)), count);
        closeAll(results);
    }
    for (const int count : {2, 10, 11}) {
        SCOPED_TRACE(count);
        jobjectArray results = call(u"count", {}, count);
        expectNoThrow(env);
        EXPECT_EQ(scalarOf(elementAt(env, results, 1)), count);
        closeAll(results);
    }
    call(u"count", {}, 0);
    expectNoThrow(env);
}

TEST_F(Feval, AnInputThatMakesNoArrayEndsTheCallBeforeItRuns) {
    jobject list = newObject(env, "java/util/ArrayList", "()V");
    call(u"say", {javaString(env, u"never said"), list}, 0);
    expectThrown(env, "java/lang/RuntimeException",
                 "Tried to create qxArray of unsupported type.  Java type: java.util.ArrayList");
    EXPECT_EQ(recordedText(env, ordinaryOutput), "");
}

struct IteratorFailure {
    const char* operation;
    int place;
    bool ofInputs;
};

TEST_F(Feval, AnExceptionOfAnIteratorArrivesUnchanged) {
    const IteratorFailure failures[] = {
        {"hasNext", 0, true}, {"next", 0, true},     {"hasNext", 1, true}, {"next", 1, true},
        {"hasNext", 2, true}, {"hasNext", 0, false}, {"next", 0, false},
    };
    const std::size_t before = qxLiveArrayCount();
    for (const IteratorFailure& failure : failures) {
        const std::string message = std::string(failure.operation) + " fails at " + std::to_string(failure.place);
        SCOPED_TRACE((failure.ofInputs ? "inputs: " : "outputs: ") + message);
        jobjectArray inputs = objects({boxed<jdouble>(env, 1), javaString(env, u"two")});
        jobjectArray outputs = objects({nullptr, nullptr});
        jobject failing = places(env, failure.ofInputs ? inputs : outputs, failure.operation, failure.place);
        const JniCounter counter(env);
        run(failure.ofInputs ? places(env, outputs) : failing, 2, u"count",
            failure.ofInputs ? failing : places(env, inputs), 2);
        expectThrown(env, "java/lang/IllegalStateException", message.c_str());
        EXPECT_EQ(qxLiveArrayCount(), before);
        EXPECT_EQ(counter.pinnedBlocks(), 0);
    }
}

TEST_F(Feval, AFailedSetLeavesTheOtherResultsToTheCall) {
    jobject reference = newObject(env, "com/norvane/toolbox/loomkit/NVJavaObjectRef", "(Ljava/lang/Object;)V",
                                  {objectArgument(javaString(env, u"held"))});
    const JniCounter counter(env);
    run(places(env, objects({nullptr}), "set", 0), 1, u"same", places(env, objects({reference})), 1);
    expectThrown(env, "java/lang/IllegalStateException", "set fails at 0");
    EXPECT_EQ(counter.globalReferences(), 0);
    const std::size_t before = qxLiveArrayCount();
    for (int place = 0; place < 2; ++place) {
        jobjectArray results = objects({nullptr, nullptr});
        run(places(env, results, "set", place), 2, u"count", places(env, objects({})), 0);
        expectThrown(env, "java/lang/IllegalStateException", ("set fails at " + std::to_string(place)).c_str());
        EXPECT_EQ(qxLiveArrayCount() - before, static_cast<std::size_t>(place) + 1) << "what Java was given";
        EXPECT_EQ(scalarOf(elementAt(env, results, static_cast<std::size_t>(place))), 2 * place);
        closeAll(results);
        EXPECT_EQ(qxLiveArrayCount(), before);
    }
}

TEST_F(Feval, ResultsThatFoundNoPlaceAreEnded) {
    jobjectArray results = objects({nullptr});
    run(places(env, results), 2, u"count", places(env, objects({})), 0);
    expectNoThrow(env);
    closeAll(results);
}

TEST_F(Feval, OutputGoesToTheHandlersOfTheInstance) {
    call(u"say", {javaString(env, u"hello")}, 0);
    call(u"caution", {javaString(env, u"careful")}, 0);
    call(u"say_from_thread", {javaString(env, u"line"), boxed<jint>(env, 2)}, 0);
    expectNoThrow(env);
    EXPECT_EQ(recordedText(env, ordinaryOutput), "hello\nline 0\nline 1\n");
    EXPECT_EQ(recordedText(env, warnings), "Warning: careful\nWarning: line is done\n");
    EXPECT_EQ(recordedThread(env, ordinaryOutput), "<anonymous thread>");
}

}  // namespace

}  // namespace nativevrl::test
