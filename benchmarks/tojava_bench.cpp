/// Native arrays on their way into Java data.

#include "qx/arrayowner.h"
#include "support/cases.h"
#include "support/floors.h"
#include "support/javadata.h"

#include "support/natives.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

namespace nativevrl::bench {

namespace {

using Native = jobject (*)(JNIEnv*, jclass, jobject, jboolean);
using Extents = std::vector<std::uint32_t>;

std::size_t product(const Extents& extents) {
    return std::accumulate(extents.begin(), extents.end(), std::size_t{1}, std::multiplies<>());
}

/// What a case reads: an array of its own, with its handle, and as many elements of the target type in one block.
template <typename T>
struct Source {
    Source(JNIEnv* env, qxArray* made, std::size_t count)
        : array(made),
          handle(env->NewGlobalRef(test::newHandle(env, made))),
          getter(env->GetMethodID(env->GetObjectClass(handle), "get", "()J")),
          block(count, T{1}) {}

    qxArrayOwner array;
    jobject handle;
    jmethodID getter;
    std::vector<T> block;
};

qxArray* counting(const Extents& extents, qxClassID classId) {
    qxArray* array = qxCreateNumericArray(static_cast<std::uint32_t>(extents.size()), extents.data(), classId, qxREAL);
    // Every byte is written, so that the pages are there; what values they make does not matter.
    std::memset(array->realData(), 0, qxGetNumberOfElements(array) * qxGetElementSize(array));
    return array;
}

/// Opens the handle and returns what `make` gives, as every read has to.
template <typename T, typename Make>
void opened(JNIEnv* env, const Source<T>& source, Make&& make) {
    env->CallLongMethod(source.handle, source.getter);
    env->DeleteLocalRef(make());
}

template <typename T>
jobject rowFrom(JNIEnv* env, const T* values, std::uint32_t length) {
    auto row = (env->*JPrimitive<T>::newArray)(static_cast<jsize>(length));
    (env->*JPrimitive<T>::setRegion)(row, 0, static_cast<jsize>(length), values);
    return row;
}

/// Builds the levels from `level` on with rows that lie one behind another at `values`.
template <typename MakeRow>
jobject nestedFrom(JNIEnv* env, const Extents& extents, std::size_t level, const std::string& rowClass,
                   MakeRow&& makeRow) {
    if (level + 1 == extents.size()) {
        return makeRow();
    }
    const std::string name = std::string(extents.size() - level - 2, '[') + rowClass;
    jclass elementClass = env->FindClass(name.c_str());
    jobjectArray array = env->NewObjectArray(static_cast<jsize>(extents[level]), elementClass, nullptr);
    env->DeleteLocalRef(elementClass);
    for (std::uint32_t i = 0; i < extents[level]; ++i) {
        jobject element = nestedFrom(env, extents, level + 1, rowClass, makeRow);
        env->SetObjectArrayElement(array, static_cast<jsize>(i), element);
        env->ExceptionCheck();
        env->DeleteLocalRef(element);
    }
    return array;
}

/// A read by a native, in a frame of its own as a call from Java has.
template <typename T>
std::function<void()> reading(JNIEnv* env, const std::shared_ptr<Source<T>>& source, Native native) {
    return [=] {
        env->PushLocalFrame(16);
        native(env, nullptr, source->handle, JNI_TRUE);
        env->PopLocalFrame(nullptr);
    };
}

/// Rows of T[m][n] out of column-major storage, each element by itself.
template <typename T>
jobject gatheredFrom(JNIEnv* env, const Extents& extents, const T* values) {
    std::vector<T> line(extents[1]);
    return nestedFrom(env, extents, 0, JPrimitive<T>::arrayClass, [&] {
        for (std::uint32_t i = 0; i < extents[1]; ++i) {
            line[i] = values[std::size_t{i} * extents[0]];
        }
        ++values;
        return rowFrom(env, line.data(), extents[1]);
    });
}

/// The same by way of a tile.
template <typename T>
jobject gatheredByTiles(JNIEnv* env, const Extents& extents, const T* values) {
    using Tile = PlainTile<T>;
    const std::size_t count = extents[0];
    Tile tile(extents[1]);
    std::size_t row = 0;
    return nestedFrom(env, extents, 0, JPrimitive<T>::arrayClass, [&] {
        if (row % Tile::kRows == 0) {
            const std::size_t rows = std::min(Tile::kRows, count - row);
            Tile::eachElement(rows, extents[1],
                              [&](std::size_t i, std::size_t j) { tile.row(i)[j] = values[j * count + row + i]; });
        }
        return rowFrom(env, tile.row(row++ % Tile::kRows), extents[1]);
    });
}

template <typename T>
void addNested(JNIEnv* env, const std::string& name, const Extents& extents, qxClassID classId, Native native) {
    const std::size_t count = product(extents);
    const auto source = std::make_shared<Source<T>>(env, counting(extents, classId), count);
    Case one = {"tojava/" + name, count, reading(env, source, native), [=] {
                    opened(env, *source, [&] {
                        const T* values = source->block.data();
                        return nestedFrom(env, extents, 0, JPrimitive<T>::arrayClass, [&] {
                            jobject row = rowFrom(env, values, extents.back());
                            values += extents.back();
                            return row;
                        });
                    });
                }};
    if (extents.size() == 2) {
        one.tiled = [=] { opened(env, *source, [&] { return gatheredByTiles(env, extents, source->block.data()); }); };
        one.straight = [=] { opened(env, *source, [&] { return gatheredFrom(env, extents, source->block.data()); }); };
    }
    addCase(std::move(one));
}

void addFlat(JNIEnv* env, const std::string& name, std::uint32_t count, qxClassID classId) {
    const auto source = std::make_shared<Source<jdouble>>(env, counting({count, 1}, classId), count);
    const Native native = [](JNIEnv* e, jclass cls, jobject handle, jboolean real) -> jobject {
        return NVKRT(qxGetDoubleData)(e, cls, handle, real);
    };
    addCase({"tojava/" + name, count, reading(env, source, native),
             [=] { opened(env, *source, [&] { return rowFrom(env, source->block.data(), count); }); }});
}

void addBoxed(JNIEnv* env) {
    const Extents extents = {300, 300};
    const std::size_t count = product(extents);
    const auto source = std::make_shared<Source<jdouble>>(env, counting(extents, qxDOUBLE_CLASS), count);
    jclass boxes = classNamed(env, "java/lang/Double");
    jmethodID constructor = env->GetMethodID(boxes, "<init>", "(D)V");
    const auto makeRow = [=](const jdouble* values) {
        jobjectArray row = env->NewObjectArray(static_cast<jsize>(extents[1]), boxes, nullptr);
        for (std::uint32_t i = 0; i < extents[1]; ++i) {
            const jvalue value = asArgument(values[i]);
            jobject box = env->NewObjectA(boxes, constructor, &value);
            env->SetObjectArrayElement(row, static_cast<jsize>(i), box);
            env->ExceptionCheck();
            env->DeleteLocalRef(box);
        }
        return row;
    };
    addCase({"tojava/Double[300][300]", count, reading(env, source, NVKRT(qxArrayToDoubleObjectArray)), [=] {
                 opened(env, *source, [&] {
                     const jdouble* values = source->block.data();
                     return nestedFrom(env, extents, 0, "[Ljava/lang/Double;", [&] {
                         values += extents[1];
                         return makeRow(values - extents[1]);
                     });
                 });
             }});
}

void addStrings(JNIEnv* env) {
    const Extents extents = {1000, 30};
    const auto source = std::make_shared<Source<jchar>>(env, counting(extents, qxUINT16_CLASS), product(extents));
    addCase({"tojava/String[1000]", product(extents), reading(env, source, NVKRT(qxArrayToStringArray)), [=] {
                 opened(env, *source, [&] {
                     const jchar* units = source->block.data();
                     return nestedFrom(env, extents, 0, "java/lang/String", [&] {
                         units += extents[1];
                         return env->NewString(units - extents[1], static_cast<jsize>(extents[1]));
                     });
                 });
             }});
}

/// A square matrix with one stored element in a hundred, evenly spread.
qxArray* sparseSquare(std::uint32_t extent) {
    constexpr std::uint32_t apart = 100;
    const std::uint32_t perColumn = extent / apart;
    qxArray* array = qxCreateSparse(extent, extent, perColumn * extent, qxREAL);
    for (std::uint32_t column = 0; column < extent; ++column) {
        for (std::uint32_t i = 0; i < perColumn; ++i) {
            array->rowIndexTable()[column * perColumn + i] = i * apart + column % apart;
            static_cast<double*>(array->realData())[column * perColumn + i] = 1;
        }
        array->columnStartTable()[column + 1] = (column + 1) * perColumn;
    }
    return array;
}

void addSparse(JNIEnv* env) {
    const Extents extents = {3000, 3000};
    const auto source = std::make_shared<Source<jdouble>>(env, sparseSquare(extents[0]), product(extents));
    addCase(
        {"tojava/sparse double[3000][3000]", product(extents), reading(env, source, NVKRT(qxArrayToDoubleArray)), [=] {
             opened(env, *source, [&] {
                 const jdouble* values = source->block.data();
                 return nestedFrom(env, extents, 0, "[D", [&] {
                     values += extents[1];
                     return rowFrom(env, values - extents[1], extents[1]);
                 });
             });
         }});
}

void addCases(JNIEnv* env) {
    for (const std::uint32_t extent : {10U, 30U, 100U, 300U, 1000U, 1024U, 3000U}) {
        const std::string side = "[" + std::to_string(extent) + "]";
        addNested<jdouble>(env, "double" + side + side, {extent, extent}, qxDOUBLE_CLASS, NVKRT(qxArrayToDoubleArray));
    }
    const Extents square = {1000, 1000};
    addNested<jdouble>(env, "double[100][100][100]", {100, 100, 100}, qxDOUBLE_CLASS, NVKRT(qxArrayToDoubleArray));
    addNested<jdouble>(env, "int32 double[1000][1000]", square, qxINT32_CLASS, NVKRT(qxArrayToDoubleArray));
    addNested<jdouble>(env, "single double[1000][1000]", square, qxSINGLE_CLASS, NVKRT(qxArrayToDoubleArray));
    addNested<jint>(env, "double int[1000][1000]", square, qxDOUBLE_CLASS, NVKRT(qxArrayToIntArray));
    addNested<jbyte>(env, "uint8 byte[1000][1000]", square, qxUINT8_CLASS, NVKRT(qxArray2ObjectArray));
    addFlat(env, "flat double[1000000]", 1000000, qxDOUBLE_CLASS);
    addFlat(env, "int32 flat double[1000000]", 1000000, qxINT32_CLASS);
    addBoxed(env);
    addStrings(env);
    addSparse(env);
}

const CaseFile file(addCases);

}  // namespace

}  // namespace nativevrl::bench
