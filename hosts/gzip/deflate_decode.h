// Reading deflate streams (RFC 1951).
#ifndef ORB_HOSTS_GZIP_DEFLATE_DECODE_H
#define ORB_HOSTS_GZIP_DEFLATE_DECODE_H

#include <cstdint>
#include <memory>

#include "hosts/bytes.h"
#include "hosts/stream.h"
#include "orb90legacy.h"

namespace orbhost::gzip {

// A source through a buffer. What was taken last stays in front of what comes next, because the
// decoder hands back whole bytes that it read ahead, some of them calls ago.
class Input {
 public:
  explicit Input(Source& source);

  // What is there. It grows with require and more, which move it.
  Orb8u* data() { return buffer_.data() + begin_; }
  size_t size() const { return end_ - begin_; }

  // Reads on; false at the source's end.
  bool more();
  // Reads on until so many bytes are there; false if the source ends before.
  bool require(size_t count);
  // Goes on behind, or a few bytes before, data().
  void moveTo(const Orb8u* next);

  // Of data(), from the source's start.
  uint64_t position() const { return dropped_ + begin_; }

 private:
  Source& source_;
  Bytes buffer_;
  size_t begin_ = 0;
  size_t end_ = 0;
  uint64_t dropped_ = 0;
};

// Decodes any number of streams, one at a time.
class Decoder {
 public:
  Decoder();

  // Decodes one stream, which starts at the input's next byte, and leaves the input behind it. An
  // Error says what is wrong; what came before that has been written. A distance that leads before
  // the start finds the end of the dictionary there, and zeros before that.
  void decode(Input& input, ByteView dictionary, Sink& sink);

 private:
  struct Free {
    void operator()(OrbLZ77DecState* state) const;
  };

  void begin(ByteView dictionary);
  OrbLZ77BlockMode readBlockMode(Input& input);
  OrbStatus decodeBlock(OrbLZ77BlockMode mode, Input& input, Sink& sink);
  void flush(Sink& sink);

  std::unique_ptr<OrbLZ77DecState, Free> state_;
  Bytes output_;
  Orb8u* next_;
  Orb32s room_;
};

}  // namespace orbhost::gzip

#endif
