#include "jpeg2k/tables/contexts.h"

namespace orb {
namespace {

constexpr OrbTable<uint8_t, orbContextCount> start() {
  OrbTable<uint8_t, orbContextCount> entries = {};
  entries[orbUniformContext] = 2 * 46;
  entries[orbRunLengthContext] = 2 * 3;
  entries[orbZeroCodingContext] = 2 * 4;
  return entries;
}

// Table D.1 for LL and LH by the numbers of horizontal, vertical and diagonal neighbours.
constexpr uint32_t zeroCodingLabel(uint32_t h, uint32_t v, uint32_t d) {
  if (h == 2) return 8;
  if (h == 1) return v >= 1 ? 7 : d >= 1 ? 6 : 5;
  if (v >= 1) return v == 2 ? 4 : 3;
  return d >= 2 ? 2 : d;
}

// Table D.1 for HH.
constexpr uint32_t zeroCodingLabelHh(uint32_t hv, uint32_t d) {
  if (d >= 3) return 8;
  if (d == 2) return hv >= 1 ? 7 : 6;
  if (d == 1) return hv >= 2 ? 5 : 3 + hv;
  return hv >= 2 ? 2 : hv;
}

constexpr OrbTable<OrbTable<uint8_t, 512>, 3> zeroCoding() {
  OrbTable<OrbTable<uint8_t, 512>, 3> contexts = {};
  for (uint32_t bits = 0; bits < 512; ++bits) {
    const uint32_t h = (bits >> 3 & 1) + (bits >> 5 & 1);
    const uint32_t v = (bits >> 1 & 1) + (bits >> 7 & 1);
    const uint32_t d = (bits & 1) + (bits >> 2 & 1) + (bits >> 6 & 1) + (bits >> 8 & 1);
    const uint32_t labels[3] = {zeroCodingLabel(h, v, d), zeroCodingLabel(v, h, d),
                                zeroCodingLabelHh(h + v, d)};
    for (uint32_t table = 0; table < 3; ++table) {
      contexts[table][bits] = static_cast<uint8_t>(orbZeroCodingContext + labels[table]);
    }
  }
  return contexts;
}

// What a pair of neighbours contributes (table D.2): 1 if positive samples prevail, -1 if negative
// ones do. Of each, `bits` holds the sign and the significance.
constexpr int contribution(uint32_t one, uint32_t other) {
  const int sum = ((one & 2) == 0   ? 0
                   : (one & 1) == 0 ? 1
                                    : -1) +
                  ((other & 2) == 0   ? 0
                   : (other & 1) == 0 ? 1
                                      : -1);
  return sum > 0 ? 1 : sum < 0 ? -1 : 0;
}

constexpr OrbTable<uint8_t, 256> sign() {
  OrbTable<uint8_t, 256> contexts = {};
  for (uint32_t bits = 0; bits < 256; ++bits) {
    int h = contribution(bits >> 2, bits >> 4);
    int v = contribution(bits, bits >> 6);
    // Table D.3 is symmetric: what is turned round has the same label and the other sign.
    const bool turned = h < 0 || (h == 0 && v < 0);
    if (turned) {
      h = -h;
      v = -v;
    }
    contexts[bits] = static_cast<uint8_t>((turned ? 128 : 0) + orbSignContext + 3 * h + v);
  }
  return contexts;
}

}  // namespace

constexpr OrbTable<uint8_t, orbContextCount> orbContextStart = start();
constexpr OrbTable<OrbTable<uint8_t, 512>, 3> orbZeroCodingContexts = zeroCoding();
constexpr OrbTable<uint8_t, 256> orbSignContexts = sign();

}  // namespace orb
