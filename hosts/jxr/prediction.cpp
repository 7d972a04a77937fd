#include "hosts/jxr/prediction.h"

#include <cstdlib>

namespace orbhost::jxr {

namespace {

// A level that another one is added to: one of the same macroblock, or of its neighbour.
struct Step {
  int target;
  int source;
  bool isOwn;
};
struct Steps {
  Step step[3];
  int count;
};

constexpr Steps kNone = {{}, 0};
constexpr Steps kTop = {{{4, 4, false}, {8, 8, false}, {12, 12, false}}, 3};
constexpr Steps kLeft = {{{1, 1, false}, {2, 2, false}, {3, 3, false}}, 3};
constexpr Steps kTop420 = {{{2, 2, false}}, 1};
constexpr Steps kLeft420 = {{{1, 1, false}}, 1};
// Two halves, one below the other: the lower one goes on from the upper one.
constexpr Steps kTop422 = {{{4, 4, false}, {2, 6, false}, {6, 2, true}}, 3};
constexpr Steps kTopWithin422 = {{{6, 2, true}}, 1};
constexpr Steps kLeft422 = {{{4, 4, false}, {1, 1, false}, {5, 5, false}}, 3};

bool comparesChroma(ColourFormat format) {
  return hasChroma(format) || format == ColourFormat::kCmyk;
}

// One direction if the other one's difference is more than four times as large.
Direction decide(int64_t across, int64_t down, Direction otherwise) {
  if (4 * across < down) return Direction::kTop;
  if (4 * down < across) return Direction::kLeft;
  return otherwise;
}

Direction dcDirection(ColourFormat format, const Neighbours& neighbours) {
  if (neighbours.left == nullptr) {
    return neighbours.top == nullptr ? Direction::kNone : Direction::kTop;
  }
  if (neighbours.top == nullptr) return Direction::kLeft;
  const auto differenceTo = [&](const Macroblock& other) {
    const auto one = [&](int c) {
      return std::llabs(int64_t{neighbours.topLeft->levels[c][0]} - other.levels[c][0]);
    };
    if (!comparesChroma(format)) return one(kLuma);
    const int weight = format == ColourFormat::k420 ? 8 : format == ColourFormat::k422 ? 4 : 2;
    return one(kLuma) * weight + one(1) + one(2);
  };
  return decide(differenceTo(*neighbours.left), differenceTo(*neighbours.top), Direction::kMean);
}

const Steps& stepsOf(ColourFormat format, int channel, Direction direction, bool isSameNumber) {
  const bool is420 = isHalvedDown(format, channel);
  const bool is422 = isHalvedAcross(format, channel) && !is420;
  if (direction == Direction::kTop && isSameNumber) {
    return is420 ? kTop420 : is422 ? kTop422 : kTop;
  }
  if (direction == Direction::kLeft && isSameNumber) {
    return is420 ? kLeft420 : is422 ? kLeft422 : kLeft;
  }
  return direction == Direction::kTop && is422 ? kTopWithin422 : kNone;
}

// Calls `one` with the levels of each channel, the prediction of its DC, the steps of its low-pass
// levels and the neighbour's levels for these.
template <class One>
void predict(ColourFormat format, int channels, const Neighbours& neighbours, Macroblock& block,
             One one) {
  const Direction direction = dcDirection(format, neighbours);
  const Macroblock* const source = direction == Direction::kTop    ? neighbours.top
                                   : direction == Direction::kLeft ? neighbours.left
                                                                   : nullptr;
  const bool isSameNumber = source != nullptr && source->lowPassNumber == block.lowPassNumber;
  for (int c = 0; c < channels; ++c) {
    int32_t dc = 0;
    if (source != nullptr) {
      dc = source->levels[c][0];
    } else if (direction == Direction::kMean) {
      const int rounding = isHalvedAcross(format, c) ? 1 : 0;
      dc = (neighbours.left->levels[c][0] + neighbours.top->levels[c][0] + rounding) >> 1;
    }
    one(block.levels[c], dc, stepsOf(format, c, direction, isSameNumber),
        source == nullptr ? nullptr : source->levels[c]);
  }
}

// Calls `one` with each coefficient that another one foretells, and that one, block after block.
template <class One>
void eachPair(Direction direction, int x, int y, Rows<int32_t> samples, One one) {
  constexpr int kTopPlaces[3][2] = {{0, 1}, {0, 2}, {1, 3}};
  constexpr int kLeftPlaces[3][2] = {{1, 0}, {2, 0}, {3, 1}};
  const bool isTop = direction == Direction::kTop;
  const Rows<int32_t> block = samples.from(4 * x, 4 * y);
  const Rows<int32_t> before = samples.from(4 * (isTop ? x : x - 1), 4 * (isTop ? y - 1 : y));
  for (const auto& place : isTop ? kTopPlaces : kLeftPlaces) {
    one(block.at(place[0], place[1]), before.at(place[0], place[1]));
  }
}

}  // namespace

void addPrediction(ColourFormat format, int channels, const Neighbours& neighbours,
                   Macroblock& block) {
  predict(format, channels, neighbours, block,
          [](int32_t* levels, int32_t dc, const Steps& steps, const int32_t* source) {
            levels[0] += dc;
            for (int i = 0; i < steps.count; ++i) {
              const Step& step = steps.step[i];
              levels[step.target] += (step.isOwn ? levels : source)[step.source];
            }
          });
}

void subtractPrediction(ColourFormat format, int channels, const Neighbours& neighbours,
                        Macroblock& block) {
  predict(format, channels, neighbours, block,
          [](int32_t* levels, int32_t dc, const Steps& steps, const int32_t* source) {
            levels[0] -= dc;
            for (int i = steps.count - 1; i >= 0; --i) {
              const Step& step = steps.step[i];
              levels[step.target] -= (step.isOwn ? levels : source)[step.source];
            }
          });
}

Direction highPassDirection(ColourFormat format, const Macroblock& block) {
  int64_t across = 0;
  int64_t down = 0;
  const auto add = [&](int64_t& sum, int channel, int number) {
    sum += std::llabs(int64_t{block.levels[channel][number]});
  };
  for (const int number : {1, 2, 3}) {
    add(across, kLuma, number);
    add(down, kLuma, 4 * number);
  }
  if (comparesChroma(format)) {
    for (const int c : {1, 2}) {
      add(across, c, 1);
      if (format == ColourFormat::k420) {
        add(down, c, 2);
      } else if (format == ColourFormat::k422) {
        add(down, c, 2);
        add(down, c, 6);
        add(across, c, 5);
      } else {
        add(down, c, 4);
      }
    }
  }
  return decide(across, down, Direction::kNone);
}

void addHighPass(Direction direction, int blocksWide, int blocksHigh, Rows<int32_t> samples) {
  if (direction == Direction::kNone) return;
  for (int y = direction == Direction::kTop ? 1 : 0; y < blocksHigh; ++y) {
    for (int x = direction == Direction::kLeft ? 1 : 0; x < blocksWide; ++x) {
      eachPair(direction, x, y, samples, [](int32_t& to, int32_t from) { to += from; });
    }
  }
}

void subtractHighPass(Direction direction, int blocksWide, int blocksHigh, Rows<int32_t> samples) {
  if (direction == Direction::kNone) return;
  for (int y = blocksHigh - 1; y >= (direction == Direction::kTop ? 1 : 0); --y) {
    for (int x = blocksWide - 1; x >= (direction == Direction::kLeft ? 1 : 0); --x) {
      eachPair(direction, x, y, samples, [](int32_t& to, int32_t from) { to -= from; });
    }
  }
}

}  // namespace orbhost::jxr
