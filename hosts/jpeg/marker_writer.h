// Writes the marker segments of a JPEG file.
#ifndef ORB_HOSTS_JPEG_MARKER_WRITER_H
#define ORB_HOSTS_JPEG_MARKER_WRITER_H

#include <array>
#include <vector>

#include "hosts/bytes.h"
#include "hosts/jpeg/markers.h"
#include "hosts/jpeg/tables.h"

namespace orbhost::jpeg {

// Appends segments to a file.
class MarkerWriter {
 public:
  explicit MarkerWriter(Bytes& file) : file_(file) {}

  void marker(int code);
  void jfif();                // version 1.1, no density
  void adobe(int transform);  // 0 none, 1 YCbCr, 2 YCCK
  void quantisation(int table, const std::array<uint8_t, 64>& divisors);
  void huffman(int tableClass, int table, const HuffmanTable& codes);  // class 0 is DC, 1 AC
  void frame(const Frame& frame);
  void restartInterval(int mcus);
  void scan(const Frame& frame, const std::vector<ScanComponent>& components,
            const Selection& selection);

 private:
  void byte(int value) { file_.push_back(static_cast<uint8_t>(value)); }
  void word(int value);
  void segment(int code, int length);

  Bytes& file_;
};

}  // namespace orbhost::jpeg

#endif
