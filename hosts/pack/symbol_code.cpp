#include "hosts/pack/symbol_code.h"

#include <algorithm>
#include <array>
#include <memory>
#include <new>
#include <numeric>
#include <string>
#include <vector>

#include "hosts/pack/damage.h"
#include "orb90legacy.h"

namespace orbhost::pack {

namespace {

constexpr size_t kGroup = 50;
constexpr int kMostCodes = 4;
constexpr int kRounds = 4;            // of choosing codes and making them anew
constexpr size_t kWorthACode = 2000;  // symbols
constexpr Orb32s kMissing = 20;       // bits that a symbol would take of a code that lacks it
constexpr size_t kLargestTable = 256;
constexpr size_t kLengthBytes = 3;

using Counts = std::array<Orb32s, 256>;
using Lengths = std::array<Orb32s, 256>;

struct Free {
  void operator()(OrbHuffState* state) const { legacy90orbsHuffFree_8u(state); }
};
using State = std::unique_ptr<OrbHuffState, Free>;

State makeEncoder(const Counts& counts) {
  OrbHuffState* state = nullptr;
  const OrbStatus status = legacy90orbsEncodeHuffInitAlloc_8u(counts.data(), &state);
  State owner(state);
  if (status == orbStsNullPtrErr) throw std::bad_alloc();
  // As few symbols as there are in a section make no longer code.
  if (status != orbStsNoErr) throw Error("the symbols make no Huffman code");
  return owner;
}

Lengths lengthsOf(const State& state) {
  Lengths lengths;
  legacy90orbsHuffGetLenCodeTable_8u(lengths.data(), state.get());
  return lengths;
}

// ---- Streams

void appendStream(ByteView symbols, Bytes& to) {
  Counts counts{};
  for (size_t i = 0; i < symbols.size; ++i) ++counts[symbols[i]];
  const State encoder = makeEncoder(counts);
  const Lengths lengths = lengthsOf(encoder);

  uint8_t table[kLargestTable];
  Orb32s size = sizeof table;
  legacy90orbsHuffLenCodeTablePack_8u(lengths.data(), table, &size);
  to.insert(to.end(), table, table + size);

  Orb32s room = 0;
  const Orb32s count = static_cast<Orb32s>(symbols.size);
  legacy90orbsHuffGetDstBuffSize_8u(lengths.data(), count, &room, nullptr);
  Bytes bits(static_cast<size_t>(room));
  Orb32s whole = 0;
  Orb32s rest = 0;
  legacy90orbsEncodeHuff_8u(symbols.data, count, bits.data(), &whole, encoder.get());
  legacy90orbsEncodeHuffFinal_8u(bits.data() + whole, &rest, encoder.get());
  bits.resize(static_cast<size_t>(whole + rest));
  appendNumber(bits.size(), kLengthBytes, to);
  to.insert(to.end(), bits.begin(), bits.end());
}

// The table does not tell its own length: it is read byte by byte until it is whole.
Lengths readTable(Input& input) {
  Lengths lengths;
  Bytes table;
  while (table.size() < kLargestTable) {
    table.push_back(static_cast<uint8_t>(input.number(1)));
    Orb32s size = static_cast<Orb32s>(table.size());
    if (legacy90orbsHuffLenCodeTableUnpack_8u(table.data(), &size, lengths.data()) == orbStsNoErr) {
      return lengths;
    }
  }
  failDamaged();
}

Bytes readStream(Input& input, size_t count) {
  const Lengths lengths = readTable(input);
  OrbHuffState* state = nullptr;
  const OrbStatus status = legacy90orbsDecodeHuffInitAlloc_8u(lengths.data(), &state);
  const State decoder(state);
  if (status == orbStsNullPtrErr) throw std::bad_alloc();
  if (status != orbStsNoErr) failDamaged();
  const size_t size = input.number(kLengthBytes);
  const Bytes bits = input.bytes(size);
  Bytes symbols(count);
  Orb32s decoded = static_cast<Orb32s>(count);
  if (bits.empty() ||
      legacy90orbsDecodeHuff_8u(bits.data(), static_cast<Orb32s>(bits.size()), symbols.data(),
                                &decoded, decoder.get()) != orbStsNoErr ||
      static_cast<size_t>(decoded) != count) {
    failDamaged();
  }
  return symbols;
}

// ---- Choices

size_t groupsOf(size_t symbols) {
  return (symbols + kGroup - 1) / kGroup;
}

ByteView groupOf(ByteView symbols, size_t group) {
  const size_t first = group * kGroup;
  return {symbols.data + first, std::min(kGroup, symbols.size - first)};
}

// At first by the size of the symbols, then by what each code would cost.
std::vector<uint8_t> chooseCodes(ByteView symbols, int codes) {
  const size_t groups = groupsOf(symbols.size);
  std::vector<size_t> order(groups);
  std::vector<size_t> sizes(groups);
  for (size_t g = 0; g < groups; ++g) {
    order[g] = g;
    const ByteView group = groupOf(symbols, g);
    for (size_t i = 0; i < group.size; ++i) {
      for (int value = group[i]; value > 1; value /= 2) ++sizes[g];
    }
  }
  std::stable_sort(order.begin(), order.end(),
                   [&](size_t a, size_t b) { return sizes[a] < sizes[b]; });
  std::vector<uint8_t> choices(groups);
  for (size_t rank = 0; rank < groups; ++rank) {
    choices[order[rank]] = static_cast<uint8_t>(rank * codes / groups);
  }

  for (int round = 0; round < kRounds; ++round) {
    std::vector<Counts> counts(codes, Counts{});
    for (size_t g = 0; g < groups; ++g) {
      const ByteView group = groupOf(symbols, g);
      for (size_t i = 0; i < group.size; ++i) ++counts[choices[g]][group[i]];
    }
    std::vector<Lengths> costs;
    for (const Counts& one : counts) {
      const bool isUsed = std::accumulate(one.begin(), one.end(), 0) > 0;
      costs.push_back(isUsed ? lengthsOf(makeEncoder(one)) : Lengths{});
      for (Orb32s& cost : costs.back()) cost = cost == 0 ? kMissing : cost;
    }
    for (size_t g = 0; g < groups; ++g) {
      const ByteView group = groupOf(symbols, g);
      std::array<Orb32s, kMostCodes> bits{};
      for (int code = 0; code < codes; ++code) {
        for (size_t i = 0; i < group.size; ++i) bits[code] += costs[code][group[i]];
      }
      choices[g] =
          static_cast<uint8_t>(std::min_element(bits.begin(), bits.begin() + codes) - bits.begin());
    }
  }
  return choices;
}

// Choices as places in the list of codes, and back.
class ChoiceList {
 public:
  ChoiceList() { std::iota(codes_.begin(), codes_.end(), uint8_t{0}); }

  uint8_t placeOf(uint8_t code) {
    const auto place = std::find(codes_.begin(), codes_.end(), code);
    const uint8_t result = static_cast<uint8_t>(place - codes_.begin());
    std::rotate(codes_.begin(), place, place + 1);
    return result;
  }
  uint8_t codeAt(uint8_t place) {
    const uint8_t code = codes_[place];
    std::rotate(codes_.begin(), codes_.begin() + place, codes_.begin() + place + 1);
    return code;
  }

 private:
  std::array<uint8_t, kMostCodes> codes_;
};

}  // namespace

void appendSymbols(ByteView symbols, Bytes& to) {
  const int codes = static_cast<int>(std::min<size_t>(kMostCodes, 1 + symbols.size / kWorthACode));
  const std::vector<uint8_t> choices = chooseCodes(symbols, codes);
  std::vector<Bytes> streams(codes);
  for (size_t g = 0; g < choices.size(); ++g) {
    const ByteView group = groupOf(symbols, g);
    streams[choices[g]].insert(streams[choices[g]].end(), group.data, group.data + group.size);
  }
  to.push_back(static_cast<uint8_t>(codes));
  if (codes > 1) {
    ChoiceList list;
    Bytes places;
    for (const uint8_t choice : choices) places.push_back(list.placeOf(choice));
    appendStream(places, to);
  }
  for (const Bytes& stream : streams) {
    if (!stream.empty()) appendStream(stream, to);
  }
}

Bytes readSymbols(Input& input, size_t count) {
  const size_t codes = input.number(1);
  if (codes < 1 || codes > kMostCodes) failDamaged();
  std::vector<uint8_t> choices(groupsOf(count));
  if (codes > 1) {
    ChoiceList list;
    const Bytes places = readStream(input, choices.size());
    for (size_t g = 0; g < choices.size(); ++g) {
      if (places[g] >= codes) failDamaged();
      choices[g] = list.codeAt(places[g]);
    }
  }

  Bytes symbols(count);
  std::array<size_t, kMostCodes> counts{};
  for (size_t g = 0; g < choices.size(); ++g) {
    counts[choices[g]] += std::min(kGroup, count - g * kGroup);
  }
  std::array<Bytes, kMostCodes> streams;
  for (size_t code = 0; code < codes; ++code) {
    if (counts[code] > 0) streams[code] = readStream(input, counts[code]);
  }
  std::array<size_t, kMostCodes> taken{};
  for (size_t g = 0; g < choices.size(); ++g) {
    const size_t size = std::min(kGroup, count - g * kGroup);
    const uint8_t* const from = streams[choices[g]].data() + taken[choices[g]];
    std::copy_n(from, size, symbols.data() + g * kGroup);
    taken[choices[g]] += size;
  }
  return symbols;
}

}  // namespace orbhost::pack
