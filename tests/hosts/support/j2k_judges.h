// JPEG 2000 coders that nobody here wrote, as programs: OpenJPEG's and FFmpeg's.
#ifndef ORB_TESTS_HOSTS_SUPPORT_J2K_JUDGES_H
#define ORB_TESTS_HOSTS_SUPPORT_J2K_JUDGES_H

#include <string>
#include <vector>

#include "hosts/bytes.h"
#include "hosts/image.h"

namespace orbtest {

// Whether a file is a codestream alone; else it is a JP2 file.
bool isRawJ2k(orbhost::ByteView file);

// A file as OpenJPEG decodes it. A warning is a failure of the test.
orbhost::Image opjDecode(const orbhost::Bytes& file, const std::vector<std::string>& options = {});

// A file that OpenJPEG makes of a picture.
orbhost::Bytes opjEncode(const orbhost::Image& image, const std::vector<std::string>& options);

}  // namespace orbtest

#endif
