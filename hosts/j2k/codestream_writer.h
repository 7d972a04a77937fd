// Writes the marker segments of a codestream (ITU-T T.800 annex A).
#ifndef ORB_HOSTS_J2K_CODESTREAM_WRITER_H
#define ORB_HOSTS_J2K_CODESTREAM_WRITER_H

#include <cstdint>

#include "hosts/bytes.h"
#include "hosts/j2k/parameters.h"

namespace orbhost::j2k {

// Appends to a file. All components are coded alike.
class CodestreamWriter {
 public:
  static constexpr size_t kTilePartHeaderLength = 14;  // SOT and SOD

  explicit CodestreamWriter(Bytes& file) : file_(file) {}

  void mainHeader(const PictureSize& size, const TileCoding& coding);
  // The only part of a tile; the length is that of the packets behind it.
  void tilePart(int tile, size_t length);
  void startOfPacket(uint32_t packet);
  void end();

 private:
  void size(const PictureSize& size);
  void codingStyle(const CodingStyle& style, const ComponentStyle& component);
  void quantisation(const Quantisation& quantisation);

  void byte(uint32_t value) { file_.push_back(static_cast<uint8_t>(value)); }
  void word(uint32_t value);
  void doubleWord(uint32_t value);
  // The marker, and the length of what follows it, without that of the length itself.
  void segment(int marker, size_t length);

  Bytes& file_;
};

}  // namespace orbhost::j2k

#endif
