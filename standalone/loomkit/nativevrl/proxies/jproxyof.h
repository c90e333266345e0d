#pragma once

#include "proxies/jobjectref.h"
#include "tether/jnicalls.h"

namespace nativevrl {

class JObjectProxy;

/// What the proxies of all Java classes have in common: each adds a pointer to its own class proxy to what its base
/// has, so the pointers are filled from the top of the Java classes down.
template <typename Class, typename Base = JObjectProxy>
class JProxyOf : public Base {
public:
    using ClassProxy = Class;

    JProxyOf(JNIEnv* env, jobject object) : Base(env, object), class_(Class::instance(env)) {}

protected:
    const Class& cls() const noexcept { return *class_; }

    /// Takes over a new object of the class, made with the constructor that its class proxy names.
    void construct(const jvalue* arguments) {
        this->attach(tether::newObjectA(this->env(), class_->classRef(), class_->constructor, arguments));
    }

private:
    const Class* class_;
};

}  // namespace nativevrl
