#include "toarray/dimensions.h"

#include "boundary/stackguard.h"
#include "proxies/jboxedproxies.h"
#include "proxies/jnonkrtproxies.h"
#include "proxies/pinnedelements.h"
#include "toarray/javakind.h"

#include <algorithm>

namespace nativevrl::JConvert {

namespace {

/// Measures an object straight into one list: an entry exists as soon as its level was met, and grows from then on.
class DimensionCollector {
public:
    DimensionCollector(JNIEnv* env, std::vector<unsigned>& list, bool isChar)
        : env_(env), kindOf_(env), list_(list), isChar_(isChar) {}

    std::size_t collect(jobject object) {
        collect(object, kindOf_(object), 0);
        return elements_;
    }

private:
    void collect(jobject object, JavaKind kind, std::size_t level) {
        if (kind == JavaKind::kObjectArray) {
            collectElements(static_cast<jobjectArray>(object), level);
        } else if (isPrimitiveArray(kind)) {
            const jsize length = env_->GetArrayLength(static_cast<jarray>(object));
            if (isChar_ && kind != JavaKind::kCharArray) {
                raise(level, length);
                collectTexts(object, kind, level + 1);
            } else {
                raiseByRun(level, length);
            }
        } else if (isChar_ && kind == JavaKind::kString) {
            raiseByRun(level, env_->GetStringLength(static_cast<jstring>(object)));
        } else if (isChar_ && kind != JavaKind::kNull && kind != JavaKind::kCharacter) {
            raiseByRun(level, JObjectProxy(env_, object).toString().length());
        } else if (kind == JavaKind::kOther) {
            collectCompound(object, level);
        } else if (kind != JavaKind::kNull) {
            ++elements_;
        }
    }

    void raiseByRun(std::size_t level, jsize length) {
        raise(level, length);
        elements_ += static_cast<std::size_t>(length);
    }

    void raise(std::size_t level, jint extent) {
        const auto size = static_cast<unsigned>(extent);
        if (level < list_.size()) {
            list_[level] = std::max(list_[level], size);
        } else {
            list_.push_back(size);
        }
    }

    void collectElements(jobjectArray array, std::size_t level) {
        requireStack(env_);
        const jsize length = env_->GetArrayLength(array);
        raise(level, length);
        ElementKinds kinds(kindOf_, array);
        JObjectRef element(env_, nullptr);
        for (jsize i = 0; i < length; ++i) {
            element.reset();
            element.attach(tether::nextObjectArrayElement(env_, array, i));
            collect(element.ref(), kinds(element.ref()), level + 1);
        }
    }

    void collectTexts(jobject array, JavaKind kind, std::size_t level) {
        raise(level, 0);
        visitPrimitive(kind, [&](auto zero) {
            for (const auto value : PinnedElements<decltype(zero)>(env_, array)) {
                raise(level, textOf(env_, value).length());
            }
        });
    }

    void collectCompound(jobject object, std::size_t level) {
        if (JNonKRTStructClassProxy::instance(env_)->isInstance(env_, object)) {
            appendExtents(JNonKRTStructProxy(env_, object).getDimensions(), level);
        } else if (JNonKRTCellClassProxy::instance(env_)->isInstance(env_, object)) {
            appendExtents(JNonKRTCellProxy(env_, object).getDimensions(), level);
        }
    }

    void appendExtents(const JPrimitiveArrayProxy<jint>& extents, std::size_t level) {
        for (const jint extent : PinnedElements<jint>(env_, extents.ref())) {
            raise(level++, extent);
        }
    }

    JNIEnv* env_;
    JavaKindReader kindOf_;
    std::vector<unsigned>& list_;
    bool isChar_;
    std::size_t elements_ = 0;
};

}  // namespace

std::size_t collectDimensions(JNIEnv* env, std::vector<unsigned>& list, jobject object, bool isChar) {
    return DimensionCollector(env, list, isChar).collect(object);
}

void mergeDimensions(std::vector<unsigned>& list, std::size_t start, const std::vector<unsigned>& other) {
    for (std::size_t i = 0; i < other.size(); ++i) {
        if (start + i < list.size()) {
            list[start + i] = std::max(list[start + i], other[i]);
        } else {
            list.push_back(other[i]);
        }
    }
}

}  // namespace nativevrl::JConvert
