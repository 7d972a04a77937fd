#include "hosts/jxr/stages.h"

#include "hosts/error.h"
#include "hosts/jxr/overlap.h"
#include "orb90legacy.h"

namespace orbhost::jxr {

namespace {

// Calls `one` with all that the filters see as one, in macroblocks: the picture, or each tile.
template <class One>
void eachRegion(const ImageHeader& image, One one) {
  if (!image.hardTiles) {
    one(Tile{0, 0, 0, image.macroblocksWide(), image.macroblocksHigh()});
    return;
  }
  for (int tile = 0; tile < image.tiles(); ++tile) one(image.tile(tile));
}

void filterSamples(Sense sense, const ImageHeader& image, ColourFormat format, int channel,
                   Plane& plane) {
  if (image.overlap < 1) return;
  const int wide = blocksWide(format, channel) * 4;
  const int high = blocksHigh(format, channel) * 4;
  eachRegion(image, [&](const Tile& tile) {
    const Rows<int32_t> rows = plane.rows().from(tile.left * wide, tile.top * high);
    filterSquaresOf4(sense, {rows.first, 1, rows.step, tile.width * wide, tile.height * high});
  });
}

void filterDcs(Sense sense, const ImageHeader& image, ColourFormat format, int channel,
               Plane& plane) {
  const int wide = blocksWide(format, channel);
  const int high = blocksHigh(format, channel);
  eachRegion(image, [&](const Tile& tile) {
    const Rows<int32_t> rows = plane.rows().from(tile.left * wide * 4, tile.top * high * 4);
    const OverlapRegion region = {rows.first, 4, 4 * rows.step, tile.width * wide,
                                  tile.height * high};
    if (wide == 4) {
      filterSquaresOf4(sense, region);
    } else {
      filterSquaresOf2(sense, region);
    }
  });
}

}  // namespace

void checkOverlap(const ImageHeader& image, ColourFormat format) {
  if (image.overlap < 2 || !isHalvedAcross(format, 1)) return;
  eachRegion(image, [](const Tile& tile) {
    if (tile.width < 2) {
      throw Error("both overlap filters with halved chroma take more than 16 columns");
    }
  });
}

void forwardBlocks(ColourFormat format, int channel, Rows<int32_t> macroblock) {
  legacy90orbiPCTFwd_JPEGXR_32s_C1IR(
      macroblock.first, static_cast<unsigned>(macroblock.stepBytes()),
      blocksWide(format, channel) * 4, blocksHigh(format, channel) * 4);
}

void inverseBlocks(ColourFormat format, int channel, Rows<int32_t> macroblock) {
  legacy90orbiPCTInv_JPEGXR_32s_C1IR(
      macroblock.first, static_cast<unsigned>(macroblock.stepBytes()),
      blocksWide(format, channel) * 4, blocksHigh(format, channel) * 4);
}

void forwardFirstStage(const ImageHeader& image, ColourFormat format, int channel, Plane& plane) {
  filterSamples(Sense::kForward, image, format, channel, plane);
  if (goesByMacroblocks(image)) return;
  legacy90orbiPCTFwd_JPEGXR_32s_C1IR(plane.rows().first,
                                     static_cast<unsigned>(plane.rows().stepBytes()), plane.width(),
                                     plane.height());
  filterDcs(Sense::kForward, image, format, channel, plane);
}

void inverseFirstStage(const ImageHeader& image, ColourFormat format, int channel, Plane& plane) {
  if (!goesByMacroblocks(image)) {
    filterDcs(Sense::kInverse, image, format, channel, plane);
    legacy90orbiPCTInv_JPEGXR_32s_C1IR(plane.rows().first,
                                       static_cast<unsigned>(plane.rows().stepBytes()),
                                       plane.width(), plane.height());
  }
  filterSamples(Sense::kInverse, image, format, channel, plane);
}

}  // namespace orbhost::jxr
