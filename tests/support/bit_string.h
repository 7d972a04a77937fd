// Bits as text, for models of coders that write the most significant bit first.
#ifndef ORB_TESTS_SUPPORT_BIT_STRING_H
#define ORB_TESTS_SUPPORT_BIT_STRING_H

#include <cstdint>
#include <string>
#include <vector>

namespace orbtest {

inline std::string binary(int64_t value, int digits) {
  std::string text;
  for (int i = digits - 1; i >= 0; --i) text += value >> i & 1 ? '1' : '0';
  return text;
}

// The bits in bytes, the last filled up.
inline std::vector<uint8_t> packBits(std::string bits, char fill = '0') {
  while (bits.size() % 8 != 0) bits += fill;
  std::vector<uint8_t> bytes;
  for (size_t i = 0; i < bits.size(); i += 8) {
    bytes.push_back(static_cast<uint8_t>(std::stoi(bits.substr(i, 8), nullptr, 2)));
  }
  return bytes;
}

}  // namespace orbtest

#endif
