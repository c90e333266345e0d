#pragma once

#include "qx/qx.h"

#include <jni.h>

#include <string>
#include <string_view>
#include <vector>

/// Java objects that the library calls, or that stand for values. Each is a new local reference of the caller.
namespace nativevrl::test {

/// A ListIterator over the elements of an Object[]: `set` writes into it. The operation of the given name ("hasNext",
/// "next" or "set") throws java.lang.IllegalStateException "<operation> fails at <place>" at that zero-based place.
jobject places(JNIEnv* env, jobjectArray values, std::string_view failing = "", jint failsAt = -1);

/// An InputStream that gives at most `chunk` bytes at a time and throws java.io.IOException once `breaksAt` bytes
/// were read; -1 for never. `int reads()` tells how often it was asked.
jobject chunkedStream(JNIEnv* env, const std::vector<jbyte>& bytes, jint chunk, jint breaksAt = -1);

/// A Callable that yields a PrintStream which keeps what was printed.
jobject recorder(JNIEnv* env);
std::string recordedText(JNIEnv* env, jobject recorder);
/// Name of the thread that asked a recorder for its stream last.
std::string recordedThread(JNIEnv* env, jobject recorder);
/// A Callable that throws, or, with a stream, yields one that throws when it prints.
jobject failingOutput(JNIEnv* env, bool hasStream);

/// Pure-Java cell and struct values, elements in native slot order.
jobject javaCell(JNIEnv* env, const std::vector<jint>& dimensions, const std::vector<jobject>& elements);
jobject javaStruct(JNIEnv* env, const std::vector<jint>& dimensions, const std::vector<std::u16string>& fields,
                   const std::vector<jobject>& elements);

/// A native array that wraps a Java object; the caller's to destroy.
qxArray* javaObjectArray(JNIEnv* env, jobject object);

}  // namespace nativevrl::test
