/// What is refused, with which words, and that nothing is left over then.

#include "tojava/reads.h"

#include <functional>

namespace nativevrl::test::readfailure {

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
}

TEST_F(ReadFailure, InTheMiddleOfAWalkLeavesNothingButClassReferences) {
    const std::uint32_t extents[] = {3, 4, 2};
    const Held wide(env, qxCreateNumericMatrix(3, 9000, qxDOUBLE_CLASS, qxREAL));
    const Held pages(env, qxCreateNumericArray(3, extents, qxDOUBLE_CLASS, qxREAL));
    const Held cell(env, qxCreateCellMatrix(2, 2));
    for (jobject handle : {wide.handle, pages.handle}) {
        bool struck = true;
        for (int n = 1; struck; ++n) {
            SCOPED_TRACE(n);
            env->PushLocalFrame(4096);
            {
                const JniCounter counter(env);
                const JniFaults fault(env, n);
                const jobject result = readNested(JavaType<jdouble>{}, env, handle, true);
                struck = fault.struck();
                EXPECT_EQ(result == nullptr, struck);
                EXPECT_EQ(counter.pinnedBlocks(), 0);
                EXPECT_LE(counter.localReferences(), 5) << "classes that were looked up until then";
            }
            if (struck) {
                expectThrownClass(env, "java/lang/OutOfMemoryError");
            }
            env->PopLocalFrame(nullptr);
        }
    }
    expectOutOfMemory(env, &JNINativeInterface_::NewObjectA,
                      [&] { EXPECT_EQ(readView(env, cell.handle, true), nullptr); });
}

}  // namespace nativevrl::test::readfailure
