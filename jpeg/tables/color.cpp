#include "jpeg/tables/color.h"

namespace orb {
namespace {

constexpr int32_t kHalf = 1 << 15;

// The coefficients are those of JFIF's equations (ITU-T T.871, 7) to five decimals, in 16.16.
constexpr OrbTable<int32_t, 256> products(int32_t coefficient, int32_t constant) {
  OrbTable<int32_t, 256> table = {};
  for (int32_t sample = 0; sample < 256; ++sample) {
    table[static_cast<size_t>(sample)] = coefficient * sample + constant;
  }
  return table;
}

// The same for samples that have their zero at 128.
constexpr OrbTable<int32_t, 256> chromaProducts(int32_t coefficient, int32_t constant) {
  return products(coefficient, constant - 128 * coefficient);
}

constexpr OrbTable<int32_t, 256> whole(OrbTable<int32_t, 256> table) {
  for (size_t i = 0; i < 256; ++i) table[i] >>= 16;
  return table;
}

constexpr OrbTable<OrbTable<int32_t, 256>, 8> rgbToYcc() {
  OrbTable<OrbTable<int32_t, 256>, 8> tables = {};
  tables[orbRedToY] = products(19595, 0);
  tables[orbGreenToY] = products(38470, 0);
  tables[orbBlueToY] = products(7471, kHalf);
  tables[orbRedToCb] = products(-11059, 0);
  tables[orbGreenToCb] = products(-21709, 0);
  // One less than a half, so that pure blue and pure red end at 255.
  tables[orbBlueToCb] = products(32768, (128 << 16) + kHalf - 1);
  tables[orbGreenToCr] = products(-27439, 0);
  tables[orbBlueToCr] = products(-5329, 0);
  return tables;
}

}  // namespace

constexpr OrbTable<OrbTable<int32_t, 256>, 8> orbRgbToYccTables = rgbToYcc();
constexpr OrbTable<int32_t, 256> orbCrToR = whole(chromaProducts(91881, kHalf));
constexpr OrbTable<int32_t, 256> orbCbToB = whole(chromaProducts(116130, kHalf));
constexpr OrbTable<int32_t, 256> orbCrToG = chromaProducts(-46802, 0);
constexpr OrbTable<int32_t, 256> orbCbToG = chromaProducts(-22554, kHalf);

}  // namespace orb
