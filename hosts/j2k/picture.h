// From components to pictures: the channels that they make, in one size and one range.
#ifndef ORB_HOSTS_J2K_PICTURE_H
#define ORB_HOSTS_J2K_PICTURE_H

#include "hosts/image.h"
#include "hosts/j2k/decode.h"

namespace orbhost::j2k {

// The colours: grey, RGB or CMYK. Palettes are looked up, sYCC becomes RGB, and opacity is dropped.
// Without a word on colours in the file one or two components are grey, and of more the first three
// are RGB.
Image colourPicture(const Decoded& decoded);

// All channels, opacity too, behind the colours: what they are is the tuple type of a PAM, which is
// empty if there is no name for it.
struct Channels {
  Image image;
  const char* tupleType;
};
Channels allChannels(const Decoded& decoded);

// One component as it was coded, in its own size and precision: signed samples are moved up to
// begin at 0, and those of more than 16 bits lose the lowest.
Image componentPicture(const Decoded& decoded, int component);

}  // namespace orbhost::j2k

#endif
