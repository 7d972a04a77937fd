// JPEG XR coders that nobody here wrote: the programs of libjxr-tools. Files go through a directory
// that is gone afterwards.
#ifndef ORB_TESTS_HOSTS_SUPPORT_JXR_JUDGES_H
#define ORB_TESTS_HOSTS_SUPPORT_JXR_JUDGES_H

#include <string>
#include <vector>

#include "hosts/bytes.h"
#include "hosts/image.h"

namespace orbtest {

// A grey or RGB picture as a file.
orbhost::Bytes jxrEncApp(const orbhost::Image& image, const std::vector<std::string>& options);

// A file of a picture of this shape: grey, RGB or CMYK.
orbhost::Image jxrDecApp(const orbhost::Bytes& file, const orbhost::Image& like,
                         const std::vector<std::string>& options = {});

// An RGB picture of 8 bits with some transparency, which is left out again.
orbhost::Bytes jxrEncAppTransparent(const orbhost::Image& image,
                                    const std::vector<std::string>& options);
orbhost::Image jxrDecAppTransparent(const orbhost::Bytes& file, const orbhost::Image& like);

}  // namespace orbtest

#endif
