#include "hosts/jpeg/scan_writer.h"

#include "hosts/error.h"

namespace orbhost::jpeg {

namespace {

// A block's codes take at most 64 times 16 bits of code and 11 of value.
constexpr int64_t kLargestBlock = 64 * 27 / 8 * ScanOutput::kStuffed;

// An end-of-band run, with the correction bits of its blocks.
constexpr int64_t kLargestRun = (30 + 1000) / 8 * ScanOutput::kStuffed;

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

// ---- Writing

ScanWriter::ScanWriter(const ScanPlan& plan, const TableSet& tables, Bytes& file)
    : ScanCoder(plan), output_(file) {
  for (const ScanComponent& component : plan.components) {
    const int dc = component.dcTable;
    const int ac = component.acTable;
    if (needsDcTable(plan.pass) && !dc_[dc]) dc_[dc] = makeEncodeTable(tables.dc[dc]);
    if (needsAcTable(plan.pass) && !ac_[ac]) ac_[ac] = makeEncodeTable(tables.ac[ac]);
  }
}

void ScanWriter::makeRoomFor(int64_t blocks) {
  output_.makeRoom(blocks * (kLargestBlock + ScanOutput::kLargestRestart) + kLargestRun);
}

OrbStatus ScanWriter::code(int component, const Orb16s* block) {
  const auto& [ss, se, ah, al] = plan_.selection;
  const OrbiEncodeHuffmanSpec* const dc = dc_[plan_.components[component].dcTable].get();
  const OrbiEncodeHuffmanSpec* const ac = ac_[plan_.components[component].acTable].get();
  Orb8u* const to = output_.data();
  const Orb32s size = output_.size();
  Orb32s* const position = output_.position();
  switch (plan_.pass) {
    case Pass::kDcFirst:
      return legacy90orbiEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1(
          block, to, size, position, &lastDc_[component], al, dc, state_.get(), 0);
    case Pass::kDcRefine:
      return legacy90orbiEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1(block, to, size, position, al,
                                                                 state_.get(), 0);
    case Pass::kAcFirst:
      return legacy90orbiEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(block, to, size, position, ss, se,
                                                                al, ac, state_.get(), 0);
    case Pass::kAcRefine:
      return legacy90orbiEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(block, to, size, position, ss, se,
                                                                 al, ac, state_.get(), 0);
    case Pass::kSequential:
      break;
  }
  return legacy90orbiEncodeHuffman8x8_JPEG_16s1u_C1(block, to, size, position, &lastDc_[component],
                                                    dc, ac, state_.get(), 0);
}

// Writes what the state still holds. In a band that may be a run; all others end alike.
OrbStatus ScanWriter::codeEnd() {
  const auto& [ss, se, ah, al] = plan_.selection;
  const OrbiEncodeHuffmanSpec* const ac = ac_[plan_.components[0].acTable].get();
  Orb8u* const to = output_.data();
  const Orb32s size = output_.size();
  Orb32s* const position = output_.position();
  switch (plan_.pass) {
    case Pass::kAcFirst:
      return legacy90orbiEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(nullptr, to, size, position, ss, se,
                                                                al, ac, state_.get(), 1);
    case Pass::kAcRefine:
      return legacy90orbiEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(nullptr, to, size, position, ss,
                                                                 se, al, ac, state_.get(), 1);
    default:
      return legacy90orbiEncodeHuffman8x8_JPEG_16s1u_C1(nullptr, to, size, position, nullptr,
                                                        nullptr, nullptr, state_.get(), 1);
  }
}

void ScanWriter::restart() {
  ScanOutput::check(codeEnd());
  output_.restartMarker();
}

void ScanWriter::finish() {
  makeRoomFor(1);
  ScanOutput::check(codeEnd());
  output_.finish();
}

}  // namespace orbhost::jpeg
