#include "hosts/jpeg/block_decode.h"

#include <optional>
#include <string>

#include "hosts/jpeg/progression.h"
#include "hosts/jpeg/scan_reader.h"

namespace orbhost::jpeg {

namespace {

// Decodes scan after scan into blocks that are kept.
class ScanDecoder {
 public:
  ScanDecoder(ByteView file, MarkerReader& markers, const Layout& layout)
      : file_(file),
        markers_(markers),
        layout_(layout),
        progression_(static_cast<int>(layout.components.size()), markers.frame().isProgressive()),
        divisors_(layout.components.size()) {
    beginScan();
  }

  // Whether the first scan, which the reader has just found, is all of the picture.
  bool isWhole() const {
    return !markers_.frame().isProgressive() &&
           markers_.scan().components.size() == layout_.components.size();
  }

  void decodeScans(int scansTo, BlockPlanes& blocks) {
    for (int scan = 1;; ++scan) {
      decodeScan(blocks);
      if (scan == scansTo) return;
      if (!markers_.nextScan()) break;
      beginScan();
    }
    if (!progression_.isShowable()) {
      throw Error("the file ends before every component has had its scan");
    }
  }

  // Of a component that has had no scan yet any divisors do: its coefficients are 0.
  Divisors divisors(int component) const { return divisors_[component].value_or(Divisors{}); }

 private:
  void beginScan() {
    const std::vector<int> components = markers_.scan().componentIndexes();
    const auto fault = progression_.add(components, markers_.scan().selection);
    if (fault) failAt(markers_.scan().offset, *fault);
    // A component's table is the one of its first scan.
    for (const int component : components) {
      if (!divisors_[component]) divisors_[component] = divisorsNow(component);
    }
  }

  void decodeScan(BlockPlanes& blocks) {
    const std::vector<ScanComponent>& scan = markers_.scan().components;
    ScanReader reader(file_, markers_);
    for (int mcuRow = 0; mcuRow < mcuRowsOf(layout_, scan); ++mcuRow) {
      walkMcuRow(
          layout_, scan, mcuRow, [&] { reader.beginMcu(); },
          [&](int i, int c, int column, int row) { reader.read(i, blocks.at(c, column, row)); });
    }
    markers_.resumeAt(reader.finish());
  }

  Divisors divisorsNow(int component) const {
    const int table = markers_.frame().components[component].table;
    const std::optional<Divisors>& divisors = markers_.divisors(table);
    if (!divisors) {
      failAt(markers_.scan().offset,
             "the scan needs quantisation table " + std::to_string(table) + ", which is missing");
    }
    return *divisors;
  }

  ByteView file_;
  MarkerReader& markers_;
  const Layout& layout_;
  Progression progression_;
  std::vector<std::optional<Divisors>> divisors_;
};

// One scan holds everything: each block is given on as it is read.
void decodeAtOnce(ByteView file, MarkerReader& markers, const Layout& layout, BlockSink& to) {
  const std::vector<ScanComponent>& scan = markers.scan().components;
  ScanReader reader(file, markers);
  Block block;
  for (int mcuRow = 0; mcuRow < layout.mcusHigh; ++mcuRow) {
    to.beginMcuRow(mcuRow);
    walkMcuRow(
        layout, scan, mcuRow, [&] { reader.beginMcu(); },
        [&](int i, int c, int column, int row) {
          reader.read(i, block);
          to.put(c, column, row, block);
        });
    to.endMcuRow(mcuRow, mcuRow + 1 == layout.mcusHigh);
  }
  markers.resumeAt(reader.finish());
}

void giveOn(const Layout& layout, BlockPlanes& blocks, BlockSink& to) {
  std::vector<ScanComponent> all;
  for (int c = 0; c < static_cast<int>(layout.components.size()); ++c) all.push_back({c, 0, 0});
  for (int mcuRow = 0; mcuRow < layout.mcusHigh; ++mcuRow) {
    to.beginMcuRow(mcuRow);
    walkMcuRow(
        layout, all, mcuRow, [] {},
        [&](int, int c, int column, int row) {
          to.put(c, column, row, blocks.at(c, column, row));
        });
    to.endMcuRow(mcuRow, mcuRow + 1 == layout.mcusHigh);
  }
}

}  // namespace

void checkSize(ByteView file, const MarkerReader& markers, const Layout& layout) {
  const Frame& frame = markers.frame();
  uint64_t blocks = 0;
  for (const ScanComponent& component : markers.scan().components) {
    const ComponentLayout& one = layout.components[component.component];
    blocks += static_cast<uint64_t>(one.blocksWide) * one.blocksHigh;
  }
  const bool twoBits = !frame.isProgressive() && !frame.isLossless();
  if (blocks / (twoBits ? 4 : 8) > file.size) {
    throw Error("a picture of " + std::to_string(frame.width) + " x " +
                std::to_string(frame.height) + " pixels cannot come from " +
                std::to_string(file.size) + " bytes");
  }
}

void decodeBlocks(ByteView file, MarkerReader& markers, const Layout& layout, int scansTo,
                  BlockSink& to) {
  ScanDecoder decoder(file, markers, layout);
  const auto useDivisors = [&] {
    for (int c = 0; c < static_cast<int>(layout.components.size()); ++c) {
      to.useDivisors(c, decoder.divisors(c));
    }
  };
  if (decoder.isWhole()) {
    useDivisors();
    decodeAtOnce(file, markers, layout, to);
    if (scansTo != 1 && markers.nextScan()) {
      failAt(markers.scan().offset, "a scan behind the last one");
    }
  } else {
    BlockPlanes blocks(layout);
    decoder.decodeScans(scansTo, blocks);
    useDivisors();
    giveOn(layout, blocks, to);
  }
}

Coefficients decodeCoefficients(ByteView file, int scansTo) {
  MarkerReader markers(file);
  if (!markers.nextScan()) throw Error("the file has no scan");
  const Layout layout(markers.frame());
  checkSize(file, markers, layout);
  Coefficients result = {layout, BlockPlanes(layout)};
  ScanDecoder(file, markers, layout).decodeScans(scansTo, result.blocks);
  return result;
}

}  // namespace orbhost::jpeg
