// The entropy-coded bytes of a scan, as the library's decoding functions take them.
#ifndef ORB_HOSTS_JPEG_SCAN_INPUT_H
#define ORB_HOSTS_JPEG_SCAN_INPUT_H

#include "hosts/bytes.h"
#include "hosts/jpeg/huffman.h"
#include "hosts/jpeg/marker_reader.h"
#include "orb90legacy.h"

namespace orbhost::jpeg {

// Counts MCUs and deals with the restarts between them. What decodes the MCUs derives from it.
class ScanInput {
 public:
  // True if a restart lies before the next MCU, or several that have none between them: all
  // predictions start anew.
  bool beginMcus(int count) {
    const bool restarts = restartInterval_ != 0 && mcus_ == restartInterval_;
    if (restarts) restart();
    mcus_ += count;
    return restarts;
  }

  // Where the marker behind the scan is.
  size_t finish() const { return marker_ != 0 ? position_ - 2 : position_; }

 protected:
  // For the scan that the reader has just found.
  ScanInput(ByteView file, const MarkerReader& markers);

  // The tables that the scan names. `largest` is the largest symbol that it may hold.
  static DecodeTable dcTableOf(const ScanComponent& component, const MarkerReader& markers,
                               int largest);
  static DecodeTable acTableOf(const ScanComponent& component, const MarkerReader& markers);

  void check(OrbStatus status) const {
    if (status != orbStsNoErr) fail(status);
  }

  const Orb8u* const data_;
  const Orb32s size_;
  Orb32s position_;
  Orb32s marker_ = 0;  // met and not yet dealt with
  DecodeState state_;

 private:
  void restart();
  [[noreturn]] void fail(OrbStatus status) const;

  int restartInterval_;
  int mcus_ = 0;  // since the last restart
  int restarts_ = 0;
};

}  // namespace orbhost::jpeg

#endif
