// Files of deflate streams: gzip (RFC 1952), zlib (RFC 1950), or a stream as it is.
#ifndef ORB_HOSTS_GZIP_FORMAT_H
#define ORB_HOSTS_GZIP_FORMAT_H

#include <cstdint>
#include <optional>
#include <string>

#include "hosts/bytes.h"
#include "hosts/gzip/deflate_decode.h"
#include "hosts/gzip/deflate_encode.h"
#include "hosts/stream.h"

namespace orbhost::gzip {

enum class Format { kGzip, kZlib, kRaw };

// What a gzip file tells of the file that is in it.
struct Origin {
  std::string name;   // empty: none
  uint32_t time = 0;  // of its last change, in seconds since 1970; 0: none
};

struct CompressOptions {
  Format format = Format::kGzip;
  DeflateOptions coding;  // a dictionary is not for gzip
  Origin origin;          // for gzip only
};

// Compresses all of the source.
void compress(Source& source, Sink& sink, const CompressOptions& options);

// Reads a compressed file.
class Expander {
 public:
  // Reads the header. Without a format the first bytes tell gzip from zlib. The dictionary is used
  // where a zlib file asks for it, and by every raw stream.
  Expander(Source& source, std::optional<Format> format, Bytes dictionary);

  // Of the first member of a gzip file.
  const Origin& origin() const { return origin_; }

  struct Totals {
    uint64_t compressed;   // bytes of the format
    uint64_t length;       // bytes that they make
    bool garbageFollowed;  // and was left alone; zeros may pad a file
  };
  // Writes what the file holds, each member of gzip after the other. An Error says what is wrong;
  // the bytes before that have been written.
  Totals expand(Sink& sink);

 private:
  Origin readGzipHeader();
  void readZlibHeader();
  uint64_t expandStream(Sink& sink);
  bool isGzipNext();
  bool isGarbageNext();

  Input input_;
  Decoder decoder_;
  Bytes dictionary_;
  Format format_;
  Origin origin_;
};

}  // namespace orbhost::gzip

#endif
