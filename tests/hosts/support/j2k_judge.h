// OpenJPEG's programs, as judges of JPEG 2000 files.
#ifndef ORB_TESTS_HOSTS_SUPPORT_J2K_JUDGE_H
#define ORB_TESTS_HOSTS_SUPPORT_J2K_JUDGE_H

#include <string>
#include <vector>

#include "hosts/bytes.h"
#include "hosts/image.h"

namespace orbtest {

enum class J2kFormat { kCodestream, kJp2 };

// opj_compress with options as on its command line, separated by spaces.
orbhost::Bytes opjCompress(const orbhost::Image& image, const std::string& options = "",
                           J2kFormat format = J2kFormat::kCodestream);

// Components of any sizes, one behind the other: `layout` is that of opj_compress -F.
orbhost::Bytes opjCompressRaw(const orbhost::Bytes& samples, const std::string& layout,
                              const std::string& options = "",
                              J2kFormat format = J2kFormat::kCodestream);

// opj_decompress of a picture with one or three components. A warning is a failure of the test.
orbhost::Image opjDecompress(const orbhost::Bytes& file, const std::string& options = "");

// A component of any file, its samples from 0 on.
orbhost::Image opjDecompressComponent(const orbhost::Bytes& file, int component,
                                      const std::string& options = "");

}  // namespace orbtest

#endif
