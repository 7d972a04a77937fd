#include "hosts/jxr/colour.h"

#include <algorithm>
#include <type_traits>
#include <utility>

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
    const int64_t sample = int64_t{value >> fraction} << shift;
    return static_cast<int32_t>(std::clamp<int64_t>(sample, 0, maximum));
  }

  int fraction;
  int shift;
  int32_t maximum;
  int32_t middle;
  int32_t rounding;
};

// ---- From pixels

// The values of a pixel in place of its samples.
void toChannels(OutputFormat output, const Range& range, int32_t (&v)[kMostChannels]) {
  if (output == OutputFormat::kGrey) {
    v[0] -= range.middle;
  } else if (output == OutputFormat::kRgb) {
    int32_t r = v[0], g = v[1], b = v[2];
    b -= r;
    r += ((b + 1) >> 1) - g;
    g += r >> 1;
    v[0] = g - range.middle;
    v[1] = -r;
    v[2] = b;
  } else {
    int32_t c = v[0], m = v[1], y = v[2], k = v[3];
    y -= c;
    c += ((y + 1) >> 1) - m;
    m += (c >> 1) - k;
    k += (m + 1) >> 1;
    v[0] = range.middle - m;
    v[1] = c;
    v[2] = -y;
    v[3] = k;
  }
}

// Every second value of a line, from those around it. Lines are mirrored at their ends.
template <class At>
int32_t smoothed(int i, int length, At at) {
  const auto mirrored = [&](int place) {
    if (place < 0) place = -place;
    return at(place < length ? place : 2 * (length - 1) - place);
  };
  return (mirrored(i - 2) + 4 * mirrored(i - 1) + 6 * mirrored(i) + 4 * mirrored(i + 1) +
          mirrored(i + 2) + 8) >>
         4;
}

Plane halvedAcross(const Plane& from) {
  Plane half(from.width() / 2, from.height());
  for (int y = 0; y < half.height(); ++y) {
    for (int x = 0; x < half.width(); ++x) {
      half.rows().at(x, y) =
          smoothed(2 * x, from.width(), [&](int i) { return from.rows().at(i, y); });
    }
  }
  return half;
}

Plane halvedDown(const Plane& from) {
  Plane half(from.width(), from.height() / 2);
  for (int y = 0; y < half.height(); ++y) {
    for (int x = 0; x < half.width(); ++x) {
      half.rows().at(x, y) =
          smoothed(2 * y, from.height(), [&](int i) { return from.rows().at(x, i); });
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
  const Rows<const int32_t> from = plane.rows();
  const bool isHalf = isHalvedDown(format, channel);
  const int first = isHalf ? y / 2 : y;
  const int second = isHalf && y % 2 == 1 ? std::min(first + 1, plane.height() - 1) : first;
  const auto at = [&](int x) { return between(from.at(x, first), from.at(x, second)); };
  if (!isHalvedAcross(format, channel)) {
    std::copy_n(&from.at(0, y), width, row);
    return;
  }
  for (int x = 0; x < plane.width(); ++x) row[2 * x] = at(x);
  for (int x = 1; x + 1 < width; x += 2) row[x] = between(row[x - 1], row[x + 1]);
  row[width - 1] = row[width - 2];
}

// The samples of a pixel in place of its values.
void toSamples(OutputFormat output, const Range& range, int32_t (&v)[kMostChannels]) {
  const int32_t bias = range.middle + range.rounding;
  if (output == OutputFormat::kGrey) {
    v[0] += bias;
  } else if (output == OutputFormat::kRgb) {
    int32_t r = -v[1], g = v[0] + bias, b = v[2];
    g -= r >> 1;
    r -= ((b + 1) >> 1) - g;
    b += r;
    v[0] = r;
    v[1] = g;
    v[2] = b;
  } else {
    int32_t c = v[1], m = range.middle - v[0], y = -v[2], k = v[3] + range.rounding;
    k -= (m + 1) >> 1;
    m -= (c >> 1) - k;
    c -= ((y + 1) >> 1) - m;
    y += c;
    v[0] = c;
    v[1] = m;
    v[2] = y;
    v[3] = k;
  }
  for (int32_t& value : v) value = range.toSample(value);
}

template <class Row>
using SampleOf = std::remove_reference_t<decltype(*std::declval<Row>())>;

}  // namespace

std::vector<Plane> planesFrom(const Image& image, const ImageHeader& header,
                              const PlaneHeader& plane) {
  const int wide = header.macroblocksWide();
  const int high = header.macroblocksHigh();
  std::vector<Plane> planes = makePlanes(ColourFormat::k444, plane.channels, wide, high);
  const Range range(header, plane);
  const int channels = image.channels();
  for (int y = 0; y < planes[0].height(); ++y) {
    image.withRow(std::min(y, image.height() - 1), [&](const auto* row) {
      for (int x = 0; x < planes[0].width(); ++x) {
        const auto* const pixel = row + std::min(x, image.width() - 1) * channels;
        int32_t values[kMostChannels] = {};
        for (int c = 0; c < channels; ++c) values[c] = range.toValue(pixel[c]);
        toChannels(header.output, range, values);
        for (int c = 0; c < channels; ++c) planes[c].rows().at(x, y) = values[c];
      }
    });
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
  const int width = planes[0].width();
  std::vector<int32_t> rows(static_cast<size_t>(width) * kMostChannels);
  for (int y = 0; y < image.height(); ++y) {
    for (int c = 0; c < plane.channels; ++c) {
      fillRow(planes[c], plane.format, c, header.marginTop + y, width, &rows[c * width]);
    }
    image.withRow(y, [&](auto* row) {
      for (int x = 0; x < image.width(); ++x) {
        int32_t values[kMostChannels];
        for (int c = 0; c < kMostChannels; ++c) {
          values[c] = rows[c * width + header.marginLeft + x];
        }
        toSamples(header.output, range, values);
        for (int c = 0; c < channels; ++c) {
          *row++ = static_cast<SampleOf<decltype(row)>>(values[c]);
        }
      }
    });
  }
  return image;
}

}  // namespace orbhost::jxr
