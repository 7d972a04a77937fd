// A build for a target that has no libpng.
#include "hosts/error.h"
#include "hosts/png_file.h"

namespace orbhost {

Image parsePng(ByteView, Transparency) {
  throw Error("this orb was built without libpng and reads no PNG");
}

Bytes formatPng(const Image&) {
  throw Error("this orb was built without libpng and writes no PNG");
}

}  // namespace orbhost
