// What the encoders of all processes put in front of their scans.
#ifndef ORB_HOSTS_JPEG_ENCODE_FRAME_H
#define ORB_HOSTS_JPEG_ENCODE_FRAME_H

#include "hosts/image.h"
#include "hosts/jpeg/colour.h"
#include "hosts/jpeg/encode.h"
#include "hosts/jpeg/marker_writer.h"

namespace orbhost::jpeg {

// A frame for a picture, with the usual names of its components, which all have every sample.
// Chroma has table 1. Throws an Error if the picture is too large for the format.
Frame makeFrame(const Image& image, int marker, int precision, ColourSpace colourSpace);

// The segment that tells readers what the components are.
void writeColourSpace(ColourSpace colourSpace, MarkerWriter& markers);

// What a scan of `mcusPerRow` MCUs has as its restart interval. Throws an Error if that is too
// large.
int restartIntervalFor(const EncodeOptions& options, int mcusPerRow);

}  // namespace orbhost::jpeg

#endif
