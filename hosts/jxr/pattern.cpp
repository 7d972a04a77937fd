#include "hosts/jxr/pattern.h"

#include <algorithm>

namespace orbhost::jxr {

namespace {

constexpr int kQuarters = 4;

int onesOf(uint32_t set) {
  int ones = 0;
  for (; set != 0; set &= set - 1) ++ones;
  return ones;
}

// ---- Sets of four

uint32_t readPair(BitReader& from) {
  switch (from.take(2)) {
    case 0:
      return 3;
    case 1:
      return 5;
    case 2:
      return from.flag() ? 9 : 6;
    default:
      return from.flag() ? 12 : 10;
  }
}

void writePair(uint32_t set, BitWriter& to) {
  switch (set) {
    case 3:
      return to.put(0, 2);
    case 5:
      return to.put(1, 2);
    case 6:
    case 9:
      return to.put(set == 9 ? 5 : 4, 3);
    default:
      return to.put(set == 12 ? 7 : 6, 3);
  }
}

int bitOf(uint32_t single) {
  int bit = 0;
  while (single >> bit != 1) ++bit;
  return bit;
}

// A set whose size is known.
uint32_t readSet(int size, BitReader& from) {
  switch (size) {
    case 0:
      return 0;
    case 1:
      return 1u << from.take(2);
    case 2:
      return readPair(from);
    case 3:
      return 15 - (1u << from.take(2));
    default:
      return 15;
  }
}

void writeSet(uint32_t set, BitWriter& to) {
  const int size = onesOf(set);
  if (size == 1) to.put(static_cast<uint32_t>(bitOf(set)), 2);
  if (size == 2) writePair(set, to);
  if (size == 3) to.put(static_cast<uint32_t>(bitOf(15 - set)), 2);
}

// ---- Luma of a quarter

// Kinds of sets, and the sets of each.
constexpr int kKinds = 6;
struct Kind {
  uint8_t sets[4];
  int bits;  // that choose one
};
constexpr Kind kLumaKinds[kKinds] = {{{0}, 0},           {{1, 2, 4, 8}, 2},    {{3, 12}, 1},
                                     {{5, 6, 9, 10}, 2}, {{7, 11, 13, 14}, 2}, {{15}, 0}};

struct Choice {
  int kind;
  uint32_t index;
};
Choice choiceOf(uint32_t set) {
  for (int kind = 0;; ++kind) {
    for (uint32_t i = 0; i < 1u << kLumaKinds[kind].bits; ++i) {
      if (kLumaKinds[kind].sets[i] == set) return {kind, i};
    }
  }
}

// ---- Chroma of a quarter

// The quarter's blocks within the pattern of a channel of 8 blocks: this one and the next but one.
constexpr int kShift422[kQuarters] = {0, 1, 4, 5};

uint32_t quarterOf(ColourFormat format, int channel, uint32_t pattern, int quarter) {
  if (isHalvedDown(format, channel)) return pattern >> quarter & 1;
  if (isHalvedAcross(format, channel)) return pattern >> kShift422[quarter] & 5;
  return pattern >> 4 * quarter & 15;
}

uint32_t readChroma(ColourFormat format, int quarter, BitReader& from) {
  if (format == ColourFormat::k420) return 1u << quarter;
  if (format == ColourFormat::k422) {
    return (from.flag() ? 1u : from.flag() ? 4u : 5u) << kShift422[quarter];
  }
  return readSet(kChromaCountCode.read(from) + 1, from) << 4 * quarter;
}

void writeChroma(ColourFormat format, uint32_t set, BitWriter& to) {
  if (format == ColourFormat::k420) return;
  if (format == ColourFormat::k422) {
    if (set == 1) return to.put(1, 1);
    return to.put(set == 4 ? 1 : 0, 2);
  }
  kChromaCountCode.write(onesOf(set) - 1, to);
  writeSet(set, to);
}

// ---- A quarter

// With chroma there are 9 symbols: the last one stands for the kinds from 3 on.
constexpr int kSymbolsWithoutChroma = 5;
constexpr int kLastSymbol = 8;
constexpr int kLastKind = kLastSymbol - kSymbolsWithoutChroma;

void readQuarter(ColourFormat format, int first, int quarter, Models& models, BitReader& from,
                 uint32_t (&sets)[kMostChannels]) {
  const int symbol = models.patternCode.read(from);
  int kind = symbol + 1;
  bool present[2] = {false, false};
  if (symbol >= kSymbolsWithoutChroma) {
    kind = symbol - kSymbolsWithoutChroma;
    present[0] = from.flag();
    present[1] = !present[0];
    if (!present[0]) present[0] = !from.flag();
    if (kind == kLastKind && !from.flag()) kind += from.flag() ? 1 : 2;
  }
  const Kind& luma = kLumaKinds[kind];
  sets[first] |= static_cast<uint32_t>(luma.sets[from.take(luma.bits)]) << 4 * quarter;
  for (const int c : {1, 2}) {
    if (present[c - 1]) sets[c] |= readChroma(format, quarter, from);
  }
}

void writeQuarter(ColourFormat format, uint32_t luma, const uint32_t (&chroma)[2], Models& models,
                  BitWriter& to) {
  const Choice choice = choiceOf(luma);
  if (chroma[0] == 0 && chroma[1] == 0) {
    models.patternCode.write(choice.kind - 1, to);
  } else {
    models.patternCode.write(std::min(choice.kind + kSymbolsWithoutChroma, kLastSymbol), to);
    if (chroma[1] == 0) {
      to.put(1, 1);
    } else {
      to.put(chroma[0] == 0 ? 1 : 0, 2);
    }
    if (choice.kind == kLastKind) to.put(1, 1);
    if (choice.kind > kLastKind) to.put(choice.kind == kLastKind + 1 ? 1 : 0, 2);
  }
  to.put(choice.index, kLumaKinds[choice.kind].bits);
  for (const uint32_t set : chroma) {
    if (set != 0) writeChroma(format, set, to);
  }
}

// ---- Differences of a whole macroblock

void readDifferences(ColourFormat format, int channels, Models& models, BitReader& from,
                     uint32_t (&sets)[kMostChannels]) {
  for (int c = 0; c < (hasChroma(format) ? 1 : channels); ++c) {
    const uint32_t quarters = readSet(models.quartersCode.read(from), from);
    for (int quarter = 0; quarter < kQuarters; ++quarter) {
      if (quarters >> quarter & 1) readQuarter(format, c, quarter, models, from, sets);
    }
  }
}

void writeDifferences(ColourFormat format, int channels, Models& models,
                      const uint32_t (&sets)[kMostChannels], BitWriter& to) {
  for (int c = 0; c < (hasChroma(format) ? 1 : channels); ++c) {
    const auto lumaOf = [&](int quarter) { return sets[c] >> 4 * quarter & 15; };
    const auto chromaOf = [&](int channel, int quarter) {
      return hasChroma(format) ? quarterOf(format, channel, sets[channel], quarter) : 0;
    };
    uint32_t quarters = 0;
    for (int quarter = 0; quarter < kQuarters; ++quarter) {
      if (lumaOf(quarter) != 0 || chromaOf(1, quarter) != 0 || chromaOf(2, quarter) != 0) {
        quarters |= 1u << quarter;
      }
    }
    models.quartersCode.write(onesOf(quarters), to);
    writeSet(quarters, to);
    for (int quarter = 0; quarter < kQuarters; ++quarter) {
      if ((quarters >> quarter & 1) == 0) continue;
      const uint32_t chroma[2] = {chromaOf(1, quarter), chromaOf(2, quarter)};
      writeQuarter(format, lumaOf(quarter), chroma, models, to);
    }
  }
}

// ---- Prediction

// Blocks, and how far those are away that go on from them.
struct Step {
  uint32_t mask;
  int shift;
};
struct Prediction {
  int blocks;
  int leftBit;  // of the neighbour's pattern, which the first block goes on from
  int topBit;
  Step steps[6];
  int stepCount;
};
constexpr Prediction kPredictions[] = {
    {16, 5, 10, {{1, 1}, {2, 3}, {0x10, 1}, {0x33, 2}, {0xCC, 6}, {0x3300, 2}}, 6},
    {8, 1, 6, {{1, 1}, {3, 2}, {0xC, 2}, {0x30, 2}}, 4},
    {4, 1, 2, {{1, 1}, {3, 2}}, 2},
};

const Prediction& predictionOf(int blocks) {
  return kPredictions[blocks == 16 ? 0 : blocks == 8 ? 1 : 2];
}

uint32_t firstBit(const Prediction& prediction, const Neighbours& neighbours, int channel) {
  if (neighbours.left != nullptr) {
    return neighbours.left->pattern[channel] >> prediction.leftBit & 1;
  }
  if (neighbours.top != nullptr) return neighbours.top->pattern[channel] >> prediction.topBit & 1;
  return 1;
}

uint32_t patternFrom(uint32_t difference, PatternMode mode, const Prediction& prediction,
                     uint32_t first) {
  if (mode == PatternMode::kAsItIs) return difference;
  if (mode == PatternMode::kInverted) return difference ^ ((1u << prediction.blocks) - 1);
  uint32_t pattern = difference ^ first;
  for (int i = 0; i < prediction.stepCount; ++i) {
    const Step& step = prediction.steps[i];
    pattern ^= (pattern & step.mask) << step.shift;
  }
  return pattern;
}

uint32_t differenceFrom(uint32_t pattern, PatternMode mode, const Prediction& prediction,
                        uint32_t first) {
  if (mode != PatternMode::kFromNeighbours) {
    return patternFrom(pattern, mode, prediction, first);  // its own inverse
  }
  for (int i = prediction.stepCount - 1; i >= 0; --i) {
    const Step& step = prediction.steps[i];
    pattern ^= (pattern & step.mask) << step.shift;
  }
  return pattern ^ first;
}

}  // namespace

void readPatterns(ColourFormat format, int channels, const Neighbours& neighbours, Models& models,
                  BitReader& from, Macroblock& block) {
  uint32_t sets[kMostChannels] = {};
  readDifferences(format, channels, models, from, sets);
  for (int c = 0; c < channels; ++c) {
    const Prediction& prediction = predictionOf(blocksOf(format, c));
    PatternModel& model = models.pattern[classOf(c)];
    block.pattern[c] = static_cast<uint16_t>(
        patternFrom(sets[c], model.mode(), prediction, firstBit(prediction, neighbours, c)));
    model.update(block.pattern[c], prediction.blocks);
  }
}

void writePatterns(ColourFormat format, int channels, const Neighbours& neighbours, Models& models,
                   const Macroblock& block, BitWriter& to) {
  uint32_t sets[kMostChannels] = {};
  for (int c = 0; c < channels; ++c) {
    const Prediction& prediction = predictionOf(blocksOf(format, c));
    PatternModel& model = models.pattern[classOf(c)];
    sets[c] = differenceFrom(block.pattern[c], model.mode(), prediction,
                             firstBit(prediction, neighbours, c));
    model.update(block.pattern[c], prediction.blocks);
  }
  writeDifferences(format, channels, models, sets, to);
}

}  // namespace orbhost::jxr
