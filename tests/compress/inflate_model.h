// Deflate decoding as RFC 1951 writes it down, slowly and in strings of '0' and '1', with what a
// host sees from call to call; and streams to decode. The judge of the library's decoder.
#ifndef ORB_TESTS_COMPRESS_INFLATE_MODEL_H
#define ORB_TESTS_COMPRESS_INFLATE_MODEL_H

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tests/compress/deflate_model.h"

namespace orbtest {
inline namespace lz77 {

// ---- Streams

// The last byte is filled up with zeros.
inline Bytes bytesOf(const std::string& bits) {
  Bytes bytes((bits.size() + 7) / 8);
  for (size_t i = 0; i < bits.size(); ++i) {
    if (bits[i] == '1') bytes[i / 8] = static_cast<Orb8u>(bytes[i / 8] | 1 << i % 8);
  }
  return bytes;
}

inline std::string bitsOf(const Bytes& bytes) {
  std::string bits;
  for (const Orb8u byte : bytes) bits += numberBits(byte, 8);
  return bits;
}

inline Bytes randomBytes(Random& random, size_t count) {
  Bytes bytes(count);
  for (Orb8u& byte : bytes) byte = random.any<Orb8u>();
  return bytes;
}

inline const std::vector<size_t>& codeLengthOrder() {
  static const std::vector<size_t> order = {16, 17, 18, 0, 8,  7, 9,  6, 10, 5,
                                            11, 4,  12, 3, 13, 2, 14, 1, 15};
  return order;
}

// A symbol of the code for code lengths, with the value of its extra bits.
struct LengthToken {
  int symbol, extra;
};
inline int extraBitsOf(int lengthSymbol) {
  return lengthSymbol < 16 ? 0 : lengthSymbol == 16 ? 2 : lengthSymbol == 17 ? 3 : 7;
}

// The header of a dynamic block, whatever it says.
struct DynamicHeader {
  bool isLast = false;
  int literals = 257;
  int distances = 1;
  int sent = 19;  // of the lengths below, in the order of RFC 1951
  std::vector<int> codeLengths = std::vector<int>(19);
  std::vector<LengthToken> tokens;

  std::string bits() const {
    std::string all = isLast ? "101" : "001";
    all += numberBits(literals - 257, 5) + numberBits(distances - 1, 5) + numberBits(sent - 4, 4);
    for (size_t i = 0; i < static_cast<size_t>(sent); ++i) {
      all += numberBits(codeLengths[codeLengthOrder()[i]], 3);
    }
    const CodeStrings codes = canonicalCodes(codeLengths);
    for (const LengthToken& token : tokens) {
      all += codes[static_cast<size_t>(token.symbol)];
      all += numberBits(token.extra, extraBitsOf(token.symbol));
    }
    return all;
  }
};

// The lengths of a complete code for so many symbols: the leaves of a tree that is split at random
// places.
inline std::vector<int> randomLeaves(Random& random, size_t count, int deepest) {
  std::vector<int> leaves = {0};
  while (leaves.size() < count) {
    // The last leaf that can still be split is split often: that makes deep trees.
    size_t at = random.oneIn(2) ? leaves.size() - 1 : random.between<size_t>(0, leaves.size() - 1);
    while (leaves[at] == deepest) at = random.between<size_t>(0, leaves.size() - 1);
    ++leaves[at];
    leaves.push_back(leaves[at]);
  }
  for (size_t i = count - 1; i > 0; --i) std::swap(leaves[i], leaves[random.between<size_t>(0, i)]);
  return leaves;
}

// Gives a code to the symbols marked, and to others so that there are two at least.
inline std::vector<int> randomLengths(Random& random, std::vector<bool> used, int deepest) {
  const auto count = [&] {
    return static_cast<size_t>(std::count(used.begin(), used.end(), true));
  };
  while (count() < 2) used[random.between<size_t>(0, used.size() - 1)] = true;
  const std::vector<int> leaves = randomLeaves(random, count(), deepest);
  std::vector<int> lengths(used.size());
  size_t next = 0;
  for (size_t i = 0; i < used.size(); ++i) {
    if (used[i]) lengths[i] = leaves[next++];
  }
  return lengths;
}

// Writes lengths in one of the many ways that there are.
inline std::vector<LengthToken> randomTokens(Random& random, const std::vector<int>& lengths) {
  std::vector<LengthToken> tokens;
  for (size_t i = 0; i < lengths.size();) {
    size_t run = 1;
    while (i + run < lengths.size() && lengths[i + run] == lengths[i]) ++run;
    const bool repeats = i > 0 && lengths[i] == lengths[i - 1];
    LengthToken token = {lengths[i], 0};
    size_t covered = 1;
    const auto choose = [&](int symbol, size_t least, size_t most) {
      covered = random.between(least, std::min(run, most));
      token = {symbol, static_cast<int>(covered - least)};
    };
    if (lengths[i] == 0 && run >= 11 && !random.oneIn(4)) {
      choose(18, 11, 138);
    } else if (lengths[i] == 0 && run >= 3 && random.oneIn(2)) {
      choose(17, 3, 10);
    } else if (repeats && run >= 3 && !random.oneIn(4)) {
      choose(16, 3, 6);
    }
    tokens.push_back(token);
    i += covered;
  }
  return tokens;
}

// A dynamic block's header with these two codes, and random ways to write them.
inline DynamicHeader headerFor(Random& random, bool isLast, std::vector<int> literals,
                               std::vector<int> distances) {
  const auto trim = [](std::vector<int>& lengths, size_t least) {
    while (lengths.size() > least && lengths.back() == 0) lengths.pop_back();
  };
  if (!random.oneIn(3)) {
    trim(literals, 257);
    trim(distances, 1);
  }
  DynamicHeader header;
  header.isLast = isLast;
  header.literals = static_cast<int>(literals.size());
  header.distances = static_cast<int>(distances.size());
  literals.insert(literals.end(), distances.begin(), distances.end());
  header.tokens = randomTokens(random, literals);
  std::vector<bool> used(19);
  for (const LengthToken& token : header.tokens) used[static_cast<size_t>(token.symbol)] = true;
  header.codeLengths = randomLengths(random, used, 7);
  while (header.sent > 4 &&
         header.codeLengths[codeLengthOrder()[static_cast<size_t>(header.sent) - 1]] == 0) {
    --header.sent;
  }
  return header;
}

inline std::string pairBits(const Pairs& pairs, const BlockCodes& codes) {
  std::string bits;
  for (const OrbLZ77Pair& pair : pairs) bits += bitsOf(pair, codes);
  return bits + codes.symbols.at(256);
}

inline std::string fixedBlock(bool isLast, const Pairs& pairs) {
  return (isLast ? "110" : "010") + pairBits(pairs, fixedCodes());
}

inline std::string dynamicBlock(Random& random, bool isLast, const Pairs& pairs) {
  std::vector<bool> literals(286), distances(30);
  literals[256] = true;
  for (const OrbLZ77Pair& pair : pairs) {
    if (pair.offset == 0) {
      literals[pair.lengthOrLiteral] = true;
    } else {
      literals[257 + static_cast<size_t>(slotOf(lengthSlots(), pair.lengthOrLiteral))] = true;
      distances[static_cast<size_t>(slotOf(distanceSlots(), pair.offset))] = true;
    }
  }
  const int deepest = random.between(10, 15);
  const std::vector<int> literalLengths = randomLengths(random, literals, deepest);
  const std::vector<int> distanceLengths = randomLengths(random, distances, deepest);
  return headerFor(random, isLast, literalLengths, distanceLengths).bits() +
         pairBits(pairs, {canonicalCodes(literalLengths), canonicalCodes(distanceLengths)});
}

// A stored block, from behind `bits` on.
inline void appendStored(std::string& bits, bool isLast, const Bytes& bytes) {
  bits += isLast ? "100" : "000";
  bits.resize((bits.size() + 7) / 8 * 8, '0');
  const int length = static_cast<int>(bytes.size());
  bits += numberBits(length, 16) + numberBits(~length, 16) + bitsOf(bytes);
}

// Pairs as no encoder would make them: every length and distance, as far back as `history` goes.
inline Pairs randomPairs(Random& random, size_t count, int history) {
  Pairs pairs;
  for (size_t i = 0; i < count; ++i) {
    if (random.oneIn(2) || history == 0) {
      pairs.push_back(pairOf(random.oneIn(3) ? random.any<Orb8u>() : random.between(97, 100), 0));
      history = std::min(history + 1, 32768);
    } else {
      const int length = random.oneIn(8) ? random.between(3, 258) : random.between(3, 12);
      const int nearest = random.oneIn(2) ? std::min(history, 40) : history;
      pairs.push_back(pairOf(length, random.between(1, nearest)));
      history = std::min(history + length, 32768);
    }
  }
  return pairs;
}

// Some blocks of all kinds, as they come; `history` bytes stand in front.
struct RandomStream {
  Bytes bytes;
  std::vector<int> kinds;  // of its blocks
};
inline RandomStream randomStream(Random& random, int blocks, int history) {
  RandomStream stream;
  std::string bits;
  for (int i = 1; i <= blocks; ++i) {
    const bool isLast = i == blocks;
    const int kind = random.between(0, 2);
    stream.kinds.push_back(kind);
    if (kind == orbLZ77BlockStored) {
      appendStored(bits, isLast, randomBytes(random, random.between<size_t>(0, 40)));
    } else {
      const Pairs pairs = randomPairs(random, random.between<size_t>(0, 60), history);
      bits += kind == orbLZ77BlockFixed ? fixedBlock(isLast, pairs)
                                        : dynamicBlock(random, isLast, pairs);
    }
  }
  stream.bytes = bytesOf(bits);
  return stream;
}

// ---- The decoder

// Copies a match from the text so far to its end, byte by byte.
inline void appendMatch(Bytes& text, int length, int distance) {
  for (int i = 0; i < length; ++i)
    text.push_back(text.at(text.size() - static_cast<size_t>(distance)));
}

// What one call did.
struct InflateStep {
  OrbStatus status = orbStsNoErr;
  int used = 0;  // bytes of the source
  Bytes bytes;   // one of the two
  Pairs pairs;
};

class InflateModel {
 public:
  // `before` is what is in front of the stream, as far as matches may reach.
  explicit InflateModel(Bytes before = {}) : text_(std::move(before)) {}

  bool isBetween() const { return state_ == kBetween; }

  // Stores nothing in `mode` if there is nothing to tell.
  InflateStep blockType(const Bytes& src, int& mode) {
    begin(src, 0);
    if (state_ == kBetween) {
      if (!want(3)) return stop(orbStsSrcShort);
      const std::string header = take(3);
      const std::string type = header.substr(1);
      if (type == "11") return stop(orbStsNoErr);
      isLast_ = header[0] == '1';
      kind_ = type == "10"   ? orbLZ77BlockFixed
              : type == "01" ? orbLZ77BlockDynamic
                             : orbLZ77BlockStored;
      state_ = type == "10" ? kSymbol : type == "01" ? kCounts : kSkipToByte;
    }
    mode = kind_;
    return stop(orbStsNoErr);
  }

  InflateStep toPairs(int kind, const Bytes& src, size_t room) {
    begin(src, room);
    writesPairs_ = true;
    if (room == 0) return stop(orbStsDstFull);
    return stop(decode(kind));
  }
  InflateStep toBytes(int kind, const Bytes& src, size_t room) {
    begin(src, room);
    writesPairs_ = false;
    if (room == 0) return stop(orbStsDstFull);
    putMatch(pending_.first, pending_.second);
    return stop(decode(kind));
  }

  InflateStep storedToPairs(const Bytes& src, size_t room) {
    begin(src, room);
    writesPairs_ = true;
    const OrbStatus entered = enter(orbLZ77BlockStored);
    if (entered != orbStsNoErr) return stop(entered);
    if (state_ == kCounts) {
      dropToByte();
      if (!want(32)) return stop(orbStsSrcShort);
      if (!takeStoredLength(kSymbol)) return stop(orbStsSizeErr);
    }
    return stop(copyStored(kSymbol));
  }
  InflateStep storedToBytes(const Bytes& src, size_t room) {
    begin(src, room);
    writesPairs_ = false;
    if (room == 0) return stop(orbStsDstFull);
    if (state_ == kSkipToByte) {
      dropToByte();
      state_ = kStoredLength;
    }
    if (state_ == kStoredLength) {
      if (!want(32)) return stop(orbStsSrcShort);
      if (!takeStoredLength(kCopyStored)) return stop(orbStsSizeErr);
    }
    return stop(copyStored(kCopyStored));
  }

  InflateStep findMarker(const Bytes& src) {
    begin(src, 0);
    dropToByte();
    const std::string marker = std::string(16, '0') + std::string(16, '1');
    for (;;) {
      if (!want(32)) return stop(orbStsSrcShort);
      if (held_ == marker) return stop(orbStsNoErr);
      take(8);
    }
  }

 private:
  enum State {
    kBetween,
    kCounts,
    kCodeLengths,
    kLengths,
    kSymbol,
    kLengthBits,
    kDistance,
    kDistanceBits,
    kSkipToByte,
    kStoredLength,
    kCopyStored
  };

  // ---- Calls

  void begin(const Bytes& src, size_t room) {
    src_ = src;
    at_ = 0;
    room_ = room;
    step_ = {};
  }
  InflateStep stop(OrbStatus status) {
    step_.status = status;
    step_.used = at_;
    return step_;
  }

  // ---- Bits

  bool want(size_t n) {
    while (held_.size() < n) {
      if (at_ == static_cast<int>(src_.size())) return false;
      held_ += numberBits(src_[static_cast<size_t>(at_++)], 8);
    }
    return true;
  }
  std::string take(size_t n) {
    const std::string bits = held_.substr(0, n);
    held_.erase(0, n);
    return bits;
  }
  static int number(const std::string& bits) {
    int value = 0;
    for (size_t i = 0; i < bits.size(); ++i) value |= (bits[i] - '0') << i;
    return value;
  }
  int takeNumber(size_t n) { return number(take(n)); }
  void dropToByte() { take(held_.size() % 8); }

  // ---- Output

  bool isFull() const { return room_ == 0; }
  void putByte(Orb8u byte) {
    text_.push_back(byte);
    step_.bytes.push_back(byte);
    --room_;
  }
  void putLiteral(int value) {
    if (!writesPairs_) return putByte(static_cast<Orb8u>(value));
    step_.pairs.push_back(pairOf(value, 0));
    --room_;
  }
  void putMatch(int length, int distance) {
    if (writesPairs_) {
      step_.pairs.push_back(pairOf(length, distance));
      --room_;
      return;
    }
    for (; length > 0 && !isFull(); --length) {
      putByte(text_.at(text_.size() - static_cast<size_t>(distance)));
    }
    pending_ = {length, distance};
  }

  // ---- Codes

  using Code = std::map<std::string, int>;

  static Code codeOf(const std::vector<int>& lengths) {
    Code code;
    const CodeStrings strings = canonicalCodes(lengths);
    for (size_t i = 0; i < strings.size(); ++i) {
      if (lengths[i] != 0) code[strings[i]] = static_cast<int>(i);
    }
    return code;
  }
  // In 32768ths, what share of all bit sequences begins with a code.
  static int share(const std::vector<int>& lengths) {
    int sum = 0;
    for (const int length : lengths) sum += length != 0 ? 32768 >> length : 0;
    return sum;
  }

  enum { kNone = -1, kShort = -2 };
  // The symbol at the front of the bits, and how many of them are its code.
  int look(const Code& code, size_t& length) {
    size_t longest = 0;
    for (const auto& [bits, symbol] : code) longest = std::max(longest, bits.size());
    for (length = 1; length <= longest; ++length) {
      if (!want(length)) return kShort;
      const auto found = code.find(held_.substr(0, length));
      if (found != code.end()) return found->second;
    }
    return kNone;
  }

  // ---- Blocks

  OrbStatus enter(int kind) {
    if (state_ != kBetween) return kind_ == kind ? orbStsNoErr : orbStsErr;
    const std::string held = held_;
    const int at = at_;
    if (!want(3)) return orbStsSrcShort;
    const std::string header = take(3);
    const char* const types[] = {"10", "01", "00"};
    if (header.substr(1) != types[kind]) {
      held_ = held;
      at_ = at;
      return orbStsErr;
    }
    isLast_ = header[0] == '1';
    kind_ = kind;
    state_ = kind == orbLZ77BlockFixed ? kSymbol : kCounts;
    return orbStsNoErr;
  }

  OrbStatus end() {
    state_ = kBetween;
    if (!isLast_) return orbStsNoErr;
    at_ -= static_cast<int>(held_.size() / 8);
    held_.clear();
    return orbStsStreamEnd;
  }

  OrbStatus decode(int kind) {
    OrbStatus status = enter(kind);
    if (status == orbStsNoErr) status = readHeader();
    if (status != orbStsNoErr) return status;
    if (kind == orbLZ77BlockFixed) {
      std::vector<int> literals(288, 8);
      std::fill(literals.begin() + 144, literals.begin() + 256, 9);
      std::fill(literals.begin() + 256, literals.begin() + 280, 7);
      literalCode_ = codeOf(literals);
      distanceCode_ = codeOf(std::vector<int>(32, 5));
    }
    for (;;) {
      size_t length = 0;
      if (state_ == kSymbol) {
        if (isFull()) return orbStsDstFull;
        const int symbol = look(literalCode_, length);
        if (symbol == kShort) return orbStsSrcShort;
        if (symbol == kNone || symbol > 285) return orbStsSizeErr;
        take(length);
        if (symbol == 256) return end();
        if (symbol < 256) {
          putLiteral(symbol);
        } else {
          slot_ = lengthSlots()[static_cast<size_t>(symbol - 257)];
          state_ = kLengthBits;
        }
      } else if (state_ == kDistance) {
        const int symbol = look(distanceCode_, length);
        if (symbol == kShort) return orbStsSrcShort;
        if (symbol == kNone || symbol > 29) return orbStsSizeErr;
        take(length);
        slot_ = distanceSlots()[static_cast<size_t>(symbol)];
        state_ = kDistanceBits;
      } else {
        const size_t extraBits = static_cast<size_t>(slot_.extraBits);
        if (!want(extraBits)) return orbStsSrcShort;
        const int value = slot_.base + takeNumber(extraBits);
        if (state_ == kLengthBits) {
          matchLength_ = value;
          state_ = kDistance;
        } else {
          putMatch(matchLength_, value);
          state_ = kSymbol;
        }
      }
    }
  }

  OrbStatus readHeader() {
    if (state_ == kCounts) {
      if (!want(14)) return orbStsSrcShort;
      literals_ = 257 + takeNumber(5);
      distances_ = 1 + takeNumber(5);
      sent_ = 4 + takeNumber(4);
      lengths_.clear();
      state_ = kCodeLengths;
    }
    if (state_ == kCodeLengths) {
      for (; static_cast<int>(lengths_.size()) < sent_; lengths_.push_back(takeNumber(3))) {
        if (!want(3)) return orbStsSrcShort;
      }
      std::vector<int> ordered(19);
      for (size_t i = 0; i < lengths_.size(); ++i) ordered[codeLengthOrder()[i]] = lengths_[i];
      if (share(ordered) != 32768) return orbStsSizeErr;
      lengthCode_ = codeOf(ordered);
      lengths_.clear();
      state_ = kLengths;
    }
    if (state_ == kLengths) {
      const size_t count = static_cast<size_t>(literals_ + distances_);
      while (lengths_.size() < count) {
        size_t length = 0;
        const int symbol = look(lengthCode_, length);
        if (symbol == kShort) return orbStsSrcShort;
        const size_t extraBits = static_cast<size_t>(extraBitsOf(symbol));
        if (!want(length + extraBits)) return orbStsSrcShort;
        const size_t extra = static_cast<size_t>(number(held_.substr(length, extraBits)));
        const size_t repeats = symbol < 16 ? 1 : extra + (symbol == 18 ? 11 : 3);
        if (symbol == 16 && lengths_.empty()) return orbStsSizeErr;
        if (lengths_.size() + repeats > count) return orbStsSizeErr;
        take(length + extraBits);
        const int value = symbol < 16 ? symbol : symbol == 16 ? lengths_.back() : 0;
        lengths_.insert(lengths_.end(), repeats, value);
      }
      const std::vector<int> literals(lengths_.begin(), lengths_.begin() + literals_);
      const std::vector<int> distances(lengths_.begin() + literals_, lengths_.end());
      const bool isSingle = literals_ - std::count(literals.begin(), literals.end(), 0) == 1;
      const int longest = *std::max_element(literals.begin(), literals.end());
      if (isSingle ? longest > 10 : share(literals) != 32768) return orbStsSizeErr;
      if (share(distances) != 32768) return orbStsSizeErr;
      literalCode_ = codeOf(literals);
      distanceCode_ = codeOf(distances);
      state_ = kSymbol;
    }
    return orbStsNoErr;
  }

  // False if the complement is not that of the length.
  bool takeStoredLength(State copying) {
    const int length = number(held_.substr(0, 16));
    if (length + number(held_.substr(16)) != 65535) return false;
    held_.clear();
    storedLeft_ = length;
    state_ = copying;
    return true;
  }
  OrbStatus copyStored(State copying) {
    if (state_ != copying) return orbStsErr;
    for (; storedLeft_ > 0; --storedLeft_) {
      if (isFull()) return orbStsDstFull;
      if (at_ == static_cast<int>(src_.size())) return orbStsSrcShort;
      putLiteral(src_[static_cast<size_t>(at_++)]);
    }
    state_ = kBetween;
    return isLast_ ? orbStsStreamEnd : orbStsNoErr;
  }

  Bytes text_;
  std::string held_;
  State state_ = kBetween;
  int kind_ = 0;
  bool isLast_ = false;
  int literals_ = 0, distances_ = 0, sent_ = 0;
  std::vector<int> lengths_;
  Code lengthCode_, literalCode_, distanceCode_;
  Slot slot_ = {};
  int matchLength_ = 0;
  int storedLeft_ = 0;
  std::pair<int, int> pending_;

  Bytes src_;
  int at_ = 0;
  size_t room_ = 0;
  bool writesPairs_ = false;
  InflateStep step_;
};

}  // namespace lz77
}  // namespace orbtest

#endif
