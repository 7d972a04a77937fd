#include "hosts/jpeg/scan_output.h"

#include <algorithm>
#include <limits>
#include <string>

#include "hosts/error.h"
#include "hosts/jpeg/markers.h"

namespace orbhost::jpeg {

void ScanOutput::makeRoom(int64_t bytes) {
  const int64_t wanted = position_ + bytes;
  if (wanted > std::numeric_limits<Orb32s>::max()) throw Error("the file would exceed 2 GiB");
  if (wanted > static_cast<int64_t>(file_.size())) {
    file_.resize(
        std::max(static_cast<size_t>(wanted), std::min(file_.size() * 2, size_t{0x7fffffff})));
  }
}

void ScanOutput::restartMarker() {
  file_[position_++] = 0xFF;
  file_[position_++] = static_cast<uint8_t>(kRst0 + restarts_++ % 8);
}

void ScanOutput::check(OrbStatus status) {
  if (status != orbStsNoErr) {
    throw Error("the picture cannot be coded (status " + std::to_string(status) + ")");
  }
}

}  // namespace orbhost::jpeg
