// Channels of samples: joined and split as they are, or as integers of 16 or 24 bits and floats.
#ifndef ORB_SIDE_PX_SAMPLES_H
#define ORB_SIDE_PX_SAMPLES_H

#include "frame/arith.h"
#include "frame/memory_access.h"

namespace orb::ORB_BUILD {

// ---- Integers for floats from -1 to 1: how they lie in memory, and the line between the two.

struct Code16s {
  static constexpr int kBytes = 2;
  static constexpr Orb64f kScale = 32767.5;
  static constexpr Orb64f kStep = 2.0f / 65535;
  static constexpr Orb64f kHalfStep = 1.0f / 65535;

  static Orb32s read(const Orb8u* at) { return load(reinterpret_cast<const Orb16s*>(at)); }
  static void write(Orb8u* at, Orb32s code) { store(reinterpret_cast<Orb16s*>(at), wrap16s(code)); }
};

struct Code24s {
  static constexpr int kBytes = 3;
  static constexpr Orb64f kScale = 8388607.5;
  static constexpr Orb64f kStep = 1.19209296656209e-7;
  static constexpr Orb64f kHalfStep = 5.96046483281045e-8;

  static Orb32s read(const Orb8u* at) {
    return at[0] | at[1] << 8 | static_cast<Orb8s>(at[2]) * 65536;
  }
  static void write(Orb8u* at, Orb32s code) {
    store(reinterpret_cast<Orb16s*>(at), wrap16s(code));
    at[2] = wrap8u(code >> 16);
  }
};

namespace plain {

// The ends of the range are the ends of the integers, and what is not a number is 0.
template <class Code>
inline Orb32s codeOf(Orb32f sample) {
  if (__builtin_isnan(sample)) return 0;
  return roundToEven(limit(sample, -1.0f, 1.0f) * Code::kScale - 0.5);
}

template <class Code>
inline Orb32f sampleOf(Orb32s code) {
  return static_cast<Orb32f>(code * Code::kStep + Code::kHalfStep);
}

// One channel, whose integers are `step` bytes apart.
template <class Code>
inline void orbJoinScaled(const Orb32f* src, ptrdiff_t len, Orb8u* dst, ptrdiff_t step) {
  for (ptrdiff_t i = 0; i < len; ++i) Code::write(dst + i * step, codeOf<Code>(load(src + i)));
}

template <class Code>
inline void orbSplitScaled(const Orb8u* src, ptrdiff_t step, ptrdiff_t len, Orb32f* dst) {
  for (ptrdiff_t i = 0; i < len; ++i) store(dst + i, sampleOf<Code>(Code::read(src + i * step)));
}

// ---- As they are

// All channels take turns, a stretch of samples each, so that the interleaved buffer stays in the
// cache.
constexpr ptrdiff_t kSampleStretch = 256;

template <class T>
inline void interleavePair(const T* left, const T* right, ptrdiff_t len, T* dst) {
  for (ptrdiff_t i = 0; i < len; ++i) {
    store(dst + 2 * i, load(left + i));
    store(dst + 2 * i + 1, load(right + i));
  }
}

template <class T>
inline void deinterleavePair(const T* src, ptrdiff_t len, T* left, T* right) {
  for (ptrdiff_t i = 0; i < len; ++i) {
    store(left + i, load(src + 2 * i));
    store(right + i, load(src + 2 * i + 1));
  }
}

// Calls `body` with the first sample and the number of samples of each stretch.
template <class Body>
inline void forEachStretch(ptrdiff_t len, Body body) {
  for (ptrdiff_t first = 0; first < len; first += kSampleStretch) {
    body(first, len - first < kSampleStretch ? len - first : kSampleStretch);
  }
}

template <class T>
inline void interleaveAny(T* const* src, Orb32s channels, ptrdiff_t len, T* dst) {
  forEachStretch(len, [&](ptrdiff_t first, ptrdiff_t count) {
    for (Orb32s c = 0; c < channels; ++c) {
      const T* const from = load(src + c) + first;
      T* const to = dst + first * channels + c;
      for (ptrdiff_t i = 0; i < count; ++i) store(to + i * channels, load(from + i));
    }
  });
}

template <class T>
inline void deinterleaveAny(const T* src, Orb32s channels, ptrdiff_t len, T* const* dst) {
  forEachStretch(len, [&](ptrdiff_t first, ptrdiff_t count) {
    for (Orb32s c = 0; c < channels; ++c) {
      const T* const from = src + first * channels + c;
      T* const to = load(dst + c) + first;
      for (ptrdiff_t i = 0; i < count; ++i) store(to + i, load(from + i * channels));
    }
  });
}

template <class T>
inline void orbInterleave(T* const* src, Orb32s channels, ptrdiff_t len, T* dst) {
  if (channels == 1) {
    __builtin_memcpy(dst, load(src), static_cast<size_t>(len) * sizeof(T));
  } else if (channels == 2) {
    interleavePair(load(src), load(src + 1), len, dst);
  } else {
    interleaveAny(src, channels, len, dst);
  }
}

template <class T>
inline void orbDeinterleave(const T* src, Orb32s channels, ptrdiff_t len, T* const* dst) {
  if (channels == 1) {
    __builtin_memcpy(load(dst), src, static_cast<size_t>(len) * sizeof(T));
  } else if (channels == 2) {
    deinterleavePair(src, len, load(dst), load(dst + 1));
  } else {
    deinterleaveAny(src, channels, len, dst);
  }
}

}  // namespace plain
}  // namespace orb::ORB_BUILD

#endif
