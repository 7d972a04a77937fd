#include "hosts/image/picture.h"

#include <utility>

#include "hosts/file.h"
#include "hosts/image_convert.h"
#include "hosts/image_file.h"
#include "hosts/png_file.h"

namespace orbhost::image {

Picture readPicture(const std::string& path) {
  return withFile(path, [&] {
    const Bytes file = readFile(path);
    const bool isPng = file.size() > 4 && file[0] == 0x89 && file[1] == 'P';
    Image pixels = isPng ? parsePng(file, Transparency::kKept) : parseImage(file);
    if (pixels.maximum() != 255) pixels = withMaximum(pixels, 255);
    const bool isTransparent = isPng && pixels.channels() == 4;
    return Picture{std::move(pixels), isTransparent};
  });
}

void writePicture(const std::string& path, const Picture& picture) {
  withFile(path, [&] {
    const ImageFormat format = imageFormatOf(path);
    if (!picture.isTransparent) return writeFile(path, formatImage(picture.pixels, format));
    if (format != ImageFormat::kPng) {
      throw Error("a transparent picture fits a .png alone");
    }
    writeFile(path, formatPng(picture.pixels));
  });
}

}  // namespace orbhost::image
