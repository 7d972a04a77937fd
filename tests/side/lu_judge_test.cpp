// LU decomposition beside Eigen's, with the same pivoting.
#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "tests/support/builds.h"

namespace {

using orbtest::Random;
using orbtest::TestBuild;

using Matrix = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
using Vector = Eigen::VectorXd;

double anyDouble(Random& random) {
  return std::ldexp(random.any<Orb32s>(), -31);
}

Matrix randomMatrix(Random& random, int size) {
  return Matrix::NullaryExpr(size, size, [&] { return anyDouble(random); });
}
// Rows of all magnitudes.
Matrix scaledMatrix(Random& random, int size) {
  Matrix matrix = randomMatrix(random, size);
  for (int i = 0; i < size; ++i) matrix.row(i) *= std::ldexp(1, random.between(-20, 20));
  return matrix;
}
// Almost singular, the more so the larger; from 13 rows on it is for doubles.
Matrix hilbertMatrix(Random& random, int size) {
  const int shift = random.between(0, 3);
  return Matrix::NullaryExpr(
      size, size, [=](Eigen::Index i, Eigen::Index j) { return 1.0 / (1.0 + i + j + shift); });
}
// A diagonal with its rows in any order, and little else.
Matrix permutedMatrix(Random& random, int size) {
  Eigen::PermutationMatrix<Eigen::Dynamic> permutation(size);
  permutation.setIdentity();
  for (int i = size - 1; i > 0; --i) {
    std::swap(permutation.indices()[i], permutation.indices()[random.between(0, i)]);
  }
  Matrix matrix = randomMatrix(random, size) * 1e-3;
  matrix.diagonal().array() += 1;
  return permutation * matrix;
}

struct Solved {
  OrbStatus status;
  Matrix factors;  // rows in the order of pivots
  std::vector<Orb32s> index;
  Vector x;
};

Solved solve(const TestBuild& build, const Matrix& matrix, const Vector& b) {
  const int size = static_cast<int>(matrix.rows());
  const Orb32s stride = size * 8;
  Solved solved = {0, Matrix(size, size), std::vector<Orb32s>(static_cast<size_t>(size)),
                   Vector(size)};
  Matrix factors(size, size);
  solved.status = ORB(orbmLUDecomp_m_64f)(matrix.data(), stride, 8, solved.index.data(),
                                          factors.data(), stride, 8, size);
  if (solved.status != orbStsNoErr) return solved;
  EXPECT_EQ(ORB(orbmLUBackSubst_mv_64f)(factors.data(), stride, 8, solved.index.data(), b.data(), 8,
                                        solved.x.data(), 8, size),
            orbStsNoErr);
  for (int k = 0; k < size; ++k) solved.factors.row(k) = factors.row(solved.index[k]);
  return solved;
}

// How far a solution misses the right side, in roundings of the largest terms.
double missOf(const Matrix& matrix, const Vector& x, const Vector& b) {
  const double terms = matrix.cwiseAbs().rowwise().sum().maxCoeff() * x.cwiseAbs().maxCoeff() +
                       b.cwiseAbs().maxCoeff();
  return (matrix * x - b).cwiseAbs().maxCoeff() / (terms * std::numeric_limits<double>::epsilon());
}

// Both solve to within a small multiple of the rounding, however the system is conditioned.
template <class MakeMatrix>
void expectSolved(const TestBuild& build, Random& random, MakeMatrix make, int largest) {
  for (int size = 1; size <= largest; ++size) {
    const Matrix matrix = make(random, size);
    const Vector b = Vector::NullaryExpr(size, [&] { return anyDouble(random); });
    const Solved solved = solve(build, matrix, b);
    ASSERT_EQ(solved.status, orbStsNoErr) << size;
    const Vector theirs = Eigen::PartialPivLU<Matrix>(matrix).solve(b);
    EXPECT_LT(missOf(matrix, solved.x, b), 4 * size + 4 * missOf(matrix, theirs, b)) << size;
  }
}

ORB_MEANING(orbmLUBackSubst_mv_64f, SolvesAsEigenDoes) {
  Random random("judged");
  for (int round = 0; round < 5; ++round) {
    expectSolved(build, random, randomMatrix, 40);
    expectSolved(build, random, permutedMatrix, 40);
    expectSolved(build, random, scaledMatrix, 40);
    expectSolved(build, random, hilbertMatrix, 11);
  }
}

// The same rows as pivots, and the same factors.
ORB_MEANING(orbmLUDecomp_m_64f, FactorsAsEigenDoes) {
  Random random("judged");
  for (int size = 1; size <= 40; ++size) {
    for (const auto make : {randomMatrix, permutedMatrix}) {
      const Matrix matrix = make(random, size);
      const Solved solved = solve(build, matrix, Vector::Zero(size));
      const Eigen::PartialPivLU<Matrix> theirs(matrix);
      const Eigen::VectorXi places = theirs.permutationP().indices();
      for (int k = 0; k < size; ++k) ASSERT_EQ(places[solved.index[k]], k);
      ASSERT_LT((solved.factors - theirs.matrixLU()).cwiseAbs().maxCoeff(), 1e-9);
    }
  }
}

}  // namespace
