// Channels of samples, beside a copy of as many bytes, which is as fast as it can be.
#include <cstring>
#include <vector>

#include "bench/support/builds.h"

namespace {

constexpr int kLength = 1024;
constexpr int kMostChannels = 6;

alignas(64) Orb32f apart[kMostChannels][kLength];
alignas(64) Orb32f together[kMostChannels * kLength];

template <class Body>
void timeSamples(benchmark::State& state, int channels, Body body) {
  for (auto _ : state) {
    body();
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * channels * kLength);
}

// `call` takes the array of channels, their number and the interleaved buffer.
template <class T, class Call>
void add(const char* name, int channels, Call call) {
  for (const orbtest::TestBuild& build : orbtest::runnableBuilds()) {
    benchmark::RegisterBenchmark(
        (std::string(name) + "/" + std::to_string(channels) + "/" + build.tag).c_str(),
        [=, &build](benchmark::State& state) {
          T* pointers[kMostChannels];
          for (int c = 0; c < channels; ++c) pointers[c] = reinterpret_cast<T*>(apart[c]);
          timeSamples(state, channels, [&] { call(build, pointers, channels, together); });
        });
  }
}

bool registerAll() {
  using orbtest::TestBuild;
  for (const int channels : {1, 2, 6}) {
    add<Orb16s>("Interleave_16s", channels,
                [](const TestBuild& build, Orb16s** src, int count, void* dst) {
                  ORB(orbsInterleave_16s)(src, count, kLength, static_cast<Orb16s*>(dst));
                });
    add<Orb32f>("Interleave_32f", channels,
                [](const TestBuild& build, Orb32f** src, int count, void* dst) {
                  ORB(orbsInterleave_32f)(src, count, kLength, static_cast<Orb32f*>(dst));
                });
    add<Orb16s>("Deinterleave_16s", channels,
                [](const TestBuild& build, Orb16s** dst, int count, void* src) {
                  ORB(orbsDeinterleave_16s)(static_cast<Orb16s*>(src), count, kLength, dst);
                });
    add<Orb32f>("JoinScaled_32f16s", channels,
                [](const TestBuild& build, Orb32f** src, int count, void* dst) {
                  ORB(orbsJoinScaled_32f16s_D2L)(src, count, kLength, static_cast<Orb16s*>(dst));
                });
    add<Orb32f>("JoinScaled_32f24s", channels,
                [](const TestBuild& build, Orb32f** src, int count, void* dst) {
                  ORB(orbsJoinScaled_32f24s_D2L)(src, count, kLength, static_cast<Orb8u*>(dst));
                });
    add<Orb32f>("SplitScaled_16s32f", channels,
                [](const TestBuild& build, Orb32f** dst, int count, void* src) {
                  ORB(orbsSplitScaled_16s32f_D2L)(static_cast<Orb16s*>(src), dst, count, kLength);
                });
    add<Orb32f>("SplitScaled_24s32f", channels,
                [](const TestBuild& build, Orb32f** dst, int count, void* src) {
                  ORB(orbsSplitScaled_24s32f_D2L)(static_cast<Orb8u*>(src), dst, count, kLength);
                });
    for (const int bytes : {2, 4}) {
      benchmark::RegisterBenchmark(
          ("memcpy/" + std::to_string(8 * bytes) + "bits/" + std::to_string(channels)).c_str(),
          [=](benchmark::State& state) {
            const size_t size = static_cast<size_t>(bytes) * channels * kLength;
            timeSamples(state, channels, [=] { std::memcpy(together, apart, size); });
          });
    }
  }
  return true;
}
[[maybe_unused]] const bool registered = registerAll();

}  // namespace
