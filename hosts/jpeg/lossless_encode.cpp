#include "hosts/jpeg/lossless_encode.h"

#include <string>
#include <vector>

#include "hosts/error.h"
#include "hosts/image_convert.h"
#include "hosts/jpeg/encode_frame.h"
#include "hosts/jpeg/huffman.h"
#include "hosts/jpeg/prediction.h"
#include "hosts/jpeg/scan_output.h"
#include "orb90legacy.h"

namespace orbhost::jpeg {

namespace {

constexpr int kLeastPrecision = 2;
constexpr int kLargestPrecision = 16;

// A difference takes at most 16 bits of code and 15 of value.
constexpr int64_t kLargestDifference = 4 * ScanOutput::kStuffed;

ColourSpace colourSpaceOf(const Image& image) {
  return image.channels() == 1   ? ColourSpace::kGrey
         : image.channels() == 3 ? ColourSpace::kRgb
                                 : ColourSpace::kCmyk;
}

class LosslessEncoder {
 public:
  // The samples have as many bits as the picture's maximum.
  LosslessEncoder(const Image& image, int precision, const EncodeOptions& options)
      : image_(image),
        frame_(makeFrame(image, kSof3, precision, colourSpaceOf(image))),
        selection_{options.lossless->predictor, 0, 0, options.lossless->pointTransform},
        predictor_(precision, selection_.ss, selection_.al),
        restartInterval_(restartIntervalFor(options, image.width())) {
    if (restartInterval_ % image.width() != 0) {
      throw Error("in a lossless file restarts lie between rows: every " +
                  std::to_string(image.width()) + " MCUs, or a multiple");
    }
    for (int c = 0; c < image.channels(); ++c) {
      scan_.push_back({c, c, 0});  // each component has a table of its own
      rows_.push_back({std::vector<Orb16s>(image.width()), std::vector<Orb16s>(image.width()),
                       std::vector<Orb16s>(image.width())});
    }
  }

  Bytes run() {
    Bytes file;
    MarkerWriter markers(file);
    markers.marker(kSoi);
    writeColourSpace(colourSpaceOf(image_), markers);
    markers.frame(frame_);
    const std::vector<EncodeTable> tables = writeTables(markers);
    if (restartInterval_ != 0) markers.restartInterval(restartInterval_);
    markers.scan(frame_, scan_, selection_);
    writeScan(tables, file);
    markers.marker(kEoi);
    return file;
  }

 private:
  struct ComponentRows {
    std::vector<Orb16s> samples;
    std::vector<Orb16s> above;
    std::vector<Orb16s> differences;
  };

  // Whether a restart marker comes before a row.
  bool restartsAt(int y) const {
    return restartInterval_ != 0 && y > 0 && y % (restartInterval_ / image_.width()) == 0;
  }

  // Works the differences of row after row, and calls `body` with each row's number.
  template <class Body>
  void forEachRow(Body body) {
    for (int y = 0; y < image_.height(); ++y) {
      loadRow(y);
      for (ComponentRows& rows : rows_) {
        const Orb16s* const above = y == 0 || restartsAt(y) ? nullptr : rows.above.data();
        predictor_.differences(rows.samples.data(), above, image_.width(), rows.differences.data());
        rows.above.swap(rows.samples);
      }
      body(y);
    }
  }

  void loadRow(int y) {
    const int channels = image_.channels();
    const int flip = channels == 4 ? image_.maximum() : 0;  // ink to light
    image_.withRow(y, [&](const auto* from) {
      for (int x = 0; x < image_.width(); ++x) {
        for (ComponentRows& rows : rows_) rows.samples[x] = predictor_.toRow(*from++ ^ flip);
      }
    });
  }

  std::vector<EncodeTable> writeTables(MarkerWriter& markers) {
    std::vector<SymbolCounts> counts(rows_.size(), SymbolCounts{});
    forEachRow([&](int) {
      for (size_t c = 0; c < rows_.size(); ++c) {
        for (const Orb16s& difference : rows_[c].differences) {
          legacy90orbiGetHuffmanStatisticsOne_JPEG_16s_C1(&difference, counts[c].data());
        }
      }
    });
    std::vector<EncodeTable> tables;
    for (size_t c = 0; c < rows_.size(); ++c) {
      const HuffmanTable table = makeOptimalTable(counts[c]);
      markers.huffman(0, static_cast<int>(c), table);
      tables.push_back(makeEncodeTable(table));
    }
    return tables;
  }

  void writeScan(const std::vector<EncodeTable>& tables, Bytes& file) {
    const int components = static_cast<int>(rows_.size());
    const Orb16s* rows[4] = {};
    const OrbiEncodeHuffmanSpec* specs[4] = {};
    for (int c = 0; c < components; ++c) {
      rows[c] = rows_[c].differences.data();
      specs[c] = tables[c].get();
    }
    ScanOutput output(file);
    const EncodeState state = makeEncodeState();
    const auto code = [&](bool flush) {
      ScanOutput::check(legacy90orbiEncodeHuffmanRow_JPEG_16s1u_P4C1(
          rows, image_.width(), components, output.data(), output.size(), output.position(), specs,
          state.get(), flush));
    };
    const int64_t room = kLargestDifference * image_.width() * components;
    forEachRow([&](int y) {
      output.makeRoom(room + 2 * ScanOutput::kLargestRestart);
      if (restartsAt(y)) {
        code(true);
        output.restartMarker();
      }
      code(false);
    });
    code(true);
    output.finish();
  }

  const Image& image_;
  Frame frame_;
  Selection selection_;
  RowPredictor predictor_;
  int restartInterval_;
  std::vector<ScanComponent> scan_;
  std::vector<ComponentRows> rows_;
};

int precisionFor(const Image& image, const LosslessOptions& options) {
  if (options.precision != 0) return options.precision;
  int bits = kLeastPrecision;
  while ((1 << bits) - 1 < image.maximum()) ++bits;
  return bits;
}

}  // namespace

Bytes encodeLossless(const Image& image, const EncodeOptions& options) {
  const LosslessOptions& lossless = *options.lossless;
  const int precision = precisionFor(image, lossless);
  if (precision < kLeastPrecision || precision > kLargestPrecision) {
    throw Error("lossless samples have 2 to 16 bits, not " + std::to_string(precision));
  }
  if (lossless.predictor < 1 || lossless.predictor > 7) {
    throw Error("a predictor is from 1 to 7, not " + std::to_string(lossless.predictor));
  }
  if (lossless.pointTransform < 0 || lossless.pointTransform >= precision) {
    throw Error("a point transform of " + std::to_string(lossless.pointTransform) +
                " leaves nothing of samples of " + std::to_string(precision) + " bits");
  }
  const int maximum = (1 << precision) - 1;
  if (image.maximum() != maximum) {
    return LosslessEncoder(withMaximum(image, maximum), precision, options).run();
  }
  return LosslessEncoder(image, precision, options).run();
}

}  // namespace orbhost::jpeg
