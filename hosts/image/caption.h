// Words in pictures, by FreeType with a font of the system. Where there is none of the two, nothing
// is written.
#ifndef ORB_HOSTS_IMAGE_CAPTION_H
#define ORB_HOSTS_IMAGE_CAPTION_H

#include <string>

#include "hosts/image.h"

namespace orbhost::image {

// Black on what is there, in ASCII, with the baseline's start at x, y; what falls outside is cut
// off.
void writeCaption(Image& image, int x, int y, int height, const std::string& text);

}  // namespace orbhost::image

#endif
