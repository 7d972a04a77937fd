// What a host of the code-block coders does: it makes blocks, codes them in pieces, and decodes
// them from memory that ends where the segments end.
#ifndef ORB_TESTS_JPEG2K_CODEBLOCK_HOST_H
#define ORB_TESTS_JPEG2K_CODEBLOCK_HOST_H

#include <functional>
#include <vector>

#include "tests/jpeg2k/codeblock_model.h"
#include "tests/support/builds.h"
#include "tests/support/guarded.h"
#include "tests/support/plane.h"

namespace orbtest {
inline namespace jpeg2k {

using Bytes = std::vector<uint8_t>;

// ---- Blocks

// Magnitudes of up to `bits` bits, `percent` of them not 0.
inline BlockSamples randomSamples(Random& random, int width, int height, int bits, int percent) {
  BlockSamples samples = {width, height, {}};
  for (int i = 0; i < width * height; ++i) {
    uint32_t magnitude = 0;
    if (bits > 0 && random.between(1, 100) <= percent) {
      // Of any number of bits, so that all planes have samples that become significant.
      magnitude = random.any<Orb32u>() >> (32 - random.between(1, bits));
    }
    const uint32_t sign = random.oneIn(2) ? 0x80000000u : 0;
    samples.values.push_back(static_cast<Orb32s>(sign | magnitude));
  }
  return samples;
}

// Small blocks as a rule, now and then larger ones; of any depth; empty, sparse, dense; some of
// them with all ones in their lower bits, for bytes of 255 in raw segments.
inline BlockSamples anySamples(Random& random) {
  const int most = random.oneIn(8) ? 40 : 9;
  const int width = random.between(1, most), height = random.between(1, most);
  const int bits = random.between(0, 31), percent = random.between(0, 100);
  BlockSamples samples = randomSamples(random, width, height, bits, percent);
  const int ones = random.oneIn(4) ? random.between(0, bits) : 0;
  for (Orb32s& sample : samples.values) {
    if (ones > 0)
      sample = static_cast<Orb32s>(static_cast<uint32_t>(sample) | (~0u >> (32 - ones)));
  }
  return samples;
}

inline BlockStyle anyStyle(Random& random) {
  BlockStyle style;
  style.subband = random.between(0, 3);
  style.magnBits = random.oneIn(2) ? 31 : random.between(1, 31);
  style.termination = random.between(0, 2);
  style.flags = random.between(0, 63);
  return style;
}

// What is left of samples when only `magnBits` of their bits are coded. There is no negative zero.
inline BlockSamples truncated(const BlockSamples& samples, int magnBits) {
  BlockSamples kept = samples;
  for (Orb32s& sample : kept.values) {
    const uint32_t unit = 1u << (31 - magnBits);
    const uint32_t magnitude = static_cast<uint32_t>(sample) % 0x80000000u / unit * unit;
    sample =
        static_cast<Orb32s>(magnitude == 0 || sample >= 0 ? magnitude : magnitude + 0x80000000u);
  }
  return kept;
}

inline Plane<Orb32s> planeOf(const BlockSamples& samples, Placement at = {}) {
  Plane<Orb32s> plane(samples.width, samples.height, at);
  size_t next = 0;
  plane.fill([&] { return samples.values[next++]; });
  return plane;
}

// ---- Encoding

struct EncodedBlock {
  int bitLength = 0, passCount = 0, segmentCount = 0;
  Bytes bytes;
  std::vector<int> rates, segmentLengths;
  std::vector<double> distortions;

  bool operator==(const EncodedBlock& other) const {
    return bitLength == other.bitLength && passCount == other.passCount &&
           segmentCount == other.segmentCount && bytes == other.bytes && rates == other.rates &&
           segmentLengths == other.segmentLengths && distortions == other.distortions;
  }

  std::vector<Bytes> segments() const {
    std::vector<Bytes> cut;
    auto next = bytes.begin();
    for (const int length : segmentLengths) {
      cut.emplace_back(next, next + length);
      next += length;
    }
    return cut;
  }
};

class Encoder {
 public:
  Encoder(const TestBuild& testBuild, OrbiSize maxSize) : build(testBuild) {
    EXPECT_EQ(ORB(orbiEncodeInitAlloc_JPEG2K)(&state_, maxSize), orbStsNoErr);
  }
  Encoder(const Encoder&) = delete;
  Encoder& operator=(const Encoder&) = delete;
  ~Encoder() { EXPECT_EQ(ORB(orbiEncodeFree_JPEG2K)(state_), orbStsNoErr); }

  OrbiEncodeState_JPEG2K* state() { return state_; }

  EncodedBlock load(const BlockSamples& samples, const BlockStyle& style, Placement at = {}) {
    const Plane<Orb32s> src = planeOf(samples, at);
    EncodedBlock block;
    EXPECT_EQ(ORB(orbiEncodeLoadCodeBlock_JPEG2K_32s_C1R)(
                  src.data(), src.step(), src.size(), state_, style.subband, style.magnBits,
                  style.termination, 0, style.flags, &block.bitLength, &block.passCount,
                  &block.segmentCount),
              orbStsNoErr);
    src.expectUntouched();
    return block;
  }

  // Stores into buffers of the lengths that `room` gives, until the block is complete.
  void store(EncodedBlock& block, const std::function<int()>& room) {
    Orb32s isNotFinished = 1;
    while (isNotFinished && !testing::Test::HasFailure()) {
      GuardedBytes dst(static_cast<size_t>(room()));
      Orb32s length = dst.size();
      ASSERT_EQ(ORB(orbiEncodeStoreBits_JPEG2K_1u)(dst.data(), &length, state_, &isNotFinished),
                orbStsNoErr);
      ASSERT_TRUE(length >= 0 && length <= dst.size());
      // A buffer that is not full has been enough.
      ASSERT_TRUE(isNotFinished == 0 || (isNotFinished == 1 && length == dst.size()));
      block.bytes.insert(block.bytes.end(), dst.data(), dst.data() + length);
    }
  }

  void query(EncodedBlock& block) {
    for (int i = 0; i < block.passCount; ++i) {
      Orb32s rate = -1;
      Orb64f distortion = -1;
      EXPECT_EQ(ORB(orbiEncodeGetRate_JPEG2K)(state_, i, &rate), orbStsNoErr);
      EXPECT_EQ(ORB(orbiEncodeGetDist_JPEG2K)(state_, i, &distortion), orbStsNoErr);
      block.rates.push_back(rate);
      block.distortions.push_back(distortion);
    }
    for (int i = 0; i < block.segmentCount; ++i) {
      Orb32s length = -1;
      EXPECT_EQ(ORB(orbiEncodeGetTermPassLen_JPEG2K)(state_, i, &length), orbStsNoErr);
      block.segmentLengths.push_back(length);
    }
  }

  EncodedBlock encode(const BlockSamples& samples, const BlockStyle& style,
                      const std::function<int()>& room, Placement at = {}) {
    EncodedBlock block = load(samples, style, at);
    store(block, room);
    query(block);
    return block;
  }

 private:
  const TestBuild& build;
  OrbiEncodeState_JPEG2K* state_ = nullptr;
};

// A block in a state of its own, in one call.
inline EncodedBlock encode(const TestBuild& build, const BlockSamples& samples,
                           const BlockStyle& style) {
  Encoder encoder(build, {samples.width, samples.height});
  return encoder.encode(samples, style, [] { return 1 << 20; });
}

// ---- Decoding

struct DecodeArguments {
  int subband = 0;
  int bitPlanes = 0;
  int passCount = 0;
  std::vector<Bytes> segments;
  int style = 0;
};

struct DecodedBlock {
  OrbStatus status;
  std::vector<Orb32s> samples;
  int errorPlane;  // -100 if none was stored
};

// Memory for a decoder of just the size that is asked for, at an odd address, with any contents.
inline Bytes decoderBytes(Random& random, const TestBuild& build, OrbiSize size) {
  Orb32s bytes = 0;
  EXPECT_EQ(ORB(orbiDecodeGetBufSize_JPEG2K)(size, &bytes), orbStsNoErr);
  Bytes memory(static_cast<size_t>(bytes));
  for (uint8_t& byte : memory) byte = random.any<uint8_t>();
  return memory;
}

// Decodes into `dst` with the decoder's memory at `state`.
inline DecodedBlock decodeInto(const TestBuild& build, Plane<Orb32s>& dst, void* state,
                               const DecodeArguments& arguments) {
  Bytes all;
  std::vector<uint8_t> lengths;
  for (const Bytes& segment : arguments.segments) {
    all.insert(all.end(), segment.begin(), segment.end());
    const Orb32s length = static_cast<Orb32s>(segment.size());
    const uint8_t* const first = reinterpret_cast<const uint8_t*>(&length);
    lengths.insert(lengths.end(), first, first + sizeof length);
  }
  const GuardedBytes src(all), segmentLengths(lengths);
  Plane<Orb32s> errorPlane(1, 1, {0, 3});
  errorPlane.set(0, 0, -100);
  const OrbStatus status = ORB(orbiDecodeCodeBlock_JPEG2K_1u32s_C1R)(
      src.data(), dst.data(), dst.step(), dst.size(), arguments.subband, arguments.bitPlanes,
      arguments.passCount, reinterpret_cast<const Orb32s*>(segmentLengths.data()),
      static_cast<int>(arguments.segments.size()), arguments.style, errorPlane.data(), state);
  dst.expectOutsideUntouched();
  errorPlane.expectOutsideUntouched();
  return {status, dst.samples(), errorPlane.at(0)};
}

inline DecodedBlock decode(Random& random, const TestBuild& build, OrbiSize size,
                           const DecodeArguments& arguments) {
  const GuardedBytes state(decoderBytes(random, build, size));
  Plane<Orb32s> dst(size.width, size.height, Placement::any(random));
  return decodeInto(build, dst, const_cast<uint8_t*>(state.data()), arguments);
}

}  // namespace jpeg2k
}  // namespace orbtest

#endif
