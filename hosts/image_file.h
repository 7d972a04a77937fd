// Pictures as files: PNG, the portable any-maps PGM, PPM and PAM, and BMP, which is only written.
#ifndef ORB_HOSTS_IMAGE_FILE_H
#define ORB_HOSTS_IMAGE_FILE_H

#include <string>

#include "hosts/bytes.h"
#include "hosts/image.h"

namespace orbhost {

enum class ImageFormat {
  kPng,
  kPgm,
  kPpm,
  kPnm,  // PGM or PPM, as the picture is
  kPam,
  kBmp,
};

// The format that a file's name asks for by its extension; an Error if none.
ImageFormat imageFormatOf(const std::string& path);

// A picture from a file's bytes, whose content says which format it is. Palettes are looked up, and
// transparency is dropped.
Image parseImage(ByteView file);

// A file's bytes. Only PAM holds inks: for other formats they become the light that they leave. A
// grey picture becomes a colour one if the format has only those; a colour picture in a format that
// has only grey is an Error.
Bytes formatImage(const Image& image, ImageFormat format);

}  // namespace orbhost

#endif
