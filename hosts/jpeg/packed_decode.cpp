#include "hosts/jpeg/packed_decode.h"

#include <utility>

#include "hosts/error.h"
#include "hosts/jpeg/block_decode.h"
#include "hosts/jpeg/colour.h"
#include "hosts/jpeg/picture.h"
#include "orb90legacy.h"

namespace orbhost::jpeg {

namespace {

using FromMcu = decltype(&legacy90orbiYCbCr444ToBGR555LS_MCU_16s16u_P3C3R);

// The library's conversion for a layout; null if it has none.
FromMcu conversionFor(const MarkerReader& markers, const Layout& layout, PackedFormat format) {
  if (markers.frame().isLossless() || colourSpaceOf(markers) != ColourSpace::kYCbCr) return nullptr;
  for (int c : {1, 2}) {
    if (layout.components[c].h != 1 || layout.components[c].v != 1) return nullptr;
  }
  const bool is555 = format == PackedFormat::kBgr555;
  switch (layout.components[0].h * 10 + layout.components[0].v) {
    case 11:
      return is555 ? legacy90orbiYCbCr444ToBGR555LS_MCU_16s16u_P3C3R
                   : legacy90orbiYCbCr444ToBGR565LS_MCU_16s16u_P3C3R;
    case 21:
      return is555 ? legacy90orbiYCbCr422ToBGR555LS_MCU_16s16u_P3C3R
                   : legacy90orbiYCbCr422ToBGR565LS_MCU_16s16u_P3C3R;
    case 22:
      return is555 ? legacy90orbiYCbCr411ToBGR555LS_MCU_16s16u_P3C3R
                   : legacy90orbiYCbCr411ToBGR565LS_MCU_16s16u_P3C3R;
    default:
      return nullptr;
  }
}

// Gathers the blocks of one MCU, and turns them into its pixels.
class McuPacker : public BlockSink {
 public:
  McuPacker(const Frame& frame, const Layout& layout, PackedFormat format, FromMcu convert)
      : h_(layout.hMax),
        v_(layout.vMax),
        convert_(convert),
        image_(format, frame.width, frame.height, layout.mcusWide * 8 * h_,
               layout.mcusHigh * 8 * v_) {}

  void useDivisors(int component, const Divisors& divisors) override {
    makeInverseTable(divisors, divisors_[component]);
  }

  void beginMcuRow(int) override {}

  void put(int component, int column, int row, const Block& block) override {
    // Chroma has one block, luma as many as there are.
    const int place = component == 0 ? row % v_ * h_ + column % h_ : 0;
    legacy90orbiDCTQuantInv8x8_JPEG_16s_C1(block.values, blocks_[component][place].values,
                                           divisors_[component]);
    if (component == 0) {
      mcuColumn_ = column / h_;
      mcuRow_ = row / v_;
    }
    if (++gathered_ < h_ * v_ + 2) return;
    gathered_ = 0;
    const Orb16s* const mcu[3] = {blocks_[0][0].values, blocks_[1][0].values, blocks_[2][0].values};
    convert_(mcu, image_.row(mcuRow_ * 8 * v_) + mcuColumn_ * 8 * h_, image_.step());
  }

  void endMcuRow(int, bool) override {}

  PackedImage takeImage() { return std::move(image_); }

 private:
  int h_;
  int v_;
  FromMcu convert_;
  PackedImage image_;
  alignas(64) Orb16u divisors_[3][64];
  Block blocks_[3][4];
  int gathered_ = 0;
  int mcuColumn_ = 0;
  int mcuRow_ = 0;
};

}  // namespace

PackedImage decodeJpegPacked(ByteView file, PackedFormat format, const DecodeOptions& options) {
  checkOptions(options);
  MarkerReader markers(file);
  if (!markers.nextScan()) throw Error("the file has no scan");
  const Layout layout(markers.frame());
  const FromMcu convert = options.scale == 1 ? conversionFor(markers, layout, format) : nullptr;
  if (convert == nullptr) return pack(decodeJpeg(file, options), format);
  checkSize(file, markers, layout);
  McuPacker packer(markers.frame(), layout, format, convert);
  decodeBlocks(file, markers, layout, options.scansTo, packer);
  return packer.takeImage();
}

}  // namespace orbhost::jpeg
