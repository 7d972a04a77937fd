// Raw DV frames that nobody has checked: the host decodes or counts every segment. Frames are cut
// behind two sequences, which is faster.
#include <vector>

#include "fuzz/support/input.h"
#include "hosts/dv/decode.h"
#include "hosts/error.h"

namespace {

using orbfuzz::Input;
using orbfuzz::require;
using orbhost::Bytes;
using orbhost::dv::Decoder;
using orbhost::dv::Format;
using orbhost::dv::kDifBytes;
using orbhost::dv::kMacroblocksOfSegment;
using orbhost::dv::Picture;
using orbhost::dv::Segment;

// A frame whose identifications are right. Its blocks have any mode, class and DC, and mostly end
// at once.
Bytes someFrame(const Format& format, Input& input) {
  Bytes frame(2 * orbhost::dv::kSequenceBytes, 0xFF);
  frame[0] = 0x1F;
  frame[1] = input.byte();
  frame[4] = static_cast<uint8_t>(format.application == 0 ? 0 : 1);
  uint8_t* const vaux = frame.data() + 3 * kDifBytes;
  vaux[0] = 0x56;
  vaux[3] = 0x60;
  vaux[6] = static_cast<uint8_t>((format.is50 ? 0x20 : 0) | format.streamType);
  const uint8_t heads[4] = {input.byte(), input.byte(), input.byte(), input.byte()};
  unsigned next = 0;
  for (const Segment& segment : placeSegments(format)) {
    if (segment.offset >= frame.size()) break;
    for (int m = 0; m < kMacroblocksOfSegment; ++m) {
      uint8_t* dif = frame.data() + segment.offset + kDifBytes * m;
      dif[0] = 0x96;
      dif[1] = static_cast<uint8_t>(segment.sequence << 4);
      dif[2] = static_cast<uint8_t>(segment.firstDif + m);
      dif[3] = heads[next % 4] & 0x0F;
      for (size_t at = 4; at < kDifBytes; at += 2) {
        dif[at] = 0x66;
        dif[at + 1] = static_cast<uint8_t>((heads[next++ % 4] & 0x70) | 6);
      }
    }
  }
  return frame;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  const std::vector<Format>& formats = orbhost::dv::formats();
  const Format& format = formats[input.byte() % formats.size()];
  Bytes frame = someFrame(format, input);
  require(&orbhost::dv::detectFormat(frame) == &format);
  for (int changes = input.byte(); changes > 0; --changes) {
    const size_t at = static_cast<size_t>(input.byte() << 8 | input.byte());
    frame[at % frame.size()] = input.byte();
  }
  if (input.byte() % 2 == 1) frame.resize(frame.size() * input.byte() / 256);
  Decoder decoder(format);
  Picture picture(format);
  const int damaged = decoder.decode(frame, picture);
  require(damaged >= 0 && damaged <= decoder.segments());
  try {
    orbhost::dv::detectFormat(frame);
  } catch (const orbhost::Error& error) {
    require(error.what()[0] != 0);
  }
  return 0;
}
