#include "hosts/j2k/inverse_wavelet.h"

#include <cstring>
#include <utility>
#include <vector>

namespace orbhost::j2k {

namespace {

// A position of the line [first, end) that stands for one outside it (F.3.7).
int64_t reflected(int64_t position, int64_t first, int64_t end) {
  if (end - first == 1) return first;
  const int64_t period = 2 * (end - 1 - first);
  int64_t distance = (position - first) % period;
  if (distance < 0) distance += period;
  return first + (distance < end - first ? distance : period - distance);
}

// Low samples stand at even positions of a line, high ones at odd ones. The counts of those in
// front of a position:
constexpr uint32_t lowsBefore(uint32_t position) {
  return position / 2 + position % 2;
}
constexpr uint32_t highsBefore(uint32_t position) {
  return position / 2;
}

// What stands in the margins of the bands of a row: which of its samples are repeated where.
class RowExtension {
 public:
  RowExtension(uint32_t first, uint32_t end) {
    const int pairs = static_cast<int>((end - first + 1) / 2);
    for (const int odd : {0, 1}) {
      const int64_t before = odd == 0 ? lowsBefore(first) : highsBefore(first);
      const int count = static_cast<int>((odd == 0 ? lowsBefore(end) : highsBefore(end)) - before);
      for (int i = -kReach; i < pairs + kReach; ++i) {
        if (i >= 0 && i < count) continue;
        const int64_t position = reflected(2 * (before + i) + odd, first, end);
        copies_[odd].emplace_back(i, static_cast<int>(position / 2 - before));
      }
    }
  }

  template <class T>
  void apply(T* low, T* high) const {
    for (const auto& [to, from] : copies_[0]) low[to] = low[from];
    for (const auto& [to, from] : copies_[1]) high[to] = high[from];
  }

 private:
  static constexpr int kReach = 2;

  std::vector<std::pair<int, int>> copies_[2];
};

// The library's functions: rows; and a stage of columns for the rows of position 2k and in front of
// it, which finishes some of them.
struct Reversible {
  using Sample = Orb32s;

  static void row(const Sample* low, const Sample* high, Sample* to, int width, int pairs,
                  uint32_t phase) {
    legacy90orbiWTInvRow_B53_JPEG2K_32s_C1R(low, width * 4, high, width * 4, {pairs, 1}, to,
                                            width * 4, phase);
  }
  // The stages that finish the rows [first, end).
  static int64_t firstStage(uint32_t first) { return first / 2; }
  static int64_t endStage(uint32_t end) { return int64_t{end / 2} + 1; }
  template <class RowAt>
  static void stage(const Sample* low, const Sample* high0, const Sample* high1, int64_t k,
                    RowAt rowAt, int width) {
    legacy90orbiWTInvColLift_B53_JPEG2K_32s_C1(low, high0, high1, rowAt(2 * k - 2),
                                               rowAt(2 * k - 1), rowAt(2 * k), width);
  }
};

struct Irreversible {
  using Sample = Orb32f;

  static void row(const Sample* low, const Sample* high, Sample* to, int width, int pairs,
                  uint32_t phase) {
    legacy90orbiWTInvRow_D97_JPEG2K_32f_C1R(low, width * 4, high, width * 4, {pairs, 1}, to,
                                            width * 4, phase);
  }
  static int64_t firstStage(uint32_t first) { return int64_t{first / 2} - 1; }
  static int64_t endStage(uint32_t end) { return int64_t{(end - 1) / 2} + (end - 1) % 2 + 2; }
  template <class RowAt>
  static void stage(const Sample* low, const Sample* high0, const Sample* high1, int64_t k,
                    RowAt rowAt, int width) {
    legacy90orbiWTInvColLift_D97_JPEG2K_32f_C1(low, high0, high1, rowAt(2 * k - 4),
                                               rowAt(2 * k - 3), rowAt(2 * k - 2), rowAt(2 * k - 1),
                                               rowAt(2 * k), width);
  }
};

// Rows of the four bands become rows of the resolution in pairs, and each pair is a stage of the
// columns, which work in the rows of the result.
template <class Wavelet>
class Inverse {
 public:
  using T = typename Wavelet::Sample;

  Inverse(const Rect& rect, BandPlanes<T>& bands, Plane<T>& to)
      : rect_(rect),
        bands_(bands),
        to_(to),
        width_(static_cast<int>(rect.width())),
        pairs_((width_ + 1) / 2),
        extension_(rect.x0, rect.x1),
        spare_(rect.width(), kSpareRows),
        low_(rect.width() + 1, 1),
        high_(rect.width() + 1, 2) {}

  void run() {
    if (rect_.height() == 1) {
      runSingleRow();
      return;
    }
    const auto rowAt = [this](int64_t position) {
      return position >= rect_.y0 && position < rect_.y1
                 ? to_.row(static_cast<int>(position - rect_.y0))
                 : spare_.row(static_cast<int>(position & (kSpareRows - 1)));
    };
    const int64_t first = Wavelet::firstStage(rect_.y0);
    const int64_t end = Wavelet::endStage(rect_.y1);
    transformRow(2 * first - 1, high_.row(static_cast<int>(first & 1)));
    for (int64_t k = first; k < end; ++k) {
      T* const high0 = high_.row(static_cast<int>(k & 1));
      T* const high1 = high_.row(static_cast<int>((k + 1) & 1));
      transformRow(2 * k, low_.row(0));
      transformRow(2 * k + 1, high1);
      Wavelet::stage(low_.row(0), high0, high1, k, rowAt, width_);
    }
  }

 private:
  static constexpr int kSpareRows = 8;  // more than a stage has

  // A single row, or column, is low as it is and high in double size (F.3.6).
  void runSingleRow() {
    transformRow(rect_.y0, low_.row(0));
    T* const to = to_.row(0);
    for (int x = 0; x < width_; ++x) {
      to[x] = rect_.y0 % 2 == 0 ? low_.row(0)[x] : low_.row(0)[x] / 2;
    }
  }

  // The row of a position, or of that which stands for it, along which the bands are put together.
  void transformRow(int64_t position, T* to) {
    const uint32_t y = static_cast<uint32_t>(reflected(position, rect_.y0, rect_.y1));
    const bool isHigh = y % 2 != 0;
    const int inBand = static_cast<int>(isHigh ? highsBefore(y) - highsBefore(rect_.y0)
                                               : lowsBefore(y) - lowsBefore(rect_.y0));
    T* const low = (isHigh ? bands_.lh : bands_.ll).row(inBand);
    T* const high = (isHigh ? bands_.hh : bands_.hl).row(inBand);
    if (width_ == 1) {
      to[0] = rect_.x0 % 2 == 0 ? low[0] : high[0] / 2;
      return;
    }
    extension_.apply(low, high);
    Wavelet::row(low, high, to, width_, pairs_, rect_.x0 % 2);
  }

  const Rect rect_;
  BandPlanes<T>& bands_;
  Plane<T>& to_;
  const int width_;
  const int pairs_;
  const RowExtension extension_;
  Plane<T> spare_;
  Plane<T> low_;
  Plane<T> high_;
};

}  // namespace

void inverseWavelet(const Rect& rect, BandPlanes<Orb32s>& bands, Plane<Orb32s>& to) {
  if (!rect.isEmpty()) Inverse<Reversible>(rect, bands, to).run();
}

void inverseWavelet(const Rect& rect, BandPlanes<Orb32f>& bands, Plane<Orb32f>& to) {
  if (!rect.isEmpty()) Inverse<Irreversible>(rect, bands, to).run();
}

}  // namespace orbhost::j2k
