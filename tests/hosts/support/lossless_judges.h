// Coders of lossless JPEG that nobody here wrote: FFmpeg and DCMTK, as programs.
#ifndef ORB_TESTS_HOSTS_SUPPORT_LOSSLESS_JUDGES_H
#define ORB_TESTS_HOSTS_SUPPORT_LOSSLESS_JUDGES_H

#include <string>
#include <vector>

#include "hosts/bytes.h"
#include "hosts/image.h"

namespace orbtest {

// What FFmpeg makes of a picture's file, or of several JPEG files behind one another, as raw
// samples in one of its pixel formats.
orbhost::Bytes ffmpegDecode(const orbhost::Bytes& file, const std::string& pixelFormat);

// FFmpeg's lossless file of a picture, in a pixel format and by one of its methods: left, plane,
// median.
orbhost::Bytes ffmpegEncode(const orbhost::Image& image, const std::string& pixelFormat,
                            const std::string& prediction);

// The picture as raw samples in a pixel format.
orbhost::Bytes ffmpegConvert(const orbhost::Image& image, const std::string& pixelFormat);

// What DCMTK makes of files of one kind, whose samples have the same number of bits.
std::vector<orbhost::Image> dcmtkDecode(const std::vector<orbhost::Bytes>& files,
                                        const orbhost::Image& like);

// DCMTK's lossless file of a picture.
orbhost::Bytes dcmtkEncode(const orbhost::Image& image, int predictor, int pointTransform);

}  // namespace orbtest

#endif
