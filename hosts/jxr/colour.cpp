#include "hosts/jxr/colour.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace orbhost::jxr {

namespace {

constexpr int kScaledBits = 3;  // more than a sample has, in scaled arithmetic

// How samples become centred values, and these samples.
struct Range {
  Range(const ImageHeader& image, const PlaneHeader& plane)
      : fraction(plane.scaled ? kScaledBits : 0),
        shift(plane.shift),
        maximum(image.depth == Depth::k8 ? 255 : 65535),
        middle(((maximum / 2 + 1) >> shift) << fraction),
        rounding(!plane.scaled              ? 0
                 : image.depth == Depth::k8 ? 3
                                            : 4) {}

  int32_t toValue(int32_t sample) const { return (sample >> shift) << fraction; }
  int32_t toSample(int32_t value) const {
    // Limited twice, as the shift must not overflow.
    const int32_t part = std::clamp(value >> fraction, 0, (maximum >> shift) + 1);
    return std::min(part << shift, maximum);
  }

  int fraction;
  int shift;
  int32_t maximum;
  int32_t middle;
  int32_t rounding;
};

// A row of each channel.
using ChannelRows = std::array<int32_t*, kMostChannels>;

// ---- From pixels

// Rows of inks or light, in place.
void toChannels(OutputFormat output, const Range& range, const ChannelRows& rows, int width) {
  int32_t* const v0 = rows[0];
  int32_t* const v1 = rows[1];
  int32_t* const v2 = rows[2];
  int32_t* const v3 = rows[3];
  const int32_t middle = range.middle;
  if (output == OutputFormat::kGrey) {
    for (int x = 0; x < width; ++x) v0[x] -= middle;
  } else if (output == OutputFormat::kRgb) {
    for (int x = 0; x < width; ++x) {
      int32_t r = v0[x], g = v1[x], b = v2[x];
      b -= r;
      r += ((b + 1) >> 1) - g;
      g += r >> 1;
      v0[x] = g - middle;
      v1[x] = -r;
      v2[x] = b;
    }
  } else {
    for (int x = 0; x < width; ++x) {
      int32_t c = v0[x], m = v1[x], y = v2[x], k = v3[x];
      y -= c;
      c += ((y + 1) >> 1) - m;
      m += (c >> 1) - k;
      k += (m + 1) >> 1;
      v0[x] = middle - m;
      v1[x] = c;
      v2[x] = -y;
      v3[x] = k;
    }
  }
}

// The middle one of five values in line, smoothed.
int32_t smoothed(int32_t a, int32_t b, int32_t c, int32_t d, int32_t e) {
  return (a + 4 * b + 6 * c + 4 * d + e + 8) >> 4;
}

// Every second value of a line stays. Beyond its ends, of which the last one has no value of its
// own, a line is mirrored.
Plane halvedAcross(const Plane& from) {
  Plane half(from.width() / 2, from.height());
  for (int y = 0; y < half.height(); ++y) {
    const int32_t* const in = &from.rows().at(0, y);
    int32_t* const out = &half.rows().at(0, y);
    const int last = half.width() - 1;
    out[0] = smoothed(in[2], in[1], in[0], in[1], in[2]);
    for (int x = 1; x < last; ++x) {
      const int32_t* const at = in + 2 * x;
      out[x] = smoothed(at[-2], at[-1], at[0], at[1], at[2]);
    }
    const int32_t* const at = in + 2 * last;
    out[last] = smoothed(at[-2], at[-1], at[0], at[1], at[0]);
  }
  return half;
}

Plane halvedDown(const Plane& from) {
  Plane half(from.width(), from.height() / 2);
  const auto rowAt = [&](int y) {
    return &from.rows().at(0, y < from.height() ? std::abs(y) : 2 * (from.height() - 1) - y);
  };
  for (int y = 0; y < half.height(); ++y) {
    const int32_t* const rows[5] = {rowAt(2 * y - 2), rowAt(2 * y - 1), rowAt(2 * y),
                                    rowAt(2 * y + 1), rowAt(2 * y + 2)};
    int32_t* const out = &half.rows().at(0, y);
    for (int x = 0; x < half.width(); ++x) {
      out[x] = smoothed(rows[0][x], rows[1][x], rows[2][x], rows[3][x], rows[4][x]);
    }
  }
  return half;
}

// ---- To pixels

// A value of a line that has every second one.
int32_t between(int32_t before, int32_t behind) {
  return (before + behind + 1) >> 1;
}

// A row of a channel at full size.
void fillRow(const Plane& plane, ColourFormat format, int channel, int y, int width, int32_t* row) {
  if (!isHalvedAcross(format, channel)) {
    std::copy_n(&plane.rows().at(0, y), width, row);
    return;
  }
  const bool isHalf = isHalvedDown(format, channel);
  const int above = isHalf ? y / 2 : y;
  const int below = isHalf && y % 2 == 1 ? std::min(above + 1, plane.height() - 1) : above;
  const int32_t* const first = &plane.rows().at(0, above);
  const int32_t* const second = &plane.rows().at(0, below);
  for (int x = 0; x < plane.width(); ++x) row[2 * x] = between(first[x], second[x]);
  for (int x = 1; x + 1 < width; x += 2) row[x] = between(row[x - 1], row[x + 1]);
  row[width - 1] = row[width - 2];
}

// Rows of values, in place.
void toSamples(OutputFormat output, const Range& range, const ChannelRows& rows, int width) {
  int32_t* const v0 = rows[0];
  int32_t* const v1 = rows[1];
  int32_t* const v2 = rows[2];
  int32_t* const v3 = rows[3];
  const int32_t middle = range.middle;
  const int32_t rounding = range.rounding;
  const int32_t bias = middle + rounding;
  if (output == OutputFormat::kGrey) {
    for (int x = 0; x < width; ++x) v0[x] += bias;
  } else if (output == OutputFormat::kRgb) {
    for (int x = 0; x < width; ++x) {
      int32_t r = -v1[x], g = v0[x] + bias, b = v2[x];
      g -= r >> 1;
      r -= ((b + 1) >> 1) - g;
      b += r;
      v0[x] = r;
      v1[x] = g;
      v2[x] = b;
    }
  } else {
    for (int x = 0; x < width; ++x) {
      int32_t c = v1[x], m = middle - v0[x], y = -v2[x], k = v3[x] + rounding;
      k -= (m + 1) >> 1;
      m -= (c >> 1) - k;
      c -= ((y + 1) >> 1) - m;
      y += c;
      v0[x] = c;
      v1[x] = m;
      v2[x] = y;
      v3[x] = k;
    }
  }
}

// Rows of samples, one beside the other. The rows are a copy, since samples that are bytes could
// overwrite anything else.
template <int kChannels, class Sample>
void interleave(const ChannelRows rows, int width, Sample* to) {
  for (int x = 0; x < width; ++x) {
    for (int c = 0; c < kChannels; ++c) *to++ = static_cast<Sample>(rows[c][x]);
  }
}

}  // namespace

std::vector<Plane> planesFrom(const Image& image, const ImageHeader& header,
                              const PlaneHeader& plane) {
  std::vector<Plane> planes = makePlanes(ColourFormat::k444, plane.channels,
                                         header.macroblocksWide(), header.macroblocksHigh());
  const Range range(header, plane);
  const int channels = image.channels();
  const int width = image.width();
  const int widthOfAll = planes[0].width();
  for (int y = 0; y < planes[0].height(); ++y) {
    ChannelRows rows{};
    for (int c = 0; c < channels; ++c) rows[c] = &planes[c].rows().at(0, y);
    if (y >= image.height()) {
      for (int c = 0; c < channels; ++c) std::copy_n(rows[c] - widthOfAll, widthOfAll, rows[c]);
      continue;
    }
    image.withRow(y, [&](const auto* row) {
      for (int c = 0; c < channels; ++c) {
        int32_t* const to = rows[c];
        for (int x = 0; x < width; ++x) to[x] = range.toValue(row[x * channels + c]);
      }
    });
    toChannels(header.output, range, rows, width);
    for (int c = 0; c < channels; ++c) {
      std::fill(rows[c] + width, rows[c] + widthOfAll, rows[c][width - 1]);
    }
  }
  for (int c = 1; c < plane.channels; ++c) {
    if (isHalvedAcross(plane.format, c)) planes[c] = halvedAcross(planes[c]);
    if (isHalvedDown(plane.format, c)) planes[c] = halvedDown(planes[c]);
  }
  return planes;
}

Image imageFrom(const std::vector<Plane>& planes, const ImageHeader& header,
                const PlaneHeader& plane) {
  const Range range(header, plane);
  const int channels = header.output == OutputFormat::kGrey  ? 1
                       : header.output == OutputFormat::kRgb ? 3
                                                             : 4;
  Image image(header.width, header.height, channels, range.maximum);
  const int width = image.width();
  const int widthOfAll = planes[0].width();
  std::vector<int32_t> values(static_cast<size_t>(widthOfAll) * kMostChannels);
  for (int y = 0; y < image.height(); ++y) {
    ChannelRows rows;
    for (int c = 0; c < kMostChannels; ++c) {
      int32_t* const first = &values[static_cast<size_t>(widthOfAll) * c];
      rows[c] = first + header.marginLeft;
      if (c < plane.channels) {
        fillRow(planes[c], plane.format, c, header.marginTop + y, widthOfAll, first);
      } else {
        std::fill_n(first, widthOfAll, 0);  // chroma that is not coded
      }
    }
    toSamples(header.output, range, rows, width);
    for (int c = 0; c < channels; ++c) {
      int32_t* const row = rows[c];
      for (int x = 0; x < width; ++x) row[x] = range.toSample(row[x]);
    }
    image.withRow(y, [&](auto* row) {
      if (channels == 1) {
        interleave<1>(rows, width, row);
      } else if (channels == 3) {
        interleave<3>(rows, width, row);
      } else {
        interleave<4>(rows, width, row);
      }
    });
  }
  return image;
}

}  // namespace orbhost::jxr
