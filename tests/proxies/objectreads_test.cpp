#include "proxies/jnumberformatexception.h"
#include "proxies/jobjectproxy.h"
#include "support/jvmtest.h"

#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <tuple>
#include <vector>

namespace nativevrl::test::objectreads {

constexpr std::int32_t indefinite32 = std::numeric_limits<std::int32_t>::min();
constexpr std::int64_t indefinite64 = std::numeric_limits<std::int64_t>::min();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

/// A text and what it reads as in each type but boolean.

const std::tuple<std::u16string, int, int, int, std::int64_t, std::int64_t, double, double> readableTexts[] = {
    {u"12", '1', 12, 12, 12, 12, 12, 12},
    {u"300", '3', 44, 300, 300, 300, 300, 300},
    {u"1e3", '1', std::int8_t(0xe8), 1000, 1000, 1000, 1000, 1000},
    {u" 5 ", ' ', 5, 5, 5, 5, 5, 5},
    {u"-2.9", '-', -2, -2, -2, -2, double(-2.9f), -2.9},
    {u"NaN", 'N', 0, 0, indefinite32, indefinite64, nan, nan},
    {u"4294967301", '4', 0, 0, indefinite32, 4294967301, double(4294967301.0f), 4294967301.0},
    {u"1e30", '1', 0, 0, indefinite32, indefinite64, double(1e30f), 1e30},
};

void expectSame(double read, double expected) {
    EXPECT_TRUE(read == expected || (std::isnan(read) && std::isnan(expected))) << read << " instead of " << expected;
}

using ObjectReads = JvmTest;

TEST_F(ObjectReads, GiveWhatTheTextSays) {
    for (const auto& [givenText, asChar, asByte, asShort, asInt, asLong, asFloat, asDouble] : readableTexts) {
        jobject text = javaString(env, givenText);
        SCOPED_TRACE(toText(env, text));
        const JObjectProxy object(env, text);
        const JniCounter counter(env);
        EXPECT_EQ(object.asChar(), asChar);
        EXPECT_EQ(object.asByte(), asByte);
        EXPECT_EQ(object.asShort(), asShort);
        EXPECT_EQ(object.asInt(), asInt);
        EXPECT_EQ(object.asLong(), asLong);
        expectSame(object.asFloat(), asFloat);
        expectSame(object.asDouble(), asDouble);
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

TEST_F(ObjectReads, LookNoClassUpForATextThatAParserRefuses) {
    const JObjectProxy object(env, javaString(env, u"1.5"));
    EXPECT_EQ(object.asInt(), 1);
    const JniCounter counter(env);
    EXPECT_EQ(object.asInt(), 1);
    EXPECT_EQ(counter.calls(&JNINativeInterface_::FindClass), 0);
    EXPECT_EQ(counter.localReferences(), 0);
}

TEST_F(ObjectReads, StopAtAFailureThatIsNoRefusalOfTheText) {
    const JObjectProxy object(env, javaString(env, u"12"));
    const JniCounter counter(env);
    expectOutOfMemory(env, &JNINativeInterface_::CallStaticIntMethodA,
                      [&] { EXPECT_THROW(object.asInt(), tether::Exception); });
    EXPECT_EQ(counter.calls(&JNINativeInterface_::CallStaticDoubleMethodA), 0);
}

}  // namespace nativevrl::test::objectreads
