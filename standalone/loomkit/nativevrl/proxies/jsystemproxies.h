#pragma once

#include "proxies/jobjectproxy.h"

/// Java's own interfaces that the library walks and reads.
namespace nativevrl {

class JListIteratorClassProxy : public JSingletonClassProxy<JListIteratorClassProxy> {
public:
    using JSingletonClassProxy::JSingletonClassProxy;
    static const char* className() { return "java/util/ListIterator"; }

    const jmethodID hasNext = method("hasNext", "()Z");
    const jmethodID next = method("next", "()Ljava/lang/Object;");
    const jmethodID set = method("set", "(Ljava/lang/Object;)V");
};

class JListIteratorProxy : public JProxyOf<JListIteratorClassProxy> {
public:
    using JProxyOf::JProxyOf;

    bool hasNext() const;
    JObjectProxy next() const;
    void set(jobject value) const;
};

class JInputStreamsClassProxy : public JSingletonClassProxy<JInputStreamsClassProxy> {
public:
    using JSingletonClassProxy::JSingletonClassProxy;
    static const char* className() { return "java/io/InputStream"; }

    const jmethodID read = method("read", "([B)I");
};

class JInputStreamProxy : public JProxyOf<JInputStreamsClassProxy> {
public:
    using JProxyOf::JProxyOf;

    /// Reads up to the array's length: the number of bytes, or -1 at the end.
    jint read(jbyteArray target) const;
};

}  // namespace nativevrl
