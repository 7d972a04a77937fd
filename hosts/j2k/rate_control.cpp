#include "hosts/j2k/rate_control.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <utility>

#include "hosts/j2k/markers.h"

namespace orbhost::j2k {

namespace {

constexpr size_t kSopLength = 6;
constexpr size_t kEphLength = 2;

}  // namespace

RateControl::RateControl(std::vector<TilePrecincts>& tiles, int guardBits, const TileCoding& coding,
                         size_t fixedBytes)
    : trimmer_(coding.components[0].style.blockStyle),
      hasEph_(coding.style.hasEph),
      packetOverhead_((coding.style.mayHaveSop ? kSopLength : 0) + (hasEph_ ? kEphLength : 0)),
      bytes_(fixedBytes) {
  for (TilePrecincts& tile : tiles) {
    writers_.emplace_back();
    packets_.emplace_back(tile.size());
    for (std::vector<EncodedBand>& precinct : tile) {
      writers_.back().emplace_back(precinct, guardBits);
      for (EncodedBand& band : precinct) {
        for (EncodedBlock& block : band.blocks) {
          if (block.passes.empty()) {
            errorOfEmpty_ += block.errorLeft;
            continue;
          }
          blocks_.push_back(&block);
          for (const EncodedBlock::Cut& cut : block.cuts) slopes_.push_back(cut.slope);
        }
      }
    }
  }
  taken_.resize(blocks_.size());
  std::sort(slopes_.begin(), slopes_.end(), std::greater<>());
}

size_t RateControl::sizeOfAll() {
  chooseAll();
  return sizeOfChosen();
}

void RateControl::addLayerOfSize(size_t bytes) {
  const auto choose = [&] {
    const auto behind = std::partition_point(slopes_.begin(), slopes_.end(), [&](double slope) {
      chooseWorth(slope);
      return sizeOfChosen() <= bytes;
    });
    chooseWorth(behind == slopes_.begin() ? std::numeric_limits<double>::infinity() : behind[-1]);
  };
  // What trimming saves makes room for more.
  for (int round = 0; round < 2; ++round) {
    choose();
    trimChosen();
  }
  for (size_t size = sizeOfChosen(); size < bytes && chooseMore(bytes - size);) {
    trimChosen();
    size = sizeOfChosen();
  }
  if (sizeOfChosen() > bytes) choose();
  addLayer();
}

void RateControl::addLayerOfError(double squares) {
  const auto first = std::partition_point(slopes_.begin(), slopes_.end(), [&](double slope) {
    chooseWorth(slope);
    return errorOfChosen() > squares;
  });
  if (first == slopes_.end()) {
    chooseAll();
  } else {
    chooseWorth(*first);
  }
  trimChosen();
  addLayer();
}

void RateControl::addLayerOfAll() {
  chooseAll();
  addLayer();
}

void RateControl::chooseWorth(double slope) {
  slope_ = slope;
  for (size_t i = 0; i < blocks_.size(); ++i) {
    blocks_[i]->chosen = std::max(taken_[i], passesWorth(*blocks_[i], slope));
  }
}

void RateControl::chooseAll() {
  slope_ = 0;
  for (EncodedBlock* const block : blocks_) block->chosen = static_cast<int>(block->passes.size());
}

// Uses up what a slope leaves of a layer's size: with the next cuts, the steepest first, that fit.
bool RateControl::chooseMore(size_t room) {
  constexpr int kHeaderBytes = 4;  // hardly ever more for a block
  struct Candidate {
    EncodedBlock* block;
    int passes;
    double slope;
    size_t bytes;
  };
  std::vector<Candidate> candidates;
  for (EncodedBlock* const block : blocks_) {
    const auto next =
        std::find_if(block->cuts.begin(), block->cuts.end(),
                     [block](const EncodedBlock::Cut& cut) { return cut.passes > block->chosen; });
    if (next == block->cuts.end()) continue;
    const int32_t before = block->chosen == 0 ? 0 : block->passes[block->chosen - 1].length;
    const auto bytes =
        static_cast<size_t>(block->passes[next->passes - 1].length - before + kHeaderBytes);
    if (bytes <= room) candidates.push_back({block, next->passes, next->slope, bytes});
  }
  std::sort(candidates.begin(), candidates.end(),
            [](const Candidate& a, const Candidate& b) { return a.slope > b.slope; });
  for (const Candidate& one : candidates) {
    if (one.bytes > room) continue;
    one.block->chosen = one.passes;
    room -= one.bytes;
  }
  return !candidates.empty();
}

void RateControl::trimChosen() {
  for (size_t i = 0; i < blocks_.size(); ++i) {
    if (blocks_[i]->chosen > taken_[i]) trimmer_.trim(*blocks_[i], taken_[i], blocks_[i]->chosen);
  }
}

size_t RateControl::sizeOfChosen() {
  size_t size = bytes_;
  Bytes header;
  for (const std::vector<PacketWriter>& tile : writers_) {
    for (const PacketWriter& writer : tile) {
      trial_ = writer;
      header.clear();
      size += trial_.putHeader(header);
      size += header.size() + packetOverhead_;
    }
  }
  return size;
}

double RateControl::errorOfChosen() const {
  double squares = errorOfEmpty_;
  for (const EncodedBlock* const block : blocks_) squares += j2k::errorOfChosen(*block);
  return squares;
}

void RateControl::addLayer() {
  bytes_ = sizeOfChosen();
  for (size_t tile = 0; tile < writers_.size(); ++tile) {
    for (size_t precinct = 0; precinct < writers_[tile].size(); ++precinct) {
      PacketWriter& writer = writers_[tile][precinct];
      Bytes packet;
      writer.putHeader(packet);
      if (hasEph_) packet.insert(packet.end(), {kEph >> 8, kEph & 255});
      writer.putBody(packet);
      packets_[tile][precinct].push_back(std::move(packet));
    }
  }
  for (size_t i = 0; i < blocks_.size(); ++i) taken_[i] = blocks_[i]->chosen;
}

}  // namespace orbhost::j2k
