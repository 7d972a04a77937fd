// Channels of samples: joined and split as they are, or as integers and floats.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <vector>

#include "tests/support/builds.h"
#include "tests/support/faults.h"
#include "tests/support/plane.h"

namespace {

using orbtest::expectChecks;
using orbtest::Placement;
using orbtest::Plane;
using orbtest::Random;
using orbtest::TestBuild;

// Channels in memory, each where it likes.
template <class T>
struct Channels {
  std::vector<Plane<T>> planes;

  // At any address, or each at a multiple of 16.
  Channels(int channels, int length, Random& random, bool isAligned = false) {
    for (int c = 0; c < channels; ++c) {
      planes.emplace_back(length, 1, isAligned ? Placement{} : Placement::any(random));
    }
  }
  std::vector<T*> pointers() {
    std::vector<T*> all;
    for (Plane<T>& plane : planes) all.push_back(plane.data());
    return all;
  }
  bool areAligned() {
    for (const T* const pointer : pointers()) {
      if (reinterpret_cast<uintptr_t>(pointer) % 16 != 0) return false;
    }
    return true;
  }
  template <class Generator>
  void fill(Generator generate) {
    for (Plane<T>& plane : planes) plane.fill(generate);
  }
};

template <class T>
bool isAligned(const Plane<T>& plane) {
  return reinterpret_cast<uintptr_t>(plane.data()) % 16 == 0;
}

template <class T>
T anySample(Random& random) {
  if constexpr (std::is_same_v<T, Orb32f>) {
    // Any bits at all: no sample may change on its way.
    const Orb32u bits = random.any<Orb32u>();
    T sample;
    std::memcpy(&sample, &bits, sizeof sample);
    return sample;
  } else {
    return random.any<T>();
  }
}
template <class T>
bool areSame(T a, T b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

// ---- As they are

// `join` tells the direction. Shapes of all kinds, and long ones of few channels.
template <class T, class Call>
void expectMoved(bool join, Call call) {
  Random random("moved");
  for (int round = 0; round < 200; ++round) {
    const int channels = random.between(1, 9);
    const int length = random.oneIn(10) ? random.between(200, 1100) : random.between(1, 70);
    Channels<T> apart(channels, length, random, random.oneIn(2));
    Plane<T> together(channels * length, 1, random.oneIn(2) ? Placement{} : Placement::any(random));
    join ? apart.fill([&] { return anySample<T>(random); })
         : together.fill([&] { return anySample<T>(random); });
    const bool aligned = apart.areAligned() && isAligned(together);
    ASSERT_EQ(call(apart.pointers().data(), channels, length, together.data()),
              aligned ? orbStsNoErr : orbStsMisalignedData);
    for (int c = 0; c < channels; ++c) {
      for (int i = 0; i < length; ++i) {
        ASSERT_TRUE(areSame(together.at(i * channels + c), apart.planes[c].at(i)));
      }
      apart.planes[c].expectOutsideUntouched();
    }
    together.expectOutsideUntouched();
  }
}

struct PlainCall {
  bool hasArray = true;
  bool hasInterleaved = true;
  int nullChannel = -1;
  Orb32s channels = 3;
  Orb32s len = 4;
};
template <class T, class Call>
void expectPlainChecks(Call call) {
  Random random("checks");
  Channels<T> apart(3, 4, random);
  Plane<T> together(12, 1);
  expectChecks<PlainCall>({{orbStsNullPtrErr, [](PlainCall& c) { c.hasArray = false; }},
                           {orbStsNullPtrErr, [](PlainCall& c) { c.hasInterleaved = false; }},
                           {orbStsChannelCountErr, [](PlainCall& c) { c.channels = 0; }},
                           {orbStsChannelCountErr, [](PlainCall& c) { c.channels = -3; }},
                           {orbStsSizeErr, [](PlainCall& c) { c.len = 0; }},
                           {orbStsSizeErr, [](PlainCall& c) { c.len = INT32_MIN; }},
                           {orbStsNullPtrErr, [](PlainCall& c) { c.nullChannel = 0; }},
                           {orbStsNullPtrErr, [](PlainCall& c) { c.nullChannel = 2; }}},
                          {}, [&](const PlainCall& c) {
                            std::vector<T*> pointers = apart.pointers();
                            if (c.nullChannel >= 0) pointers[c.nullChannel] = nullptr;
                            return call(c.hasArray ? pointers.data() : nullptr, c.channels, c.len,
                                        c.hasInterleaved ? together.data() : nullptr);
                          });
  for (const Plane<T>& plane : apart.planes) plane.expectUntouched();
  together.expectUntouched();
}

// The calls, with their arguments in one order.
auto interleave16(OrbStatus(ORB_CALL* f)(Orb16s* const*, Orb32s, Orb32s, Orb16s*)) {
  return f;
}
auto deinterleave16(OrbStatus(ORB_CALL* f)(const Orb16s*, Orb32s, Orb32s, Orb16s* const*)) {
  return [f](Orb16s* const* apart, Orb32s channels, Orb32s len, const Orb16s* together) {
    return f(together, channels, len, apart);
  };
}

ORB_MEANING(orbsInterleave_16s, MovesEverySample) {
  expectMoved<Orb16s>(true, interleave16(ORB(orbsInterleave_16s)));
  expectPlainChecks<Orb16s>(interleave16(ORB(orbsInterleave_16s)));
}
ORB_MEANING(orbsInterleave_32f, MovesEverySample) {
  expectMoved<Orb32f>(true, ORB(orbsInterleave_32f));
  expectPlainChecks<Orb32f>(ORB(orbsInterleave_32f));
}
ORB_MEANING(orbsDeinterleave_16s, MovesEverySample) {
  expectMoved<Orb16s>(false, deinterleave16(ORB(orbsDeinterleave_16s)));
  expectPlainChecks<Orb16s>(deinterleave16(ORB(orbsDeinterleave_16s)));
}

// ---- Scaled

// An integer of 16 or 24 bits in memory, the lowest byte first.
struct Format {
  int bytes;
  double scale;       // of floats
  double step, half;  // of integers

  int smallest() const { return -(1 << (8 * bytes - 1)); }
  int largest() const { return (1 << (8 * bytes - 1)) - 1; }
};
const Format kFormats[] = {{2, 32767.5, 2.0f / 65535, 1.0f / 65535},
                           {3, 8388607.5, 1.19209296656209e-7, 5.96046483281045e-8}};
const Format& k16 = kFormats[0];
const Format& k24 = kFormats[1];

int codeAt(const Plane<Orb8u>& bytes, Format format, int index) {
  int code = 0;
  for (int k = 0; k < format.bytes; ++k) code += bytes.at(index * format.bytes + k) << (8 * k);
  return code > format.largest() ? code - (1 << (8 * format.bytes)) : code;
}
void setCode(Plane<Orb8u>& bytes, Format format, int index, int code) {
  for (int k = 0; k < format.bytes; ++k) {
    bytes.set(index * format.bytes + k, 0, static_cast<Orb8u>(code >> (8 * k) & 255));
  }
}

// To nearest, away from zero first; what was half way goes back if it is odd.
int codeByModel(Format format, Orb32f x) {
  if (std::isnan(x)) return 0;
  if (x > 1) return format.largest();
  if (x < -1) return format.smallest();
  const double y = x * format.scale - 0.5;
  const double magnitude = std::fabs(y);
  double rounded = std::floor(magnitude + 0.5);
  if (rounded - magnitude == 0.5 && std::fmod(rounded, 2) == 1) --rounded;
  return static_cast<int>(y < 0 ? -rounded : rounded);
}

// The functions, over bytes.
using Join = OrbStatus (*)(const TestBuild& build, Orb32f* const* src, Orb32s channels, Orb32s len,
                           Orb8u* dst);
OrbStatus join16(const TestBuild& build, Orb32f* const* src, Orb32s channels, Orb32s len,
                 Orb8u* dst) {
  return ORB(orbsJoinScaled_32f16s_D2L)(src, channels, len, reinterpret_cast<Orb16s*>(dst));
}
OrbStatus join24(const TestBuild& build, Orb32f* const* src, Orb32s channels, Orb32s len,
                 Orb8u* dst) {
  return ORB(orbsJoinScaled_32f24s_D2L)(src, channels, len, dst);
}
using Split = OrbStatus (*)(const TestBuild& build, const Orb8u* src, Orb32f* const* dst,
                            Orb32s channels, Orb32s len);
OrbStatus split16(const TestBuild& build, const Orb8u* src, Orb32f* const* dst, Orb32s channels,
                  Orb32s len) {
  return ORB(orbsSplitScaled_16s32f_D2L)(reinterpret_cast<const Orb16s*>(src), dst, channels, len);
}
OrbStatus split24(const TestBuild& build, const Orb8u* src, Orb32f* const* dst, Orb32s channels,
                  Orb32s len) {
  return ORB(orbsSplitScaled_24s32f_D2L)(src, dst, channels, len);
}

int codeOf(const TestBuild& build, Join join, Format format, Orb32f sample) {
  Plane<Orb8u> bytes(format.bytes, 1);
  Orb32f* const channel = &sample;
  EXPECT_EQ(join(build, &channel, 1, 1, bytes.data()), orbStsNoErr);
  bytes.expectOutsideUntouched();
  return codeAt(bytes, format, 0);
}

Orb32f anyFloat(Random& random) {
  constexpr Orb32f kSpecial[] = {0,
                                 -0.0f,
                                 1,
                                 -1,
                                 1.0000001f,
                                 -1.0000001f,
                                 0.5f,
                                 -0.5f,
                                 2,
                                 -2,
                                 1e30f,
                                 -1e30f,
                                 1e-40f,
                                 -1e-40f,
                                 std::numeric_limits<Orb32f>::infinity(),
                                 -std::numeric_limits<Orb32f>::infinity(),
                                 std::numeric_limits<Orb32f>::quiet_NaN()};
  if (random.oneIn(6)) return kSpecial[random.between<size_t>(0, std::size(kSpecial) - 1)];
  // A little beyond the range at both ends.
  return static_cast<Orb32f>(random.any<Orb32s>() * (1.05 / 2147483648.0));
}

void expectJoined(const TestBuild& build, Join join, Format format) {
  const auto code = [&](Orb32f sample) { return codeOf(build, join, format, sample); };
  EXPECT_EQ(code(1), format.largest());
  EXPECT_EQ(code(-1), format.smallest());
  EXPECT_EQ(code(1.5f), format.largest());
  EXPECT_EQ(code(-1.5f), format.smallest());
  EXPECT_EQ(code(std::numeric_limits<Orb32f>::infinity()), format.largest());
  EXPECT_EQ(code(-std::numeric_limits<Orb32f>::infinity()), format.smallest());
  EXPECT_EQ(code(0), 0);  // of a half, to even
  EXPECT_EQ(code(std::numeric_limits<Orb32f>::quiet_NaN()), 0);

  Random random("joined");
  for (int round = 0; round < 200; ++round) {
    const int channels = random.between(1, 7), length = random.between(1, 60);
    Channels<Orb32f> apart(channels, length, random);
    apart.fill([&] { return anyFloat(random); });
    Plane<Orb8u> together(format.bytes * channels * length, 1, Placement::any(random));
    ASSERT_EQ(join(build, apart.pointers().data(), channels, length, together.data()), orbStsNoErr);
    for (int i = 0; i < channels * length; ++i) {
      const Orb32f sample = apart.planes[i % channels].at(i / channels);
      ASSERT_EQ(codeAt(together, format, i), codeByModel(format, sample)) << sample;
    }
    together.expectOutsideUntouched();
  }
}

void expectSplit(const TestBuild& build, Split split, Format format) {
  Random random("split");
  for (int round = 0; round < 200; ++round) {
    const int channels = random.between(1, 7), length = random.between(1, 60);
    Channels<Orb32f> apart(channels, length, random);
    Plane<Orb8u> together(format.bytes * channels * length, 1, Placement::any(random));
    for (int i = 0; i < channels * length; ++i) {
      setCode(together, format, i, random.any<Orb32s>() >> (32 - 8 * format.bytes));
    }
    setCode(together, format, 0, round % 2 == 0 ? format.smallest() : format.largest());
    ASSERT_EQ(split(build, together.data(), apart.pointers().data(), channels, length),
              orbStsNoErr);
    EXPECT_EQ(apart.planes[0].at(0), round % 2 == 0 ? -1 : 1);
    for (int i = 0; i < channels * length; ++i) {
      const double expected = codeAt(together, format, i) * format.step + format.half;
      ASSERT_EQ(apart.planes[i % channels].at(i / channels), static_cast<Orb32f>(expected));
    }
    for (const Plane<Orb32f>& plane : apart.planes) plane.expectOutsideUntouched();
  }
}

// Every integer of 16 bits comes back, and those of 24 that a float tells apart.
void expectThereAndBack(const TestBuild& build, Split split, Join join, Format format, int stride) {
  std::vector<int> codes;
  for (int code = format.smallest(); code <= format.largest(); code += stride) {
    codes.push_back(code);
  }
  const int length = static_cast<int>(codes.size());
  Plane<Orb8u> bytes(format.bytes * length, 1), again(format.bytes * length, 1);
  for (int i = 0; i < length; ++i) setCode(bytes, format, i, codes[i]);
  std::vector<Orb32f> samples(codes.size());
  Orb32f* const channel = samples.data();
  ASSERT_EQ(split(build, bytes.data(), &channel, 1, length), orbStsNoErr);
  ASSERT_EQ(join(build, &channel, 1, length, again.data()), orbStsNoErr);
  for (int i = 0; i < length; ++i) {
    ASSERT_EQ(codeAt(again, format, i), codes[i]);
  }
}

struct ScaledCall {
  bool hasArray = true;
  bool hasInterleaved = true;
  int nullChannel = -1;
  Orb32s channels = 3;
  Orb32s len = 4;
};
template <class Call>
void expectScaledChecks(Call call) {
  Random random("checks");
  Channels<Orb32f> apart(3, 4, random);
  Plane<Orb8u> together(36, 1);
  expectChecks<ScaledCall>({{orbStsNullPtrErr, [](ScaledCall& c) { c.hasInterleaved = false; }},
                            {orbStsSizeErr, [](ScaledCall& c) { c.channels = 0; }},
                            {orbStsSizeErr, [](ScaledCall& c) { c.len = 0; }},
                            {orbStsSizeErr, [](ScaledCall& c) { c.channels = INT32_MIN; }},
                            {orbStsSizeErr, [](ScaledCall& c) { c.len = -1; }},
                            {orbStsNullPtrErr, [](ScaledCall& c) { c.hasArray = false; }},
                            {orbStsNullPtrErr, [](ScaledCall& c) { c.nullChannel = 0; }},
                            {orbStsNullPtrErr, [](ScaledCall& c) { c.nullChannel = 2; }}},
                           {}, [&](const ScaledCall& c) {
                             std::vector<Orb32f*> pointers = apart.pointers();
                             if (c.nullChannel >= 0) pointers[c.nullChannel] = nullptr;
                             return call(c.hasArray ? pointers.data() : nullptr, c.channels, c.len,
                                         c.hasInterleaved ? together.data() : nullptr);
                           });
  for (const Plane<Orb32f>& plane : apart.planes) plane.expectUntouched();
  together.expectUntouched();
}
void expectJoinChecks(const TestBuild& build, Join join) {
  expectScaledChecks([&](Orb32f* const* apart, Orb32s channels, Orb32s len, Orb8u* together) {
    return join(build, apart, channels, len, together);
  });
}
void expectSplitChecks(const TestBuild& build, Split split) {
  expectScaledChecks([&](Orb32f* const* apart, Orb32s channels, Orb32s len, Orb8u* together) {
    return split(build, together, apart, channels, len);
  });
}

ORB_MEANING(orbsJoinScaled_32f16s_D2L, ScalesAndRounds) {
  expectJoined(build, join16, k16);
  expectJoinChecks(build, join16);
}
ORB_MEANING(orbsJoinScaled_32f24s_D2L, ScalesAndRounds) {
  expectJoined(build, join24, k24);
  expectJoinChecks(build, join24);
}
ORB_MEANING(orbsSplitScaled_16s32f_D2L, Scales) {
  expectSplit(build, split16, k16);
  expectSplitChecks(build, split16);
  expectThereAndBack(build, split16, join16, k16, 1);
}
ORB_MEANING(orbsSplitScaled_24s32f_D2L, Scales) {
  expectSplit(build, split24, k24);
  expectSplitChecks(build, split24);
  expectThereAndBack(build, split24, join24, k24, 129);
}

// ---- Every build

const TestBuild kReference = {orb::kPx, "px"};

template <class T, class Call>
void expectSameMoved(Random& random, bool join, Call mine, Call reference) {
  for (int round = 0; round < 150; ++round) {
    const int channels = random.between(1, 5), length = random.between(1, 300);
    const Placement place = Placement::any(random);
    Channels<T> apart(channels, length, random);
    Channels<T> apartToo(channels, length, random);
    Plane<T> together(channels * length, 1, place), togetherToo(channels * length, 1, place);
    apart.fill([&] { return anySample<T>(random); });
    if (join) {
      mine(apart.pointers().data(), channels, length, together.data());
      reference(apart.pointers().data(), channels, length, togetherToo.data());
      ASSERT_TRUE(together.sameBytes(togetherToo));
      continue;
    }
    together.fill([&] { return anySample<T>(random); });
    mine(apart.pointers().data(), channels, length, together.data());
    reference(apartToo.pointers().data(), channels, length, together.data());
    for (int c = 0; c < channels; ++c) {
      ASSERT_EQ(apart.planes[c].samples(), apartToo.planes[c].samples());
      apart.planes[c].expectOutsideUntouched();
    }
  }
}

ORB_AGREEMENT(orbsInterleave_16s) {
  expectSameMoved<Orb16s>(random, true, interleave16(ORB(orbsInterleave_16s)),
                          interleave16(PX(orbsInterleave_16s)));
}
ORB_AGREEMENT(orbsInterleave_32f) {
  expectSameMoved<Orb32f>(random, true, ORB(orbsInterleave_32f), PX(orbsInterleave_32f));
}
ORB_AGREEMENT(orbsDeinterleave_16s) {
  expectSameMoved<Orb16s>(random, false, deinterleave16(ORB(orbsDeinterleave_16s)),
                          deinterleave16(PX(orbsDeinterleave_16s)));
}

void expectSameJoined(const TestBuild& build, Random& random, Join join, Format format) {
  for (int round = 0; round < 150; ++round) {
    const int channels = random.between(1, 5), length = random.between(1, 300);
    const Placement place = Placement::any(random);
    Channels<Orb32f> apart(channels, length, random);
    apart.fill([&] { return anyFloat(random); });
    Plane<Orb8u> mine(format.bytes * channels * length, 1, place);
    Plane<Orb8u> reference(format.bytes * channels * length, 1, place);
    join(build, apart.pointers().data(), channels, length, mine.data());
    join(kReference, apart.pointers().data(), channels, length, reference.data());
    ASSERT_TRUE(mine.sameBytes(reference));
  }
}
void expectSameSplit(const TestBuild& build, Random& random, Split split, Format format) {
  for (int round = 0; round < 150; ++round) {
    const int channels = random.between(1, 5), length = random.between(1, 300);
    Plane<Orb8u> together(format.bytes * channels * length, 1, Placement::any(random));
    together.fillAny(random);
    Channels<Orb32f> mine(channels, length, random), reference(channels, length, random);
    split(build, together.data(), mine.pointers().data(), channels, length);
    split(kReference, together.data(), reference.pointers().data(), channels, length);
    for (int c = 0; c < channels; ++c) {
      ASSERT_EQ(mine.planes[c].samples(), reference.planes[c].samples());
    }
  }
}

ORB_AGREEMENT(orbsJoinScaled_32f16s_D2L) {
  expectSameJoined(build, random, join16, k16);
}
ORB_AGREEMENT(orbsJoinScaled_32f24s_D2L) {
  expectSameJoined(build, random, join24, k24);
}
ORB_AGREEMENT(orbsSplitScaled_16s32f_D2L) {
  expectSameSplit(build, random, split16, k16);
}
ORB_AGREEMENT(orbsSplitScaled_24s32f_D2L) {
  expectSameSplit(build, random, split24, k24);
}

}  // namespace
