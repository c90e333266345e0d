#include "proxies/jstringproxy.h"
#include "support/jvmtest.h"

namespace nativevrl::test::strings {

using Strings = JvmTest;

TEST_F(Strings, CharactersAreFetchedOnceAndGivenBack) {
    jobject string = javaString(env, u"a\u00e4\u20ac");
    const JniCounter counter(env);
    {
        JStringProxy proxy(env, string);
        EXPECT_EQ(counter.pinnedBlocks(), 0);
        const char* utf = proxy.getStringUTFChars();
        EXPECT_STREQ(utf, "a\xc3\xa4\xe2\x82\xac");
        EXPECT_EQ(proxy.getStringUTFChars(), utf);
        const jchar* units = proxy.getStringChars();
        EXPECT_EQ(proxy.getStringChars(), units);
        EXPECT_EQ(std::u16string(units, units + proxy.length()), u"a\u00e4\u20ac");
        EXPECT_EQ(counter.calls(&JNINativeInterface_::GetStringUTFChars), 1);
        EXPECT_EQ(counter.calls(&JNINativeInterface_::GetStringChars), 1);
        EXPECT_EQ(counter.pinnedBlocks(), 2);
    }
    EXPECT_EQ(counter.pinnedBlocks(), 0);
    EXPECT_EQ(counter.localReferences(), 0);
}

TEST_F(Strings, CharactersNeverOutliveTheReferenceThatTheyWereFetchedThrough) {
    jobject string = javaString(env, u"text");
    jobject other = javaString(env, u"other");
    const JniCounter counter(env);
    {
        JStringProxy first(env, string);
        const char* utf = first.getStringUTFChars();
        JStringProxy second(std::move(first));
        EXPECT_EQ(second.getStringUTFChars(), utf);
        EXPECT_EQ(first.getStringUTFChars(), nullptr);
        first = std::move(second);
        EXPECT_EQ(counter.pinnedBlocks(), 0);
        EXPECT_STREQ(first.getStringUTFChars(), "text");
        first.attach(env->NewLocalRef(other));
        EXPECT_EQ(counter.pinnedBlocks(), 0);
        EXPECT_STREQ(first.getStringUTFChars(), "other");
        first = JStringProxy(env, string);
        EXPECT_STREQ(first.getStringUTFChars(), "text");
        first.releaseChars();
        EXPECT_EQ(counter.pinnedBlocks(), 0);
        first.getStringChars();
        env->DeleteLocalRef(first.detach());
        EXPECT_EQ(counter.pinnedBlocks(), 0);
        EXPECT_EQ(first.getStringChars(), nullptr);
    }
    EXPECT_EQ(counter.localReferences(), 0);
}

}  // namespace nativevrl::test::strings
