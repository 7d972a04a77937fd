// Coefficient coding of JPEG XR once more, from the rules of ITU-T T.832 and at no speed: bits are
// text, codes are looked for one by one, and positions are numbered as the standard does, so that
// every form of a block ends with position 15.
#ifndef ORB_TESTS_JPEGXR_COEFFICIENT_MODEL_H
#define ORB_TESTS_JPEGXR_COEFFICIENT_MODEL_H

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/bit_string.h"

namespace orbtest::jxr {

// ---- Codes

// By number of symbols, table and symbol: the code and its length.
using CodeTable = std::vector<std::pair<int, int>>;
inline const std::vector<CodeTable>& codeTables(int symbols) {
  static const std::map<int, std::vector<CodeTable>> tables = {
      {5, {{{1, 1}, {1, 2}, {1, 3}, {0, 4}, {1, 4}}, {{1, 1}, {0, 3}, {1, 3}, {2, 3}, {3, 3}}}},
      {6,
       {{{1, 1}, {0, 5}, {1, 3}, {1, 5}, {1, 2}, {1, 4}},
        {{1, 2}, {0, 4}, {2, 2}, {1, 4}, {3, 2}, {1, 3}},
        {{0, 4}, {1, 4}, {1, 2}, {2, 2}, {3, 2}, {1, 3}},
        {{0, 5}, {1, 5}, {1, 2}, {1, 1}, {1, 4}, {1, 3}}}},
      {7,
       {{{1, 2}, {2, 2}, {3, 2}, {1, 3}, {1, 4}, {0, 5}, {1, 5}},
        {{1, 1}, {1, 2}, {1, 3}, {1, 4}, {1, 5}, {0, 6}, {1, 6}}}},
      {12,
       {{{1, 5},
         {1, 6},
         {0, 7},
         {1, 7},
         {4, 5},
         {2, 3},
         {5, 5},
         {1, 1},
         {6, 5},
         {1, 4},
         {7, 5},
         {3, 3}},
        {{2, 4},
         {2, 5},
         {0, 6},
         {1, 6},
         {3, 4},
         {2, 3},
         {3, 5},
         {3, 2},
         {3, 3},
         {4, 3},
         {1, 5},
         {5, 3}},
        {{3, 2},
         {1, 3},
         {0, 7},
         {1, 7},
         {1, 5},
         {2, 3},
         {2, 7},
         {3, 3},
         {4, 3},
         {5, 3},
         {3, 7},
         {1, 4}},
        {{1, 3},
         {3, 2},
         {0, 7},
         {1, 5},
         {2, 5},
         {2, 3},
         {1, 7},
         {3, 3},
         {3, 5},
         {4, 3},
         {1, 6},
         {5, 3}},
        {{2, 3},
         {1, 1},
         {1, 7},
         {1, 4},
         {2, 7},
         {3, 3},
         {0, 8},
         {2, 4},
         {3, 7},
         {3, 4},
         {1, 8},
         {1, 5}}}}};
  return tables.at(symbols);
}

// The standard's changes of a discriminant when it stands between tables `row` and `row` + 1.
inline int changeBetween(int symbols, int row, int symbol) {
  static const std::map<int, std::vector<std::vector<int>>> rows = {
      {5, {{0, 0, 0, 0, 0}}},
      {7, {{1, 0, -1, -1, -1, -1, -1}}},
      {6, {{-1, 1, 1, 1, 0, 1}, {-2, 0, 0, 2, 0, 0}, {-1, -1, 0, 1, -2, 0}}},
      {12,
       {{1, 1, 1, 1, 1, 0, 0, -1, 2, 1, 0, 0},
        {2, 2, -1, -1, -1, 0, -2, -1, 0, 0, -2, -1},
        {-1, 1, 0, 2, 0, 0, 0, 0, -2, 0, 1, 1},
        {0, 1, 0, 1, -2, 0, -1, -1, -2, -1, -2, -2}}}};
  const auto& all = rows.at(symbols);
  const int last = static_cast<int>(all.size()) - 1;
  return all[static_cast<size_t>(std::clamp(row, 0, last))][static_cast<size_t>(symbol)];
}

// The adaptive coder of an alphabet. It watches the way to the table below and that to the table
// above; alphabets with two tables have one way only.
struct Coder {
  int symbols = 5;
  int table = 0;
  int below = 0, above = 0;

  explicit Coder(int count) : symbols(count), table(count == 6 || count == 12 ? 1 : 0) {}
  int tables() const { return static_cast<int>(codeTables(symbols).size()); }

  void count(int symbol) {
    below += changeBetween(symbols, table - 1, symbol);
    above += changeBetween(symbols, tables() == 2 ? table - 1 : table, symbol);
  }
  void adapt() {
    int step = 0;
    if (table > 0 && below < -8) {
      step = -1;
    } else if (table + 1 < tables() && above > 8) {
      step = 1;
    }
    table += step;
    below = step != 0 ? 0 : std::clamp(below, -64, 64);
    above = step != 0 ? 0 : std::clamp(above, -64, 64);
  }
  std::string encode(int symbol) {
    const auto [code, length] =
        codeTables(symbols)[static_cast<size_t>(table)][static_cast<size_t>(symbol)];
    count(symbol);
    return binary(code, length);
  }
};

// ---- Bits to read, zeros without end behind them

struct BitSource {
  std::string bits;
  size_t at = 0;

  bool next() {
    const bool set = at < bits.size() && bits[at] == '1';
    ++at;
    return set;
  }
  int64_t take(int n) {
    int64_t value = 0;
    for (int i = 0; i < n; ++i) value = 2 * value + (next() ? 1 : 0);
    return value;
  }
  int symbol(Coder& coder) {
    const CodeTable& table = codeTables(coder.symbols)[static_cast<size_t>(coder.table)];
    int code = 0;
    for (int length = 1;; ++length) {
      code = 2 * code + (next() ? 1 : 0);
      const auto found = std::find(table.begin(), table.end(), std::make_pair(code, length));
      if (found == table.end()) continue;
      const int symbol = static_cast<int>(found - table.begin());
      coder.count(symbol);
      return symbol;
    }
  }
};

// ---- Scans

struct Scan {
  std::vector<int> order;
  std::vector<int64_t> weights;

  explicit Scan(std::vector<int> start) : order(std::move(start)) { reset(); }
  void reset() {
    weights = {32767};
    for (int weight = 32; weight >= 4; weight -= 2) weights.push_back(weight);
  }
  void use(size_t position) {
    ++weights[position];
    if (weights[position] > weights[position - 1]) {
      std::swap(weights[position], weights[position - 1]);
      std::swap(order[position], order[position - 1]);
    }
  }
};

// The column and row of each natural index.
inline const std::array<std::pair<int, int>, 16>& places() {
  static const std::array<std::pair<int, int>, 16> list = {{{0, 0},
                                                            {1, 0},
                                                            {0, 1},
                                                            {1, 1},
                                                            {3, 0},
                                                            {2, 0},
                                                            {3, 1},
                                                            {2, 1},
                                                            {0, 3},
                                                            {1, 3},
                                                            {0, 2},
                                                            {1, 2},
                                                            {3, 3},
                                                            {2, 3},
                                                            {3, 2},
                                                            {2, 2}}};
  return list;
}

// ---- Blocks

struct RunLevel {
  int run;
  int64_t level;
};

// The coders of a kind of blocks: of the first index, of later ones by context, of levels by
// context.
struct BlockCoders {
  Coder first{12};
  std::array<Coder, 2> later = {Coder{6}, Coder{6}};
};
using LevelCoders = std::array<Coder, 2>;

struct Range {
  int base, bits;
};
inline std::vector<Range> runRanges(int room) {
  if (room <= 6) return {{1, 0}, {2, 0}, {3, 0}, {4, 0}, {5, 1}};
  if (room <= 10) return {{1, 0}, {2, 0}, {3, 1}, {5, 1}, {7, 2}};
  return {{1, 0}, {2, 0}, {3, 1}, {5, 1}, {7, 3}};
}
inline const std::vector<Range>& levelRanges() {
  static const std::vector<Range> ranges = {{2, 0}, {3, 0}, {4, 1}, {6, 2}, {10, 2}, {14, 2}};
  return ranges;
}
inline const std::vector<std::string>& shortRuns(int room) {
  static const std::vector<std::vector<std::string>> codes = {
      {}, {""}, {"1", "0"}, {"1", "01", "00"}, {"1", "01", "001", "000"}};
  return codes[static_cast<size_t>(room)];
}
// Of the indexes 0 to 3 at position 14.
inline const std::vector<std::string>& lateIndexes() {
  static const std::vector<std::string> codes = {"0", "110", "10", "111"};
  return codes;
}

struct Model {
  Coder run{5};
  std::array<BlockCoders, 2> lowPass, highPass;  // by colour class
  LevelCoders lowPassLevels = {Coder{7}, Coder{7}}, highPassLevels = {Coder{7}, Coder{7}};
  std::array<Scan, 3> scans = {
      Scan({0, 10, 2, 12, 5, 9, 4, 8, 1, 13, 6, 15, 14, 3, 11, 7}),
      Scan({0, 5, 10, 12, 1, 2, 8, 4, 6, 9, 3, 14, 13, 7, 11, 15}),
      Scan({0, 1, 4, 5, 2, 8, 6, 9, 3, 12, 10, 7, 13, 11, 14, 15}),
  };
  size_t scan = 2;

  void adapt(int kind) {
    for (BlockCoders& coders : kind == 0 ? lowPass : highPass) {
      coders.first.adapt();
      for (Coder& coder : coders.later) coder.adapt();
    }
    for (Coder& coder : kind == 0 ? lowPassLevels : highPassLevels) coder.adapt();
    if (kind == 0) run.adapt();
  }

  // ---- Writing

  std::string encodeLevel(Coder& coder, int64_t magnitude) {
    const auto& ranges = levelRanges();
    for (size_t symbol = 0; symbol < ranges.size(); ++symbol) {
      const int64_t extra = magnitude - ranges[symbol].base;
      if (extra < 1 << ranges[symbol].bits) {
        return coder.encode(static_cast<int>(symbol)) + binary(extra, ranges[symbol].bits);
      }
    }
    magnitude = std::min<int64_t>(magnitude, (int64_t{1} << 30) + 1);
    int n = 4;
    while (magnitude - 2 >= int64_t{2} << n) ++n;
    std::string bits = coder.encode(6);
    bits += binary(std::min(n - 4, 15), 4);
    if (n >= 19) bits += binary(std::min(n - 19, 3), 2);
    if (n >= 22) bits += binary(n - 22, 3);
    return bits + binary(magnitude - 2 - (int64_t{1} << n), n);
  }
  std::string encodeRun(int room, int length) {
    if (room < 5) return shortRuns(room)[static_cast<size_t>(length - 1)];
    const std::vector<Range> ranges = runRanges(room);
    for (size_t symbol = ranges.size(); symbol-- > 0;) {
      if (length < ranges[symbol].base) continue;
      return run.encode(static_cast<int>(symbol)) +
             binary(length - ranges[symbol].base, ranges[symbol].bits);
    }
    std::abort();
  }
  // A list that starts at a position: 1 for 15 coefficients, 2 for 14, 10 for 6.
  std::string encode(const std::vector<RunLevel>& list, int start, BlockCoders& coders,
                     LevelCoders& levels) {
    std::string bits;
    int position = start;
    bool context = false;
    for (size_t i = 0; i < list.size(); ++i) {
      const auto [zeros, level] = list[i];
      const bool isLarge = std::abs(level) > 1;
      const int follows = i + 1 == list.size() ? 0 : list[i + 1].run == 0 ? 1 : 2;
      std::string runBits = zeros == 0 ? "" : encodeRun(15 - position, zeros);
      position += zeros;
      std::string index, sign = level < 0 ? "1" : "0";
      if (i == 0) {
        index = coders.first.encode(4 * follows + 2 * isLarge + (zeros == 0));
        context = zeros == 0 && follows == 1;
        bits += index + sign;
        if (isLarge) bits += encodeLevel(levels[context], std::abs(level));
        bits += runBits;
      } else {
        const int symbol = 2 * follows + isLarge;
        if (position == 15) {
          index = isLarge ? "1" : "0";
        } else if (position == 14) {
          index = lateIndexes()[static_cast<size_t>(symbol)];
        } else {
          index = coders.later[context].encode(symbol);
        }
        context = context && follows == 1;
        bits += runBits + index + sign;
        if (isLarge) bits += encodeLevel(levels[context], std::abs(level));
      }
      ++position;
    }
    return bits;
  }

  // ---- Reading

  int64_t decodeLevel(BitSource& source, Coder& coder) {
    const int symbol = source.symbol(coder);
    if (symbol < 6) {
      const Range range = levelRanges()[static_cast<size_t>(symbol)];
      return range.base + source.take(range.bits);
    }
    int64_t n = source.take(4) + 4;
    if (n == 19) n += source.take(2);
    if (n == 22) n += source.take(3);
    return (int64_t{1} << n) + source.take(static_cast<int>(n)) + 2;
  }
  int decodeRun(BitSource& source, int room) {
    if (room >= 5) {
      const Range range = runRanges(room)[static_cast<size_t>(source.symbol(run))];
      return range.base + static_cast<int>(source.take(range.bits));
    }
    for (int length = 1; length < room; ++length) {
      if (source.next()) return length;
    }
    return std::max(room, 1);
  }
  int decodeIndex(BitSource& source, Coder& coder, int position) {
    if (position == 15) return source.next();
    if (position < 14) return source.symbol(coder);
    if (!source.next()) return 0;
    if (!source.next()) return 2;
    return source.next() ? 3 : 1;
  }

  // What a stream holds: positions and levels, and whether it leads out of the block, and then
  // whether by a run.
  struct Read {
    std::vector<std::pair<int, int64_t>> levels;
    bool leadsOut = false;
    bool byRun = false;
  };
  Read decode(BitSource& source, int start, BlockCoders& coders, LevelCoders& levels) {
    Read read;
    int position = start;
    const int first = source.symbol(coders.first);
    const bool isNegative = source.next();
    int follows = first / 4;
    bool context = first % 2 == 1 && follows == 1;
    const int64_t level = first / 2 % 2 == 1 ? decodeLevel(source, levels[context]) : 1;
    if (first % 2 == 0) position += decodeRun(source, 15 - position);
    if (position > 15) return {{}, true, true};
    read.levels.emplace_back(position++, isNegative ? -level : level);
    while (follows != 0) {
      if (position > 15) return {read.levels, true, false};
      if (follows == 2) position += decodeRun(source, 15 - position);
      if (position > 15) return {read.levels, true, true};
      const int index = decodeIndex(source, coders.later[context], position);
      const bool sign = source.next();
      follows = index / 2;
      context = context && follows == 1;
      const int64_t later = index % 2 == 1 ? decodeLevel(source, levels[context]) : 1;
      read.levels.emplace_back(position++, sign ? -later : later);
    }
    return read;
  }
};

}  // namespace orbtest::jxr

#endif
