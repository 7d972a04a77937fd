// A picture by every operation and method, as a sheet and as a page.
#ifndef ORB_HOSTS_IMAGE_GALLERY_H
#define ORB_HOSTS_IMAGE_GALLERY_H

#include <functional>
#include <string>
#include <vector>

#include "hosts/image.h"
#include "hosts/image/picture.h"

namespace orbhost::image {

// What the gallery shows: a file name without its extension, a caption, and how it is made from the
// sample.
struct Exhibit {
  std::string name;
  std::string caption;
  std::function<Image(const Image& sample)> make;
};

// Filters, morphology, rotation and warp.
void addOperations(std::vector<Exhibit>& exhibits);
// Resizing.
void addResizes(std::vector<Exhibit>& exhibits);

// All of them. A family of operations that comes is one line here.
std::vector<Exhibit> allExhibits();

// Writes the directory's sheet.png, index.html, and a file for each exhibit. The sample is the
// middle of the picture.
void writeGallery(const Picture& picture, const std::string& directory);

}  // namespace orbhost::image

#endif
