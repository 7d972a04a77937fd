// Pictures as the image commands take and write them: grey, RGB and RGBA, and CMYK in a PAM.
#ifndef ORB_HOSTS_IMAGE_PICTURE_H
#define ORB_HOSTS_IMAGE_PICTURE_H

#include <string>

#include "hosts/image.h"

namespace orbhost::image {

// Of 8 bits to a sample; `isTransparent` tells RGBA from CMYK.
struct Picture {
  Image pixels;
  bool isTransparent = false;
};

Picture readPicture(const std::string& path);

// In the format of the file's name. Only PNG holds transparency.
void writePicture(const std::string& path, const Picture& picture);

}  // namespace orbhost::image

#endif
