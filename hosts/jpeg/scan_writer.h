// Codes the blocks of one scan, sequential or progressive: a first pass may count its symbols for
// tables made to measure, another writes.
#ifndef ORB_HOSTS_JPEG_SCAN_WRITER_H
#define ORB_HOSTS_JPEG_SCAN_WRITER_H

#include <array>
#include <cstdint>
#include <vector>

#include "hosts/bytes.h"
#include "hosts/jpeg/huffman.h"
#include "hosts/jpeg/markers.h"
#include "hosts/jpeg/progression.h"
#include "hosts/jpeg/scan_output.h"
#include "hosts/jpeg/tables.h"
#include "orb90legacy.h"

namespace orbhost::jpeg {

// A scan that is to be written.
struct ScanPlan {
  std::vector<ScanComponent> components;
  Selection selection;
  Pass pass;
  int restartInterval;  // in MCUs; 0 is none
};

// Huffman tables by their numbers.
struct TableSet {
  std::array<HuffmanTable, 2> dc;
  std::array<HuffmanTable, 2> ac;
};

// What both passes share. It counts MCUs for the restarts.
class ScanCoder {
 public:
  virtual ~ScanCoder() = default;

  void beginMcu() {
    if (plan_.restartInterval != 0 && mcus_ == plan_.restartInterval) {
      restart();
      for (Orb16s& dc : lastDc_) dc = 0;
      mcus_ = 0;
    }
    ++mcus_;
  }

 protected:
  explicit ScanCoder(const ScanPlan& plan) : plan_(plan), state_(makeEncodeState()) {}

  virtual void restart() = 0;

  const ScanPlan& plan_;
  Orb16s lastDc_[4] = {};
  EncodeState state_;

 private:
  int mcus_ = 0;
};

// Counts symbols.
class SymbolCounter : public ScanCoder {
 public:
  explicit SymbolCounter(const ScanPlan& plan) : ScanCoder(plan) {}

  // `component` is a place in the scan.
  void put(int component, const Orb16s* block);
  void finish() { flush(); }

  HuffmanTable dcTable(int number) const { return makeOptimalTable(dc_[number]); }
  HuffmanTable acTable(int number) const { return makeOptimalTable(ac_[number]); }

 private:
  void restart() override { flush(); }
  void flush();

  SymbolCounts dc_[2] = {};
  SymbolCounts ac_[2] = {};
};

// Writes codes behind what the file holds so far.
class ScanWriter : public ScanCoder {
 public:
  ScanWriter(const ScanPlan& plan, const TableSet& tables, Bytes& file);

  // Needed before that many blocks are put.
  void makeRoomFor(int64_t blocks);

  void put(int component, const Orb16s* block) { ScanOutput::check(code(component, block)); }
  void finish();

 private:
  void restart() override;
  OrbStatus code(int component, const Orb16s* block);
  OrbStatus codeEnd();

  ScanOutput output_;
  EncodeTable dc_[2];
  EncodeTable ac_[2];
};

}  // namespace orbhost::jpeg

#endif
