#include "proxies/jnonkrtproxies.h"

namespace nativevrl {

namespace {

/// The result of a Java method, as a proxy of class `Result`.
template <typename Result>
Result resultOf(const JObjectProxy& object, jmethodID method) {
    Result result(object.env(), nullptr);
    result.attach(callObjectMethod(object.env(), object.ref(), method));
    return result;
}

}  // namespace

JNonKRTCellClassProxy::JNonKRTCellClassProxy(JNIEnv* env, jclass cls)
    : JSingletonClassProxy(env, cls),
      getDimensions(method("getDimensions", "()[I")),
      numberOfElements(method("numberOfElements", "()I")),
      numberOfDimensions(method("numberOfDimensions", "()I")),
      get(method("get", "(I)Ljava/lang/Object;")),
      getFlatArray(method("getFlatArray", "()[Ljava/lang/Object;")) {}

JNonKRTCellProxy::JNonKRTCellProxy(JNIEnv* env, jobject object)
    : JObjectProxy(env, object), cellClass_(JNonKRTCellClassProxy::instance(env)) {}
JNonKRTCellProxy::JNonKRTCellProxy(const JNonKRTCellProxy& other) = default;
JNonKRTCellProxy::~JNonKRTCellProxy() = default;

JPrimitiveArrayProxy<jint> JNonKRTCellProxy::getDimensions() const {
    return resultOf<JPrimitiveArrayProxy<jint>>(*this, cellClass_->getDimensions);
}

JObjectArrayProxy<JObjectProxy> JNonKRTCellProxy::getFlatArray() const {
    return resultOf<JObjectArrayProxy<JObjectProxy>>(*this, cellClass_->getFlatArray);
}

JNonKRTStructClassProxy::JNonKRTStructClassProxy(JNIEnv* env, jclass cls)
    : JSingletonClassProxy(env, cls),
      fieldNames(method("fieldNames", "()[Ljava/lang/String;")),
      getDimensions(method("getDimensions", "()[I")),
      numberOfFields(method("numberOfFields", "()I")),
      numberOfElements(method("numberOfElements", "()I")),
      numberOfDimensions(method("numberOfDimensions", "()I")),
      get(method("get", "(I)Ljava/lang/Object;")),
      getFlatArray(method("getFlatArray", "()[Ljava/lang/Object;")) {}

JNonKRTStructProxy::JNonKRTStructProxy(JNIEnv* env, jobject object)
    : JObjectProxy(env, object), structClass_(JNonKRTStructClassProxy::instance(env)) {}
JNonKRTStructProxy::JNonKRTStructProxy(const JNonKRTStructProxy& other) = default;
JNonKRTStructProxy::~JNonKRTStructProxy() = default;

JObjectArrayProxy<JStringProxy> JNonKRTStructProxy::fieldNames() const {
    return resultOf<JObjectArrayProxy<JStringProxy>>(*this, structClass_->fieldNames);
}

JPrimitiveArrayProxy<jint> JNonKRTStructProxy::getDimensions() const {
    return resultOf<JPrimitiveArrayProxy<jint>>(*this, structClass_->getDimensions);
}

JObjectArrayProxy<JObjectProxy> JNonKRTStructProxy::getFlatArray() const {
    return resultOf<JObjectArrayProxy<JObjectProxy>>(*this, structClass_->getFlatArray);
}

}  // namespace nativevrl
