#include "hosts/bmp_file.h"

#include <limits>
#include <string>

#include "hosts/error.h"
#include "hosts/image_convert.h"

namespace orbhost {

namespace {

constexpr int kFileHeaderSize = 14;
constexpr int kInfoHeaderSize = 40;
constexpr int kPlainPixels = 0;   // 24 bits, or 16 of which green has 5
constexpr int kMaskedPixels = 3;  // masks behind the header say where the samples are

// Rows go from the last to the first, each filled up to a multiple of 4 bytes.
class BmpWriter {
 public:
  BmpWriter(int width, int height, int bitsPerPixel, const std::vector<uint32_t>& masks) {
    const uint64_t rowBytes = (static_cast<uint64_t>(width) * bitsPerPixel + 31) / 32 * 4;
    const uint32_t offset =
        kFileHeaderSize + kInfoHeaderSize + 4 * static_cast<uint32_t>(masks.size());
    const uint64_t size = offset + rowBytes * height;
    if (size > std::numeric_limits<uint32_t>::max()) throw Error("a BMP holds at most 4 GiB");
    bytes_.reserve(size);
    bytes_.assign({'B', 'M'});
    put32(static_cast<uint32_t>(size));
    put32(0);  // reserved
    put32(offset);
    put32(kInfoHeaderSize);
    put32(static_cast<uint32_t>(width));
    put32(static_cast<uint32_t>(height));
    put16(1);  // plane
    put16(bitsPerPixel);
    put32(masks.empty() ? kPlainPixels : kMaskedPixels);
    put32(static_cast<uint32_t>(size - offset));
    for (int i = 0; i < 4; ++i) put32(0);  // two densities, two numbers of colours: none
    for (const uint32_t mask : masks) put32(mask);
    firstRow_ = bytes_.size();
  }

  void put8(int value) { bytes_.push_back(static_cast<uint8_t>(value)); }
  void put16(int value) {
    put8(value);
    put8(value >> 8);
  }
  void endRow() {
    while ((bytes_.size() - firstRow_) % 4 != 0) put8(0);
  }
  Bytes take() { return std::move(bytes_); }

 private:
  void put32(uint32_t value) {
    put16(static_cast<int>(value & 0xFFFF));
    put16(static_cast<int>(value >> 16));
  }

  Bytes bytes_;
  size_t firstRow_;
};

uint32_t numberAt(ByteView file, size_t offset, int bytes) {
  if (file.size < offset + bytes) throw Error("the file is damaged: it ends within its header");
  uint32_t value = 0;
  for (int i = 0; i < bytes; ++i) value |= static_cast<uint32_t>(file[offset + i]) << (8 * i);
  return value;
}

}  // namespace

Bytes formatBmp(const Image& image) {
  if (image.maximum() != 255) return formatBmp(withMaximum(image, 255));
  BmpWriter writer(image.width(), image.height(), 24, {});
  for (int y = image.height() - 1; y >= 0; --y) {
    const uint8_t* from = image.row(y);
    for (int x = 0; x < image.width(); ++x, from += image.channels()) {
      for (int c = 2; c >= 0; --c) writer.put8(from[image.channels() == 3 ? c : 0]);
    }
    writer.endRow();
  }
  return writer.take();
}

Bytes formatBmp(const PackedImage& image) {
  std::vector<uint32_t> masks;
  if (image.format() == PackedFormat::kBgr565) masks = {0xF800, 0x07E0, 0x001F};
  BmpWriter writer(image.width(), image.height(), 16, masks);
  for (int y = image.height() - 1; y >= 0; --y) {
    for (int x = 0; x < image.width(); ++x) writer.put16(image.row(y)[x]);
    writer.endRow();
  }
  return writer.take();
}

PackedImage parsePackedBmp(ByteView file) {
  if (file.size < 2 || file[0] != 'B' || file[1] != 'M') throw Error("this is no BMP file");
  const uint32_t infoSize = numberAt(file, 14, 4);
  if (infoSize < kInfoHeaderSize) throw Error("BMP files of this old kind are not supported");
  const uint32_t bitsPerPixel = numberAt(file, 28, 2);
  const uint32_t compression = numberAt(file, 30, 4);
  if (bitsPerPixel != 16) {
    throw Error("its pixels have " + std::to_string(bitsPerPixel) + " bits, and not 16");
  }
  PackedFormat format = PackedFormat::kBgr555;
  if (compression == kMaskedPixels) {
    // Behind the header, or its next fields.
    const size_t masks = kFileHeaderSize + kInfoHeaderSize;
    const uint32_t green = numberAt(file, masks + 4, 4);
    format = green == 0x07E0 ? PackedFormat::kBgr565 : PackedFormat::kBgr555;
    const bool is565 = format == PackedFormat::kBgr565;
    if (numberAt(file, masks, 4) != (is565 ? 0xF800u : 0x7C00u) ||
        green != (is565 ? 0x07E0u : 0x03E0u) || numberAt(file, masks + 8, 4) != 0x001F) {
      throw Error("its masks are neither those of 5 + 5 + 5 nor those of 5 + 6 + 5 bits");
    }
  } else if (compression != kPlainPixels) {
    throw Error("compression " + std::to_string(compression) + " is not supported");
  }
  const int64_t width = static_cast<int32_t>(numberAt(file, 18, 4));
  const int64_t signedHeight = static_cast<int32_t>(numberAt(file, 22, 4));
  const bool topDown = signedHeight < 0;
  const int64_t height = topDown ? -signedHeight : signedHeight;
  const uint64_t offset = numberAt(file, 10, 4);
  if (width < 1 || height < 1) throw Error("the file is damaged: it has no pixels");
  const uint64_t rowBytes = static_cast<uint64_t>(2 * width + 3) / 4 * 4;
  if (offset > file.size || rowBytes > (file.size - offset) / static_cast<uint64_t>(height)) {
    throw Error("the file is damaged: it ends within its pixels");
  }
  const int rows = static_cast<int>(height);
  PackedImage image(format, static_cast<int>(width), rows, static_cast<int>(width), rows);
  for (int y = 0; y < rows; ++y) {
    const uint8_t* from = file.data + offset + rowBytes * (topDown ? y : rows - 1 - y);
    for (int x = 0; x < image.width(); ++x, from += 2) {
      image.row(y)[x] = static_cast<uint16_t>(from[0] | from[1] << 8);
    }
  }
  return image;
}

}  // namespace orbhost
