// Fixed-length coding of the low bits that the run-level code leaves out (flexbits of ITU-T T.832).
#ifndef ORB_JPEGXR_PX_FIXED_LENGTH_H
#define ORB_JPEGXR_PX_FIXED_LENGTH_H

#include "jpegxr/px/bit_stream.h"
#include "jpegxr/tables/scan.h"

namespace orb::ORB_BUILD::plain {

template <class T>
inline T* sampleAt(T* block, Orb32s step, Orb32s index) {
  const OrbScanPlace place = orbScanPlaces[index];
  return rowAt(block, step, place.y) + place.x;
}

// Values gather in a word, so that the stream is seldom touched.
struct FlexWriter {
  BitWriter stream;
  Orb32u word = 0;
  Orb32u length = 0;

  void send() {
    const Orb32u low = length > 16 ? 16 : length;
    putBits(stream, word >> low, length - low);
    putBits(stream, word & ((1u << low) - 1), low);
    word = length = 0;
  }
  // At most 16 bits.
  void put(Orb32u value, Orb32u n) {
    if (length + n > 32) send();
    word = word << n | (value & ((1u << n) - 1));
    length += n;
  }
};

inline void orbEncodeResidual(FlexWriter& writer, const Orb32s* residual, Orb32u bits) {
  for (const Orb8u index : orbFlexOrder.entry) {
    const Orb32s value = load(residual + index);
    writer.put(static_cast<Orb32u>(value >> 1), bits + (value & 1));
  }
}

template <class T>
inline void orbEncodeSamples(FlexWriter& writer, const T* src, Orb32s step, Orb32u bits,
                             Orb32u trimBits) {
  for (const Orb8u index : orbFlexOrder.entry) {
    const Orb32s sample = load(sampleAt(src, step, index));
    const Orb32u value = magnitudeOf(sample) >> trimBits;
    if (value != 0) {
      writer.put(value << 1 | (sample < 0), bits + 1);
    } else {
      writer.put(0, bits);
    }
  }
}

// A coefficient that is there grows away from zero; for one that is not, a sign follows a value.
template <class T>
inline void orbDecodeFlex(BitReader& reader, T* dst, Orb32s step, Orb32u bits, Orb32s scale,
                          bool refine) {
  for (const Orb8u index : orbFlexOrder.entry) {
    T* at = sampleAt(dst, step, index);
    const Orb32u next = peekBits(reader, bits + 1);
    const Orb32s value = static_cast<Orb32s>(next >> 1) * scale;
    if (next >> 1 == 0) {
      skipBits(reader, bits);
      continue;
    }
    const Orb32s sample = refine ? load(at) : 0;
    if (sample != 0) {
      store(at, static_cast<T>(sample + withSign(value, sample >> 31)));
      skipBits(reader, bits);
    } else {
      store(at, static_cast<T>(withSign(value, -static_cast<Orb32s>(next & 1))));
      skipBits(reader, bits + 1);
    }
  }
}

}  // namespace orb::ORB_BUILD::plain

#endif
