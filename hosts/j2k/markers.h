// The markers of a codestream (ITU-T T.800 table A.2).
#ifndef ORB_HOSTS_J2K_MARKERS_H
#define ORB_HOSTS_J2K_MARKERS_H

#include <cstddef>
#include <string>

#include "hosts/error.h"

namespace orbhost::j2k {

// Both bytes of a marker.
enum Marker : int {
  kSoc = 0xFF4F,  // start of codestream
  kSot = 0xFF90,  // start of tile-part
  kSod = 0xFF93,  // start of data
  kEoc = 0xFFD9,  // end of codestream
  kSiz = 0xFF51,  // image and tile size
  kCod = 0xFF52,  // coding style default
  kCoc = 0xFF53,  // coding style of a component
  kRgn = 0xFF5E,  // region of interest
  kQcd = 0xFF5C,  // quantisation default
  kQcc = 0xFF5D,  // quantisation of a component
  kPoc = 0xFF5F,  // progression order change
  kTlm = 0xFF55,  // tile-part lengths
  kPlm = 0xFF57,  // packet lengths, main header
  kPlt = 0xFF58,  // packet lengths, tile-part header
  kPpm = 0xFF60,  // packed packet headers, main header
  kPpt = 0xFF61,  // packed packet headers, tile-part header
  kSop = 0xFF91,  // start of packet
  kEph = 0xFF92,  // end of packet header
  kCrg = 0xFF63,  // component registration
  kCom = 0xFF64,  // comment
};

// Throws an Error that names a place in the file.
[[noreturn]] inline void failAt(size_t offset, const std::string& what) {
  throw Error("byte " + std::to_string(offset) + ": " + what);
}

}  // namespace orbhost::j2k

#endif
