#include "hosts/jpeg/scan_writer.h"

#include <algorithm>
#include <limits>
#include <string>

#include "hosts/error.h"

namespace orbhost::jpeg {

namespace {

// A block's codes take at most 64 times 16 bits of code and 11 of value, and any byte of them may
// be followed by a stuffed one.
constexpr int64_t kLargestBlock = 64 * 27 / 8 * 2;

// The last byte before a restart, which may be stuffed as well, and the marker.
constexpr int64_t kLargestRestart = 4;

// An end-of-band run, with the correction bits of its blocks.
constexpr int64_t kLargestRun = (30 + 1000) / 8 * 2;

}  // namespace

// ---- Counting

void SymbolCounter::put(int component, const Orb16s* block) {
  const auto& [ss, se, ah, al] = plan_.selection;
  Orb32s* const dc = dc_[plan_.components[component].dcTable].data();
  Orb32s* const ac = ac_[plan_.components[component].acTable].data();
  OrbStatus status = orbStsNoErr;
  switch (plan_.pass) {
    case Pass::kSequential:
      status = legacy90orbiGetHuffmanStatistics8x8_JPEG_16s_C1(block, dc, ac, &lastDc_[component]);
      break;
    case Pass::kDcFirst:
      status = legacy90orbiGetHuffmanStatistics8x8_DCFirst_JPEG_16s_C1(block, dc,
                                                                       &lastDc_[component], al);
      break;
    case Pass::kDcRefine:
      break;
    case Pass::kAcFirst:
      status = legacy90orbiGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1(block, ac, ss, se, al,
                                                                       state_.get(), 0);
      break;
    case Pass::kAcRefine:
      status = legacy90orbiGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1(block, ac, ss, se, al,
                                                                        state_.get(), 0);
      break;
  }
  if (status != orbStsNoErr) throw Error("a coefficient is too large to be coded");
}

void SymbolCounter::flush() {
  const auto& [ss, se, ah, al] = plan_.selection;
  Orb32s* const ac = ac_[plan_.components[0].acTable].data();
  if (plan_.pass == Pass::kAcFirst) {
    legacy90orbiGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1(nullptr, ac, ss, se, al, state_.get(),
                                                            1);
  } else if (plan_.pass == Pass::kAcRefine) {
    legacy90orbiGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1(nullptr, ac, ss, se, al, state_.get(),
                                                             1);
  }
}

HuffmanTable SymbolCounter::tableOf(const Counts& counts) {
  HuffmanTable table{};
  if (legacy90orbiEncodeHuffmanRawTableInit_JPEG_8u(counts.data(), table.counts.data(),
                                                    table.symbols.data()) != orbStsNoErr) {
    throw Error("the picture's symbols make no Huffman table");
  }
  return table;
}

// ---- Writing

ScanWriter::ScanWriter(const ScanPlan& plan, const TableSet& tables, Bytes& file)
    : ScanCoder(plan), file_(file), position_(static_cast<Orb32s>(file.size())) {
  for (const ScanComponent& component : plan.components) {
    const int dc = component.dcTable;
    const int ac = component.acTable;
    if (needsDcTable(plan.pass) && !dc_[dc]) dc_[dc] = makeEncodeTable(tables.dc[dc]);
    if (needsAcTable(plan.pass) && !ac_[ac]) ac_[ac] = makeEncodeTable(tables.ac[ac]);
  }
}

void ScanWriter::makeRoomFor(int64_t blocks) {
  const int64_t wanted = position_ + blocks * (kLargestBlock + kLargestRestart) + kLargestRun;
  if (wanted > std::numeric_limits<Orb32s>::max()) throw Error("the file would exceed 2 GiB");
  if (wanted > static_cast<int64_t>(file_.size())) {
    file_.resize(
        std::max(static_cast<size_t>(wanted), std::min(file_.size() * 2, size_t{0x7fffffff})));
  }
}

OrbStatus ScanWriter::code(int component, const Orb16s* block) {
  const auto& [ss, se, ah, al] = plan_.selection;
  const OrbiEncodeHuffmanSpec* const dc = dc_[plan_.components[component].dcTable].get();
  const OrbiEncodeHuffmanSpec* const ac = ac_[plan_.components[component].acTable].get();
  Orb8u* const to = file_.data();
  const Orb32s size = static_cast<Orb32s>(file_.size());
  switch (plan_.pass) {
    case Pass::kDcFirst:
      return legacy90orbiEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1(
          block, to, size, &position_, &lastDc_[component], al, dc, state_.get(), 0);
    case Pass::kDcRefine:
      return legacy90orbiEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1(block, to, size, &position_, al,
                                                                 state_.get(), 0);
    case Pass::kAcFirst:
      return legacy90orbiEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(block, to, size, &position_, ss, se,
                                                                al, ac, state_.get(), 0);
    case Pass::kAcRefine:
      return legacy90orbiEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(block, to, size, &position_, ss,
                                                                 se, al, ac, state_.get(), 0);
    case Pass::kSequential:
      break;
  }
  return legacy90orbiEncodeHuffman8x8_JPEG_16s1u_C1(block, to, size, &position_,
                                                    &lastDc_[component], dc, ac, state_.get(), 0);
}

// Writes what the state still holds. In a band that may be a run; all others end alike.
OrbStatus ScanWriter::codeEnd() {
  const auto& [ss, se, ah, al] = plan_.selection;
  const OrbiEncodeHuffmanSpec* const ac = ac_[plan_.components[0].acTable].get();
  Orb8u* const to = file_.data();
  const Orb32s size = static_cast<Orb32s>(file_.size());
  switch (plan_.pass) {
    case Pass::kAcFirst:
      return legacy90orbiEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(nullptr, to, size, &position_, ss,
                                                                se, al, ac, state_.get(), 1);
    case Pass::kAcRefine:
      return legacy90orbiEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(nullptr, to, size, &position_, ss,
                                                                 se, al, ac, state_.get(), 1);
    default:
      return legacy90orbiEncodeHuffman8x8_JPEG_16s1u_C1(nullptr, to, size, &position_, nullptr,
                                                        nullptr, nullptr, state_.get(), 1);
  }
}

void ScanWriter::restart() {
  check(codeEnd());
  file_[position_++] = 0xFF;
  file_[position_++] = static_cast<uint8_t>(kRst0 + restarts_++ % 8);
}

void ScanWriter::finish() {
  makeRoomFor(1);
  check(codeEnd());
  file_.resize(position_);
}

void ScanWriter::check(OrbStatus status) {
  if (status != orbStsNoErr) {
    throw Error("a block cannot be coded (status " + std::to_string(status) + ")");
  }
}

}  // namespace orbhost::jpeg
