// zlib, which nobody here wrote.
#ifndef ORB_TESTS_HOSTS_SUPPORT_ZLIB_JUDGE_H
#define ORB_TESTS_HOSTS_SUPPORT_ZLIB_JUDGE_H

#include <zlib.h>

#include "hosts/bytes.h"

namespace orbtest {

// The wrapper, in the numbers of zlib's windowBits for the largest window.
enum class Wrapper { kRaw = -15, kZlib = 15, kGzip = 31 };

// What one stream holds. Throws, with zlib's words, if it is damaged, if it does not end where the
// bytes end, or if it asks for another dictionary.
orbhost::Bytes zlibInflate(orbhost::ByteView bytes, Wrapper wrapper,
                           orbhost::ByteView dictionary = {});

struct ZlibOptions {
  int level = 6;
  int strategy = Z_DEFAULT_STRATEGY;
  int windowBits = 15;  // 9 to 15
  int memoryLevel = 8;
  int flush = Z_NO_FLUSH;   // after each piece ...
  size_t piece = SIZE_MAX;  // ... of so many bytes
  orbhost::Bytes dictionary;
};
orbhost::Bytes zlibDeflate(orbhost::ByteView bytes, Wrapper wrapper, const ZlibOptions& options);

}  // namespace orbtest

#endif
