#include "hosts/jpeg/script.h"

#include <algorithm>
#include <cctype>
#include <numeric>

#include "hosts/error.h"
#include "hosts/jpeg/progression.h"

namespace orbhost::jpeg {

namespace {

// Goes through a script by its numbers and the signs between them.
class ScriptText {
 public:
  explicit ScriptText(const std::string& text) : text_(text) {}

  // The next sign other than white space, or 0 at the end.
  char next() {
    while (at_ < text_.size()) {
      if (text_[at_] == '#') {
        while (at_ < text_.size() && text_[at_] != '\n') ++at_;
      } else if (std::isspace(static_cast<unsigned char>(text_[at_])) != 0) {
        if (text_[at_++] == '\n') ++line_;
      } else {
        return text_[at_];
      }
    }
    return 0;
  }

  // Steps over a sign if it comes next.
  bool take(char sign) {
    if (next() != sign) return false;
    ++at_;
    return true;
  }

  bool isNumberNext() { return std::isdigit(static_cast<unsigned char>(next())) != 0; }

  int number(const char* what) {
    if (!isNumberNext()) fail(std::string("a number was expected: ") + what);
    int value = 0;
    while (at_ < text_.size() && std::isdigit(static_cast<unsigned char>(text_[at_])) != 0) {
      value = std::min(value * 10 + (text_[at_++] - '0'), 1000);
    }
    return value;
  }

  [[noreturn]] void fail(const std::string& what) const {
    throw Error("line " + std::to_string(line_) + ": " + what);
  }

 private:
  const std::string& text_;
  size_t at_ = 0;
  int line_ = 1;
};

ScriptScan parseScan(ScriptText& text) {
  ScriptScan scan;
  do {
    scan.components.push_back(text.number("a component"));
  } while (text.take(',') || text.isNumberNext());
  if (text.take(':')) {
    scan.selection.ss = text.number("the first coefficient");
    if (!text.take('-')) text.take(',');
    scan.selection.se = text.number("the last coefficient");
    text.take(',');
    scan.selection.ah = text.number("Ah");
    text.take(',');
    scan.selection.al = text.number("Al");
  }
  return scan;
}

// What is wrong with a list of components.
std::optional<std::string> faultOf(const std::vector<int>& components, const Frame& frame) {
  const int count = static_cast<int>(frame.components.size());
  int blocks = 0;
  for (size_t i = 0; i < components.size(); ++i) {
    if (components[i] >= count) {
      return "there is no component " + std::to_string(components[i]) + " in a picture of " +
             std::to_string(count);
    }
    if (i > 0 && components[i] <= components[i - 1]) return "components go upwards within a scan";
    const FrameComponent& component = frame.components[components[i]];
    blocks += component.h * component.v;
  }
  if (components.size() > 1 && blocks > 10) return "more than 10 blocks in an MCU";
  return std::nullopt;
}

}  // namespace

Script parseScript(const std::string& text) {
  ScriptText reader(text);
  Script script;
  while (reader.next() != 0) {
    script.push_back(parseScan(reader));
    if (!reader.take(';') && reader.next() != 0) {
      reader.fail("a scan ends with a semicolon, not with " + std::string(1, reader.next()));
    }
  }
  if (script.empty()) throw Error("there is no scan in it");
  return script;
}

bool isProgressive(const Script& script) {
  return std::any_of(script.begin(), script.end(), [](const ScriptScan& scan) {
    const auto& [ss, se, ah, al] = scan.selection;
    return ss != 0 || se != 63 || ah != 0 || al != 0;
  });
}

void checkScript(const Script& script, const Frame& frame) {
  Progression progression(static_cast<int>(frame.components.size()), frame.isProgressive());
  for (size_t i = 0; i < script.size(); ++i) {
    std::optional<std::string> fault = faultOf(script[i].components, frame);
    if (!fault) fault = progression.add(script[i].components, script[i].selection);
    if (fault) throw Error("scan " + std::to_string(i + 1) + " of the script: " + *fault);
  }
  if (!progression.isShowable()) throw Error("the script lacks the DC of a component");
}

Script sequentialScript(const Frame& frame) {
  std::vector<int> all(frame.components.size());
  std::iota(all.begin(), all.end(), 0);
  return {{all, {}}};
}

Script progressiveScript(const Frame& frame, bool hasChroma) {
  const std::vector<int> all = sequentialScript(frame)[0].components;
  std::vector<int> detailed;
  for (const int c : all) {
    if (!hasChroma || (c != 1 && c != 2)) detailed.push_back(c);
  }
  // Cr first, to which the eye is more sensitive than to Cb.
  const std::vector<int> chroma = hasChroma ? std::vector<int>{2, 1} : std::vector<int>{};

  Script script;
  const auto addEach = [&](const std::vector<int>& components, const Selection& selection) {
    for (const int c : components) script.push_back({{c}, selection});
  };
  script.push_back({all, {0, 0, 0, 1}});
  addEach(detailed, {1, 5, 0, 2});
  addEach(chroma, {1, 63, 0, 1});
  addEach(detailed, {6, 63, 0, 2});
  addEach(detailed, {1, 63, 2, 1});
  script.push_back({all, {0, 0, 1, 0}});
  addEach(chroma, {1, 63, 1, 0});
  addEach(detailed, {1, 63, 1, 0});
  return script;
}

}  // namespace orbhost::jpeg
