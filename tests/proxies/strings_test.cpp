#include "proxies/jstringproxy.h"
#include "support/jvmtest.h"

#include <cstdint>

namespace nativevrl::test {

namespace {

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

TEST_F(Strings, ANullStringHasNoCharacters) {
    const JniCounter counter(env);
    JStringProxy proxy(env, nullptr);
    EXPECT_EQ(proxy.getStringUTFChars(), nullptr);
    EXPECT_EQ(proxy.getStringChars(), nullptr);
    EXPECT_EQ(proxy.length(), 0);
    EXPECT_EQ(counter.pinnedBlocks(), 0);
}

TEST_F(Strings, ANewStringNeverInheritsOldCharacters) {
    JStringProxy proxy(env, javaString(env, u"first"));
    const JniCounter counter(env);
    EXPECT_STREQ(proxy.getStringUTFChars(), "first");
    proxy.attach(javaString(env, u"second"));
    EXPECT_EQ(counter.pinnedBlocks(), 0);
    EXPECT_STREQ(proxy.getStringUTFChars(), "second");
    proxy = JStringProxy(env, javaString(env, u"third"));
    EXPECT_STREQ(proxy.getStringUTFChars(), "third");
    proxy.releaseChars();
    EXPECT_EQ(counter.pinnedBlocks(), 0);
    EXPECT_STREQ(proxy.getStringUTFChars(), "third");
}

TEST_F(Strings, AreMadeFromNativeText) {
    const jchar units[] = {'u', 0, 0xd83d, 0xde00};
    EXPECT_EQ(toUtf16(env, NewJStringProxy(env, units, units + 4).ref()), std::u16string(units, units + 4));
    EXPECT_EQ(toUtf16(env, NewJStringProxy(env, units, units).ref()), u"");
    EXPECT_EQ(toUtf16(env, NewJStringProxy(env, "\xc3\xa4").ref()), u"\u00e4");
    const std::uint8_t bytes[] = {72, 101, 200};
    EXPECT_EQ(toUtf16(env, NewJStringProxy(env, bytes, bytes + 3).ref()), u"He\u00c8");
    const double numbers[] = {65.9, -1.0, 66.0, 9.0, 65536.0 + 67.0, 9.0};
    EXPECT_EQ(toUtf16(env, NewJStringProxy(env, numbers, 2, numbers + 6, 2).ref()), u"ABC");
    EXPECT_EQ(toUtf16(env, NewJStringProxy(env, numbers + 1, numbers + 2).ref()), u"\uffff");
}

}  // namespace

}  // namespace nativevrl::test
