#include "proxies/jobjectproxy.h"
#include "support/jvmtest.h"
#include "tether/jnicalls.h"

#include <functional>
#include <iterator>

namespace nativevrl::test::references {

using References = JvmTest;

bool same(JNIEnv* env, jobject first, jobject second) { return env->IsSameObject(first, second) != JNI_FALSE; }

TEST_F(References, EachProxyOwnsAReferenceThatAssignmentReplaces) {
    jobject one = javaString(env, u"one");
    jobject two = javaString(env, u"two");
    const JniCounter counter(env);
    {
        JObjectRef proxy(env, one);
        const JObjectRef copy(proxy);
        const JObjectRef other(env, two);
        EXPECT_NE(proxy.ref(), copy.ref());
        proxy = other;
        EXPECT_TRUE(same(env, proxy.ref(), two));
        EXPECT_NE(proxy.ref(), other.ref());
        proxy = one;
        const JObjectRef& itself = proxy;
        proxy = itself;
        EXPECT_TRUE(same(env, proxy.ref(), one));
        EXPECT_EQ(counter.localReferences(), 3);
        proxy.reset();
        EXPECT_TRUE(proxy.isNull());
        EXPECT_TRUE(same(env, copy.ref(), one));
    }
    EXPECT_EQ(counter.localReferences(), 0);
    EXPECT_EQ(describe(env, one), "one");
}

TEST_F(References, AFailedReferenceIsToldApartFromNull) {
    jobject object = javaString(env, u"object");
    JObjectRef proxy(env, object);
    expectOutOfMemory(env, &JNINativeInterface_::NewLocalRef,
                      [&] { EXPECT_THROW(proxy = javaString(env, u"other"), tether::NewLocalRefError); });
    EXPECT_TRUE(same(env, proxy.ref(), object)) << "a failed assignment changes nothing";
}

TEST_F(References, NothingIsMadeWhileAnExceptionIsPending) {
    jclass cls = findClass(env, "java/lang/IllegalStateException");
    jclass math = findClass(env, "java/lang/Math");
    jmethodID constructor = tether::getMethodID(env, cls, "<init>", "()V");
    jstring text = javaString(env, u"text");
    jobjectArray array = objectArray(env, "java/lang/String", {text});
    const std::function<void()> makers[] = {
        [&] { tether::findClass(env, "java/lang/Object"); },
        [&] { tether::getMethodID(env, cls, "getMessage", "()Ljava/lang/String;"); },
        [&] { tether::getStaticMethodID(env, math, "abs", "(I)I"); },
        [&] { tether::newObjectA(env, cls, constructor, nullptr); },
        [&] { tether::newObjectArray(env, 2, cls); },
        [&] { tether::newString(env, nullptr, 0); },
        [&] { tether::newStringUTF(env, "text"); },
        [&] { tether::getObjectArrayElement(env, array, 0); },
        [&] { env->ReleaseStringChars(text, tether::getStringChars(env, text)); },
        [&] { env->ReleaseStringUTFChars(text, tether::getStringUTFChars(env, text)); },
    };
    for (std::size_t i = 0; i < std::size(makers); ++i) {
        SCOPED_TRACE(i);
        makers[i]();
        env->ThrowNew(cls, "earlier");
        const JniCounter counter(env);
        EXPECT_THROW(makers[i](), tether::Exception);
        EXPECT_EQ(counter.localReferences(), 0);
        EXPECT_EQ(counter.pinnedBlocks(), 0);
        expectThrown(env, "java/lang/IllegalStateException", "earlier");
    }
}

TEST_F(References, ThePendingExceptionIsKnownAlsoWhereItsClassCannotBeLookedUp) {
    jclass cls = findClass(env, "java/lang/NumberFormatException");
    const auto expectTold = [&](const char* className, bool matches) {
        env->ThrowNew(cls, "held");
        const JniCounter counter(env);
        EXPECT_EQ(tether::isExceptionThrown(env, className), matches) << className;
        EXPECT_EQ(counter.localReferences(), 0);
        EXPECT_EQ(counter.pinnedBlocks(), 0);
    };
    for (const auto& [name, matches] : {std::pair("java/lang/NumberFormatException", true),
                                        {"java/lang/IllegalArgumentException", true},
                                        {"java/lang/Error", false},
                                        {"java/lang/NumberFormat", false}}) {
        expectTold(name, matches);
        expectThrown(env, "java/lang/NumberFormatException", "held");
        {
            const JniFaults faults(env, &JNINativeInterface_::FindClass, 1);
            expectTold(name, matches);
            EXPECT_TRUE(faults.struck());
        }
        expectThrown(env, "java/lang/NumberFormatException", "held");
    }
    EXPECT_FALSE(tether::isExceptionThrown(env, "java/lang/Error"));
}

TEST_F(References, NullUnitsAreOnlyAnEmptyText) {
    EXPECT_EQ(toText(env, tether::newString(env, nullptr, 0)), "");
    EXPECT_THROW(tether::newString(env, nullptr, 2), tether::NullPointerException);
    expectThrownClass(env, "java/lang/NullPointerException");
}

}  // namespace nativevrl::test::references
