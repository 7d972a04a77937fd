// Run-length coding: a run of 2 to 257 equal bytes as two of them and the number of the others; and
// the pre-coding of bzip2, a run of 4 to 259 as four of them and the number of the others.
#ifndef ORB_COMPRESS_PX_RUN_LENGTH_H
#define ORB_COMPRESS_PX_RUN_LENGTH_H

#include <stddef.h>

#include "frame/build.h"

namespace orb::ORB_BUILD::plain {

// How far a coder came.
struct RunLengthResult {
  Orb32s read;
  Orb32s written;
  OrbStatus status;
};

constexpr Orb32s kLongestRun = 257;

// As long as there is room for a run as it is coded, runs are coded; the last two bytes of room
// take bytes as they are.
inline RunLengthResult orbEncodeRLE(const Orb8u* src, Orb32s srcLen, Orb8u* dst, Orb32s room) {
  Orb32s read = 0;
  Orb32s written = 0;
  while (read < srcLen && written < room - 2) {
    const Orb8u byte = src[read];
    const Orb32s limit = srcLen - read < kLongestRun ? srcLen - read : kLongestRun;
    Orb32s run = 1;
    while (run < limit && src[read + run] == byte) ++run;
    read += run;
    dst[written++] = byte;
    if (run == 1) continue;
    dst[written++] = byte;
    dst[written++] = static_cast<Orb8u>(run - 2);
  }
  while (read < srcLen && written < room) dst[written++] = src[read++];
  return {read, written, read < srcLen ? orbStsDstFull : orbStsNoErr};
}

// The last two bytes of the source can't be a run as it is coded: they are bytes as they are.
inline RunLengthResult orbDecodeRLE(const Orb8u* src, Orb32s srcLen, Orb8u* dst, Orb32s room) {
  Orb32s read = 0;
  Orb32s written = 0;
  while (read < srcLen - 2 && written < room) {
    const Orb8u byte = src[read];
    if (src[read + 1] != byte) {
      dst[written++] = byte;
      ++read;
      continue;
    }
    const Orb32s run = src[read + 2] + 2;
    if (run > room - written) return {read, written, orbStsDstFull};
    __builtin_memset(dst + written, byte, static_cast<size_t>(run));
    written += run;
    read += 3;
  }
  while (read < srcLen && written < room) dst[written++] = src[read++];
  return {read, written, read < srcLen ? orbStsDstFull : orbStsNoErr};
}

// When the room is used up within a run of less than four, the next byte is read as a count all the
// same; a count that there is no room for stays read.
inline RunLengthResult orbDecodeRLEBZ2(const Orb8u* src, Orb32s srcLen, Orb8u* dst, Orb32s room) {
  Orb32s read = 0;
  Orb32s written = 0;
  Orb32s last = -1;
  while (read < srcLen) {
    Orb32s run = 0;
    while (read < srcLen && written < room && run < 4) {
      const Orb8u byte = src[read++];
      dst[written++] = byte;
      run = byte == last ? run + 1 : 1;
      last = byte;
    }
    if (read == srcLen) break;
    const Orb32s count = src[read++];
    if (count > room - written) return {read, written, orbStsDstFull};
    __builtin_memset(dst + written, last, static_cast<size_t>(count));
    written += count;
  }
  return {read, written, written == room ? orbStsDstFull : orbStsNoErr};
}

}  // namespace orb::ORB_BUILD::plain

#endif
