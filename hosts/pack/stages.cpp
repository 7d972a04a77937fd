#include "hosts/pack/stages.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <vector>

#include "hosts/pack/damage.h"

namespace orbhost::pack {

namespace {

constexpr uint8_t kRunDigit = 1;  // the highest symbol that is a digit of a run of zeros
constexpr uint8_t kLarge = 255;   // in front of a number that is too large for a symbol
constexpr uint8_t kFirstLarge = 254;

// The intervals of a block take no more than this: it would be stored.
constexpr Orb32s kMostIntervals = 4 * kLargestBlock;
constexpr Orb32s kRanksRise = 2;  // the mode that follows a sorted block best

constexpr uint8_t kRunsFlag = 0x80;

void check(OrbStatus status) {
  if (status == orbStsMemAllocErr || status == orbStsNullPtrErr) throw std::bad_alloc();
  if (status < 0) throw Error("a block cannot be packed (status " + std::to_string(status) + ")");
}

Bytes withRuns(ByteView block) {
  Bytes runs(block.size * 3 / 2 + 2);
  Orb8u* next = const_cast<Orb8u*>(block.data);
  Orb32s left = static_cast<Orb32s>(block.size);
  Orb32s length = static_cast<Orb32s>(runs.size());
  check(legacy90orbsEncodeRLE_8u(&next, &left, runs.data(), &length));
  runs.resize(static_cast<size_t>(length));
  return runs;
}

Bytes withoutRuns(const Bytes& runs, size_t length) {
  Bytes block(length);
  Orb8u* next = const_cast<Orb8u*>(runs.data());
  Orb32s left = static_cast<Orb32s>(runs.size());
  Orb32s room = static_cast<Orb32s>(length);
  const OrbStatus status = legacy90orbsDecodeRLE_8u(&next, &left, block.data(), &room);
  if (status != orbStsNoErr || static_cast<size_t>(room) != length) failDamaged();
  return block;
}

// The digits of a run, the lowest first.
void appendRun(size_t length, Bytes& symbols) {
  while (length > 0) {
    const bool isTwo = length % 2 == 0;
    symbols.push_back(isTwo);
    length = (length - (isTwo ? 2 : 1)) / 2;
  }
}

void appendNumber(uint8_t number, Bytes& symbols) {
  if (number < kFirstLarge) {
    symbols.push_back(static_cast<uint8_t>(number + kRunDigit));
  } else {
    symbols.push_back(kLarge);
    symbols.push_back(static_cast<uint8_t>(number - kFirstLarge));
  }
}

}  // namespace

void StageHeader::appendTo(Bytes& to) const {
  const uint8_t first = static_cast<uint8_t>(ranking) | (hasRuns ? kRunsFlag : 0);
  to.insert(to.end(), {first, static_cast<uint8_t>(lastIndex), static_cast<uint8_t>(lastIndex >> 8),
                       static_cast<uint8_t>(row), static_cast<uint8_t>(row >> 8),
                       static_cast<uint8_t>(symbols), static_cast<uint8_t>(symbols >> 8),
                       static_cast<uint8_t>(symbols >> 16)});
}

StageHeader StageHeader::parse(const uint8_t* from) {
  StageHeader header;
  const uint8_t ranking = from[0] & ~kRunsFlag;
  if (ranking > static_cast<uint8_t>(Ranking::kIntervals)) failDamaged();
  header.ranking = static_cast<Ranking>(ranking);
  header.hasRuns = (from[0] & kRunsFlag) != 0;
  header.lastIndex = static_cast<uint16_t>(from[1] | from[2] << 8);
  header.row = static_cast<uint16_t>(from[3] | from[4] << 8);
  header.symbols = static_cast<uint32_t>(from[5] | from[6] << 8 | from[7] << 16);
  if (header.lastIndex >= kLargestBlock || header.row > header.lastIndex) failDamaged();
  return header;
}

Stages::Stages(Ranking ranking) : ranking_(ranking) {
  Orb32s size = 0;
  check(legacy90orbsBWTGetSize_SmallBlock_8u(kLargestBlock, &size));
  sortingMemory_.resize(static_cast<size_t>(size));
  Orb8u* table = nullptr;
  check(legacy90orbsMTFInitAlloc_8u(&table));
  firstTable_.reset(table);
}

StageHeader Stages::forward(ByteView block, Bytes& symbols) {
  StageHeader header;
  header.ranking = ranking_;
  const size_t before = symbols.size();
  // Run lengths cost the sorting some of its context, so they have to be worth it.
  const Bytes runs = withRuns(block);
  header.hasRuns = runs.size() < block.size * 3 / 4;
  const ByteView unsorted = header.hasRuns ? ByteView(runs) : block;
  header.lastIndex = static_cast<uint16_t>(unsorted.size - 1);

  Bytes sorted(unsorted.size);
  Orb32s row = 0;
  check(legacy90orbsBWTFwd_SmallBlock_8u(unsorted.data, sorted.data(),
                                         static_cast<Orb32s>(unsorted.size), &row,
                                         sortingMemory_.data()));
  header.row = static_cast<uint16_t>(row);
  if (ranking_ == Ranking::kMoveToFront) {
    moveToFront(sorted, symbols);
  } else {
    toIntervals(sorted, symbols);
  }
  header.symbols = static_cast<uint32_t>(symbols.size() - before);
  return header;
}

Bytes Stages::inverse(const StageHeader& header, ByteView symbols, size_t length) {
  const size_t sortedLength = size_t{header.lastIndex} + 1;
  if (!header.hasRuns && sortedLength != length) failDamaged();
  const Bytes sorted = header.ranking == Ranking::kMoveToFront
                           ? moveBack(symbols, sortedLength)
                           : fromIntervals(symbols, sortedLength);
  Bytes unsorted(sortedLength);
  check(legacy90orbsBWTInv_SmallBlock_8u(sorted.data(), unsorted.data(),
                                         static_cast<Orb32s>(sortedLength), header.row,
                                         sortingMemory_.data()));
  return header.hasRuns ? withoutRuns(unsorted, length) : unsorted;
}

void Stages::moveToFront(ByteView sorted, Bytes& symbols) const {
  uint8_t table[256];
  std::memcpy(table, firstTable_.get(), sizeof table);
  size_t zeros = 0;
  for (size_t i = 0; i < sorted.size; ++i) {
    const uint8_t byte = sorted[i];
    if (byte == table[0]) {
      ++zeros;
      continue;
    }
    appendRun(zeros, symbols);
    zeros = 0;
    const uint8_t* const place = static_cast<const uint8_t*>(std::memchr(table, byte, 256));
    const size_t number = static_cast<size_t>(place - table);
    std::memmove(table + 1, table, number);
    table[0] = byte;
    appendNumber(static_cast<uint8_t>(number), symbols);
  }
  appendRun(zeros, symbols);
}

Bytes Stages::moveBack(ByteView symbols, size_t length) const {
  uint8_t table[256];
  std::memcpy(table, firstTable_.get(), sizeof table);
  Bytes sorted;
  sorted.reserve(length);
  for (size_t i = 0; i < symbols.size;) {
    if (symbols[i] <= kRunDigit) {
      size_t run = 0;
      for (size_t weight = 1; i < symbols.size && symbols[i] <= kRunDigit; weight *= 2, ++i) {
        run += weight * (symbols[i] + 1u);
        if (run > length - sorted.size()) failDamaged();
      }
      sorted.insert(sorted.end(), run, table[0]);
      continue;
    }
    size_t number = symbols[i] - size_t{kRunDigit};
    if (symbols[i++] == kLarge) {
      if (i == symbols.size || symbols[i] > 1) failDamaged();
      number = size_t{kFirstLarge} + symbols[i++];
    }
    if (sorted.size() == length) failDamaged();
    const uint8_t byte = table[number];
    std::memmove(table + 1, table, number);
    table[0] = byte;
    sorted.push_back(byte);
  }
  if (sorted.size() != length) failDamaged();
  return sorted;
}

void Stages::toIntervals(ByteView sorted, Bytes& symbols) {
  if (!intervalEncoder_) {
    OrbGITEncState* state = nullptr;
    check(legacy90orbsEncodeGITInitAlloc_8u(kLargestBlock, kMostIntervals, &state));
    intervalEncoder_.reset(state);
  }
  Bytes coded(kMostIntervals);
  Orb32s length = 0;
  check(legacy90orbsEncodeGIT_8u(sorted.data, static_cast<Orb32s>(sorted.size), coded.data(),
                                 &length, kRanksRise, intervalEncoder_.get()));
  symbols.insert(symbols.end(), coded.begin(), coded.begin() + length);
}

Bytes Stages::fromIntervals(ByteView symbols, size_t length) {
  if (!intervalDecoder_) {
    OrbGITDecState* state = nullptr;
    check(legacy90orbsDecodeGITInitAlloc_8u(kMostIntervals, kLargestBlock, &state));
    intervalDecoder_.reset(state);
  }
  Bytes sorted(kLargestBlock);
  Orb32s decoded = 0;
  const OrbStatus status =
      legacy90orbsDecodeGIT_8u(symbols.data, static_cast<Orb32s>(symbols.size), sorted.data(),
                               &decoded, kRanksRise, intervalDecoder_.get());
  if (status != orbStsNoErr || static_cast<size_t>(decoded) != length) failDamaged();
  sorted.resize(length);
  return sorted;
}

}  // namespace orbhost::pack
