// Deflate encoding said slowly: positions without a limit, the text as a whole, candidates compared
// byte by byte, bits as strings of '0' and '1'. The judge of the library's encoder.
#ifndef ORB_TESTS_COMPRESS_DEFLATE_MODEL_H
#define ORB_TESTS_COMPRESS_DEFLATE_MODEL_H

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "compress/tables/hash_mix.h"
#include "orb90legacy/compress.h"
#include "tests/support/random.h"

inline bool operator==(const OrbLZ77Pair& a, const OrbLZ77Pair& b) {
  return a.lengthOrLiteral == b.lengthOrLiteral && a.offset == b.offset;
}

namespace orbtest {
inline namespace lz77 {

using Bytes = std::vector<Orb8u>;
using Pairs = std::vector<OrbLZ77Pair>;

inline OrbLZ77Pair pairOf(int64_t lengthOrLiteral, int64_t offset) {
  return {static_cast<Orb16u>(lengthOrLiteral), static_cast<Orb16u>(offset)};
}

// ---- Checksums

// RFC 1950, section 9, from any value.
inline Orb32u adler32(Orb32u from, const Bytes& data) {
  uint64_t a = from & 0xFFFF, b = from >> 16;
  for (const Orb8u byte : data) {
    a = (a + byte) % 65521;
    b = (b + a) % 65521;
  }
  return static_cast<Orb32u>(b << 16 | a);
}

// RFC 1952, section 8, bit by bit.
inline Orb32u crc32(Orb32u from, const Bytes& data) {
  Orb32u rest = ~from;
  for (const Orb8u byte : data) {
    rest ^= byte;
    for (int bit = 0; bit < 8; ++bit) rest = rest & 1 ? rest >> 1 ^ 0xEDB88320 : rest >> 1;
  }
  return ~rest;
}

// ---- The match search

class MatchModel {
 public:
  explicit MatchModel(int level) : level_(level) { reset(); }

  void reset() {
    text_.clear();
    head_.assign(32768, -32768);
    // The chains stay as they are.
  }

  void setDictionary(Bytes dictionary) {
    if (dictionary.size() < 3) return;
    if (dictionary.size() > 32768) dictionary.erase(dictionary.begin(), dictionary.end() - 32768);
    text_ = dictionary;
    for (int64_t p = 0; p + 3 <= size(); ++p) enter(p);
  }

  struct Made {
    Pairs pairs;
    int used;  // bytes of the source
  };
  Made makePairs(const Bytes& src, size_t room, int flush) {
    isRestart_ = flush == orbLZ77FlushRestart;
    const int64_t start = size();
    text_.insert(text_.end(), src.begin(), src.end());
    room_ = room;
    made_.clear();
    int64_t pos = level_ == 0 ? searchFast(start) : level_ == 2 ? searchLazy(start) : search(start);
    for (; pos < size() && hasRoom(); ++pos) putLiteral(pos);
    if (isRestart_) {
      text_.clear();
    } else {
      text_.resize(static_cast<size_t>(pos));
    }
    return {made_, static_cast<int>(pos - start)};
  }

  int64_t position() const { return size(); }

 private:
  struct Match {
    int64_t length, candidate;
  };

  int64_t size() const { return static_cast<int64_t>(text_.size()); }
  Orb32u at(int64_t pos) const { return text_.at(static_cast<size_t>(pos)); }
  bool hasRoom() const { return made_.size() < room_; }
  void putLiteral(int64_t pos) { made_.push_back(pairOf(at(pos), 0)); }
  void putMatch(int64_t pos, Match m) { made_.push_back(pairOf(m.length, pos - m.candidate)); }

  size_t hash(int64_t pos) const {
    const Orb32u a = at(pos), b = at(pos + 1), c = at(pos + 2);
    if (level_ == 0) return ((a << 10) ^ (b << 5) ^ c) & 0x7FFF;
    const uint64_t mixed = orb::orbHashMix[a] ^ orb::orbHashMix[b] >> 16 ^ orb::orbHashMix[c] >> 32;
    return mixed & 0x7FFF;
  }
  int64_t& head(int64_t pos) { return head_[hash(pos)]; }
  int64_t& prev(int64_t pos) { return prev_[static_cast<size_t>(pos % 32768)]; }
  void enter(int64_t pos) {
    if (level_ != 0) prev(pos) = head(pos);
    head(pos) = pos;
  }
  void enterAll(int64_t from, int64_t to) {
    for (int64_t pos = from; pos < to; ++pos) enter(pos);
  }

  bool counts(int64_t candidate, int64_t pos) const {
    return isRestart_ ? candidate > 0 && candidate < pos : pos - candidate < 32768;
  }
  int64_t equalBytes(int64_t a, int64_t b, int64_t limit) const {
    int64_t n = 0;
    while (n < limit && at(a + n) == at(b + n)) ++n;
    return n;
  }
  Match walk(int64_t candidate, int64_t pos, int64_t limit, int tries) {
    Match best = {2, 0};
    if (limit <= 2) return best;
    while (counts(candidate, pos) && best.length < limit && tries-- > 0) {
      const int64_t length = equalBytes(candidate, pos, limit);
      if (length > best.length) best = {length, candidate};
      candidate = prev(candidate);
    }
    return best;
  }

  int64_t searchFast(int64_t pos) {
    while (pos < size() - 2 && hasRoom()) {
      const int64_t candidate = head(pos);
      enter(pos);
      Match m = {0, candidate};
      const int64_t limit = std::min<int64_t>(258, size() - pos - 2);
      if (counts(candidate, pos)) m.length = equalBytes(candidate, pos, limit);
      pos = put(pos, m);
    }
    return pos;
  }
  int64_t search(int64_t pos) {
    while (pos < size() - 2 && hasRoom()) {
      const int64_t candidate = head(pos);
      enter(pos);
      pos = put(pos, walk(candidate, pos, std::min<int64_t>(258, size() - pos - 2), 16));
    }
    return pos;
  }
  int64_t put(int64_t pos, Match m) {
    if (m.length < 3) {
      putLiteral(pos);
      return pos + 1;
    }
    putMatch(pos, m);
    enterAll(pos + 1, pos + m.length);
    return pos + m.length;
  }
  int64_t searchLazy(int64_t pos) {
    Match now = {};
    bool needSearch = true;
    const auto longest = [&](int64_t candidate, int64_t p) {
      return walk(candidate, p, std::min<int64_t>(258, size() - p - 3), 512);
    };
    while (pos < size() - 3 && hasRoom()) {
      const int64_t candidate = head(pos);
      enter(pos);
      if (needSearch) now = longest(candidate, pos);
      needSearch = false;
      const Match next = longest(head(pos + 1), pos + 1);
      if (next.length > now.length || now.length < 3 ||
          (now.length == 3 && pos - now.candidate > 4096)) {
        putLiteral(pos++);
        now = next;
      } else {
        pos = put(pos, now);
        needSearch = true;
      }
    }
    return pos;
  }

  int level_;
  Bytes text_;
  std::vector<int64_t> head_;
  std::vector<int64_t> prev_ = std::vector<int64_t>(32768, -32768);
  bool isRestart_ = false;
  size_t room_ = 0;
  Pairs made_;
};

// ---- Codes

// RFC 1951, 3.2.5: the first length or distance of each symbol, and its extra bits.
struct Slot {
  int base, extraBits;
};
inline const std::vector<Slot>& lengthSlots() {
  static const std::vector<Slot> slots = {
      {3, 0},  {4, 0},  {5, 0},  {6, 0},   {7, 0},   {8, 0},   {9, 0},   {10, 0},  {11, 1}, {13, 1},
      {15, 1}, {17, 1}, {19, 2}, {23, 2},  {27, 2},  {31, 2},  {35, 3},  {43, 3},  {51, 3}, {59, 3},
      {67, 4}, {83, 4}, {99, 4}, {115, 4}, {131, 5}, {163, 5}, {195, 5}, {227, 5}, {258, 0}};
  return slots;
}
inline const std::vector<Slot>& distanceSlots() {
  static const std::vector<Slot> slots = {
      {1, 0},     {2, 0},     {3, 0},     {4, 0},      {5, 1},      {7, 1},
      {9, 2},     {13, 2},    {17, 3},    {25, 3},     {33, 4},     {49, 4},
      {65, 5},    {97, 5},    {129, 6},   {193, 6},    {257, 7},    {385, 7},
      {513, 8},   {769, 8},   {1025, 9},  {1537, 9},   {2049, 10},  {3073, 10},
      {4097, 11}, {6145, 11}, {8193, 12}, {12289, 12}, {16385, 13}, {24577, 13}};
  return slots;
}
inline int slotOf(const std::vector<Slot>& slots, int value) {
  size_t slot = slots.size() - 1;
  while (slots[slot].base > value) --slot;
  return static_cast<int>(slot);
}

// The code of each symbol as it goes into the stream, from the code's first bit on; empty for a
// symbol without one (RFC 1951, 3.2.2).
using CodeStrings = std::vector<std::string>;
inline CodeStrings canonicalCodes(const std::vector<int>& lengths) {
  CodeStrings codes(lengths.size());
  int next = 0;
  for (int length = 1; length <= 15; ++length) {
    for (size_t symbol = 0; symbol < lengths.size(); ++symbol) {
      if (lengths[symbol] != length) continue;
      for (int bit = length - 1; bit >= 0; --bit) codes[symbol] += next >> bit & 1 ? '1' : '0';
      ++next;
    }
    next *= 2;
  }
  return codes;
}

// Numbers have their lowest bit first.
inline std::string numberBits(int value, int count) {
  std::string bits;
  for (int i = 0; i < count; ++i) bits += value >> i & 1 ? '1' : '0';
  return bits;
}

struct BlockCodes {
  CodeStrings symbols, distances;
};

inline const BlockCodes& fixedCodes() {
  static const BlockCodes codes = [] {
    std::vector<int> lengths(288, 8);
    std::fill(lengths.begin() + 144, lengths.begin() + 256, 9);
    std::fill(lengths.begin() + 256, lengths.begin() + 280, 7);
    return BlockCodes{canonicalCodes(lengths), canonicalCodes(std::vector<int>(30, 5))};
  }();
  return codes;
}

inline std::string bitsOf(const OrbLZ77Pair& pair, const BlockCodes& codes) {
  if (pair.offset == 0) return codes.symbols.at(pair.lengthOrLiteral);
  const auto bits = [](const std::vector<Slot>& slots, const CodeStrings& strings, int first,
                       int value) {
    const int slot = slotOf(slots, value);
    const Slot& s = slots[static_cast<size_t>(slot)];
    return strings.at(static_cast<size_t>(first + slot)) + numberBits(value - s.base, s.extraBits);
  };
  return bits(lengthSlots(), codes.symbols, 257, pair.lengthOrLiteral) +
         bits(distanceSlots(), codes.distances, 0, pair.offset);
}

// Code lengths for these frequencies, none above the limit.
class CodeLengthModel {
 public:
  std::vector<int> lengths;
  int used = 0;     // one above the highest symbol with a code
  int longest = 0;  // before the limit

  CodeLengthModel(const std::vector<Orb32u>& frequencies, int limit) : lengths(frequencies.size()) {
    std::vector<Record> records;
    for (size_t i = 0; i < frequencies.size(); ++i) records.push_back({i, frequencies[i]});
    // From both ends.
    size_t count = 0;
    for (size_t end = records.size(); count < end;) {
      if (records[count].frequency != 0) {
        ++count;
      } else if (records[end - 1].frequency == 0) {
        --end;
      } else {
        std::swap(records[count], records[end - 1]);
      }
    }
    if (count < 2) {
      records[0].frequency = 1;
      count = 2;
    }
    records.resize(count);
    sort(records, 0, static_cast<int>(count) - 1);
    for (const Record& record : records) used = std::max(used, static_cast<int>(record.symbol) + 1);

    const std::vector<Record> sorted = records;
    std::vector<int> counts(64);
    readTree(records, counts);
    if (longest <= limit) return;
    const int lowest = shorten(counts, limit);
    size_t next = 0;
    for (int length = limit; length >= lowest; --length) {
      for (int i = 0; i < counts[static_cast<size_t>(length)]; ++i) {
        lengths[sorted[next++].symbol] = length;
      }
    }
  }

 private:
  struct Record {
    size_t symbol;
    uint64_t frequency;  // or the symbol that stands for the other half
  };
  using Records = std::vector<Record>;

  static void sort(Records& records, int low, int high) {
    const auto at = [&](int i) -> Record& { return records[static_cast<size_t>(i)]; };
    const auto order = [&](int i, int j) {
      if (at(i).frequency > at(j).frequency) std::swap(at(i), at(j));
    };
    const int size = high - low + 1;
    if (size <= 9) {
      for (int end = high; end > low; --end) {
        const auto begin = records.begin();
        std::iter_swap(std::max_element(begin + low, begin + end + 1,
                                        [](const Record& a, const Record& b) {
                                          return a.frequency < b.frequency;
                                        }),
                       begin + end);
      }
      return;
    }
    const int middle = low + size / 2;
    order(low, middle);
    order(low, high);
    order(middle, high);
    const uint64_t pivot = at(middle).frequency;
    int i = low + 1, j = high - 1;
    for (;; ++i, --j) {
      while (i <= high && at(i).frequency <= pivot) ++i;
      while (at(j).frequency > pivot) --j;
      if (i > j) break;
      std::swap(at(i), at(j));
    }
    while (j > low && at(j).frequency == pivot) --j;
    sort(records, low, j);
    sort(records, i, high);
  }

  // The tree in the array itself: a node goes by the symbol of its second half, behind everything
  // that is no heavier.
  void readTree(Records records, std::vector<int>& counts) {
    const size_t count = records.size();
    for (size_t i = 0; i + 1 < count; ++i) {
      const Record node = {records[i + 1].symbol, records[i].frequency + records[i + 1].frequency};
      size_t gap = i + 1;
      while (gap + 1 < count && records[gap + 1].frequency <= node.frequency) {
        records[gap] = records[gap + 1];
        ++gap;
      }
      records[gap] = node;
      records[i].frequency = node.symbol;
    }
    for (size_t i = count - 1; i-- > 0;) {
      const size_t label = static_cast<size_t>(records[i].frequency);
      longest = lengths[label] + 1;
      lengths[label] = lengths[records[i].symbol] = longest;
      counts[static_cast<size_t>(longest)] += 2;
      --counts[static_cast<size_t>(longest) - 1];
    }
  }

  int shorten(std::vector<int>& counts, int limit) const {
    const auto at = [&](int i) -> int& { return counts[static_cast<size_t>(i)]; };
    int lowest = limit;
    for (int length = longest; length > limit; --length) {
      for (; at(length) > 0; at(length) -= 2) {
        int j = limit - 1;
        while (at(j) == 0) --j;
        --at(j);
        at(j + 1) += 2;
        ++at(length - 1);
        lowest = std::min(lowest, j);
      }
    }
    return lowest;
  }
};

// ---- Blocks

struct DynamicBlock {
  std::string header;
  BlockCodes codes;
  int longest[3];  // what the three codes would have without a limit

  DynamicBlock() = default;
  DynamicBlock(const Pairs& pairs, bool isLast) {
    std::vector<Orb32u> symbols(286), distances(30);
    symbols[256] = 1;
    for (const OrbLZ77Pair& pair : pairs) {
      if (pair.offset == 0) {
        ++symbols.at(pair.lengthOrLiteral);
      } else {
        ++symbols.at(static_cast<size_t>(257 + slotOf(lengthSlots(), pair.lengthOrLiteral)));
        ++distances.at(static_cast<size_t>(slotOf(distanceSlots(), pair.offset)));
      }
    }
    const CodeLengthModel symbolModel(symbols, 15), distanceModel(distances, 15);
    codes = {canonicalCodes(symbolModel.lengths), canonicalCodes(distanceModel.lengths)};

    std::vector<Orb32u> frequencies(20);
    scan(symbolModel, [&](int symbol, int, int) { ++frequencies[static_cast<size_t>(symbol)]; });
    scan(distanceModel, [&](int symbol, int, int) { ++frequencies[static_cast<size_t>(symbol)]; });
    const CodeLengthModel lengthModel(frequencies, 7);
    const CodeStrings strings = canonicalCodes(lengthModel.lengths);
    longest[0] = symbolModel.longest;
    longest[1] = distanceModel.longest;
    longest[2] = lengthModel.longest;

    const std::vector<size_t> order = {16, 17, 18, 0, 8,  7, 9,  6, 10, 5,
                                       11, 4,  12, 3, 13, 2, 14, 1, 15};
    int sent = 0;
    for (int i = 0; i < 19; ++i) {
      if (lengthModel.lengths[order[static_cast<size_t>(i)]] != 0) sent = i + 1;
    }
    header = (isLast ? "101" : "001") + numberBits(symbolModel.used - 257, 5) +
             numberBits(distanceModel.used - 1, 5) + numberBits(sent - 4, 4);
    for (int i = 0; i < sent; ++i) {
      header += numberBits(lengthModel.lengths[order[static_cast<size_t>(i)]], 3);
    }
    const auto write = [&](int symbol, int extra, int extraBits) {
      header += strings[static_cast<size_t>(symbol)] + numberBits(extra, extraBits);
    };
    scan(symbolModel, write);
    scan(distanceModel, write);
  }

 private:
  // Calls `use` with each symbol of the code-length alphabet and its extra bits.
  template <class Use>
  static void scan(const CodeLengthModel& model, Use use) {
    const auto at = [&](int i) { return model.lengths[static_cast<size_t>(i)]; };
    int previous = -1;
    for (int i = 0; i < model.used;) {
      const int length = at(i);
      int equal = 1;
      while (i + equal < model.used && at(i + equal) == length) ++equal;
      if (length == 0) {
        const int run = std::min(equal, 138);
        if (run >= 11) {
          use(18, run - 11, 7);
        } else if (run >= 3) {
          use(17, run - 3, 3);
        } else {
          for (int k = 0; k < run; ++k) use(0, 0, 0);
        }
        i += run;
      } else if (length == previous) {
        const int run = std::min(equal, 6);
        if (run >= 3) {
          use(16, run - 3, 2);
        } else {
          for (int k = 0; k < run; ++k) use(length, 0, 0);
        }
        i += run;
      } else {
        use(length, 0, 0);
        ++i;
      }
      previous = length;
    }
  }
};

// The encoder's bits: what a host can see of it from call to call.
class BlockModel {
 public:
  int srcLeft = 0;
  int lastFlush = 0;
  int blockState = 0;

  // What a call did.
  struct Step {
    OrbStatus status;
    Bytes written;
    size_t pairs;  // or bytes of the source
  };

  // A match call has made new pairs.
  void matched(int flush, int left) {
    lastFlush = flush;
    srcLeft = left;
    headerReady_ = false;
  }

  int select(const Pairs& pairs) {
    if (headerReady_) return mode_;
    saved_ = waiting_;
    makeHeader(pairs);
    size_t stored = 32, fixed = 3, dynamic = header_.size() + 3;
    for (const OrbLZ77Pair& pair : pairs) {
      stored += pair.offset == 0 ? 8 : 8 * size_t{pair.lengthOrLiteral};
      fixed += bitsOf(pair, fixedCodes()).size();
      dynamic += bitsOf(pair, block_.codes).size();
    }
    mode_ = stored < std::min(fixed, dynamic) ? orbLZ77BlockStored
            : fixed < dynamic                 ? orbLZ77BlockFixed
                                              : orbLZ77BlockDynamic;
    headerReady_ = true;
    return mode_;
  }

  Step fixed(const Pairs& pairs, size_t room, int flush) {
    begin(room);
    if (room == 0) return stop(0);
    takeBits();
    headerReady_ = false;
    drain();
    if (blockState == 2) {
      waiting_ += flush == orbLZ77FlushFinish && srcLeft == 0 ? "110" : "010";
    } else if (pairs.empty()) {
      Step step;
      return resumes(flush, step) ? step : end(orbStsNoErr, 4);
    }
    return put(pairs, fixedCodes(), flush);
  }

  Step dynamic(const Pairs& pairs, size_t room, int flush) {
    begin(room);
    if (room == 0) return stop(0);
    const bool begins = blockState == 2 || headerPending_;
    if (headerPending_ && !sendHeader()) return stop(0);
    if (blockState == 2) {
      lastFlush = flush;
      if (!headerReady_) {
        makeHeader(pairs);
        if (!sendHeader()) return stop(0);
      }
    }
    drain();
    if (pairs.empty() && !begins) {
      Step step;
      if (resumes(flush, step)) return step;
      waiting_ += block_.codes.symbols[256];
      return end(orbStsNoErr, 4);
    }
    return put(pairs, block_.codes, flush);
  }

  // `src` is what the host still has of its bytes.
  Step stored(const Bytes& src, size_t room, int flush) {
    begin(room);
    takeBits();
    size_t used = 0;
    const auto full = [&] {
      saved_ = waiting_;
      return Step{orbStsDstFull, written_, used};
    };
    do {
      if (room_ == 0) return full();
      if (marker_ == 0) {
        drain();
        waiting_ += flush == orbLZ77FlushFinish ? "100" : "000";
        pad();
        marker_ = 1;
      }
      if (marker_ == 1) {
        drain();
        if (!waiting_.empty()) return full();
        storedLeft_ = std::min<size_t>(src.size() - used, 65535);
        const int length = static_cast<int>(storedLeft_);
        waiting_ = numberBits(length, 16) + numberBits(~length, 16);
        marker_ = 2;
      }
      if (marker_ == 2) {
        drain();
        if (!waiting_.empty()) return full();
        marker_ = 3;
      }
      for (; storedLeft_ > 0 && room_ > 0; --storedLeft_) write(src.at(used++));
      if (storedLeft_ > 0) return full();
      marker_ = 0;
    } while (used < src.size());
    saved_ = waiting_;
    if (flush != orbLZ77FlushFinish) return {orbStsNoErr, written_, used};
    blockState = 5;
    return {orbStsStreamEnd, written_, used};
  }

  const DynamicBlock& block() const { return block_; }

 private:
  void begin(size_t room) {
    room_ = room;
    written_.clear();
  }
  void write(Orb8u byte) {
    written_.push_back(byte);
    --room_;
  }
  void drain() {
    while (waiting_.size() >= 8 && room_ > 0) {
      int byte = 0;
      for (size_t i = 0; i < 8; ++i) byte |= (waiting_[i] - '0') << i;
      write(static_cast<Orb8u>(byte));
      waiting_.erase(0, 8);
    }
  }
  void pad() { waiting_.resize((waiting_.size() + 7) / 8 * 8, '0'); }
  void takeBits() {
    if (headerReady_) waiting_ = saved_;
  }

  Step stop(size_t pairs) { return end(orbStsDstFull, 3, pairs); }
  Step end(OrbStatus status, int state, size_t pairs = 0) {
    blockState = state;
    if (state != 3) headerReady_ = false;
    return {status, written_, pairs};
  }

  void makeHeader(const Pairs& pairs) {
    block_ = DynamicBlock(pairs, lastFlush == orbLZ77FlushFinish && srcLeft == 0);
    waiting_ += block_.header;
    header_ = waiting_.substr(0, waiting_.size() / 8 * 8);
    waiting_.erase(0, header_.size());
    headerLeft_ = header_;
    headerPending_ = true;
  }
  bool sendHeader() {
    waiting_.swap(headerLeft_);
    drain();
    waiting_.swap(headerLeft_);
    if (room_ == 0) return false;
    headerPending_ = false;
    return true;
  }

  Step put(const Pairs& pairs, const BlockCodes& codes, int flush) {
    size_t done = 0;
    for (; done < pairs.size() && room_ > 0; ++done) {
      waiting_ += bitsOf(pairs[done], codes);
      drain();
    }
    if (done < pairs.size()) return stop(done);
    waiting_ += codes.symbols[256];
    if (flush == orbLZ77FlushSync || flush == orbLZ77FlushRestart) {
      waiting_ += "000";
      pad();
      marker_ = 4;
      return putMarker(done);
    }
    if (flush == orbLZ77FlushFinish && srcLeft == 0) return finish(done);
    return end(orbStsNoErr, 4, done);
  }
  Step putMarker(size_t done) {
    drain();
    for (; waiting_.empty() && marker_ > 0 && room_ > 0; --marker_) write(marker_ > 2 ? 0 : 255);
    return marker_ > 0 ? stop(done) : end(orbStsNoErr, 4, done);
  }
  Step finish(size_t done) {
    pad();
    drain();
    if (!waiting_.empty()) return stop(done);
    return end(srcLeft == 0 ? orbStsStreamEnd : orbStsNoErr, 5, done);
  }
  bool resumes(int flush, Step& step) {
    if ((flush == orbLZ77FlushSync || flush == orbLZ77FlushRestart) && marker_ > 0) {
      step = putMarker(0);
      return true;
    }
    if (flush == orbLZ77FlushFinish) {
      step = finish(0);
      return true;
    }
    return false;
  }

  std::string waiting_, saved_;
  std::string header_, headerLeft_;
  bool headerPending_ = false;
  bool headerReady_ = false;
  int mode_ = 0;
  int marker_ = 0;
  size_t storedLeft_ = 0;
  DynamicBlock block_;
  size_t room_ = 0;
  Bytes written_;
};

}  // namespace lz77
}  // namespace orbtest

#endif
