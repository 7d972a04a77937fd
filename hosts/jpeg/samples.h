// From pixels to the samples of a frame's components.
#ifndef ORB_HOSTS_JPEG_SAMPLES_H
#define ORB_HOSTS_JPEG_SAMPLES_H

#include <cstdint>
#include <vector>

#include "hosts/image.h"
#include "hosts/jpeg/colour.h"
#include "hosts/jpeg/layout.h"

namespace orbhost::jpeg {

// The samples of one row of MCUs, component by component, with the picture's last column and row
// repeated up to whole MCUs.
class SampleStripe {
 public:
  SampleStripe(const Image& image, const Layout& layout, ColourSpace colourSpace);

  void fill(int mcuRow);

  const uint8_t* block(int component, int column, int row) const {
    return rows_[component].row(row * 8) + column * 8;
  }
  int step(int component) const { return rows_[component].width; }

 private:
  struct Rows {
    int width = 0;
    std::vector<uint8_t> samples;

    Rows() = default;
    Rows(int columns, int count)
        : width(columns), samples(static_cast<size_t>(columns) * static_cast<size_t>(count)) {}
    uint8_t* row(int y) { return samples.data() + static_cast<ptrdiff_t>(y) * width; }
    const uint8_t* row(int y) const { return samples.data() + static_cast<ptrdiff_t>(y) * width; }
  };

  void fillGroup(int group, int y);
  void convertRow(const uint8_t* from, uint8_t* const to[4]);
  void separate(const uint8_t* from, int flip, uint8_t* const to[4]) const;
  void halve(const Rows& full, uint8_t* to) const;
  void repeatLastColumn(uint8_t* row) const;
  void repeatGroup(int group);

  const Image& image_;
  const Layout& layout_;
  ColourSpace colourSpace_;
  std::vector<Rows> rows_;
  Rows fullChroma_[2];          // of one group, before it is halved
  std::vector<uint8_t> light_;  // that the inks of one row leave
};

}  // namespace orbhost::jpeg

#endif
