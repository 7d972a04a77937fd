// The GIT coder in strings of bits, slowly: the judge of the library's.
//
// The encoder here counts for each byte value what has passed since it last occurred. The decoder
// keeps for each rank a distance, how much has passed in all, and how much had at its last
// occurrence, and looks through all ranks for each byte.
#ifndef ORB_TESTS_COMPRESS_GIT_CODER_MODEL_H
#define ORB_TESTS_COMPRESS_GIT_CODER_MODEL_H

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "orb90legacy/compress.h"
#include "tests/support/bit_string.h"

namespace orbtest {

using Bytes = std::vector<Orb8u>;

// ---- Rice codes

// 2^k times a number, and what is left of one divided by 2^k, for any k.
inline uint32_t timesPower(uint32_t value, uint64_t k) {
  return k < 32 ? value << k : 0;
}
inline uint32_t byPower(uint32_t value, uint64_t k) {
  return k < 32 ? value >> k : 0;
}

class RiceStatistics {
 public:
  uint64_t k() const { return k_; }

  // Notes a value that was coded without an escape.
  void note(uint32_t value) {
    if (updates_ >= 8) {
      sum_ /= 2;
      count_ /= 2;
      updates_ = 0;
    }
    ++updates_;
    sum_ += value;
    ++count_;
    k_ = 1;
    while (count_ << k_ < sum_) ++k_;
  }

 private:
  uint32_t sum_ = 0;
  uint64_t count_ = 0;
  int updates_ = 0;
  uint64_t k_ = 10;
};

inline std::string remainderBits(uint32_t value, uint64_t k) {
  return binary(value, static_cast<int>(k));
}

inline std::string riceCode(uint32_t value, RiceStatistics& statistics) {
  uint64_t k = statistics.k();
  if (byPower(value, k) < 8) {
    const std::string code = std::string(byPower(value, k), '1') + '0' + remainderBits(value, k);
    statistics.note(value);
    return code;
  }
  std::string code(8, '1');
  value -= timesPower(8, k);
  for (k *= 2; byPower(value, k) >= 8; k *= 2) {
    code += '1';
    value -= timesPower(8, k);
  }
  return code + '0' + std::string(byPower(value, k), '1') + '0' + remainderBits(value, k);
}

// ---- Ranks

class RankList {
 public:
  RankList() {
    for (int rank = 0; rank < 256; ++rank) bytes_.push_back(255 - rank);
  }
  int byteAt(int rank) const { return bytes_[static_cast<size_t>(rank)]; }
  int rankOf(int byte) const {
    return static_cast<int>(std::find(bytes_.begin(), bytes_.end(), byte) - bytes_.begin());
  }
  void count(int rank) { ++counts_[static_cast<size_t>(byteAt(rank))]; }
  int countAt(int rank) const { return counts_[static_cast<size_t>(byteAt(rank))]; }

  // The rank that the byte of this one goes to, which is its own if it stays.
  int move(int rank, int mode) {
    int other = rank;
    if (mode == 2 && rank < 254 && countAt(rank + 1) + 1 <= countAt(rank)) other = rank + 1;
    if (mode <= 1 && mode >= 0 && rank >= 1 && rank <= 254 &&
        countAt(rank - 1) + 1 <= countAt(rank)) {
      other = rank - 1;
    }
    std::swap(bytes_[static_cast<size_t>(rank)], bytes_[static_cast<size_t>(other)]);
    return other;
  }

 private:
  std::vector<int> bytes_;
  std::vector<int> counts_ = std::vector<int>(256);
};

// ---- The encoder

class GITEncoder {
 public:
  explicit GITEncoder(size_t capacity) : capacity_(capacity) {}

  Bytes encode(const Bytes& block, int mode) {
    if (mode != 3) {
      for (int byte = 0; byte < 256; ++byte) occur(byte);
    }
    for (const Orb8u byte : block) {
      const int rank = ranks_.rankOf(byte);
      if (occur(byte)) ranks_.move(rank, mode);
    }
    put(0, static_cast<uint32_t>(ranks_.countAt(255)));
    Bytes coded;
    for (int byte = 255; byte >= 0; --byte) {
      // At least one bit to fill up with.
      const Bytes stream = packBits(streams_[static_cast<size_t>(byte)] + '1', '1');
      const Bytes length = packBits(binary(static_cast<int64_t>(stream.size()), 32));
      coded.insert(coded.end(), length.begin(), length.end());
      coded.insert(coded.end(), stream.begin(), stream.end());
    }
    return coded;
  }

 private:
  // Whether ranks may change.
  bool occur(int byte) {
    const int rank = ranks_.rankOf(byte);
    ranks_.count(rank);
    for (int lower = 0; lower < rank; ++lower) {
      ++passed_[static_cast<size_t>(ranks_.byteAt(lower))];
    }
    if (byte == 0) return false;
    const uint32_t interval = passed_[static_cast<size_t>(byte)];
    passed_[static_cast<size_t>(byte)] = 0;
    return put(byte, interval);
  }
  // What would fill a stream is cut off, and leaves no trace in the statistics.
  bool put(int byte, uint32_t value) {
    std::string& stream = streams_[static_cast<size_t>(byte)];
    RiceStatistics& statistics = statistics_[static_cast<size_t>(byte)];
    const RiceStatistics before = statistics;
    const std::string code = riceCode(value, statistics);
    if (stream.size() + code.size() < capacity_ * 8) {
      stream += code;
      return true;
    }
    statistics = before;
    stream = (stream + code).substr(0, capacity_ * 8);
    return false;
  }

  size_t capacity_;
  RankList ranks_;
  std::vector<uint32_t> passed_ = std::vector<uint32_t>(256);
  std::vector<std::string> streams_ = std::vector<std::string>(256);
  std::vector<RiceStatistics> statistics_ = std::vector<RiceStatistics>(256);
};

// ---- The decoder

class RiceReader {
 public:
  explicit RiceReader(std::string bits = "") : bits_(std::move(bits)) {}

  // False at the end of the stream, which is met where a bit is wanted behind the last one, or
  // where ones are counted and the last bit is one of them.
  bool take(uint32_t& value) {
    hasEnded_ = false;
    uint64_t k = statistics_.k();
    uint32_t ones = takeOnes(8);
    const bool isEscaped = ones == 8;
    value = 0;
    if (isEscaped) {
      do {
        value += timesPower(8, k);
        // No stream of a test has as many bits.
        k = std::min(k * 2, uint64_t{1} << 40);
      } while (takeOnes(1) == 1);
      ones = takeOnes(bits_.size());
    }
    value += timesPower(ones, k);
    if (hasEnded_ || bits_.size() - at_ < k) return false;
    uint32_t remainder = 0;
    for (; k > 0; --k) remainder = remainder * 2 + (bits_[at_++] == '1' ? 1 : 0);
    value += remainder;
    if (!isEscaped) statistics_.note(value);
    return true;
  }

 private:
  // A row of ones, and the zero behind it unless it is as long as can be.
  uint32_t takeOnes(size_t most) {
    uint32_t ones = 0;
    while (!hasEnded_ && ones < most) {
      hasEnded_ = at_ >= bits_.size() || (bits_[at_] == '1' && at_ + 1 == bits_.size());
      if (hasEnded_ || bits_[at_++] == '0') break;
      ++ones;
    }
    return ones;
  }

  std::string bits_;
  size_t at_ = 0;
  bool hasEnded_ = false;
  RiceStatistics statistics_;
};

struct GITDecoded {
  OrbStatus status = orbStsNoErr;
  Bytes block;
};

class GITDecoder {
 public:
  GITDecoded decode(const Bytes& coded, int mode, size_t room) {
    readStreams(coded);
    for (int rank = 0; rank < 256; ++rank) {
      Rank& r = ranks_[static_cast<size_t>(rank)];
      r.isFinished = !streams_[static_cast<size_t>(rank)].take(r.left);
      if (rank == 255 && r.left == 0) r.isFinished = true;
    }
    GITDecoded decoded;
    int primed = mode == 3 ? 0 : 256;
    for (int w = winner(); w >= 0; w = winner()) {
      const int byte = list_.byteAt(w);
      list_.count(w);
      Rank& won = ranks_[static_cast<size_t>(w)];
      won.mark = won.passed;
      ++won.hits;
      if (w == 255) {
        won.isFinished = --won.left == 0;
      } else {
        const bool isRead = streams_[static_cast<size_t>(255 - byte)].take(won.left);
        won.isFinished = !isRead || static_cast<int32_t>(won.left) < 0;
      }
      for (int lower = 0; lower < w; ++lower) ++ranks_[static_cast<size_t>(lower)].passed;
      if (primed > 0) {
        --primed;
        continue;
      }
      if (decoded.block.size() == room) {
        decoded.status = orbStsSizeErr;
        return decoded;
      }
      decoded.block.push_back(static_cast<Orb8u>(byte));
      changeRanks(w, list_.move(w, mode));
    }
    return decoded;
  }

 private:
  struct Rank {
    uint32_t left = 0;
    uint32_t mark = 0;
    uint32_t passed = 0;
    uint32_t hits = 0;
    bool isFinished = false;
  };

  void readStreams(const Bytes& coded) {
    std::string bits;
    for (const Orb8u byte : coded) bits += binary(byte, 8);
    size_t at = 0;
    for (RiceReader& stream : streams_) {
      if (bits.size() - at < 32) {
        at = bits.size();
        continue;
      }
      const uint64_t length = std::stoull(bits.substr(at, 32), nullptr, 2) * 8;
      at += 32;
      const std::string its =
          bits.substr(at, static_cast<size_t>(std::min<uint64_t>(length, bits.size() - at)));
      stream = RiceReader(its);
      at += its.size();
    }
  }

  // The lowest of the keys, which have 32 bits.
  int winner() const {
    int lowest = -1;
    int64_t least = 0;
    for (int rank = 0; rank < 256; ++rank) {
      const Rank& r = ranks_[static_cast<size_t>(rank)];
      if (r.isFinished) continue;
      const uint32_t distance = rank == 255 ? 0 : r.left - r.passed + r.mark;
      const int64_t key = static_cast<int32_t>(distance << 8) + rank;
      if (lowest >= 0 && key >= least) continue;
      lowest = rank;
      least = key;
    }
    return lowest;
  }

  void changeRanks(int w, int other) {
    if (other == w) return;
    Rank& a = ranks_[static_cast<size_t>(w)];
    Rank& b = ranks_[static_cast<size_t>(other)];
    a.mark = other > w ? b.mark + b.hits : b.mark - a.hits;
    b.mark = b.passed;
    std::swap(a.left, b.left);
    std::swap(a.isFinished, b.isFinished);
  }

  RankList list_;
  std::vector<Rank> ranks_ = std::vector<Rank>(256);
  std::vector<RiceReader> streams_ = std::vector<RiceReader>(256);
};

}  // namespace orbtest

#endif
