#include "toarray/javakind.h"

#include "proxies/jarrayproxy.h"
#include "proxies/jboxedproxies.h"
#include "proxies/jobjectarrayproxy.h"

#include <string>

namespace nativevrl::JConvert {

/// A kind whose objects have no elements of their own to walk, and the class of arrays of them.
struct LeafKind {
    JavaKind kind;
    bool (*isLeaf)(JNIEnv*, jobject);
    bool (*isArrayOfLeaves)(JNIEnv*, jobject);
};

namespace {

/// Class of T[][].
template <typename T>
class RowsClassProxy : public JSingletonClassProxy<RowsClassProxy<T>> {
public:
    using JSingletonClassProxy<RowsClassProxy<T>>::JSingletonClassProxy;
    static const char* className() {
        static const auto& name = *new std::string(std::string("[") + JPrimitive<T>::arrayClass);
        return name.c_str();
    }
};

template <typename ClassProxy>
bool isA(JNIEnv* env, jobject object) {
    return ClassProxy::instance(env)->isInstance(env, object);
}

template <typename T>
constexpr LeafKind rowOf(JavaKind kind) {
    return {kind, isA<JPrimitiveArrayClassProxy<T>>, isA<RowsClassProxy<T>>};
}

template <typename Proxy>
constexpr LeafKind objectOf(JavaKind kind) {
    return {kind, isA<typename Proxy::ClassProxy>, isA<JObjectArrayClassProxy<Proxy>>};
}

/// What conversions meet most stands first.
constexpr LeafKind leafKinds[] = {
    rowOf<jdouble>(JavaKind::doubleArray),      objectOf<JNumberProxy>(JavaKind::number),
    objectOf<JStringProxy>(JavaKind::string),   rowOf<jint>(JavaKind::intArray),
    rowOf<jfloat>(JavaKind::floatArray),        rowOf<jlong>(JavaKind::longArray),
    rowOf<jbyte>(JavaKind::byteArray),          rowOf<jchar>(JavaKind::charArray),
    rowOf<jshort>(JavaKind::shortArray),        rowOf<jboolean>(JavaKind::booleanArray),
    objectOf<JBooleanProxy>(JavaKind::boolean), objectOf<JCharacterProxy>(JavaKind::character),
};

/// Null for a kind that is no leaf's.
const LeafKind* leafKind(JavaKind kind) {
    for (const LeafKind& leaf : leafKinds) {
        if (leaf.kind == kind) {
            return &leaf;
        }
    }
    return nullptr;
}

}  // namespace

JavaKind JavaKindReader::operator()(jobject object) {
    if (object == nullptr) {
        return JavaKind::null;
    }
    if (last_ != nullptr && last_->isLeaf(env_, object)) {
        return last_->kind;
    }
    if (isA<JObjectArrayClassProxy<JObjectProxy>>(env_, object)) {
        return JavaKind::objectArray;
    }
    for (const LeafKind& leaf : leafKinds) {
        if (leaf.isLeaf(env_, object)) {
            last_ = &leaf;
            return leaf.kind;
        }
    }
    return JavaKind::other;
}

bool JavaKindReader::holdsOnly(jobjectArray array, JavaKind kind) const {
    const LeafKind* leaf = leafKind(kind);
    return leaf != nullptr && leaf->isArrayOfLeaves(env_, array);
}

}  // namespace nativevrl::JConvert
