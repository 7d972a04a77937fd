// A file that is read under the eyes of somebody who waits.
#ifndef ORB_HOSTS_WATCHED_SOURCE_H
#define ORB_HOSTS_WATCHED_SOURCE_H

#include <optional>
#include <string>

#include "hosts/stopwatch.h"
#include "hosts/stream.h"

namespace orbhost {

// Passes a source on. When that takes a while and the error stream is a terminal, a line there
// tells how far it is; it goes with the object.
class WatchedSource : public Source {
 public:
  // The size is that of the whole, if it is known.
  WatchedSource(Source& source, std::string name, std::optional<uint64_t> size);
  WatchedSource(const WatchedSource&) = delete;
  WatchedSource& operator=(const WatchedSource&) = delete;
  ~WatchedSource() override;

  size_t read(uint8_t* to, size_t room) override;

  // Takes the line away.
  void hide();

  uint64_t count() const { return count_; }
  double seconds() const { return stopwatch_.seconds(); }

 private:
  void show();

  Source& source_;
  const std::string name_;
  const std::optional<uint64_t> size_;
  const bool watched_;
  bool shown_ = false;
  uint64_t count_ = 0;
  double next_;
  const Stopwatch stopwatch_;
};

}  // namespace orbhost

#endif
