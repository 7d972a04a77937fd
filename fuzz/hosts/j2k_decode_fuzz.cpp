// Fuzzes the JPEG 2000 host: codestreams whose headers make sense for the most part and whose
// packets are any bytes, or files that are nothing but any bytes.
#include <cstddef>
#include <cstdint>

#include "fuzz/support/input.h"
#include "hosts/error.h"
#include "hosts/j2k/decode.h"
#include "hosts/j2k/picture.h"
#include "tests/hosts/support/codestream_parts.h"

namespace {

using orbfuzz::Input;
using orbhost::Bytes;
using orbtest::append;
using orbtest::appendDoubleWord;
using orbtest::appendWord;
using orbtest::segmentOf;

Bytes sizeSegment(Input& input, int components) {
  Bytes size;
  appendWord(size, 0);
  const uint32_t x0 = input.byte() % 32;
  const uint32_t y0 = input.byte() % 32;
  appendDoubleWord(size, x0 + 1 + input.byte() % 64);
  appendDoubleWord(size, y0 + 1 + input.byte() % 64);
  appendDoubleWord(size, x0);
  appendDoubleWord(size, y0);
  appendDoubleWord(size, x0 + 1 + input.byte() % 64);
  appendDoubleWord(size, y0 + 1 + input.byte() % 64);
  appendDoubleWord(size, 0);
  appendDoubleWord(size, 0);
  appendWord(size, static_cast<uint32_t>(components));
  for (int c = 0; c < components; ++c) {
    size.push_back(input.byte() & 0x9F);
    size.push_back(1 + input.byte() % 3);
    size.push_back(1 + input.byte() % 3);
  }
  return segmentOf(0xFF51, size);
}

Bytes styleSegment(Input& input) {
  Bytes style;
  const uint8_t flags = input.byte() & 7;
  const uint8_t levels = input.byte() % 6;
  style.push_back(flags);
  style.push_back(input.byte() % 5);
  appendWord(style, 1 + input.byte() % 4u);
  style.push_back(input.byte() % 2);
  style.push_back(levels);
  style.push_back(input.byte() % 4);
  style.push_back(input.byte() % 4);
  style.push_back(input.byte() % 64);
  style.push_back(input.byte() % 2);
  for (int r = 0; (flags & 1) != 0 && r <= levels; ++r) style.push_back(input.byte());
  return segmentOf(0xFF52, style);
}

Bytes quantisationSegment(Input& input) {
  Bytes quantisation;
  const uint8_t style = input.byte() & 0xE3;
  quantisation.push_back(style);
  const int steps = (style & 3) == 0 ? 16 : (style & 3) == 1 ? 2 : 32;
  append(quantisation, input.bytes(static_cast<size_t>(steps)));
  return segmentOf(0xFF5C, quantisation);
}

Bytes codestreamFrom(Input& input) {
  Bytes file = {0xFF, 0x4F};
  const int components = 1 + input.byte() % 4;
  append(file, sizeSegment(input, components));
  append(file, styleSegment(input));
  append(file, quantisationSegment(input));
  static constexpr int kOthers[] = {0xFF53, 0xFF5D, 0xFF5E, 0xFF5F, 0xFF60};
  for (int others = input.byte() % 4; others > 0; --others) {
    const int marker = kOthers[input.byte() % 5];
    append(file, segmentOf(marker, input.bytes(input.byte() % 32)));
  }
  for (int parts = input.byte() % 4; parts > 0; --parts) {
    const int tile = input.byte() % 4;
    Bytes segments;
    if (input.byte() % 4 == 0) segments = segmentOf(0xFF61, input.bytes(input.byte()));
    append(file, orbtest::tilePartOf(tile, 0, segments, input.bytes(input.byte())));
  }
  append(file, orbtest::tilePartOf(input.byte() % 2, 0, {}, input.rest()));
  appendWord(file, 0xFFD9);
  return file;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  orbhost::j2k::DecodeOptions options;
  options.freeSamples = 1 << 16;
  options.reduce = input.byte() % 4;
  options.layers = 1 + input.byte() % 4;
  const Bytes file = input.byte() % 8 != 0 ? codestreamFrom(input) : input.rest();
  try {
    const orbhost::j2k::Decoded decoded = orbhost::j2k::decodeJ2k(file, options);
    colourPicture(decoded);
    allChannels(decoded);
  } catch (const orbhost::Error&) {
  }
  return 0;
}
