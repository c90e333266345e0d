#include "proxies/jnonkrtproxies.h"
#include "proxies/jsystemproxies.h"
#include "support/javaobjects.h"
#include "support/jvmtest.h"

namespace nativevrl::test {

namespace {

using SystemProxies = JvmTest;

TEST_F(SystemProxies, WalkAListIterator) {
    jobjectArray values = objectArray(env, "java/lang/Object", {javaString(env, u"one"), nullptr});
    const JListIteratorProxy iterator(env, places(env, values));
    ASSERT_TRUE(iterator.hasNext());
    EXPECT_EQ(describe(env, iterator.next().ref()), "one");
    iterator.set(boxed<jint>(env, 7));
    ASSERT_TRUE(iterator.hasNext());
    EXPECT_TRUE(iterator.next().isNull());
    EXPECT_FALSE(iterator.hasNext());
    EXPECT_EQ(unboxed<jint>(env, elementAt(env, values, 0)), 7);
}

TEST_F(SystemProxies, AFailingIteratorLeavesItsExceptionPending) {
    const struct {
        const char* operation;
        void (*call)(const JListIteratorProxy&);
    } cases[] = {
        {"hasNext", [](const JListIteratorProxy& iterator) { iterator.hasNext(); }},
        {"next", [](const JListIteratorProxy& iterator) { iterator.next(); }},
        {"set",
         [](const JListIteratorProxy& iterator) {
             iterator.next();
             iterator.set(nullptr);
         }},
    };
    for (const auto& one : cases) {
        const JListIteratorProxy iterator(
            env, places(env, objectArray(env, "java/lang/Object", {nullptr}), one.operation, 0));
        EXPECT_THROW(one.call(iterator), tether::Exception);
        expectThrown(env, "java/lang/IllegalStateException", (std::string(one.operation) + " fails at 0").c_str());
    }
}

TEST_F(SystemProxies, ReadAStream) {
    const JInputStreamProxy stream(env, chunkedStream(env, {1, 2, 3}, 2));
    jbyteArray target = primitiveArray<jbyte>(env, {0, 0, 0, 0});
    EXPECT_EQ(stream.read(target), 2);
    EXPECT_EQ(stream.read(target), 1);
    EXPECT_EQ(toVector<jbyte>(env, target)[0], 3);
    EXPECT_EQ(stream.read(target), -1);
}

TEST_F(SystemProxies, ReadPureJavaCells) {
    const JNonKRTCellProxy cell(env, javaCell(env, {1, 2}, {javaString(env, u"a"), nullptr}));
    EXPECT_EQ(toVector<jint>(env, cell.getDimensions().ref()), (std::vector<jint>{1, 2}));
    auto slots = cell.getFlatArray();
    ASSERT_EQ(slots.length(), 2);
    EXPECT_EQ(describe(env, slots.get(0).ref()), "a");
    EXPECT_TRUE(slots.get(1).isNull());
}

TEST_F(SystemProxies, ReadPureJavaStructs) {
    const JNonKRTStructProxy value(
        env, javaStruct(env, {2, 1}, {u"x", u"y"},
                        {boxed<jint>(env, 1), boxed<jint>(env, 2), boxed<jint>(env, 3), nullptr}));
    EXPECT_EQ(toVector<jint>(env, value.getDimensions().ref()), (std::vector<jint>{2, 1}));
    EXPECT_STREQ(value.fieldNames().get(1).getStringUTFChars(), "y");
    auto slots = value.getFlatArray();
    ASSERT_EQ(slots.length(), 4);
    EXPECT_EQ(unboxed<jint>(env, slots.get(1).ref()), 2) << "the fields of one element lie next to one another";
}

}  // namespace

}  // namespace nativevrl::test
