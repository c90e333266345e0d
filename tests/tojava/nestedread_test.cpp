/// Whole arrays as nested, flat and boxed Java arrays, against the model and against what they were made from.

#include "support/heapblocks.h"
#include "toarray/creatednatives.h"
#include "tojava/reads.h"

#include <algorithm>
#include <cstring>
#include <numeric>
#include <random>

namespace nativevrl::test::nestedread {

constexpr unsigned seed = 20240611;

std::size_t product(const Extents& extents) {
    return std::accumulate(extents.begin(), extents.end(), std::size_t{1}, std::multiplies<>());
}

qxArray* arrayOf(const Extents& extents, qxClassID classId, qxComplexity complexity) {
    return qxCreateNumericArray(static_cast<std::uint32_t>(extents.size()), extents.data(), classId, complexity);
}

/// An array with the values that casts go wrong on, in random places of both parts.
template <typename Case>
qxArray* randomOf(std::mt19937& random, const Extents& extents) {
    qxArray* array = arrayOf(extents, Case::id, random() % 2 == 0 ? qxCOMPLEX : qxREAL);
    const auto values = Case::values();
    for (const bool real : {true, false}) {
        auto* part = Case::part(array, real);
        for (std::size_t i = 0; part != nullptr && i < product(extents); ++i) {
            part[i] = values[random() % values.size()];
        }
    }
    return array;
}

/// Shapes on both sides of what is gathered in one go, with a zero in every place; random ones behind them.
std::vector<Extents> shapes(std::mt19937& random) {
    std::vector<Extents> all = {{1, 1},    {1, 9},       {9, 1},      {0, 0},       {0, 3},
                                {3, 0},    {2, 0, 3},    {0, 2, 2},   {2, 2, 0},    {1, 1, 5},
                                {33, 19},  {130, 9},     {70, 3, 11}, {5, 20, 3},   {3, 1, 2},
                                {1, 4, 3}, {3, 1, 2, 2}, {8, 9, 10},  {2, 1, 1, 7}, {2, 2, 3, 2, 9}};
    for (int i = 0; i < 4; ++i) {
        Extents extents(2 + random() % 3);
        std::generate(extents.begin(), extents.end(), [&] { return 1 + random() % 12; });
        all.push_back(extents);
    }
    return all;
}

std::string caseName(qxClassID classId, const Extents& extents, bool real) {
    std::string text = "seed " + std::to_string(seed) + ", class " + std::to_string(classId) +
                       (real ? ", real part of" : ", imaginary part of");
    for (const auto extent : extents) {
        text += " " + std::to_string(extent);
    }
    return text;
}

using NestedRead = JvmTest;

/// The elements in storage order as one string and, of a matrix of numbers, each row as one.
template <typename Element>
void expectStrings(JNIEnv* env, const Held& held, const Extents& extents, bool real, Element&& element) {
    const auto units = [&](std::size_t first, std::size_t stride, std::size_t count) {
        std::u16string text(count, u'\0');
        std::generate(text.begin(), text.end(), [&, at = first - stride]() mutable { return element(at += stride); });
        return text;
    };
    EXPECT_EQ(toUtf16(env, readString(env, held.handle, real)), units(0, 1, product(extents)));
    if (qxGetClassID(held.array.get()) >= qxDOUBLE_CLASS && extents.size() == 2) {
        const jobject strings = readStrings(env, held.handle, real);
        ASSERT_EQ(lengthOf(env, strings), extents[0]);
        for (std::size_t row = 0; row < extents[0]; ++row) {
            EXPECT_EQ(toUtf16(env, elementAt(env, strings, row)), units(row, extents[0], extents[1])) << "row " << row;
        }
    }
}

/// Each read of one part as T: nested and boxed where the class has numbers, flat in any case.
template <typename T, typename Stored>
void expectReads(JNIEnv* env, const Held& held, const Extents& extents, bool real, const Stored* part) {
    const auto element = [&](std::size_t i) { return modelCast<T>(part[i]); };
    if (qxGetClassID(held.array.get()) >= qxDOUBLE_CLASS) {
        jobject nested = readNested(JavaType<T>{}, env, held.handle, real);
        expectNested<T>(env, nested, extents, element);
        env->DeleteLocalRef(nested);
        if (product(extents) < 100) {
            jobject boxes = readBoxed(JavaType<T>{}, env, held.handle, real);
            expectBoxed<T>(env, boxes, extents, element);
            env->DeleteLocalRef(boxes);
        }
    }
    jobject flat = readFlat(JavaType<T>{}, env, held.handle, real);
    expectNested<T>(env, flat, {static_cast<std::uint32_t>(product(extents))}, element);
    env->DeleteLocalRef(flat);
    if constexpr (std::is_same_v<T, jchar>) {
        expectStrings(env, held, extents, real, element);
    }
}

TEST_F(NestedRead, MatchesTheModelForEveryClassTypeAndShape) {
    std::mt19937 random(seed);
    for (const Extents& extents : shapes(random)) {
        forEachClass([&](auto one) {
            using Case = decltype(one);
            using Natural = NaturalType<Case>;
            env->PushLocalFrame(4096);
            const Held held(env, randomOf<Case>(random, extents));
            for (const bool real : {true, false}) {
                const auto* part = Case::part(held.array.get(), real);
                if (part == nullptr) {
                    continue;
                }
                SCOPED_TRACE(caseName(Case::id, extents, real));
                forEachJavaType(
                    [&](auto type) { expectReads<decltype(typeOf(type))>(env, held, extents, real, part); });
                expectNested<Natural>(env, readView(env, held.handle, real), extents,
                                      [&](std::size_t i) { return static_cast<Natural>(part[i]); });
            }
            env->PopLocalFrame(nullptr);
        });
    }
}

TEST_F(NestedRead, GoesBackInAsItCameOut) {
    std::mt19937 random(seed);
    for (const Extents& extents : shapes(random)) {
        forEachClass([&](auto one) {
            using Case = decltype(one);
            SCOPED_TRACE(caseName(Case::id, extents, true));
            env->PushLocalFrame(4096);
            const Held held(env, randomOf<Case>(random, extents));
            const bool isComplex = held->imagData() != nullptr;
            const auto expectSame = [&](const qxArrayOwner& back) {
                ASSERT_TRUE(back);
                ASSERT_EQ(qxGetClassID(back.get()), Case::id);
                ASSERT_EQ(Extents(back->get_dimensions(), back->get_dimensions() + back->numberOfDimensions()),
                          extents);
                const std::size_t bytes = product(extents) * sizeof(typename Case::Stored);
                EXPECT_EQ(std::memcmp(back->realData(), held->realData(), bytes), 0);
                EXPECT_TRUE(!isComplex || std::memcmp(back->imagData(), held->imagData(), bytes) == 0);
            };
            const auto both = [&](auto&& read, auto&& create) {
                jobject real = read(true);
                expectSame(takeArray(env, create(real, isComplex ? read(false) : nullptr)));
            };
            const jint complexity = isComplex ? qxCOMPLEX : qxREAL;
            both([&](bool real) { return readFlat(JavaType<NaturalType<Case>>{}, env, held.handle, real); },
                 [&](jobject real, jobject imaginary) {
                     const std::vector<jint> dimensions(extents.begin(), extents.end());
                     return fromFlat(env, intArray(env, dimensions), real, imaginary, Case::id, complexity);
                 });
            // What is nested under an extent of 0 is not in the Java data.
            if (product(extents) != 0) {
                both([&](bool real) { return readView(env, held.handle, real); },
                     [&](jobject real, jobject imaginary) {
                         return fromObjects(env, real, imaginary, Case::id, complexity);
                     });
            }
            env->PopLocalFrame(nullptr);
        });
    }
}

TEST_F(NestedRead, WritesRowsThatAreTooLongForATilePieceByPiece) {
    for (const Extents& extents : {Extents{20, 9000}, Extents{2, 70001}, Extents{3, 2, 9001}, Extents{1, 100000}}) {
        const Held held(env, arrayOf(extents, qxDOUBLE_CLASS, qxREAL));
        auto* part = static_cast<double*>(held->realData());
        std::iota(part, part + product(extents), 0.0);
        expectNested<jdouble>(env, readNested(JavaType<jdouble>{}, env, held.handle, true), extents,
                              [&](std::size_t i) { return part[i]; });
        expectNested<jshort>(env, readNested(JavaType<jshort>{}, env, held.handle, true), extents,
                             [&](std::size_t i) { return modelCast<jshort>(part[i]); });
    }
    const Extents wide = {2, 40000};
    const Held held(env, arrayOf(wide, qxDOUBLE_CLASS, qxREAL));
    static_cast<double*>(held->realData())[product(wide) - 1] = 'x';
    const jobject strings = readStrings(env, held.handle, true);
    EXPECT_EQ(toUtf16(env, elementAt(env, strings, 0)), std::u16string(wide[1], u'\0'));
    EXPECT_EQ(toUtf16(env, elementAt(env, strings, 1)), std::u16string(wide[1] - 1, u'\0') + u'x');
}

TEST_F(NestedRead, OfASparseArrayIsThatOfItsDenseTwin) {
    std::mt19937 random(seed);
    for (const Extents& extents : {Extents{0, 0}, Extents{0, 4}, Extents{4, 0}, Extents{1, 30}, Extents{30, 1},
                                   Extents{17, 23}, Extents{200, 3}, Extents{3, 70000}}) {
        for (const qxComplexity complexity : {qxREAL, qxCOMPLEX}) {
            env->PushLocalFrame(4096);
            const Held dense(env, arrayOf(extents, qxDOUBLE_CLASS, complexity));
            for (const bool real : {true, false}) {
                auto* part = static_cast<double*>(real ? dense->realData() : dense->imagData());
                for (std::size_t i = 0; part != nullptr && i < product(extents); ++i) {
                    part[i] = random() % 4 == 0 ? static_cast<int>(random() % 1000) - 500.5 : 0;
                }
            }
            const Held sparse(env, qxMustBeSparse(dense.array.get()));
            for (const bool real : {true, false}) {
                const auto* part = static_cast<const double*>(real ? dense->realData() : dense->imagData());
                if (part == nullptr) {
                    continue;
                }
                SCOPED_TRACE(caseName(qxDOUBLE_CLASS, extents, real));
                const auto element = [&](std::size_t i) { return part[i]; };
                expectNested<jdouble>(env, readNested(JavaType<jdouble>{}, env, sparse.handle, real), extents, element);
                expectNested<jdouble>(env, readView(env, sparse.handle, real), extents, element);
                expectNested<jbyte>(env, readNested(JavaType<jbyte>{}, env, sparse.handle, real), extents,
                                    [&](std::size_t i) { return modelCast<jbyte>(part[i]); });
                if (product(extents) < 1000) {
                    expectBoxed<jint>(env, readBoxed(JavaType<jint>{}, env, sparse.handle, real), extents,
                                      [&](std::size_t i) { return modelCast<jint>(part[i]); });
                }
                const jobject strings = readStrings(env, sparse.handle, real);
                const jobject twins = readStrings(env, dense.handle, real);
                for (std::size_t i = 0; i < extents[0]; ++i) {
                    EXPECT_EQ(toUtf16(env, elementAt(env, strings, i)), toUtf16(env, elementAt(env, twins, i)));
                }
                // Flat, it is what is stored: a place where either part is not zero, column by column.
                std::vector<jdouble> stored;
                const auto* other = static_cast<const double*>(real ? dense->imagData() : dense->realData());
                for (std::size_t i = 0; i < product(extents); ++i) {
                    if (part[i] != 0 || (other != nullptr && other[i] != 0)) {
                        stored.push_back(part[i]);
                    }
                }
                EXPECT_EQ(toVector<jdouble>(env, readFlat(JavaType<jdouble>{}, env, sparse.handle, real)), stored);
            }
            env->PopLocalFrame(nullptr);
        }
    }
    const Held truths(env, qxCreateSparseLogicalMatrix(2, 2, 1));
    truths->columnStartTable()[2] = 1;
    truths->rowIndexTable()[0] = 1;
    *static_cast<jboolean*>(truths->realData()) = JNI_TRUE;
    EXPECT_EQ(toRows<jboolean>(env, readView(env, truths.handle, true)), (Rows<jboolean>{{0, 0}, {0, 1}}));
    EXPECT_EQ(toVector<jint>(env, readFlat(JavaType<jint>{}, env, truths.handle, true)), (std::vector<jint>{1}));
}

TEST_F(NestedRead, OfASparseArrayPassesOverWhatIsOutOfOrder) {
    const struct {
        std::vector<std::uint32_t> rowIndex;  // of one column of four rows
        std::vector<jdouble> column;
    } cases[] = {
        {{0, 2, 1}, {1, 0, 2, 0}}, {{1, 1, 3}, {0, 1, 0, 0}}, {{3, 0, 1}, {0, 0, 0, 1}}, {{2, 9, 3}, {0, 0, 1, 0}}};
    for (const auto& one : cases) {
        const Held held(env, qxCreateSparse(4, 1, 3, qxREAL));
        std::copy(one.rowIndex.begin(), one.rowIndex.end(), held->rowIndexTable());
        std::iota(static_cast<jdouble*>(held->realData()), static_cast<jdouble*>(held->realData()) + 3, 1.0);
        held->columnStartTable()[1] = 3;
        expectNested<jdouble>(env, readNested(JavaType<jdouble>{}, env, held.handle, true), {4, 1},
                              [&](std::size_t i) { return one.column[i]; });
    }
}

TEST_F(NestedRead, OfASparseArrayTakesMemoryForItsRowsAndElementsAlone) {
    const std::size_t before = loomkit::test::heapBytesGiven;
    const Held flat(env, qxCreateSparse(0, 400000000, 0, qxREAL));
    expectNested<jdouble>(env, readNested(JavaType<jdouble>{}, env, flat.handle, true), {0, 400000000},
                          [](std::size_t) { return jdouble{}; });
    const Held wide(env, qxCreateSparse(1, 1000000, 1, qxREAL));
    setAt(env, wide.handle, jint{777777}, jdouble{7}, true);
    expectNested<jdouble>(env, readNested(JavaType<jdouble>{}, env, wide.handle, true), {1, 1000000},
                          [](std::size_t i) { return i == 777777 ? 7.0 : 0.0; });
    EXPECT_LT(loomkit::test::heapBytesGiven - before, 100000u + 1000000 * sizeof(jdouble))
        << "the test itself takes a row";
}

TEST_F(NestedRead, HasAsManyLevelsAsJavaArraysCan) {
    Extents extents(255, 1);
    extents[0] = 2;
    extents[253] = 3;
    const Held held(env, arrayOf(extents, qxDOUBLE_CLASS, qxREAL));
    auto* part = static_cast<double*>(held->realData());
    std::iota(part, part + product(extents), 0.0);
    for (jobject nested : {readView(env, held.handle, true), readNested(JavaType<jdouble>{}, env, held.handle, true)}) {
        expectNested<jdouble>(env, nested, extents, [&](std::size_t i) { return part[i]; });
    }
}

TEST_F(NestedRead, OfNoArrayIsOneEmptyLevel) {
    const jobject none = newHandle(env, nullptr);
    forEachJavaType([&](auto type) {
        using T = decltype(typeOf(type));
        expectNested<T>(env, readNested(type, env, none, true), {0}, [](std::size_t) { return T{}; });
        expectBoxed<T>(env, readBoxed(type, env, none, true), {0}, [](std::size_t) { return T{}; });
    });
    expectNested<jdouble>(env, readView(env, none, true), {0, 0}, [](std::size_t) { return jdouble{}; });
    EXPECT_EQ(classNameOf(env, readStrings(env, none, true)), "java/lang/String");
}

TEST_F(NestedRead, LeavesOneClassReferenceForEachArrayOfArraysAndEachBoxedRow) {
    const Held matrix(env, arrayOf({100, 4}, qxDOUBLE_CLASS, qxREAL));
    const Held pages(env, arrayOf({7, 5, 3}, qxDOUBLE_CLASS, qxREAL));
    const Held sparse(env, qxCreateSparse(50, 3, 1, qxREAL));
    const std::tuple<int, int, std::function<jobject()>> cases[] = {
        {2, 100, [&] { return readNested(JavaType<jdouble>{}, env, matrix.handle, true); }},
        {2, 0, [&] { return readNested(JavaType<jbyte>{}, env, matrix.handle, true); }},
        {2, 50, [&] { return readNested(JavaType<jdouble>{}, env, sparse.handle, true); }},
        {2, 0, [&] { return readStrings(env, matrix.handle, true); }},
        {2 + 7, 0, [&] { return readNested(JavaType<jint>{}, env, pages.handle, true); }},
        {2 + 100, 0, [&] { return readBoxed(JavaType<jint>{}, env, matrix.handle, true); }},
        {1, 0, [&] { return readFlat(JavaType<jint>{}, env, matrix.handle, true); }}};
    for (const auto& [references, copiedRows, read] : cases) {
        env->PushLocalFrame(4096);
        env->DeleteLocalRef(read());  // the class proxies are there from here on
        {
            const JniCounter counter(env);
            ASSERT_NE(read(), nullptr);
            EXPECT_EQ(counter.localReferences(), references) << "its result included";
            EXPECT_EQ(counter.pinnedBlocks() + counter.globalReferences(), 0);
            EXPECT_EQ(counter.calls(&JNINativeInterface_::SetDoubleArrayRegion), copiedRows);
            EXPECT_EQ(counter.calls(&JNINativeInterface_::GetDoubleArrayElements), 0);
        }
        env->PopLocalFrame(nullptr);
    }
}

}  // namespace nativevrl::test::nestedread
