// A benchmark that runs for each build of an export that this machine can run, by name:
//
//   ORB_BENCHMARK(orbiQuantFwd8x8_JPEG_16s_C1I) {
//     for (auto _ : state) ORB(orbiQuantFwd8x8_JPEG_16s_C1I)(block, table);
//     state.SetItemsProcessed(state.iterations());
//   }
#ifndef ORB_BENCH_SUPPORT_BUILDS_H
#define ORB_BENCH_SUPPORT_BUILDS_H

#include <benchmark/benchmark.h>

#include <string>

#include "frame/dispatch.h"
#include "tests/support/runnable_builds.h"

namespace orbbench {

using Body = void (*)(benchmark::State& state, const orbtest::TestBuild& build);

inline bool onEachBuild(const char* name, Body body) {
  for (const orbtest::TestBuild& build : orbtest::runnableBuilds()) {
    benchmark::RegisterBenchmark((std::string(name) + "/" + build.tag).c_str(),
                                 [=](benchmark::State& state) { body(state, build); });
  }
  return true;
}

}  // namespace orbbench

#define ORB(name) (::orbRow_##name.body[build.index])

#define ORB_BENCHMARK(exportName)                                                             \
  static void exportName##_bench(benchmark::State& state, const ::orbtest::TestBuild& build); \
  [[maybe_unused]] static const bool exportName##_registered =                                \
      ::orbbench::onEachBuild(#exportName, exportName##_bench);                               \
  static void exportName##_bench(benchmark::State& state, const ::orbtest::TestBuild& build)

#endif
