#include "hosts/jxr/plane_writer.h"

#include <algorithm>
#include <array>

#include "hosts/jxr/pattern.h"
#include "orb90legacy.h"

namespace orbhost::jxr {

namespace {

constexpr int kStep = kMacroblock;  // from row to row of a macroblock's levels
using Levels = std::array<int32_t, kMacroblock * kMacroblock>;

uint32_t magnitudeOf(int32_t value) {
  const uint32_t bits = static_cast<uint32_t>(value);
  return value < 0 ? 0 - bits : bits;
}

// A level of the DC band, from 1 on.
void writeLevel(uint32_t level, AdaptiveCode& code, BitWriter& to) {
  // Symbols from 2 on begin with these levels.
  constexpr uint32_t kBases[] = {3, 5, 9, 13, 17};
  if (level < kBases[0]) return code.write(static_cast<int>(level) - 1, to);
  int symbol = 2;
  while (symbol < 6 && level >= kBases[symbol - 1]) ++symbol;
  code.write(symbol, to);
  if (symbol < 6) return to.put(level - kBases[symbol - 2], symbol == 2 ? 1 : 2);
  const uint32_t rest = level - 1;
  int bits = 4;
  while (rest >> (bits + 1) != 0) ++bits;
  to.put(static_cast<uint32_t>(std::min(bits - 4, 15)), 4);
  if (bits >= 19) to.put(static_cast<uint32_t>(std::min(bits - 19, 3)), 2);
  if (bits >= 22) to.put(static_cast<uint32_t>(bits - 22), 3);
  to.put(rest, bits);
}

// The lowest bits of a coefficient, and its sign if its level does not tell it.
void writeRefinement(int32_t value, int bits, BitWriter& to) {
  const uint32_t magnitude = magnitudeOf(value);
  to.put(magnitude, bits);
  if (magnitude != 0 && magnitude >> bits == 0) to.put(value < 0, 1);
}

}  // namespace

PlaneWriter::PlaneWriter(const PlaneHeader& header, const Tile& tile,
                         const std::vector<Plane>& planes, Macroblocks& macroblocks)
    : header_(header),
      tile_(tile),
      planes_(planes),
      macroblocks_(macroblocks),
      models_(header.format) {}

void PlaneWriter::write(int x, int y, const TileOutput& output) {
  const Position position(tile_, x);
  const Neighbours neighbours = macroblocks_.around(tile_, x, y);
  Macroblock& block = macroblocks_.at(tile_.left + x, tile_.top + y);
  Macroblock coded = block;
  subtractPrediction(header_.format, header_.channels, neighbours, coded);
  writeDc(coded, *output.to[kDc]);
  if (output.to[kLowPass] == nullptr) {
    if (position.adapts) models_.adaptDc();
    return;
  }
  if (position.resets) models_.resetScan(kScanLowPass);
  writeLowPass(coded, *output.to[kLowPass]);
  if (position.adapts) models_.adaptLowPass();
  if (output.to[kHighPass] == nullptr) return;
  if (position.resets) {
    models_.resetScan(kScanVertical);
    models_.resetScan(kScanHorizontal);
  }
  writeHighPass(x, y, neighbours, output, block);
  if (position.adapts) models_.adaptHighPass();
}

void PlaneWriter::writeDc(const Macroblock& block, BitWriter& to) {
  const bool together = hasChroma(header_.format);
  const auto levelOf = [&](int c) {
    return magnitudeOf(block.levels[c][0]) >> models_.dcBits.bits(c);
  };
  if (together) {
    int pattern = 0;
    for (int c = 0; c < header_.channels; ++c) pattern = 2 * pattern + (levelOf(c) != 0 ? 1 : 0);
    kSignificanceCode.write(pattern, to);
  }
  int counts[2] = {0, 0};
  for (int c = 0; c < header_.channels; ++c) {
    const uint32_t level = levelOf(c);
    if (!together) to.put(level != 0, 1);
    if (level != 0) {
      writeLevel(level, models_.levelCode[together ? classOf(c) : 0], to);
      ++counts[classOf(c)];
    }
    const int32_t value = block.levels[c][0];
    to.put(magnitudeOf(value), models_.dcBits.bits(c));
    if (value != 0) to.put(value < 0, 1);
  }
  models_.dcBits.update(header_.format, header_.channels, counts);
}

void PlaneWriter::writeLowPass(const Macroblock& block, BitWriter& to) {
  const int units = lowPassUnits(header_.format, header_.channels);
  const uint32_t full = (1u << units) - 1;
  const auto eachCoefficient = [&](int unit, auto one) {
    const bool isPair = isHalvedAcross(header_.format, unit);
    for (int number = 1; number < lowPassNumbers(header_.format, unit); ++number) {
      for (int c = unit; c <= unit + (isPair ? 1 : 0); ++c) one(block.levels[c][number]);
    }
  };
  uint32_t pattern = 0;
  for (int unit = 0; unit < units; ++unit) {
    const int bits = models_.lowPassBits.bits(unit);
    eachCoefficient(unit, [&](int32_t value) {
      if (magnitudeOf(value) >> bits != 0) pattern |= 1u << unit;
    });
  }
  if (!hasChroma(header_.format)) {
    for (int unit = 0; unit < units; ++unit) to.put(pattern >> unit, 1);
  } else {
    LowPassPatternModel& model = models_.lowPassPattern;
    if (model.none <= 0 || model.all < 0) {
      const uint32_t value = model.all < model.none ? full - pattern : pattern;
      to.put(value != 0, 1);
      if (value != 0) to.put(value >> 1, units - 1);
      if (value > 1) to.put(value, 1);
    } else {
      to.put(pattern, units);
    }
    model.update(pattern, full);
  }
  int counts[2] = {0, 0};
  for (int unit = 0; unit < units; ++unit) {
    if (pattern >> unit & 1) counts[classOf(unit)] += writeLowPassUnit(unit, block, to);
    const int bits = models_.lowPassBits.bits(unit);
    if (bits == 0) continue;
    eachCoefficient(unit, [&](int32_t value) { writeRefinement(value, bits, to); });
  }
  models_.lowPassBits.update(header_.format, header_.channels, counts);
}

int PlaneWriter::writeLowPassUnit(int unit, const Macroblock& block, BitWriter& to) {
  OrbiVLCState_JPEGXR* const state = models_.coders.get();
  const int bits = models_.lowPassBits.bits(unit);
  Orb32s pairs[2 * 15];
  int count = 0;
  if (!isHalvedAcross(header_.format, unit)) {
    Orb32s residual[16];
    legacy90orbiVLCScan4x4DC_JPEGXR_32s(block.levels[unit], static_cast<unsigned>(bits), residual,
                                        pairs, &count, state);
    to.encode([&](auto... writer) {
      legacy90orbiVLCEncodeDC444_JPEGXR_32s1u(pairs, count, classOf(unit), writer..., state);
    });
    return count;
  }
  const ChromaList& list = chromaListOf(header_.format);
  int run = 0;
  for (int i = 0; i < list.length; ++i) {
    const int32_t value = block.levels[1 + i % 2][list.numbers[i / 2]];
    const int32_t level = static_cast<int32_t>(magnitudeOf(value) >> bits);
    if (level == 0) {
      ++run;
      continue;
    }
    pairs[2 * count] = run;
    pairs[2 * count + 1] = value < 0 ? -level : level;
    ++count;
    run = 0;
  }
  to.encode([&](auto... writer) {
    if (header_.format == ColourFormat::k420) {
      legacy90orbiVLCEncodeDC420_JPEGXR_32s1u(pairs, count, writer..., state);
    } else {
      legacy90orbiVLCEncodeDC422_JPEGXR_32s1u(pairs, count, writer..., state);
    }
  });
  return count;
}

void PlaneWriter::writeHighPass(int x, int y, const Neighbours& neighbours,
                                const TileOutput& output, Macroblock& block) {
  const Direction direction = highPassDirection(header_.format, block);
  Levels levels[kMostChannels];
  for (int c = 0; c < header_.channels; ++c) {
    const int wide = blocksWide(header_.format, c);
    const int high = blocksHigh(header_.format, c);
    const Rows<const int32_t> from =
        planes_[c].rows().from((tile_.left + x) * wide * 4, (tile_.top + y) * high * 4);
    for (int row = 0; row < high * 4; ++row) {
      std::copy_n(&from.at(0, row), wide * 4, &levels[c][row * kStep]);
    }
    subtractHighPass(direction, wide, high, {levels[c].data(), kStep});
    const int bits = models_.highPassBits.bits(c);
    block.pattern[c] = 0;
    for (int i = 0; i < blocksOf(header_.format, c); ++i) {
      const BlockPlace place = placeOf(header_.format, c, i);
      int32_t* const first = &levels[c][4 * place.y * kStep + 4 * place.x];
      *first = 0;  // the DC is not of this band
      uint32_t bitsOfAll = 0;
      for (int k = 0; k < 16; ++k) bitsOfAll |= magnitudeOf(first[k / 4 * kStep + k % 4]);
      const bool isCoded = bitsOfAll >> bits != 0;
      block.pattern[c] = static_cast<uint16_t>(block.pattern[c] | isCoded << i);
    }
  }
  writePatterns(header_.format, header_.channels, neighbours, models_, block,
                *output.to[kHighPass]);
  legacy90orbiVLCScanSet_JPEGXR(models_.coders.get(),
                                direction == Direction::kTop ? kScanVertical : kScanHorizontal);
  int counts[2] = {0, 0};
  for (int c = 0; c < header_.channels; ++c) {
    for (int i = 0; i < blocksOf(header_.format, c); ++i) {
      const BlockPlace place = placeOf(header_.format, c, i);
      counts[classOf(c)] += writeBlock(c, (block.pattern[c] >> i & 1) != 0,
                                       &levels[c][4 * place.y * kStep + 4 * place.x], output);
    }
  }
  models_.highPassBits.update(header_.format, header_.channels, counts);
}

// Returns how many coefficients the run-level code had.
int PlaneWriter::writeBlock(int channel, bool isCoded, const int32_t* levels,
                            const TileOutput& output) {
  OrbiVLCState_JPEGXR* const state = models_.coders.get();
  const unsigned bits = static_cast<unsigned>(models_.highPassBits.bits(channel));
  const unsigned trim = std::min(bits, static_cast<unsigned>(output.trim));
  const bool hasFlexbits = output.to[kFlexbits] != nullptr && bits > trim;
  constexpr int kStepBytes = kStep * static_cast<int>(sizeof(int32_t));
  Orb32s residual[16] = {};
  int count = 0;
  if (isCoded) {
    output.to[kHighPass]->encode([&](auto... writer) {
      if (hasFlexbits) {
        legacy90orbiVLCEncode4x4Flex_JPEGXR_32s1u_C1R(levels, kStepBytes, classOf(channel), bits,
                                                      trim, residual, writer..., &count, state);
      } else {
        legacy90orbiVLCEncode4x4_JPEGXR_32s1u_C1R(levels, kStepBytes, classOf(channel), bits,
                                                  writer..., &count, state);
      }
    });
  }
  if (hasFlexbits) {
    output.to[kFlexbits]->encode([&](auto... writer) {
      legacy90orbiFLCEncode4x4_JPEGXR_32s1u_C1R(levels, kStepBytes, residual, writer...,
                                                bits - trim, trim, isCoded ? 1 : 0);
    });
  }
  return count;
}

}  // namespace orbhost::jxr
