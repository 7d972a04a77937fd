// The tables that ITU-T T.81 prints: the zigzag order (figure A.6) and the examples of annex K,
// which most encoders use as they stand.
#ifndef ORB_HOSTS_JPEG_TABLES_H
#define ORB_HOSTS_JPEG_TABLES_H

#include <array>
#include <cstdint>

namespace orbhost::jpeg {

// A Huffman table as a DHT segment holds it: how many codes there are of each length from 1 to 16,
// and the symbols in the order of their codes.
struct HuffmanTable {
  std::array<uint8_t, 16> counts;
  std::array<uint8_t, 256> symbols;

  int size() const {
    int sum = 0;
    for (const uint8_t count : counts) sum += count;
    return sum;
  }
  bool operator==(const HuffmanTable& other) const {
    return counts == other.counts && symbols == other.symbols;
  }
};

// The raster position of each place in the zigzag order.
extern const std::array<uint8_t, 64> kZigzag;

// Tables K.1 and K.2: divisors in zigzag order, for quality 50.
extern const std::array<uint8_t, 64> kLumaDivisors;
extern const std::array<uint8_t, 64> kChromaDivisors;

// Tables K.3 to K.6.
extern const HuffmanTable kLumaDc;
extern const HuffmanTable kChromaDc;
extern const HuffmanTable kLumaAc;
extern const HuffmanTable kChromaAc;

}  // namespace orbhost::jpeg

#endif
