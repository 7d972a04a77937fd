#include "hosts/jpeg/lossless_decode.h"

#include <algorithm>
#include <type_traits>
#include <utility>
#include <vector>

#include "hosts/error.h"
#include "hosts/jpeg/block_decode.h"
#include "hosts/jpeg/colour.h"
#include "hosts/jpeg/layout.h"
#include "hosts/jpeg/prediction.h"
#include "hosts/jpeg/progression.h"
#include "hosts/jpeg/scan_input.h"
#include "orb90legacy.h"

namespace orbhost::jpeg {

namespace {

constexpr int kLargestCategory = 16;

// Reads one scan as rows of samples.
class LosslessReader : public ScanInput {
 public:
  LosslessReader(ByteView file, const MarkerReader& markers, const Layout& layout)
      : ScanInput(file, markers),
        layout_(layout),
        scan_(markers.scan().components),
        mcusPerRow_(mcusPerRowOf(layout, scan_)),
        predictor_(markers.frame().precision, markers.scan().selection.ss,
                   markers.scan().selection.al) {
    if (markers.restartInterval() % mcusPerRow_ != 0) {
      failAt(markers.scan().offset, "restarts within a row are not supported in lossless files");
    }
    const bool alone = scan_.size() == 1;
    for (const ScanComponent& from : scan_) {
      const ComponentLayout& component = layout.components[from.component];
      Rows rows;
      rows.width = alone ? component.blocksWide : component.paddedBlocksWide;
      rows.count = alone ? 1 : component.v;
      rows.values.resize(static_cast<size_t>(rows.width) * (rows.count + 1));
      rows_.push_back(std::move(rows));
      tables_.push_back(dcTableOf(from, markers, kLargestCategory));
      if (!alone && component.h * component.v > 1) isPlain_ = false;
    }
  }

  // The next row of MCUs.
  void readRow(int mcuRow) {
    const bool restarts = beginMcus(mcusPerRow_) || mcuRow == 0;
    for (Rows& rows : rows_) std::copy_n(rows.row(rows.count), rows.width, rows.row(0));
    if (isPlain_) {
      readDifferences();
    } else {
      readGroupedDifferences(mcuRow);
    }
    for (Rows& rows : rows_) {
      for (int k = 1; k <= rows.count; ++k) {
        const Orb16s* const above = k == 1 && restarts ? nullptr : rows.row(k - 1);
        predictor_.reconstruct(rows.row(k), above, rows.width);
      }
    }
  }

  // What it gave of a component, by its place in the scan: how many rows, and each of them.
  int rowsOf(int component) const { return rows_[component].count; }
  const Orb16s* row(int component, int k) { return rows_[component].row(k + 1); }
  int sampleOf(Orb16s held) const { return predictor_.fromRow(held); }

 private:
  struct Rows {
    int width;
    int count;                   // in a row of MCUs
    std::vector<Orb16s> values;  // the last row of those above, then these

    Orb16s* row(int k) { return values.data() + static_cast<ptrdiff_t>(k) * width; }
  };

  // An MCU has one sample of each component.
  void readDifferences() {
    Orb16s* rows[4] = {};
    const OrbiDecodeHuffmanSpec* tables[4] = {};
    for (size_t i = 0; i < rows_.size(); ++i) {
      rows[i] = rows_[i].row(1);
      tables[i] = tables_[i].get();
    }
    check(legacy90orbiDecodeHuffmanRow_JPEG_1u16s_C1P4(data_, size_, &position_, rows, mcusPerRow_,
                                                       static_cast<Orb32s>(rows_.size()), &marker_,
                                                       tables, state_.get()));
  }

  // An MCU has several of some.
  void readGroupedDifferences(int mcuRow) {
    walkMcuRow(
        layout_, scan_, mcuRow, [] {},
        [&](int i, int, int column, int row) {
          check(legacy90orbiDecodeHuffmanOne_JPEG_1u16s_C1(
              data_, size_, &position_, rows_[i].row(1 + row % rows_[i].count) + column, &marker_,
              tables_[i].get(), state_.get()));
        });
  }

  const Layout& layout_;
  const std::vector<ScanComponent>& scan_;
  int mcusPerRow_;
  RowPredictor predictor_;
  bool isPlain_ = true;
  std::vector<Rows> rows_;
  std::vector<DecodeTable> tables_;
};

class LosslessDecoder {
 public:
  LosslessDecoder(ByteView file, MarkerReader& markers, const Layout& layout)
      : file_(file),
        markers_(markers),
        layout_(layout),
        image_(markers.frame().width, markers.frame().height,
               static_cast<int>(layout.components.size()), (1 << markers.frame().precision) - 1) {}

  Image run(int scansTo) {
    const ColourSpace colourSpace = colourSpaceOf(markers_);
    const bool convertsChroma =
        colourSpace == ColourSpace::kYCbCr || colourSpace == ColourSpace::kYcck;
    if (convertsChroma && image_.maximum() != 255) {
      throw Error("lossless YCbCr of other than 8 bits is not supported");
    }
    Progression progression(static_cast<int>(layout_.components.size()), false);
    int scans = 0;
    do {
      const std::vector<int> components = markers_.scan().componentIndexes();
      const auto fault = progression.add(components, {});
      if (fault) failAt(markers_.scan().offset, *fault);
      if (scans == 0 && components.size() < layout_.components.size()) fillWithMiddle();
      decodeScan();
    } while (++scans != scansTo && markers_.nextScan());
    if (scans != scansTo && !progression.isShowable()) {
      throw Error("the file ends before every component has had its scan");
    }
    if (convertsChroma) convertChroma(colourSpace);
    if (image_.channels() == 4 && storesLight(markers_)) turnLightToInk();
    return std::move(image_);
  }

 private:
  void fillWithMiddle() {
    for (int y = 0; y < image_.height(); ++y) {
      image_.withRow(
          y, [&](auto* row) { std::fill_n(row, image_.rowSamples(), (image_.maximum() + 1) / 2); });
    }
  }

  void decodeScan() {
    const std::vector<ScanComponent>& scan = markers_.scan().components;
    LosslessReader reader(file_, markers_, layout_);
    for (int mcuRow = 0; mcuRow < mcuRowsOf(layout_, scan); ++mcuRow) {
      reader.readRow(mcuRow);
      for (int i = 0; i < static_cast<int>(scan.size()); ++i) {
        const int rows = reader.rowsOf(i);
        for (int k = 0; k < rows; ++k) {
          putRow(reader, scan[i].component, mcuRow * rows + k, reader.row(i, k));
        }
      }
    }
    markers_.resumeAt(reader.finish());
  }

  // A row of a component's samples. Where others have more of them, each is repeated.
  void putRow(const LosslessReader& reader, int c, int row, const Orb16s* from) {
    const int shift = layout_.components[c].h < layout_.hMax ? 1 : 0;  // factors are 1 and 2
    const int down = layout_.vMax / layout_.components[c].v;
    const int channels = image_.channels();
    for (int y = row * down; y < std::min((row + 1) * down, image_.height()); ++y) {
      image_.withRow(y, [&](auto* to) {
        using Sample = std::remove_reference_t<decltype(*to)>;
        for (int x = 0; x < image_.width(); ++x) {
          to[x * channels + c] = static_cast<Sample>(reader.sampleOf(from[x >> shift]));
        }
      });
    }
  }

  void turnLightToInk() {
    for (int y = 0; y < image_.height(); ++y) {
      image_.withRow(y, [&](auto* row) {
        for (size_t i = 0; i < image_.rowSamples(); ++i) row[i] ^= image_.maximum();
      });
    }
  }

  void convertChroma(ColourSpace colourSpace) {
    const int width = image_.width();
    const int channels = image_.channels();
    std::vector<uint8_t> samples(image_.rowBytes());
    uint8_t* planes[4] = {};
    for (int c = 0; c < channels; ++c) planes[c] = &samples[static_cast<size_t>(c) * width];
    const Orb32s step = static_cast<Orb32s>(image_.rowBytes());
    for (int y = 0; y < image_.height(); ++y) {
      uint8_t* const row = image_.row(y);
      for (int x = 0; x < width; ++x) {
        for (int c = 0; c < channels; ++c) planes[c][x] = row[x * channels + c];
      }
      if (colourSpace == ColourSpace::kYCbCr) {
        legacy90orbiYCbCrToRGB_JPEG_8u_P3C3R(planes, width, row, step, {width, 1});
      } else {
        legacy90orbiYCCKToCMYK_JPEG_8u_P4C4R(planes, width, row, step, {width, 1});
      }
    }
  }

  ByteView file_;
  MarkerReader& markers_;
  const Layout& layout_;
  Image image_;
};

}  // namespace

Image decodeLossless(ByteView file, MarkerReader& markers, int scansTo) {
  const Layout layout(markers.frame());
  checkSize(file, markers, layout);
  return LosslessDecoder(file, markers, layout).run(scansTo);
}

}  // namespace orbhost::jpeg
