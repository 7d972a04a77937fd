// Writing deflate streams (RFC 1951).
#ifndef ORB_HOSTS_GZIP_DEFLATE_ENCODE_H
#define ORB_HOSTS_GZIP_DEFLATE_ENCODE_H

#include <cstdint>

#include "hosts/bytes.h"
#include "hosts/gzip/checksum.h"
#include "hosts/stream.h"

namespace orbhost::gzip {

enum class Level { kFast, kChain, kLazy };
// How blocks are coded: each in its shortest way, or all in one.
enum class Blocks { kShortest, kFixed, kDynamic, kStored };

struct DeflateOptions {
  Level level = Level::kLazy;
  Blocks blocks = Blocks::kShortest;
  Bytes dictionary;  // of which the last 32768 bytes count
};

struct Deflated {
  uint64_t length;    // of the source
  uint32_t checksum;  // of the source; 0 if none was asked for
};

// Reads the source to its end and writes one stream. An Error comes only from the source and the
// sink.
Deflated deflate(Source& source, Sink& sink, const DeflateOptions& options, Checksum checksum);

}  // namespace orbhost::gzip

#endif
