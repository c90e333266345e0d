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

/// Raises the java.lang.ClassCastException of a cast to the class that Proxy stands for, or the NullPointerException of
/// a call on null. Without it the virtual machine would call the method of another class blindly.
template <typename Proxy>
void checkCast(JNIEnv* env, const JObjectProxy& object) {
    if (object.isNull()) {
        tether::throwNullPointer(env);
    }
    if (object.isInstanceOf<typename Proxy::ClassProxy>()) {
        return;
    }
    std::string wanted = Proxy::ClassProxy::className();
    std::replace(wanted.begin(), wanted.end(), '/', '.');
    JStringProxy given = object.getClassName();
    raise(env, "java/lang/ClassCastException",
          (std::string(given.getStringUTFChars()) + " cannot be cast to " + wanted).c_str());
}

template <typename Proxy>
void fillFrom(JavaKindReader& kindOf, jobject object, qxArray* array) {
    JNIEnv* env = kindOf.env();
    requireStack(env);
    checkCast<Proxy>(env, JObjectProxy(env, object));
    fillCompoundArray(kindOf, Proxy(env, object).getFlatArray(), array);
}

/// A cell has a slot for each element, a struct one for each field of each element.
std::size_t slotCount(const qxArray* array) {
    const std::size_t elements = qxGetNumberOfElements(array);
    return qxGetClassID(array) == qxSTRUCT_CLASS ? elements * array->get_number_of_struct_fields() : elements;
}

/// An array of its own for a value of a cell or struct.
qxArrayOwner convertValue(JavaKindReader& kindOf, const JObjectProxy& value) {
    if (!value.isNull() && value.isInstanceOf<JNVBuiltinArrayClassProxy>()) {
        raise(kindOf.env(), "java/lang/RuntimeException",
              "NVArray subtypes not allowed as values of non KRT based data types");
    }
    return convertObject(kindOf, value);
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

void fillCompoundArray(JavaKindReader& kindOf, const JObjectArrayProxy<JObjectProxy>& flatArray, qxArray* array) {
    JNIEnv* env = kindOf.env();
    const std::size_t slots = slotCount(array);
    const jsize length = flatArray.length();
    for (jsize i = 0; i < length; ++i) {
        const auto value = adopt<JObjectProxy>(env, tether::nextObjectArrayElement(env, flatArray.array(), i));
        qxArrayOwner element = convertValue(kindOf, value);
        const auto slot = static_cast<std::size_t>(i);
        if (slot < slots) {
            qxSetCell(array, slot, element.release());
        }
    }
}

void fillCellFromJava(JavaKindReader& kindOf, jobject object, qxArray* array) {
    fillFrom<JNonKRTCellProxy>(kindOf, object, array);
}

void fillStructFromJava(JavaKindReader& kindOf, jobject object, qxArray* array) {
    fillFrom<JNonKRTStructProxy>(kindOf, object, array);
}

}  // namespace nativevrl::JConvert
