#include "hosts/gzip/checksum.h"

#include <algorithm>
#include <array>

namespace orbhost::gzip {

namespace {

// Entry [k][b] takes the byte b through the register and k zero bytes after it. Steps of 16 bytes
// are about twice as fast as steps of 8.
constexpr size_t kStep = 16;
using CrcTables = std::array<std::array<uint32_t, 256>, kStep>;

constexpr CrcTables makeCrcTables() {
  CrcTables tables{};
  for (uint32_t b = 0; b < 256; ++b) {
    uint32_t crc = b;
    for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xEDB88320u : 0);
    tables[0][b] = crc;
  }
  for (size_t k = 1; k < tables.size(); ++k) {
    for (size_t b = 0; b < 256; ++b) {
      const uint32_t crc = tables[k - 1][b];
      tables[k][b] = (crc >> 8) ^ tables[0][crc & 255];
    }
  }
  return tables;
}

constexpr CrcTables kCrc = makeCrcTables();

}  // namespace

uint32_t crc32(uint32_t crc, ByteView bytes) {
  crc = ~crc;
  const uint8_t* p = bytes.data;
  const uint8_t* const end = p + bytes.size;
  for (; static_cast<size_t>(end - p) >= kStep; p += kStep) {
    uint32_t next = 0;
    for (size_t i = 0; i < kStep; ++i) {
      const uint32_t byte = i < 4 ? p[i] ^ (crc >> (8 * i) & 255) : p[i];
      next ^= kCrc[kStep - 1 - i][byte];
    }
    crc = next;
  }
  for (; p != end; ++p) crc = (crc >> 8) ^ kCrc[0][(crc ^ *p) & 255];
  return ~crc;
}

uint32_t adler32(uint32_t adler, ByteView bytes) {
  uint32_t sum = adler & 0xFFFF;
  uint32_t sumOfSums = adler >> 16;
  // The sums of so many bytes stay below 2^32: 255 * 4096 * 4097 / 2.
  constexpr size_t kPiece = 4096;
  for (size_t begin = 0; begin < bytes.size; begin += kPiece) {
    const uint8_t* const piece = bytes.data + begin;
    const uint32_t count = static_cast<uint32_t>(std::min(kPiece, bytes.size - begin));
    uint32_t plain = 0;
    uint32_t weighted = 0;
    for (uint32_t i = 0; i < count; ++i) {
      plain += piece[i];
      weighted += (count - i) * piece[i];
    }
    sumOfSums = (sumOfSums + sum * count + weighted % kAdlerModulus) % kAdlerModulus;
    sum = (sum + plain) % kAdlerModulus;
  }
  return sumOfSums << 16 | sum;
}

}  // namespace orbhost::gzip
