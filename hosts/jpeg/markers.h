// What a JPEG file says of itself between its coded bytes (ITU-T T.81 annex B): the markers, the
// frame and its scans.
#ifndef ORB_HOSTS_JPEG_MARKERS_H
#define ORB_HOSTS_JPEG_MARKERS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "hosts/error.h"

namespace orbhost::jpeg {

// The second byte of a marker; the first is 0xFF.
enum Marker : int {
  kSof0 = 0xC0,  // baseline
  kSof1 = 0xC1,  // extended sequential
  kSof2 = 0xC2,  // progressive
  kSof3 = 0xC3,  // lossless
  kDht = 0xC4,
  kSof15 = 0xCF,
  kRst0 = 0xD0,
  kRst7 = 0xD7,
  kSoi = 0xD8,
  kEoi = 0xD9,
  kSos = 0xDA,
  kDqt = 0xDB,
  kDri = 0xDD,
  kDhp = 0xDE,
  kApp0 = 0xE0,
  kApp14 = 0xEE,
  kTem = 0x01,
};

// Divisors in zigzag order.
using Divisors = std::array<uint16_t, 64>;

struct FrameComponent {
  int id;
  int h;  // sampling factors
  int v;
  int table;  // of divisors
};

struct Frame {
  int marker;
  int precision;  // bits of a sample
  int width;
  int height;
  std::vector<FrameComponent> components;

  bool isProgressive() const { return marker == kSof2; }
  bool isLossless() const { return marker == kSof3; }
};

struct ScanComponent {
  int component;  // index into the frame's
  int dcTable;
  int acTable;
};

// Which coefficients of a block a scan codes, by their places in the zigzag order, and which of
// their bits: down to bit `al`, after those down to bit `ah`, or as the first ones if that is 0. In
// a lossless scan `ss` is the predictor and `al` the point transform.
struct Selection {
  int ss = 0;
  int se = 63;
  int ah = 0;
  int al = 0;
};

struct Scan {
  size_t offset;      // of its marker
  size_t dataOffset;  // of its entropy-coded bytes
  std::vector<ScanComponent> components;
  Selection selection;

  std::vector<int> componentIndexes() const {
    std::vector<int> indexes;
    for (const ScanComponent& one : components) indexes.push_back(one.component);
    return indexes;
  }
};

// Throws an Error that names a place in the file.
[[noreturn]] inline void failAt(size_t offset, const std::string& what) {
  throw Error("byte " + std::to_string(offset) + ": " + what);
}

}  // namespace orbhost::jpeg

#endif
