#include "hosts/watched_source.h"

#include <unistd.h>

#include <cstdio>
#include <utility>

namespace orbhost {

namespace {

constexpr double kFirstSeconds = 0.5;
constexpr double kNextSeconds = 0.25;
// Back to the start of the line, which is cleared.
constexpr char kClear[] = "\r\033[K";

}  // namespace

WatchedSource::WatchedSource(Source& source, std::string name, std::optional<uint64_t> size)
    : source_(source),
      name_(std::move(name)),
      size_(size),
      watched_(isatty(STDERR_FILENO) != 0),
      next_(kFirstSeconds) {}

WatchedSource::~WatchedSource() {
  hide();
}

void WatchedSource::hide() {
  if (shown_) std::fputs(kClear, stderr);
  shown_ = false;
}

size_t WatchedSource::read(uint8_t* to, size_t room) {
  const size_t got = source_.read(to, room);
  count_ += got;
  if (watched_ && seconds() >= next_) show();
  return got;
}

void WatchedSource::show() {
  const double done = static_cast<double>(count_);
  std::fprintf(stderr, "%s%s: ", kClear, name_.c_str());
  if (size_) std::fprintf(stderr, "%.0f %% of ", 100 * done / static_cast<double>(*size_));
  std::fprintf(stderr, "%.0f MB, %.1f MB/s", static_cast<double>(size_.value_or(count_)) / 1e6,
               done / 1e6 / seconds());
  std::fflush(stderr);
  shown_ = true;
  next_ = seconds() + kNextSeconds;
}

}  // namespace orbhost
