#include "tests/hosts/support/zlib_judge.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace orbtest {

using orbhost::Bytes;
using orbhost::ByteView;

namespace {

Bytef* bytesOf(ByteView view) {
  return const_cast<Bytef*>(view.data);
}

void require(int result, int wanted, const z_stream& stream) {
  if (result == wanted) return;
  throw std::runtime_error("zlib: status " + std::to_string(result) + ", " +
                           (stream.msg != nullptr ? stream.msg : "no message"));
}

class Stream {
 public:
  explicit Stream(int (*end)(z_stream*)) : end_(end) {}
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  ~Stream() { end_(&z); }

  // Hands out what fills the room behind `all` until nothing more comes.
  template <class Step>
  int run(Bytes& all, Step step) {
    Bytes room(65536);
    int result = Z_OK;
    do {
      z.next_out = room.data();
      z.avail_out = static_cast<uInt>(room.size());
      result = step();
      all.insert(all.end(), room.data(), z.next_out);
    } while (result == Z_OK && z.avail_out == 0);
    return result;
  }

  z_stream z = {};

 private:
  int (*const end_)(z_stream*);
};

}  // namespace

Bytes zlibInflate(ByteView bytes, Wrapper wrapper, ByteView dictionary) {
  Stream stream(inflateEnd);
  z_stream& z = stream.z;
  require(inflateInit2(&z, static_cast<int>(wrapper)), Z_OK, z);
  z.next_in = bytesOf(bytes);
  z.avail_in = static_cast<uInt>(bytes.size);
  const auto setDictionary = [&] {
    require(inflateSetDictionary(&z, bytesOf(dictionary), static_cast<uInt>(dictionary.size)), Z_OK,
            z);
  };
  if (wrapper == Wrapper::kRaw && dictionary.size > 0) setDictionary();
  Bytes all;
  const auto step = [&] { return inflate(&z, Z_NO_FLUSH); };
  int result = stream.run(all, step);
  if (result == Z_NEED_DICT) {
    setDictionary();
    result = stream.run(all, step);
  }
  require(result, Z_STREAM_END, z);
  if (z.avail_in != 0) throw std::runtime_error("zlib: the stream ends before the bytes do");
  return all;
}

Bytes zlibDeflate(ByteView bytes, Wrapper wrapper, const ZlibOptions& options) {
  int bits = options.windowBits;
  if (wrapper == Wrapper::kRaw) bits = -bits;
  if (wrapper == Wrapper::kGzip) bits += 16;
  Stream stream(deflateEnd);
  z_stream& z = stream.z;
  require(deflateInit2(&z, options.level, Z_DEFLATED, bits, options.memoryLevel, options.strategy),
          Z_OK, z);
  if (!options.dictionary.empty()) {
    require(deflateSetDictionary(&z, bytesOf(options.dictionary),
                                 static_cast<uInt>(options.dictionary.size())),
            Z_OK, z);
  }
  Bytes all;
  size_t done = 0;
  while (bytes.size - done > options.piece) {
    z.next_in = bytesOf(bytes) + done;
    z.avail_in = static_cast<uInt>(options.piece);
    done += options.piece;
    stream.run(all, [&] { return deflate(&z, options.flush); });
  }
  z.next_in = bytesOf(bytes) + done;
  z.avail_in = static_cast<uInt>(bytes.size - done);
  require(stream.run(all, [&] { return deflate(&z, Z_FINISH); }), Z_STREAM_END, z);
  return all;
}

}  // namespace orbtest
