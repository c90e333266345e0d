#pragma once

/// The JNI calls that can fail, with failure as an exception: each throws a tether::Exception, or one of its
/// subclasses, when a Java exception is pending or the call gave nothing. A pending exception is never cleared, wrapped
/// or replaced, and none of them returns with one pending. Returned references are local references of the caller.

#include "tether/exceptions.h"

#include <jni.h>

namespace tether {

/// Throws tether::Exception when a Java exception is pending.
void throwIfPending(JNIEnv* env);

/// Raises a Java exception of a class with a message (UTF-8), and returns with it pending. One that is pending
/// already stays as it is. Throws FindClassException when the class is not to be found.
void throwNamedException(JNIEnv* env, const char* className, const char* message);
/// The same through the constructor without arguments.
void throwNamedException(JNIEnv* env, const char* className);

/// Raises java.lang.OutOfMemoryError unless a Java exception is pending, and throws OutOfMemoryException.
[[noreturn]] void throwOutOfMemory(JNIEnv* env);
/// Raises java.lang.NullPointerException unless a Java exception is pending, and throws NullPointerException.
[[noreturn]] void throwNullPointer(JNIEnv* env);

/// Whether the pending Java exception is of this class or below it; false when none is pending. It stays pending.
bool isExceptionThrown(JNIEnv* env, const char* className);

jclass findClass(JNIEnv* env, const char* name);
jmethodID getMethodID(JNIEnv* env, jclass cls, const char* name, const char* signature);
jmethodID getStaticMethodID(JNIEnv* env, jclass cls, const char* name, const char* signature);

/// For jboolean, jint, jlong and void.
template <typename T>
T callMethodA(JNIEnv* env, jobject object, jmethodID method, const jvalue* arguments);

/// For jbyte, jshort, jint, jlong, jfloat and jdouble.
template <typename T>
T callStaticMethodA(JNIEnv* env, jclass cls, jmethodID method, const jvalue* arguments);

jobject newObjectA(JNIEnv* env, jclass cls, jmethodID constructor, const jvalue* arguments);

/// An array with null elements.
jobjectArray newObjectArray(JNIEnv* env, jsize length, jclass elementClass);
jobject getObjectArrayElement(JNIEnv* env, jobjectArray array, jsize index);
/// The same for the elements of a walk, which knows that nothing is pending: it doesn't look again for each element.
jobject nextObjectArrayElement(JNIEnv* env, jobjectArray array, jsize index);
void setObjectArrayElement(JNIEnv* env, jobjectArray array, int index, jobject value);

/// From UTF-16 units; null units are fine for a length of 0 only.
jstring newString(JNIEnv* env, const jchar* units, jsize length);
/// From modified UTF-8; plain UTF-8 is read as well, and bytes that are neither become U+FFFD.
jstring newStringUTF(JNIEnv* env, const char* text);
const jchar* getStringChars(JNIEnv* env, jstring string);
const char* getStringUTFChars(JNIEnv* env, jstring string);

}  // namespace tether
