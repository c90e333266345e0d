/// Single elements, and arrays as bytes.

#include "qx/arrayowner.h"
#include "support/cases.h"
#include "support/floors.h"
#include "support/javadata.h"

#include "support/natives.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace nativevrl::bench {

namespace {

constexpr std::uint32_t kSide = 1000;
constexpr std::size_t kBytes = sizeof(double) * kSide * kSide;
/// Elements that one run reads or writes.
constexpr std::size_t kTouched = 1000;

/// An array with the handle that Java would hold.
struct Subject {
    Subject(JNIEnv* env, qxArray* made) : array(made), handle(env->NewGlobalRef(test::newHandle(env, made))) {}

    qxArrayOwner array;
    jobject handle;
};

qxArray* denseSquare() {
    qxArray* array = qxCreateDoubleMatrix(kSide, kSide, qxREAL);
    double* values = static_cast<double*>(array->realData());
    std::iota(values, values + std::size_t{kSide} * kSide, 0.5);
    return array;
}

/// Every other row of every column.
qxArray* sparseSquare() {
    qxArray* array = qxCreateSparse(kSide, kSide, kSide / 2 * kSide, qxREAL);
    std::uint32_t stored = 0;
    for (std::uint32_t column = 0; column < kSide; ++column) {
        for (std::uint32_t row = 0; row < kSide; row += 2, ++stored) {
            array->rowIndexTable()[stored] = row;
            static_cast<double*>(array->realData())[stored] = stored + 1.0;
        }
        array->columnStartTable()[column + 1] = stored;
    }
    return array;
}

/// What a native that opens its handle and does nothing else costs: one reference and one Java call.
jdouble openOnly(JNIEnv* env, jclass, jobject handle, jint, jboolean) {
    static const jmethodID getter = env->GetMethodID(env->GetObjectClass(handle), "get", "()J");
    jobject opened = env->NewLocalRef(handle);
    const jlong address = env->CallLongMethodA(opened, getter, nullptr);
    const bool failed = env->ExceptionCheck() != JNI_FALSE;
    env->DeleteLocalRef(opened);
    return failed ? 0 : static_cast<jdouble>(address);
}

#define LOOMKIT_HANDLE "Lcom/norvane/toolbox/loomkit/internal/NativePtr;"

/// The Java loops over the natives, bound to them.
jclass elementLoops(JNIEnv* env) {
    jclass loops = classNamed(env, "com/norvane/toolbox/loomkit/bench/ElementLoops");
    const auto native = [](const char* name, const char* signature, auto* function) {
        return JNINativeMethod{const_cast<char*>(name), const_cast<char*>(signature),
                               reinterpret_cast<void*>(function)};
    };
    const JNINativeMethod natives[] = {native("open", "(" LOOMKIT_HANDLE "IZ)D", openOnly),
                                       native("get", "(" LOOMKIT_HANDLE "IZ)D", NVKRT_OF_HANDLE(qxGetDoubleAt, IZ)),
                                       native("get", "(" LOOMKIT_HANDLE "[IZ)D", NVKRT_OF_HANDLE(qxGetDoubleAt, _3IZ)),
                                       native("set", "(" LOOMKIT_HANDLE "IDZ)V", NVKRT_OF_HANDLE(qxSetAt, IDZ)),
                                       native("set", "(" LOOMKIT_HANDLE "[IDZ)V", NVKRT_OF_HANDLE(qxSetAt, _3IDZ))};
    env->RegisterNatives(loops, natives, static_cast<jint>(std::size(natives)));
    return loops;
}

/// Elements that both kinds of array store, spread over the matrix, by index and by subscripts.
struct Addresses {
    Addresses() {
        std::mt19937 random(1);
        for (std::size_t i = 0; i < kTouched; ++i) {
            const auto row = static_cast<jint>(random() % (kSide / 2) * 2);
            const auto column = static_cast<jint>(random() % kSide);
            indices.push_back(row + column * static_cast<jint>(kSide));
            subscripts.push_back({row + 1, column + 1});
        }
    }

    std::vector<jint> indices;
    test::Rows<jint> subscripts;
};

void addElementCases(JNIEnv* env, const std::string& kind, qxArray* array) {
    const auto subject = std::make_shared<Subject>(env, array);
    jclass loops = elementLoops(env);
    const Addresses at;
    jobject indices = env->NewGlobalRef(test::intArray(env, at.indices));
    jobject subscripts = env->NewGlobalRef(test::nested<jint>(env, at.subscripts));
    const auto loop = [=](const char* name, const char* signature, jobject addresses) {
        jmethodID method = env->GetStaticMethodID(loops, name, signature);
        return [=] { env->CallStaticDoubleMethod(loops, method, subject->handle, addresses); };
    };
    constexpr const char* overIndices = "(" LOOMKIT_HANDLE "[I)D";
    constexpr const char* overSubscripts = "(" LOOMKIT_HANDLE "[[I)D";
    const auto floor = loop("open", overIndices, indices);
    addCase({"get_double_at/index/" + kind, kTouched, loop("get", overIndices, indices), floor});
    addCase({"get_double_at/subscripts/" + kind, kTouched, loop("get", overSubscripts, subscripts), floor});
    addCase({"set_at/index/" + kind, kTouched, loop("set", overIndices, indices), floor});
    addCase({"set_at/subscripts/" + kind, kTouched, loop("set", overSubscripts, subscripts), floor});
}

#undef LOOMKIT_HANDLE

using Block = std::vector<char>;

void addSerialCases(JNIEnv* env) {
    constexpr std::size_t count = std::size_t{kSide} * kSide;
    const auto subject = std::make_shared<Subject>(env, denseSquare());
    const auto twin = std::make_shared<Subject>(env, denseSquare());
    const auto block = std::make_shared<Block>(2 * kBytes);
    const auto copyOne = [=] { std::memcpy(block->data(), subject->array->realData(), kBytes); };
    addCase({"qx/serialise/double", count, [=] { qxDestroyArray(qxSerialize(subject->array.get())); }, {}, copyOne});

    const auto form = std::make_shared<qxArrayOwner>(qxSerialize(subject->array.get()));
    addCase({"qx/deserialise/double",
             count,
             [=] { qxDestroyArray(qxDeserialize((*form)->realData(), qxGetN(form->get()))); },
             {},
             copyOne});

    addCase({"serialise/double", count, [=] { env->DeleteLocalRef(NVKRT(qxSerialize)(env, nullptr, subject->handle)); },
             [=] {
                 jbyteArray bytes = env->NewByteArray(static_cast<jsize>(kBytes));
                 env->SetByteArrayRegion(bytes, 0, static_cast<jsize>(kBytes),
                                         static_cast<const jbyte*>(subject->array->realData()));
                 env->DeleteLocalRef(bytes);
             },
             copyOne});

    auto* bytes = static_cast<jbyteArray>(env->NewGlobalRef(NVKRT(qxSerialize)(env, nullptr, subject->handle)));
    addCase({"deserialise/double", count,
             [=] {
                 jobject handle = NVKRT(qxDeserialize)(env, nullptr, bytes);
                 qxDestroyArray(test::arrayIn(env, handle));
                 env->DeleteLocalRef(handle);
             },
             [=] {
                 jbyte* elements = env->GetByteArrayElements(bytes, nullptr);
                 std::memcpy(block->data(), elements, kBytes);
                 env->ReleaseByteArrayElements(bytes, elements, 0);
             },
             copyOne});

    // Both arrays have to be looked at, so the copy is one of both.
    addCase({"compare/double",
             2 * count,
             [=] {
                 NVKRT(qxCompareArray)
                 (env, nullptr, subject->handle, twin->handle);
             },
             {},
             [=] {
                 copyOne();
                 std::memcpy(block->data() + kBytes, twin->array->realData(), kBytes);
             }});
}

/// Inserts at random places of an empty sparse matrix, and what they make the tables move.
struct Inserts {
    static constexpr std::size_t kCount = 100000;

    Inserts() {
        std::vector<jint> all(std::size_t{kSide} * kSide);
        std::iota(all.begin(), all.end(), 0);
        std::shuffle(all.begin(), all.end(), std::mt19937(2));
        indices.assign(all.begin(), all.begin() + kCount);
        // How many of the earlier ones lie in front of each: a tree of counts over the positions.
        std::vector<std::uint32_t> counts(all.size() + 1);
        for (const jint index : indices) {
            std::uint32_t before = 0;
            for (std::size_t at = static_cast<std::size_t>(index); at != 0; at &= at - 1) {
                before += counts[at];
            }
            positions.push_back(before);
            for (std::size_t at = static_cast<std::size_t>(index) + 1; at < counts.size(); at += at & (~at + 1)) {
                ++counts[at];
            }
        }
    }

    void move(std::vector<std::uint32_t>& rows, std::vector<double>& values, std::vector<std::uint32_t>& starts) const {
        for (std::size_t count = 0; count < kCount; ++count) {
            const std::uint32_t at = positions[count];
            std::memmove(&rows[at + 1], &rows[at], (count - at) * sizeof(std::uint32_t));
            std::memmove(&values[at + 1], &values[at], (count - at) * sizeof(double));
            const auto column = static_cast<std::ptrdiff_t>(indices[count]) / kSide;
            std::for_each(starts.begin() + column + 1, starts.end(), [](std::uint32_t& start) { ++start; });
        }
    }

    std::vector<jint> indices;
    std::vector<std::uint32_t> positions;
};

void addInsertCase(JNIEnv* env) {
    const auto inserts = std::make_shared<Inserts>();
    addCase({"set_at/inserts/sparse", Inserts::kCount,
             [=] {
                 const qxArrayOwner array(qxCreateSparse(kSide, kSide, 0, qxREAL));
                 jobject handle = test::newHandle(env, array.get());
                 for (const jint index : inserts->indices) {
                     NVKRT_OF_HANDLE(qxSetAt, IDZ)(env, nullptr, handle, index, 1.5, JNI_TRUE);
                 }
                 env->DeleteLocalRef(handle);
             },
             [=] {
                 std::vector<std::uint32_t> rows(Inserts::kCount + 1);
                 std::vector<double> values(Inserts::kCount + 1);
                 std::vector<std::uint32_t> starts(kSide + 1);
                 inserts->move(rows, values, starts);
             }});
}

void addElementFile(JNIEnv* env) {
    addElementCases(env, "dense", denseSquare());
    addElementCases(env, "sparse", sparseSquare());
    addCase({"qx/scalar", 1, [] { qxDestroyArray(qxCreateDoubleScalar(1)); }, {}});
    addCase({"qx/fresh_80_mb", 1, [] { qxDestroyArray(qxCreateDoubleMatrix(10000, kSide, qxREAL)); }, {}});
    addSerialCases(env);
    addInsertCase(env);
}

const CaseFile file(addElementFile);

}  // namespace

}  // namespace nativevrl::bench
