// LU decomposition with partial pivoting, and substitution.
#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>
#include <vector>

#include "tests/support/builds.h"
#include "tests/support/faults.h"
#include "tests/support/plane.h"

namespace {

using orbtest::expectChecks;
using orbtest::Random;
using orbtest::TestBuild;

// Where the x87 unit computes, in the tests or in px, last bits may differ.
constexpr bool kIsExact = sizeof(void*) == 8;

using Vector = std::vector<double>;
using Rows = std::vector<Vector>;

Rows square(int size) {
  return Rows(static_cast<size_t>(size), Vector(static_cast<size_t>(size)));
}
int sizeOf(const Rows& rows) {
  return static_cast<int>(rows.size());
}

// How elements lie in memory, in counts of doubles.
struct Layout {
  int row, column;
};
// Row by row without gaps, and with them; column by column; both strides with gaps.
std::vector<Layout> layoutsOf(int size) {
  return {{size, 1}, {size + 3, 1}, {1, size}, {2 * size + 1, 2}, {3, 3 * size + 2}};
}

// A matrix in memory of its own, all of which but the elements has to stay as it is.
struct Stored {
  Layout layout;
  int size;
  Vector memory;

  Stored(Layout l, int n)
      : layout(l), size(n), memory(static_cast<size_t>((l.row + l.column) * n), -77) {}
  Stored(Layout l, const Rows& rows) : Stored(l, sizeOf(rows)) {
    for (int i = 0; i < size; ++i) {
      for (int j = 0; j < size; ++j) at(i, j) = rows[i][j];
    }
  }
  double& at(int i, int j) {
    return memory[static_cast<size_t>(i * layout.row + j * layout.column)];
  }
  Orb32s stride1() const { return layout.row * 8; }
  Orb32s stride2() const { return layout.column * 8; }

  Rows rows() {
    Rows all = square(size);
    for (int i = 0; i < size; ++i) {
      for (int j = 0; j < size; ++j) all[i][j] = at(i, j);
    }
    return all;
  }
  bool isUntouchedOutside() {
    Stored fresh(layout, rows());
    return fresh.memory == memory;
  }
};

struct Factors {
  OrbStatus status;
  std::vector<Orb32s> index;
  Rows rows;
};

Factors decompose(const TestBuild& build, const Rows& matrix, Layout from, Layout to) {
  const int size = sizeOf(matrix);
  Stored src(from, matrix);
  Stored dst(to, size);
  std::vector<Orb32s> index(static_cast<size_t>(size) + 1, -5);
  const OrbStatus status =
      ORB(orbmLUDecomp_m_64f)(src.memory.data(), src.stride1(), src.stride2(), index.data(),
                              dst.memory.data(), dst.stride1(), dst.stride2(), size);
  EXPECT_EQ(index.back(), -5);
  EXPECT_TRUE(dst.isUntouchedOutside());
  index.pop_back();
  return {status, index, dst.rows()};
}
Factors decompose(const TestBuild& build, const Rows& matrix) {
  const int size = sizeOf(matrix);
  return decompose(build, matrix, {size, 1}, {size, 1});
}

Vector substitute(const TestBuild& build, const Factors& factors, const Vector& b, Layout from,
                  int bStep, int xStep) {
  const int size = sizeOf(factors.rows);
  Stored matrix(from, factors.rows);
  Vector right(static_cast<size_t>(size * bStep), -77);
  Vector x(static_cast<size_t>(size * xStep), -78);
  for (int i = 0; i < size; ++i) right[static_cast<size_t>(i * bStep)] = b[i];
  EXPECT_EQ(ORB(orbmLUBackSubst_mv_64f)(matrix.memory.data(), matrix.stride1(), matrix.stride2(),
                                        factors.index.data(), right.data(), bStep * 8, x.data(),
                                        xStep * 8, size),
            orbStsNoErr);
  Vector solution;
  for (size_t i = 0; i < x.size(); ++i) {
    if (i % static_cast<size_t>(xStep) == 0) {
      solution.push_back(x[i]);
    } else {
      EXPECT_EQ(x[i], -78);
    }
  }
  return solution;
}

// ---- Systems without rounding: pivots are powers of two, multipliers halves and quarters, and all
// else are small integers. So the factors that a matrix is made of are those that are found.

struct ExactSystem {
  Factors factors;
  Rows matrix;
  Vector x, b;
};

ExactSystem exactSystem(Random& random, int size) {
  ExactSystem system;
  std::vector<Orb32s>& index = system.factors.index;
  index.resize(static_cast<size_t>(size));
  std::iota(index.begin(), index.end(), 0);
  for (int i = size - 1; i > 0; --i) std::swap(index[i], index[random.between(0, i)]);
  system.factors.status = orbStsNoErr;
  system.factors.rows = system.matrix = square(size);
  // By pivot order first.
  Rows factors = square(size);
  for (int i = 0; i < size; ++i) {
    for (int j = 0; j < size; ++j) {
      const double sign = random.oneIn(2) ? 1 : -1;
      factors[i][j] = j < i    ? random.between(-3, 3) * 0.25
                      : j == i ? sign * (1 << random.between(0, 6))
                               : random.between(-40, 40);
    }
  }
  for (int i = 0; i < size; ++i) system.x.push_back(random.between(-100, 100));
  system.b.resize(static_cast<size_t>(size));
  for (int i = 0; i < size; ++i) {
    Vector& row = system.matrix[index[i]];
    for (int j = 0; j < size; ++j) {
      for (int k = 0; k <= std::min(i, j); ++k) {
        row[j] += (k == i ? 1 : factors[i][k]) * factors[k][j];
      }
      system.b[index[i]] += row[j] * system.x[j];
    }
    system.factors.rows[index[i]] = factors[i];
  }
  return system;
}

ORB_MEANING(orbmLUDecomp_m_64f, FindsTheFactors) {
  Random random("factors");
  for (int size = 1; size <= 40; ++size) {
    const ExactSystem system = exactSystem(random, size);
    for (const Layout from : layoutsOf(size)) {
      for (const Layout to : layoutsOf(size)) {
        const Factors found = decompose(build, system.matrix, from, to);
        ASSERT_EQ(found.status, orbStsNoErr);
        ASSERT_EQ(found.index, system.factors.index);
        ASSERT_EQ(found.rows, system.factors.rows);
      }
      // In place.
      Stored both(from, system.matrix);
      std::vector<Orb32s> index(static_cast<size_t>(size));
      ASSERT_EQ(
          ORB(orbmLUDecomp_m_64f)(both.memory.data(), both.stride1(), both.stride2(), index.data(),
                                  both.memory.data(), both.stride1(), both.stride2(), size),
          orbStsNoErr);
      ASSERT_EQ(index, system.factors.index);
      ASSERT_EQ(both.rows(), system.factors.rows);
    }
  }
}

ORB_MEANING(orbmLUBackSubst_mv_64f, FindsTheSolution) {
  Random random("solution");
  for (int size = 1; size <= 40; ++size) {
    const ExactSystem system = exactSystem(random, size);
    for (const Layout from : layoutsOf(size)) {
      ASSERT_EQ(substitute(build, system.factors, system.b, from, random.between(1, 3),
                           random.between(1, 3)),
                system.x);
    }
  }
}

// ---- Pivots

ORB_MEANING(orbmLUDecomp_m_64f, RowsStayAndEqualsKeepTheirOrder) {
  for (int size = 2; size <= 9; ++size) {
    SCOPED_TRACE(size);
    // The largest element of the first column is in the last row.
    Rows matrix = square(size);
    for (int i = 0; i < size; ++i) matrix[i][i] = 1;
    matrix[0][size - 1] = 1;
    matrix[size - 1][0] = 4;
    const Factors found = decompose(build, matrix);
    EXPECT_EQ(found.index.front(), size - 1);
    EXPECT_EQ(found.index.back(), 0);
    EXPECT_EQ(found.rows[size - 1][0], 4);
    EXPECT_EQ(found.rows[0][0], 0.25);

    // Equal magnitudes of either sign.
    Rows equals = square(size);
    for (int i = 0; i < size; ++i) {
      for (int j = 0; j <= i; ++j) equals[i][j] = (i + j) % 2 == 0 ? 1 : -1;
    }
    std::vector<Orb32s> inOrder(static_cast<size_t>(size));
    std::iota(inOrder.begin(), inOrder.end(), 0);
    EXPECT_EQ(decompose(build, equals).index, inOrder);
  }
}

bool hasSmallForm(int size) {
  return size >= 3 && size <= 5;
}

// A diagonal of ones but for one element, which may be the last.
OrbStatus statusOfDiagonal(const TestBuild& build, int size, int at, double element) {
  Rows matrix = square(size);
  for (int i = 0; i < size; ++i) matrix[i][i] = i == at ? element : 1;
  return decompose(build, matrix).status;
}

ORB_MEANING(orbmLUDecomp_m_64f, TwoThresholds) {
  const double twiceSmallestNormal = 4.450147717014403e-308;
  const double epsilon = 2.220446049250313e-16;
  ASSERT_EQ(twiceSmallestNormal, 2 * std::numeric_limits<double>::min());
  ASSERT_EQ(epsilon, std::numeric_limits<double>::epsilon());
  for (int size = 1; size <= 9; ++size) {
    for (int at = 0; at < size; ++at) {
      for (const double sign : {1.0, -1.0}) {
        SCOPED_TRACE(testing::Message() << size << " rows, pivot " << at);
        const auto status = [&](double element) {
          return statusOfDiagonal(build, size, at, sign * element);
        };
        EXPECT_EQ(status(0), orbStsSingularErr);
        EXPECT_EQ(status(1e-20), hasSmallForm(size) ? orbStsNoErr : orbStsSingularErr);
        if (hasSmallForm(size)) {
          EXPECT_EQ(status(twiceSmallestNormal), orbStsNoErr);
          EXPECT_EQ(status(std::nextafter(twiceSmallestNormal, 0)), orbStsSingularErr);
        } else {
          EXPECT_EQ(status(epsilon), orbStsSingularErr);
          EXPECT_EQ(status(std::nextafter(epsilon, 1)), orbStsNoErr);
        }
      }
    }
  }
}

// At a pivot that is none the work ends: rows and index are those of the steps before.
ORB_MEANING(orbmLUDecomp_m_64f, WhatASingularMatrixLeaves) {
  Random random("singular");
  for (int size = 2; size <= 9; ++size) {
    for (int rank = 0; rank < size; ++rank) {
      SCOPED_TRACE(testing::Message() << size << " rows, " << rank << " pivots");
      ExactSystem system = exactSystem(random, size);
      const std::vector<Orb32s>& order = system.factors.index;
      // Rows from `rank` on become combinations of those before, plus `rest` in the last column.
      Rows matrix = square(size);
      Rows expected = square(size);
      for (int i = 0; i < size; ++i) {
        for (int j = 0; j < size; ++j) {
          for (int k = 0; k <= std::min({i, j, rank - 1}); ++k) {
            const double multiplier = k == i ? 1 : system.factors.rows[order[i]][k];
            matrix[i][j] += multiplier * system.factors.rows[order[k]][j];
          }
          expected[i][j] = i < rank || j < rank ? system.factors.rows[order[i]][j] : 0;
        }
      }
      const Factors found = decompose(build, matrix);
      EXPECT_EQ(found.status, orbStsSingularErr);
      EXPECT_EQ(found.rows, expected);
      std::vector<Orb32s> inOrder(static_cast<size_t>(size));
      std::iota(inOrder.begin(), inOrder.end(), 0);
      EXPECT_EQ(found.index, inOrder);
    }
  }
}

// ---- Rounding

// Two numbers whose quotient is not the product with the reciprocal.
std::pair<double, double> roundedTwoWays() {
  for (int divisor = 3;; divisor += 2) {
    for (int dividend = 1; dividend < divisor; ++dividend) {
      const double a = dividend, p = divisor;
      if (a / p != a * (1 / p)) return {a, p};
    }
  }
}

ORB_MEANING(orbmLUDecomp_m_64f, MultipliersAreProductsButForOne) {
  if (!kIsExact) GTEST_SKIP() << "the x87 unit rounds another way";
  const auto [a, p] = roundedTwoWays();
  for (int size = 2; size <= 9; ++size) {
    for (int k = 0; k < size - 1; ++k) {
      Rows matrix = square(size);
      for (int i = 0; i < size; ++i) matrix[i][i] = p;
      matrix[size - 1][k] = a;
      const bool isQuotient = size == 3 && k == 1;
      EXPECT_EQ(decompose(build, matrix).rows[size - 1][k], isQuotient ? a / p : a * (1 / p))
          << size << " rows, column " << k;
    }
  }
}

// By moving rows about, in full.
Factors decomposeByModel(Rows rows) {
  const int size = sizeOf(rows);
  std::vector<Orb32s> index(rows.size());
  std::iota(index.begin(), index.end(), 0);
  for (int k = 0; k < size; ++k) {
    const auto pivot = std::max_element(
        rows.begin() + k, rows.end(),
        [k](const Vector& a, const Vector& b) { return std::fabs(a[k]) < std::fabs(b[k]); });
    std::swap(index[k], index[pivot - rows.begin()]);
    std::swap(rows[k], *pivot);
    for (int i = k + 1; i < size; ++i) {
      const bool isQuotient = size == 3 && k == 1;
      const double reciprocal = 1 / rows[k][k];
      rows[i][k] = isQuotient ? rows[i][k] / rows[k][k] : rows[i][k] * reciprocal;
      for (int j = k + 1; j < size; ++j) {
        const double product = rows[i][k] * rows[k][j];
        rows[i][j] = rows[i][j] - product;
      }
    }
  }
  Rows placed(rows.size());
  for (int k = 0; k < size; ++k) placed[index[k]] = rows[k];
  return {orbStsNoErr, index, placed};
}
Vector substituteByModel(const Factors& factors, const Vector& b) {
  const int size = sizeOf(factors.rows);
  Vector y(b.size()), x(b.size());
  for (int k = 0; k < size; ++k) {
    double sum = 0;
    for (int j = 0; j < k; ++j) sum += factors.rows[factors.index[k]][j] * y[j];
    y[k] = b[factors.index[k]] - sum;
  }
  for (int k = size - 1; k >= 0; --k) {
    double sum = 0;
    for (int j = k + 1; j < size; ++j) sum += factors.rows[factors.index[k]][j] * x[j];
    x[k] = (y[k] - sum) / factors.rows[factors.index[k]][k];
  }
  return x;
}

double anyDouble(Random& random) {
  return std::ldexp(random.any<Orb32s>(), -31) + std::ldexp(random.any<Orb32s>(), -62);
}
Rows anyMatrix(Random& random, int size) {
  Rows matrix = square(size);
  for (Vector& row : matrix) {
    for (double& element : row) element = anyDouble(random);
  }
  return matrix;
}
Vector anyVector(Random& random, int size) {
  Vector vector;
  for (int i = 0; i < size; ++i) vector.push_back(anyDouble(random));
  return vector;
}

// Equal, or as near as the rounding of so small a system allows where last bits may differ.
void expectNear(const Vector& found, const Vector& expected) {
  if (kIsExact) {
    EXPECT_EQ(found, expected);
    return;
  }
  ASSERT_EQ(found.size(), expected.size());
  for (size_t i = 0; i < found.size(); ++i) {
    EXPECT_NEAR(found[i], expected[i], 1e-8 * (1 + std::fabs(expected[i])));
  }
}
void expectNear(const Factors& found, const Factors& expected) {
  EXPECT_EQ(found.status, expected.status);
  EXPECT_EQ(found.index, expected.index);
  for (size_t i = 0; i < found.rows.size(); ++i) expectNear(found.rows[i], expected.rows[i]);
}

ORB_MEANING(orbmLUDecomp_m_64f, RoundsEachStep) {
  Random random("rounding");
  for (int size = 1; size <= 40; ++size) {
    const Rows matrix = anyMatrix(random, size);
    for (const Layout from : layoutsOf(size)) {
      expectNear(decompose(build, matrix, from, {size, 1}), decomposeByModel(matrix));
    }
  }
}

ORB_MEANING(orbmLUBackSubst_mv_64f, RoundsEachStep) {
  Random random("rounding");
  for (int size = 1; size <= 40; ++size) {
    const Factors factors = decomposeByModel(anyMatrix(random, size));
    const Vector b = anyVector(random, size);
    for (const Layout from : layoutsOf(size)) {
      expectNear(substitute(build, factors, b, from, 1, 2), substituteByModel(factors, b));
    }
  }
}

// ---- Checks

ORB_MEANING(orbmLUDecomp_m_64f, Checks) {
  const double src[4] = {1, 2, 3, 4};
  double dst[4] = {-1, -1, -1, -1};
  Orb32s index[2] = {-1, -1};
  struct Call {
    const double* src;
    Orb32s srcStride[2];
    Orb32s* index;
    double* dst;
    Orb32s dstStride[2];
    Orb32s size;
  };
  std::vector<orbtest::Fault<Call>> faults = {
      {orbStsNullPtrErr, [](Call& c) { c.src = nullptr; }},
      {orbStsNullPtrErr, [](Call& c) { c.dst = nullptr; }},
      {orbStsNullPtrErr, [](Call& c) { c.index = nullptr; }},
      {orbStsSizeErr, [](Call& c) { c.size = 0; }},
      {orbStsSizeErr, [](Call& c) { c.size = INT32_MIN; }}};
  for (const Orb32s stride : {0, 12, -8, 4, INT32_MIN}) {
    for (int i = 0; i < 2; ++i) {
      faults.push_back({orbStsStrideMatrixErr, [=](Call& c) { c.srcStride[i] = stride; }});
      faults.push_back({orbStsStrideMatrixErr, [=](Call& c) { c.dstStride[i] = stride; }});
    }
  }
  expectChecks<Call>(faults, {src, {16, 8}, index, dst, {16, 8}, 2}, [&](const Call& c) {
    return ORB(orbmLUDecomp_m_64f)(c.src, c.srcStride[0], c.srcStride[1], c.index, c.dst,
                                   c.dstStride[0], c.dstStride[1], c.size);
  });
  for (const double element : dst) EXPECT_EQ(element, -1);
  for (const Orb32s entry : index) EXPECT_EQ(entry, -1);
}

ORB_MEANING(orbmLUBackSubst_mv_64f, Checks) {
  const double src[4] = {1, 2, 3, 4}, b[2] = {1, 2};
  double x[2] = {-1, -1};
  const Orb32s index[2] = {0, 1};
  struct Call {
    const double* src;
    Orb32s stride[4];
    const Orb32s* index;
    const double* b;
    double* x;
    Orb32s size;
  };
  std::vector<orbtest::Fault<Call>> faults = {
      {orbStsNullPtrErr, [](Call& c) { c.src = nullptr; }},
      {orbStsNullPtrErr, [](Call& c) { c.b = nullptr; }},
      {orbStsNullPtrErr, [](Call& c) { c.x = nullptr; }},
      {orbStsNullPtrErr, [](Call& c) { c.index = nullptr; }},
      {orbStsSizeErr, [](Call& c) { c.size = 0; }},
      {orbStsSizeErr, [](Call& c) { c.size = -1; }}};
  for (const Orb32s stride : {0, 12, -8, 4, INT32_MIN}) {
    for (int i = 0; i < 4; ++i) {
      faults.push_back({orbStsStrideMatrixErr, [=](Call& c) { c.stride[i] = stride; }});
    }
  }
  expectChecks<Call>(faults, {src, {16, 8, 8, 8}, index, b, x, 2}, [&](const Call& c) {
    return ORB(orbmLUBackSubst_mv_64f)(c.src, c.stride[0], c.stride[1], c.index, c.b, c.stride[2],
                                       c.x, c.stride[3], c.size);
  });
  for (const double element : x) EXPECT_EQ(element, -1);
}

// ---- Every build

const TestBuild kReference = {orb::kPx, "px"};

ORB_AGREEMENT(orbmLUDecomp_m_64f) {
  for (int round = 0; round < 150; ++round) {
    const int size = random.between(1, 20);
    const Rows matrix = anyMatrix(random, size);
    for (const Layout layout : layoutsOf(size)) {
      expectNear(decompose(build, matrix, layout, layout),
                 decompose(kReference, matrix, layout, layout));
    }
  }
}

ORB_AGREEMENT(orbmLUBackSubst_mv_64f) {
  for (int round = 0; round < 150; ++round) {
    const int size = random.between(1, 20);
    const Factors factors = decompose(kReference, anyMatrix(random, size));
    const Vector b = anyVector(random, size);
    for (const Layout layout : layoutsOf(size)) {
      expectNear(substitute(build, factors, b, layout, 1, 1),
                 substitute(kReference, factors, b, layout, 1, 1));
    }
  }
}

}  // namespace
