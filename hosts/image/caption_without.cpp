// A build for a target that has no FreeType.
#include "hosts/image/caption.h"

namespace orbhost::image {

void writeCaption(Image&, int, int, int, const std::string&) {}

}  // namespace orbhost::image
