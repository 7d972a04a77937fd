#include "tests/hosts/support/pictures.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <type_traits>

#include "hosts/file.h"
#include "hosts/jpeg/decode.h"
#include "tests/support/random.h"

namespace orbtest {

using orbhost::Image;

namespace {

// The value of a channel at a place on a scale to 255, before it is cut to a sample.
double valueAt(Motif motif, int x, int y, int width, int height, int channel, int maximum,
               Random& random) {
  const double across = (x + 0.5) / width;
  const double down = (y + 0.5) / height;
  switch (motif) {
    case Motif::kGradient:
      return channel == 0 ? 255 * across : channel == 1 ? 255 * down : 255 * (1 - across);
    case Motif::kNoise:
      return random.between(0, maximum) * 255.0 / maximum;
    case Motif::kEdges: {
      const bool inside = (x / 5 + y / 3) % 2 == 0;
      const bool ring = std::abs(std::hypot(across - 0.5, down - 0.5) - 0.3) < 0.05;
      return ring ? (channel == 0 ? 250 : 20) : inside ? 40 + 90 * channel : 220 - 100 * channel;
    }
    case Motif::kScene:
      break;
  }
  // Clouds over a textured ground, with an edge between them and a little grain.
  const double skyline = 0.55 + 0.1 * std::sin(9 * across) + 0.03 * std::sin(41 * across);
  const double grain = random.between(-6, 6);
  if (down < skyline) {
    const double cloud =
        std::sin(7 * across + 3 * down) * std::sin(5 * down + 2 * std::sin(4 * across));
    return 150 + 30 * channel + 60 * cloud * (1 - 0.2 * channel) + grain / 2;
  }
  const double furrow = std::sin(60 * across + 25 * std::sin(8 * down)) * 25;
  return 70 + (channel == 1 ? 50 : 0) + furrow + 80 * (down - skyline) + 2 * grain;
}

bool sameShape(const Image& a, const Image& b) {
  return a.width() == b.width() && a.height() == b.height() && a.channels() == b.channels() &&
         a.maximum() == b.maximum();
}

size_t samplesOf(const Image& image) {
  return image.rowSamples() * static_cast<size_t>(image.height());
}
int sampleOf(const Image& image, size_t i) {
  return image.isWide() ? image.wideRow(0)[i] : image.row(0)[i];
}

}  // namespace

Image draw(Motif motif, int width, int height, int channels, int maximum) {
  Random random("picture");
  Image image(width, height, channels, maximum);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      for (int c = 0; c < channels; ++c) {
        const double value =
            valueAt(motif, x, y, width, height, c, maximum, random) * (maximum / 255.0);
        const long sample = std::clamp(std::lround(value), 0L, static_cast<long>(maximum));
        image.withRow(y, [&](auto* row) {
          row[x * channels + c] = static_cast<std::remove_reference_t<decltype(*row)>>(sample);
        });
      }
    }
  }
  return image;
}

static const char* const kPhotographPath = "/usr/share/xplanet/images/earth.jpg";

bool isPhotographThere() {
  return std::filesystem::exists(kPhotographPath);
}

const Image& photograph(int scale) {
  const auto load = [](int divisor) {
    if (!isPhotographThere()) return draw(Motif::kScene, 1024 / divisor, 512 / divisor, 3);
    return orbhost::jpeg::decodeJpeg(orbhost::readFile(kPhotographPath), {divisor});
  };
  static const Image full = load(1);
  static const Image half = load(2);
  return scale == 1 ? full : half;
}

std::ostream& operator<<(std::ostream& out, const Difference& one) {
  return out << "largest difference " << one.largest << ", mean " << one.mean;
}

Difference difference(const Image& a, const Image& b) {
  if (!sameShape(a, b)) return {65535, 65535};
  Difference result = {0, 0};
  const size_t samples = samplesOf(a);
  for (size_t i = 0; i < samples; ++i) {
    const int off = std::abs(sampleOf(a, i) - sampleOf(b, i));
    result.largest = std::max(result.largest, off);
    result.mean += off;
  }
  result.mean /= static_cast<double>(samples);
  return result;
}

double psnr(const Image& a, const Image& b) {
  if (!sameShape(a, b)) return 0;
  double squares = 0;
  const size_t samples = samplesOf(a);
  for (size_t i = 0; i < samples; ++i) {
    const double off = sampleOf(a, i) - sampleOf(b, i);
    squares += off * off;
  }
  if (squares == 0) return std::numeric_limits<double>::infinity();
  const double maximum = a.maximum();
  return 10 * std::log10(maximum * maximum * static_cast<double>(samples) / squares);
}

}  // namespace orbtest
