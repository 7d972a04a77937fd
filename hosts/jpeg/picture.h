// From blocks of coefficients to pixels.
#ifndef ORB_HOSTS_JPEG_PICTURE_H
#define ORB_HOSTS_JPEG_PICTURE_H

#include <cstdint>
#include <utility>
#include <vector>

#include "hosts/image.h"
#include "hosts/jpeg/block_decode.h"
#include "hosts/jpeg/colour.h"
#include "orb90legacy.h"

namespace orbhost::jpeg {

// Writes a block's samples, as many as its size of 8, 4, 2 or 1 has, with the level shift.
using InverseTransform = OrbStatus(ORB_CALL*)(const Orb16s* block, Orb8u* to, Orb32s step,
                                              const Orb16u* divisors);

// A table as the inverse transforms take it.
void makeInverseTable(const Divisors& divisors, Orb16u* table);

// Takes the blocks of one row of MCUs after the other and gives the picture's rows as soon as their
// samples are there: grey, RGB, or the inks of CMYK.
class PictureBuilder : public BlockSink {
 public:
  PictureBuilder(const MarkerReader& markers, const Layout& layout, int scale);

  void useDivisors(int component, const Divisors& divisors) override;
  void beginMcuRow(int mcuRow) override;
  void put(int component, int column, int row, const Block& block) override;
  // Gives the rows whose samples are there, which is all but the last if that needs the next one's.
  void endMcuRow(int mcuRow, bool isLast) override;

  Image takeImage() { return std::move(image_); }

 private:
  struct Component {
    int size;   // of its blocks, once inverted
    int width;  // in samples of the picture
    int height;
    int v;
    int rowsPerMcu;
    int step;
    bool doubledAcross;
    bool doubledDown;
    bool smooth;  // doubled with the triangle filter, or by repetition
    InverseTransform inverse;
    int firstRow = 0;              // of this row of MCUs
    std::vector<uint8_t> window;   // the last row of the MCUs above, then the rows of these
    std::vector<uint8_t> doubled;  // one row of the picture
    alignas(64) Orb16u divisors[64];

    uint8_t* windowRow(int i) { return window.data() + static_cast<ptrdiff_t>(i) * step; }
    // Beyond the component's edges its first and last rows are repeated.
    const uint8_t* row(int y);
  };

  void addComponent(const Layout& layout, const ComponentLayout& from);
  const uint8_t* fullRow(Component& component, int y);
  void emitRow(int y);

  const Frame& frame_;
  ColourSpace colourSpace_;
  bool storesLight_;
  int smallest_;    // size of the blocks of the component that has most samples
  int rowsPerMcu_;  // of the picture
  bool looksAhead_ = false;
  std::vector<Component> components_;
  int nextRow_ = 0;
  Image image_;
};

}  // namespace orbhost::jpeg

#endif
