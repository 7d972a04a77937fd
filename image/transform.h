// What rotation and perspective warp share: their images and rectangles, the checks of these, and
// the drawing of a quadrangle by an inverse map.
#ifndef ORB_IMAGE_TRANSFORM_H
#define ORB_IMAGE_TRANSFORM_H

#include "image/px/edge_blend.h"
#include "image/px/interpolation.h"
#include "image/px/quadrangle.h"
#if ORB_SIMD
#include "image/simd/interpolation.h"
#endif

namespace orb::ORB_BUILD {

// The arguments of a call. Pointers are those of pixel (0, 0), rectangles positions in the images.
struct Transform {
  const Orb8u* pSrc;
  OrbiSize srcSize;
  Orb32s srcStep;
  OrbiRect srcRoi;
  Orb8u* pDst;
  Orb32s dstStep;
  OrbiRect dstRoi;
  Orb32s interpolation;

  Orb32s method() const { return interpolation & 0x7FFFFFFF; }
  bool blendsEdges() const { return interpolation < 0; }
  bool hasMethod() const {
    return method() == orbInterNearest || method() == orbInterLinear ||
           method() == orbInterLagrange || method() == orbInterCatmullRom;
  }
  bool hasSizes() const {
    return srcSize.width >= 1 && srcSize.height >= 1 && isRoi(srcRoi) && isRoi(dstRoi);
  }
  bool beginsInSource() const { return srcRoi.x < srcSize.width && srcRoi.y < srcSize.height; }
  // What of srcRoi is in the image, if it begins there.
  Box sourceBox() const {
    const Box box = boxOf(srcRoi);
    return {box.left, box.top, smaller(box.right, srcSize.width - 1),
            smaller(box.bottom, srcSize.height - 1)};
  }
  bool isSmallSource() const { return srcSize.width < 4 || srcSize.height < 4; }

 private:
  static bool isRoi(const OrbiRect& rect) {
    return rect.x >= 0 && rect.y >= 0 && rect.width >= 1 && rect.height >= 1;
  }
  static Orb32s smaller(Orb32s a, Orb32s b) { return a < b ? a : b; }
};

// Whether less than 2 x 2 pixels are left of a source rectangle: too few to span a quadrangle.
inline bool isSmall(const Box& box) {
  return box.right - box.left < 1 || box.bottom - box.top < 1;
}

// The corners of a box, each mapped.
template <class Map>
inline plain::Quadrangle mapCorners(const Box& box, Map map) {
  const Orb64f left = box.left, top = box.top, right = box.right, bottom = box.bottom;
  return {{map(left, top), map(right, top), map(right, bottom), map(left, bottom)}};
}

// Draws what of a quadrangle falls into dstRoi. `findPlaces(x, y, count, places)` finds where
// pixels of row y from x on lie in the source.
template <Orb32s kChannels, class FindPlaces>
inline OrbStatus drawQuadrangle(const Transform& transform, Orb32s method,
                                const plain::Quadrangle& quadrangle, FindPlaces findPlaces) {
  const Box box = boxOf(transform.dstRoi);
  const plain::Polygon polygon = plain::clip(quadrangle, box);
  const plain::Spans spans(polygon, box);
  if (spans.areEmpty()) return orbStsQuadOutside;

  const SourceImage source = {transform.pSrc, transform.srcSize, transform.srcStep};
  const plain::SampleRun sampleRun = kernel::sampleRunOf<kChannels>(method);
  for (Orb32s y = spans.top(); y <= spans.bottom(); ++y) {
    const plain::Span span = spans.row(y);
    Orb8u* const row = rowAt(transform.pDst, transform.dstStep, y);
    Places places;
    for (Orb32s x = span.first; x <= span.last; x += Places::kMost) {
      const Orb32s left = span.last - x + 1;
      const Orb32s count = left < Places::kMost ? left : Places::kMost;
      findPlaces(x, y, count, places);
      sampleRun(source, places, row + static_cast<ptrdiff_t>(x) * kChannels, count);
    }
  }
  if (transform.blendsEdges()) {
    plain::blendEdges<kChannels>(polygon, quadrangle.isUpright(), box, transform.pDst,
                                 transform.dstStep);
  }
  return orbStsNoErr;
}

}  // namespace orb::ORB_BUILD

#endif
