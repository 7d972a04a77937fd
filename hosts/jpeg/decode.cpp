#include "hosts/jpeg/decode.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "hosts/error.h"
#include "hosts/jpeg/huffman.h"
#include "hosts/jpeg/layout.h"
#include "hosts/jpeg/markers.h"
#include "orb90legacy.h"

namespace orbhost::jpeg {

namespace {

// ---- Entropy-coded bytes

// Reads the blocks of one scan in their order. It counts MCUs for the restarts.
class ScanReader {
 public:
  ScanReader(ByteView file, const MarkerReader& markers)
      : file_(file),
        position_(static_cast<Orb32s>(markers.scan().dataOffset)),
        restartInterval_(markers.restartInterval()),
        state_(makeDecodeState()) {
    for (const ScanComponent& component : markers.scan().components) {
      dc_.push_back(tableOf(markers.dcTable(component.dcTable), "DC", component.dcTable, markers));
      ac_.push_back(tableOf(markers.acTable(component.acTable), "AC", component.acTable, markers));
    }
  }

  void beginMcu() {
    if (restartInterval_ != 0 && mcus_ == restartInterval_) restart();
    ++mcus_;
  }

  // `component` is a place in the scan.
  void read(int component, Block& block) {
    const OrbStatus status = legacy90orbiDecodeHuffman8x8_JPEG_1u16s_C1(
        file_.data, static_cast<Orb32s>(file_.size), &position_, block.values, &lastDc_[component],
        &marker_, dc_[component].get(), ac_[component].get(), state_.get());
    if (status != orbStsNoErr) fail(status);
  }

  // Where the marker behind the scan is.
  size_t finish() const { return marker_ != 0 ? position_ - 2 : position_; }

 private:
  static DecodeTable tableOf(const std::optional<HuffmanTable>& table, const char* kind, int number,
                             const MarkerReader& markers) {
    if (!table) {
      failAt(markers.scan().offset, "the scan needs " + std::string(kind) + " Huffman table " +
                                        std::to_string(number) + ", which is missing");
    }
    return makeDecodeTable(*table);
  }

  void restart() {
    // The decoder reads ahead, but never past a marker: either it has met this one, or it comes
    // next, behind any number of fill bytes.
    if (marker_ == 0) {
      size_t at = position_;
      while (at < file_.size && file_[at] == 0xFF) ++at;
      if (at == file_.size) fail(orbStsJpegBufferEndErr);
      if (at > static_cast<size_t>(position_)) {
        marker_ = file_[at];
        position_ = static_cast<Orb32s>(at + 1);
      }
    }
    if (marker_ != kRst0 + restarts_ % 8) {
      failAt(position_,
             "restart marker " + std::to_string(restarts_ % 8) + " is not where it should be");
    }
    ++restarts_;
    marker_ = 0;
    mcus_ = 0;
    std::fill(std::begin(lastDc_), std::end(lastDc_), Orb16s{0});
    legacy90orbiDecodeHuffmanStateInit_JPEG_8u(state_.get());
  }

  [[noreturn]] void fail(OrbStatus status) const {
    if (status == orbStsJpegBufferEndErr) {
      failAt(file_.size, "the file ends before the picture does");
    }
    if (marker_ != 0) failAt(position_ - 2, "the scan's data end before the picture does");
    failAt(position_, "the scan's data are damaged");
  }

  ByteView file_;
  Orb32s position_;
  Orb32s marker_ = 0;  // met and not yet dealt with
  int restartInterval_;
  int mcus_ = 0;  // since the last restart
  int restarts_ = 0;
  Orb16s lastDc_[4] = {};
  DecodeState state_;
  std::vector<DecodeTable> dc_;
  std::vector<DecodeTable> ac_;
};

// ---- From blocks to pixels

using Inverse = decltype(&legacy90orbiDCTQuantInv8x8LS_JPEG_16s8u_C1R);

// The mean of a block.
OrbStatus ORB_CALL inverseTo1x1(const Orb16s* block, Orb8u* to, Orb32s, const Orb16u* divisors) {
  *to = static_cast<Orb8u>(std::clamp(((block[0] * divisors[0] + 4) >> 3) + 128, 0, 255));
  return orbStsNoErr;
}

Inverse inverseTo(int size) {
  switch (size) {
    case 8:
      return legacy90orbiDCTQuantInv8x8LS_JPEG_16s8u_C1R;
    case 4:
      return legacy90orbiDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R;
    case 2:
      return legacy90orbiDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R;
    default:
      return inverseTo1x1;
  }
}

enum class ColourSpace { kGrey, kYCbCr, kRgb, kCmyk, kYcck };

// What the components are is not in the frame: JFIF means YCbCr, an Adobe segment tells, and some
// files name their components R, G and B.
ColourSpace colourSpaceOf(const MarkerReader& markers) {
  const std::vector<FrameComponent>& components = markers.frame().components;
  const std::optional<int> transform = markers.adobeTransform();
  if (components.size() == 1) return ColourSpace::kGrey;
  if (components.size() == 4) {
    return transform.value_or(0) == 0 ? ColourSpace::kCmyk : ColourSpace::kYcck;
  }
  if (markers.hasJfif()) return ColourSpace::kYCbCr;
  if (transform) return *transform == 0 ? ColourSpace::kRgb : ColourSpace::kYCbCr;
  const bool named = components[0].id == 'R' && components[1].id == 'G' && components[2].id == 'B';
  return named ? ColourSpace::kRgb : ColourSpace::kYCbCr;
}

// Takes the blocks of one row of MCUs after the other and gives the picture's rows as soon as their
// samples are there.
class PictureBuilder {
 public:
  PictureBuilder(const MarkerReader& markers, const Layout& layout, int scale)
      : frame_(markers.frame()),
        colourSpace_(colourSpaceOf(markers)),
        inverted_(markers.adobeTransform().has_value()),
        smallest_(8 / scale),
        rowsPerMcu_(layout.vMax * smallest_),
        image_(divideUp(frame_.width, scale), divideUp(frame_.height, scale),
               frame_.components.size() == 1 ? 1 : 3) {
    for (const ComponentLayout& component : layout.components) addComponent(layout, component);
    if (colourSpace_ == ColourSpace::kYcck) cmyk_.resize(static_cast<size_t>(image_.width()) * 4);
  }

  void useDivisors(int component, const Divisors& divisors) {
    for (int k = 0; k < 64; ++k) {
      // A larger one would be read as negative. With either, the product leaves every range.
      components_[component].divisors[kZigzag[k]] = std::min<Orb16u>(divisors[k], 32767);
    }
  }

  void beginMcuRow(int mcuRow) {
    for (Component& component : components_) {
      if (mcuRow > 0) {
        std::memcpy(component.windowRow(0), component.windowRow(component.rowsPerMcu),
                    component.step);
      }
      component.firstRow = mcuRow * component.rowsPerMcu;
    }
  }

  void put(int c, int column, int row, const Block& block) {
    Component& component = components_[c];
    uint8_t* const to =
        component.windowRow(1 + row % component.v * component.size) + column * component.size;
    component.inverse(block.values, to, component.step, component.divisors);
  }

  // Gives the rows whose samples are there, which is all but the last if that needs the next one's.
  void endMcuRow(int mcuRow, bool isLast) {
    const int end = isLast ? image_.height() : (mcuRow + 1) * rowsPerMcu_ - (looksAhead_ ? 1 : 0);
    for (; nextRow_ < end; ++nextRow_) emitRow(nextRow_);
  }

  Image takeImage() { return std::move(image_); }

 private:
  struct Component {
    int size;   // of its blocks, once inverted
    int width;  // in samples of the picture
    int height;
    int v;
    int rowsPerMcu;
    int step;
    bool doubledAcross;
    bool doubledDown;
    bool smooth;  // doubled with the triangle filter, or by repetition
    Inverse inverse;
    int firstRow = 0;              // of this row of MCUs
    std::vector<uint8_t> window;   // the last row of the MCUs above, then the rows of these
    std::vector<uint8_t> doubled;  // one row of the picture
    alignas(64) Orb16u divisors[64];

    uint8_t* windowRow(int i) { return window.data() + static_cast<ptrdiff_t>(i) * step; }
    // Beyond the component's edges its first and last rows are repeated.
    const uint8_t* row(int y) { return windowRow(std::clamp(y, 0, height - 1) - firstRow + 1); }
  };

  void addComponent(const Layout& layout, const ComponentLayout& from) {
    Component component{};
    // A component with fewer samples than others need not lose as many at a reduced size: as long
    // as it has half the samples in both directions, its blocks are left twice as large.
    component.size = smallest_;
    while (component.size < 8 && layout.hMax * smallest_ % (from.h * component.size * 2) == 0 &&
           layout.vMax * smallest_ % (from.v * component.size * 2) == 0) {
      component.size *= 2;
    }
    component.width = divideUp(frame_.width * from.h * component.size, layout.hMax * 8);
    component.height = divideUp(frame_.height * from.v * component.size, layout.vMax * 8);
    component.v = from.v;
    component.rowsPerMcu = from.v * component.size;
    component.step = from.paddedBlocksWide * component.size;
    component.doubledAcross = from.h * component.size < layout.hMax * smallest_;
    component.doubledDown = component.rowsPerMcu < rowsPerMcu_;
    component.smooth = smallest_ > 1 && (component.width > 2 || !component.doubledAcross);
    component.inverse = inverseTo(component.size);
    component.window.resize(static_cast<size_t>(component.step) * (component.rowsPerMcu + 1));
    component.doubled.resize(static_cast<size_t>(component.step) * 2);
    if (component.doubledDown && component.smooth) looksAhead_ = true;
    components_.push_back(std::move(component));
  }

  // A component's samples for a row of the picture.
  const uint8_t* fullRow(Component& component, int y) {
    if (!component.doubledAcross && !component.doubledDown) return component.row(y);
    const int nearRow = component.doubledDown ? y >> 1 : y;
    const int farRow = y % 2 == 0 ? nearRow - 1 : nearRow + 1;
    const uint8_t* const from = component.row(nearRow);
    uint8_t* const to = component.doubled.data();
    if (!component.smooth) {
      if (!component.doubledAcross) return from;
      for (int i = 0; i < component.width; ++i) to[2 * i] = to[2 * i + 1] = from[i];
    } else if (!component.doubledDown) {
      legacy90orbiSampleUpRowH2V1_Triangle_JPEG_8u_C1(from, component.width, to);
    } else if (component.doubledAcross) {
      legacy90orbiSampleUpRowH2V2_Triangle_JPEG_8u_C1(from, component.row(farRow), component.width,
                                                      to);
    } else {
      const uint8_t* const other = component.row(farRow);
      const int bias = y % 2 == 0 ? 1 : 2;
      for (int i = 0; i < component.width; ++i) {
        to[i] = static_cast<uint8_t>((3 * from[i] + other[i] + bias) >> 2);
      }
    }
    return to;
  }

  void emitRow(int y) {
    const uint8_t* planes[4] = {};
    for (size_t c = 0; c < components_.size(); ++c) planes[c] = fullRow(components_[c], y);
    uint8_t* const to = image_.row(y);
    const int width = image_.width();
    const Orb32s step = components_[0].step;  // of rows of which there is one
    const Orb32s imageStep = static_cast<Orb32s>(image_.rowBytes());
    switch (colourSpace_) {
      case ColourSpace::kGrey:
        std::memcpy(to, planes[0], width);
        break;
      case ColourSpace::kYCbCr:
        legacy90orbiYCbCrToRGB_JPEG_8u_P3C3R(planes, step, to, imageStep, {width, 1});
        break;
      case ColourSpace::kRgb:
        for (int x = 0; x < width; ++x) {
          for (int c = 0; c < 3; ++c) to[3 * x + c] = planes[c][x];
        }
        break;
      case ColourSpace::kCmyk:
        for (int x = 0; x < width; ++x) {
          putInks(planes[0][x], planes[1][x], planes[2][x], planes[3][x], to + 3 * x);
        }
        break;
      case ColourSpace::kYcck:
        legacy90orbiYCCKToCMYK_JPEG_8u_P4C4R(planes, step, cmyk_.data(), width * 4, {width, 1});
        for (int x = 0; x < width; ++x) {
          const uint8_t* const inks = &cmyk_[4 * static_cast<size_t>(x)];
          putInks(inks[0], inks[1], inks[2], inks[3], to + 3 * x);
        }
        break;
    }
  }

  // Light is what the inks leave. In files with an Adobe segment it is light that is stored.
  void putInks(int c, int m, int y, int k, uint8_t* to) const {
    const int flip = inverted_ ? 0 : 255;
    k ^= flip;
    to[0] = static_cast<uint8_t>(((c ^ flip) * k + 127) / 255);
    to[1] = static_cast<uint8_t>(((m ^ flip) * k + 127) / 255);
    to[2] = static_cast<uint8_t>(((y ^ flip) * k + 127) / 255);
  }

  const Frame& frame_;
  ColourSpace colourSpace_;
  bool inverted_;
  int smallest_;    // size of the blocks of the component that has most samples
  int rowsPerMcu_;  // of the picture
  bool looksAhead_ = false;
  std::vector<Component> components_;
  std::vector<uint8_t> cmyk_;
  int nextRow_ = 0;
  Image image_;
};

// ---- The picture

class Decoder {
 public:
  Decoder(ByteView file, int scale) : file_(file), scale_(scale), markers_(file) {
    if (scale != 1 && scale != 2 && scale != 4 && scale != 8) {
      throw Error("a picture is decoded at 1, 1/2, 1/4 or 1/8 of its size");
    }
    if (file.size > static_cast<size_t>(std::numeric_limits<Orb32s>::max())) {
      throw Error("files above 2 GiB are not supported");
    }
  }

  Image run() {
    if (!markers_.nextScan()) throw Error("the file has no scan");
    const Frame& frame = markers_.frame();
    const Layout layout(frame);
    checkSize(frame, layout);
    PictureBuilder picture(markers_, layout, scale_);
    if (markers_.scan().components.size() == frame.components.size()) {
      decodeAtOnce(layout, picture);
    } else {
      decodeScans(layout, picture);
    }
    return picture.takeImage();
  }

 private:
  // No block is coded in less than two bits: what could not be in the file is not allocated.
  void checkSize(const Frame& frame, const Layout& layout) const {
    uint64_t blocks = 0;
    for (const ComponentLayout& component : layout.components) {
      blocks += static_cast<uint64_t>(component.blocksWide) * component.blocksHigh;
    }
    if (blocks / 4 > file_.size) {
      throw Error("a picture of " + std::to_string(frame.width) + " x " +
                  std::to_string(frame.height) + " pixels cannot come from " +
                  std::to_string(file_.size) + " bytes");
    }
  }

  // One scan holds everything: each block turns into samples as it is read.
  void decodeAtOnce(const Layout& layout, PictureBuilder& picture) {
    for (const ScanComponent& component : markers_.scan().components) {
      useDivisors(component.component, picture);
    }
    ScanReader reader(file_, markers_);
    Block block;
    for (int mcuRow = 0; mcuRow < layout.mcusHigh; ++mcuRow) {
      picture.beginMcuRow(mcuRow);
      walkMcuRow(
          layout, markers_.scan().components, mcuRow, [&] { reader.beginMcu(); },
          [&](int i, int c, int column, int row) {
            reader.read(i, block);
            picture.put(c, column, row, block);
          });
      picture.endMcuRow(mcuRow, mcuRow + 1 == layout.mcusHigh);
    }
    markers_.resumeAt(reader.finish());
    if (markers_.nextScan()) failAt(markers_.scan().offset, "a scan behind the last one");
  }

  // The blocks are kept until every component has had its scan.
  void decodeScans(const Layout& layout, PictureBuilder& picture) {
    BlockPlanes blocks(layout);
    std::array<bool, 4> done{};
    do {
      const std::vector<ScanComponent>& scan = markers_.scan().components;
      for (const ScanComponent& component : scan) {
        if (done[component.component]) {
          failAt(markers_.scan().offset, "a second scan of the same component");
        }
        done[component.component] = true;
        useDivisors(component.component, picture);
      }
      ScanReader reader(file_, markers_);
      if (scan.size() == 1) {
        // A component alone is coded without the blocks that only fill up MCUs.
        const int c = scan[0].component;
        for (int row = 0; row < layout.components[c].blocksHigh; ++row) {
          for (int column = 0; column < layout.components[c].blocksWide; ++column) {
            reader.beginMcu();
            reader.read(0, blocks.at(c, column, row));
          }
        }
      } else {
        for (int mcuRow = 0; mcuRow < layout.mcusHigh; ++mcuRow) {
          walkMcuRow(
              layout, scan, mcuRow, [&] { reader.beginMcu(); },
              [&](int i, int c, int column, int row) {
                reader.read(i, blocks.at(c, column, row));
              });
        }
      }
      markers_.resumeAt(reader.finish());
    } while (markers_.nextScan());
    std::vector<ScanComponent> all;
    for (int c = 0; c < static_cast<int>(layout.components.size()); ++c) {
      if (!done[c]) throw Error("the file ends before every component has had its scan");
      all.push_back({c, 0, 0});
    }
    for (int mcuRow = 0; mcuRow < layout.mcusHigh; ++mcuRow) {
      picture.beginMcuRow(mcuRow);
      walkMcuRow(
          layout, all, mcuRow, [] {},
          [&](int, int c, int column, int row) {
            picture.put(c, column, row, blocks.at(c, column, row));
          });
      picture.endMcuRow(mcuRow, mcuRow + 1 == layout.mcusHigh);
    }
  }

  void useDivisors(int component, PictureBuilder& picture) {
    const int table = markers_.frame().components[component].table;
    const std::optional<Divisors>& divisors = markers_.divisors(table);
    if (!divisors) {
      failAt(markers_.scan().offset,
             "the scan needs quantisation table " + std::to_string(table) + ", which is missing");
    }
    picture.useDivisors(component, *divisors);
  }

  ByteView file_;
  int scale_;
  MarkerReader markers_;
};

}  // namespace

Image decodeJpeg(ByteView file, const DecodeOptions& options) {
  return Decoder(file, options.scale).run();
}

}  // namespace orbhost::jpeg
