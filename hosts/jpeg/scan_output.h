// The entropy-coded bytes of a scan, as the library's coding functions write them.
#ifndef ORB_HOSTS_JPEG_SCAN_OUTPUT_H
#define ORB_HOSTS_JPEG_SCAN_OUTPUT_H

#include <cstdint>

#include "hosts/bytes.h"
#include "orb90legacy.h"

namespace orbhost::jpeg {

// Bytes behind what a file holds so far.
class ScanOutput {
 public:
  // What any byte may become, since one of 255 is followed by a stuffed one.
  static constexpr int kStuffed = 2;
  // The last byte before a restart, and the marker.
  static constexpr int kLargestRestart = kStuffed + 2;

  explicit ScanOutput(Bytes& file) : file_(file), position_(static_cast<Orb32s>(file.size())) {}

  // Makes sure that so many bytes fit: coding never meets the buffer's end.
  void makeRoom(int64_t bytes);

  Orb8u* data() { return file_.data(); }
  Orb32s size() const { return static_cast<Orb32s>(file_.size()); }
  Orb32s* position() { return &position_; }

  void restartMarker();

  // Drops the room that is left.
  void finish() { file_.resize(position_); }

  // Throws an Error unless a coding function has succeeded.
  static void check(OrbStatus status);

 private:
  Bytes& file_;
  Orb32s position_;
  int restarts_ = 0;
};

}  // namespace orbhost::jpeg

#endif
