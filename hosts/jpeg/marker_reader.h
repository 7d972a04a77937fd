// Reads the marker segments of a JPEG file, without what lies between them.
#ifndef ORB_HOSTS_JPEG_MARKER_READER_H
#define ORB_HOSTS_JPEG_MARKER_READER_H

#include <array>
#include <optional>

#include "hosts/bytes.h"
#include "hosts/jpeg/markers.h"
#include "hosts/jpeg/tables.h"

namespace orbhost::jpeg {

// Goes from segment to segment and keeps what they define. Of the frames it takes those that the
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
  void readSelection(Segment& segment);
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

}  // namespace orbhost::jpeg

#endif
