// The macroblocks of one plane in one tile, encoded.
#ifndef ORB_HOSTS_JXR_PLANE_WRITER_H
#define ORB_HOSTS_JXR_PLANE_WRITER_H

#include <vector>

#include "hosts/jxr/bits.h"
#include "hosts/jxr/macroblock.h"
#include "hosts/jxr/plane_coding.h"
#include "hosts/jxr/prediction.h"
#include "hosts/jxr/samples.h"

namespace orbhost::jxr {

// A tile's packets. In spatial order all bands go to the same one.
struct TileOutput {
  BitWriter* to[kBands];  // null if the plane is not to have that band
  int trim;               // lowest flexbits that are dropped
};

class PlaneWriter {
 public:
  // The planes hold the levels of high-pass coefficients in their places, the macroblocks all
  // others.
  PlaneWriter(const PlaneHeader& header, const Tile& tile, const std::vector<Plane>& planes,
              Macroblocks& macroblocks);

  // The macroblock at a place of the tile, in the order of rows. Its patterns are noted.
  void write(int x, int y, const TileOutput& output);

 private:
  void writeDc(const Macroblock& block, BitWriter& to);
  void writeLowPass(const Macroblock& block, BitWriter& to);
  int writeLowPassUnit(int unit, const Macroblock& block, BitWriter& to);
  void writeHighPass(int x, int y, const Neighbours& neighbours, const TileOutput& output,
                     Macroblock& block);
  int writeBlock(int channel, bool isCoded, const int32_t* levels, const TileOutput& output);

  const PlaneHeader& header_;
  Tile tile_;
  const std::vector<Plane>& planes_;
  Macroblocks& macroblocks_;
  Models models_;
};

}  // namespace orbhost::jxr

#endif
