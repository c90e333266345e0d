#pragma once

#include "proxies/jarrayproxy.h"
#include "proxies/jobjectproxy.h"

#include <string>

namespace nativevrl {

/// Class of E[], where E is an object proxy: for tests on incoming objects.
template <typename E>
class JObjectArrayClassProxy : public JSingletonClassProxy<JObjectArrayClassProxy<E>> {
public:
    using JSingletonClassProxy<JObjectArrayClassProxy<E>>::JSingletonClassProxy;
    static const char* className() { return composedName(); }

private:
    static const char* composedName() {
        static const std::string& name = *new std::string(std::string("[L") + E::ClassProxy::className() + ";");
        return name.c_str();
    }
};

template <typename E>
class JObjectArrayProxy;

/// An element of an object array: what is attached to it lands in the array at once.
template <typename E>
class JObjectArrayElementProxy : public E {
public:
    JObjectArrayElementProxy(JObjectArrayProxy<E>& array, jsize index)
        : E(array.env(), nullptr), array_(&array), index_(index) {
        E::attach(tether::getObjectArrayElement(array.env(), array.array(), index));
    }
    JObjectArrayElementProxy(const JObjectArrayElementProxy&) = default;
    JObjectArrayElementProxy(JObjectArrayElementProxy&&) noexcept = default;
    // To make it stand for another element would write that one into this one's place.
    JObjectArrayElementProxy& operator=(const JObjectArrayElementProxy&) = delete;
    JObjectArrayElementProxy& operator=(JObjectArrayElementProxy&&) = delete;
    ~JObjectArrayElementProxy() override = default;

    void attach(jobject value) override {
        tether::setObjectArrayElement(array_->env(), array_->array(), index_, value);
        E::attach(value);
    }

private:
    JObjectArrayProxy<E>* array_;
    jsize index_;
};

/// A Java array of objects that E is the proxy of. Null elements are proxies of null. An index out of range raises
/// what the virtual machine raises.
template <typename E>
class JObjectArrayProxy : public JArrayProxy {
public:
    using JArrayProxy::JArrayProxy;

    JObjectArrayElementProxy<E> get(jsize index) { return {*this, index}; }
    void set(jsize index, jobject value) { tether::setObjectArrayElement(env(), array(), index, value); }

    jobjectArray array() const noexcept { return static_cast<jobjectArray>(ref()); }
};

/// A new array of `length` nulls.
template <typename E>
class NewJObjectArrayProxy : public JObjectArrayProxy<E> {
public:
    /// Of E's own class.
    NewJObjectArrayProxy(JNIEnv* env, jsize length)
        : NewJObjectArrayProxy(env, E::ClassProxy::instance(env)->classRef(), length) {}

    /// Of a class by name.
    NewJObjectArrayProxy(JNIEnv* env, const char* elementClass, jsize length)
        : NewJObjectArrayProxy(env, JClassRef(env, elementClass).get(), length) {}

private:
    NewJObjectArrayProxy(JNIEnv* env, jclass elementClass, jsize length) : JObjectArrayProxy<E>(env, nullptr) {
        this->attach(tether::newObjectArray(env, length, elementClass));
    }
};

}  // namespace nativevrl
