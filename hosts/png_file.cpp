#include "hosts/png_file.h"

#include <png.h>

#include <csetjmp>
#include <cstring>
#include <new>
#include <string>
#include <utility>

#include "hosts/error.h"

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

class PngReader {
 public:
  explicit PngReader(ByteView file) : file_(file) {
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
    Image image(static_cast<int>(width), static_cast<int>(height), png_get_channels(png_, info_));
    if (!readRows(image)) failPng(fault_);
    return image;
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
    png_set_scale_16(png_);
    png_set_strip_alpha(png_);
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

  ByteView file_;
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

  Bytes write(const Image& image) {
    if (!writeRows(image)) failPng(fault_);
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

  bool writeRows(const Image& image) {
    if (setjmp(png_jmpbuf(png_)) != 0) return false;
    png_set_write_fn(png_, this, onWrite, nullptr);
    png_set_user_limits(png_, 0x7fffffff, 0x7fffffff);
    png_set_IHDR(png_, info_, image.width(), image.height(), 8,
                 image.channels() == 1 ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png_, info_);
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

Image parsePng(ByteView file) {
  return PngReader(file).read();
}

Bytes formatPng(const Image& image) {
  return PngWriter().write(image);
}

}  // namespace orbhost
