// Small systems, decomposed and solved, beside Eigen with sizes known to the compiler; and larger
// ones beside Eigen with sizes that are not.
#include <Eigen/Dense>
#include <vector>

#include "bench/support/builds.h"

namespace {

constexpr int kSystems = 64;  // of the same size, in turns, so that no branch is learnt

template <int kRows>
using Matrix = Eigen::Matrix<double, kRows, kRows, Eigen::RowMajor>;
template <int kRows>
using Column = Eigen::Matrix<double, kRows, 1>;

template <class M>
std::vector<M> someSystems(int size) {
  std::vector<M> systems;
  unsigned state = 1;
  for (int i = 0; i < kSystems; ++i) {
    systems.push_back(M::NullaryExpr(size, size, [&] {
      state = state * 1664525 + 1013904223;
      return static_cast<int>(state) / 2147483648.0;
    }));
  }
  return systems;
}

template <class Solve>
void timeSystems(benchmark::State& state, Solve solve) {
  for (auto _ : state) {
    for (int i = 0; i < kSystems; ++i) {
      solve(i);
      benchmark::ClobberMemory();
    }
  }
  state.SetItemsProcessed(state.iterations() * kSystems);
}

template <int kRows>
void solveByEigen(benchmark::State& state, int size) {
  const std::vector<Matrix<kRows>> systems = someSystems<Matrix<kRows>>(size);
  const Column<kRows> b = Column<kRows>::Ones(size);
  Column<kRows> x(size);
  timeSystems(state, [&](int i) {
    x = systems[i].partialPivLu().solve(b);
    benchmark::DoNotOptimize(x.data());
  });
}

void solveByUs(benchmark::State& state, const orbtest::TestBuild& build, int size) {
  using Any = Matrix<Eigen::Dynamic>;
  const std::vector<Any> systems = someSystems<Any>(size);
  const Eigen::VectorXd b = Eigen::VectorXd::Ones(size);
  Eigen::VectorXd x(size);
  Any factors(size, size);
  std::vector<Orb32s> index(static_cast<size_t>(size));
  const Orb32s stride = size * 8;
  timeSystems(state, [&](int i) {
    ORB(orbmLUDecomp_m_64f)
    (systems[i].data(), stride, 8, index.data(), factors.data(), stride, 8, size);
    ORB(orbmLUBackSubst_mv_64f)
    (factors.data(), stride, 8, index.data(), b.data(), 8, x.data(), 8, size);
  });
}

void add(int size, void (*eigen)(benchmark::State& state, int size)) {
  const std::string name = "SolveSystem/" + std::to_string(size) + "/";
  for (const orbtest::TestBuild& build : orbtest::runnableBuilds()) {
    benchmark::RegisterBenchmark(
        (name + build.tag).c_str(),
        [&build, size](benchmark::State& state) { solveByUs(state, build, size); });
  }
  benchmark::RegisterBenchmark((name + "eigen").c_str(),
                               [eigen, size](benchmark::State& state) { eigen(state, size); });
}

bool registerAll() {
  add(3, solveByEigen<3>);
  add(4, solveByEigen<4>);
  add(5, solveByEigen<5>);
  add(6, solveByEigen<6>);
  add(12, solveByEigen<Eigen::Dynamic>);
  add(40, solveByEigen<Eigen::Dynamic>);
  return true;
}
[[maybe_unused]] const bool registered = registerAll();

}  // namespace
