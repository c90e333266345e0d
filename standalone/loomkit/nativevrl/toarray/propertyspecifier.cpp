#include "toarray/propertyspecifier.h"

#include "layout/leveltable.h"
#include "proxies/pinnedelements.h"

namespace nativevrl::JConvert {

namespace {

std::vector<unsigned> copyOf(JNIEnv* env, jintArray values) {
    const PinnedElements<jint> pinned(env, values);
    return std::vector<unsigned>(pinned.begin(), pinned.end());
}

}  // namespace

JNVArrayPropertySpecifier::JNVArrayPropertySpecifier(qxClassID classId, qxComplexity complexity)
    : classId_(classId), complexity_(complexity), complexitySpecified_(true) {}

JNVArrayPropertySpecifier::JNVArrayPropertySpecifier(JNIEnv* env, jintArray dimensions, qxClassID classId,
                                                     qxComplexity complexity)
    : dimensions_(copyOf(env, dimensions)),
      dimensionsSpecified_(true),
      classId_(classId),
      complexity_(complexity),
      complexitySpecified_(true),
      javaOrder_(static_cast<unsigned>(dimensions_.size())) {}

const IMapFunction<unsigned, unsigned>& JNVArrayPropertySpecifier::getNestingOrder() {
    if (useJavaDimensionOrder) {
        return javaOrder_;
    }
    return nativeOrder_;
}

}  // namespace nativevrl::JConvert
