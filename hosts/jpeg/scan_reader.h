// Reads the blocks of one scan, sequential or progressive, in their order.
#ifndef ORB_HOSTS_JPEG_SCAN_READER_H
#define ORB_HOSTS_JPEG_SCAN_READER_H

#include <algorithm>
#include <iterator>
#include <vector>

#include "hosts/jpeg/layout.h"
#include "hosts/jpeg/progression.h"
#include "hosts/jpeg/scan_input.h"

namespace orbhost::jpeg {

class ScanReader : public ScanInput {
 public:
  ScanReader(ByteView file, const MarkerReader& markers)
      : ScanInput(file, markers),
        selection_(markers.scan().selection),
        pass_(passOf(markers.frame().isProgressive(), selection_)) {
    for (const ScanComponent& component : markers.scan().components) {
      dc_.push_back(needsDcTable(pass_) ? dcTableOf(component, markers, kLargestCategory)
                                        : nullptr);
      ac_.push_back(needsAcTable(pass_) ? acTableOf(component, markers) : nullptr);
    }
  }

  void beginMcu() {
    if (beginMcus(1)) std::fill(std::begin(lastDc_), std::end(lastDc_), Orb16s{0});
  }

  // `component` is a place in the scan. A progressive scan leaves in the block what others told.
  void read(int component, Block& block) { check(readBlock(component, block.values)); }

 private:
  static constexpr int kLargestCategory = 15;

  OrbStatus readBlock(int component, Orb16s* block) {
    const auto& [ss, se, ah, al] = selection_;
    const OrbiDecodeHuffmanSpec* const dc = dc_[component].get();
    const OrbiDecodeHuffmanSpec* const ac = ac_[component].get();
    switch (pass_) {
      case Pass::kDcFirst:
        return legacy90orbiDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1(
            data_, size_, &position_, block, &lastDc_[component], &marker_, al, dc, state_.get());
      case Pass::kDcRefine:
        return legacy90orbiDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1(data_, size_, &position_, block,
                                                                   &marker_, al, state_.get());
      case Pass::kAcFirst:
        return legacy90orbiDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1(
            data_, size_, &position_, block, &marker_, ss, se, al, ac, state_.get());
      case Pass::kAcRefine:
        return legacy90orbiDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1(
            data_, size_, &position_, block, &marker_, ss, se, al, ac, state_.get());
      case Pass::kSequential:
        break;
    }
    return legacy90orbiDecodeHuffman8x8_JPEG_1u16s_C1(
        data_, size_, &position_, block, &lastDc_[component], &marker_, dc, ac, state_.get());
  }

  Selection selection_;
  Pass pass_;
  Orb16s lastDc_[4] = {};
  std::vector<DecodeTable> dc_;
  std::vector<DecodeTable> ac_;
};

}  // namespace orbhost::jpeg

#endif
