#include "hosts/bmp_file.h"

#include <limits>

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

}  // namespace orbhost
