#include "hosts/jpeg/encode.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "hosts/error.h"
#include "hosts/jpeg/huffman.h"
#include "hosts/jpeg/layout.h"
#include "hosts/jpeg/marker_writer.h"
#include "hosts/jpeg/tables.h"
#include "orb90legacy.h"

namespace orbhost::jpeg {

namespace {

constexpr int kLargestSide = 65535;

// A block's codes take at most 64 times 16 bits of code and 11 of value, and any byte of them may
// be followed by a stuffed one.
constexpr int64_t kLargestBlock = 64 * 27 / 8 * 2;

// The last byte before a restart, which may be stuffed as well, and the marker.
constexpr int64_t kLargestRestart = 4;

Frame makeFrame(const Image& image, Sampling sampling) {
  if (image.width() > kLargestSide || image.height() > kLargestSide) {
    throw Error("a JPEG holds at most 65535 x 65535 pixels, not " + std::to_string(image.width()) +
                " x " + std::to_string(image.height()));
  }
  Frame frame = {kSof0, 8, image.width(), image.height(), {}};
  if (image.channels() == 1 || sampling == Sampling::kGrey) {
    frame.components = {{1, 1, 1, 0}};
  } else {
    const int h = sampling == Sampling::k444 ? 1 : 2;
    const int v = sampling == Sampling::k420 ? 2 : 1;
    frame.components = {{1, h, v, 0}, {2, 1, 1, 1}, {3, 1, 1, 1}};
  }
  return frame;
}

// ---- Samples

// The samples of one row of MCUs, component by component, with the picture's last column and row
// repeated up to whole MCUs.
class SampleStripe {
 public:
  SampleStripe(const Image& image, const Layout& layout) : image_(image), layout_(layout) {
    for (const ComponentLayout& component : layout.components) {
      rows_.emplace_back(component.paddedBlocksWide * 8, component.v * 8);
    }
    if (layout.hMax > 1) {
      for (Rows& chroma : fullChroma_) chroma = Rows(rows_[0].width, layout.vMax);
    }
  }

  void fill(int mcuRow) {
    for (int group = 0; group < 8; ++group) {
      const int y = (mcuRow * 8 + group) * layout_.vMax;
      if (y < image_.height()) {
        fillGroup(group, y);
      } else {
        repeatGroup(group);
      }
    }
  }

  const uint8_t* block(int component, int column, int row) const {
    return rows_[component].row(row * 8) + column * 8;
  }
  int step(int component) const { return rows_[component].width; }

 private:
  struct Rows {
    int width = 0;
    std::vector<uint8_t> samples;

    Rows() = default;
    Rows(int columns, int count)
        : width(columns), samples(static_cast<size_t>(columns) * static_cast<size_t>(count)) {}
    uint8_t* row(int y) { return samples.data() + static_cast<ptrdiff_t>(y) * width; }
    const uint8_t* row(int y) const { return samples.data() + static_cast<ptrdiff_t>(y) * width; }
  };

  // As many rows of the picture as give one row of chroma.
  void fillGroup(int group, int y) {
    const bool colour = rows_.size() > 1;
    const bool halved = layout_.hMax > 1;
    for (int k = 0; k < layout_.vMax; ++k) {
      const uint8_t* const from = image_.row(std::min(y + k, image_.height() - 1));
      const OrbiSize row = {image_.width(), 1};
      uint8_t* const luma = rows_[0].row(group * layout_.vMax + k);
      if (colour) {
        uint8_t* const cb = halved ? fullChroma_[0].row(k) : rows_[1].row(group);
        uint8_t* const cr = halved ? fullChroma_[1].row(k) : rows_[2].row(group);
        Orb8u* to[3] = {luma, cb, cr};
        legacy90orbiRGBToYCbCr_JPEG_8u_C3P3R(from, static_cast<Orb32s>(image_.rowBytes()), to,
                                             rows_[0].width, row);
        repeatLastColumn(cb);
        repeatLastColumn(cr);
      } else if (image_.channels() == 3) {
        legacy90orbiRGBToY_JPEG_8u_C3C1R(from, static_cast<Orb32s>(image_.rowBytes()), luma,
                                         rows_[0].width, row);
      } else {
        std::memcpy(luma, from, image_.rowBytes());
      }
      repeatLastColumn(luma);
    }
    if (!halved) return;
    for (int c = 0; c < 2; ++c) {
      uint8_t* const to = rows_[1 + c].row(group);
      const int width = rows_[0].width;
      if (layout_.vMax > 1) {
        legacy90orbiSampleDownRowH2V2_Box_JPEG_8u_C1(fullChroma_[c].row(0), fullChroma_[c].row(1),
                                                     width, to);
      } else {
        legacy90orbiSampleDownRowH2V1_Box_JPEG_8u_C1(fullChroma_[c].row(0), width, to);
      }
    }
  }

  void repeatLastColumn(uint8_t* row) const {
    std::memset(row + image_.width(), row[image_.width() - 1], rows_[0].width - image_.width());
  }

  void repeatGroup(int group) {
    for (size_t c = 0; c < rows_.size(); ++c) {
      const int v = layout_.components[c].v;
      const uint8_t* const last = rows_[c].row(group * v - 1);
      for (int k = 0; k < v; ++k) std::memcpy(rows_[c].row(group * v + k), last, rows_[c].width);
    }
  }

  const Image& image_;
  const Layout& layout_;
  std::vector<Rows> rows_;
  Rows fullChroma_[2];  // of one group, before it is halved
};

// ---- Blocks

// Where the blocks of a scan go, in their order. It counts MCUs for the restarts.
class BlockSink {
 public:
  explicit BlockSink(int restartInterval) : restartInterval_(restartInterval) {}
  virtual ~BlockSink() = default;

  void beginMcu() {
    if (restartInterval_ != 0 && mcus_ == restartInterval_) {
      restart();
      for (Orb16s& dc : lastDc_) dc = 0;
      mcus_ = 0;
    }
    ++mcus_;
  }

  virtual void put(int component, const Orb16s* block) = 0;

  // A block of no samples, that only fills up an MCU: the cheapest that there is.
  void putPadding(int component) {
    const Orb16s block[64] = {lastDc_[component]};
    put(component, block);
  }

 protected:
  virtual void restart() {}

  Orb16s lastDc_[3] = {};

 private:
  int restartInterval_;
  int mcus_ = 0;
};

// Counts symbols, for tables made to measure: [0] luma, [1] chroma.
class SymbolCounter : public BlockSink {
 public:
  using BlockSink::BlockSink;

  void put(int component, const Orb16s* block) override {
    const int kind = component > 0;
    if (legacy90orbiGetHuffmanStatistics8x8_JPEG_16s_C1(block, dc_[kind].data(), ac_[kind].data(),
                                                        &lastDc_[component]) != orbStsNoErr) {
      throw Error("a coefficient is too large to be coded");
    }
  }

  HuffmanTable dcTable(int kind) const { return tableOf(dc_[kind]); }
  HuffmanTable acTable(int kind) const { return tableOf(ac_[kind]); }

 private:
  // The last word is the library's own.
  using Counts = std::array<Orb32s, 257>;

  static HuffmanTable tableOf(const Counts& counts) {
    HuffmanTable table{};
    if (legacy90orbiEncodeHuffmanRawTableInit_JPEG_8u(counts.data(), table.counts.data(),
                                                      table.symbols.data()) != orbStsNoErr) {
      throw Error("the picture's symbols make no Huffman table");
    }
    return table;
  }

  Counts dc_[2] = {};
  Counts ac_[2] = {};
};

// Writes the codes behind what the file holds so far.
class ScanWriter : public BlockSink {
 public:
  ScanWriter(Bytes& file, int restartInterval)
      : BlockSink(restartInterval),
        file_(file),
        position_(static_cast<Orb32s>(file.size())),
        state_(makeEncodeState()) {}

  void useTables(int kind, const HuffmanTable& dc, const HuffmanTable& ac) {
    dc_[kind] = makeEncodeTable(dc);
    ac_[kind] = makeEncodeTable(ac);
  }

  // Needed before that many blocks are put: coding never meets the buffer's end.
  void makeRoomFor(int64_t blocks) {
    const int64_t wanted = position_ + blocks * (kLargestBlock + kLargestRestart);
    if (wanted > std::numeric_limits<Orb32s>::max()) throw Error("the file would exceed 2 GiB");
    if (wanted > static_cast<int64_t>(file_.size())) {
      file_.resize(
          std::max(static_cast<size_t>(wanted), std::min(file_.size() * 2, size_t{0x7fffffff})));
    }
  }

  void put(int component, const Orb16s* block) override {
    const int kind = component > 0;
    check(legacy90orbiEncodeHuffman8x8_JPEG_16s1u_C1(
        block, file_.data(), static_cast<Orb32s>(file_.size()), &position_, &lastDc_[component],
        dc_[kind].get(), ac_[kind].get(), state_.get(), 0));
  }

  void finish() {
    makeRoomFor(1);
    flush();
    file_.resize(position_);
  }

 protected:
  void restart() override {
    flush();
    file_[position_++] = 0xFF;
    file_[position_++] = static_cast<uint8_t>(kRst0 + restarts_++ % 8);
  }

 private:
  static void check(OrbStatus status) {
    if (status != orbStsNoErr) {
      throw Error("a block cannot be coded (status " + std::to_string(status) + ")");
    }
  }

  void flush() {
    check(legacy90orbiEncodeHuffman8x8_JPEG_16s1u_C1(nullptr, file_.data(),
                                                     static_cast<Orb32s>(file_.size()), &position_,
                                                     nullptr, nullptr, nullptr, state_.get(), 1));
  }

  Bytes& file_;
  Orb32s position_;
  EncodeState state_;
  EncodeTable dc_[2];
  EncodeTable ac_[2];
  int restarts_ = 0;
};

// ---- Quantisation

// The library's transform rounds a coefficient to a whole number before it is quantised. With an
// even divisor, one number in as many then lies just in the middle between two steps, and could
// have come from either side of it. By the library's own table those would all go to the even step,
// most of them to 0: files would be smaller than users expect of a quality factor, and a little
// worse. So one table takes them away from 0 and another towards it, and blocks take them in turns:
// 9 to 7, which is where the steps begin in a coder that keeps eighths and rounds halves away from
// 0. The mean of a block stays with the library's table, since in flat areas taking turns would
// show.
struct ForwardTables {
  alignas(64) Orb16u away[64];
  alignas(64) Orb16u towards[64];

  const Orb16u* ofBlock(int column, int row) const {
    return (5 * column + 7 * row) % 16 < 9 ? away : towards;
  }
};

ForwardTables makeForwardTables(const std::array<uint8_t, 64>& divisors) {
  Orb16u nearest[64];
  legacy90orbiQuantFwdTableInit_JPEG_8u16u(divisors.data(), nearest);
  ForwardTables tables;
  for (int k = 0; k < 64; ++k) {
    // Reciprocals just above and just below the true ones. A divisor of 1 has no middle.
    const int divisor = divisors[k];
    tables.away[kZigzag[k]] = static_cast<Orb16u>(32768 / divisor + (divisor > 1));
    tables.towards[kZigzag[k]] = static_cast<Orb16u>(32767 / divisor + (divisor == 1));
  }
  tables.away[0] = tables.towards[0] = nearest[0];
  return tables;
}

class Encoder {
 public:
  Encoder(const Image& image, const EncodeOptions& options)
      : frame_(makeFrame(image, options.sampling)),
        layout_(frame_),
        stripe_(image, layout_),
        optimize_(options.optimize) {
    if (options.quality < 1 || options.quality > 100) throw Error("a quality is from 1 to 100");
    const int64_t interval =
        int64_t{options.restartInterval} * (options.restartInRows ? layout_.mcusWide : 1);
    if (interval < 0 || interval > 65535) {
      throw Error("a restart interval is at most 65535 MCUs, not " + std::to_string(interval));
    }
    restartInterval_ = static_cast<int>(interval);
    for (int c = 0; c < static_cast<int>(frame_.components.size()); ++c) {
      scan_.push_back({c, c > 0, c > 0});
    }
    divisors_[0] = kLumaDivisors;
    divisors_[1] = kChromaDivisors;
    for (int kind = 0; kind < kinds(); ++kind) {
      legacy90orbiQuantFwdRawTableInit_JPEG_8u(divisors_[kind].data(), options.quality);
      forward_[kind] = makeForwardTables(divisors_[kind]);
    }
  }

  Bytes run() {
    Bytes file;
    MarkerWriter markers(file);
    markers.marker(kSoi);
    markers.jfif();
    for (int kind = 0; kind < kinds(); ++kind) markers.quantisation(kind, divisors_[kind]);
    markers.frame(frame_);
    if (optimize_) {
      runTwice(file, markers);
    } else {
      runOnce(file, markers);
    }
    markers.marker(kEoi);
    return file;
  }

 private:
  // Luma, and chroma if the picture has it: each has its own tables.
  int kinds() const { return frame_.components.size() > 1 ? 2 : 1; }

  // Samples become codes block by block.
  void runOnce(Bytes& file, MarkerWriter& markers) {
    const HuffmanTable dc[2] = {kLumaDc, kChromaDc};
    const HuffmanTable ac[2] = {kLumaAc, kChromaAc};
    ScanWriter writer = beginScan(file, markers, dc, ac);
    for (int mcuRow = 0; mcuRow < layout_.mcusHigh; ++mcuRow) {
      stripe_.fill(mcuRow);
      writer.makeRoomFor(blocksOfMcuRow());
      putMcuRow(mcuRow, writer, [&](int c, int column, int row) {
        transform(c, column, row, block_);
        return block_.values;
      });
    }
    writer.finish();
  }

  // The blocks of the whole picture are kept while their symbols are counted, then coded.
  void runTwice(Bytes& file, MarkerWriter& markers) {
    BlockPlanes blocks(layout_);
    SymbolCounter counter(restartInterval_);
    for (int mcuRow = 0; mcuRow < layout_.mcusHigh; ++mcuRow) {
      stripe_.fill(mcuRow);
      putMcuRow(mcuRow, counter, [&](int c, int column, int row) {
        Block& block = blocks.at(c, column, row);
        transform(c, column, row, block);
        return block.values;
      });
    }

    HuffmanTable dc[2];
    HuffmanTable ac[2];
    for (int kind = 0; kind < kinds(); ++kind) {
      dc[kind] = counter.dcTable(kind);
      ac[kind] = counter.acTable(kind);
    }
    ScanWriter writer = beginScan(file, markers, dc, ac);
    for (int mcuRow = 0; mcuRow < layout_.mcusHigh; ++mcuRow) {
      writer.makeRoomFor(blocksOfMcuRow());
      putMcuRow(mcuRow, writer,
                [&](int c, int column, int row) { return blocks.at(c, column, row).values; });
    }
    writer.finish();
  }

  ScanWriter beginScan(Bytes& file, MarkerWriter& markers, const HuffmanTable (&dc)[2],
                       const HuffmanTable (&ac)[2]) {
    for (int kind = 0; kind < kinds(); ++kind) {
      markers.huffman(0, kind, dc[kind]);
      markers.huffman(1, kind, ac[kind]);
    }
    if (restartInterval_ != 0) markers.restartInterval(restartInterval_);
    markers.scan(frame_, scan_, {});

    ScanWriter writer(file, restartInterval_);
    for (int kind = 0; kind < kinds(); ++kind) writer.useTables(kind, dc[kind], ac[kind]);
    return writer;
  }

  int64_t blocksOfMcuRow() const {
    int64_t blocks = 0;
    for (const ComponentLayout& component : layout_.components) {
      blocks += int64_t{component.paddedBlocksWide} * component.v;
    }
    return blocks;
  }

  // Puts the blocks of a row of MCUs; `blockOf` says what a block of samples holds.
  template <class Sink, class BlockOf>
  void putMcuRow(int mcuRow, Sink& sink, BlockOf blockOf) {
    walkMcuRow(
        layout_, scan_, mcuRow, [&] { sink.beginMcu(); },
        [&](int, int c, int column, int row) {
          const ComponentLayout& component = layout_.components[c];
          if (column < component.blocksWide && row < component.blocksHigh) {
            sink.put(c, blockOf(c, column, row));
          } else {
            sink.putPadding(c);
          }
        });
  }

  // From the stripe of the block's row of MCUs.
  void transform(int component, int column, int row, Block& block) const {
    const uint8_t* const samples =
        stripe_.block(component, column, row % layout_.components[component].v);
    legacy90orbiDCTQuantFwd8x8LS_JPEG_8u16s_C1R(samples, stripe_.step(component), block.values,
                                                forward_[component > 0].ofBlock(column, row));
  }

  Frame frame_;
  Layout layout_;
  std::vector<ScanComponent> scan_;
  SampleStripe stripe_;
  bool optimize_;
  int restartInterval_ = 0;
  std::array<uint8_t, 64> divisors_[2];
  ForwardTables forward_[2];
  Block block_;
};

}  // namespace

Bytes encodeJpeg(const Image& image, const EncodeOptions& options) {
  return Encoder(image, options).run();
}

}  // namespace orbhost::jpeg
