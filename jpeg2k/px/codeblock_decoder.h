// The code-block decoder: all segments at once, by way of the progressive one.
#ifndef ORB_JPEG2K_PX_CODEBLOCK_DECODER_H
#define ORB_JPEG2K_PX_CODEBLOCK_DECODER_H

#include "jpeg2k/px/codeblock_progressive.h"

namespace orb::ORB_BUILD::plain {

// The bits from a plane on, all of them for a plane below 0.
inline Orb32u bitsFrom(Orb32s plane) {
  return plane < 0 ? ~0u : plane > 31 ? 0 : ~0u << plane;
}

// Rewrites all samples of a block.
template <class Change>
inline void changeSamples(Orb32s* dst, Orb32s dstStep, OrbiSize size, Change change) {
  for (Orb32s y = 0; y < size.height; ++y) {
    Orb32s* const row = rowAt(dst, dstStep, y);
    for (Orb32s x = 0; x < size.width; ++x) {
      const Orb32u sample = static_cast<Orb32u>(load(row + x));
      store(row + x, static_cast<Orb32s>(change(sample)));
    }
  }
}

// Takes back what an error in a plane may have spoilt: the bits below the plane go, and of what is
// left the plane's bit is set, for the middle. Below plane 0 there is nothing to take back or to
// set.
inline void fallBackTo(Orb32s plane, Orb32s* dst, Orb32s dstStep, OrbiSize size) {
  const Orb32u kept = bitsFrom(plane);
  const Orb32u planeBit = kept & ~bitsFrom(plane + 1);
  changeSamples(dst, dstStep, size, [=](Orb32u sample) {
    const Orb32u above = sample & kept;
    return (above & 0x7FFFFFFF) == 0 ? 0 : above | planeBit;
  });
}

inline OrbStatus orbDecodeCodeBlock(OrbiDecodeCBProgrState_JPEG2K& state, const Orb8u* src,
                                    const Orb32s* segmentLengths, Orb32s segmentCount,
                                    Orb32s passCount) {
  state.passCounter = passCount;
  OrbStatus status = orbStsNoErr;
  for (Orb32s i = 0; i < segmentCount && status == orbStsNoErr; ++i) {
    const Orb32s length = limit(load(segmentLengths + i), 0, INT32_MAX);
    status = orbStep(state, src, length);
    src += length;
  }
  if (status != orbStsNoErr && (state.flags & kDecodeFallBack) != 0) {
    fallBackTo(state.plane, state.dst, state.dstStep, state.size);
  }
  if ((state.flags & kDecodeKeepMidpoints) == 0 && state.plane >= 1) {
    const Orb32u kept = bitsFrom(state.plane);
    changeSamples(state.dst, state.dstStep, state.size,
                  [=](Orb32u sample) { return sample & kept; });
  }
  return status;
}

}  // namespace orb::ORB_BUILD::plain

#endif
