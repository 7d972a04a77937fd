// From a JPEG file in memory to pixels of 16 bits.
#ifndef ORB_HOSTS_JPEG_PACKED_DECODE_H
#define ORB_HOSTS_JPEG_PACKED_DECODE_H

#include "hosts/bytes.h"
#include "hosts/jpeg/decode.h"
#include "hosts/packed_image.h"

namespace orbhost::jpeg {

// Takes what decodeJpeg takes. YCbCr of the usual samplings goes from blocks to pixels one MCU at a
// time, with chroma repeated rather than smoothed; anything else, and reduced sizes, is decoded and
// then packed.
PackedImage decodeJpegPacked(ByteView file, PackedFormat format, const DecodeOptions& options);

}  // namespace orbhost::jpeg

#endif
