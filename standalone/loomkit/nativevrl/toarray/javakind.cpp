#include "toarray/javakind.h"

#include "proxies/jarrayproxy.h"
#include "proxies/jobjectarrayproxy.h"

namespace nativevrl::JConvert {

namespace {

constexpr JavaKind kRowKinds[] = {JavaKind::kCharArray,   JavaKind::kBooleanArray, JavaKind::kByteArray,
                                  JavaKind::kDoubleArray, JavaKind::kFloatArray,   JavaKind::kIntArray,
                                  JavaKind::kLongArray,   JavaKind::kShortArray};

bool isRowOf(JNIEnv* env, jobject object, JavaKind kind) {
    bool matches = false;
    visitPrimitive(kind, [&](auto element) {
        matches = JPrimitiveArrayClassProxy<decltype(element)>::instance(env)->isInstance(env, object);
    });
    return matches;
}

}  // namespace

JavaKind JavaKindReader::operator()(jobject object) {
    if (object == nullptr) {
        return JavaKind::kNull;
    }
    if (isRowOf(env_, object, lastRow_)) {
        return lastRow_;
    }
    if (JObjectArrayClassProxy<JObjectProxy>::instance(env_)->isInstance(env_, object)) {
        return JavaKind::kObjectArray;
    }
    for (const JavaKind kind : kRowKinds) {
        if (isRowOf(env_, object, kind)) {
            lastRow_ = kind;
            return kind;
        }
    }
    return JavaKind::kOther;
}

}  // namespace nativevrl::JConvert
