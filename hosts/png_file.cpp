#include "hosts/png_file.h"

#include <png.h>

#include <algorithm>
#include <csetjmp>
#include <cstring>
#include <new>
#include <string>
#include <utility>

#include "hosts/error.h"
#include "hosts/image_convert.h"

namespace orbhost {

namespace {

// What libpng's callbacks write to. libpng reports an error by a long jump, which must not skip a
// destructor: so each function that calls setjmp has nothing but plain locals, and what it works on
// belongs to its caller.
struct PngFault {
  char text[200] = "";
};

[[noreturn]] void onPngError(png_structp png, png_const_charp text) {
  auto* fault = static_cast<PngFault*>(png_get_error_ptr(png));
  std::strncpy(fault->text, text, sizeof fault->text - 1);
  png_longjmp(png, 1);
}
void onPngWarning(png_structp, png_const_charp) {}

[[noreturn]] void failPng(const PngFault& fault) {
  throw Error(std::string("PNG: ") + fault.text);
}

bool isLittleEndian() {
  const uint16_t one = 1;
  uint8_t first;
  std::memcpy(&first, &one, 1);
  return first == 1;
}

// Whether each sample is one of a lower maximum that was scaled up.
bool holdsNoMoreThan(const Image& image, int maximum) {
  const int own = image.maximum();
  for (int y = 0; y < image.height(); ++y) {
    const bool holds = image.withRow(y, [&](const auto* row) {
      return std::all_of(row, row + image.rowSamples(), [&](int sample) {
        return rescale(rescale(sample, own, maximum), maximum, own) == sample;
      });
    });
    if (!holds) return false;
  }
  return true;
}

class PngReader {
 public:
  PngReader(ByteView file, Transparency transparency) : file_(file), transparency_(transparency) {
    png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, &fault_, onPngError, onPngWarning);
    if (png_ != nullptr) info_ = png_create_info_struct(png_);
    if (info_ == nullptr) {
      png_destroy_read_struct(&png_, nullptr, nullptr);
      throw Error("PNG: libpng cannot be used");
    }
  }
  PngReader(const PngReader&) = delete;
  PngReader& operator=(const PngReader&) = delete;
  ~PngReader() { png_destroy_read_struct(&png_, &info_, nullptr); }

  Image read() {
    if (!readHeader()) failPng(fault_);
    const int64_t width = png_get_image_width(png_, info_);
    const int64_t height = png_get_image_height(png_, info_);
    // Deflate turns one byte into 1032 at most: a size beyond that is a lie, and no reason to
    // allocate anything.
    const uint64_t coded = static_cast<uint64_t>(width) * height *
                           (codedBitsPerPixel_ == 0 ? 1 : codedBitsPerPixel_) / 8;
    if (width > 0x7fffffff || height > 0x7fffffff || coded / 1032 > file_.size) {
      throw Error("PNG: " + std::to_string(width) + " x " + std::to_string(height) +
                  " pixels cannot come from " + std::to_string(file_.size) + " bytes");
    }
    const int maximum = png_get_bit_depth(png_, info_) == 16 ? 65535 : 255;
    Image image(static_cast<int>(width), static_cast<int>(height), png_get_channels(png_, info_),
                maximum);
    if (!readRows(image)) failPng(fault_);
    const int significant = (1 << significantBits()) - 1;
    return significant < maximum && holdsNoMoreThan(image, significant)
               ? withMaximum(image, significant)
               : std::move(image);
  }

 private:
  static void onRead(png_structp png, png_bytep to, size_t count) {
    auto* reader = static_cast<PngReader*>(png_get_io_ptr(png));
    if (count > reader->file_.size - reader->position_) png_error(png, "the file ends too early");
    std::memcpy(to, reader->file_.data + reader->position_, count);
    reader->position_ += count;
  }

  bool readHeader() {
    if (setjmp(png_jmpbuf(png_)) != 0) return false;
    png_set_read_fn(png_, this, onRead);
    png_set_user_limits(png_, 0x7fffffff, 0x7fffffff);
    png_read_info(png_, info_);
    codedBitsPerPixel_ = png_get_channels(png_, info_) * png_get_bit_depth(png_, info_);
    png_set_expand(png_);
    const bool isTransparent = (png_get_color_type(png_, info_) & PNG_COLOR_MASK_ALPHA) != 0 ||
                               png_get_valid(png_, info_, PNG_INFO_tRNS) != 0;
    if (transparency_ == Transparency::kDropped) {
      png_set_strip_alpha(png_);
    } else if (isTransparent) {
      png_set_gray_to_rgb(png_);
    }
    if (isLittleEndian()) png_set_swap(png_);
    passes_ = png_set_interlace_handling(png_);
    png_read_update_info(png_, info_);
    return true;
  }

  bool readRows(Image& image) {
    if (setjmp(png_jmpbuf(png_)) != 0) return false;
    for (int pass = 0; pass < passes_; ++pass) {
      for (int y = 0; y < image.height(); ++y) png_read_row(png_, image.row(y), nullptr);
    }
    png_read_end(png_, nullptr);
    return true;
  }

  // As the file says, if it says the same of all channels that are kept.
  int significantBits() {
    png_color_8p bits = nullptr;
    if (png_get_sBIT(png_, info_, &bits) == 0) return 16;
    if (png_get_channels(png_, info_) == 1) return bits->gray;
    if (png_get_channels(png_, info_) == 4) return 16;  // nothing is said of transparency
    return bits->red == bits->green && bits->green == bits->blue ? bits->red : 16;
  }

  ByteView file_;
  Transparency transparency_;
  size_t position_ = 0;
  PngFault fault_;
  png_structp png_ = nullptr;
  png_infop info_ = nullptr;
  uint32_t codedBitsPerPixel_ = 0;
  int passes_ = 1;
};

class PngWriter {
 public:
  PngWriter() {
    png_ = png_create_write_struct(PNG_LIBPNG_VER_STRING, &fault_, onPngError, onPngWarning);
    if (png_ != nullptr) info_ = png_create_info_struct(png_);
    if (info_ == nullptr) {
      png_destroy_write_struct(&png_, nullptr);
      throw Error("PNG: libpng cannot be used");
    }
  }
  PngWriter(const PngWriter&) = delete;
  PngWriter& operator=(const PngWriter&) = delete;
  ~PngWriter() { png_destroy_write_struct(&png_, &info_); }

  // Of a maximum of 255 or 65535. `bits` is how many of a sample are significant.
  Bytes write(const Image& image, int bits) {
    if (!writeRows(image, bits)) failPng(fault_);
    return std::move(bytes_);
  }

 private:
  static void onWrite(png_structp png, png_bytep from, size_t count) {
    auto* writer = static_cast<PngWriter*>(png_get_io_ptr(png));
    bool grown = true;
    try {
      writer->bytes_.insert(writer->bytes_.end(), from, from + count);
    } catch (const std::bad_alloc&) {
      grown = false;
    }
    if (!grown) png_error(png, "out of memory");
  }

  bool writeRows(const Image& image, int bits) {
    if (setjmp(png_jmpbuf(png_)) != 0) return false;
    png_set_write_fn(png_, this, onWrite, nullptr);
    png_set_user_limits(png_, 0x7fffffff, 0x7fffffff);
    const int depth = image.isWide() ? 16 : 8;
    const int colours = image.channels() == 1   ? PNG_COLOR_TYPE_GRAY
                        : image.channels() == 3 ? PNG_COLOR_TYPE_RGB
                                                : PNG_COLOR_TYPE_RGB_ALPHA;
    png_set_IHDR(png_, info_, image.width(), image.height(), depth, colours, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (bits < depth) {
      const png_byte byte = static_cast<png_byte>(bits);
      const png_color_8 significant = {byte, byte, byte, byte, byte};
      png_set_sBIT(png_, info_, &significant);
    }
    png_write_info(png_, info_);
    if (isLittleEndian()) png_set_swap(png_);
    for (int y = 0; y < image.height(); ++y) png_write_row(png_, image.row(y));
    png_write_end(png_, nullptr);
    return true;
  }

  Bytes bytes_;
  PngFault fault_;
  png_structp png_ = nullptr;
  png_infop info_ = nullptr;
};

}  // namespace

Image parsePng(ByteView file, Transparency transparency) {
  return PngReader(file, transparency).read();
}

Bytes formatPng(const Image& image) {
  const int stored = image.isWide() ? 65535 : 255;
  if (image.maximum() == stored) return PngWriter().write(image, 16);
  int bits = 1;
  while ((1 << bits) - 1 < image.maximum()) ++bits;
  return PngWriter().write(withMaximum(image, stored), bits);
}

}  // namespace orbhost
