// From the scans of a DCT-based JPEG file to its blocks of quantised coefficients.
#ifndef ORB_HOSTS_JPEG_BLOCK_DECODE_H
#define ORB_HOSTS_JPEG_BLOCK_DECODE_H

#include <vector>

#include "hosts/bytes.h"
#include "hosts/jpeg/layout.h"
#include "hosts/jpeg/marker_reader.h"

namespace orbhost::jpeg {

// Takes the blocks of a picture, a row of interleaved MCUs after the other.
class BlockSink {
 public:
  virtual ~BlockSink() = default;

  // Comes before the component's first block.
  virtual void useDivisors(int component, const Divisors& divisors) = 0;

  virtual void beginMcuRow(int mcuRow) = 0;
  virtual void put(int component, int column, int row, const Block& block) = 0;
  virtual void endMcuRow(int mcuRow, bool isLast) = 0;
};

// What cannot be in the file is no reason to allocate anything. Throws an Error if the first scan,
// which the reader has found, has more blocks than there are bits for: in a sequential one each
// takes two at least, in a progressive one one.
void checkSize(ByteView file, const MarkerReader& markers, const Layout& layout);

// The blocks as they are when `scansTo` scans are decoded, or all of them if that is 0. The reader
// has found the first scan. Throws an Error if the file is damaged, or ends before its scans do.
void decodeBlocks(ByteView file, MarkerReader& markers, const Layout& layout, int scansTo,
                  BlockSink& to);

// The same for all blocks at once, as a transcoder would want them.
struct Coefficients {
  Layout layout;
  BlockPlanes blocks;
};
Coefficients decodeCoefficients(ByteView file, int scansTo = 0);

}  // namespace orbhost::jpeg

#endif
