#include "proxies/jnumberformatexception.h"
#include "proxies/jobjectproxy.h"
#include "support/jvmtest.h"

#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace nativevrl::test {

namespace {

constexpr std::int32_t indefinite32 = std::numeric_limits<std::int32_t>::min();
constexpr std::int64_t indefinite64 = std::numeric_limits<std::int64_t>::min();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

/// What an object reads as in each of the eight types.
struct Expected {
    int asBoolean;
    int asChar;
    int asByte;
    int asShort;
    std::int64_t asInt;
    std::int64_t asLong;
    double asFloat;
    double asDouble;
};

struct Case {
    const char* name;
    std::function<jobject(JNIEnv*)> make;
    Expected expected;
};

Case text(const char* name, const std::u16string& value, const Expected& expected) {
    return {name, [value](JNIEnv* env) { return javaString(env, value); }, expected};
}

template <typename T>
Case box(const char* name, T value, const Expected& expected) {
    return {name, [value](JNIEnv* env) { return boxed<T>(env, value); }, expected};
}

std::vector<Case> readableCases() {
    constexpr std::int64_t big = (std::int64_t{1} << 40) + 0x1fe;
    return {
        box<jint>("int 300", 300, {1, 300, 44, 300, 300, 300, 300, 300}),
        box<jbyte>("byte -1", -1, {1, 0xffff, -1, -1, -1, -1, -1, -1}),
        box<jshort>("short 0", 0, {0, 0, 0, 0, 0, 0, 0, 0}),
        box<jlong>("long beyond int", big, {1, 0x1fe, -2, 0x1fe, 0x1fe, big, double(float(big)), double(big)}),
        box<jdouble>("double -2.9", -2.9, {1, 0xfffe, -2, -2, -2, -2, double(-2.9f), -2.9}),
        box<jdouble>("double NaN: Java's own conversion gives 0", nan, {1, 0, 0, 0, 0, 0, nan, nan}),
        box<jfloat>("float 0.5", 0.5f, {1, 0, 0, 0, 0, 0, 0.5, 0.5}),
        box<jboolean>("true", JNI_TRUE, {1, 1, 1, 1, 1, 1, 1, 1}),
        box<jboolean>("false", JNI_FALSE, {0, 0, 0, 0, 0, 0, 0, 0}),
        box<jchar>("character A", 'A', {65, 65, 65, 65, 65, 65, 65, 65}),
        box<jchar>("character beyond a byte", 0x92fe,
                   {0xfe, 0x92fe, -2, std::int16_t(0x92fe), 0x92fe, 0x92fe, 0x92fe, 0x92fe}),
        text("text 12", u"12", {0, '1', 12, 12, 12, 12, 12, 12}),
        text("text 300 passes as a double for a byte", u"300", {0, '3', 44, 300, 300, 300, 300, 300}),
        text("text 1e3", u"1e3", {0, '1', std::int8_t(0xe8), 1000, 1000, 1000, 1000, 1000}),
        text("text with blanks", u" 5 ", {0, ' ', 5, 5, 5, 5, 5, 5}),
        text("text -2.9", u"-2.9", {0, '-', -2, -2, -2, -2, double(-2.9f), -2.9}),
        text("text NaN is truncated", u"NaN", {0, 'N', 0, 0, indefinite32, indefinite64, nan, nan}),
        text("text beyond int", u"4294967301",
             {0, '4', 0, 0, indefinite32, 4294967301, double(4294967301.0f), 4294967301.0}),
        text("text beyond long", u"1e30", {0, '1', 0, 0, indefinite32, indefinite64, double(1e30f), 1e30}),
        {"object of another class",
         [](JNIEnv* env) { return newObject(env, "java/util/ArrayList", "()V"); },
         {0, 0, 0, 0, 0, 0, 0, 0}},
        {"array", [](JNIEnv* env) -> jobject { return intArray(env, {7}); }, {0, 0, 0, 0, 0, 0, 0, 0}},
    };
}

void expectSame(double read, double expected) {
    EXPECT_TRUE(read == expected || (std::isnan(read) && std::isnan(expected))) << read << " instead of " << expected;
}

using ObjectReads = JvmTest;

TEST_F(ObjectReads, GiveWhatTheKindOfObjectSays) {
    for (const Case& one : readableCases()) {
        SCOPED_TRACE(one.name);
        const JObjectProxy object(env, one.make(env));
        const JniCounter counter(env);
        EXPECT_EQ(object.asBoolean(), one.expected.asBoolean);
        EXPECT_EQ(object.asChar(), one.expected.asChar);
        EXPECT_EQ(object.asByte(), one.expected.asByte);
        EXPECT_EQ(object.asShort(), one.expected.asShort);
        EXPECT_EQ(object.asInt(), one.expected.asInt);
        EXPECT_EQ(object.asLong(), one.expected.asLong);
        expectSame(object.asFloat(), one.expected.asFloat);
        expectSame(object.asDouble(), one.expected.asDouble);
        EXPECT_EQ(counter.localReferences(), 0);
        EXPECT_EQ(counter.pinnedBlocks(), 0);
        expectNoThrow(env);
    }
}

TEST_F(ObjectReads, TextIsTrueAsJavaReadsIt) {
    for (const auto& [value, expected] :
         std::vector<std::pair<std::u16string, int>>{{u"true", 1}, {u"TRUE", 1}, {u"1", 0}, {u"yes", 0}, {u"", 0}}) {
        EXPECT_EQ(JObjectProxy(env, javaString(env, value)).asBoolean(), expected);
    }
    EXPECT_EQ(JObjectProxy(env, javaString(env, u"")).asChar(), 0);
}

/// The six numeric reads.
std::vector<std::pair<const char*, std::function<void(const JObjectProxy&)>>> numericReads() {
    return {
        {"byte", [](const JObjectProxy& object) { object.asByte(); }},
        {"short", [](const JObjectProxy& object) { object.asShort(); }},
        {"int", [](const JObjectProxy& object) { object.asInt(); }},
        {"long", [](const JObjectProxy& object) { object.asLong(); }},
        {"float", [](const JObjectProxy& object) { object.asFloat(); }},
        {"double", [](const JObjectProxy& object) { object.asDouble(); }},
    };
}

TEST_F(ObjectReads, TextThatIsNoNumberFailsWithTheWordsOfTheLastParser) {
    for (const auto& [value, message] :
         std::vector<std::pair<std::u16string, const char*>>{{u"twelve", "For input string: \"twelve\""},
                                                             {u"", "For input string: \"\""},
                                                             {u"0x10", "For input string: \"0x10\""}}) {
        const JObjectProxy object(env, javaString(env, value));
        for (const auto& [type, read] : numericReads()) {
            SCOPED_TRACE(type);
            EXPECT_THROW(read(object), JNumberFormatException);
            expectThrown(env, "java/lang/NumberFormatException", message);
        }
    }
}

TEST_F(ObjectReads, TriesItsParsersInAFixedOrder) {
    const JObjectProxy object(env, javaString(env, u"twelve"));
    const auto parserCalls = [&](const std::function<void()>& read) {
        const JniCounter counter(env);
        EXPECT_THROW(read(), JNumberFormatException);
        std::vector<int> calls = {counter.calls(&JNINativeInterface_::CallStaticIntMethodA),
                                  counter.calls(&JNINativeInterface_::CallStaticDoubleMethodA),
                                  counter.calls(&JNINativeInterface_::CallStaticLongMethodA)};
        expectThrownClass(env, "java/lang/NumberFormatException");
        return calls;
    };
    EXPECT_EQ(parserCalls([&] { object.asInt(); }), (std::vector<int>{1, 1, 1}));
    EXPECT_EQ(parserCalls([&] { object.asDouble(); }), (std::vector<int>{0, 2, 1}));
    EXPECT_EQ(parserCalls([&] { object.asLong(); }), (std::vector<int>{0, 1, 2}));
}

TEST_F(ObjectReads, StopAtAFailureThatIsNoRefusalOfTheText) {
    const JObjectProxy object(env, javaString(env, u"12"));
    const JniCounter counter(env);
    {
        const JniFaults faults(env, &JNINativeInterface_::CallStaticIntMethodA, 1);
        EXPECT_THROW(object.asInt(), tether::Exception);
    }
    expectThrownClass(env, "java/lang/OutOfMemoryError");
    EXPECT_EQ(counter.calls(&JNINativeInterface_::CallStaticDoubleMethodA), 0);
}

TEST_F(ObjectReads, AUnitThatCannotBeFetchedIsZeroAndTheExceptionStays) {
    const JObjectProxy object(env, javaString(env, u"text"));
    {
        const JniFaults faults(env, &JNINativeInterface_::GetStringChars, 1);
        EXPECT_EQ(object.asChar(), 0);
    }
    expectThrownClass(env, "java/lang/OutOfMemoryError");
}

TEST_F(ObjectReads, AFailureOfANumberItselfStaysPending) {
    const JObjectProxy object(env, newObject(env, "com/norvane/toolbox/loomkit/testing/FailingNumber", "()V"));
    for (const auto& [type, read] : numericReads()) {
        SCOPED_TRACE(type);
        EXPECT_THROW(read(object), tether::Exception);
        expectThrown(env, "java/lang/IllegalStateException", "this number has no value");
    }
}

}  // namespace

}  // namespace nativevrl::test
