#include "toarray/classification.h"

#include "boundary/stackguard.h"
#include "proxies/jboxedproxies.h"
#include "proxies/jnonkrtproxies.h"
#include "proxies/jobjectarrayproxy.h"

#include <boost/xpressive/regex_algorithms.hpp>
#include <boost/xpressive/regex_compiler.hpp>
#include <boost/xpressive/regex_primitives.hpp>

#include <array>
#include <string>

namespace nativevrl::JConvert {

namespace {

template <typename ClassProxy>
bool isA(JNIEnv* env, jobject object) {
    return ClassProxy::instance(env)->isInstance(env, object);
}

using Test = bool (*)(JNIEnv*, jobject);

struct TestedClass {
    Test fits;
    qxClassID classId;
};

template <typename ElementProxy>
constexpr Test isArrayOf = isA<JObjectArrayClassProxy<ElementProxy>>;

constexpr TestedClass arrayClasses[] = {
    {isArrayOf<JStringProxy>, qxCHAR_CLASS},   {isArrayOf<JBooleanProxy>, qxLOGICAL_CLASS},
    {isArrayOf<JByteProxy>, qxINT8_CLASS},     {isArrayOf<JCharacterProxy>, qxCHAR_CLASS},
    {isArrayOf<JDoubleProxy>, qxDOUBLE_CLASS}, {isArrayOf<JFloatProxy>, qxSINGLE_CLASS},
    {isArrayOf<JIntegerProxy>, qxINT32_CLASS}, {isArrayOf<JLongProxy>, qxINT64_CLASS},
    {isArrayOf<JShortProxy>, qxINT16_CLASS},
};

template <typename T>
constexpr Test isBoxOf = isA<typename BoxedProxy<T>::Type::ClassProxy>;

constexpr TestedClass numberClasses[] = {
    {isBoxOf<jbyte>, qxINT8_CLASS}, {isBoxOf<jdouble>, qxDOUBLE_CLASS}, {isBoxOf<jfloat>, qxSINGLE_CLASS},
    {isBoxOf<jint>, qxINT32_CLASS}, {isBoxOf<jlong>, qxINT64_CLASS},    {isBoxOf<jshort>, qxINT16_CLASS},
};

template <std::size_t N>
qxClassID firstFit(const TestedClass (&classes)[N], JNIEnv* env, jobject object) {
    for (const TestedClass& tested : classes) {
        if (tested.fits(env, object)) {
            return tested.classId;
        }
    }
    return qxUNKNOWN_CLASS;
}

/// Class of a row, a text or a wrapper object; none for any other object.
qxClassID classifyScalar(JNIEnv* env, jobject object, JavaKind kind) {
    switch (kind) {
        case JavaKind::charArray:
        case JavaKind::string:
        case JavaKind::character:
            return qxCHAR_CLASS;
        case JavaKind::booleanArray:
        case JavaKind::boolean:
            return qxLOGICAL_CLASS;
        case JavaKind::byteArray:
            return qxINT8_CLASS;
        case JavaKind::doubleArray:
            return qxDOUBLE_CLASS;
        case JavaKind::floatArray:
            return qxSINGLE_CLASS;
        case JavaKind::intArray:
            return qxINT32_CLASS;
        case JavaKind::longArray:
            return qxINT64_CLASS;
        case JavaKind::shortArray:
            return qxINT16_CLASS;
        case JavaKind::number:
            return firstFit(numberClasses, env, object);
        default:
            return qxUNKNOWN_CLASS;
    }
}

struct NamedClass {
    boost::xpressive::sregex pattern;
    qxClassID classId;
};

/// By the name of an array class: for the empty arrays of arrays, whose depth no class proxy covers.
qxClassID classOfArrayName(const std::string& name) {
    // Kept when the process ends, since daemon threads may be here as long.
    static const auto& patterns = *new std::array<NamedClass, 8>{{
        {boost::xpressive::sregex::compile("\\[+(Z|Ljava.lang.Boolean;)"), qxLOGICAL_CLASS},
        {boost::xpressive::sregex::compile("\\[+(C|Ljava.lang.(Character|String);)"), qxCHAR_CLASS},
        {boost::xpressive::sregex::compile("\\[+(B|Ljava.lang.Byte;)"), qxINT8_CLASS},
        {boost::xpressive::sregex::compile("\\[+(S|Ljava.lang.Short;)"), qxINT16_CLASS},
        {boost::xpressive::sregex::compile("\\[+(I|Ljava.lang.Integer;)"), qxINT32_CLASS},
        {boost::xpressive::sregex::compile("\\[+(J|Ljava.lang.Long;)"), qxINT64_CLASS},
        {boost::xpressive::sregex::compile("\\[+(F|Ljava.lang.Float;)"), qxSINGLE_CLASS},
        {boost::xpressive::sregex::compile("\\[+(D|Ljava.lang.Double;)"), qxDOUBLE_CLASS},
    }};
    for (const NamedClass& named : patterns) {
        if (boost::xpressive::regex_match(name, named.pattern)) {
            return named.classId;
        }
    }
    return qxUNKNOWN_CLASS;
}

/// Class of an empty or null object array.
qxClassID classifyByArrayClass(JNIEnv* env, jobject array) {
    const qxClassID declared = firstFit(arrayClasses, env, array);
    if (declared != qxUNKNOWN_CLASS) {
        return declared;
    }
    JStringProxy name = JObjectProxy(env, array).getClassName();
    return classOfArrayName(name.getStringUTFChars());
}

}  // namespace

qxClassID classifyJavaObject(JavaKindReader& kindOf, jobject object, bool allowCompound) {
    JNIEnv* env = kindOf.env();
    const JavaKind kind = kindOf(object);
    if (kind == JavaKind::objectArray || kind == JavaKind::null) {
        auto* elements = static_cast<jobjectArray>(object);
        if (object != nullptr && env->GetArrayLength(elements) > 0) {
            requireStack(env);
            const auto first = adopt(env, tether::getObjectArrayElement(env, elements, 0));
            return classifyJavaObject(kindOf, first.ref(), false);
        }
        const qxClassID declared = classifyByArrayClass(env, object);
        if (declared != qxUNKNOWN_CLASS) {
            return declared;
        }
    }
    const qxClassID scalar = classifyScalar(env, object, kind);
    if (scalar != qxUNKNOWN_CLASS || !allowCompound) {
        return scalar;
    }
    if (isA<JNonKRTStructClassProxy>(env, object)) {
        return qxSTRUCT_CLASS;
    }
    return isA<JNonKRTCellClassProxy>(env, object) ? qxCELL_CLASS : qxUNKNOWN_CLASS;
}

}  // namespace nativevrl::JConvert
