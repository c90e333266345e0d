#include "toarray/jconvert.h"

#include "toarray/arraycreation.h"

namespace nativevrl::JConvert {

namespace {

qxArrayOwner convertStated(const JObjectProxy& real, const JObjectProxy& imaginary, JNVArrayPropertySpecifier stated) {
    JavaKindReader kindOf(real.env());
    const JNVArrayInitializer data(kindOf, real.ref(), imaginary.ref());
    JNVSpecifiedArrayInitializer initializer(data, stated);
    return createArrayFromInitializer(real.env(), initializer);
}

}  // namespace

qxArrayOwner convertObject(JavaKindReader& kindOf, const JObjectProxy& real) {
    JNVArrayInitializer data(kindOf, real.ref(), nullptr);
    return createArrayFromInitializer(kindOf.env(), data);
}

qxArrayOwner convertObjectPair(JNIEnv*, const JObjectProxy& real, const JObjectProxy& imaginary, qxClassID classId,
                               qxComplexity complexity) {
    return convertStated(real, imaginary, JNVArrayPropertySpecifier(classId, complexity));
}

qxArrayOwner convertObjectPairWithDimensions(JNIEnv* env, const JObjectProxy& real, const JObjectProxy& imaginary,
                                             jintArray dimensions, qxClassID classId, qxComplexity complexity) {
    return convertStated(real, imaginary, JNVArrayPropertySpecifier(env, dimensions, classId, complexity));
}

}  // namespace nativevrl::JConvert
