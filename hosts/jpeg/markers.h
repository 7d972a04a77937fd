// The marker segments of a JPEG file (ITU-T T.81 annex B): read and written, without what lies
// between them.
#ifndef ORB_HOSTS_JPEG_MARKERS_H
#define ORB_HOSTS_JPEG_MARKERS_H

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "hosts/bytes.h"
#include "hosts/jpeg/tables.h"

namespace orbhost::jpeg {

// The second byte of a marker; the first is 0xFF.
enum Marker : int {
  kSof0 = 0xC0,  // baseline
  kSof1 = 0xC1,  // extended sequential
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
  int width;
  int height;
  std::vector<FrameComponent> components;
};

struct ScanComponent {
  int component;  // index into the frame's
  int dcTable;
  int acTable;
};

struct Scan {
  size_t offset;      // of its marker
  size_t dataOffset;  // of its entropy-coded bytes
  std::vector<ScanComponent> components;
};

// Throws an Error that names a place in the file.
[[noreturn]] void failAt(size_t offset, const std::string& what);

// Reads segment after segment and keeps what they define. Of the frames it takes those that the
// decoder can decode, and refuses the others by name.
class MarkerReader {
 public:
  explicit MarkerReader(ByteView file);

  // Reads on up to the next scan, whose entropy-coded bytes come next; false at the end of the
  // picture. Throws an Error at whatever breaks the format, the file's early end included.
  bool nextScan();

  // Goes on at a marker: behind a scan's bytes.
  void resumeAt(size_t offset) { position_ = offset; }

  const Frame& frame() const { return *frame_; }
  const Scan& scan() const { return scan_; }
  const std::optional<Divisors>& divisors(int table) const { return divisors_[table]; }
  const std::optional<HuffmanTable>& dcTable(int table) const { return huffman_[0][table]; }
  const std::optional<HuffmanTable>& acTable(int table) const { return huffman_[1][table]; }
  int restartInterval() const { return restartInterval_; }
  bool hasJfif() const { return hasJfif_; }
  // The colour transform that an Adobe segment names: 0 none, 1 YCbCr, 2 YCCK.
  std::optional<int> adobeTransform() const { return adobeTransform_; }

 private:
  class Segment;

  int nextMarker();
  void readQuantisation(Segment segment);
  void readHuffman(Segment segment);
  void readFrame(Segment segment, int marker);
  void readScan(Segment segment);
  void readApplication(Segment segment, int marker);

  ByteView file_;
  size_t position_ = 0;
  std::optional<Frame> frame_;
  Scan scan_;
  std::array<std::optional<Divisors>, 4> divisors_;
  std::array<std::array<std::optional<HuffmanTable>, 4>, 2> huffman_;
  int restartInterval_ = 0;
  bool hasJfif_ = false;
  std::optional<int> adobeTransform_;
};

// Appends segments to a file.
class MarkerWriter {
 public:
  explicit MarkerWriter(Bytes& file) : file_(file) {}

  void marker(int code);
  void jfif();  // version 1.1, no density
  void quantisation(int table, const std::array<uint8_t, 64>& divisors);
  void huffman(int tableClass, int table, const HuffmanTable& codes);  // class 0 is DC, 1 AC
  void frame(const Frame& frame);
  void restartInterval(int mcus);
  void scan(const Frame& frame, const std::vector<ScanComponent>& components);  // sequential

 private:
  void byte(int value) { file_.push_back(static_cast<uint8_t>(value)); }
  void word(int value);
  void segment(int code, int length);

  Bytes& file_;
};

}  // namespace orbhost::jpeg

#endif
