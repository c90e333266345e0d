#include "entry/showcase.h"
#include "qx/qx.h"
#include "support/natives.h"

namespace nativevrl::test::feval {

/// Calls that give arrays to Java close them, so that what is alive can be counted.
class Feval : public ShowcaseTest {
protected:
    double scalarOf(jobject wrapper) { return *static_cast<const double*>(arrayOf(env, wrapper)->realData()); }

    void closeAll(jobjectArray results) {
        for (std::size_t i = 0; i < lengthOf(env, results); ++i) {
            if (jobject result = elementAt(env, results, i)) {
                close(env, result);
            }
        }
    }

    void run(jobject outputs, jint outputCount, const char16_t* function, jobject inputs, jint inputCount) {
        NVKRT(vrlFeval)(env, nullptr, instance, javaString(env, function), outputCount, outputs, inputCount, inputs);
    }

    jobjectArray objects(const std::vector<jobject>& elements) {
        return objectArray(env, "java/lang/Object", elements);
    }
};

TEST_F(Feval, LeavesNothingPinnedOrReferenced) {
    jobject matrix = nested<jdouble>(env, {{1, 2, 3}, {4, 5, 6}});
    const JniCounter counter(env);
    jobjectArray results = call(u"same", {matrix}, 1);
    EXPECT_EQ(counter.pinnedBlocks() + counter.globalReferences(), 0);
    EXPECT_EQ(qxGetNumberOfElements(arrayOf(env, elementAt(env, results, 0))), 6U);
    closeAll(results);
}

TEST_F(Feval, AnInputThatMakesNoArrayEndsTheCallBeforeItRuns) {
    jobject list = newObject(env, "java/util/ArrayList", "()V");
    call(u"say", {javaString(env, u"never said"), list}, 0);
    expectThrown(env, "java/lang/RuntimeException",
                 "Tried to create qxArray of unsupported type.  Java type: java.util.ArrayList");
    EXPECT_EQ(recordedText(env, ordinaryOutput), "");
}

TEST_F(Feval, AnExceptionOfAnIteratorArrivesUnchanged) {
    const std::size_t before = qxLiveArrayCount();
    for (const auto& [operation, place, ofInputs] : {std::tuple("hasNext", 0, true),
                                                     {"next", 0, true},
                                                     {"hasNext", 1, true},
                                                     {"next", 1, true},
                                                     {"hasNext", 2, true},
                                                     {"hasNext", 0, false},
                                                     {"next", 0, false}}) {
        const std::string message = std::string(operation) + " fails at " + std::to_string(place);
        SCOPED_TRACE((ofInputs ? "inputs: " : "outputs: ") + message);
        jobjectArray inputs = objects({boxed<jdouble>(env, 1), javaString(env, u"two")});
        jobjectArray outputs = objects({nullptr, nullptr});
        jobject failing = places(env, ofInputs ? inputs : outputs, operation, place);
        const JniCounter counter(env);
        run(ofInputs ? places(env, outputs) : failing, 2, u"count", ofInputs ? failing : places(env, inputs), 2);
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

}  // namespace nativevrl::test::feval
