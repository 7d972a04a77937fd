// Files of JxrEncApp: what they hold, to the last bit.
#include "hosts/jxr/decode.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "hosts/jxr/container.h"
#include "hosts/jxr/encode.h"
#include "tests/hosts/support/jxr_judges.h"
#include "tests/hosts/support/pictures.h"

namespace {

using orbhost::Bytes;
using orbhost::Image;
using orbhost::jxr::decodeJxr;
using orbtest::difference;
using orbtest::draw;
using orbtest::jxrDecApp;
using orbtest::jxrEncApp;
using orbtest::Motif;

using Options = std::vector<std::string>;

std::string textOf(const Options& options) {
  std::string text;
  for (const std::string& option : options) text += option + " ";
  return text;
}

Options joined(Options options, const Options& more) {
  options.insert(options.end(), more.begin(), more.end());
  return options;
}

void expectAsTheyDecode(const Image& image, const Options& options) {
  SCOPED_TRACE(textOf(options) + std::to_string(image.width()) + " x " +
               std::to_string(image.height()) + " x " + std::to_string(image.channels()) + " to " +
               std::to_string(image.maximum()));
  const Bytes file = jxrEncApp(image, options);
  EXPECT_EQ(difference(decodeJxr(file), jxrDecApp(file, image)).largest, 0);
}

void expectSame(const Image& image, const Options& options) {
  SCOPED_TRACE(textOf(options));
  EXPECT_EQ(difference(decodeJxr(jxrEncApp(image, options)), image).largest, 0);
}

const Options kOverlaps[] = {{"-l", "0"}, {"-l", "1"}, {"-l", "2"}};
const Options kOrders[] = {{"-f"}, {}, {"-p"}};

TEST(JxrDecode, LosslessIsTheSource) {
  for (const int maximum : {255, 65535}) {
    for (const int channels : {1, 3}) {
      for (const Motif motif : {Motif::kScene, Motif::kNoise, Motif::kEdges}) {
        const Image image = draw(motif, 83, 61, channels, maximum);
        for (const Options& overlap : kOverlaps) {
          for (const Options& order : kOrders) expectSame(image, joined(overlap, order));
        }
      }
    }
  }
}

TEST(JxrDecode, EveryQuality) {
  const Image image = draw(Motif::kScene, 150, 90, 3);
  for (const char* const quality : {"0.99", "0.9", "0.8", "0.6", "0.5", "0.3", "0.1", "0.01"}) {
    for (const Options& overlap : kOverlaps) {
      for (const char* const subsampling : {"0", "1", "2", "3"}) {
        expectAsTheyDecode(image, joined(overlap, {"-q", quality, "-d", subsampling}));
      }
    }
  }
}

TEST(JxrDecode, EveryQuantiserOf16Bits) {
  for (const int channels : {1, 3}) {
    const Image image = draw(Motif::kScene, 70, 50, channels, 65535);
    for (const char* const index : {"2", "20", "33", "49", "80", "120", "150", "200", "255"}) {
      for (const Options& overlap : kOverlaps) {
        expectAsTheyDecode(image, joined(overlap, {"-q", index}));
      }
    }
  }
}

// The program halves chroma of 8 bits only.
TEST(JxrDecode, HalvedChroma) {
  for (const Motif motif : {Motif::kScene, Motif::kNoise}) {
    const Image image = draw(motif, 100, 75, 3);
    for (const char* const subsampling : {"1", "2"}) {
      for (const Options& overlap : kOverlaps) {
        for (const Options& order : kOrders) {
          for (const char* const quality : {"1", "0.7"}) {
            expectAsTheyDecode(image,
                               joined(joined(overlap, order), {"-q", quality, "-d", subsampling}));
          }
        }
      }
    }
  }
}

TEST(JxrDecode, EverySize) {
  const int sizes[][2] = {{1, 1}, {16, 16}, {17, 3}, {8, 40}, {33, 16}, {300, 20}, {20, 300}};
  for (const auto& size : sizes) {
    for (const int channels : {1, 3}) {
      const Image image = draw(Motif::kScene, size[0], size[1], channels);
      expectSame(image, {});
      for (const Options& overlap : kOverlaps) {
        expectAsTheyDecode(image, joined(overlap, {"-q", "0.7", "-d", "3"}));
      }
    }
  }
}

TEST(JxrDecode, TilesInBothOrders) {
  const Image image = draw(Motif::kScene, 150, 130, 3);
  for (const char* const across : {"1", "2", "3"}) {
    for (const Options& order : kOrders) {
      for (const Options& overlap : kOverlaps) {
        const Options options = joined(joined(order, overlap), {"-U", across, "2"});
        expectSame(image, options);
        expectAsTheyDecode(image, joined(options, {"-q", "0.6", "-d", "2"}));
      }
    }
  }
}

TEST(JxrDecode, TrimmedFlexbitsAndMissingBands) {
  for (const int maximum : {255, 65535}) {
    const Image image = draw(Motif::kNoise, 64, 48, 3, maximum);
    for (const Options& order : kOrders) {
      for (const char* const trim : {"1", "2", "4", "8", "15"}) {
        expectAsTheyDecode(image, joined(order, {"-F", trim}));
      }
      for (const char* const skip : {"1", "2", "3"}) {
        expectAsTheyDecode(image, joined(order, {"-s", skip}));
        if (maximum > 255) continue;
        expectAsTheyDecode(image, joined(order, {"-s", skip, "-d", "1", "-l", "2"}));
      }
    }
  }
}

TEST(JxrDecode, TransparencyIsDropped) {
  const Image image = draw(Motif::kScene, 70, 50, 3);
  const Options planar = {"-a", "2"};
  const Options interleaved = {"-a", "3"};
  for (const Options& alpha : {planar, interleaved}) {
    for (const Options& order : kOrders) {
      for (const Options& quality :
           {Options{"-q", "1"}, Options{"-q", "0.7", "-Q", "40", "-d", "1", "-l", "2"}}) {
        const Options options = joined(joined(alpha, order), quality);
        SCOPED_TRACE(textOf(options));
        const Bytes file = orbtest::jxrEncAppTransparent(image, options);
        EXPECT_EQ(difference(decodeJxr(file), orbtest::jxrDecAppTransparent(file, image)).largest,
                  0);
      }
    }
  }
}

// A file that says how it is to be turned: 4 turns clockwise, then 2 flips left and right, and 1
// flips top and bottom. The judge is asked about flips.
TEST(JxrDecode, TurnsAsTheFileSays) {
  for (const int maximum : {255, 65535}) {
    const Image image = draw(Motif::kScene, 40, 23, 3, maximum);
    orbhost::jxr::EncodeOptions options;
    options.quality = 100;
    for (int orientation = 0; orientation < 8; ++orientation) {
      SCOPED_TRACE(orientation);
      const Bytes upright = encodeJxr(image, options);
      Bytes file = upright;
      const size_t codestream = static_cast<size_t>(orbhost::jxr::findCodestream(file).data -
                                                    static_cast<const uint8_t*>(file.data()));
      file[codestream + 9] = static_cast<uint8_t>(file[codestream + 9] | orientation << 3);

      const bool turns = orientation >= 4;
      Image expected(turns ? 23 : 40, turns ? 40 : 23, 3, maximum);
      for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
          int toX = turns ? image.height() - 1 - y : x;
          int toY = turns ? x : y;
          if (orientation & 2) toX = expected.width() - 1 - toX;
          if (orientation & 1) toY = expected.height() - 1 - toY;
          for (int c = 0; c < 3; ++c) {
            if (maximum > 255) {
              expected.wideRow(toY)[3 * toX + c] = image.wideRow(y)[3 * x + c];
            } else {
              expected.row(toY)[3 * toX + c] = image.row(y)[3 * x + c];
            }
          }
        }
      }
      EXPECT_EQ(difference(decodeJxr(file), expected).largest, 0);
      if (!turns) {
        const Image judged = jxrDecApp(upright, expected, {"-O", std::to_string(orientation)});
        EXPECT_EQ(difference(judged, expected).largest, 0);
      }
    }
  }
}

}  // namespace
