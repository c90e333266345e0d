#include "toarray/arraycreation.h"

#include "boundary/arrayhandle.h"
#include "boundary/arrayparts.h"
#include "boundary/boundary.h"
#include "proxies/jnvarrayproxy.h"
#include "toarray/compound.h"
#include "toarray/nativeelement.h"
#include "toarray/nestedstore.h"
#include "toarray/plainextents.h"

#include <string>

namespace nativevrl::JConvert {

namespace {

/// Native extents of what the specifier lists by nesting level: 0-by-0 without any, a row for one.
PlainExtents nativeExtents(JNVArrayPropertySpecifier& specifier) {
    if (!specifier.hasDimensions() || specifier.getDimensions().empty()) {
        return {0, 0};
    }
    const std::vector<unsigned>& dimensions = specifier.getDimensions();
    if (dimensions.size() == 1) {
        return {1, dimensions.front()};
    }
    const IMapFunction<unsigned, unsigned>& order = specifier.getNestingOrder();
    PlainExtents extents(dimensions.size());
    for (unsigned i = 0; i < dimensions.size(); ++i) {
        extents.data()[i] = dimensions[order.map(i)];
    }
    return extents;
}

qxArrayOwner createStructArray(const PlainExtents& extents, const std::vector<std::string>& fieldNames) {
    std::vector<const char*> names;
    for (const std::string& name : fieldNames) {
        names.push_back(name.c_str());
    }
    return qxArrayOwner(
        qxCreateStructArray(extents.count(), extents.data(), static_cast<std::uint32_t>(names.size()), names.data()));
}

[[noreturn]] void refuseType(JNIEnv* env, jobject object) {
    JStringProxy name = JObjectProxy(env, object).getClassName();
    const std::string message =
        std::string("Tried to create qxArray of unsupported type.  Java type: ") + name.getStringUTFChars();
    raise(env, "java/lang/RuntimeException", message.c_str());
}

/// Walks one part of the data into its block.
template <typename Target>
void fillPart(JNVArrayInitializer& initializer, qxArray* array, bool real, qxContents contents) {
    jobject source = real ? initializer.real() : initializer.imaginary();
    if (source == nullptr || (!real && initializer.getComplexity() != qxCOMPLEX)) {
        return;
    }
    auto* block = static_cast<typename Target::Storage*>(partOf(array, real));
    if (block == nullptr) {
        return;
    }
    const LevelTable levels = buildLevelTable(initializer.getDimensions(), initializer.getNestingOrder());
    NestedStore<Target>(initializer.kindOf(), Target::classId == qxCHAR_CLASS)
        .store(block, contents, levels, source, !qxIsEmpty(array));
}

void fillFromJava(JNVArrayInitializer& initializer, qxClassID classId, qxArray* array, qxContents contents) {
    const auto fillParts = [&](auto target) {
        fillPart<decltype(target)>(initializer, array, true, contents);
        fillPart<decltype(target)>(initializer, array, false, contents);
    };
    if (classId == qxCELL_CLASS) {
        fillCellFromJava(initializer.kindOf(), initializer.real(), array);
    } else if (classId == qxSTRUCT_CLASS) {
        fillStructFromJava(initializer.kindOf(), initializer.real(), array);
    } else if (classId == qxFUNCTION_CLASS) {
        fillParts(FunctionElement{});
    } else if (!visitNativeElement(classId, fillParts)) {
        raise(initializer.env(), "java/lang/RuntimeException", "Tried to create qxArray of unsupported type");
    }
}

/// Stated dimensions, and the complexity with them, must be those of a native array that is passed on.
void checkMatches(JNVArrayInitializer& initializer, const qxArray* source) {
    const std::vector<unsigned>& stated = initializer.getDimensions();
    const std::uint32_t* extents = source->get_dimensions();
    const bool sameExtents =
        stated.size() == source->numberOfDimensions() && std::equal(stated.begin(), stated.end(), extents);
    if (!sameExtents || isComplex(source) != (initializer.getComplexity() > qxREAL)) {
        raise(initializer.env(), "java/lang/RuntimeException", "array dimensions do not match");
    }
}

bool hasElementClass(qxClassID classId) {
    return visitNativeElement(classId, [](auto) {});
}

/// A handle of its own on a native array that a Java wrapper holds; of another class where one is stated.
qxArrayOwner passOn(JNVArrayInitializer& initializer) {
    JNIEnv* env = initializer.env();
    const qxArray* source = JNVBuiltinArrayProxy(env, initializer.real()).getArray();
    const qxClassID ownClass = classIdOf(source);
    const qxClassID target = initializer.isClassDerived() ? ownClass : initializer.getClassID();
    if (!initializer.isDimensionDerived()) {
        checkMatches(initializer, source);
    }
    const bool converts = target != qxUNKNOWN_CLASS && target != ownClass;
    if (converts && !(hasElementClass(ownClass) && hasElementClass(target))) {
        refuseType(env, initializer.real());
    }
    return requireCreated(
        env, qxArrayOwner(converts ? qxCreateConvertedCopy(source, target) : qxCreateSharedDataCopy(source)));
}

}  // namespace

qxArrayOwner requireCreated(JNIEnv* env, qxArrayOwner array) {
    if (array == nullptr) {
        raise<tether::OutOfMemoryException>(env, "java/lang/OutOfMemoryError", "Unable to create qxArray");
    }
    setFreeScope(array.get());
    return array;
}

qxArrayOwner createArrayFromProperties(JNIEnv* env, JNVArrayPropertySpecifier& specifier, qxContents contents) {
    const qxComplexity complexity = specifier.hasComplexity() ? specifier.getComplexity() : qxREAL;
    const qxClassID classId = specifier.hasClassID() ? specifier.getClassID() : qxDOUBLE_CLASS;
    const PlainExtents extents = nativeExtents(specifier);
    if (classId == qxCELL_CLASS) {
        return requireCreated(env, qxArrayOwner(qxCreateCellArray(extents.count(), extents.data())));
    }
    if (classId == qxSTRUCT_CLASS) {
        return requireCreated(env, createStructArray(extents, specifier.fieldNames()));
    }
    const auto create = contents == qxContents::zeros ? qxCreateNumericArray : qxCreateUninitNumericArray;
    return requireCreated(env, qxArrayOwner(create(extents.count(), extents.data(), classId, complexity)));
}

qxArrayOwner createArrayFromInitializer(JNIEnv* env, JNVArrayInitializer& initializer) {
    jobject real = initializer.real();
    if (real != nullptr && JNVBuiltinArrayClassProxy::instance(env)->isInstance(env, real)) {
        return passOn(initializer);
    }
    const qxClassID classId = initializer.getClassID();
    if (classId == qxUNKNOWN_CLASS) {
        refuseType(env, initializer.imaginary() != nullptr ? initializer.imaginary() : real);
    }
    // Zeros in holes are cheaper to have from the start than to put there one by one.
    const qxContents contents = initializer.isBox() ? qxContents::unset : qxContents::zeros;
    qxArrayOwner array = createArrayFromProperties(env, initializer, contents);
    if (!array) {
        raise(env, nvExceptionClass, "TAVRIX array creation failed");
    }
    fillFromJava(initializer, classId, array.get(), contents);
    return array;
}

}  // namespace nativevrl::JConvert
