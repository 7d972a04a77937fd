// Decoding of raw DV frames.
#ifndef ORB_HOSTS_DV_DECODE_H
#define ORB_HOSTS_DV_DECODE_H

#include <memory>
#include <vector>

#include "hosts/bytes.h"
#include "hosts/dv/format.h"
#include "hosts/dv/picture.h"
#include "hosts/dv/placement.h"
#include "orb90legacy.h"

namespace orbhost::dv {

class Decoder {
 public:
  explicit Decoder(const Format& format);

  int segments() const { return static_cast<int>(segments_.size()); }

  // Decodes a frame into the picture, and returns how many of its segments are missing or damaged.
  // The macroblocks of those keep what the picture holds.
  int decode(ByteView frame, Picture& picture);

 private:
  struct FreeTable {
    void operator()(OrbDVHuffTable* table) const { legacy90orbiFreeHuffmanTable_DV_32u(table); }
  };
  // The 40 blocks of the larger form.
  static constexpr int kMostBlocks = 40;

  bool decodeBlocks(ByteView frame, const Segment& segment);
  void transform(int blocks);
  void write(const Segment& segment, bool isSecondFrame, Picture& picture);

  const Format format_;
  const std::vector<Segment> segments_;
  std::unique_ptr<OrbDVHuffTable, FreeTable> table_;
  alignas(64) int16_t blocks_[kMostBlocks * 64];
  uint32_t info_[kMostBlocks];
};

}  // namespace orbhost::dv

#endif
