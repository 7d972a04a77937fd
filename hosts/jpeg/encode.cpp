#include "hosts/jpeg/encode.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "hosts/error.h"
#include "hosts/image_convert.h"
#include "hosts/jpeg/encode_frame.h"
#include "hosts/jpeg/layout.h"
#include "hosts/jpeg/lossless_encode.h"
#include "hosts/jpeg/quantisation.h"
#include "hosts/jpeg/samples.h"
#include "hosts/jpeg/scan_writer.h"
#include "hosts/jpeg/tables.h"
#include "orb90legacy.h"

namespace orbhost::jpeg {

namespace {

constexpr int kChroma = 1;  // its tables
constexpr int kMaximum = 255;

bool hasChroma(ColourSpace colourSpace) {
  return colourSpace == ColourSpace::kYCbCr || colourSpace == ColourSpace::kYcck;
}

ColourSpace colourSpaceFor(const Image& image, const EncodeOptions& options) {
  const auto choose = [&](ColourSpace usual, ColourSpace other) {
    const ColourSpace wanted = options.colours.value_or(usual);
    if (wanted != usual && wanted != other) {
      throw Error("a picture of " + std::to_string(image.channels()) +
                  " channels is not stored in these colours");
    }
    return wanted;
  };
  if (image.channels() == 4) return choose(ColourSpace::kYcck, ColourSpace::kCmyk);
  if (image.channels() == 1 || options.sampling == Sampling::kGrey) {
    return choose(ColourSpace::kGrey, ColourSpace::kGrey);
  }
  return choose(ColourSpace::kYCbCr, ColourSpace::kRgb);
}

Sampling samplingFor(ColourSpace colourSpace, const EncodeOptions& options) {
  const Sampling usual = hasChroma(colourSpace) ? Sampling::k420 : Sampling::k444;
  const Sampling wanted = options.sampling.value_or(usual);
  if (colourSpace == ColourSpace::kGrey) return Sampling::k444;
  if (wanted == Sampling::kGrey) throw Error("a CMYK picture is not stored as grey");
  if (wanted != usual && !hasChroma(colourSpace)) {
    throw Error("RGB and CMYK as they are have no chroma to be halved");
  }
  return wanted;
}

bool isProgressiveFor(const EncodeOptions& options) {
  if (options.script.empty()) return options.progressive;
  const bool progressive = isProgressive(options.script);
  if (options.progressive && !progressive) {
    throw Error("the script's scans are not progressive: each has all there is of its components");
  }
  return progressive;
}

Frame makeSampledFrame(const Image& image, ColourSpace colourSpace, const EncodeOptions& options) {
  const Sampling sampling = samplingFor(colourSpace, options);
  Frame frame = makeFrame(image, isProgressiveFor(options) ? kSof2 : kSof0, 8, colourSpace);
  for (FrameComponent& component : frame.components) {
    if (component.table == kChroma) continue;
    component.h = sampling == Sampling::k444 ? 1 : 2;
    component.v = sampling == Sampling::k420 ? 2 : 1;
  }
  return frame;
}

class Encoder {
 public:
  Encoder(const Image& image, const EncodeOptions& options)
      : colourSpace_(colourSpaceFor(image, options)),
        frame_(makeSampledFrame(image, colourSpace_, options)),
        layout_(frame_),
        stripe_(image, layout_, colourSpace_),
        optimize_(options.optimize || frame_.isProgressive()) {
    if (options.quality < 1 || options.quality > 100) throw Error("a quality is from 1 to 100");
    divisors_[0] = kLumaDivisors;
    divisors_[1] = kChromaDivisors;
    for (int table = 0; table < tables(); ++table) {
      legacy90orbiQuantFwdRawTableInit_JPEG_8u(divisors_[table].data(), options.quality);
      forward_[table] = makeForwardTables(divisors_[table]);
    }
    planScans(options);
  }

  Bytes run() {
    Bytes file;
    MarkerWriter markers(file);
    markers.marker(kSoi);
    writeColourSpace(colourSpace_, markers);
    for (int table = 0; table < tables(); ++table) markers.quantisation(table, divisors_[table]);
    markers.frame(frame_);
    if (scans_.size() == 1 && !optimize_) {
      writeAtOnce(file, markers);
    } else {
      writeScans(file, markers);
    }
    markers.marker(kEoi);
    return file;
  }

 private:
  // The frame's tables of divisors. Each goes with Huffman tables of the same number.
  int tables() const {
    int count = 0;
    for (const FrameComponent& one : frame_.components) count = std::max(count, one.table + 1);
    return count;
  }

  void planScans(const EncodeOptions& options) {
    const Script script = !options.script.empty() ? options.script
                          : options.progressive ? progressiveScript(frame_, hasChroma(colourSpace_))
                                                : sequentialScript(frame_);
    checkScript(script, frame_);
    for (const ScriptScan& from : script) {
      ScanPlan plan = {{}, from.selection, passOf(frame_.isProgressive(), from.selection), 0};
      for (const int c : from.components) {
        const int table = frame_.components[c].table;
        plan.components.push_back(
            {c, needsDcTable(plan.pass) ? table : 0, needsAcTable(plan.pass) ? table : 0});
      }
      plan.restartInterval = restartIntervalFor(options, mcusPerRowOf(layout_, plan.components));
      scans_.push_back(std::move(plan));
    }
  }

  // Samples become codes block by block.
  void writeAtOnce(Bytes& file, MarkerWriter& markers) {
    const ScanPlan& plan = scans_[0];
    const TableSet tables = standardTables();
    beginScan(plan, tables, markers);
    ScanWriter writer(plan, tables, file);
    Block block;
    for (int mcuRow = 0; mcuRow < layout_.mcusHigh; ++mcuRow) {
      stripe_.fill(mcuRow);
      writer.makeRoomFor(blocksPerRow(plan));
      walkMcuRow(
          layout_, plan.components, mcuRow, [&] { writer.beginMcu(); },
          [&](int i, int c, int column, int row) {
            transform(c, column, row, block);
            writer.put(i, block.values);
          });
    }
    writer.finish();
  }

  // The blocks of the whole picture are kept, to be gone over as often as need be.
  void writeScans(Bytes& file, MarkerWriter& markers) {
    BlockPlanes blocks(layout_);
    std::vector<ScanComponent> all;
    for (int c = 0; c < static_cast<int>(frame_.components.size()); ++c) all.push_back({c, 0, 0});
    for (int mcuRow = 0; mcuRow < layout_.mcusHigh; ++mcuRow) {
      stripe_.fill(mcuRow);
      walkMcuRow(
          layout_, all, mcuRow, [] {},
          [&](int, int c, int column, int row) {
            transform(c, column, row, blocks.at(c, column, row));
          });
    }
    for (const ScanPlan& plan : scans_) {
      const TableSet tables = optimize_ ? countedTables(plan, blocks) : standardTables();
      beginScan(plan, tables, markers);
      ScanWriter writer(plan, tables, file);
      for (int mcuRow = 0; mcuRow < mcuRowsOf(layout_, plan.components); ++mcuRow) {
        writer.makeRoomFor(blocksPerRow(plan));
        putMcuRow(plan, mcuRow, blocks, writer);
      }
      writer.finish();
    }
  }

  static TableSet standardTables() { return {{kLumaDc, kChromaDc}, {kLumaAc, kChromaAc}}; }

  TableSet countedTables(const ScanPlan& plan, BlockPlanes& blocks) const {
    SymbolCounter counter(plan);
    for (int mcuRow = 0; mcuRow < mcuRowsOf(layout_, plan.components); ++mcuRow) {
      putMcuRow(plan, mcuRow, blocks, counter);
    }
    counter.finish();
    TableSet tables{};
    for (const ScanComponent& one : plan.components) {
      if (needsDcTable(plan.pass)) tables.dc[one.dcTable] = counter.dcTable(one.dcTable);
      if (needsAcTable(plan.pass)) tables.ac[one.acTable] = counter.acTable(one.acTable);
    }
    return tables;
  }

  template <class Coder>
  void putMcuRow(const ScanPlan& plan, int mcuRow, BlockPlanes& blocks, Coder& coder) const {
    walkMcuRow(
        layout_, plan.components, mcuRow, [&] { coder.beginMcu(); },
        [&](int i, int c, int column, int row) { coder.put(i, blocks.at(c, column, row).values); });
  }

  // Writes what comes before a scan's data, as far as it is not in force already.
  void beginScan(const ScanPlan& plan, const TableSet& tables, MarkerWriter& markers) {
    const auto write = [&](int tableClass, int number, const HuffmanTable& table) {
      std::optional<HuffmanTable>& inForce = inForce_[tableClass][number];
      if (inForce == table) return;
      inForce = table;
      markers.huffman(tableClass, number, table);
    };
    for (const ScanComponent& one : plan.components) {
      if (needsDcTable(plan.pass)) write(0, one.dcTable, tables.dc[one.dcTable]);
      if (needsAcTable(plan.pass)) write(1, one.acTable, tables.ac[one.acTable]);
    }
    if (plan.restartInterval != restartInterval_) {
      restartInterval_ = plan.restartInterval;
      markers.restartInterval(restartInterval_);
    }
    markers.scan(frame_, plan.components, plan.selection);
  }

  int64_t blocksPerRow(const ScanPlan& plan) const {
    int64_t blocks = 0;
    for (const ScanComponent& one : plan.components) {
      const ComponentLayout& component = layout_.components[one.component];
      blocks += int64_t{component.paddedBlocksWide} * component.v;
    }
    return blocks;
  }

  // From the stripe of the block's row of MCUs. A block of no samples, that only fills up an MCU,
  // is the cheapest that there is: with the mean of the one before it.
  void transform(int c, int column, int row, Block& block) {
    const ComponentLayout& component = layout_.components[c];
    if (column < component.blocksWide && row < component.blocksHigh) {
      const uint8_t* const samples = stripe_.block(c, column, row % component.v);
      legacy90orbiDCTQuantFwd8x8LS_JPEG_8u16s_C1R(
          samples, stripe_.step(c), block.values,
          forward_[frame_.components[c].table].ofBlock(column, row));
    } else {
      block = Block{};
      block.values[0] = lastMean_[c];
    }
    lastMean_[c] = block.values[0];
  }

  ColourSpace colourSpace_;
  Frame frame_;
  Layout layout_;
  SampleStripe stripe_;
  bool optimize_;
  std::array<uint8_t, 64> divisors_[2];
  ForwardTables forward_[2];
  std::vector<ScanPlan> scans_;
  Orb16s lastMean_[4] = {};
  std::optional<HuffmanTable> inForce_[2][2];
  int restartInterval_ = 0;
};

}  // namespace

Bytes encodeJpeg(const Image& image, const EncodeOptions& options) {
  if (options.lossless) return encodeLossless(image, options);
  if (image.maximum() != kMaximum) return encodeJpeg(withMaximum(image, kMaximum), options);
  return Encoder(image, options).run();
}

}  // namespace orbhost::jpeg
