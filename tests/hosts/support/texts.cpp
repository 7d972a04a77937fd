#include "tests/hosts/support/texts.h"

#include <algorithm>

#include "tests/support/random.h"

namespace orbtest {

using orbhost::Bytes;

namespace {

void append(Bytes& to, const Bytes& more) {
  to.insert(to.end(), more.begin(), more.end());
}

}  // namespace

Bytes bytesOf(const std::string& text) {
  return Bytes(text.begin(), text.end());
}

Bytes prose(size_t size) {
  Random random("prose");
  std::vector<std::string> words(4000);
  for (std::string& word : words) {
    for (int n = random.between(1, 10); n > 0; --n) word.push_back(random.between('a', 'z'));
  }
  Bytes text;
  while (text.size() < size) {
    // Half of all words come from the first 1/8 of what is left, and so on.
    size_t range = words.size();
    while (range > 8 && !random.oneIn(2)) range /= 8;
    append(text, bytesOf(words[random.between<size_t>(0, range - 1)]));
    text.push_back(random.oneIn(12) ? '\n' : ' ');
  }
  text.resize(size);
  return text;
}

Bytes noise(size_t size) {
  Random random("noise");
  Bytes bytes(size);
  std::generate(bytes.begin(), bytes.end(), [&] { return random.any<uint8_t>(); });
  return bytes;
}

Bytes run(size_t size) {
  return Bytes(size, 'r');
}

Bytes mixture(size_t size) {
  Random random("mixture");
  const Bytes text = prose(1000000);
  const Bytes chaos = noise(1000000);
  const auto piece = [&](const Bytes& from) {
    const size_t length = random.between<size_t>(1, random.oneIn(4) ? 200000 : 2000);
    const size_t first = random.between<size_t>(0, from.size() - length);
    return Bytes(from.begin() + static_cast<long>(first),
                 from.begin() + static_cast<long>(first + length));
  };
  Bytes all;
  while (all.size() < size) {
    switch (random.between(0, 3)) {
      case 0:
        append(all, piece(text));
        break;
      case 1:
        append(all, piece(chaos));
        break;
      case 2:
        append(all, run(random.between<size_t>(1, 100000)));
        break;
      default: {
        // What came before, from just at hand to beyond the window.
        if (all.empty()) break;
        const size_t back = random.between<size_t>(1, std::min<size_t>(all.size(), 40000));
        const size_t first = all.size() - back;
        for (size_t i = 0, n = random.between<size_t>(1, 1000); i < n; ++i) {
          all.push_back(all[first + i]);
        }
      }
    }
  }
  all.resize(size);
  return all;
}

const std::vector<Sample>& samples() {
  static const std::vector<Sample> kSamples = [] {
    std::vector<Sample> all;
    for (const size_t size : {0, 1, 2, 3, 4, 10, 257, 258, 259, 260, 261, 32767, 32768, 32769}) {
      all.push_back({"prose of " + std::to_string(size), prose(size)});
      all.push_back({"a run of " + std::to_string(size), run(size)});
    }
    for (const size_t size : {1, 100, 65535, 65536, 131070, 131071, 300000}) {
      all.push_back({"noise of " + std::to_string(size), noise(size)});
    }
    all.push_back({"a long run", run(2000000)});
    all.push_back({"long prose", prose(600000)});
    all.push_back({"a mixture", mixture(1300000)});
    return all;
  }();
  return kSamples;
}

}  // namespace orbtest
