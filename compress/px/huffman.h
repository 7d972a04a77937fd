// The byte Huffman coder: canonical codes of up to 32 bits, the most significant bit first.
//
// Among codes of one length the highest byte has the least code, and the longest codes come first:
// the code of zeros is the highest byte's of the longest length. 256 codes of this kind have at
// most 9 bits behind their leading zeros, which is why codes of 32 bits can be decoded from 32 bits
// that hold 17 or more.
#ifndef ORB_COMPRESS_PX_HUFFMAN_H
#define ORB_COMPRESS_PX_HUFFMAN_H

#include "compress/huffman_records.h"
#include "compress/px/frequency_sort.h"
#include "frame/arith.h"
#include "frame/memory.h"
#include "frame/memory_access.h"

namespace orb::ORB_BUILD::plain {

constexpr Orb32s kLongestCode = 32;

constexpr bool isCodeLength(Orb32s length) {
  return length >= 1 && length <= kLongestCode;
}

// ---- Codes from lengths

// By length: how many codes there are, the first of them, and how many codes are longer.
struct CodeGroups {
  Orb32s count[kLongestCode + 1];
  Orb32u first[kLongestCode + 1];
  Orb32s longer[kLongestCode + 1];
  Orb32s minLen;
  Orb32s maxLen;
};

// Lengths are 0 to 32, and one of them is above 0.
inline CodeGroups groupCodes(const Orb32s (&codeLen)[256]) {
  CodeGroups groups = {};
  for (const Orb32s length : codeLen) ++groups.count[length];
  groups.minLen = 1;
  while (groups.count[groups.minLen] == 0) ++groups.minLen;
  groups.maxLen = kLongestCode;
  while (groups.count[groups.maxLen] == 0) --groups.maxLen;
  Orb32u code = 0;
  Orb32s longer = 0;
  for (Orb32s length = groups.maxLen; length >= 1; --length) {
    groups.first[length] = code;
    groups.longer[length] = longer;
    code = (code + static_cast<Orb32u>(groups.count[length])) >> 1;
    longer += groups.count[length];
  }
  return groups;
}

inline void assignCodes(const CodeGroups& groups, const Orb32s (&codeLen)[256],
                        OrbHuffState& state) {
  Orb32u next[kLongestCode + 1];
  __builtin_memcpy(next, groups.first, sizeof next);
  for (int byte = 255; byte >= 0; --byte) {
    const Orb32s length = codeLen[byte];
    state.codeLen[byte] = length;
    state.code[byte] = length == 0 ? 0 : next[length]++;
  }
  state.maxLen = groups.maxLen;
  state.bitAcc = 0;
  state.bitCount = 0;
}

// ---- The encoder

inline OrbStatus orbMakeHuffEncoder(const Orb32s* freqTable, OrbHuffState& state) {
  SymbolFrequency records[256];
  Orb32s count = 0;
  Orb32u sum = 0;
  for (Orb32s byte = 0; byte < 256; ++byte) {
    const Orb32u frequency = static_cast<Orb32u>(load(freqTable + byte));
    if (frequency == 0) continue;
    sum += frequency;
    if ((frequency | sum) >> 31 != 0) return orbStsHuffFreqErr;
    records[count++] = {frequency, byte};
  }
  if (count == 0) return orbStsHuffFreqErr;

  Orb32s codeLen[256];
  orbZero(codeLen, sizeof codeLen);
  if (count == 1) {
    codeLen[records[0].symbol] = 1;
  } else {
    sortByFrequency(records, count);
    const Orb32s maxLen = measureTree(records, count, JoinedLabel::kFirst, codeLen);
    if (maxLen > kLongestCode) return orbStsHuffTooLongErr;
  }
  assignCodes(groupCodes(codeLen), codeLen, state);
  return orbStsNoErr;
}

// What lies in the first byte in front of the offset is kept, and what follows the code in the last
// is 0.
inline OrbStatus orbEncodeHuffOne(Orb8u src, Orb8u* dst, Orb32s offset, const OrbHuffState& state) {
  const Orb32s length = state.codeLen[src];
  if (!isCodeLength(length)) return orbStsHuffLenErr;
  const uint64_t bits = static_cast<uint64_t>(state.code[src]) << (64 - offset - length);
  const Orb8u kept = offset == 0 ? 0 : dst[0];
  const Orb32s bytes = (offset + length + 7) / 8;
  for (Orb32s i = 0; i < bytes; ++i) dst[i] = static_cast<Orb8u>(bits >> (56 - 8 * i));
  dst[0] |= kept;
  return orbStsNoErr;
}

// Returns the number of bytes written, whole words all of them.
inline Orb32s orbEncodeHuff(const Orb8u* src, Orb32s srcLen, Orb8u* dst, OrbHuffState& state) {
  // The bits held are the lowest `count` here, of 31 at most, with bits already written above them.
  Orb32s count = state.bitCount & 31;
  uint64_t bits = static_cast<uint64_t>(state.bitAcc) >> (32 - count);
  Orb8u* at = dst;
  for (Orb32s i = 0; i < srcLen; ++i) {
    const Orb32s length = state.codeLen[src[i]] & 63;
    bits = bits << length | state.code[src[i]];
    count += length;
    if (count >= 32) {
      count &= 31;
      store(reinterpret_cast<Orb32u*>(at), __builtin_bswap32(static_cast<Orb32u>(bits >> count)));
      at += 4;
    }
  }
  state.bitAcc = static_cast<Orb32u>(bits << (32 - count));
  state.bitCount = count;
  return static_cast<Orb32s>(at - dst);
}

// Returns the number of bytes written.
inline Orb32s orbEncodeHuffFinal(Orb8u* dst, const OrbHuffState& state) {
  const Orb32s bytes = ((state.bitCount & 31) + 7) / 8;
  for (Orb32s i = 0; i < bytes; ++i) dst[i] = static_cast<Orb8u>(state.bitAcc >> (24 - 8 * i));
  return bytes;
}

// ---- Length tables

inline OrbStatus orbGetHuffBufferSizes(const Orb32s* codeLenTable, Orb32s srcLen, Orb32s* pDstBytes,
                                       Orb32s* pMaxSymbols) {
  Orb32s largest = 1;
  Orb32s smallest = kLongestCode;
  for (int byte = 0; byte < 256; ++byte) {
    const Orb32s length = load(codeLenTable + byte);
    if (length > largest) largest = length;
    if (length != 0 && length < smallest) smallest = length;
  }
  if (smallest < 0 || largest > kLongestCode) return orbStsHuffLenErr;
  if (pDstBytes) store(pDstBytes, (srcLen * largest + largest + 7) / 8);
  if (pMaxSymbols) store(pMaxSymbols, srcLen * 64 / smallest);
  return orbStsNoErr;
}

// The packed form is a row of 4-bit digits. A digit of 0 to 12 is a value on the page at hand, each
// page having 13 values; the three digits above turn to a page first.
constexpr Orb32s kPageSize = 13;
constexpr Orb32s kLargestPacked = 3 * kPageSize - 1;
// Of equal lengths in a row, behind the first: two are written, and then the number of the others.
constexpr Orb32s kLongestRepeat = 34;

struct LengthPacker {
  Orb8u* dst;
  Orb32s room;
  Orb32s digits = 0;
  Orb32s page = 0;

  void putDigit(Orb32s digit) {
    const Orb32s at = digits++ / 2;
    if (at >= room) return;
    dst[at] = static_cast<Orb8u>(digits % 2 != 0 ? digit << 4 : dst[at] | digit);
  }
  void putValue(Orb32s value) {
    const Orb32s needed = value / kPageSize;
    if (page != needed) {
      page = needed;
      putDigit(kPageSize + page);
    }
    putDigit(value % kPageSize);
  }
  void putRepeats(Orb32s value, Orb32s repeats) {
    if (repeats >= 1) putValue(value);
    if (repeats < 2) return;
    putValue(value);
    putValue(repeats - 2);
  }
};

// `dstLen` is the room for the packed table, and becomes its length.
inline OrbStatus orbPackCodeLengths(const Orb32s* codeLenTable, Orb8u* dst, Orb32s& dstLen) {
  LengthPacker packer = {dst, dstLen};
  bool isValid = true;
  Orb32s last = 0;
  Orb32s repeats = 0;
  for (int byte = 0; byte < 256; ++byte) {
    const Orb32s length = load(codeLenTable + byte);
    isValid = isValid && length >= 0 && length <= kLongestCode;
    const Orb32s value = limit(length, 0, kLargestPacked);
    if (value == last && repeats < kLongestRepeat) {
      ++repeats;
      continue;
    }
    packer.putRepeats(last, repeats);
    repeats = value == last ? 1 : 0;
    if (value != last) packer.putValue(value);
    last = value;
  }
  packer.putRepeats(last, repeats);
  const Orb32s needed = (packer.digits + 1) / 2;
  const bool fits = needed <= dstLen;
  if (fits) dstLen = needed;
  return !isValid ? orbStsHuffLenErr : fits ? orbStsNoErr : orbStsSizeErr;
}

struct LengthUnpacker {
  const Orb8u* src;
  Orb32s length;
  Orb32s digits = 0;
  Orb32s page = 0;

  // 0 behind the end.
  Orb32s takeDigit() {
    const Orb32s at = digits++ / 2;
    if (at >= length) return 0;
    return digits % 2 != 0 ? src[at] >> 4 : src[at] & 15;
  }
  Orb32s takeValue() {
    Orb32s digit = takeDigit();
    for (; digit >= kPageSize; digit = takeDigit()) page = digit - kPageSize;
    return page * kPageSize + digit;
  }
};

// `srcLen` becomes the length of the packed table.
inline OrbStatus orbUnpackCodeLengths(const Orb8u* src, Orb32s& srcLen, Orb32s* codeLenTable) {
  LengthUnpacker unpacker = {src, srcLen};
  Orb32s last = 0;
  Orb32s repeats = 0;
  for (int byte = 0; byte < 256;) {
    const Orb32s value = unpacker.takeValue();
    repeats = value == last ? repeats + 1 : 0;
    last = value;
    store(codeLenTable + byte++, value);
    if (repeats < 2) continue;
    repeats = 0;
    for (Orb32s more = unpacker.takeValue(); more > 0 && byte < 256; --more) {
      store(codeLenTable + byte++, value);
    }
  }
  const Orb32s used = (unpacker.digits + 1) / 2;
  if (used > srcLen) return orbStsSizeErr;
  srcLen = used;
  return orbStsNoErr;
}

// ---- The decoder

inline OrbStatus orbMakeHuffDecoder(const Orb32s* codeLenTable, OrbHuffState& state) {
  Orb32s codeLen[256];
  bool isEmpty = true;
  for (int byte = 0; byte < 256; ++byte) {
    codeLen[byte] = load(codeLenTable + byte);
    if (codeLen[byte] == 0) continue;
    if (!isCodeLength(codeLen[byte])) return orbStsHuffLenErr;
    isEmpty = false;
  }
  if (isEmpty) return orbStsHuffLenErr;

  orbZero(&state, sizeof state);
  const CodeGroups groups = groupCodes(codeLen);
  assignCodes(groups, codeLen, state);
  Orb32s place[kLongestCode + 1];
  __builtin_memcpy(place, groups.longer, sizeof place);
  for (int byte = 255; byte >= 0; --byte) {
    const Orb32s length = codeLen[byte];
    if (length != 0) state.symbols[place[length]++] = static_cast<Orb8u>(byte);
  }
  Orb32s count = 0;
  for (Orb32s length = 1; length <= groups.maxLen; ++length) {
    count += groups.count[length];
    state.firstCode[length - 1] = groups.first[length] << (groups.maxLen - length);
    state.cumCount[length - 1] = count;
  }
  state.symbolCount = count;
  state.minLen = groups.minLen;
  state.zeroSymbol = state.symbols[0];
  return orbStsNoErr;
}

// A byte and the length of its code; 0 if the bits are the code of no byte.
struct HuffSymbol {
  Orb8u byte = 0;
  Orb32s length = 0;
};

// By the first `maxLen` bits of a stream. With lengths that leave bits without a code, those lie
// behind the last byte.
inline HuffSymbol findSymbol(const OrbHuffState& state, Orb32u bits, Orb32s maxLen) {
  Orb32s length = limit(Orb32s{state.minLen}, 1, maxLen);
  while (length < maxLen && bits < state.firstCode[length - 1]) ++length;
  const Orb32u place = static_cast<Orb32u>(state.symbolCount - state.cumCount[length - 1]) +
                       ((bits - state.firstCode[length - 1]) >> (maxLen - length));
  if (place >= static_cast<Orb32u>(limit(Orb32s{state.symbolCount}, 0, 256))) return {};
  return {state.symbols[place], length};
}

inline OrbStatus orbDecodeHuffOne(const Orb8u* src, Orb32s offset, Orb8u* dst,
                                  const OrbHuffState& state) {
  if (!isCodeLength(state.maxLen)) return orbStsSizeErr;
  if (state.symbolCount == 0) return orbStsNullPtrErr;
  uint64_t bits = 0;
  const Orb32s bytes = (offset + state.maxLen + 7) / 8;
  for (Orb32s i = 0; i < bytes; ++i) bits |= static_cast<uint64_t>(src[i]) << (56 - 8 * i);
  bits = bits << offset >> (64 - state.maxLen);
  const HuffSymbol symbol = findSymbol(state, static_cast<Orb32u>(bits), state.maxLen);
  if (symbol.length == 0) return orbStsHuffLenErr;
  *dst = symbol.byte;
  return orbStsNoErr;
}

// How many zeros are counted before some of them have been used up.
constexpr Orb32s kMostZeroBits = 1 << 30;

struct HuffReader {
  const Orb8u* at;
  const Orb8u* end;
  Orb32u bits;      // left aligned, 0 behind those that are held
  Orb32s count;     // of bits held, at most 31
  Orb32s zeroBits;  // in front of them

  void dropZeroBytes() {
    while (count >= 8 && bits >> 24 == 0) {
      bits <<= 8;
      count -= 8;
      zeroBits += 8;
    }
  }
  void fill() {
    dropZeroBytes();
    while (at != end && count < 17 && zeroBits < kMostZeroBits) {
      bits |= static_cast<Orb32u>(*at++) << (24 - count);
      count += 8;
      dropZeroBytes();
    }
  }
  void skip(Orb32s n) {
    const Orb32s held = n - zeroBits;
    if (held <= 0) {
      zeroBits -= n;
      return;
    }
    bits <<= held;
    count -= held;
    zeroBits = 0;
  }
};

// What the next bits stand for: one byte, or two if both of their codes are there. The bytes are at
// the low end, then the length of the codes and the number of bytes. 0 if the bits say too little,
// or if there are eight zeros.
constexpr Orb32u kTableBits = 11;
constexpr Orb32u kTableSize = 1 << kTableBits;
struct HuffTable {
  Orb32u entry[kTableSize];
};
constexpr Orb32u tableEntry(Orb32u bytes, Orb32u length, Orb32u count) {
  return bytes | length << 16 | count << 24;
}
constexpr Orb32u lengthOf(Orb32u entry) {
  return entry >> 16 & 255;
}

inline void makeHuffTable(const OrbHuffState& state, HuffTable& table) {
  const Orb32s maxLen = state.maxLen;
  const Orb32s unused = static_cast<Orb32s>(kTableBits) - maxLen;
  Orb32u single[kTableSize];
  Orb32u end;
  for (Orb32u first = 0; first < kTableSize; first = end) {
    end = first + 1;
    single[first] = 0;
    if (first >> (kTableBits - 8) == 0) continue;
    const Orb32u bits = unused > 0 ? first >> unused : first << -unused;
    const HuffSymbol symbol = findSymbol(state, bits, maxLen);
    const Orb32u length = static_cast<Orb32u>(symbol.length);
    if (length == 0 || length > kTableBits) continue;
    // Codes begin at multiples of what they span; this one perhaps among those of eight zeros.
    end = (first | ((1u << (kTableBits - length)) - 1)) + 1;
    for (Orb32u i = first; i < end; ++i) single[i] = tableEntry(symbol.byte, length, 1);
  }
  for (Orb32u i = 0; i < kTableSize; ++i) {
    const Orb32u one = single[i];
    const Orb32u two = single[(i << lengthOf(one)) % kTableSize];
    const Orb32u length = lengthOf(one) + lengthOf(two);
    const bool isPair = one != 0 && two != 0 && length <= kTableBits;
    table.entry[i] = isPair ? tableEntry((one & 255) | (two & 255) << 8, length, 2) : one;
  }
}

// Decodes while there is enough of everything and no code begins with eight zeros, and returns the
// number of bytes stored, fewer than `room`. Whole bytes that were not used are given back to the
// source. There are no zero bits in front, before and after.
inline Orb32s decodeByTable(const HuffTable& table, const OrbHuffState& state, HuffReader& reader,
                            Orb8u* dst, Orb32s room) {
  const Orb8u* const start = reader.at;
  const Orb8u* const end = reader.end;
  const Orb32s maxLen = state.maxLen;
  const Orb8u* at = start;
  uint64_t bits = static_cast<uint64_t>(reader.bits) << 32;
  Orb32s count = reader.count;
  Orb32s written = 0;
  // Two bytes are stored even for one. What the second place held comes back in the end.
  Orb8u held = 0;
  bool isHeld = false;
  bool goesOn = true;
  while (goesOn && end - at >= 8 && written < room - 8) {
    bits |= __builtin_bswap64(load(reinterpret_cast<const uint64_t*>(at))) >> count;
    at += (63 - count) >> 3;
    count |= 56;
    for (int lookup = 0; lookup < 4; ++lookup) {
      const Orb32u entry = table.entry[bits >> (64 - kTableBits)];
      if (entry != 0) {
        held = dst[written + 1];
        isHeld = entry >> 24 == 1;
        store(reinterpret_cast<Orb16u*>(dst + written), static_cast<Orb16u>(entry));
        written += static_cast<Orb32s>(entry >> 24);
        bits <<= lengthOf(entry);
        count -= static_cast<Orb32s>(lengthOf(entry));
        continue;
      }
      // A long code is the last before more bits are fetched, and may have to wait for them itself.
      if (count < kLongestCode) break;
      const HuffSymbol symbol =
          bits >> 56 == 0 ? HuffSymbol{}
                          : findSymbol(state, static_cast<Orb32u>(bits >> (64 - maxLen)), maxLen);
      goesOn = symbol.length != 0;
      if (goesOn) dst[written++] = symbol.byte;
      isHeld = isHeld && !goesOn;
      bits <<= symbol.length;
      count -= symbol.length;
      break;
    }
  }
  if (isHeld) dst[written] = held;
  const Orb32s unused = count >> 3;
  const ptrdiff_t taken = at - start;
  const Orb32s back = unused < taken ? unused : static_cast<Orb32s>(taken);
  reader.at = at - back;
  reader.count = count - 8 * back;
  reader.bits = static_cast<Orb32u>(bits >> 32) & ~(~Orb32u{0} >> reader.count);
  return written;
}

// Below these a table isn't worth its making.
constexpr Orb32s kTableSource = 128;
constexpr Orb32s kTableRoom = 256;

// Returns the number of bytes stored. What was read of the source and not used stays in the record:
// how much that is follows from the steps below, and the table keeps to it by leaving the last
// byte, and all codes that begin with eight zeros, to them.
inline Orb32s orbDecodeHuff(const Orb8u* src, Orb32s srcLen, Orb8u* dst, Orb32s room,
                            OrbHuffState& state) {
  const Orb32s maxLen = state.maxLen;
  if (!isCodeLength(maxLen)) return 0;
  HuffTable table;
  const bool hasTable = srcLen >= kTableSource && room >= kTableRoom;
  if (hasTable) makeHuffTable(state, table);

  HuffReader reader = {src, src + srcLen, state.bitAcc, state.bitCount & 31,
                       limit(Orb32s{state.zeroBits}, 0, kMostZeroBits)};
  Orb32s written = 0;
  while (written < room) {
    if (hasTable && reader.zeroBits == 0) {
      written += decodeByTable(table, state, reader, dst + written, room - written);
    }
    reader.fill();
    if (reader.zeroBits >= maxLen) {
      const Orb32s codes = reader.zeroBits / maxLen;
      const Orb32s stored = codes < room - written ? codes : room - written;
      __builtin_memset(dst + written, state.zeroSymbol, static_cast<size_t>(stored));
      written += stored;
      reader.zeroBits -= stored * maxLen;
      continue;
    }
    const HuffSymbol symbol =
        findSymbol(state, reader.bits >> (32 - (maxLen - reader.zeroBits)), maxLen);
    if (symbol.length == 0 || symbol.length > reader.count + reader.zeroBits) break;
    reader.skip(symbol.length);
    dst[written++] = symbol.byte;
  }
  state.bitAcc = reader.bits;
  state.bitCount = reader.count;
  state.zeroBits = reader.zeroBits;
  return written;
}

}  // namespace orb::ORB_BUILD::plain

#endif
