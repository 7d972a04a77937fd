#include "hosts/pnm_file.h"

#include <cctype>
#include <cstring>
#include <string>
#include <type_traits>

#include "hosts/error.h"

namespace orbhost {

namespace {

constexpr int kLargestMaximum = 65535;

// The text part of an any-map: words and numbers between white space and comments.
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

  std::string word() {
    skipSpace();
    std::string word;
    while (position_ < file_.size && std::isspace(file_[position_]) == 0) {
      word += static_cast<char>(file_[position_++]);
    }
    if (word.empty()) fail("the file ends before its header does");
    return word;
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

struct PnmHeader {
  int width = 0;
  int height = 0;
  int maximum = 0;
  int depth = 0;     // samples of a pixel in the file
  int channels = 0;  // those of the picture, which come first
  bool ascii = false;
};

PnmHeader readPlainHeader(PnmText& text, int kind) {
  PnmHeader header;
  header.width = text.number("the width");
  header.height = text.number("the height");
  header.maximum = text.number("the maximum");
  header.depth = header.channels = kind == 3 || kind == 6 ? 3 : 1;
  header.ascii = kind <= 3;
  return header;
}

// What a PAM's samples are; 0 if unknown. Without a tuple type the number of samples tells.
int channelsOf(const std::string& tupleType, int depth) {
  struct Type {
    const char* name;
    int depth;
    int channels;
  };
  static constexpr Type kTypes[] = {{"", 1, 1},
                                    {"", 3, 3},
                                    {"BLACKANDWHITE", 1, 1},
                                    {"BLACKANDWHITE_ALPHA", 2, 1},
                                    {"GRAYSCALE", 1, 1},
                                    {"GRAYSCALE_ALPHA", 2, 1},
                                    {"RGB", 3, 3},
                                    {"RGB_ALPHA", 4, 3},
                                    {"CMYK", 4, 4},
                                    {"CMYK_ALPHA", 5, 4}};
  for (const Type& type : kTypes) {
    if (type.name == tupleType && type.depth == depth) return type.channels;
  }
  return 0;
}

PnmHeader readPamHeader(PnmText& text) {
  PnmHeader header;
  std::string tupleType;
  for (std::string key = text.word(); key != "ENDHDR"; key = text.word()) {
    if (key == "WIDTH") {
      header.width = text.number("the width");
    } else if (key == "HEIGHT") {
      header.height = text.number("the height");
    } else if (key == "DEPTH") {
      header.depth = text.number("the depth");
    } else if (key == "MAXVAL") {
      header.maximum = text.number("the maximum");
    } else if (key == "TUPLTYPE") {
      tupleType = text.word();
    } else {
      text.fail("a PAM's header has no " + key);
    }
  }
  header.channels = channelsOf(tupleType, header.depth);
  if (header.channels == 0) {
    text.fail("a PAM of the tuple type \"" + tupleType + "\" with " + std::to_string(header.depth) +
              " samples is not supported");
  }
  return header;
}

int sampleOf(const uint8_t* bytes, size_t i, bool wide) {
  return wide ? bytes[2 * i] << 8 | bytes[2 * i + 1] : bytes[i];
}

}  // namespace

bool isPnm(ByteView file) {
  return file.size > 2 && file[0] == 'P' && std::strchr("23567", file[1]) != nullptr;
}

Image parsePnm(ByteView file) {
  const int kind = file[1] - '0';
  PnmText text(file);
  const PnmHeader header = kind == 7 ? readPamHeader(text) : readPlainHeader(text, kind);
  if (header.width < 1 || header.height < 1) text.fail("a picture without pixels");
  if (header.maximum < 1 || header.maximum > kLargestMaximum) {
    text.fail("the maximum is not within 1 and 65535");
  }

  const ByteView samples = header.ascii ? text.rest() : text.binary();
  const bool wide = header.maximum > 255;
  const int bytes = header.ascii || wide ? 2 : 1;  // a digit and a space, or two bytes
  // The last number of an ASCII file may lack its space.
  const uint64_t pixels = static_cast<uint64_t>(header.width) * header.height;
  const uint64_t room = samples.size + (header.ascii ? 1 : 0);
  if (pixels > room / (static_cast<unsigned>(header.depth) * bytes)) {
    text.fail("the file ends before its samples do");
  }

  Image image(header.width, header.height, header.channels, header.maximum);
  if (!header.ascii && header.maximum == 255 && header.depth == header.channels) {
    std::memcpy(image.row(0), samples.data, image.size());
    return image;
  }
  size_t next = 0;  // sample of the file
  for (int y = 0; y < header.height; ++y) {
    image.withRow(y, [&](auto* to) {
      using Sample = std::remove_reference_t<decltype(*to)>;
      for (int x = 0; x < header.width; ++x) {
        for (int c = 0; c < header.depth; ++c, ++next) {
          const int value =
              header.ascii ? text.number("a sample") : sampleOf(samples.data, next, wide);
          if (value > header.maximum) text.fail("a sample is above the maximum");
          if (c < header.channels) *to++ = static_cast<Sample>(value);
        }
      }
    });
  }
  return image;
}

namespace {

void append(Bytes& to, const std::string& text) {
  to.insert(to.end(), text.begin(), text.end());
}

// Each sample as often as `times` says.
void appendSamples(Bytes& to, const Image& image, int times) {
  to.reserve(to.size() + image.size() * times);
  for (int y = 0; y < image.height(); ++y) {
    image.withRow(y, [&](const auto* from) {
      if (!image.isWide() && times == 1) {
        to.insert(to.end(), from, from + image.rowSamples());
        return;
      }
      for (size_t i = 0; i < image.rowSamples(); ++i) {
        for (int n = 0; n < times; ++n) {
          if (image.isWide()) to.push_back(static_cast<uint8_t>(from[i] >> 8));
          to.push_back(static_cast<uint8_t>(from[i]));
        }
      }
    });
  }
}

}  // namespace

Bytes formatPnm(const Image& image, int channels) {
  Bytes bytes;
  append(bytes, std::string(channels == 1 ? "P5" : "P6") + "\n" + std::to_string(image.width()) +
                    " " + std::to_string(image.height()) + "\n" + std::to_string(image.maximum()) +
                    "\n");
  appendSamples(bytes, image, channels / image.channels());
  return bytes;
}

Bytes formatPam(const Image& image) {
  return formatPam(image, image.channels() == 1   ? "GRAYSCALE"
                          : image.channels() == 3 ? "RGB"
                                                  : "CMYK");
}

Bytes formatPam(const Image& image, const std::string& tupleType) {
  Bytes bytes;
  append(bytes, "P7\nWIDTH " + std::to_string(image.width()) + "\nHEIGHT " +
                    std::to_string(image.height()) + "\nDEPTH " + std::to_string(image.channels()) +
                    "\nMAXVAL " + std::to_string(image.maximum()) + "\n" +
                    (tupleType.empty() ? "" : "TUPLTYPE " + tupleType + "\n") + "ENDHDR\n");
  appendSamples(bytes, image, 1);
  return bytes;
}

}  // namespace orbhost
