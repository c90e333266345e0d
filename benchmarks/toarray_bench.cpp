/// Java data on its way into native arrays.

#include "boundary/arrayhandle.h"
#include "qx/qx.h"
#include "support/cases.h"
#include "support/floors.h"
#include "support/javadata.h"

#include "support/natives.h"

#include <cstring>
#include <memory>
#include <random>

namespace nativevrl::bench {

namespace {

using test::Rows;

/// A reference that outlives the frame it was made in: benchmark data lives as long as the program.
jobject keep(JNIEnv* env, jobject local) {
    jobject global = env->NewGlobalRef(local);
    env->DeleteLocalRef(local);
    return global;
}

/// Runs a creating native on the data and ends the array again.
void createAndDestroy(JNIEnv* env, jobject handle) {
    qxDestroyArray(openHandle(env, handle));
    env->DeleteLocalRef(handle);
}

template <typename T>
std::vector<T> counting(std::size_t count) {
    std::vector<T> values(count);
    for (std::size_t i = 0; i < count; ++i) {
        values[i] = static_cast<T>(i % 10007);
    }
    return values;
}

template <typename T>
jobject nestedCube(JNIEnv* env, const std::vector<std::size_t>& extents, std::size_t level = 0) {
    if (level + 1 == extents.size()) {
        return test::primitiveArray<T>(env, counting<T>(extents[level]));
    }
    const std::string elementClass = std::string(extents.size() - level - 2, '[') + JPrimitive<T>::arrayClass;
    jobjectArray array =
        env->NewObjectArray(static_cast<jsize>(extents[level]), test::findClass(env, elementClass), nullptr);
    for (std::size_t i = 0; i < extents[level]; ++i) {
        jobject element = nestedCube<T>(env, extents, level + 1);
        env->SetObjectArrayElement(array, static_cast<jsize>(i), element);
        env->DeleteLocalRef(element);
    }
    return array;
}

/// Blocks of memory that the floors and copies of a case write to and read from.
template <typename T>
struct Blocks {
    explicit Blocks(std::size_t count) : from(count, T{1}), to(count, T{2}) {}
    std::vector<T> from;
    std::vector<T> to;
};

void createFrom(JNIEnv* env, jobject real, jint classId) {
    createAndDestroy(env, NVKRT(qxObject2qxArray)(env, nullptr, real, nullptr, classId, qxREAL));
}

/// T is the Java element type, Target the native one.
template <typename T, typename Target = T>
void addNested(JNIEnv* env, const std::string& name, const std::vector<std::size_t>& extents, jint classId) {
    std::size_t count = 1;
    for (const std::size_t extent : extents) {
        count *= extent;
    }
    const auto blocks = std::make_shared<Blocks<Target>>(count);
    const int depth = static_cast<int>(extents.size());
    jobject data = keep(env, nestedCube<T>(env, extents));
    jclass objects = classNamed(env, "[Ljava/lang/Object;");
    jclass rows = classNamed(env, JPrimitive<T>::arrayClass);
    Case one = {"toarray/" + name, count, [=] { createFrom(env, data, classId); },
                [=] { copyRows<T>(env, data, depth, objects, rows, blocks->to.data()); },
                [=] { std::memcpy(blocks->to.data(), blocks->from.data(), count * sizeof(Target)); }};
    if (depth == 2) {
        one.tiled = [=] { scatterTiles<T>(env, data, extents[0], extents[1], objects, rows, blocks->to.data()); };
        one.straight = [=] { scatterRows<T>(env, data, extents[0], objects, rows, blocks->to.data()); };
    }
    addCase(std::move(one));
}

jobject randomObjects(JNIEnv* env, const char* elementClass, std::size_t count, jobject (*make)(JNIEnv*, std::size_t)) {
    jobjectArray array = env->NewObjectArray(static_cast<jsize>(count), test::findClass(env, elementClass), nullptr);
    for (std::size_t i = 0; i < count; ++i) {
        jobject element = make(env, i);
        env->SetObjectArrayElement(array, static_cast<jsize>(i), element);
        env->DeleteLocalRef(element);
    }
    return array;
}

void addBoxed(JNIEnv* env) {
    constexpr std::size_t rows = 300;
    constexpr std::size_t columns = 300;
    jobject data = keep(env, randomObjects(env, "[Ljava/lang/Double;", rows, [](JNIEnv* e, std::size_t) {
                            return randomObjects(e, "java/lang/Double", columns, [](JNIEnv* inner, std::size_t i) {
                                return test::boxed<jdouble>(inner, static_cast<jdouble>(i));
                            });
                        }));
    jclass objects = classNamed(env, "[Ljava/lang/Object;");
    jclass number = classNamed(env, "java/lang/Number");
    jmethodID doubleValue = env->GetMethodID(number, "doubleValue", "()D");
    const auto visitAll = [=](auto&& visit) {
        for (std::size_t i = 0; i < rows; ++i) {
            jobject row = env->GetObjectArrayElement(static_cast<jobjectArray>(data), static_cast<jsize>(i));
            const jsize length = env->IsInstanceOf(row, objects) ? env->GetArrayLength(static_cast<jarray>(row)) : 0;
            for (jsize j = 0; j < length; ++j) {
                jobject element = env->GetObjectArrayElement(static_cast<jobjectArray>(row), j);
                visit(element);
                env->DeleteLocalRef(element);
            }
            env->DeleteLocalRef(row);
        }
    };
    const auto blocks = std::make_shared<Blocks<double>>(rows * columns);
    addCase({"toarray/Double[300][300]", rows * columns, [=] { createFrom(env, data, qxUNKNOWN_CLASS); },
             [=] {
                 visitAll([](jobject) {});
                 double* target = blocks->to.data();
                 visitAll([&](jobject element) {
                     if (env->IsInstanceOf(element, number)) {
                         *target++ = env->CallDoubleMethod(element, doubleValue);
                     }
                 });
             }});
}

void addStrings(JNIEnv* env) {
    constexpr std::size_t count = 1000;
    jobject data = keep(env, randomObjects(env, "java/lang/String", count, [](JNIEnv* e, std::size_t i) -> jobject {
                            return test::javaString(e, std::u16string(20 + i % 21, u'x'));
                        }));
    jclass text = classNamed(env, "java/lang/String");
    const auto blocks = std::make_shared<Blocks<jchar>>(count * 40);
    const auto visitAll = [=](auto&& visit) {
        for (std::size_t i = 0; i < count; ++i) {
            jobject element = env->GetObjectArrayElement(static_cast<jobjectArray>(data), static_cast<jsize>(i));
            if (env->IsInstanceOf(element, text)) {
                visit(static_cast<jstring>(element),
                      static_cast<std::size_t>(env->GetStringLength(static_cast<jstring>(element))));
            }
            env->DeleteLocalRef(element);
        }
    };
    addCase({"toarray/String[1000]", count * 40, [=] { createFrom(env, data, qxUNKNOWN_CLASS); },
             [=] {
                 visitAll([](jstring, std::size_t) {});
                 jchar* target = blocks->to.data();
                 visitAll([&](jstring string, std::size_t length) {
                     const jchar* units = env->GetStringChars(string, nullptr);
                     std::memcpy(target, units, length * sizeof(jchar));
                     env->ReleaseStringChars(string, units);
                     target += length;
                 });
             }});
}

void addCell(JNIEnv* env) {
    constexpr std::size_t count = 1000;
    constexpr std::size_t length = 4;
    jobject elements = randomObjects(env, "java/lang/Object", count, [](JNIEnv* e, std::size_t) -> jobject {
        return test::primitiveArray<jdouble>(e, counting<jdouble>(length));
    });
    const std::vector<jvalue> arguments = {test::objectArgument(test::intArray(env, {1, count})),
                                           test::objectArgument(elements)};
    jobject cell =
        keep(env, test::newObject(env, "com/norvane/extern/java/NVCellArray", "([I[Ljava/lang/Object;)V", arguments));
    jobject flat = keep(env, elements);
    jclass objects = classNamed(env, "[Ljava/lang/Object;");
    jclass rows = classNamed(env, "[D");
    const auto blocks = std::make_shared<Blocks<double>>(count * length);
    addCase({"toarray/cell of 1000", count, [=] { createFrom(env, cell, qxUNKNOWN_CLASS); },
             [=] {
                 qxArray* array = qxCreateCellMatrix(1, count);
                 for (std::size_t i = 0; i < count; ++i) {
                     qxSetCell(array, i, qxCreateDoubleMatrix(1, length, qxREAL));
                 }
                 copyRows<jdouble>(env, flat, 2, objects, rows, blocks->to.data());
                 qxDestroyArray(array);
             }});
}

struct Triplets {
    std::vector<jint> rows;
    std::vector<jint> columns;
    std::vector<jdouble> values;
};

Triplets randomTriplets(std::size_t count, jint extent, bool sorted) {
    std::mt19937 random(20240607);
    std::uniform_int_distribution<jint> index(1, extent);
    std::vector<std::pair<jint, jint>> positions;
    for (std::size_t i = 0; i < count; ++i) {
        positions.emplace_back(index(random), index(random));
    }
    if (sorted) {
        std::sort(positions.begin(), positions.end());
    }
    Triplets triplets;
    for (const auto& [column, row] : positions) {
        triplets.rows.push_back(row);
        triplets.columns.push_back(column);
        triplets.values.push_back(row + 0.5);
    }
    return triplets;
}

void addTriplets(JNIEnv* env, std::size_t count, jint extent, bool sorted) {
    const Triplets triplets = randomTriplets(count, extent, sorted);
    auto* rows = static_cast<jintArray>(keep(env, test::intArray(env, triplets.rows)));
    auto* columns = static_cast<jintArray>(keep(env, test::intArray(env, triplets.columns)));
    auto* values = static_cast<jdoubleArray>(keep(env, test::primitiveArray<jdouble>(env, triplets.values)));
    const auto blocks = std::make_shared<Blocks<jint>>(2 * count);
    const auto target = std::make_shared<Blocks<jdouble>>(count);
    const std::string name =
        std::string("toarray/") + (sorted ? "sorted" : "unsorted") + " triplets/" + std::to_string(count);
    addCase({name, count,
             [=] {
                 createAndDestroy(env, NVKRT(qxCreateSparseMatrix___3I_3ILjava_lang_Object_2Ljava_lang_Object_2IIIII)(
                                           env, nullptr, rows, columns, values, nullptr, extent, extent, -1,
                                           qxDOUBLE_CLASS, qxREAL));
             },
             [=] {
                 jint* row = env->GetIntArrayElements(rows, nullptr);
                 jint* column = env->GetIntArrayElements(columns, nullptr);
                 jdouble* value = env->GetDoubleArrayElements(values, nullptr);
                 std::memcpy(blocks->to.data(), row, count * sizeof(jint));
                 std::memcpy(blocks->to.data() + count, column, count * sizeof(jint));
                 std::memcpy(target->to.data(), value, count * sizeof(jdouble));
                 env->ReleaseDoubleArrayElements(values, value, 0);
                 env->ReleaseIntArrayElements(columns, column, 0);
                 env->ReleaseIntArrayElements(rows, row, 0);
             }});
}

void addCases(JNIEnv* env) {
    for (const std::size_t extent : {10, 100, 1000, 1024, 3000}) {
        const std::string square = "[" + std::to_string(extent) + "]";
        addNested<jdouble>(env, "double" + square + square, {extent, extent}, qxUNKNOWN_CLASS);
    }
    addNested<jdouble>(env, "double[100][100][100]", {100, 100, 100}, qxUNKNOWN_CLASS);
    addNested<jint, jdouble>(env, "int[1000][1000] to double", {1000, 1000}, qxDOUBLE_CLASS);
    addNested<jdouble, jfloat>(env, "double[1000][1000] to single", {1000, 1000}, qxSINGLE_CLASS);
    addNested<jdouble, jint>(env, "double[1000][1000] to int32", {1000, 1000}, qxINT32_CLASS);
    addNested<jdouble>(env, "double[1000000]", {1000000}, qxUNKNOWN_CLASS);
    addBoxed(env);
    addStrings(env);
    addCell(env);
    for (const bool sorted : {true, false}) {
        addTriplets(env, 100000, 10000, sorted);
        addTriplets(env, 1000000, 10000, sorted);
    }
}

const CaseFile file(addCases);

}  // namespace

}  // namespace nativevrl::bench
