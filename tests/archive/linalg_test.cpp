#include "componentrun.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <fstream>
#include <limits>
#include <random>
#include <sstream>

namespace {

using Complex = std::complex<double>;

/// A matrix of the tests' own, so that results are judged by other means than the component's.
struct Dense {
    std::size_t rows = 0;
    std::size_t columns = 0;
    std::vector<Complex> data;

    Dense(std::size_t r, std::size_t c) : rows(r), columns(c), data(r * c) {}
    Complex& at(std::size_t r, std::size_t c) { return data[c * rows + r]; }
    const Complex& at(std::size_t r, std::size_t c) const { return data[c * rows + r]; }
};

Dense rowsOf(const std::vector<std::vector<double>>& rows) {
    Dense m(rows.size(), rows.empty() ? 0 : rows[0].size());
    for (std::size_t r = 0; r < m.rows; ++r) {
        for (std::size_t c = 0; c < m.columns; ++c) {
            m.at(r, c) = rows[r][c];
        }
    }
    return m;
}

Dense multiply(const Dense& a, const Dense& b) {
    Dense m(a.rows, b.columns);
    for (std::size_t r = 0; r < a.rows; ++r) {
        for (std::size_t c = 0; c < b.columns; ++c) {
            for (std::size_t k = 0; k < a.columns; ++k) {
                m.at(r, c) += a.at(r, k) * b.at(k, c);
            }
        }
    }
    return m;
}

Dense adjoint(const Dense& a) {
    Dense m(a.columns, a.rows);
    for (std::size_t r = 0; r < a.rows; ++r) {
        for (std::size_t c = 0; c < a.columns; ++c) {
            m.at(c, r) = std::conj(a.at(r, c));
        }
    }
    return m;
}

double largestDifference(const Dense& a, const Dense& b) {
    EXPECT_EQ(a.rows, b.rows);
    EXPECT_EQ(a.columns, b.columns);
    double largest = a.data.size() == b.data.size() ? 0 : std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < std::min(a.data.size(), b.data.size()); ++i) {
        largest = std::max(largest, std::abs(a.data[i] - b.data[i]));
    }
    return largest;
}

qxArrayOwner arrayOf(const Dense& m, bool complex = false) {
    qxArrayOwner array(qxCreateDoubleMatrix(static_cast<std::uint32_t>(m.rows), static_cast<std::uint32_t>(m.columns),
                                            complex ? qxCOMPLEX : qxREAL));
    for (std::size_t i = 0; i < m.data.size(); ++i) {
        static_cast<double*>(array->realData())[i] = m.data[i].real();
        if (complex) {
            static_cast<double*>(array->imagData())[i] = m.data[i].imag();
        }
    }
    return array;
}

Dense denseOf(const qxArrayOwner& array) {
    Dense m(qxGetM(array.get()), qxGetN(array.get()));
    EXPECT_EQ(qxGetClassID(array.get()), qxDOUBLE_CLASS);
    for (std::size_t i = 0; i < m.data.size(); ++i) {
        m.data[i] = {static_cast<const double*>(array->realData())[i],
                     qxIsComplex(array.get()) ? static_cast<const double*>(array->imagData())[i] : 0};
    }
    return m;
}

class Linalg : public testing::Test {
protected:
    static void SetUpTestSuite() { run_ = new ComponentRun(LINALG_ARCHIVE); }
    static void TearDownTestSuite() {
        delete run_;
        run_ = nullptr;
    }
    void SetUp() override { run_->errors.clear(); }

    static std::vector<Dense> call(const std::string& function, int nlhs, const std::vector<qxArrayOwner>& inputs) {
        std::vector<const qxArray*> borrowed;
        for (const qxArrayOwner& input : inputs) {
            borrowed.push_back(input.get());
        }
        std::vector<Dense> results;
        for (const qxArrayOwner& result : run_->call(function, nlhs, borrowed)) {
            results.push_back(denseOf(result));
        }
        return results;
    }

    template <typename... Input>
    static std::vector<Dense> call(const std::string& function, int nlhs, Input... inputs) {
        std::vector<qxArrayOwner> arrays;
        (arrays.push_back(std::move(inputs)), ...);
        return call(function, nlhs, arrays);
    }

    template <typename... Input>
    static std::string failure(const std::string& function, int nlhs, Input... inputs) {
        return failureOf([&] { call(function, nlhs, std::move(inputs)...); });
    }

    Dense randomMatrix(std::size_t rows, std::size_t columns, bool complex) {
        std::normal_distribution<double> normal;
        Dense m(rows, columns);
        for (Complex& x : m.data) {
            x = {normal(random_), complex ? normal(random_) : 0};
        }
        return m;
    }

    static ComponentRun* run_;
    const unsigned seed_ = std::random_device()();
    std::mt19937 random_{seed_};
};

ComponentRun* Linalg::run_ = nullptr;

constexpr double close = 1e-10;

TEST_F(Linalg, SolvesRandomSystems) {
    SCOPED_TRACE("seed " + std::to_string(seed_));
    for (const bool complex : {false, true}) {
        for (const std::size_t n : {1, 2, 5, 30}) {
            Dense a = randomMatrix(n, n, complex);
            for (std::size_t i = 0; i < n; ++i) {
                a.at(i, i) += 10;  // far from singular, so that the bounds below hold for every seed
            }
            const Dense b = randomMatrix(n, 3, false);
            const Dense x = call("solve", 1, arrayOf(a, complex), arrayOf(b)).at(0);
            EXPECT_LT(largestDifference(multiply(a, x), b), close) << n << complex;
            const Dense inverse = call("inv", 1, arrayOf(a, complex)).at(0);
            Dense identity(n, n);
            for (std::size_t i = 0; i < n; ++i) {
                identity.at(i, i) = 1;
            }
            EXPECT_LT(largestDifference(multiply(a, inverse), identity), close) << n << complex;
        }
    }
    EXPECT_EQ(run_->errors, "");
}

TEST_F(Linalg, DecomposesIntoSingularValues) {
    SCOPED_TRACE("seed " + std::to_string(seed_));
    const std::pair<std::size_t, std::size_t> shapes[] = {{1, 1}, {4, 4}, {7, 3}, {3, 7}, {40, 25}, {1, 5}};
    for (const bool complex : {false, true}) {
        for (const auto& [rows, columns] : shapes) {
            SCOPED_TRACE(std::to_string(rows) + "-by-" + std::to_string(columns));
            const Dense a = randomMatrix(rows, columns, complex);
            const std::vector<Dense> full = call("svd", 3, arrayOf(a, complex));
            EXPECT_EQ(full[0].columns, rows);
            EXPECT_EQ(full[2].columns, columns);
            EXPECT_LT(largestDifference(multiply(multiply(full[0], full[1]), adjoint(full[2])), a), close);
            const std::vector<Dense> thin = call("svd", 3, arrayOf(a, complex), qxArrayOwner(qxCreateString("econ")));
            EXPECT_EQ(thin[1].rows, std::min(rows, columns));
            EXPECT_LT(largestDifference(multiply(multiply(thin[0], thin[1]), adjoint(thin[2])), a), close);
            const Dense values = call("svd", 1, arrayOf(a, complex)).at(0);
            ASSERT_EQ(values.rows, std::min(rows, columns));
            for (std::size_t i = 0; i < values.rows; ++i) {
                EXPECT_NEAR(values.data[i].real(), full[1].at(i, i).real(), close);
                EXPECT_GE(i == 0 ? values.data[0].real() : values.data[i - 1].real(), values.data[i].real());
            }
        }
    }
}

TEST_F(Linalg, FindsEigenvaluesAndVectors) {
    SCOPED_TRACE("seed " + std::to_string(seed_));
    for (const bool complex : {false, true}) {
        for (const std::size_t n : {1, 3, 20}) {
            const Dense a = randomMatrix(n, n, complex);
            const std::vector<Dense> general = call("eig", 2, arrayOf(a, complex));
            EXPECT_LT(largestDifference(multiply(a, general[0]), multiply(general[0], general[1])), 1e-9);
            const Dense hermitian = multiply(a, adjoint(a));
            const std::vector<Dense> symmetric = call("eig", 2, arrayOf(hermitian, complex));
            EXPECT_LT(largestDifference(multiply(hermitian, symmetric[0]), multiply(symmetric[0], symmetric[1])), 1e-9);
        }
    }
    const Dense turn = call("eig", 1, arrayOf(rowsOf({{0, -1}, {1, 0}}))).at(0);
    EXPECT_NEAR(std::abs(turn.data.at(0).imag()), 1, close);
    EXPECT_NEAR(std::abs(turn.data.at(0) - std::conj(turn.data.at(1))), 0, close);
    const Dense triangle = call("eig", 1, arrayOf(rowsOf({{1, 5}, {0, 2}}))).at(0);
    EXPECT_LT(largestDifference(triangle, rowsOf({{1}, {2}})), close);
}

TEST_F(Linalg, ReachesTheCertifiedCoefficientsOfTheLongleyData) {
    std::ifstream file(LONGLEY_DATA);
    std::string line;
    std::getline(file, line);
    std::vector<std::vector<double>> predictors;
    std::vector<std::vector<double>> employed;
    while (std::getline(file, line)) {
        std::istringstream fields(line);
        std::vector<double> row;
        for (std::string field; std::getline(fields, field, ',');) {
            row.push_back(std::stod(field));
        }
        employed.push_back({row.at(0)});
        row.at(0) = 1;
        predictors.push_back(row);
    }
    ASSERT_EQ(predictors.size(), 16U);
    const Dense x = call("lstsq", 1, arrayOf(rowsOf(predictors)), arrayOf(rowsOf(employed))).at(0);
    const double certified[] = {-3482258.63459582, 15.0618722713733,    -0.0358191792925910, -2.02022980381683,
                                -1.03322686717359, -0.0511041056535807, 1829.15146461355};
    ASSERT_EQ(x.rows, 7U);
    for (std::size_t i = 0; i < 7; ++i) {
        EXPECT_LT(std::abs(x.data[i].real() / certified[i] - 1), 1e-8) << i;
    }
    EXPECT_EQ(run_->errors, "");
}

TEST_F(Linalg, FitsByLeastSquares) {
    SCOPED_TRACE("seed " + std::to_string(seed_));
    for (const bool complex : {false, true}) {
        const Dense a = randomMatrix(20, 4, complex);
        const Dense b = randomMatrix(20, 2, complex);
        const Dense x = call("lstsq", 1, arrayOf(a, complex), arrayOf(b, complex)).at(0);
        // The residual of the nearest one is orthogonal to every column.
        EXPECT_LT(largestDifference(multiply(adjoint(a), multiply(a, x)), multiply(adjoint(a), b)), close);
        const Dense wide = adjoint(a);
        const Dense least = call("lstsq", 1, arrayOf(wide, complex), arrayOf(Dense(x), complex)).at(0);
        EXPECT_LT(largestDifference(multiply(wide, least), x), close);
    }
    EXPECT_EQ(run_->errors, "");
    const Dense least =
        call("lstsq", 1, arrayOf(rowsOf({{1, 1}, {1, 1}, {1, 1}})), arrayOf(rowsOf({{1}, {2}, {3}}))).at(0);
    EXPECT_LT(largestDifference(least, rowsOf({{1}, {1}})), close);
    EXPECT_EQ(run_->errors, "Warning: lstsq: argument 1 (A) has rank 1 of 2; the solution of least norm is given\n");
}

TEST_F(Linalg, MeasuresNorms) {
    const Dense a = rowsOf({{1, -2}, {3, 4}});
    const Dense v = rowsOf({{3, -4}});
    const double inf = std::numeric_limits<double>::infinity();
    const auto norm = [&](const Dense& m, qxArrayOwner p) {
        return (p ? call("norm", 1, arrayOf(m), std::move(p)) : call("norm", 1, arrayOf(m))).at(0).data.at(0).real();
    };
    const auto number = [](double p) { return qxArrayOwner(qxCreateDoubleScalar(p)); };
    const auto word = [](const char* p) { return qxArrayOwner(qxCreateString(p)); };
    // The larger root of the characteristic polynomial of A'*A: x^2 - 30 x + 100.
    EXPECT_NEAR(norm(a, nullptr), std::sqrt(15 + std::sqrt(125.0)), close);
    EXPECT_NEAR(norm(a, number(2)), std::sqrt(15 + std::sqrt(125.0)), close);
    EXPECT_EQ(norm(a, number(1)), 6);
    EXPECT_EQ(norm(a, number(inf)), 7);
    EXPECT_EQ(norm(a, word("inf")), 7);
    EXPECT_NEAR(norm(a, word("fro")), std::sqrt(30.0), close);
    EXPECT_NEAR(norm(v, nullptr), 5, close);
    EXPECT_EQ(norm(v, number(1)), 7);
    EXPECT_EQ(norm(v, number(inf)), 4);
    EXPECT_EQ(norm(Dense(0, 3), nullptr), 0);
    EXPECT_EQ(norm(rowsOf({{inf, 1}, {1, 1}}), nullptr), inf);
    EXPECT_TRUE(std::isnan(norm(rowsOf({{NAN, 1}, {1, 1}}), number(1))));
    EXPECT_NEAR(norm(rowsOf({{3e200, 4e200}}), nullptr), 5e200, 1e190);
}

TEST_F(Linalg, HandlesEmptyMatrices) {
    EXPECT_EQ(call("solve", 1, arrayOf(Dense(0, 0)), arrayOf(Dense(0, 3))).at(0).columns, 3U);
    EXPECT_EQ(call("inv", 1, arrayOf(Dense(0, 0))).at(0).rows, 0U);
    EXPECT_LT(largestDifference(call("lstsq", 1, arrayOf(Dense(0, 2)), arrayOf(Dense(0, 1))).at(0), Dense(2, 1)),
              close);
    EXPECT_EQ(call("svd", 1, arrayOf(Dense(0, 4))).at(0).rows, 0U);
    const std::vector<Dense> parts = call("svd", 3, arrayOf(Dense(0, 2)));
    EXPECT_EQ(parts[1].columns, 2U);
    EXPECT_EQ(parts[2].at(1, 1), Complex(1));
    EXPECT_EQ(call("eig", 1, arrayOf(Dense(0, 0))).at(0).rows, 0U);
}

TEST_F(Linalg, RefusesWhatDoesNotFitByName) {
    const auto wide = [] { return arrayOf(rowsOf({{1, 2, 3}, {4, 5, 6}})); };
    const auto square = [] { return arrayOf(rowsOf({{1, 2}, {3, 4}})); };
    const auto column = [] { return arrayOf(rowsOf({{1}, {2}, {3}})); };
    const auto text = [] { return qxArrayOwner(qxCreateString("text")); };
    const auto broken = [] { return arrayOf(rowsOf({{NAN, 1}, {1, 1}})); };
    EXPECT_EQ(failure("solve", 1, wide(), column()), "solve: argument 1 (A) is 2-by-3, expected a square matrix");
    EXPECT_EQ(failure("solve", 1, square(), column()),
              "solve: argument 2 (b) has 3 rows, expected 2, as many as argument 1 has");
    EXPECT_NE(failure("solve", 1, square(), text()).find("solve: argument 2 (b) is a 1-by-4 char array"),
              std::string::npos);
    EXPECT_EQ(failure("lstsq", 1, square(), column()),
              "lstsq: argument 2 (b) has 3 rows, expected 2, as many as argument 1 has");
    EXPECT_EQ(failure("inv", 1, wide()), "inv: argument 1 (A) is 2-by-3, expected a square matrix");
    EXPECT_EQ(failure("inv", 1, arrayOf(rowsOf({{1, 2}, {2, 4}}))), "inv: argument 1 (A) is singular");
    EXPECT_EQ(failure("solve", 1, arrayOf(Dense(2, 2)), arrayOf(Dense(2, 1))), "solve: argument 1 (A) is singular");
    EXPECT_EQ(failure("eig", 1, wide()), "eig: argument 1 (A) is 2-by-3, expected a square matrix");
    EXPECT_EQ(failure("eig", 1, broken()), "eig: argument 1 (A) has an element that is infinite or not a number");
    EXPECT_EQ(failure("svd", 1, broken()), "svd: argument 1 (A) has an element that is infinite or not a number");
    EXPECT_NE(failure("svd", 2, square()).find("svd: 2 results asked for"), std::string::npos);
    EXPECT_EQ(failure("svd", 3, square(), text()), "svd: argument 2 (size) is 'text', expected 'econ'");
    EXPECT_EQ(failure("norm", 1, square(), text()), "norm: argument 2 (p) is 'text', expected 1, 2, Inf or 'fro'");
    EXPECT_NE(failure("norm", 1, text()).find("norm: argument 1 (A) is a 1-by-4 char array"), std::string::npos);
}

TEST_F(Linalg, WarnsOfANearlySingularMatrix) {
    const Dense a = rowsOf({{1, 1}, {1, 1 + 1e-16 * 4}});
    call("inv", 1, arrayOf(a));
    EXPECT_EQ(run_->errors.rfind("Warning: inv: argument 1 (A) is nearly singular", 0), 0U) << run_->errors;
}

TEST_F(Linalg, TakesOtherClassesAndSparseMatrices) {
    const qxArrayOwner single(qxCreateConvertedCopy(arrayOf(rowsOf({{2, 0}, {0, 4}})).get(), qxINT16_CLASS));
    const qxArrayOwner sparse(qxMustBeSparse(arrayOf(rowsOf({{2, 0}, {0, 4}})).get()));
    for (const qxArrayOwner* a : {&single, &sparse}) {
        const qxArrayOwner copy(qxDuplicateArray(a->get()));
        const qxArrayOwner b = arrayOf(rowsOf({{2}, {4}}));
        EXPECT_LT(largestDifference(denseOf(run_->call("solve", 1, {copy.get(), b.get()}).at(0)), rowsOf({{1}, {1}})),
                  close);
    }
}

}  // namespace
