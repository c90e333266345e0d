#include "toarray/javakind.h"

#include "proxies/jarrayproxy.h"
#include "proxies/jboxedproxies.h"
#include "proxies/jobjectarrayproxy.h"

#include <string>

namespace nativevrl::JConvert {

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

/// A kind whose objects have no elements of their own to walk, and the class of arrays of them.
struct LeafKind {
    JavaKind kind;
    bool (*isLeaf)(JNIEnv*, jobject);
    bool (*isArrayOfLeaves)(JNIEnv*, jobject);
};

template <typename T>
constexpr LeafKind rowOf(JavaKind kind) {
    return {kind, isA<JPrimitiveArrayClassProxy<T>>, isA<RowsClassProxy<T>>};
}

template <typename Proxy>
constexpr LeafKind objectOf(JavaKind kind) {
    return {kind, isA<typename Proxy::ClassProxy>, isA<JObjectArrayClassProxy<Proxy>>};
}

constexpr LeafKind kLeafKinds[] = {
    rowOf<jchar>(JavaKind::kCharArray),          rowOf<jboolean>(JavaKind::kBooleanArray),
    rowOf<jbyte>(JavaKind::kByteArray),          rowOf<jdouble>(JavaKind::kDoubleArray),
    rowOf<jfloat>(JavaKind::kFloatArray),        rowOf<jint>(JavaKind::kIntArray),
    rowOf<jlong>(JavaKind::kLongArray),          rowOf<jshort>(JavaKind::kShortArray),
    objectOf<JStringProxy>(JavaKind::kString),   objectOf<JNumberProxy>(JavaKind::kNumber),
    objectOf<JBooleanProxy>(JavaKind::kBoolean), objectOf<JCharacterProxy>(JavaKind::kCharacter),
};

/// Null for a kind that is no leaf's.
const LeafKind* leafKind(JavaKind kind) {
    for (const LeafKind& leaf : kLeafKinds) {
        if (leaf.kind == kind) {
            return &leaf;
        }
    }
    return nullptr;
}

}  // namespace

JavaKind JavaKindReader::operator()(jobject object) const {
    thread_local const LeafKind* last = nullptr;
    if (object == nullptr) {
        return JavaKind::kNull;
    }
    if (last != nullptr && last->isLeaf(env_, object)) {
        return last->kind;
    }
    if (isA<JObjectArrayClassProxy<JObjectProxy>>(env_, object)) {
        return JavaKind::kObjectArray;
    }
    for (const LeafKind& leaf : kLeafKinds) {
        if (leaf.isLeaf(env_, object)) {
            last = &leaf;
            return leaf.kind;
        }
    }
    return JavaKind::kOther;
}

bool JavaKindReader::holdsOnly(jobjectArray array, JavaKind kind) const {
    const LeafKind* leaf = leafKind(kind);
    return leaf != nullptr && leaf->isArrayOfLeaves(env_, array);
}

}  // namespace nativevrl::JConvert
