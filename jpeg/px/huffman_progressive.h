// Progressive Huffman block coding (ITU-T T.81 annex G): one block of one scan.
#ifndef ORB_JPEG_PX_HUFFMAN_PROGRESSIVE_H
#define ORB_JPEG_PX_HUFFMAN_PROGRESSIVE_H

#include "jpeg/px/huffman_blocks.h"

namespace orb::ORB_BUILD::plain {

// The AC coefficients of a scan: positions in zigzag order, and the number of low bits left out.
struct Band {
  Orb32s first;
  Orb32s last;
  Orb32s shift;
};

constexpr Orb32s kLongestRun = 32767;  // of blocks that end with their band
constexpr Orb32s kMostCorrectionBits = 937;
constexpr Orb32s kRoomForCorrectionBits = sizeof(OrbiEncodeHuffmanState::correctionBits);

// ---- Encoding and counting
//
// Both are one walk through the symbols of a block with the bits behind them, and differ in the
// sink that it hands them to: sink.symbol(symbol), sink.bits(value, length),
// sink.correctionBits(bits, count). It stops at the first status other than orbStsNoErr.

struct ProgressiveWriter {
  BitWriter& writer;
  const OrbiEncodeHuffmanSpec* table;  // null where there are no symbols
  static constexpr Orb32s kMostBitsAC = 11;

  OrbStatus symbol(Orb32s symbol) {
    const HuffmanCode code = codeOf(*table, symbol);
    return orbJpegPutBits(writer, code.bits, code.length);
  }
  OrbStatus bits(Orb32u value, Orb32s length) { return orbJpegPutBits(writer, value, length); }
  OrbStatus correctionBits(const Orb8u* bits, Orb32s count) {
    for (Orb32s i = 0; i < count; ++i) {
      const OrbStatus status = orbJpegPutBits(writer, bits[i], 1);
      if (status != orbStsNoErr) return status;
    }
    return orbStsNoErr;
  }
};

struct ProgressiveCounter {
  Orb32s* statistics;
  static constexpr Orb32s kMostBitsAC = 10;

  OrbStatus symbol(Orb32s symbol) {
    store(statistics + symbol, load(statistics + symbol) + 1);
    return orbStsNoErr;
  }
  OrbStatus bits(Orb32u, Orb32s) { return orbStsNoErr; }
  OrbStatus correctionBits(const Orb8u*, Orb32s) { return orbStsNoErr; }
};

template <class Sink>
OrbStatus orbCodeDCFirst(const Orb16s* block, Orb32s shift, Orb16s* lastDC, Sink sink) {
  const Magnitude value = nextDifference(wrap16s(load(block) >> shift), lastDC);
  if (value.category > 11) return orbStsJpegBitStreamErr;
  const OrbStatus status = sink.symbol(value.category);
  if (status != orbStsNoErr || value.category == 0) return status;
  return sink.bits(value.bits, value.category);
}

// The pending end-of-band run. It stays pending, or what is left of it does, if this fails.
template <class Sink>
OrbStatus orbJpegEmitEobRun(OrbiEncodeHuffmanState& state, Sink& sink) {
  if (state.eobRun == 0) return orbStsNoErr;
  OrbStatus status = orbStsNoErr;
  if (state.eobRun == 1) {
    status = sink.symbol(kEndOfBlock);
  } else {
    if (state.eobRun > kLongestRun) {
      status = sink.symbol(14 << 4);
      if (status == orbStsNoErr) status = sink.bits(state.eobRun, 14);
      if (status != orbStsNoErr) return status;
      state.eobRun -= kLongestRun;
    }
    // A negative run, of a damaged state, is too long as well.
    if (static_cast<Orb32u>(state.eobRun) > kLongestRun) return orbStsJpegBitStreamErr;
    const Orb32s n = orbJpegCategory(state.eobRun) - 1;
    status = sink.symbol(n << 4);
    if (status == orbStsNoErr) status = sink.bits(state.eobRun, n);
  }
  if (status == orbStsNoErr) state.eobRun = 0;
  return status;
}

// The pending run and the correction bits of its blocks.
template <class Sink>
OrbStatus orbEmitPending(OrbiEncodeHuffmanState& state, Sink& sink) {
  OrbStatus status = orbJpegEmitEobRun(state, sink);
  if (status != orbStsNoErr) return status;
  status = sink.correctionBits(state.correctionBits,
                               limit(state.correctionCount, 0, kRoomForCorrectionBits));
  if (status == orbStsNoErr) state.correctionCount = 0;
  return status;
}

// The positions of a band, as a set.
inline uint64_t positionsOf(Band band) {
  return ~uint64_t{0} >> (63 - band.last) & ~uint64_t{0} << band.first;
}

// A coefficient of 16 bits without its sign and its low bits.
inline Orb32s shiftedMagnitude(Orb16s value, Orb32s shift) {
  return static_cast<Orb16u>(value < 0 ? -value : value) >> shift;
}

template <class Sink>
OrbStatus orbCodeACFirst(const Orb16s* block, Band band, OrbiEncodeHuffmanState& state, Sink sink) {
  const uint64_t coded =
      zigzagSet(block, [=](Orb16s value) { return shiftedMagnitude(value, band.shift) != 0; });
  Orb32s previous = band.first - 1;
  for (uint64_t rest = coded & positionsOf(band); rest != 0; rest &= rest - 1) {
    const Orb32s k = lowestBit(rest);
    Orb32s run = k - previous - 1;
    previous = k;
    OrbStatus status = orbJpegEmitEobRun(state, sink);
    if (status != orbStsNoErr) return status;
    for (; run > 15; run -= 16) {
      status = sink.symbol(kZeroRunOf16);
      if (status != orbStsNoErr) return status;
    }
    const Orb16s coefficient = load(block + orbZigzagNatural[k]);
    const Orb32s magnitude = shiftedMagnitude(coefficient, band.shift);
    const Magnitude value = magnitudeOf(coefficient < 0 ? -magnitude : magnitude);
    if (value.category > Sink::kMostBitsAC) return orbStsJpegBitStreamErr;
    status = sink.symbol(run * 16 + value.category);
    if (status == orbStsNoErr) status = sink.bits(value.bits, value.category);
    if (status != orbStsNoErr) return status;
  }
  if (previous == band.last) return orbStsNoErr;
  state.eobRun += 1;
  return state.eobRun == kLongestRun ? orbJpegEmitEobRun(state, sink) : orbStsNoErr;
}

template <class Sink>
OrbStatus orbCodeACRefine(const Orb16s* block, Band band, OrbiEncodeHuffmanState& state,
                          Sink sink) {
  const auto magnitudeAt = [=](Orb32s k) {
    return shiftedMagnitude(load(block + orbZigzagNatural[k]), band.shift);
  };
  const uint64_t positions = positionsOf(band);
  const uint64_t nonzero = positions & zigzagSet(block, [=](Orb16s value) {
                             return shiftedMagnitude(value, band.shift) != 0;
                           });
  const uint64_t fresh = positions & zigzagSet(block, [=](Orb16s value) {
                           return shiftedMagnitude(value, band.shift) == 1;
                         });
  // The correction bits of this block since its last symbol.
  Orb8u corrections[63];
  Orb32s count = 0;
  Orb32s run = 0;
  Orb32s previous = band.first - 1;
  for (uint64_t rest = nonzero; rest != 0; rest &= rest - 1) {
    const Orb32s k = lowestBit(rest);
    run += k - previous - 1;
    previous = k;
    // Runs of 16 zeros go out only in front of a new coefficient; behind the last one they belong
    // to the end of the band.
    for (; run > 15 && fresh >> k != 0; run -= 16) {
      OrbStatus status = orbEmitPending(state, sink);
      if (status == orbStsNoErr) status = sink.symbol(kZeroRunOf16);
      if (status == orbStsNoErr) status = sink.correctionBits(corrections, count);
      if (status != orbStsNoErr) return status;
      count = 0;
    }
    if ((fresh >> k & 1) == 0) {
      corrections[count++] = magnitudeAt(k) & 1;
      continue;
    }
    OrbStatus status = orbEmitPending(state, sink);
    if (status == orbStsNoErr) status = sink.symbol(run * 16 + 1);
    if (status == orbStsNoErr) status = sink.bits(load(block + orbZigzagNatural[k]) >= 0, 1);
    if (status == orbStsNoErr) status = sink.correctionBits(corrections, count);
    if (status != orbStsNoErr) return status;
    count = 0;
    run = 0;
  }
  if (previous == band.last && run == 0 && count == 0) return orbStsNoErr;
  state.eobRun += 1;
  Orb32s held = limit<Orb32s>(state.correctionCount, 0, kRoomForCorrectionBits - 63);
  for (Orb32s i = 0; i < count; ++i) state.correctionBits[held++] = corrections[i];
  state.correctionCount = held;
  if (state.eobRun != kLongestRun && held <= kMostCorrectionBits) return orbStsNoErr;
  return orbEmitPending(state, sink);
}

// ---- Decoding

inline OrbStatus orbDecodeDCFirst(BitReader& reader, Orb16s* block, Orb16s* lastDC, Orb32s shift,
                                  const OrbiDecodeHuffmanSpec& table) {
  Orb32s symbol = 0;
  Orb32s difference = 0;
  OrbStatus status = orbJpegDecodeSymbol(reader, table, symbol);
  if (status == orbStsNoErr && symbol != 0) status = fetchValue(reader, symbol & 15, difference);
  if (status != orbStsNoErr) return status;
  const Orb16s dc = wrap16s(load(lastDC) + difference);
  store(lastDC, dc);
  store(block, wrap16s(dc << shift));
  return orbStsNoErr;
}

inline OrbStatus orbDecodeDCRefine(BitReader& reader, Orb16s* block, Orb32s shift) {
  Orb32u bit = 0;
  const OrbStatus status = fetchBits(reader, 1, bit);
  if (bit != 0) store(block, wrap16s(load(block) | 1 << shift));
  return status;
}

// Fetches the rest of an end-of-band run of at least `1 << r` blocks.
inline OrbStatus fetchEobRun(BitReader& reader, Orb32s r, Orb32s& run) {
  Orb32u bits = 0;
  const OrbStatus status = r == 0 ? orbStsNoErr : fetchBits(reader, r, bits);
  if (status == orbStsNoErr) run = (1 << r) + static_cast<Orb32s>(bits);
  return status;
}

// Called with no end-of-band run. `run` becomes that behind this block.
inline OrbStatus orbDecodeACFirst(BitReader& reader, Orb16s* block, Band band,
                                  const OrbiDecodeHuffmanSpec& table, Orb32s& run) {
  Orb32s k = band.first;
  do {
    Orb32s symbol = 0;
    OrbStatus status = orbJpegDecodeSymbol(reader, table, symbol);
    if (status != orbStsNoErr) return status;
    const Orb32s r = symbol >> 4;
    const Orb32s s = symbol & 15;
    if (s != 0) {
      k += r;
      Orb32s value = 0;
      status = fetchValue(reader, s, value);
      if (status != orbStsNoErr) return status;
      if (k > 71) return orbStsErr;
      store(block + orbZigzagNatural[k], wrap16s(value << band.shift));
      ++k;
    } else if (r == 15) {
      k += 16;
    } else {
      status = fetchEobRun(reader, r, run);
      if (status == orbStsNoErr) --run;
      return status;
    }
  } while (k <= band.last);
  return orbStsNoErr;
}

// Corrects a coefficient that is not 0.
inline OrbStatus orbRefine(BitReader& reader, Orb16s* coefficient, Orb32s shift) {
  Orb32u bit = 0;
  const OrbStatus status = fetchBits(reader, 1, bit);
  if (status != orbStsNoErr || bit == 0) return status;
  const Orb16s value = load(coefficient);
  const Orb32s one = 1 << shift;
  if ((value & one) == 0) store(coefficient, wrap16s(value < 0 ? value - one : value + one));
  return orbStsNoErr;
}

// Goes on from position `k`, correcting what is not 0, to the zero behind `zeros` zeros or to the
// end of the band.
inline OrbStatus orbRefineUpTo(BitReader& reader, Orb16s* block, Band band, Orb32s zeros,
                               Orb32s& k) {
  for (; k <= band.last; ++k) {
    Orb16s* const coefficient = block + orbZigzagNatural[k];
    if (load(coefficient) != 0) {
      const OrbStatus status = orbRefine(reader, coefficient, band.shift);
      if (status != orbStsNoErr) return status;
    } else if (--zeros < 0) {
      break;
    }
  }
  return orbStsNoErr;
}

inline OrbStatus orbDecodeACRefine(BitReader& reader, Orb16s* block, Band band,
                                   const OrbiDecodeHuffmanSpec& table, Orb32s& run) {
  Orb32s k = band.first;
  while (run == 0 && k <= band.last) {
    Orb32s symbol = 0;
    OrbStatus status = orbJpegDecodeSymbol(reader, table, symbol);
    if (status != orbStsNoErr) return status;
    const Orb32s r = symbol >> 4;
    const bool isNew = (symbol & 15) != 0;
    if (!isNew && r < 15) {
      status = fetchEobRun(reader, r, run);
      if (status != orbStsNoErr) return status;
      break;
    }
    Orb32u isPositive = 0;
    if (isNew) status = fetchBits(reader, 1, isPositive);
    if (status == orbStsNoErr) status = orbRefineUpTo(reader, block, band, r, k);
    if (status != orbStsNoErr) return status;
    // Behind the band, if it has no place for it: at position 64 that is the last coefficient.
    if (isNew) {
      store(block + orbZigzagNatural[k], wrap16s((isPositive ? 1 : -1) * (1 << band.shift)));
    }
    ++k;
  }
  if (run < 1) return orbStsNoErr;
  const OrbStatus status = orbRefineUpTo(reader, block, band, 64, k);
  if (status == orbStsNoErr) --run;
  return status;
}

}  // namespace orb::ORB_BUILD::plain

#endif
