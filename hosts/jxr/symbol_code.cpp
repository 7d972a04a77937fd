#include "hosts/jxr/symbol_code.h"

#include <algorithm>

namespace orbhost::jxr {

namespace {

constexpr int kBalanceToSwitch = 8;
constexpr int kLargestBalance = 64;

}  // namespace

constexpr SymbolCode kSignificanceCode = {
    {{2, 2}, {1, 3}, {1, 5}, {1, 4}, {3, 2}, {2, 3}, {0, 5}, {3, 3}}};
constexpr SymbolCode kChromaCountCode = {{{1, 1}, {1, 2}, {0, 3}, {1, 3}}};

constexpr CodePair kLevelCodes = {{{{{1, 2}, {2, 2}, {3, 2}, {1, 3}, {1, 4}, {0, 5}, {1, 5}}},
                                   {{{1, 1}, {1, 2}, {1, 3}, {1, 4}, {1, 5}, {0, 6}, {1, 6}}}},
                                  {1, 0, -1, -1, -1, -1, -1}};
constexpr CodePair kCountCodes = {
    {{{{1, 1}, {1, 2}, {1, 3}, {0, 4}, {1, 4}}}, {{{1, 1}, {0, 3}, {1, 3}, {2, 3}, {3, 3}}}},
    {0, -1, 0, 1, 1}};
constexpr CodePair kPatternCodes = {
    {{{{2, 3}, {0, 5}, {2, 4}, {1, 5}, {2, 5}, {1, 1}, {3, 3}, {3, 5}, {3, 4}}},
     {{{1, 1}, {1, 3}, {2, 3}, {1, 4}, {1, 6}, {3, 3}, {1, 5}, {0, 7}, {1, 7}}}},
    {2, 2, 1, 1, -1, -2, -2, -2, -3}};

void AdaptiveCode::adapt() {
  if (balance_ < -kBalanceToSwitch && table_ == 1) {
    table_ = 0;
    balance_ = 0;
  } else if (balance_ > kBalanceToSwitch && table_ == 0) {
    table_ = 1;
    balance_ = 0;
  } else {
    balance_ = std::clamp(balance_, -kLargestBalance, kLargestBalance);
  }
}

}  // namespace orbhost::jxr
