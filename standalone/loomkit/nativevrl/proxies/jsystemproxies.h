#pragma once

#include "proxies/jobjectproxy.h"

/// Java's own interfaces that the library walks and reads.
namespace nativevrl {

class JListIteratorClassProxy : public JSingletonClassProxy<JListIteratorClassProxy> {
public:
    JListIteratorClassProxy(JNIEnv* env, jclass cls);
    static const char* className() { return "java/util/ListIterator"; }

    const jmethodID hasNext;
    const jmethodID next;
    const jmethodID set;
};

class JListIteratorProxy : public JObjectProxy {
public:
    using ClassProxy = JListIteratorClassProxy;

    JListIteratorProxy(JNIEnv* env, jobject object);
    JListIteratorProxy(const JListIteratorProxy& other);
    JListIteratorProxy& operator=(const JListIteratorProxy& other) = default;
    ~JListIteratorProxy() override;

    bool hasNext() const;
    JObjectProxy next() const;
    void set(jobject value) const;

private:
    JListIteratorClassProxy* iteratorClass_;
};

class JInputStreamsClassProxy : public JSingletonClassProxy<JInputStreamsClassProxy> {
public:
    JInputStreamsClassProxy(JNIEnv* env, jclass cls);
    static const char* className() { return "java/io/InputStream"; }

    const jmethodID read;
};

class JInputStreamProxy : public JObjectProxy {
public:
    using ClassProxy = JInputStreamsClassProxy;

    JInputStreamProxy(JNIEnv* env, jobject object);
    JInputStreamProxy(const JInputStreamProxy& other);
    JInputStreamProxy& operator=(const JInputStreamProxy& other) = default;
    ~JInputStreamProxy() override;

    /// Reads up to the array's length: the number of bytes, or -1 at the end.
    jint read(jbyteArray target) const;

private:
    JInputStreamsClassProxy* streamClass_;
};

}  // namespace nativevrl
