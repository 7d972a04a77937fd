#include "hosts/j2k/forward_wavelet.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace orbhost::j2k {

namespace {

// The rows of a band while its columns are filtered: its own, and some more in place of those that
// would lie outside it.
template <class Sample>
class BandRows {
 public:
  explicit BandRows(PaddedPlane<Sample>& band) : band_(band) {
    spare_.resize(static_cast<size_t>(band.width()) * kSpareRows);
  }

  Sample* operator()(int y) {
    if (y >= 0 && y < band_.height()) return band_.row(y);
    return spare_.data() + static_cast<size_t>(y & (kSpareRows - 1)) * band_.width();
  }

 private:
  static constexpr int kSpareRows = 4;  // more than a stage has of one band

  PaddedPlane<Sample>& band_;
  std::vector<Sample> spare_;
};

// Stage by stage. That of low row k has the high row behind it, which is number k + phase; what it
// finishes lies up to two stages back, and what the first stages lack does not get into the bands.
void filterColumns(const PaddedPlane<Orb32s>& from, PaddedPlane<Orb32s>& low,
                   PaddedPlane<Orb32s>& high, int phase) {
  BandRows<Orb32s> lowRow(low);
  BandRows<Orb32s> highRow(high);
  const int end = std::max(low.height(), high.height() - phase);
  for (int k = -1; k < end; ++k) {
    const int y = 2 * k + phase;
    legacy90orbiWTFwdColLift_B53_JPEG2K_32s_C1(from.row(y), from.row(y + 1), from.row(y + 2),
                                               lowRow(k), highRow(k + phase - 1),
                                               highRow(k + phase), from.width());
  }
}
void filterColumns(const PaddedPlane<Orb32f>& from, PaddedPlane<Orb32f>& low,
                   PaddedPlane<Orb32f>& high, int phase) {
  BandRows<Orb32f> lowRow(low);
  BandRows<Orb32f> highRow(high);
  const int end = std::max(low.height(), high.height() + 1 - phase) + 1;
  for (int k = -2; k < end; ++k) {
    const int y = 2 * k + phase;
    legacy90orbiWTFwdColLift_D97_JPEG2K_32f_C1(
        from.row(y), from.row(y + 1), from.row(y + 2), lowRow(k - 1), lowRow(k),
        highRow(k + phase - 2), highRow(k + phase - 1), highRow(k + phase), from.width());
  }
}
void filterRows(const PaddedPlane<Orb32s>& from, PaddedPlane<Orb32s>& low,
                PaddedPlane<Orb32s>& high, int phase) {
  legacy90orbiWTFwdRow_B53_JPEG2K_32s_C1R(from.row(0), from.step(), low.row(0), low.step(),
                                          high.row(0), high.step(),
                                          {(from.width() + 1) / 2, from.height()}, phase);
}
void filterRows(const PaddedPlane<Orb32f>& from, PaddedPlane<Orb32f>& low,
                PaddedPlane<Orb32f>& high, int phase) {
  legacy90orbiWTFwdRow_D97_JPEG2K_32f_C1R(from.row(0), from.step(), low.row(0), low.step(),
                                          high.row(0), high.step(),
                                          {(from.width() + 1) / 2, from.height()}, phase);
}

// Which sample of a line of at least two stands at a place beyond its ends: the line is reflected
// in its first and last sample as often as need be.
int reflected(int place, int length) {
  const int period = 2 * (length - 1);
  const int within = ((place % period) + period) % period;
  return std::min(within, period - within);
}

template <class Sample>
void extendColumns(PaddedPlane<Sample>& plane) {
  const auto extend = [&](int y) {
    const Sample* const from = plane.row(reflected(y, plane.height()));
    std::copy_n(from, plane.width(), plane.row(y));
  };
  for (int y = 1; y <= PaddedPlane<Sample>::kRoomBefore; ++y) extend(-y);
  for (int y = 0; y < PaddedPlane<Sample>::kRoomBehind; ++y) extend(plane.height() + y);
}

template <class Sample>
void extendRows(PaddedPlane<Sample>& plane) {
  const int width = plane.width();
  for (int y = 0; y < plane.height(); ++y) {
    Sample* const row = plane.row(y);
    for (int x = 1; x <= PaddedPlane<Sample>::kRoomBefore; ++x) row[-x] = row[reflected(-x, width)];
    for (int x = 0; x < PaddedPlane<Sample>::kRoomBehind; ++x) {
      row[width + x] = row[reflected(width + x, width)];
    }
  }
}

// A line of one sample stays at an even place, and is doubled at an odd one (F.4.6).
template <class Sample>
void copyLine(const PaddedPlane<Sample>& from, PaddedPlane<Sample>& to, int gain) {
  for (int y = 0; y < from.height(); ++y) {
    std::transform(from.row(y), from.row(y) + from.width(), to.row(y),
                   [gain](Sample sample) { return static_cast<Sample>(gain * sample); });
  }
}

// How many of so many samples are low, of which the first is at a place of this parity.
int lowCount(int length, int parity) {
  return (length + 1 - parity) / 2;
}

template <class Sample>
void splitColumns(PaddedPlane<Sample>& from, PaddedPlane<Sample>& low, PaddedPlane<Sample>& high,
                  int parity) {
  if (from.width() == 0 || from.height() == 0) return;
  if (from.height() == 1) {
    copyLine(from, parity == 0 ? low : high, parity + 1);
    return;
  }
  extendColumns(from);
  filterColumns(from, low, high, parity);
}

template <class Sample>
void splitRows(PaddedPlane<Sample>& from, PaddedPlane<Sample>& low, PaddedPlane<Sample>& high,
               int parity) {
  if (from.width() == 0 || from.height() == 0) return;
  if (from.width() == 1) {
    copyLine(from, parity == 0 ? low : high, parity + 1);
    return;
  }
  extendRows(from);
  filterRows(from, low, high, parity);
}

}  // namespace

// The filters of rows give as many low samples as high ones: of an odd length one too many of a
// kind, which the room behind a row takes.
template <class Sample>
Subbands<Sample> transformForward(PaddedPlane<Sample> samples, int x, int y, int levels) {
  Subbands<Sample> bands;
  for (int level = 0; level < levels; ++level) {
    const int across = x & 1;
    const int down = y & 1;
    const int lowWidth = lowCount(samples.width(), across);
    const int lowHeight = lowCount(samples.height(), down);
    const int highWidth = samples.width() - lowWidth;
    const int highHeight = samples.height() - lowHeight;
    PaddedPlane<Sample> top(samples.width(), lowHeight);
    PaddedPlane<Sample> bottom(samples.width(), highHeight);
    splitColumns(samples, top, bottom, down);
    samples = PaddedPlane<Sample>(lowWidth, lowHeight);
    bands.levels.emplace_back();
    std::array<PaddedPlane<Sample>, 3>& high = bands.levels.back();
    high = {PaddedPlane<Sample>(highWidth, lowHeight), PaddedPlane<Sample>(lowWidth, highHeight),
            PaddedPlane<Sample>(highWidth, highHeight)};
    splitRows(top, samples, high[Subbands<Sample>::kHl], across);
    splitRows(bottom, high[Subbands<Sample>::kLh], high[Subbands<Sample>::kHh], across);
    x = (x + 1) >> 1;
    y = (y + 1) >> 1;
  }
  bands.low = std::move(samples);
  return bands;
}

template Subbands<Orb32s> transformForward(PaddedPlane<Orb32s>, int, int, int);
template Subbands<Orb32f> transformForward(PaddedPlane<Orb32f>, int, int, int);

}  // namespace orbhost::j2k
