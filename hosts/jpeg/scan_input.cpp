#include "hosts/jpeg/scan_input.h"

#include <algorithm>
#include <string>

namespace orbhost::jpeg {

namespace {

const HuffmanTable& tableOf(const std::optional<HuffmanTable>& table, const char* kind, int number,
                            const MarkerReader& markers) {
  if (!table) {
    failAt(markers.scan().offset, "the scan needs " + std::string(kind) + " Huffman table " +
                                      std::to_string(number) + ", which is missing");
  }
  return *table;
}

}  // namespace

ScanInput::ScanInput(ByteView file, const MarkerReader& markers)
    : data_(file.data),
      size_(static_cast<Orb32s>(file.size)),
      position_(static_cast<Orb32s>(markers.scan().dataOffset)),
      state_(makeDecodeState()),
      restartInterval_(markers.restartInterval()) {}

DecodeTable ScanInput::dcTableOf(const ScanComponent& component, const MarkerReader& markers,
                                 int largest) {
  const int number = component.dcTable;
  const HuffmanTable& table = tableOf(markers.dcTable(number), "DC", number, markers);
  const auto symbols = table.symbols.begin();
  if (std::any_of(symbols, symbols + table.size(), [=](int symbol) { return symbol > largest; })) {
    failAt(markers.scan().offset, "DC Huffman table " + std::to_string(number) +
                                      " has a category of more than " + std::to_string(largest) +
                                      " bits");
  }
  return makeDecodeTable(table);
}

DecodeTable ScanInput::acTableOf(const ScanComponent& component, const MarkerReader& markers) {
  const int number = component.acTable;
  return makeDecodeTable(tableOf(markers.acTable(number), "AC", number, markers));
}

void ScanInput::restart() {
  // The decoder reads ahead, but never past a marker: either it has met this one, or it comes next,
  // behind any number of fill bytes.
  if (marker_ == 0) {
    Orb32s at = position_;
    while (at < size_ && data_[at] == 0xFF) ++at;
    if (at == size_) fail(orbStsJpegBufferEndErr);
    if (at > position_) {
      marker_ = data_[at];
      position_ = at + 1;
    }
  }
  if (marker_ != kRst0 + restarts_ % 8) {
    failAt(position_,
           "restart marker " + std::to_string(restarts_ % 8) + " is not where it should be");
  }
  ++restarts_;
  marker_ = 0;
  mcus_ = 0;
  legacy90orbiDecodeHuffmanStateInit_JPEG_8u(state_.get());
}

void ScanInput::fail(OrbStatus status) const {
  if (status == orbStsJpegBufferEndErr) failAt(size_, "the file ends before the picture does");
  if (marker_ != 0) failAt(position_ - 2, "the scan's data end before the picture does");
  failAt(position_, "the scan's data are damaged");
}

}  // namespace orbhost::jpeg
