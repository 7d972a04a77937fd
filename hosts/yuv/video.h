// Frames of video-range YCbCr (ITU-R BT.601) in files without a header, from and to pixels of 16
// bits.
#ifndef ORB_HOSTS_YUV_VIDEO_H
#define ORB_HOSTS_YUV_VIDEO_H

#include "hosts/bytes.h"
#include "hosts/packed_image.h"

namespace orbhost::yuv {

enum class Layout {
  kI420,  // planes Y, Cb, Cr; chroma halved both ways
  kYv12,  // the same with Cr in front of Cb
  kI422,  // planes Y, Cb, Cr; chroma halved across
  kYuyv,  // Y, Cb, Y, Cr for two pixels
};

// A side that is odd has chroma for its last pixel too, as if that were there twice.
size_t frameSize(Layout layout, int width, int height);

Bytes toVideo(const PackedImage& image, Layout layout);

// An Error if the frame is cut, or in kI422, which is only written.
PackedImage ofVideo(ByteView frame, Layout layout, int width, int height, PackedFormat format);

}  // namespace orbhost::yuv

#endif
