#include "toarray/dimensions.h"

#include "boundary/stackguard.h"
#include "proxies/jboxedproxies.h"
#include "proxies/jnonkrtproxies.h"
#include "proxies/pinnedelements.h"

#include <algorithm>

namespace nativevrl::JConvert {

namespace {

/// Measures an object straight into a list: an entry exists as soon as its level was met, and grows from then on.
class DimensionCollector {
public:
    DimensionCollector(JavaKindReader& kindOf, std::vector<unsigned>& list, bool isChar)
        : env_(kindOf.env()), kindOf_(kindOf), list_(list), isChar_(isChar) {}

    std::size_t collect(jobject object) {
        collect(object, kindOf_(object), 0);
        return elements_;
    }

private:
    void collect(jobject object, JavaKind kind, std::size_t level) {
        if (kind == JavaKind::objectArray) {
            collectElements(static_cast<jobjectArray>(object), level);
        } else if (isPrimitiveArray(kind)) {
            const jsize length = env_->GetArrayLength(static_cast<jarray>(object));
            if (isChar_ && kind != JavaKind::charArray) {
                enlarge(level, length);
                collectTexts(object, kind, level + 1);
            } else {
                enlargeByRun(level, length);
            }
        } else if (isChar_ && kind == JavaKind::string) {
            enlargeByRun(level, env_->GetStringLength(static_cast<jstring>(object)));
        } else if (isChar_ && kind != JavaKind::null && kind != JavaKind::character) {
            enlargeByRun(level, JObjectProxy(env_, object).toString().length());
        } else if (kind == JavaKind::other) {
            collectCompound(object, level);
        } else if (kind != JavaKind::null) {
            ++elements_;
        }
    }

    void enlargeByRun(std::size_t level, jsize length) {
        enlarge(level, length);
        elements_ += static_cast<std::size_t>(length);
    }

    void enlarge(std::size_t level, jint extent) {
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
        enlarge(level, length);
        ElementKinds kinds(kindOf_, array);
        for (jsize i = 0; i < length; ++i) {
            const auto element = adopt(env_, tether::nextObjectArrayElement(env_, array, i));
            collect(element.ref(), kinds(element.ref()), level + 1);
        }
    }

    void collectTexts(jobject array, JavaKind kind, std::size_t level) {
        enlarge(level, 0);
        visitRowType(kind, [&](auto zero) {
            for (const auto value : PinnedElements<decltype(zero)>(env_, array)) {
                enlarge(level, textOf(env_, value).length());
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
            enlarge(level++, extent);
        }
    }

    JNIEnv* env_;
    JavaKindReader& kindOf_;
    std::vector<unsigned>& list_;
    bool isChar_;
    std::size_t elements_ = 0;
};

}  // namespace

std::size_t collectDimensions(JavaKindReader& kindOf, std::vector<unsigned>& list, jobject object, bool isChar) {
    return DimensionCollector(kindOf, list, isChar).collect(object);
}

}  // namespace nativevrl::JConvert
