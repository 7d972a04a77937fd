// Progressive Huffman block coding (ITU-T T.81 annex G): one block of one scan.
#ifndef ORB_JPEG_PX_HUFFMAN_PROGRESSIVE_H
#define ORB_JPEG_PX_HUFFMAN_PROGRESSIVE_H

#include "jpeg/px/huffman_blocks.h"
#include "jpeg/px/huffman_output.h"

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
static_assert(kRoomForCorrectionBits % 8 == 0, "putEach reads no byte behind them");

// ---- Encoding and counting
//
// Both are one walk through the symbols of a block with the values behind them, and differ in the
// sink that it hands them to: sink.put(symbol, value), and sink.putEach(bits, count) for correction
// bits. It stops at the first status other than orbStsNoErr.

template <class Output>
struct ProgressiveEncoder {
  const OrbiEncodeHuffmanSpec& table;
  Output out;
  static constexpr Orb32s kMostBitsAC = 11;
  static constexpr OrbStatus kNoBits = orbStsJpegHuffTableErr;  // a value of no bits is a fault

  [[gnu::always_inline]] OrbStatus put(Orb32s symbol, Magnitude value) {
    return out.put(codeOf(table, symbol), value);
  }
  [[gnu::always_inline]] OrbStatus putEach(const Orb8u* bits, Orb32s count) {
    return out.putEach(bits, count);
  }
};

struct ProgressiveCounter {
  Orb32s* statistics;
  static constexpr Orb32s kMostBitsAC = 10;
  static constexpr OrbStatus kNoBits = orbStsNoErr;

  [[gnu::always_inline]] OrbStatus put(Orb32s symbol, Magnitude) {
    store(statistics + symbol, load(statistics + symbol) + 1);
    return orbStsNoErr;
  }
  OrbStatus putEach(const Orb8u*, Orb32s) { return orbStsNoErr; }
};

template <class Sink>
OrbStatus orbCodeDCFirst(const Orb16s* block, Orb32s shift, Orb16s* lastDC, Sink& sink) {
  const Magnitude value = nextDifference(wrap16s(load(block) >> shift), lastDC);
  return value.category > 11 ? orbStsJpegBitStreamErr : sink.put(value.category, value);
}

// The symbol of an end-of-band run of so many bits below the highest, and those bits.
template <class Sink>
[[gnu::always_inline]] inline OrbStatus putRun(Orb32s category, Orb32s run, Sink& sink) {
  return sink.put(category << 4, {category, lowBits(static_cast<Orb32u>(run), category)});
}

// The pending end-of-band run. It stays pending, or what is left of it does, if this fails.
template <class Sink>
[[gnu::always_inline]] inline OrbStatus orbJpegEmitEobRun(OrbiEncodeHuffmanState& state,
                                                          Sink& sink) {
  if (state.eobRun == 0) return orbStsNoErr;
  OrbStatus status = orbStsNoErr;
  if (state.eobRun == 1) {
    status = sink.put(kEndOfBlock, {});
  } else {
    if (state.eobRun > kLongestRun) {
      status = putRun(14, state.eobRun, sink);
      if (status != orbStsNoErr) return status;
      state.eobRun -= kLongestRun;
    }
    // A negative run, of a damaged state, is too long as well.
    if (static_cast<Orb32u>(state.eobRun) > kLongestRun) return orbStsJpegBitStreamErr;
    const Orb32s category = orbJpegCategory(static_cast<Orb32u>(state.eobRun)) - 1;
    status = putRun(category, state.eobRun, sink);
    // Of a run above 32767 there may be 1 left.
    if (status == orbStsNoErr && category == 0) status = Sink::kNoBits;
  }
  if (status == orbStsNoErr) state.eobRun = 0;
  return status;
}

// The pending run and the correction bits of its blocks.
template <class Sink>
[[gnu::always_inline]] inline OrbStatus orbEmitPending(OrbiEncodeHuffmanState& state, Sink& sink) {
  OrbStatus status = orbJpegEmitEobRun(state, sink);
  if (status != orbStsNoErr) return status;
  status =
      sink.putEach(state.correctionBits, limit(state.correctionCount, 0, kRoomForCorrectionBits));
  if (status == orbStsNoErr) state.correctionCount = 0;
  return status;
}

// The coefficients of the band whose magnitude is `1 << shift` or more.
inline uint64_t codedSet(const Orb16s* block, Band band) {
  const Orb16u most = wrap16u((1 << band.shift) - 1);
  return zigzagSet(block, band.first, band.last,
                   [=](Orb16s value) { return wrap16u(value + most) > wrap16u(2 * most); });
}

// A coefficient of 16 bits without its sign and its low bits.
inline Orb32s shiftedMagnitude(Orb16s value, Orb32s shift) {
  return static_cast<Orb16u>(value < 0 ? -value : value) >> shift;
}

template <class Sink>
[[gnu::always_inline]] inline OrbStatus orbCodeACFirst(const Orb16s* block, Band band,
                                                       OrbiEncodeHuffmanState& state, Sink& sink) {
  Orb32s previous = band.first - 1;
  for (uint64_t rest = codedSet(block, band); rest != 0; rest &= rest - 1) {
    const Orb32s k = lowestBit(rest);
    Orb32s run = k - previous - 1;
    previous = k;
    OrbStatus status = orbJpegEmitEobRun(state, sink);
    if (status != orbStsNoErr) return status;
    for (; run > 15; run -= 16) {
      status = sink.put(kZeroRunOf16, {});
      if (status != orbStsNoErr) return status;
    }
    const Orb16s coefficient = load(block + orbZigzagNatural[k]);
    const Orb32s magnitude = shiftedMagnitude(coefficient, band.shift);
    const Magnitude value = magnitudeOf(coefficient < 0 ? -magnitude : magnitude);
    if (value.category > Sink::kMostBitsAC) return orbStsJpegBitStreamErr;
    status = sink.put(run * 16 + value.category, value);
    if (status != orbStsNoErr) return status;
  }
  if (previous == band.last) return orbStsNoErr;
  state.eobRun += 1;
  return state.eobRun == kLongestRun ? orbJpegEmitEobRun(state, sink) : orbStsNoErr;
}

// The coefficients of a band that are coded, in order.
struct CodedCoefficients {
  Orb8u position[63];
  Orb8u lowBit[63 + kBytesBehindEach];  // of the shifted magnitude: the correction bit
  Orb32s count = 0;
  Orb8u newOnes[63];  // the numbers of those that no earlier scan has coded
  Orb32s newCount = 0;

  CodedCoefficients(const Orb16s* block, Band band) {
    for (uint64_t rest = codedSet(block, band); rest != 0; rest &= rest - 1) {
      const Orb32s k = lowestBit(rest);
      const Orb32s magnitude = shiftedMagnitude(load(block + orbZigzagNatural[k]), band.shift);
      // Both lists are written in any case: which one counts is as good as random.
      newOnes[newCount] = wrap8u(count);
      newCount += magnitude == 1;
      position[count] = wrap8u(k);
      lowBit[count++] = magnitude & 1;
    }
  }
};

// A symbol behind what is pending, and correction bits behind the symbol.
template <class Sink>
[[gnu::always_inline]] inline OrbStatus putRefinement(OrbiEncodeHuffmanState& state, Sink& sink,
                                                      Orb32s symbol, Magnitude value,
                                                      const Orb8u* bits, Orb32s count) {
  OrbStatus status = orbEmitPending(state, sink);
  if (status == orbStsNoErr) status = sink.put(symbol, value);
  if (status == orbStsNoErr) status = sink.putEach(bits, count);
  return status;
}

template <class Sink>
[[gnu::always_inline]] inline OrbStatus orbCodeACRefine(const Orb16s* block, Band band,
                                                        OrbiEncodeHuffmanState& state, Sink& sink) {
  const CodedCoefficients coded(block, band);
  // What the symbols so far stand for: coefficients, with the correction bits of those that are not
  // new, and zeros.
  Orb32s done = 0;
  Orb32s zerosDone = 0;
  const auto zerosBefore = [&](Orb32s i) { return coded.position[i] - band.first - i; };
  for (Orb32s n = 0; n < coded.newCount; ++n) {
    const Orb32s j = coded.newOnes[n];
    if (zerosBefore(j) - zerosDone > 15) {
      // A run of 16 zeros takes along the correction bits up to the next coefficient.
      for (Orb32s i = done; i <= j; ++i) {
        for (; zerosBefore(i) - zerosDone > 15; zerosDone += 16) {
          const OrbStatus status =
              putRefinement(state, sink, kZeroRunOf16, {}, coded.lowBit + done, i - done);
          if (status != orbStsNoErr) return status;
          done = i;
        }
      }
    }
    const Orb32s run = zerosBefore(j) - zerosDone;
    const bool isPositive = load(block + orbZigzagNatural[coded.position[j]]) >= 0;
    const OrbStatus status =
        putRefinement(state, sink, run * 16 + 1, {1, isPositive}, coded.lowBit + done, j - done);
    if (status != orbStsNoErr) return status;
    done = j + 1;
    zerosDone += run;
  }
  const Orb32s zeros = band.last - band.first + 1 - coded.count;
  if (zeros == zerosDone && coded.count == done) return orbStsNoErr;
  state.eobRun += 1;
  Orb32s held = limit(state.correctionCount, 0, kRoomForCorrectionBits - 63);
  while (done < coded.count) state.correctionBits[held++] = coded.lowBit[done++];
  state.correctionCount = held;
  if (state.eobRun != kLongestRun && held <= kMostCorrectionBits) return orbStsNoErr;
  return orbEmitPending(state, sink);
}

// What a call puts at most: codes and values of 16 bits each for a whole block, and the bits held.
constexpr Orb32s kMostBytesOfBand = (64 * 32 + kRoomForCorrectionBits) / 8;

// Encodes by walk(sink), without a test on the way if there is room for whatever it puts.
template <class Walk>
inline OrbStatus encodeProgressive(BitWriter& writer, const OrbiEncodeHuffmanSpec& table,
                                   Walk walk) {
  if (!hasRoomFor(writer, kMostBytesOfBand)) {
    ProgressiveEncoder<BoundedOutput> encoder = {table, {writer}};
    return walk(encoder);
  }
  Orb8u bytes[kMostBytesOfBand + kBytesBehindBits];
  ProgressiveEncoder<StrictOutput> encoder = {table, {gatherBits(writer, bytes)}};
  const OrbStatus status = walk(encoder);
  putGathered(writer, encoder.out.bits, bytes);
  return status;
}

inline OrbStatus orbEncodeDCFirst(const Orb16s* block, Orb32s shift, Orb16s* lastDC,
                                  const OrbiEncodeHuffmanSpec& table, BitWriter& writer) {
  ProgressiveEncoder<BoundedOutput> encoder = {table, {writer}};
  return orbCodeDCFirst(block, shift, lastDC, encoder);
}

inline OrbStatus orbEncodeACFirst(const Orb16s* block, Band band,
                                  const OrbiEncodeHuffmanSpec& table, OrbiEncodeHuffmanState& state,
                                  BitWriter& writer) {
  return encodeProgressive(
      writer, table, [&](auto& encoder) { return orbCodeACFirst(block, band, state, encoder); });
}

inline OrbStatus orbEncodeACRefine(const Orb16s* block, Band band,
                                   const OrbiEncodeHuffmanSpec& table,
                                   OrbiEncodeHuffmanState& state, BitWriter& writer) {
  return encodeProgressive(
      writer, table, [&](auto& encoder) { return orbCodeACRefine(block, band, state, encoder); });
}

inline OrbStatus orbEncodePending(const OrbiEncodeHuffmanSpec& table, OrbiEncodeHuffmanState& state,
                                  BitWriter& writer) {
  ProgressiveEncoder<BoundedOutput> encoder = {table, {writer}};
  return orbEmitPending(state, encoder);
}

// ---- Decoding

[[gnu::always_inline]] inline OrbStatus orbDecodeDCFirst(BitReader& reader, Orb16s* block,
                                                         Orb16s* lastDC, Orb32s shift,
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

[[gnu::always_inline]] inline OrbStatus orbDecodeDCRefine(BitReader& reader, Orb16s* block,
                                                          Orb32s shift) {
  Orb32u bit = 0;
  const OrbStatus status = fetchBits(reader, 1, bit);
  if (bit != 0) store(block, wrap16s(load(block) | 1 << shift));
  return status;
}

// Fetches the rest of an end-of-band run of at least `1 << r` blocks.
[[gnu::always_inline]] inline OrbStatus fetchEobRun(BitReader& reader, Orb32s r, Orb32s& run) {
  Orb32u bits = 0;
  const OrbStatus status = r == 0 ? orbStsNoErr : fetchBits(reader, r, bits);
  if (status == orbStsNoErr) run = (1 << r) + static_cast<Orb32s>(bits);
  return status;
}

// Called with no end-of-band run. `run` becomes that behind this block.
[[gnu::always_inline]] inline OrbStatus orbDecodeACFirst(BitReader& reader, Orb16s* block,
                                                         Band band,
                                                         const OrbiDecodeHuffmanSpec& table,
                                                         Orb32s& run) {
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

// Corrects a set of coefficients that are not 0.
[[gnu::always_inline]] inline OrbStatus orbCorrect(BitReader& reader, Orb16s* block, uint64_t set,
                                                   Orb32s shift) {
  for (; set != 0; set &= set - 1) {
    Orb32u bit = 0;
    const OrbStatus status = fetchBits(reader, 1, bit);
    if (status != orbStsNoErr) return status;
    Orb16s* const coefficient = block + orbZigzagNatural[lowestBit(set)];
    const Orb32s value = load(coefficient);
    const Orb32s sign = value >> 31;
    const Orb32s step = (static_cast<Orb32s>(bit) & ~(value >> shift)) << shift;
    store(coefficient, wrap16s(value + ((step ^ sign) - sign)));
  }
  return orbStsNoErr;
}

[[gnu::always_inline]] inline OrbStatus orbDecodeACRefine(BitReader& reader, Orb16s* block,
                                                          Band band,
                                                          const OrbiDecodeHuffmanSpec& table,
                                                          Orb32s& run) {
  // What the band has from position `k` on.
  Orb32s k = band.first;
  uint64_t nonzeros =
      zigzagSet(block, band.first, band.last, [](Orb16s value) { return value != 0; });
  uint64_t zeros = bandSet(band.first, band.last) & ~nonzeros;
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
    if (status != orbStsNoErr) return status;
    // On the way to the zero behind `r` zeros, or to the end of the band, coefficients are
    // corrected.
    for (Orb32s i = 0; i < r; ++i) zeros &= zeros - 1;
    const uint64_t passed = ~zeros & (zeros - 1);  // all if there is no zero
    status = orbCorrect(reader, block, nonzeros & passed, band.shift);
    if (status != orbStsNoErr) return status;
    nonzeros &= ~passed;
    // Behind the band, if it has no such zero: at position 64 that is the last coefficient.
    k = zeros != 0 ? lowestBit(zeros) : band.last + 1;
    if (isNew) {
      store(block + orbZigzagNatural[k], wrap16s((isPositive ? 1 : -1) * (1 << band.shift)));
    }
    zeros &= zeros - 1;
    ++k;
  }
  if (run < 1) return orbStsNoErr;
  const OrbStatus status = orbCorrect(reader, block, nonzeros, band.shift);
  if (status == orbStsNoErr) --run;
  return status;
}

}  // namespace orb::ORB_BUILD::plain

#endif
