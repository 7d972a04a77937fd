// The macroblocks of one plane in one tile, decoded.
#ifndef ORB_HOSTS_JXR_PLANE_READER_H
#define ORB_HOSTS_JXR_PLANE_READER_H

#include <vector>

#include "hosts/jxr/bits.h"
#include "hosts/jxr/macroblock.h"
#include "hosts/jxr/plane_coding.h"
#include "hosts/jxr/prediction.h"
#include "hosts/jxr/samples.h"

namespace orbhost::jxr {

// A tile's packets. In spatial order all bands come from the same one.
struct TileInput {
  BitReader* of[kBands];  // null if the tile has no such band
  bool isSpatial;
  int trim;  // lowest flexbits that lack
};

class PlaneReader {
 public:
  PlaneReader(const ImageHeader& image, const PlaneHeader& header, const Tile& tile,
              std::vector<Plane>& planes, Macroblocks& macroblocks);

  // Quantisers that the plane's header leaves to the tile.
  void readTileHeader(Band band, BitReader& from);

  // The macroblock at a place of the tile, in the order of rows: to coefficients in their places,
  // the DCs of blocks among them.
  void read(int x, int y, TileInput& input);

 private:
  void readDc(BitReader& from, Macroblock& block);
  void readLowPass(BitReader& from, Macroblock& block);
  void readLowPassUnit(int unit, BitReader& from, Macroblock& block, int (&counts)[2]);
  void readHighPass(int x, int y, TileInput& input, Macroblock& block);
  int readBlock(int channel, bool isCoded, int32_t step, TileInput& input, Rows<int32_t> to);
  void transform(int x, int y, const Macroblock& block);
  Rows<int32_t> samplesOf(int x, int y, int channel);
  int32_t stepFor(Band band, int number, int channel) const;

  const ImageHeader& image_;
  const PlaneHeader& header_;
  Tile tile_;
  std::vector<Plane>& planes_;
  Macroblocks& macroblocks_;
  QuantiserSet quantisers_[kFlexbits];
  bool highPassFollows_ = false;  // the high-pass quantisers are those of the low-pass band
  Models models_;
};

}  // namespace orbhost::jxr

#endif
