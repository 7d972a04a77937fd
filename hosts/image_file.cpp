#include "hosts/image_file.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <vector>

#include "hosts/error.h"
#include "hosts/png_file.h"

namespace orbhost {

namespace {

// ---- PGM and PPM

// The text part of an any-map: numbers between white space and comments.
class PnmText {
 public:
  explicit PnmText(ByteView file) : file_(file), position_(2) {}  // behind the magic number

  int number(const char* what) {
    skipSpace();
    const size_t first = position_;
    int64_t value = 0;
    while (position_ < file_.size && std::isdigit(file_[position_]) != 0) {
      value = value * 10 + (file_[position_++] - '0');
      if (value > 0x7fffffff) fail(std::string(what) + " is out of range");
    }
    if (position_ == first) {
      fail(position_ == file_.size ? std::string("the file ends before ") + what
                                   : std::string("no number for ") + what);
    }
    return static_cast<int>(value);
  }

  // The single white space between the header and binary samples.
  ByteView binary() {
    if (position_ == file_.size || std::isspace(file_[position_]) == 0) {
      fail("no white space behind the header");
    }
    ++position_;
    return rest();
  }
  ByteView rest() const { return {file_.data + position_, file_.size - position_}; }

  [[noreturn]] void fail(const std::string& what) const {
    throw Error("PNM: byte " + std::to_string(position_) + ": " + what);
  }

 private:
  void skipSpace() {
    while (position_ < file_.size) {
      if (file_[position_] == '#') {
        while (position_ < file_.size && file_[position_] != '\n') ++position_;
      } else if (std::isspace(file_[position_]) != 0) {
        ++position_;
      } else {
        return;
      }
    }
  }

  ByteView file_;
  size_t position_;
};

Image parsePnm(ByteView file) {
  const int kind = file[1] - '0';
  const bool ascii = kind <= 3;
  PnmText text(file);
  const int width = text.number("the width");
  const int height = text.number("the height");
  const int maximum = text.number("the maximum");
  if (width < 1 || height < 1) text.fail("a picture without pixels");
  if (maximum < 1 || maximum > 65535) text.fail("the maximum is not within 1 and 65535");
  const int channels = kind == 3 || kind == 6 ? 3 : 1;

  const ByteView samples = ascii ? text.rest() : text.binary();
  const uint64_t wanted = static_cast<uint64_t>(width) * height;
  const int wide = ascii || maximum > 255 ? 2 : 1;  // a digit and a space, or two bytes
  // The last number of an ASCII file may lack its space.
  if (wanted > (samples.size + 1) / (static_cast<unsigned>(channels) * wide)) {
    text.fail("the file ends before its samples do");
  }

  std::vector<uint8_t> scaled(static_cast<size_t>(maximum) + 1);
  for (int i = 0; i <= maximum; ++i) {
    scaled[i] = static_cast<uint8_t>((int64_t{i} * 255 + maximum / 2) / maximum);
  }
  Image image(width, height, channels);
  uint8_t* const to = image.row(0);
  const size_t count = image.size();
  if (!ascii && samples.size < count * wide) text.fail("the file ends before its samples do");
  if (!ascii && maximum == 255) {
    std::memcpy(to, samples.data, count);
    return image;
  }
  for (size_t i = 0; i < count; ++i) {
    const int value = ascii       ? text.number("a sample")
                      : wide == 1 ? samples[i]
                                  : samples[2 * i] << 8 | samples[2 * i + 1];
    if (value > maximum) text.fail("a sample is above the maximum");
    to[i] = scaled[value];
  }
  return image;
}

Bytes formatPnm(const Image& image, int channels) {
  const std::string header = std::string(channels == 1 ? "P5" : "P6") + "\n" +
                             std::to_string(image.width()) + " " + std::to_string(image.height()) +
                             "\n255\n";
  const size_t pixels = static_cast<size_t>(image.width()) * image.height();
  Bytes bytes;
  bytes.reserve(header.size() + pixels * channels);
  bytes.assign(header.begin(), header.end());
  const uint8_t* const from = image.row(0);
  if (channels == image.channels()) {
    bytes.insert(bytes.end(), from, from + image.size());
  } else {
    for (size_t i = 0; i < pixels; ++i) bytes.insert(bytes.end(), 3, from[i]);
  }
  return bytes;
}

bool startsWith(ByteView file, const char* magic, size_t length) {
  return file.size >= length && std::memcmp(file.data, magic, length) == 0;
}

}  // namespace

ImageFormat imageFormatOf(const std::string& path) {
  std::string extension = std::filesystem::path(path).extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  if (extension == ".png") return ImageFormat::kPng;
  if (extension == ".pgm") return ImageFormat::kPgm;
  if (extension == ".ppm") return ImageFormat::kPpm;
  if (extension == ".pnm") return ImageFormat::kPnm;
  throw Error("a picture is written as .png, .ppm, .pgm or .pnm");
}

Image parseImage(ByteView file) {
  if (file.size == 0) throw Error("the file is empty");
  if (startsWith(file, "\x89PNG\r\n\x1a\n", 8)) return parsePng(file);
  if (file.size > 2 && file[0] == 'P' && std::strchr("2356", file[1]) != nullptr) {
    return parsePnm(file);
  }
  throw Error("neither PNG nor PGM nor PPM");
}

Bytes formatImage(const Image& image, ImageFormat format) {
  switch (format) {
    case ImageFormat::kPng:
      return formatPng(image);
    case ImageFormat::kPgm:
      if (image.channels() != 1) {
        throw Error("a colour picture does not fit a .pgm; write a .ppm or .png");
      }
      return formatPnm(image, 1);
    case ImageFormat::kPpm:
      return formatPnm(image, 3);
    case ImageFormat::kPnm:
      break;
  }
  return formatPnm(image, image.channels());
}

}  // namespace orbhost
