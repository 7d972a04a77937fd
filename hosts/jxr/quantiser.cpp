#include "hosts/jxr/quantiser.h"

#include <algorithm>

#include "hosts/jxr/damage.h"

namespace orbhost::jxr {

namespace {

enum ChannelMode { kOneForAll = 0, kLumaAndOthers = 1, kEach = 2 };

int numberBitsFor(size_t count) {
  return count > 9 ? 4 : count > 5 ? 3 : count > 3 ? 2 : count > 1 ? 1 : 0;
}

}  // namespace

Quantiser readQuantiser(int channels, BitReader& from) {
  const uint32_t mode = channels > 1 ? from.take(2) : static_cast<uint32_t>(kOneForAll);
  Quantiser quantiser{};
  for (int c = 0; c < channels; ++c) {
    const bool repeats = c > 0 && (mode == kOneForAll || (mode == kLumaAndOthers && c > 1));
    quantiser[c] = repeats ? quantiser[c - 1] : static_cast<uint8_t>(from.take(8));
  }
  return quantiser;
}

void writeQuantiser(const Quantiser& quantiser, int channels, BitWriter& to) {
  const auto allEqualFrom = [&](int first) {
    return std::all_of(quantiser.begin() + first, quantiser.begin() + channels,
                       [&](uint8_t index) { return index == quantiser[first]; });
  };
  const ChannelMode mode = allEqualFrom(0) ? kOneForAll : allEqualFrom(1) ? kLumaAndOthers : kEach;
  if (channels > 1) to.put(mode, 2);
  const int count = mode == kOneForAll ? 1 : mode == kLumaAndOthers ? 2 : channels;
  for (int c = 0; c < count; ++c) to.put(quantiser[c], 8);
}

int32_t stepOf(int index, Band band, int channel, bool scaled) {
  if (index == 0) return 1;
  const int mantissa = 16 + index % 16;
  if (scaled) {
    const int shift = channel == kLuma || band == kHighPass ? 1 : 0;
    return index < 16 ? index << shift : mantissa << ((index >> 4) - 1 + shift);
  }
  if (index < 32) return (index + 3) >> 2;
  if (index < 48) return (mantissa + 1) >> 1;
  return mantissa << ((index >> 4) - 3);
}

QuantiserSet readQuantiserSet(int channels, BitReader& from) {
  QuantiserSet set;
  set.all.resize(from.take(4) + 1);
  for (Quantiser& one : set.all) one = readQuantiser(channels, from);
  set.numberBits = numberBitsFor(set.all.size());
  return set;
}

int readQuantiserNumber(const QuantiserSet& set, BitReader& from) {
  if (set.numberBits == 0 || !from.flag()) return 0;
  const uint32_t number = from.take(set.numberBits) + 1;
  if (number >= set.all.size()) failDamaged();
  return static_cast<int>(number);
}

}  // namespace orbhost::jxr
