#include "toarray/flatstore.h"

#include "boundary/arrayparts.h"
#include "boundary/boundary.h"
#include "proxies/jboxedproxies.h"
#include "proxies/pinnedelements.h"
#include "toarray/javakind.h"
#include "toarray/nativeelement.h"

#include <algorithm>

namespace nativevrl::JConvert {

namespace {

std::size_t common(std::size_t count, jsize length) { return std::min(count, static_cast<std::size_t>(length)); }

/// The part that is filled. The block is asked for anew at every store: an accessor of an element is code of the
/// caller's, which can edit a sparse array, and an edit moves the block and changes its size.
template <typename Target>
class TargetPart {
    using Storage = typename Target::Storage;

public:
    TargetPart(const qxArray* array, bool real) : array_(array), real_(real) {}

    /// How many elements the block takes: all of a dense array, of a sparse one as many as its tables have room for.
    std::size_t room() const {
        const std::size_t elements = qxGetNumberOfElements(array_);
        return array_->isSparse() ? std::min<std::size_t>(elements, array_->capacity()) : elements;
    }

    Storage* block() const { return static_cast<Storage*>(partOf(array_, real_)); }

    /// Copies as many elements of a run as the block takes.
    template <typename S>
    void storeRun(const S* source, jsize length) const {
        castRun<Target>(source, common(room(), length), block());
    }

    /// Whether the block still has the element, which is then stored.
    bool store(std::size_t index, Storage value) const {
        const bool isRoom = index < room();
        if (isRoom) {
            block()[index] = value;
        }
        return isRoom;
    }

private:
    const qxArray* array_;
    bool real_;
};

/// Whether the source is a primitive array, which is then copied.
template <typename Target>
bool storePrimitives(JNIEnv* env, jobject source, JavaKind kind, TargetPart<Target> part) {
    return visitRowType(kind, [&](auto zero) {
        const PinnedElements<decltype(zero)> elements(env, source);
        part.storeRun(elements.begin(), elements.length());
    });
}

/// Elements of an object array through an accessor of the class that all of them should be of. A call on null is what
/// it would be in Java; an object of another class stores 0, since the accessor means nothing to it.
template <typename ClassProxy, typename Target, typename Read>
void storeObjects(JNIEnv* env, jobject source, TargetPart<Target> part, Read&& read) {
    auto* array = static_cast<jobjectArray>(source);
    auto* cls = ClassProxy::instance(env);
    const std::size_t stored = common(part.room(), env->GetArrayLength(array));
    for (std::size_t i = 0; i < stored; ++i) {
        const auto element = adopt(env, tether::nextObjectArrayElement(env, array, static_cast<jsize>(i)));
        if (element.isNull()) {
            tether::throwNullPointer(env);
        }
        typename Target::Storage value{};
        if (cls->isInstance(env, element.ref())) {
            value = Target::cast(read(element.ref(), *cls));
            tether::throwIfPending(env);
        }
        if (!part.store(i, value)) {
            return;
        }
    }
}

/// The first element stands for all of them.
void checkNumbers(JNIEnv* env, jobject source) {
    auto* array = static_cast<jobjectArray>(source);
    if (env->GetArrayLength(array) == 0) {
        return;
    }
    const auto first = adopt(env, tether::getObjectArrayElement(env, array, 0));
    if (!JNumberClassProxy::instance(env)->isInstance(env, first.ref())) {
        raise(env, "java/lang/IllegalArgumentException", "Object array must contain java.lang.Number");
    }
}

template <typename Target>
void setFlatData(JNIEnv* env, jobject source, TargetPart<Target> part) {
    const JavaKind kind = JavaKindReader(env)(source);
    if (kind == JavaKind::null) {
        tether::throwNullPointer(env);
    }
    if (kind == JavaKind::objectArray) {
        checkNumbers(env, source);
        storeObjects<JNumberClassProxy, Target>(env, source, part, [&](jobject number, const auto& cls) {
            return cls.template read<typename Target::Java>(env, number);
        });
        return;
    }
    const bool isNumeric = kind != JavaKind::booleanArray && kind != JavaKind::charArray;
    if (!isNumeric || !storePrimitives<Target>(env, source, kind, part)) {
        raise(env, "java/lang/IllegalArgumentException", "Can not convert data from Java type");
    }
}

template <>
void setFlatData<LogicalElement>(JNIEnv* env, jobject source, TargetPart<LogicalElement> part) {
    const JavaKind kind = JavaKindReader(env)(source);
    if (kind == JavaKind::null || kind == JavaKind::booleanArray) {
        const PinnedElements<jboolean> elements(env, source);
        part.storeRun(elements.begin(), elements.length());
    } else if (kind == JavaKind::objectArray) {
        storeObjects<JBooleanClassProxy, LogicalElement>(env, source, part, [&](jobject boolean, const auto& cls) {
            return env->CallBooleanMethod(boolean, cls.booleanValue);
        });
    }
}

template <>
void setFlatData<CharElement>(JNIEnv* env, jobject source, TargetPart<CharElement> part) {
    const JavaKind kind = JavaKindReader(env)(source);
    if (kind == JavaKind::null || kind == JavaKind::charArray) {
        const PinnedElements<jchar> elements(env, source);
        part.storeRun(elements.begin(), elements.length());
    } else if (kind == JavaKind::objectArray) {
        storeObjects<JCharacterClassProxy, CharElement>(env, source, part, [&](jobject character, const auto& cls) {
            return env->CallCharMethod(character, cls.charValue);
        });
    } else if (kind == JavaKind::string) {
        const PinnedText text(env, source);
        part.storeRun(text.begin(), text.length());
    }
}

}  // namespace

void setPartData(JNIEnv* env, qxArray* array, const JObjectProxy& source, bool real) {
    const bool hasElements = visitNativeElement(classIdOf(array), [&](auto target) {
        using Target = decltype(target);
        setFlatData<Target>(env, source.ref(), TargetPart<Target>(array, real));
    });
    if (!hasElements) {
        raise(env, "java/lang/UnsupportedOperationException",
              "setData/setImagData not supported for TAVRIX arrays of this type.");
    }
}

}  // namespace nativevrl::JConvert
