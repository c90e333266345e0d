#include "toarray/compound.h"

#include "boundary/boundary.h"
#include "boundary/stackguard.h"
#include "proxies/jnonkrtproxies.h"
#include "proxies/jnvarrayproxy.h"
#include "qx/arrayowner.h"
#include "toarray/arrayinitializer.h"
#include "toarray/jconvert.h"

#include <algorithm>
#include <string>

namespace nativevrl::JConvert {

namespace {

std::size_t slotCount(const qxArray* array) {
    const std::size_t elements = qxGetNumberOfElements(array);
    return qxGetClassID(array) == qxSTRUCT_CLASS ? elements * array->get_number_of_struct_fields() : elements;
}

/// The object as a proxy of the pure-Java class that it must be of. The virtual machine itself would call the method
/// of another class blindly.
template <typename Proxy>
void fillFrom(JNIEnv* env, jobject object, qxArray* array) {
    requireStack(env);
    if (object == nullptr) {
        tether::throwNullPointer(env);
    }
    if (!Proxy::ClassProxy::instance(env)->isInstance(env, object)) {
        JStringProxy name = JObjectProxy(env, object).getClassName();
        std::string wanted = Proxy::ClassProxy::className();
        std::replace(wanted.begin(), wanted.end(), '/', '.');
        const std::string message = std::string(name.getStringUTFChars()) + " cannot be cast to " + wanted;
        raise(env, "java/lang/ClassCastException", message.c_str());
    }
    auto values = Proxy(env, object).getFlatArray();
    fillCompoundArray(env, values, array);
}

}  // namespace

void gatherFieldNamesOfStruct(JNVArrayInitializer& initializer, jobject object) {
    JObjectArrayProxy<JStringProxy> names = JNonKRTStructProxy(initializer.env(), object).fieldNames();
    const jsize count = names.length();
    for (jsize i = 0; i < count; ++i) {
        auto name = names.get(i);
        if (name.isNull()) {
            tether::throwNullPointer(initializer.env());
        }
        initializer.addFieldName(name.getStringUTFChars());
    }
}

void fillCompoundArray(JNIEnv* env, JObjectArrayProxy<JObjectProxy>& flatArray, qxArray* array) {
    const std::size_t slots = slotCount(array);
    const jsize length = flatArray.length();
    JObjectProxy element(env, nullptr);
    for (jsize i = 0; i < length; ++i) {
        element.reset();
        element.attach(tether::nextObjectArrayElement(env, flatArray.array(), i));
        if (!element.isNull() && element.isInstanceOf<JNVBuiltinArrayClassProxy>()) {
            raise(env, "java/lang/RuntimeException",
                  "NVArray subtypes not allowed as values of non KRT based data types");
        }
        qxArrayOwner value(convertObject(env, element));
        if (static_cast<std::size_t>(i) < slots) {
            qxSetCell(array, static_cast<std::size_t>(i), value.release());
        }
    }
}

void fillCellFromJava(JNIEnv* env, jobject object, qxArray* array) { fillFrom<JNonKRTCellProxy>(env, object, array); }

void fillStructFromJava(JNIEnv* env, jobject object, qxArray* array) {
    fillFrom<JNonKRTStructProxy>(env, object, array);
}

}  // namespace nativevrl::JConvert
