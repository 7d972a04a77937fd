// Lossless JPEG files (ITU-T T.81 annex H) from pixels.
#ifndef ORB_HOSTS_JPEG_LOSSLESS_ENCODE_H
#define ORB_HOSTS_JPEG_LOSSLESS_ENCODE_H

#include "hosts/bytes.h"
#include "hosts/image.h"
#include "hosts/jpeg/encode.h"

namespace orbhost::jpeg {

// The picture as `options.lossless` wants it, in one scan with a table made for each component. RGB
// is not converted, and an Adobe segment says so; inks are stored as light, as such files have
// them.
Bytes encodeLossless(const Image& image, const EncodeOptions& options);

}  // namespace orbhost::jpeg

#endif
