// The variable-length codes that a host reads and writes itself (ITU-T T.832): those of the DC
// band and of the patterns of coded blocks.
#ifndef ORB_HOSTS_JXR_SYMBOL_CODE_H
#define ORB_HOSTS_JXR_SYMBOL_CODE_H

#include <array>
#include <cstdint>

#include "hosts/jxr/bits.h"

namespace orbhost::jxr {

struct Codeword {
  uint8_t bits;
  uint8_t length;
};

// A code of up to 9 symbols, none longer than 7 bits.
class SymbolCode {
 public:
  template <size_t kSymbols>
  constexpr SymbolCode(const Codeword (&words)[kSymbols]) {
    for (size_t symbol = 0; symbol < kSymbols; ++symbol) {
      const Codeword word = words[symbol];
      words_[symbol] = word;
      const int free = kLongest - word.length;
      for (int i = 0; i < 1 << free; ++i) {
        symbols_[(word.bits << free) + i] = static_cast<uint8_t>(symbol);
      }
    }
  }

  int read(BitReader& from) const {
    const int symbol = symbols_[from.peek(kLongest)];
    from.skip(words_[symbol].length);
    return symbol;
  }
  void write(int symbol, BitWriter& to) const {
    to.put(words_[symbol].bits, words_[symbol].length);
  }

 private:
  static constexpr int kLongest = 7;

  std::array<Codeword, 9> words_{};
  std::array<uint8_t, 1 << kLongest> symbols_{};
};

extern const SymbolCode kSignificanceCode;  // which of three channels have a DC level
extern const SymbolCode kChromaCountCode;   // how many of four blocks of chroma are coded

// Two codes for one alphabet, and a balance of the symbols that decides which of them is in use.
struct CodePair {
  SymbolCode code[2];
  std::array<int8_t, 9> weight;  // of each symbol
};
extern const CodePair kLevelCodes;    // levels of the DC band: 7 symbols
extern const CodePair kCountCodes;    // of quarters, or of blocks in a quarter: 5 symbols
extern const CodePair kPatternCodes;  // of blocks in a quarter, with chroma: 9 symbols

class AdaptiveCode {
 public:
  explicit AdaptiveCode(const CodePair& pair) : pair_(&pair) {}

  int read(BitReader& from) { return counted(pair_->code[table_].read(from)); }
  void write(int symbol, BitWriter& to) { pair_->code[table_].write(counted(symbol), to); }
  // At the ends of some macroblocks.
  void adapt();

 private:
  int counted(int symbol) {
    balance_ += pair_->weight[symbol];
    return symbol;
  }

  const CodePair* pair_;
  int table_ = 0;
  int balance_ = 0;
};

}  // namespace orbhost::jxr

#endif
