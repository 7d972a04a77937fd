#include "hosts/jpeg/progression.h"

#include <algorithm>

namespace orbhost::jpeg {

namespace {

constexpr int kHighestBit = 13;

std::string coefficient(int k, int component) {
  return "coefficient " + std::to_string(k) + " of component " + std::to_string(component);
}

// What is wrong with a progressive scan by itself.
std::optional<std::string> faultOf(size_t components, const Selection& selection) {
  const auto& [ss, se, ah, al] = selection;
  if (ss < 0 || se < ss || se > 63) {
    return "coefficients " + std::to_string(ss) + " to " + std::to_string(se) + " are no band";
  }
  if (al < 0 || al > kHighestBit) {
    return "a scan ends with bit 0 to " + std::to_string(kHighestBit) + ", not " +
           std::to_string(al);
  }
  if (ah != 0 && ah != al + 1) {
    return "a refinement adds one bit, and does not go from bit " + std::to_string(ah) + " to " +
           std::to_string(al);
  }
  if (ss == 0 && se > 0) return "DC and AC coefficients do not share a scan";
  if (ss > 0 && components > 1) return "AC coefficients of several components do not share a scan";
  return std::nullopt;
}

}  // namespace

Progression::Progression(int components, bool progressive)
    : progressive_(progressive), known_(components) {
  for (auto& component : known_) component.fill(kUnknown);
}

std::optional<std::string> Progression::add(const std::vector<int>& components,
                                            const Selection& selection) {
  if (progressive_) {
    if (auto fault = faultOf(components.size(), selection)) return fault;
  }
  for (const int component : components) {
    auto fault = progressive_ ? addProgressive(component, selection) : addSequential(component);
    if (fault) return fault;
  }
  return std::nullopt;
}

bool Progression::isShowable() const {
  return std::all_of(known_.begin(), known_.end(),
                     [](const auto& component) { return component[0] != kUnknown; });
}

std::optional<std::string> Progression::addSequential(int component) {
  if (known_[component][0] != kUnknown) {
    return "a second scan of component " + std::to_string(component);
  }
  known_[component].fill(0);
  return std::nullopt;
}

std::optional<std::string> Progression::addProgressive(int component, const Selection& selection) {
  std::array<int8_t, 64>& known = known_[component];
  if (selection.ss > 0 && known[0] == kUnknown) {
    return "AC coefficients of component " + std::to_string(component) + " come before its DC";
  }
  for (int k = selection.ss; k <= selection.se; ++k) {
    if (selection.ah == 0 && known[k] != kUnknown) {
      return coefficient(k, component) + " is coded a second time";
    }
    if (selection.ah != 0 && known[k] == kUnknown) {
      return coefficient(k, component) + " is refined before it is coded";
    }
    if (selection.ah != 0 && known[k] != selection.ah) {
      return coefficient(k, component) + " is refined from bit " + std::to_string(selection.ah) +
             ", but known down to bit " + std::to_string(known[k]);
    }
    known[k] = static_cast<int8_t>(selection.al);
  }
  return std::nullopt;
}

}  // namespace orbhost::jpeg
