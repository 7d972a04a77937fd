// JPEG XR files that nobody has checked: the host's decoder gives a picture or a message.
#include <vector>

#include "fuzz/support/input.h"
#include "hosts/error.h"
#include "hosts/jxr/decode.h"
#include "hosts/jxr/encode.h"

namespace {

using orbfuzz::Input;
using orbhost::Bytes;
using orbhost::Image;
using orbhost::jxr::encodeJxr;
using orbhost::jxr::EncodeOptions;
using orbhost::jxr::Subsampling;

void decode(const Bytes& file) {
  try {
    const Image image = orbhost::jxr::decodeJxr(file);
    orbfuzz::require(image.width() > 0 && image.height() > 0);
  } catch (const orbhost::Error& error) {
    orbfuzz::require(error.what()[0] != 0);
  }
}

// A file of a small picture, which is coded as the first bytes say.
Bytes someFile(Input& input) {
  EncodeOptions options;
  options.quantiser = input.byte();
  options.subsampling = static_cast<Subsampling>(input.byte() % 3);
  options.overlap = input.byte() % 3;
  options.frequencyOrder = input.byte() % 2 == 1;
  options.trim = input.byte() % 16;
  options.tileWidth = input.byte() % 3 * 32;
  options.tileHeight = input.byte() % 3 * 16;
  options.hardTiles = input.byte() % 2 == 1;
  // One of its tiles would be too narrow.
  if (options.hardTiles && options.tileWidth > 0) options.overlap %= 2;
  constexpr int kChannels[] = {1, 3, 4};
  Image image(36, 20, kChannels[input.byte() % 3], input.byte() % 2 == 0 ? 255 : 65535);
  for (size_t i = 0; i < image.size(); ++i) image.row(0)[i] = input.byte();
  return encodeJxr(image, options);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  if (input.byte() % 2 == 0) {
    decode(input.rest());
    return 0;
  }
  // Damage that gets behind the headers.
  struct Damage {
    size_t at;
    uint8_t flips;
  };
  std::vector<Damage> damages(input.byte() % 16);
  for (Damage& one : damages) {
    one.at = static_cast<size_t>(input.byte() << 8 | input.byte());
    one.flips = input.byte();
  }
  Bytes file = someFile(input);
  decode(file);
  for (const Damage& one : damages) {
    uint8_t& byte = file[one.at % file.size()];
    byte = static_cast<uint8_t>(byte ^ one.flips);
  }
  decode(file);
  return 0;
}
