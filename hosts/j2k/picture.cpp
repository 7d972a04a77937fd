#include "hosts/j2k/picture.h"

#include <algorithm>
#include <string>
#include <type_traits>
#include <vector>

#include "hosts/image_convert.h"
#include "orb90legacy.h"

namespace orbhost::j2k {

namespace {

constexpr int kMostBits = 16;  // of a picture's samples

// A component, or the column of a palette that it is an index for.
struct Channel {
  const Component* component;
  const std::vector<std::vector<int32_t>>* entries;  // null without a palette
  int column;
  int precision;
  bool isSigned;

  // A sample from 0 on.
  uint32_t level(int32_t sample) const {
    if (entries != nullptr) {
      const int32_t last = static_cast<int32_t>(entries->size()) - 1;
      sample = (*entries)[std::min(std::max(sample, 0), last)][column];
    }
    return static_cast<uint32_t>(isSigned ? sample + (int32_t{1} << (precision - 1)) : sample);
  }
};

int bitsOf(const Channel& channel) {
  return std::min(channel.precision, kMostBits);
}

Channel channelOf(const Component& component) {
  return {&component, nullptr, 0, component.size.precision, component.size.isSigned};
}

// The channels as the file maps components to them.
std::vector<Channel> mappedChannels(const Decoded& decoded) {
  std::vector<Channel> channels;
  const Palette& palette = decoded.jp2.palette;
  for (const ChannelMapping& mapping : decoded.jp2.mappings) {
    if (palette.entries.empty()) break;
    if (mapping.component >= static_cast<int>(decoded.components.size())) continue;
    Channel channel = channelOf(decoded.components[mapping.component]);
    if (mapping.usesPalette) {
      if (mapping.column >= static_cast<int>(palette.columns.size())) continue;
      const Palette::Column& column = palette.columns[mapping.column];
      channel = {channel.component, &palette.entries, mapping.column, column.precision,
                 column.isSigned};
    }
    channels.push_back(channel);
  }
  if (channels.empty()) {
    for (const Component& component : decoded.components) channels.push_back(channelOf(component));
  }
  return channels;
}

// Channels in the order of a picture: colours, then opacity, then what is neither.
struct Arrangement {
  std::vector<Channel> channels;
  size_t colours;
  size_t opacities = 0;
  uint32_t colourSpace;
};

size_t coloursOf(uint32_t colourSpace, size_t channels) {
  size_t colours = channels >= 3 ? 3 : 1;
  if (colourSpace == kGrey) colours = 1;
  if (colourSpace == kCmyk) colours = 4;
  return std::min(colours, channels >= 3 ? channels : 1);
}

Arrangement arrange(const Decoded& decoded) {
  Arrangement to{mappedChannels(decoded), 0, 0, decoded.jp2.colourSpace};
  const size_t count = to.channels.size();
  to.colours = coloursOf(to.colourSpace, count);

  // Where the file defines its channels they are sorted: by colour, and behind all of these.
  constexpr int kOpacity = 1 << 16;
  constexpr int kOther = 1 << 17;
  std::vector<std::pair<int, size_t>> places;
  for (size_t i = 0; i < count; ++i) {
    int place = static_cast<int>(i);
    for (const ChannelDefinition& definition : decoded.jp2.definitions) {
      if (definition.channel != static_cast<int>(i)) continue;
      const bool isColour = definition.type == 0 && definition.association >= 1 &&
                            definition.association <= static_cast<int>(to.colours);
      const bool isOpacity = definition.type == 1 || definition.type == 2;
      place = isColour ? definition.association - 1 : (isOpacity ? kOpacity : kOther) + place;
    }
    places.emplace_back(place, i);
  }
  std::stable_sort(places.begin(), places.end());
  std::vector<Channel> sorted;
  for (const auto& [place, i] : places) {
    sorted.push_back(to.channels[i]);
    if (place >= kOpacity && place < kOther) ++to.opacities;
  }
  to.channels = std::move(sorted);
  return to;
}

// The rectangle of the finest channels, each of which has its own sampling across and down.
struct Canvas {
  uint32_t dx = UINT32_MAX;
  uint32_t dy = UINT32_MAX;
  Rect rect;
  int bits = 1;

  Canvas(const Channel* channels, size_t count) {
    for (size_t i = 0; i < count; ++i) {
      const Component& component = *channels[i].component;
      if (component.size.dx < dx) {
        dx = component.size.dx;
        rect.x0 = component.rect.x0;
        rect.x1 = component.rect.x1;
      }
      if (component.size.dy < dy) {
        dy = component.size.dy;
        rect.y0 = component.rect.y0;
        rect.y1 = component.rect.y1;
      }
      bits = std::max(bits, bitsOf(channels[i]));
    }
  }

  Image makeImage(size_t channels) const {
    return Image(static_cast<int>(rect.width()), static_cast<int>(rect.height()),
                 static_cast<int>(channels), (1 << bits) - 1);
  }
};

// Which sample of a coarser channel stands at a position of the canvas.
uint32_t indexAt(uint32_t position, uint32_t fine, uint32_t coarse, uint32_t first, uint32_t end) {
  const uint64_t at = uint64_t{position} * fine / coarse;
  return static_cast<uint32_t>(std::min<uint64_t>(std::max<uint64_t>(at, first), end - 1)) - first;
}

// Puts a channel into its place of an image's rows, in the image's range.
class ChannelWriter {
 public:
  ChannelWriter(const Channel& channel, const Canvas& canvas)
      : channel_(channel), canvas_(canvas), rect_(channel.component->rect) {
    const int bits = bitsOf(channel);
    shift_ = channel.precision - bits;
    top_ = (1 << bits) - 1;
    canvasTop_ = (1 << canvas.bits) - 1;
    if (rect_.isEmpty()) return;
    if (rect_.x0 == canvas.rect.x0 && rect_.x1 == canvas.rect.x1) return;
    for (uint32_t x = canvas.rect.x0; x < canvas.rect.x1; ++x) {
      columns_.push_back(indexAt(x, canvas.dx, channel.component->size.dx, rect_.x0, rect_.x1));
    }
  }

  // Row `y` of the canvas; `to` is the channel's first sample in it.
  template <class T>
  void write(int y, T* to, size_t channels) const {
    const int width = static_cast<int>(canvas_.rect.width());
    if (rect_.isEmpty()) {
      for (int x = 0; x < width; ++x) to[x * channels] = 0;
      return;
    }
    const int32_t* const from =
        channel_.component->row(indexAt(canvas_.rect.y0 + static_cast<uint32_t>(y), canvas_.dy,
                                        channel_.component->size.dy, rect_.y0, rect_.y1));
    if (columns_.empty()) {
      writeSamples([from](int x) { return from[x]; }, to, channels, width);
    } else {
      const uint32_t* const columns = columns_.data();
      writeSamples([from, columns](int x) { return from[columns[x]]; }, to, channels, width);
    }
  }

 private:
  template <class At, class T>
  void writeSamples(At at, T* to, size_t channels, int width) const {
    if (channel_.entries == nullptr && shift_ == 0 && top_ == canvasTop_) {
      const int32_t offset = channel_.isSigned ? (top_ + 1) / 2 : 0;
      for (int x = 0; x < width; ++x) to[x * channels] = static_cast<T>(at(x) + offset);
      return;
    }
    for (int x = 0; x < width; ++x) {
      const int level = static_cast<int>(channel_.level(at(x)) >> shift_);
      to[x * channels] =
          static_cast<T>(top_ == canvasTop_ ? level : rescale(level, top_, canvasTop_));
    }
  }

  const Channel channel_;
  const Canvas& canvas_;
  const Rect rect_;
  std::vector<uint32_t> columns_;  // empty if the channel has all of the canvas
  int shift_;
  int top_;
  int canvasTop_;
};

// RGB from sYCC, whose chroma is 0 in the middle of its range. Behind it stand other channels.
void convertFromYcc(Image& image) {
  const int width = image.width();
  const size_t channels = static_cast<size_t>(image.channels());
  const float half = static_cast<float>((image.maximum() + 1) / 2);
  const float top = static_cast<float>(image.maximum());
  std::vector<Orb32f> samples(static_cast<size_t>(width) * 3);
  Orb32f* const planes[3] = {samples.data(), samples.data() + width, samples.data() + 2 * width};
  for (int y = 0; y < image.height(); ++y) {
    image.withRow(y, [&](auto* row) {
      using Sample = std::remove_reference_t<decltype(*row)>;
      for (int c = 0; c < 3; ++c) {
        for (int x = 0; x < width; ++x) {
          planes[c][x] = static_cast<float>(row[x * channels + c]) - (c == 0 ? 0 : half);
        }
      }
      legacy90orbiICTInv_JPEG2K_32f_P3IR(planes, width * 4, {width, 1});
      for (int c = 0; c < 3; ++c) {
        for (int x = 0; x < width; ++x) {
          const float value = std::min(std::max(planes[c][x], 0.0f), top);
          row[x * channels + c] = static_cast<Sample>(value + 0.5f);
        }
      }
    });
  }
}

Image assemble(const Arrangement& from, size_t count) {
  const Canvas canvas(from.channels.data(), count);
  Image image = canvas.makeImage(count);
  std::vector<ChannelWriter> writers;
  for (size_t c = 0; c < count; ++c) writers.emplace_back(from.channels[c], canvas);
  for (int y = 0; y < image.height(); ++y) {
    image.withRow(y, [&](auto* row) {
      for (size_t c = 0; c < count; ++c) writers[c].write(y, row + c, count);
    });
  }
  if (from.colourSpace == kSycc && from.colours == 3) convertFromYcc(image);
  return image;
}

const char* tupleTypeOf(const Arrangement& from) {
  const size_t others = from.channels.size() - from.colours;
  const bool hasOpacity = others == 1 && from.opacities == 1;
  if (others != 0 && !hasOpacity) return "";
  if (from.colours == 1) return hasOpacity ? "GRAYSCALE_ALPHA" : "GRAYSCALE";
  if (from.colours == 3) return hasOpacity ? "RGB_ALPHA" : "RGB";
  return hasOpacity ? "CMYK_ALPHA" : "CMYK";
}

}  // namespace

Image colourPicture(const Decoded& decoded) {
  const Arrangement arrangement = arrange(decoded);
  return assemble(arrangement, arrangement.colours);
}

Channels allChannels(const Decoded& decoded) {
  const Arrangement arrangement = arrange(decoded);
  return {assemble(arrangement, arrangement.channels.size()), tupleTypeOf(arrangement)};
}

Image componentPicture(const Decoded& decoded, int component) {
  if (component < 0 || component >= static_cast<int>(decoded.components.size())) {
    throw Error("there is no component " + std::to_string(component) + " of " +
                std::to_string(decoded.components.size()));
  }
  return assemble({{channelOf(decoded.components[component])}, 1, 0, 0}, 1);
}

}  // namespace orbhost::j2k
