/// What is refused, with which words, and that nothing is left over then.

#include "tojava/reads.h"

#include <functional>

namespace nativevrl::test {

namespace {

using ReadFailure = JvmTest;

struct Read {
    const char* name;
    std::function<jobject(JNIEnv*, jobject, bool)> read;
};

/// All reads of a part, by how they refuse a class.
struct Reads {
    std::vector<Read> nested;
    std::vector<Read> flat;
    std::vector<Read> view;
};

Reads allReads() {
    Reads reads;
    forEachJavaType([&](auto type) {
        const char* name = JPrimitive<decltype(typeOf(type))>::boxedClass;
        reads.nested.push_back(
            {name, [=](JNIEnv* env, jobject h, bool real) { return readNested(type, env, h, real); }});
        reads.nested.push_back(
            {name, [=](JNIEnv* env, jobject h, bool real) { return readBoxed(type, env, h, real); }});
        reads.flat.push_back({name, [=](JNIEnv* env, jobject h, bool real) { return readFlat(type, env, h, real); }});
    });
    reads.nested.push_back({"strings", readStrings});
    reads.flat.push_back({"string", readString});
    reads.view.push_back({"view", readView});
    return reads;
}

/// Expects each read to fail in these words, with nothing left but the exception.
void expectRefused(JNIEnv* env, const std::vector<Read>& reads, jobject handle, bool real, const char* className,
                   const char* message) {
    for (const Read& one : reads) {
        SCOPED_TRACE(one.name);
        const JniCounter counter(env);
        EXPECT_EQ(one.read(env, handle, real), nullptr);
        EXPECT_EQ(counter.localReferences(), 0);
        EXPECT_EQ(counter.pinnedBlocks(), 0);
        expectThrown(env, className, message);
    }
}

TEST_F(ReadFailure, RefusesAClassInTheWordsOfTheFamily) {
    const Reads reads = allReads();
    const char* nestedWords = "could not convert from non-primitive array type";
    const char* flatWords = "getData is not supported for TAVRIX arrays of this type.";
    const char* viewWords = "Can not convert the given TAVRIX array type to a Java type.";
    const char* noFields[] = {"a"};
    int payload = 0;
    const struct {
        Held held;
        bool isFlat;  // can be read flat
        bool isView;  // has a natural form
    } cases[] = {{{env, qxCreateLogicalScalar(true)}, true, true},
                 {{env, qxCreateString("text")}, true, true},
                 {{env, qxCreateSparseLogicalMatrix(2, 2, 1)}, true, true},
                 {{env, qxCreateCellMatrix(1, 2)}, false, true},
                 {{env, qxCreateStructMatrix(1, 1, 1, noFields)}, false, true},
                 {{env, qxCreateFunctionHandle("sin")}, false, true},
                 {{env, qxCreateOpaque("kind", &payload, [](void*) {})}, false, false},
                 {{env, qxCreateNumericMatrix(0, 0, qxUNKNOWN_CLASS, qxREAL)}, false, false}};
    for (const auto& one : cases) {
        SCOPED_TRACE(qxGetClassID(one.held.array.get()));
        expectRefused(env, reads.nested, one.held.handle, true, "java/lang/RuntimeException", nestedWords);
        if (!one.isFlat) {
            expectRefused(env, reads.flat, one.held.handle, true, "java/lang/UnsupportedOperationException", flatWords);
        }
        if (!one.isView) {
            expectRefused(env, reads.view, one.held.handle, true, "java/lang/UnsupportedOperationException", viewWords);
        }
    }
}

TEST_F(ReadFailure, RefusesTheImaginaryPartOfARealArrayBeforeItsClass) {
    const Reads reads = allReads();
    const Held arrays[] = {{env, qxCreateDoubleScalar(1)},
                           {env, qxCreateString("text")},
                           {env, qxCreateCellMatrix(1, 1)},
                           {env, qxCreateSparse(2, 2, 1, qxREAL)}};
    for (const Held& held : arrays) {
        for (const auto* family : {&reads.nested, &reads.flat, &reads.view}) {
            expectRefused(env, *family, held.handle, false, "java/lang/IllegalArgumentException",
                          "Can not get imaginary part of real array");
        }
    }
}

TEST_F(ReadFailure, RefusesElementsWithoutABlockButNotAnEmptyArrayWithoutOne) {
    const Reads reads = allReads();
    const Held full(env, qxCreateNumericMatrix(2, 2, qxDOUBLE_CLASS, qxREAL));
    const Held empty(env, qxCreateNumericMatrix(2, 0, qxDOUBLE_CLASS, qxREAL));
    for (const Held* held : {&full, &empty}) {
        qxFree(held->array->realData());
        qxSetData(held->array.get(), nullptr);
    }
    for (const auto* family : {&reads.nested, &reads.flat, &reads.view}) {
        expectRefused(env, *family, full.handle, true, "java/lang/NullPointerException", "qxArray data is NULL");
        for (const Read& one : *family) {
            EXPECT_NE(one.read(env, empty.handle, true), nullptr) << one.name;
        }
    }
    expectNoThrow(env);
}

TEST_F(ReadFailure, InTheMiddleOfAWalkLeavesNothingButClassReferences) {
    using Table = JNINativeInterface_;
    const std::uint32_t extents[] = {3, 4, 2};
    const Held matrix(env, qxCreateNumericMatrix(30, 4, qxDOUBLE_CLASS, qxREAL));
    const Held wide(env, qxCreateNumericMatrix(3, 9000, qxDOUBLE_CLASS, qxREAL));
    const Held pages(env, qxCreateNumericArray(3, extents, qxDOUBLE_CLASS, qxREAL));
    const Held sparse(env, qxCreateSparse(30, 4, 1, qxREAL));
    const Held cell(env, qxCreateCellMatrix(2, 2));
    const auto nested = [](JNIEnv* e, jobject h, bool real) { return readNested(JavaType<jdouble>{}, e, h, real); };
    const auto boxed = [](JNIEnv* e, jobject h, bool real) { return readBoxed(JavaType<jdouble>{}, e, h, real); };
    const struct {
        const char* name;
        jobject handle;
        std::function<jobject(JNIEnv*, jobject, bool)> read;
        std::function<std::unique_ptr<JniFaults>(JNIEnv*)> fault;
        int references;  // classes that were looked up until then
    } cases[] = {
#define LOOMKIT_FAULT(function, n) [](JNIEnv* e) { return std::make_unique<JniFaults>(e, &Table::function, n); }
        {"a row", matrix.handle, nested, LOOMKIT_FAULT(NewDoubleArray, 17), 1},
        {"its place", matrix.handle, nested, LOOMKIT_FAULT(SetObjectArrayElement, 17), 1},
        {"an open row", wide.handle, nested, LOOMKIT_FAULT(NewDoubleArray, 3), 1},
        {"a row of pages", pages.handle, nested, LOOMKIT_FAULT(NewDoubleArray, 11), 4},
        {"an array of rows", pages.handle, nested, LOOMKIT_FAULT(NewObjectArray, 3), 3},
        {"a sparse row", sparse.handle, nested, LOOMKIT_FAULT(NewDoubleArray, 17), 1},
        {"a wrapper", matrix.handle, boxed, LOOMKIT_FAULT(NewObjectA, 17), 6},
        {"a string", matrix.handle, readStrings, LOOMKIT_FAULT(NewString, 17), 1},
        {"an array's wrapper", cell.handle, readView, LOOMKIT_FAULT(NewObjectA, 1), 1},
#undef LOOMKIT_FAULT
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.name);
        // The class proxies are there from here on.
        jobject whole = one.read(env, one.handle, true);
        if (one.handle == cell.handle) {
            for (std::size_t i = 0; i < 4; ++i) {
                callVoid(env, elementAt(env, elementAt(env, whole, i / 2), i % 2), "close", "()V");
            }
        }
        env->DeleteLocalRef(whole);
        const std::size_t arrays = qxLiveArrayCount();
        {
            const JniCounter counter(env);
            const auto fault = one.fault(env);
            EXPECT_EQ(one.read(env, one.handle, true), nullptr);
            EXPECT_TRUE(fault->struck());
            EXPECT_EQ(counter.localReferences(), one.references);
            EXPECT_EQ(counter.pinnedBlocks(), 0);
        }
        EXPECT_EQ(qxLiveArrayCount(), arrays);
        expectThrownClass(env, "java/lang/OutOfMemoryError");
    }
}

}  // namespace

}  // namespace nativevrl::test
