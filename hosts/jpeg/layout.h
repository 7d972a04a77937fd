// How a frame's components lie in blocks and MCUs (ITU-T T.81 A.1.1, A.2).
#ifndef ORB_HOSTS_JPEG_LAYOUT_H
#define ORB_HOSTS_JPEG_LAYOUT_H

#include <algorithm>
#include <vector>

#include "hosts/jpeg/markers.h"
#include "orb90legacy.h"

namespace orbhost::jpeg {

constexpr int divideUp(int a, int b) {
  return (a + b - 1) / b;
}

// A block of a lossless picture is one sample.
struct ComponentLayout {
  int h;  // sampling factors: blocks of an interleaved MCU
  int v;
  int blocksWide;  // blocks that hold samples of the picture
  int blocksHigh;
  int paddedBlocksWide;  // blocks of whole MCUs
  int paddedBlocksHigh;
};

struct Layout {
  int hMax = 1;
  int vMax = 1;
  int mcusWide = 0;
  int mcusHigh = 0;
  std::vector<ComponentLayout> components;

  explicit Layout(const Frame& frame) {
    for (const FrameComponent& component : frame.components) {
      hMax = std::max(hMax, component.h);
      vMax = std::max(vMax, component.v);
    }
    const int size = frame.isLossless() ? 1 : 8;
    mcusWide = divideUp(frame.width, size * hMax);
    mcusHigh = divideUp(frame.height, size * vMax);
    for (const FrameComponent& component : frame.components) {
      const int h = component.h;
      const int v = component.v;
      components.push_back({h, v, divideUp(frame.width * h, size * hMax),
                            divideUp(frame.height * v, size * vMax), mcusWide * h, mcusHigh * v});
    }
  }
};

struct alignas(64) Block {
  Orb16s values[64];
};

// The blocks of a whole picture, those that fill up MCUs among them. All are zero at first.
class BlockPlanes {
 public:
  explicit BlockPlanes(const Layout& layout) {
    for (const ComponentLayout& component : layout.components) {
      const size_t wide = static_cast<size_t>(component.paddedBlocksWide);
      planes_.push_back({wide, std::vector<Block>(wide * component.paddedBlocksHigh)});
    }
  }

  Block& at(int component, int column, int row) {
    Plane& plane = planes_[component];
    return plane.blocks[static_cast<size_t>(row) * plane.wide + column];
  }

 private:
  struct Plane {
    size_t wide;
    std::vector<Block> blocks;
  };
  std::vector<Plane> planes_;
};

// A scan codes one row of MCUs after the other. Where it has several components they are
// interleaved; where it has one, an MCU is a block, and those that only fill up MCUs are left out.
inline int mcuRowsOf(const Layout& layout, const std::vector<ScanComponent>& scan) {
  return scan.size() > 1 ? layout.mcusHigh : layout.components[scan[0].component].blocksHigh;
}
inline int mcusPerRowOf(const Layout& layout, const std::vector<ScanComponent>& scan) {
  return scan.size() > 1 ? layout.mcusWide : layout.components[scan[0].component].blocksWide;
}

// Visits the blocks of one row of a scan's MCUs in coding order. `visit` is told the component's
// place in the scan, the component, and the block's column and row in it.
template <class BeginMcu, class Visit>
void walkMcuRow(const Layout& layout, const std::vector<ScanComponent>& scan, int mcuRow,
                BeginMcu beginMcu, Visit visit) {
  const int mcus = mcusPerRowOf(layout, scan);
  if (scan.size() == 1) {
    for (int column = 0; column < mcus; ++column) {
      beginMcu();
      visit(0, scan[0].component, column, mcuRow);
    }
    return;
  }
  const int components = static_cast<int>(scan.size());
  for (int mcu = 0; mcu < mcus; ++mcu) {
    beginMcu();
    for (int i = 0; i < components; ++i) {
      const int c = scan[i].component;
      const ComponentLayout& component = layout.components[c];
      for (int row = mcuRow * component.v; row < (mcuRow + 1) * component.v; ++row) {
        for (int column = mcu * component.h; column < (mcu + 1) * component.h; ++column) {
          visit(i, c, column, row);
        }
      }
    }
  }
}

}  // namespace orbhost::jpeg

#endif
