#include "hosts/jpeg/decode.h"

#include "hosts/error.h"
#include "hosts/jpeg/block_decode.h"
#include "hosts/jpeg/lossless_decode.h"
#include "hosts/jpeg/picture.h"

namespace orbhost::jpeg {

void checkOptions(const DecodeOptions& options) {
  const int scale = options.scale;
  if (scale != 1 && scale != 2 && scale != 4 && scale != 8) {
    throw Error("a picture is decoded at 1, 1/2, 1/4 or 1/8 of its size");
  }
  if (options.scansTo < 0) throw Error("a picture is shown after 1 scan or more");
}

Image decodeJpeg(ByteView file, const DecodeOptions& options) {
  checkOptions(options);
  MarkerReader markers(file);
  if (!markers.nextScan()) throw Error("the file has no scan");
  if (markers.frame().isLossless()) {
    if (options.scale != 1) throw Error("a lossless picture is decoded at its own size only");
    return decodeLossless(file, markers, options.scansTo);
  }
  const Layout layout(markers.frame());
  checkSize(file, markers, layout);
  PictureBuilder picture(markers, layout, options.scale);
  decodeBlocks(file, markers, layout, options.scansTo, picture);
  return picture.takeImage();
}

}  // namespace orbhost::jpeg
