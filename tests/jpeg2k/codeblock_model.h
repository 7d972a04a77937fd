// Code-block coding as ITU-T T.800 writes it down in annexes C and D, slowly: one flag to a number,
// contexts by counting neighbours, the MQ coder shift by shift. The judge of the library's coders.
#ifndef ORB_TESTS_JPEG2K_CODEBLOCK_MODEL_H
#define ORB_TESTS_JPEG2K_CODEBLOCK_MODEL_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "orb90legacy/jpeg2k.h"

namespace orbtest {
inline namespace jpeg2k {

// ---- Contexts with the numbers of T.800

constexpr int kSignContext = 9;
constexpr int kRefinementContext = 14;
constexpr int kRunLengthContext = 17;
constexpr int kUniformContext = 18;
constexpr int kContexts = 19;

// Of a probability state's row in table C.2.
struct MqRow {
  uint32_t qe;
  int nmps, nlps, switches;
};
inline const MqRow& mqRow(int index) {
  static const MqRow rows[47] = {
      {0x5601, 1, 1, 1},   {0x3401, 2, 6, 0},   {0x1801, 3, 9, 0},   {0x0AC1, 4, 12, 0},
      {0x0521, 5, 29, 0},  {0x0221, 38, 33, 0}, {0x5601, 7, 6, 1},   {0x5401, 8, 14, 0},
      {0x4801, 9, 14, 0},  {0x3801, 10, 14, 0}, {0x3001, 11, 17, 0}, {0x2401, 12, 18, 0},
      {0x1C01, 13, 20, 0}, {0x1601, 29, 21, 0}, {0x5601, 15, 14, 1}, {0x5401, 16, 14, 0},
      {0x5101, 17, 15, 0}, {0x4801, 18, 16, 0}, {0x3801, 19, 17, 0}, {0x3401, 20, 18, 0},
      {0x3001, 21, 19, 0}, {0x2801, 22, 19, 0}, {0x2401, 23, 20, 0}, {0x2201, 24, 21, 0},
      {0x1C01, 25, 22, 0}, {0x1801, 26, 23, 0}, {0x1601, 27, 24, 0}, {0x1401, 28, 25, 0},
      {0x1201, 29, 26, 0}, {0x1101, 30, 27, 0}, {0x0AC1, 31, 28, 0}, {0x09C1, 32, 29, 0},
      {0x08A1, 33, 30, 0}, {0x0521, 34, 31, 0}, {0x0441, 35, 32, 0}, {0x02A1, 36, 33, 0},
      {0x0221, 37, 34, 0}, {0x0141, 38, 35, 0}, {0x0111, 39, 36, 0}, {0x0085, 40, 37, 0},
      {0x0049, 41, 38, 0}, {0x0025, 42, 39, 0}, {0x0015, 43, 40, 0}, {0x0009, 44, 41, 0},
      {0x0005, 45, 42, 0}, {0x0001, 45, 43, 0}, {0x5601, 46, 46, 0},
  };
  return rows[index];
}

struct MqContext {
  int index = 0;
  int mps = 0;

  uint32_t qe() const { return mqRow(index).qe; }
  void nextOnMps() { index = mqRow(index).nmps; }
  void nextOnLps() {
    if (mqRow(index).switches) mps = 1 - mps;
    index = mqRow(index).nlps;
  }
};

// Table D.7.
inline std::vector<MqContext> startContexts() {
  std::vector<MqContext> contexts(kContexts);
  contexts[0].index = 4;
  contexts[kRunLengthContext].index = 3;
  contexts[kUniformContext].index = 46;
  return contexts;
}

// ---- The MQ encoder of C.2, flow chart by flow chart

struct MqEncoderModel {
  uint32_t a = 0x8000, c = 0;
  int ct = 12;
  std::vector<uint8_t> bytes{0};  // the last one is B; the first is in front of the code

  void encode(MqContext& context, int bit) {
    a -= context.qe();
    if (bit == context.mps) {
      if (a & 0x8000) {
        c += context.qe();
        return;
      }
      if (a < context.qe()) {
        a = context.qe();
      } else {
        c += context.qe();
      }
      context.nextOnMps();
    } else {
      if (a < context.qe()) {
        c += context.qe();
      } else {
        a = context.qe();
      }
      context.nextOnLps();
    }
    do {
      a <<= 1;
      c <<= 1;
      if (--ct == 0) byteOut();
    } while ((a & 0x8000) == 0);
  }

  void byteOut() {
    if (bytes.back() == 0xFF) return stuffed();
    if (c >= 0x8000000) {
      if (++bytes.back() == 0xFF) {
        c &= 0x7FFFFFF;
        return stuffed();
      }
    }
    bytes.push_back(static_cast<uint8_t>(c >> 19));
    c &= 0x7FFFF;
    ct = 8;
  }
  void stuffed() {
    bytes.push_back(static_cast<uint8_t>(c >> 20));
    c &= 0xFFFFF;
    ct = 7;
  }

  // What is certain: the bytes in front of B.
  int finished() const { return std::max(0, static_cast<int>(bytes.size()) - 2); }

  // Drops B, and gives the bytes of the code.
  std::vector<uint8_t> withoutLast() const {
    if (bytes.size() < 2) return {};
    return std::vector<uint8_t>(bytes.begin() + 1, bytes.end() - 1);
  }

  // FLUSH of C.2.9, with ones behind the bits that count.
  std::vector<uint8_t> flushFully() {
    const uint32_t end = c + a;
    c |= 0xFFFF;
    if (c >= end) c -= 0x8000;
    c <<= ct;
    byteOut();
    c = (c | 0x7FFF) << ct;
    byteOut();
    if (bytes.back() != 0xFF) bytes.push_back(0);
    return withoutLast();
  }

  // D.4.2.
  std::vector<uint8_t> flushPredictably() {
    int k = 11 - ct + 1;
    while (k > 0) {
      c <<= ct;
      ct = 0;
      byteOut();
      k -= ct;
    }
    if (bytes.back() != 0xFF) byteOut();
    return withoutLast();
  }

  // The lower end of the interval with all of its digits.
  std::vector<uint8_t> lowerEnd() {
    for (int i = 0; i < 5; ++i) {
      c <<= ct;
      byteOut();
    }
    return withoutLast();
  }
};

// ---- Two MQ decoders. Behind the segment both read bytes of 255.

class SegmentModel {
 public:
  explicit SegmentModel(std::vector<uint8_t> bytes) : bytes_(std::move(bytes)) {}

  uint32_t at(int position) const {
    return position < size() ? bytes_[static_cast<size_t>(position)] : 255;
  }
  int size() const { return static_cast<int>(bytes_.size()); }

 private:
  std::vector<uint8_t> bytes_;
};

// That of C.3, flow chart by flow chart.
struct MqStandardDecoder {
  SegmentModel segment;
  int bp = 0;
  uint32_t a = 0x8000, c;
  int ct = 0;

  explicit MqStandardDecoder(const std::vector<uint8_t>& bytes)
      : segment(bytes), c(segment.at(0) << 16) {
    byteIn();
    c <<= 7;
    ct -= 7;
  }
  int decode(MqContext& context) {
    const uint32_t qe = context.qe();
    a -= qe;
    if ((c >> 16) < qe) {
      const bool exchanged = a < qe;
      a = qe;
      return renormalised(context, exchanged);
    }
    c -= qe << 16;
    if (a & 0x8000) return context.mps;
    return renormalised(context, a >= qe);
  }

 private:
  void byteIn() {
    if (segment.at(bp) != 0xFF) {
      ++bp;
      c += segment.at(bp) << 8;
      ct = 8;
    } else if (segment.at(bp + 1) > 0x8F) {
      c += 0xFF00;
      ct = 8;
    } else {
      ++bp;
      c += segment.at(bp) << 9;
      ct = 7;
    }
  }
  int renormalised(MqContext& context, bool isMps) {
    const int bit = isMps ? context.mps : 1 - context.mps;
    if (isMps) {
      context.nextOnMps();
    } else {
      context.nextOnLps();
    }
    do {
      if (ct == 0) byteIn();
      a <<= 1;
      c <<= 1;
      --ct;
    } while ((a & 0x8000) == 0);
    return bit;
  }
};

// The one that also says what damaged segments decode to, and whether a segment has been ended in
// the predictable way: its code register holds the complement of the code (J.1).
struct MqDecoderModel {
  SegmentModel segment;
  int position = 0;
  uint32_t a = 0x8000, c;
  int ct = 0;
  bool foundMarker = false;

  explicit MqDecoderModel(const std::vector<uint8_t>& bytes)
      : segment(bytes), c((255 - segment.at(0)) << 16) {
    fetch();
    c <<= 7;
    ct -= 7;
  }
  int decode(MqContext& context) {
    const uint32_t qe = context.qe();
    const uint32_t t = a - qe;
    const bool inUpperPart = t <= c >> 16;
    if (!inUpperPart && (t & 0x8000)) {
      a = t;
      return context.mps;
    }
    const bool isMps = inUpperPart ? t < qe : t >= qe;
    const int bit = isMps ? context.mps : 1 - context.mps;
    if (isMps) {
      context.nextOnMps();
    } else {
      context.nextOnLps();
    }
    if (inUpperPart) c -= t << 16;
    a = inUpperPart ? qe : t;
    do {
      if (ct == 0) fetch();
      a <<= 1;
      c <<= 1;
      --ct;
    } while ((a & 0x8000) == 0);
    return bit;
  }

  bool endsWrongly() const {
    if (position < segment.size() && segment.at(position) != 255 && !foundMarker) return true;
    int bits = ct;
    if (ct == 0) {
      if (!foundMarker && segment.at(position + 1) < 144) return true;
      bits = 8;
    } else {
      if (!foundMarker) return true;
      if (ct == 1) return false;
    }
    return a - (0x8000u >> (bits - 1)) > c >> 16;
  }

 private:
  void fetch() {
    if (foundMarker) {
      ct = 8;
      return;
    }
    const uint32_t next = segment.at(position + 1);
    if (segment.at(position) != 255) {
      ++position;
      c += 0xFF00 - (next << 8);
      ct = 8;
    } else if (next > 143) {
      foundMarker = true;
      ct = 8;
    } else {
      ++position;
      c += 0xFE00 - (next << 9);
      ct = 7;
    }
  }
};

struct RawDecoderModel {
  SegmentModel segment;
  int position = 0;
  uint32_t byte = 0;
  int bitIndex = -1;

  explicit RawDecoderModel(const std::vector<uint8_t>& bytes) : segment(bytes) {}

  int next() {
    if (bitIndex < 0) {
      bitIndex = byte == 255 ? 6 : 7;
      byte = segment.at(position++);
    }
    return static_cast<int>(byte >> bitIndex-- & 1);
  }

  bool endsWrongly() const {
    uint32_t current = byte;
    int index = bitIndex, at = position;
    if (index >= 0) {
      if ((current & ((2u << index) - 1)) != 85u >> (7 - index)) return true;
    } else if (current == 255 && at < segment.size()) {
      current = segment.at(at++);
      index = 6;
    }
    if (at > segment.size()) return false;
    const uint32_t following = segment.at(at++);
    return current == 255 && index == 0 && (following >= 128 || at > segment.size());
  }
};

// ---- The coding passes of D.3

enum class PassKind { kSignificance, kRefinement, kCleanup };

// Where the decisions of a pass go to or come from. An encoder is told the bit, a decoder tells it.
class Decisions {
 public:
  virtual ~Decisions() = default;
  virtual int code(int context, int bit) = 0;
  virtual void becameSignificant(int x, int y, bool isNegative) = 0;
  virtual void refined(int x, int y, int bit) = 0;
};

class BlockModel {
 public:
  struct Sample {
    uint32_t magnitude = 0;  // what is known of it to the encoder
    bool isNegative = false;
    bool isSignificant = false, wasVisited = false, wasRefined = false;
  };

  BlockModel(int width, int height, int subband, bool isCausal)
      : width_(width),
        height_(height),
        subband_(subband),
        isCausal_(isCausal),
        samples_(static_cast<size_t>(width) * static_cast<size_t>(height)) {}

  Sample& at(int x, int y) { return samples_[static_cast<size_t>(y * width_ + x)]; }
  const Sample& at(int x, int y) const { return samples_[static_cast<size_t>(y * width_ + x)]; }

  void significancePass(int plane, bool isRaw, Decisions& decisions) {
    scan([&](int x, int y) {
      if (at(x, y).isSignificant || zeroCodingContext(x, y) == 0) return;
      codeSample(x, y, plane, isRaw, decisions);
      at(x, y).wasVisited = true;
    });
  }

  void refinementPass(int plane, bool isRaw, Decisions& decisions) {
    scan([&](int x, int y) {
      Sample& sample = at(x, y);
      if (!sample.isSignificant || sample.wasVisited) return;
      const int context = sample.wasRefined ? 2 : zeroCodingContext(x, y) != 0 ? 1 : 0;
      const int bit = decisions.code(kRefinementContext + context, bitOf(sample, plane));
      decisions.refined(x, y, bit);
      if (!isRaw) sample.wasRefined = true;
    });
  }

  void cleanupPass(int plane, Decisions& decisions) {
    int skipTo = 0, interrupted = -1;  // of the column that is being scanned
    scan([&](int x, int y) {
      if (y % 4 == 0) {
        skipTo = 0;
        interrupted = -1;
        if (beginsRun(x, y)) {
          int first = 0;
          while (first < 4 && bitOf(at(x, y + first), plane) == 0) ++first;
          if (decisions.code(kRunLengthContext, first < 4)) {
            interrupted = 2 * decisions.code(kUniformContext, first >> 1 & 1);
            interrupted += decisions.code(kUniformContext, first & 1);
            skipTo = interrupted;
          } else {
            skipTo = 4;
          }
        }
      }
      if (y % 4 < skipTo) return;
      if (y % 4 == interrupted) {
        codeSign(x, y, false, decisions);
      } else if (!at(x, y).isSignificant && !at(x, y).wasVisited) {
        codeSample(x, y, plane, false, decisions);
      }
    });
    for (Sample& sample : samples_) sample.wasVisited = false;
  }

 private:
  static int bitOf(const Sample& sample, int plane) { return sample.magnitude >> plane & 1; }

  template <class Visit>
  void scan(Visit visit) const {
    for (int stripe = 0; stripe < height_; stripe += 4) {
      for (int x = 0; x < width_; ++x) {
        for (int y = stripe; y < std::min(stripe + 4, height_); ++y) visit(x, y);
      }
    }
  }

  // What the sample at x, y is allowed to know of its neighbour.
  const Sample* significantNeighbour(int x, int y, int dx, int dy) const {
    const int nx = x + dx, ny = y + dy;
    if (nx < 0 || nx >= width_ || ny < 0 || ny >= height_) return nullptr;
    if (isCausal_ && ny / 4 > y / 4) return nullptr;
    return at(nx, ny).isSignificant ? &at(nx, ny) : nullptr;
  }
  int count(int x, int y, int dx, int dy) const {
    return significantNeighbour(x, y, dx, dy) ? 1 : 0;
  }

  // Table D.1.
  int zeroCodingContext(int x, int y) const {
    int h = count(x, y, -1, 0) + count(x, y, 1, 0);
    int v = count(x, y, 0, -1) + count(x, y, 0, 1);
    const int d = count(x, y, -1, -1) + count(x, y, 1, -1) + count(x, y, -1, 1) + count(x, y, 1, 1);
    if (subband_ == 3) {
      if (d >= 3) return 8;
      if (d == 2) return h + v >= 1 ? 7 : 6;
      if (d == 1) return h + v >= 2 ? 5 : h + v == 1 ? 4 : 3;
      return std::min(h + v, 2);
    }
    if (subband_ == 2) std::swap(h, v);
    if (h == 2) return 8;
    if (h == 1 && v >= 1) return 7;
    if (h == 1) return d >= 1 ? 6 : 5;
    if (v == 2) return 4;
    if (v == 1) return 3;
    return std::min(d, 2);
  }

  // Table D.2.
  int contribution(int x, int y, int dx, int dy) const {
    int sum = 0;
    for (const int side : {-1, 1}) {
      const Sample* neighbour = significantNeighbour(x, y, side * dx, side * dy);
      if (neighbour) sum += neighbour->isNegative ? -1 : 1;
    }
    return std::clamp(sum, -1, 1);
  }

  void codeSign(int x, int y, bool isRaw, Decisions& decisions) {
    // Table D.3, by the horizontal and then the vertical contribution from -1 to 1.
    static const int contexts[3][3] = {{13, 12, 11}, {10, 9, 10}, {11, 12, 13}};
    static const int turns[3][3] = {{1, 1, 1}, {1, 0, 0}, {0, 0, 0}};
    Sample& sample = at(x, y);
    if (isRaw) {
      sample.isNegative = decisions.code(kSignContext, sample.isNegative) != 0;
    } else {
      const int h = contribution(x, y, 1, 0) + 1, v = contribution(x, y, 0, 1) + 1;
      const int turn = turns[h][v];
      sample.isNegative = (decisions.code(contexts[h][v], sample.isNegative ^ turn) ^ turn) != 0;
    }
    sample.isSignificant = true;
    decisions.becameSignificant(x, y, sample.isNegative);
  }

  void codeSample(int x, int y, int plane, bool isRaw, Decisions& decisions) {
    if (decisions.code(zeroCodingContext(x, y), bitOf(at(x, y), plane))) {
      codeSign(x, y, isRaw, decisions);
    }
  }

  bool beginsRun(int x, int y) const {
    if (y + 4 > height_) return false;
    for (int i = 0; i < 4; ++i) {
      if (at(x, y + i).isSignificant || zeroCodingContext(x, y + i) != 0) return false;
    }
    return true;
  }

  int width_, height_, subband_;
  bool isCausal_;
  std::vector<Sample> samples_;
};

// A rectangle of samples in sign-magnitude form, row by row.
struct BlockSamples {
  int width, height;
  std::vector<Orb32s> values;

  Orb32s at(int x, int y) const { return values[static_cast<size_t>(y * width + x)]; }
  Orb32s& at(int x, int y) { return values[static_cast<size_t>(y * width + x)]; }
};

struct BlockStyle {
  int subband = 0;
  int magnBits = 31;
  int termination = 0;
  int flags = 0;  // codeStyle

  bool has(int flag) const { return (flags & flag) != 0; }
};

// ---- The encoder

struct ModelDecision {
  int context, bit;
};
struct ModelPass {
  bool isRaw;
  std::vector<ModelDecision> decisions;
  Orb32s gain = 0;
  int exponent;
  // Of the coded block.
  int rate = 0, length = 0;
};

struct EncodedModel {
  int bitLength = 0;
  std::vector<ModelPass> passes;
  std::vector<int> segmentLengths;
  std::vector<uint8_t> bytes;

  // The sum of 32-bit gains by 32-bit powers of two.
  double distortion(int lastPass) const {
    double sum = 0;
    for (int i = 0; i <= lastPass; ++i) {
      const ModelPass& pass = passes[static_cast<size_t>(i)];
      double power = std::ldexp(1.0, std::abs(pass.exponent) % 32);
      if (std::abs(pass.exponent) % 32 == 31) power = -power;
      sum += pass.gain * (pass.exponent > 0 ? power : 1 / power);
    }
    return sum;
  }
};

// Takes down what a pass decides, and by how much it improves the samples: by the formulas of the
// midpoints, on the plane's bit and the six below it.
class RecordedDecisions : public Decisions {
 public:
  RecordedDecisions(ModelPass& pass, const BlockModel& block, int plane, bool isExact)
      : pass_(pass), block_(block), plane_(plane), isExact_(isExact) {}

  int code(int context, int bit) override {
    pass_.decisions.push_back({context, bit});
    return bit;
  }
  void becameSignificant(int x, int y, bool) override {
    const int i = sevenBits(x, y) % 64;
    pass_.gain += isExact_ ? 2 * (64 + i) * (64 + i) : 6144 + 384 * i;
  }
  void refined(int x, int y, int) override {
    const int i = sevenBits(x, y);
    pass_.gain += isExact_ ? 2 * (64 - i) * (64 - i) : i < 64 ? 6144 - 128 * i : 128 * i - 10240;
  }

 private:
  int sevenBits(int x, int y) const {
    const uint64_t magnitude = block_.at(x, y).magnitude;
    return static_cast<int>((magnitude << 6 >> plane_) % 128);
  }

  ModelPass& pass_;
  const BlockModel& block_;
  int plane_;
  bool isExact_;
};

// Whether a segment decodes to all decisions of its passes.
inline bool decodesTo(const std::vector<uint8_t>& bytes, const std::vector<ModelPass>& passes,
                      std::vector<MqContext> contexts, bool resetsContexts) {
  MqStandardDecoder decoder(bytes);
  for (const ModelPass& pass : passes) {
    for (const ModelDecision& decision : pass.decisions) {
      MqContext& context = contexts[static_cast<size_t>(decision.context)];
      if (decoder.decode(context) != decision.bit) return false;
    }
    if (resetsContexts) contexts = startContexts();
  }
  return true;
}

class BlockEncoderModel {
 public:
  BlockEncoderModel(const BlockSamples& samples, const BlockStyle& style)
      : style_(style), block_(samples.width, samples.height, style.subband, style.has(1)) {
    uint32_t largest = 0;
    for (int y = 0; y < samples.height; ++y) {
      for (int x = 0; x < samples.width; ++x) {
        BlockModel::Sample& sample = block_.at(x, y);
        sample.magnitude = static_cast<uint32_t>(samples.at(x, y)) % 0x80000000u;
        sample.isNegative = samples.at(x, y) < 0;
        largest = std::max(largest, sample.magnitude);
      }
    }
    while (largest >> encoded_.bitLength != 0) ++encoded_.bitLength;
    recordPasses();
    codePasses();
    dropTrailing255();
  }

  const EncodedModel& encoded() const { return encoded_; }

 private:
  void recordPasses() {
    const int top = encoded_.bitLength - 1, last = 31 - style_.magnBits;
    for (int plane = top; plane >= last; --plane) {
      const bool isRaw = style_.has(2) && top - plane >= 4;
      if (plane < top) {
        record(PassKind::kSignificance, plane, isRaw);
        record(PassKind::kRefinement, plane, isRaw);
      }
      record(PassKind::kCleanup, plane, false);
    }
  }
  void record(PassKind kind, int plane, bool isRaw) {
    const int last = 31 - style_.magnBits;
    encoded_.passes.push_back({isRaw, {}, 0, 2 * (plane - last) - 13});
    ModelPass& pass = encoded_.passes.back();
    RecordedDecisions decisions(pass, block_, plane, style_.has(32) && plane == last);
    if (kind == PassKind::kSignificance) block_.significancePass(plane, isRaw, decisions);
    if (kind == PassKind::kRefinement) block_.refinementPass(plane, isRaw, decisions);
    if (kind != PassKind::kCleanup) return;
    block_.cleanupPass(plane, decisions);
    if (style_.has(16)) {
      for (const int bit : {1, 0, 1, 0}) decisions.code(kUniformContext, bit);
    }
  }

  bool endsSegment(size_t i) const {
    return style_.has(4) || i + 1 == encoded_.passes.size() ||
           encoded_.passes[i].isRaw != encoded_.passes[i + 1].isRaw;
  }

  void codePasses() {
    std::vector<MqContext> contexts = startContexts();
    for (size_t i = 0; i < encoded_.passes.size();) {
      size_t end = i + 1;
      while (!endsSegment(end - 1)) ++end;
      const std::vector<uint8_t> segment =
          encoded_.passes[i].isRaw ? codeRawSegment(i, end) : codeMqSegment(i, end, contexts);
      encoded_.bytes.insert(encoded_.bytes.end(), segment.begin(), segment.end());
      encoded_.segmentLengths.push_back(static_cast<int>(segment.size()));
      i = end;
    }
    if (encoded_.passes.empty() && !style_.has(4)) encoded_.segmentLengths.push_back(0);
  }

  // A pass ends: `length` bytes of the block are there, and `more` may be needed.
  void setRate(size_t i, int length, int more) {
    const int before = lengthBefore_;
    lengthBefore_ = length;
    encoded_.passes[i].length = length - before;
    encoded_.passes[i].rate = length + more;
    if (more != 0) return;
    for (; i > 0 && encoded_.passes[i].rate < encoded_.passes[i - 1].rate; --i) {
      encoded_.passes[i - 1].rate = encoded_.passes[i].rate;
    }
  }

  std::vector<uint8_t> codeMqSegment(size_t first, size_t end, std::vector<MqContext>& contexts) {
    const int before = static_cast<int>(encoded_.bytes.size());
    const std::vector<MqContext> contextsBefore = contexts;
    MqEncoderModel mq;
    bool hasCoded = false;
    for (size_t i = first; i < end; ++i) {
      for (const ModelDecision& decision : encoded_.passes[i].decisions) {
        mq.encode(contexts[static_cast<size_t>(decision.context)], decision.bit);
        hasCoded = true;
      }
      if (style_.has(8)) contexts = startContexts();
      if (i + 1 == end) break;
      int more = 0;
      if (hasCoded) {
        more = 3 + (mq.bytes.size() > 1);
        more += 27 - mq.ct > (mq.bytes.back() >= 254 ? 22 : 23);
      }
      setRate(i, before + mq.finished(), more);
    }
    std::vector<uint8_t> segment;
    if (hasCoded) {
      const auto passes = encoded_.passes.begin();
      segment =
          flush(mq, {passes + static_cast<ptrdiff_t>(first), passes + static_cast<ptrdiff_t>(end)},
                contextsBefore);
    }
    setRate(end - 1, before + static_cast<int>(segment.size()), 0);
    return segment;
  }

  std::vector<uint8_t> flush(MqEncoderModel& mq, const std::vector<ModelPass>& passes,
                             const std::vector<MqContext>& contexts) const {
    if (style_.termination == 2) return mq.flushPredictably();
    if (style_.termination != 1) return mq.flushFully();
    // As short as it can be cut, behind the bytes that have left the coder, and not ending in 255.
    const int finished = mq.finished();
    const std::vector<uint8_t> digits = mq.lowerEnd();
    std::vector<uint8_t> segment(digits.begin(), digits.begin() + finished);
    while (!decodesTo(segment, passes, contexts, style_.has(8)) ||
           (!segment.empty() && segment.back() == 255)) {
      segment.push_back(digits[segment.size()]);
    }
    return segment;
  }

  std::vector<uint8_t> codeRawSegment(size_t first, size_t end) {
    const int before = static_cast<int>(encoded_.bytes.size());
    std::vector<uint8_t> segment;
    std::vector<int> pending;
    const auto width = [&] { return !segment.empty() && segment.back() == 255 ? 7u : 8u; };
    const auto putByte = [&] {
      uint8_t byte = 0;
      for (const int bit : pending) byte = static_cast<uint8_t>(2 * byte + bit);
      segment.push_back(byte);
      pending.clear();
    };
    for (size_t i = first; i < end; ++i) {
      for (const ModelDecision& decision : encoded_.passes[i].decisions) {
        pending.push_back(decision.bit);
        if (pending.size() == width()) putByte();
      }
      if (i + 1 < end) setRate(i, before + static_cast<int>(segment.size()), !pending.empty());
    }
    if (!pending.empty()) {
      for (int bit = 0; pending.size() < width(); bit = 1 - bit) pending.push_back(bit);
      putByte();
    }
    setRate(end - 1, before + static_cast<int>(segment.size()), 0);
    return segment;
  }

  void dropTrailing255() {
    for (ModelPass& pass : encoded_.passes) {
      if (pass.rate > 0 && encoded_.bytes[static_cast<size_t>(pass.rate - 1)] == 255) --pass.rate;
    }
  }

  BlockStyle style_;
  BlockModel block_;
  EncodedModel encoded_;
  int lengthBefore_ = 0;
};

inline EncodedModel encodeBlock(const BlockSamples& samples, const BlockStyle& style) {
  return BlockEncoderModel(samples, style).encoded();
}

// ---- The decoder

enum class NextPass {
  kCleanup,
  kRefinement,
  kSignificance,
  kCleanupBehindRaw,
  kRawRefinement,
  kRawSignificance,
};

class BlockDecoderModel : private Decisions {
 public:
  using Bytes = std::vector<uint8_t>;

  // Public for tests to look at.
  BlockSamples samples;
  int plane = 0;
  int passCounter = 0;
  NextPass nextPass = NextPass::kCleanup;

  BlockDecoderModel(int width, int height, int subband, int flags)
      : samples{width, height, std::vector<Orb32s>(static_cast<size_t>(width * height))},
        block_(width, height, subband, (flags & 1) != 0),
        flags_(flags) {}

  // As after an attach that keeps samples and significance.
  void restart(int bitPlanes) {
    contexts_ = startContexts();
    plane = bitPlanes - 1;
    bypassPlane_ = has(2) ? std::max(bitPlanes - 4, 0) : 0;
    nextPass = NextPass::kCleanup;
    passCounter = 0;
  }

  // Whether an error was found.
  bool step(const Bytes& segment) {
    if (passCounter < 1 || plane < 0) return false;
    MqDecoderModel mq(segment);
    RawDecoderModel raw(segment);
    mq_ = &mq;
    raw_ = &raw;
    return has(4) ? stepPass() : stepSegment();
  }

 private:
  bool has(int flag) const { return (flags_ & flag) != 0; }

  bool stepPass() {
    const bool check = has(0x100000);
    switch (nextPass) {
      case NextPass::kRefinement:
        nextPass = NextPass::kCleanup;
        return run(PassKind::kRefinement, false, check);
      case NextPass::kSignificance:
        nextPass = NextPass::kRefinement;
        return run(PassKind::kSignificance, false, check);
      case NextPass::kRawRefinement:
        nextPass = NextPass::kCleanupBehindRaw;
        return run(PassKind::kRefinement, true, true);
      case NextPass::kRawSignificance:
        nextPass = NextPass::kRawRefinement;
        return run(PassKind::kSignificance, true, check);
      default:
        break;
    }
    const bool failed = run(PassKind::kCleanup, false, check);
    --plane;
    const bool staysArithmetic = nextPass == NextPass::kCleanup && plane >= bypassPlane_;
    nextPass = staysArithmetic ? NextPass::kSignificance : NextPass::kRawSignificance;
    return failed;
  }

  bool stepSegment() {
    const bool check = has(0x100000);
    bool failed = false;
    if (nextPass == NextPass::kRawSignificance) {
      failed |= run(PassKind::kSignificance, true, false);
      if (passCounter > 0) {
        failed |= run(PassKind::kRefinement, true, true);
        nextPass = NextPass::kCleanupBehindRaw;
      }
    } else if (nextPass == NextPass::kCleanupBehindRaw) {
      failed |= run(PassKind::kCleanup, false, check);
      if (passCounter > 0) {
        nextPass = NextPass::kRawSignificance;
        --plane;
      }
    } else {
      do {
        failed |= run(PassKind::kCleanup, false, check && plane == bypassPlane_);
        if (passCounter < 1) break;
        if (plane-- <= bypassPlane_) {
          nextPass = NextPass::kRawSignificance;
          break;
        }
        run(PassKind::kSignificance, false, false);
        if (passCounter > 0) run(PassKind::kRefinement, false, false);
      } while (passCounter > 0);
    }
    return failed;
  }

  bool run(PassKind kind, bool isRaw, bool isChecked) {
    isRaw_ = isRaw;
    bool failed = false;
    if (kind == PassKind::kSignificance) block_.significancePass(plane, isRaw, *this);
    if (kind == PassKind::kRefinement) block_.refinementPass(plane, isRaw, *this);
    if (kind == PassKind::kCleanup) {
      block_.cleanupPass(plane, *this);
      if (has(16)) {
        for (const int expected : {1, 0, 1, 0}) failed |= code(kUniformContext, 0) != expected;
      }
    }
    if (isChecked) failed = isRaw ? raw_->endsWrongly() : mq_->endsWrongly();
    if (has(8)) contexts_ = startContexts();
    --passCounter;
    return failed;
  }

  int code(int context, int) override {
    return isRaw_ ? raw_->next() : mq_->decode(contexts_[static_cast<size_t>(context)]);
  }
  void becameSignificant(int x, int y, bool isNegative) override {
    const uint32_t magnitude = static_cast<uint32_t>((uint64_t{3} << plane) / 2);
    samples.at(x, y) = static_cast<Orb32s>(magnitude + (isNegative ? 0x80000000u : 0));
  }
  void refined(int x, int y, int bit) override {
    const uint64_t unit = uint64_t{1} << plane;
    const uint64_t old = static_cast<uint32_t>(samples.at(x, y));
    const uint64_t above = old - old % (2 * unit);
    samples.at(x, y) =
        static_cast<Orb32s>(static_cast<uint32_t>(above + (bit ? unit : 0) + unit / 2));
  }

  BlockModel block_;
  int flags_;
  int bypassPlane_ = 0;
  std::vector<MqContext> contexts_;
  MqDecoderModel* mq_ = nullptr;
  RawDecoderModel* raw_ = nullptr;
  bool isRaw_ = false;
};

struct DecodedModel {
  BlockSamples samples;
  bool failed = false;
  int plane;
};

// What decoding all segments in one call gives.
inline DecodedModel decodeBlock(int width, int height, int subband, int bitPlanes, int passCount,
                                const std::vector<std::vector<uint8_t>>& segments, int style) {
  BlockDecoderModel decoder(width, height, subband, style);
  decoder.restart(bitPlanes);
  decoder.passCounter = passCount;
  bool failed = false;
  for (const std::vector<uint8_t>& segment : segments) {
    failed = decoder.step(segment);
    if (failed) break;
  }
  for (Orb32s& sample : decoder.samples.values) {
    // As digits: the sign, then the magnitude's bits.
    const int plane = decoder.plane;
    const bool isNegative = sample < 0;
    uint64_t magnitude = static_cast<uint32_t>(sample) % 0x80000000u;
    const uint64_t unit = uint64_t{1} << std::max(plane, 0);
    if (failed && (style & 0x10000) != 0) {
      magnitude -= magnitude % unit;
      if (magnitude != 0 && plane >= 0 && magnitude / unit % 2 == 0) magnitude += unit;
      if (magnitude == 0) {
        sample = 0;
        continue;
      }
    }
    if ((style & 0x40000) == 0 && plane >= 1) magnitude -= magnitude % unit;
    sample =
        static_cast<Orb32s>(static_cast<uint32_t>(magnitude) + (isNegative ? 0x80000000u : 0u));
  }
  return {decoder.samples, failed, decoder.plane};
}

}  // namespace jpeg2k
}  // namespace orbtest

#endif
