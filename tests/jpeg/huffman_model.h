// Huffman coding as ITU-T T.81 writes it down, slowly and in strings of '0' and '1': the judge of
// the library's coders. Beside the standard's rules it states what a host can see of the library's
// state records between calls.
#ifndef ORB_TESTS_JPEG_HUFFMAN_MODEL_H
#define ORB_TESTS_JPEG_HUFFMAN_MODEL_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "orb90legacy/jpeg.h"
#include "tests/support/bit_string.h"
#include "tests/support/random.h"

namespace orbtest {
inline namespace jpeg {

// ---- Tables

// The two lists of a DHT segment.
struct HuffmanLists {
  std::vector<Orb8u> bits;  // 16
  std::vector<Orb8u> vals;
};

// T.81 tables K.3 to K.6.
inline HuffmanLists luminanceDC() {
  return {{0, 1, 5, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0}, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}};
}
inline HuffmanLists chrominanceDC() {
  return {{0, 3, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0}, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}};
}
inline HuffmanLists luminanceAC() {
  return {{0, 2, 1, 3, 3, 2, 4, 3, 5, 5, 4, 4, 0, 0, 1, 0x7d},
          {0x01, 0x02, 0x03, 0x00, 0x04, 0x11, 0x05, 0x12, 0x21, 0x31, 0x41, 0x06, 0x13, 0x51, 0x61,
           0x07, 0x22, 0x71, 0x14, 0x32, 0x81, 0x91, 0xa1, 0x08, 0x23, 0x42, 0xb1, 0xc1, 0x15, 0x52,
           0xd1, 0xf0, 0x24, 0x33, 0x62, 0x72, 0x82, 0x09, 0x0a, 0x16, 0x17, 0x18, 0x19, 0x1a, 0x25,
           0x26, 0x27, 0x28, 0x29, 0x2a, 0x34, 0x35, 0x36, 0x37, 0x38, 0x39, 0x3a, 0x43, 0x44, 0x45,
           0x46, 0x47, 0x48, 0x49, 0x4a, 0x53, 0x54, 0x55, 0x56, 0x57, 0x58, 0x59, 0x5a, 0x63, 0x64,
           0x65, 0x66, 0x67, 0x68, 0x69, 0x6a, 0x73, 0x74, 0x75, 0x76, 0x77, 0x78, 0x79, 0x7a, 0x83,
           0x84, 0x85, 0x86, 0x87, 0x88, 0x89, 0x8a, 0x92, 0x93, 0x94, 0x95, 0x96, 0x97, 0x98, 0x99,
           0x9a, 0xa2, 0xa3, 0xa4, 0xa5, 0xa6, 0xa7, 0xa8, 0xa9, 0xaa, 0xb2, 0xb3, 0xb4, 0xb5, 0xb6,
           0xb7, 0xb8, 0xb9, 0xba, 0xc2, 0xc3, 0xc4, 0xc5, 0xc6, 0xc7, 0xc8, 0xc9, 0xca, 0xd2, 0xd3,
           0xd4, 0xd5, 0xd6, 0xd7, 0xd8, 0xd9, 0xda, 0xe1, 0xe2, 0xe3, 0xe4, 0xe5, 0xe6, 0xe7, 0xe8,
           0xe9, 0xea, 0xf1, 0xf2, 0xf3, 0xf4, 0xf5, 0xf6, 0xf7, 0xf8, 0xf9, 0xfa}};
}
inline HuffmanLists chrominanceAC() {
  return {{0, 2, 1, 2, 4, 4, 3, 4, 7, 5, 4, 4, 0, 1, 2, 0x77},
          {0x00, 0x01, 0x02, 0x03, 0x11, 0x04, 0x05, 0x21, 0x31, 0x06, 0x12, 0x41, 0x51, 0x07, 0x61,
           0x71, 0x13, 0x22, 0x32, 0x81, 0x08, 0x14, 0x42, 0x91, 0xa1, 0xb1, 0xc1, 0x09, 0x23, 0x33,
           0x52, 0xf0, 0x15, 0x62, 0x72, 0xd1, 0x0a, 0x16, 0x24, 0x34, 0xe1, 0x25, 0xf1, 0x17, 0x18,
           0x19, 0x1a, 0x26, 0x27, 0x28, 0x29, 0x2a, 0x35, 0x36, 0x37, 0x38, 0x39, 0x3a, 0x43, 0x44,
           0x45, 0x46, 0x47, 0x48, 0x49, 0x4a, 0x53, 0x54, 0x55, 0x56, 0x57, 0x58, 0x59, 0x5a, 0x63,
           0x64, 0x65, 0x66, 0x67, 0x68, 0x69, 0x6a, 0x73, 0x74, 0x75, 0x76, 0x77, 0x78, 0x79, 0x7a,
           0x82, 0x83, 0x84, 0x85, 0x86, 0x87, 0x88, 0x89, 0x8a, 0x92, 0x93, 0x94, 0x95, 0x96, 0x97,
           0x98, 0x99, 0x9a, 0xa2, 0xa3, 0xa4, 0xa5, 0xa6, 0xa7, 0xa8, 0xa9, 0xaa, 0xb2, 0xb3, 0xb4,
           0xb5, 0xb6, 0xb7, 0xb8, 0xb9, 0xba, 0xc2, 0xc3, 0xc4, 0xc5, 0xc6, 0xc7, 0xc8, 0xc9, 0xca,
           0xd2, 0xd3, 0xd4, 0xd5, 0xd6, 0xd7, 0xd8, 0xd9, 0xda, 0xe2, 0xe3, 0xe4, 0xe5, 0xe6, 0xe7,
           0xe8, 0xe9, 0xea, 0xf2, 0xf3, 0xf4, 0xf5, 0xf6, 0xf7, 0xf8, 0xf9, 0xfa}};
}

// A prefix code for `symbols` symbols (at most 256) in random order: the leaves of a tree that is
// split at random places, with one of the deepest dropped so that no code is all ones.
inline HuffmanLists randomLists(Random& random, int symbols = 256) {
  std::vector<int> leaves(1, 0);
  while (static_cast<int>(leaves.size()) < symbols + 1) {
    const size_t at = random.between<size_t>(0, leaves.size() - 1);
    if (leaves[at] == 16) continue;
    ++leaves[at];
    leaves.push_back(leaves[at]);
  }
  std::sort(leaves.begin(), leaves.end());
  leaves.pop_back();
  HuffmanLists lists = {std::vector<Orb8u>(16), {}};
  for (const int length : leaves) ++lists.bits[static_cast<size_t>(length - 1)];
  for (int symbol = 0; symbol < 256; ++symbol) lists.vals.push_back(static_cast<Orb8u>(symbol));
  for (size_t i = 255; i > 0; --i) {
    std::swap(lists.vals[i], lists.vals[random.between<size_t>(0, i)]);
  }
  lists.vals.resize(static_cast<size_t>(symbols));
  return lists;
}

// Lists with 256 codes, more of some length above 8 than there can be: only decoders take them.
inline HuffmanLists overfullLists(Random& random) {
  HuffmanLists lists = randomLists(random, random.between(1, 200));
  while (lists.vals.size() < 256) {
    ++lists.bits[random.between<size_t>(8, 15)];
    lists.vals.push_back(random.any<Orb8u>());
  }
  return lists;
}

// The only codes are those of the symbols given, in this order: 0, 10, 110, ...
inline HuffmanLists unary(const std::vector<Orb8u>& symbols) {
  HuffmanLists lists = {std::vector<Orb8u>(16), symbols};
  for (size_t i = 0; i < symbols.size(); ++i) lists.bits[i] = 1;
  return lists;
}

inline int number(const std::string& digits) {
  int value = 0;
  for (const char digit : digits) value = value * 2 + (digit == '1');
  return value;
}

// The number of the first code of a length, from the share of all codes that shorter ones take.
// May have more bits than the length, in lists that no encoder accepts.
inline int64_t firstCode(const HuffmanLists& lists, int length) {
  int64_t taken = 0;  // in units of a code of 16 bits
  for (int l = 1; l < length; ++l) {
    taken += int64_t{lists.bits[static_cast<size_t>(l - 1)]} << (16 - l);
  }
  return taken >> (16 - length);
}

// The code of each symbol that has one. The last one listed counts.
using Codes = std::map<int, std::string>;
inline Codes codesOf(const HuffmanLists& lists) {
  Codes codes;
  size_t k = 0;
  for (int length = 1; length <= 16; ++length) {
    const int64_t first = firstCode(lists, length);
    for (int i = 0; i < lists.bits[static_cast<size_t>(length - 1)]; ++i) {
      codes[lists.vals[k++]] = binary(first + i, length);
    }
  }
  return codes;
}

// ---- Encoding

inline int bitLength(int value) {
  int digits = 0;
  for (int64_t m = std::abs(static_cast<int64_t>(value)); m != 0; m /= 2) ++digits;
  return digits;
}

// The bits of a value: its binary digits, inverted if it is negative (T.81 F.1.2.1).
inline std::string valueBits(int value) {
  std::string digits = binary(std::abs(static_cast<int64_t>(value)), bitLength(value));
  if (value < 0) {
    for (char& digit : digits) digit = digit == '1' ? '0' : '1';
  }
  return digits;
}

// T.81 figure 5, as a walk: right along the top, down the left side, back and forth.
inline std::vector<int> zigzag() {
  std::vector<int> order;
  int x = 0, y = 0, up = 1;
  while (static_cast<int>(order.size()) < 64) {
    order.push_back(y * 8 + x);
    if (up ? x == 7 || y == 0 : y == 7 || x == 0) {
      (up ? x == 7 : y != 7) ? ++y : ++x;
      up = !up;
    } else {
      x += up ? 1 : -1;
      y += up ? -1 : 1;
    }
  }
  return order;
}

// What a block is made of: symbols of its tables with the values behind them.
struct BlockSymbol {
  int symbol;
  int value;  // coded behind the symbol, if it is not 0
};
inline std::vector<BlockSymbol> symbolsOf(const std::vector<Orb16s>& block, int lastDC) {
  static const std::vector<int> order = zigzag();
  const int difference = block[0] - lastDC;
  std::vector<BlockSymbol> symbols = {{bitLength(difference), difference}};
  int run = 0;
  for (size_t k = 1; k < 64; ++k) {
    const int value = block[static_cast<size_t>(order[k])];
    if (value == 0) {
      ++run;
      continue;
    }
    for (; run > 15; run -= 16) symbols.push_back({0xF0, 0});
    symbols.push_back({run * 16 + bitLength(value), value});
    run = 0;
  }
  if (run > 0) symbols.push_back({0, 0});
  return symbols;
}

// The writing end of the ordinary forms. A position outside of the destination is its end.
struct WriterModel {
  std::vector<Orb8u> dst;
  int position = 0;
  std::string pending;  // bits that do not yet fill a byte
  int lastByte = 0;     // written last, data not stuffing

  Orb32u bitBuffer() const {
    return static_cast<Orb32u>(lastByte) << 24 |
           static_cast<Orb32u>(number(pending + std::string(24 - pending.size(), '0')));
  }
  bool store(int byte) {
    if (position < 0 || position >= static_cast<int>(dst.size())) return false;
    dst[static_cast<size_t>(position++)] = static_cast<Orb8u>(byte);
    return true;
  }
  OrbStatus put(const std::string& bits) {
    if (bits.empty()) return orbStsJpegHuffTableErr;
    std::string all = pending + bits;
    int last = lastByte;
    for (; all.size() >= 8; all.erase(0, 8)) {
      last = number(all.substr(0, 8));
      if (!store(last)) return orbStsJpegBufferEndErr;
      if (last == 255 && !store(0)) return orbStsJpegBufferEndErr;
    }
    pending = all;
    lastByte = last;
    return orbStsNoErr;
  }
  OrbStatus encode(const std::vector<Orb16s>& block, Orb16s& lastDC, const Codes& dc,
                   const Codes& ac) {
    const std::vector<BlockSymbol> symbols = symbolsOf(block, lastDC);
    lastDC = block[0];
    for (size_t i = 0; i < symbols.size(); ++i) {
      const Codes& codes = i == 0 ? dc : ac;
      const auto code = codes.find(symbols[i].symbol);
      OrbStatus status = put(code == codes.end() ? "" : code->second);
      if (status == orbStsNoErr && symbols[i].value != 0) {
        status = put(valueBits(symbols[i].value));
      }
      if (status != orbStsNoErr) return status;
    }
    return orbStsNoErr;
  }
  OrbStatus flush() {
    const OrbStatus status = put("1111111");
    pending.clear();
    lastByte = 0;
    return status;
  }
};

// A whole scan of one component in a buffer that is large enough, flushed.
inline std::vector<Orb8u> encodeScan(const std::vector<std::vector<Orb16s>>& blocks,
                                     const Codes& dc, const Codes& ac) {
  WriterModel writer;
  writer.dst.resize(blocks.size() * 512 + 2);
  Orb16s lastDC = 0;
  for (const std::vector<Orb16s>& block : blocks) writer.encode(block, lastDC, dc, ac);
  writer.flush();
  writer.dst.resize(static_cast<size_t>(writer.position));
  return writer.dst;
}

// ---- Decoding

// What a decoder's table holds, from the lists and the rules alone.
struct DecoderTable {
  std::vector<int> symbols = std::vector<int>(256);
  // By each value of 8 bits: a code's length and symbol, or 0 and 0.
  std::vector<std::pair<int, int>> lookup = std::vector<std::pair<int, int>>(256);
  // By length. No code: last is 65535.
  std::vector<int> first = std::vector<int>(18);
  std::vector<int> last = std::vector<int>(18, 65535);
  std::vector<int> offset = std::vector<int>(18);
  bool valid = true;

  explicit DecoderTable(const HuffmanLists& lists) {
    int total = 0;
    last[0] = 0;
    for (size_t length = 1; length <= 16; ++length) {
      const int count = lists.bits[length - 1];
      const int64_t code = firstCode(lists, static_cast<int>(length));
      if (count > 0) {
        first[length] = static_cast<int>(code % 65536);
        last[length] = static_cast<int>((code + count - 1) % 65536);
        offset[length] = total;
      }
      if (length <= 8 && code + count > 1 << length && count > 0) valid = false;
      total += count;
    }
    if (total > 256) valid = false;
    if (!valid) return;
    for (size_t k = 0; k < static_cast<size_t>(total); ++k) symbols[k] = lists.vals[k];
    for (size_t next = 0; next < 256; ++next) {
      const std::string digits = binary(static_cast<int64_t>(next), 8);
      for (size_t length = 1; length <= 8; ++length) {
        const int code = number(digits.substr(0, length));
        if (last[length] == 65535 || code < first[length] || code > last[length]) continue;
        lookup[next] = {static_cast<int>(length),
                        symbols[static_cast<size_t>(offset[length] + code - first[length])]};
      }
    }
  }

  // The code of this length, if there is one. Values that no stream leads to may lie below the
  // first code; symbols are numbered modulo 256 then.
  bool find(const std::string& code, int& symbol) const {
    const size_t l = code.size();
    const int value = number(code);
    if (last[l] == 65535 || value > last[l]) return false;
    symbol = symbols[static_cast<size_t>(offset[l] - first[l] + value) % 256];
    return true;
  }
};

// The reading end of both forms: all the bits that were ever read, and how many of them are left.
struct ReaderModel {
  const std::vector<Orb8u>* src;
  int position = 0;
  int marker = 0;
  std::string tape = std::string(32, '0');
  int left = 0;  // below 0 after taking bits that were not there
  bool direct = false;

  Orb32u bitBuffer() const {
    Orb32u value = 0;
    for (const char digit : tape.substr(tape.size() - 32)) value = value * 2 + (digit == '1');
    return value;
  }

  // The `n` bits in front of the last `left`, out of the last 32. A negative `left` counts
  // modulo 32.
  std::string take(int n) {
    left -= n;
    const std::string window = tape.substr(tape.size() - 32);
    const std::string all = std::string(32, '0') + window.substr(0, 32 - (left & 31));
    return all.substr(all.size() - static_cast<size_t>(n));
  }

  bool next(int& byte) {
    if (position < 0 || position >= static_cast<int>(src->size())) return false;
    byte = (*src)[static_cast<size_t>(position++)];
    return true;
  }
  OrbStatus fill(int need) {
    const bool wanting = need > left;
    if (direct ? marker > 0 : marker != 0) return wanting ? orbStsJpegBitStreamErr : orbStsNoErr;
    while (left < 25) {
      int byte = 0, after = 255;
      if (!next(byte)) return need > left ? orbStsJpegBufferEndErr : orbStsNoErr;
      while (byte == 255 && after == 255) {
        if (!next(after)) return orbStsJpegBufferEndErr;
      }
      if (byte == 255 && after != 0) {
        marker = after;
        return orbStsNoErr;
      }
      tape += binary(byte, 8);
      left += 8;
    }
    return orbStsNoErr;
  }

  OrbStatus fetch(int n, std::string& bits) {
    if (left < n) {
      const OrbStatus status = fill(n);
      if (direct ? left < n && left < 1 : status < 0) {
        return direct ? orbStsJpegBufferEndErr : status;
      }
    }
    bits = take(n);
    return orbStsNoErr;
  }
  OrbStatus value(int s, int& result) {
    std::string bits;
    const OrbStatus status = fetch(s, bits);
    if (status < 0) return status;
    result = number(bits);
    if (s > 0 && bits[0] == '0') result -= (1 << s) - 1;
    return orbStsNoErr;
  }

  // The Direct form: orbStsNoOperation if nothing is left in front of the symbol.
  OrbStatus symbolDirect(const DecoderTable& table, int& symbol) {
    if (left < 8) fill(0);
    if (left < 1) return orbStsNoOperation;
    const std::string digits = tape.substr(tape.size() - static_cast<size_t>(left)) + "0000000";
    const auto [length, found] = table.lookup[static_cast<size_t>(number(digits.substr(0, 8)))];
    if (length > 0) {
      left -= length;
      symbol = found;
      return orbStsNoErr;
    }
    std::string code;
    while (code.size() < 16) {
      const int wanted = code.empty() ? 9 : 1;
      if (left < wanted) fill(wanted);
      if (left < wanted) return orbStsJpegBitStreamErr;
      code += take(wanted);
      if (table.find(code, symbol)) return orbStsNoErr;
    }
    return orbStsJpegBitStreamErr;
  }
  OrbStatus symbol(const DecoderTable& table, int& symbol) {
    if (direct) return symbolDirect(table, symbol);
    int n = 9;
    if (left < 8) {
      const OrbStatus status = fill(0);
      if (status < 0) return status;
      if (left < 8) n = 1;
    }
    if (n == 9) {
      const std::string digits = tape.substr(tape.size() - static_cast<size_t>(left), 8);
      const auto [length, found] = table.lookup[static_cast<size_t>(number(digits))];
      if (length > 0) {
        left -= length;
        symbol = found;
        return orbStsNoErr;
      }
    }
    std::string code, bit;
    OrbStatus status = fetch(n, code);
    if (status < 0) return status;
    for (; code.size() <= 16; code += bit) {
      if (table.find(code, symbol)) return orbStsNoErr;
      status = fetch(1, bit);
      if (status < 0) return status;
    }
    symbol = 0;
    return orbStsJpegBitStreamErr;
  }

  OrbStatus decode(std::vector<Orb16s>& block, Orb16s& lastDC, const DecoderTable& dc,
                   const DecoderTable& ac, int& lastPosition) {
    static const std::vector<int> order = zigzag();
    block.assign(64, 0);
    int found = 0, difference = 0;
    OrbStatus status = symbol(dc, found);
    if (status == orbStsNoErr && found != 0) status = value(found % 16, difference);
    if (status != orbStsNoErr) {
      lastPosition = 0;
      return status;
    }
    lastDC = static_cast<Orb16s>(lastDC + difference);
    block[0] = lastDC;
    int k = 1;
    while (k <= 63) {
      status = symbol(ac, found);
      if (status != orbStsNoErr) break;
      if (found % 16 != 0) {
        k += found / 16;
        int coefficient = 0;
        status = value(found % 16, coefficient);
        if (status != orbStsNoErr) break;
        if (k > 71) return orbStsErr;
        block[static_cast<size_t>(order[static_cast<size_t>(std::min(k, 63))])] =
            static_cast<Orb16s>(coefficient);
        ++k;
      } else if (found == 0xF0) {
        k += 16;
      } else {
        break;
      }
    }
    lastPosition = k;
    return status;
  }
};

// ---- Blocks

// A block with about `percent` of its AC coefficients other than 0, of at most `bits` bits.
inline std::vector<Orb16s> randomBlock(Random& random, int percent, int bits, int bitsDC) {
  std::vector<Orb16s> block(64);
  const auto any = [&](int most) {
    const int range = (1 << random.between(0, most)) - 1;
    return static_cast<Orb16s>(random.between(-range, range));
  };
  block[0] = any(bitsDC);
  for (size_t i = 1; i < 64; ++i) {
    if (random.between(1, 100) <= percent) block[i] = any(bits);
  }
  return block;
}

// Zeros but for the values given, by their places in zigzag order.
inline std::vector<Orb16s> blockOf(const std::vector<std::pair<int, int>>& zigzagValues) {
  std::vector<Orb16s> block(64);
  for (const auto& [k, value] : zigzagValues) {
    block[static_cast<size_t>(zigzag()[static_cast<size_t>(k)])] = static_cast<Orb16s>(value);
  }
  return block;
}

// ---- Coded data

// Bits as a test writes them, with spaces between symbols and values.
inline std::string bitsIn(std::string text) {
  text.erase(std::remove(text.begin(), text.end(), ' '), text.end());
  return text;
}

// The bits given, with zeros behind them.
inline std::vector<Orb8u> bytesOf(const std::string& text) {
  const std::string bits = bitsIn(text) + std::string(64, '0');
  std::vector<Orb8u> bytes;
  for (size_t i = 0; i + 8 <= bits.size(); i += 8) {
    bytes.push_back(static_cast<Orb8u>(number(bits.substr(i, 8))));
    if (bytes.back() == 255) bytes.push_back(0);
  }
  return bytes;
}

// A scan with some bytes changed, inserted or left out.
inline std::vector<Orb8u> mutated(std::vector<Orb8u> scan, Random& random) {
  const int changes = random.between(1, 4);
  for (int i = 0; i < changes && !scan.empty(); ++i) {
    const size_t at = random.between<size_t>(0, scan.size() - 1);
    const auto place = scan.begin() + static_cast<ptrdiff_t>(at);
    switch (random.between(0, 4)) {
      case 0:
        scan[at] = random.any<Orb8u>();
        break;
      case 1:
        scan[at] = 255;
        break;
      case 2:
        scan.erase(place);
        break;
      case 3:
        scan.insert(place, random.extreme<Orb8u>());
        break;
      default:
        scan[at] = static_cast<Orb8u>(scan[at] ^ 1 << random.between(0, 7));
    }
  }
  return scan;
}

// ---- Records

// Tables and states that are no records, but memory with anything in it.
template <class Record>
void fillAny(Record& record, Random& random) {
  Orb8u* const bytes = reinterpret_cast<Orb8u*>(&record);
  for (size_t i = 0; i < sizeof record; ++i) bytes[i] = random.any<Orb8u>();
}

}  // namespace jpeg
}  // namespace orbtest

#endif
