#include "componentrun.h"

#include "values.h"

#include <boost/numeric/ublas/matrix.hpp>

#include <cmath>
#include <complex>
#include <fstream>
#include <limits>
#include <random>
#include <sstream>
#include <tuple>

namespace {

namespace ublas = boost::numeric::ublas;
using ublas::herm;
using ublas::prod;

using Complex = std::complex<double>;
/// Of another library than the component's, so that results are judged by other means.
using Dense = ublas::matrix<Complex, ublas::column_major>;
using Identity = ublas::identity_matrix<Complex>;

Dense denseOf(const qxArray* array) {
    EXPECT_EQ(qxGetClassID(array), qxDOUBLE_CLASS);
    Dense dense(qxGetM(array), qxGetN(array));
    for (std::size_t i = 0; i < dense.data().size(); ++i) {
        dense.data()[i] = {static_cast<const double*>(array->realData())[i],
                           qxIsComplex(array) ? static_cast<const double*>(array->imagData())[i] : 0};
    }
    return dense;
}

/// As `kpa call` takes it: "[1 2; 3 4]".
Dense denseOf(const char* text) { return denseOf(kpa::parseValue(text).get()); }

/// Infinite where the shapes differ.
double difference(const Dense& a, const Dense& b) {
    const bool haveOneShape = a.size1() == b.size1() && a.size2() == b.size2();
    return haveOneShape ? ublas::norm_frobenius(a - b) : std::numeric_limits<double>::infinity();
}

/// Complex where an element is.
qxArrayOwner inputOf(const Dense& m) {
    const auto isReal = [](const Complex& x) { return x.imag() == 0; };
    const bool isComplex = !std::all_of(m.data().begin(), m.data().end(), isReal);
    qxArrayOwner array(qxCreateDoubleMatrix(static_cast<std::uint32_t>(m.size1()),
                                            static_cast<std::uint32_t>(m.size2()), isComplex ? qxCOMPLEX : qxREAL));
    for (std::size_t i = 0; i < m.data().size(); ++i) {
        static_cast<double*>(array->realData())[i] = m.data()[i].real();
        if (isComplex) {
            static_cast<double*>(array->imagData())[i] = m.data()[i].imag();
        }
    }
    return array;
}

qxArrayOwner inputOf(const char* word) { return kpa::parseValue(word); }

constexpr double close = 1e-10;

class Linalg : public testing::Test {
protected:
    static void SetUpTestSuite() { run_ = new ComponentRun(LINALG_ARCHIVE); }
    static void TearDownTestSuite() {
        delete run_;
        run_ = nullptr;
    }
    void SetUp() override { run_->errors.clear(); }

    template <typename... Input>
    static std::vector<Dense> call(const std::string& function, int nlhs, const Input&... inputs) {
        const qxArrayOwner arrays[] = {inputOf(inputs)...};
        std::vector<const qxArray*> borrowed;
        for (const qxArrayOwner& array : arrays) {
            borrowed.push_back(array.get());
        }
        std::vector<Dense> results;
        for (const qxArrayOwner& result : run_->call(function, nlhs, borrowed)) {
            results.push_back(denseOf(result.get()));
        }
        return results;
    }
    template <typename... Input>
    static Dense call1(const std::string& function, const Input&... inputs) {
        return call(function, 1, inputs...).at(0);
    }

    Dense randomMatrix(std::size_t rows, std::size_t columns, bool complex) {
        std::normal_distribution<double> normal;
        Dense m(rows, columns);
        for (Complex& x : m.data()) {
            x = {normal(random_), complex ? normal(random_) : 0};
        }
        return m;
    }

    static ComponentRun* run_;
    const unsigned seed_ = std::random_device()();
    std::mt19937 random_{seed_};
    const testing::ScopedTrace trace_{__FILE__, __LINE__, "seed " + std::to_string(seed_)};
};

ComponentRun* Linalg::run_ = nullptr;

TEST_F(Linalg, SolvesRandomSystems) {
    for (const bool complex : {false, true}) {
        Dense a = randomMatrix(5, 5, complex);
        for (std::size_t i = 0; i < 5; ++i) {
            a(i, i) += 10;  // far from singular, so that the bounds below hold for every seed
        }
        const Dense b = randomMatrix(5, 3, false);
        EXPECT_LT(difference(prod(a, call1("solve", a, b)), b), close) << complex;
        EXPECT_LT(difference(prod(a, call1("inv", a)), Identity(5)), close) << complex;
    }
    EXPECT_EQ(run_->errors, "");
}

TEST_F(Linalg, DecomposesIntoSingularValues) {
    for (const bool complex : {false, true}) {
        const Dense a = randomMatrix(3, 5, complex);
        const std::vector<Dense> full = call("svd", 3, a);
        const std::vector<Dense> thin = call("svd", 3, a, "econ");
        EXPECT_EQ(full[2].size2(), 5U);
        EXPECT_EQ(thin[2].size2(), 3U);
        for (const auto& parts : {full, thin}) {
            EXPECT_LT(difference(prod(Dense(prod(parts[0], parts[1])), herm(parts[2])), a), close);
        }
        const Dense values = call1("svd", a);
        ASSERT_EQ(values.size1(), 3U);
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_NEAR(values(i, 0).real(), full[1](i, i).real(), close);
        }
    }
}

TEST_F(Linalg, FindsEigenvaluesAndVectors) {
    for (const bool complex : {false, true}) {
        const Dense general = randomMatrix(5, 5, complex);
        for (const Dense& a : {general, Dense(prod(general, herm(general)))}) {
            const std::vector<Dense> found = call("eig", 2, a);
            EXPECT_LT(difference(prod(a, found[0]), prod(found[0], found[1])), 1e-9) << complex;
        }
    }
    const Dense turn = call1("eig", "[0 -1; 1 0]");
    EXPECT_NEAR(std::abs(turn(0, 0).imag()), 1, close);
    EXPECT_NEAR(std::abs(turn(0, 0) - std::conj(turn(1, 0))), 0, close);
    EXPECT_LT(difference(call1("eig", "[1 5; 0 2]"), denseOf("[1; 2]")), close);
}

TEST_F(Linalg, ReachesTheCertifiedCoefficientsOfTheLongleyData) {
    std::ifstream file(LONGLEY_DATA);
    std::string line;
    std::getline(file, line);
    Dense predictors(16, 7);
    Dense employed(16, 1);
    for (std::size_t row = 0; row < 16; ++row) {
        ASSERT_TRUE(std::getline(file, line)) << row;
        std::istringstream fields(line);
        std::string field;
        for (std::size_t column = 0; std::getline(fields, field, ','); ++column) {
            predictors(row, column) = std::stod(field);
        }
        employed(row, 0) = std::exchange(predictors(row, 0), 1);
    }
    const Dense x = call1("lstsq", predictors, employed);
    const double certified[] = {-3482258.63459582, 15.0618722713733,    -0.0358191792925910, -2.02022980381683,
                                -1.03322686717359, -0.0511041056535807, 1829.15146461355};
    ASSERT_EQ(x.size1(), 7U);
    for (std::size_t i = 0; i < 7; ++i) {
        EXPECT_LT(std::abs(x(i, 0).real() / certified[i] - 1), 1e-8) << i;
    }
    EXPECT_EQ(run_->errors, "");
}

TEST_F(Linalg, FitsByLeastSquares) {
    for (const bool complex : {false, true}) {
        const Dense a = randomMatrix(20, 4, complex);
        const Dense b = randomMatrix(20, 2, complex);
        const Dense x = call1("lstsq", a, b);
        // The residual of the nearest one is orthogonal to every column.
        EXPECT_LT(difference(prod(herm(a), Dense(prod(a, x))), prod(herm(a), b)), close);
        EXPECT_LT(difference(prod(herm(a), call1("lstsq", herm(a), x)), x), close);
    }
    EXPECT_EQ(run_->errors, "");
    EXPECT_LT(difference(call1("lstsq", "[1 1; 1 1; 1 1]", "[1; 2; 3]"), denseOf("[1; 1]")), close);
    EXPECT_EQ(run_->errors, "Warning: lstsq: argument 1 (A) has rank 1 of 2; the solution of least norm is given\n");
}

TEST_F(Linalg, MeasuresNorms) {
    // The larger root of the characteristic polynomial of A'*A: x^2 - 30 x + 100.
    const double largest = std::sqrt(15 + std::sqrt(125.0));
    const std::tuple<const char*, const char*, double> cases[] = {{"[1 -2; 3 4]", "2", largest},
                                                                  {"[1 -2; 3 4]", "1", 6},
                                                                  {"[1 -2; 3 4]", "Inf", 7},
                                                                  {"[1 -2; 3 4]", "'Inf'", 7},
                                                                  {"[1 -2; 3 4]", "fro", std::sqrt(30.0)},
                                                                  {"[3 -4]", "1", 7},
                                                                  {"[3 -4]", "Inf", 4},
                                                                  {"[]", "2", 0},
                                                                  {"[3e200 4e200]", "2", 5e200},
                                                                  {"[1 1; 1 Inf]", "2", INFINITY}};
    for (const auto& [a, p, norm] : cases) {
        EXPECT_DOUBLE_EQ(call1("norm", a, p)(0, 0).real(), norm) << a << " " << p;
    }
    EXPECT_DOUBLE_EQ(call1("norm", "[1 -2; 3 4]")(0, 0).real(), largest);
    EXPECT_TRUE(std::isnan(call1("norm", "[NaN 1; 1 1]", "1")(0, 0).real()));
}

TEST_F(Linalg, HandlesEmptyMatrices) {
    EXPECT_EQ(difference(call1("solve", Dense(0, 0), Dense(0, 3)), Dense(0, 3)), 0);
    EXPECT_EQ(difference(call1("inv", Dense(0, 0)), Dense(0, 0)), 0);
    EXPECT_EQ(difference(call1("lstsq", Dense(0, 2), Dense(0, 1)), ublas::zero_matrix<Complex>(2, 1)), 0);
    EXPECT_EQ(difference(call1("svd", Dense(0, 4)), Dense(0, 1)), 0);
    EXPECT_EQ(difference(call("svd", 3, Dense(0, 2))[2], Identity(2)), 0);
    EXPECT_EQ(difference(call1("eig", Dense(0, 0)), Dense(0, 1)), 0);
}

TEST_F(Linalg, RefusesWhatDoesNotFitByName) {
    const struct {
        const char* function;
        int nlhs;
        std::vector<std::string> inputs;
        const char* failure;
    } cases[] = {
        {"solve", 1, {"[1 2 3; 4 5 6]", "1"}, "solve: argument 1 (A) is 2-by-3, expected a square matrix"},
        {"solve", 1, {"[1 2; 3 4]", "[1; 2; 3]"}, "solve: argument 2 (b) has 3 rows, expected 2, as many as"},
        {"solve", 1, {"[0 0; 0 0]", "[1; 2]"}, "solve: argument 1 (A) is singular"},
        {"solve", 1, {"[1 2; 3 NaN]", "[1; 2]"}, "solve: argument 1 (A) has an element that is infinite or not a"},
        {"solve", 1, {"[1 2; 3 4]", "[1; Inf]"}, "solve: argument 2 (b) has an element that is infinite or not a"},
        {"lstsq", 1, {"[1 2; 3 4]", "[1; 2; 3]"}, "lstsq: argument 2 (b) has 3 rows, expected 2, as many as"},
        {"lstsq", 1, {"[NaN 2; 3 4]", "[1; 2]"}, "lstsq: argument 1 (A) has an element"},
        {"inv", 1, {"[1 2 3; 4 5 6]"}, "inv: argument 1 (A) is 2-by-3, expected a square matrix"},
        {"inv", 1, {"[Inf 2; 2 4]"}, "inv: argument 1 (A) has an element that is infinite or not a number"},
        {"eig", 1, {"[1 2 3; 4 5 6]"}, "eig: argument 1 (A) is 2-by-3, expected a square matrix"},
        {"eig", 1, {"[NaN 1; 1 1]"}, "eig: argument 1 (A) has an element that is infinite or not a number"},
        {"svd", 1, {"[NaN 1; 1 1]"}, "svd: argument 1 (A) has an element that is infinite or not a number"},
        {"svd", 2, {"[1 2; 3 4]"}, "svd: 2 results asked for"},
        {"svd", 3, {"[1 2; 3 4]", "text"}, "svd: argument 2 (size) is 'text', expected 'econ'"},
        {"norm", 1, {"[1 2; 3 4]", "text"}, "norm: argument 2 (p) is 'text', expected 1, 2, Inf or 'fro'"},
        {"norm", 1, {"[1 2; 3 4]", "2.5"}, "norm: argument 2 (p) is 2.5, expected 1, 2, Inf or 'fro'"},
    };
    for (const auto& c : cases) {
        const std::string failure = failureOf([&] { run_->callWith(c.function, c.nlhs, c.inputs); });
        EXPECT_EQ(failure.rfind(c.failure, 0), 0U) << failure << "\nexpected " << c.failure;
    }
    const std::uint32_t cube[] = {2, 2, 2};
    const qxArrayOwner deep(qxCreateNumericArray(3, cube, qxDOUBLE_CLASS, qxREAL));
    EXPECT_EQ(failureOf([&] { run_->call("inv", 1, {deep.get()}); }),
              "inv: argument 1 (A) is a 2-by-2-by-2 double array, expected a real matrix");
    const qxArrayOwner narrow(qxCreateNumericMatrix(2, 2, qxSINGLE_CLASS, qxCOMPLEX));
    EXPECT_EQ(failureOf([&] { run_->call("inv", 1, {narrow.get()}); }),
              "inv: argument 1 (A) is a 2-by-2 complex single array, expected a full matrix of doubles");
}

TEST_F(Linalg, WarnsOfANearlySingularMatrix) {
    call("inv", 1, denseOf("[1 1; 1 1.0000000000000004]"));
    EXPECT_EQ(run_->errors.rfind("Warning: inv: argument 1 (A) is nearly singular", 0), 0U) << run_->errors;
}

TEST_F(Linalg, TakesOtherClassesAndSparseMatrices) {
    const qxArrayOwner full = kpa::parseValue("[2 0; 0 4]");
    const qxArrayOwner integers(qxCreateConvertedCopy(full.get(), qxINT16_CLASS));
    const qxArrayOwner sparse(qxMustBeSparse(full.get()));
    for (const qxArrayOwner* a : {&integers, &sparse}) {
        EXPECT_EQ(difference(denseOf(run_->call("inv", 1, {a->get()}).at(0).get()), denseOf("[0.5 0; 0 0.25]")), 0);
    }
}

}  // namespace
