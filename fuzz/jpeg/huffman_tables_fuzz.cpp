// The lists of a DHT segment, from a file that nobody has checked: what the encoder accepts has to
// be a prefix code that the decoder accepts, too, and reads back.
#include <algorithm>
#include <cstring>
#include <numeric>

#include "fuzz/support/input.h"
#include "jpeg/huffman_records.h"

using orbfuzz::Input;
using orbfuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  const std::vector<Orb8u> bits = input.bytes(16);
  const int codes = std::accumulate(bits.begin(), bits.end(), 0);
  const std::vector<Orb8u> vals = input.bytes(static_cast<size_t>(std::max(codes, 1)));
  OrbiEncodeHuffmanSpec encoder;
  OrbiDecodeHuffmanSpec decoder;
  const OrbStatus encodes =
      legacy90orbiEncodeHuffmanSpecInit_JPEG_8u(bits.data(), vals.data(), &encoder);
  const OrbStatus decodes =
      legacy90orbiDecodeHuffmanSpecInit_JPEG_8u(bits.data(), vals.data(), &decoder);
  if (encodes != orbStsNoErr) return 0;
  require(decodes == orbStsNoErr);

  // A DC category of up to 15 with a value of ones, as the only block of a scan.
  for (int category = 0; category < 16; ++category) {
    if (encoder.entries[category] == 0 || encoder.entries[0] == 0) continue;
    Orb16s block[64] = {static_cast<Orb16s>((1 << category) - 1)};
    OrbiEncodeHuffmanState writer;
    legacy90orbiEncodeHuffmanStateInit_JPEG_8u(&writer);
    Orb8u scan[64];
    Orb32s length = 0;
    Orb16s lastDC = 0;
    require(legacy90orbiEncodeHuffman8x8_JPEG_16s1u_C1(block, scan, sizeof scan, &length, &lastDC,
                                                       &encoder, &encoder, &writer,
                                                       0) == orbStsNoErr);
    require(legacy90orbiEncodeHuffman8x8_JPEG_16s1u_C1(nullptr, scan, sizeof scan, &length, nullptr,
                                                       nullptr, nullptr, &writer,
                                                       1) == orbStsNoErr);
    OrbiDecodeHuffmanState reader;
    legacy90orbiDecodeHuffmanStateInit_JPEG_8u(&reader);
    Orb16s decoded[64];
    Orb32s position = 0, marker = 0;
    lastDC = 0;
    require(legacy90orbiDecodeHuffman8x8_JPEG_1u16s_C1(scan, length, &position, decoded, &lastDC,
                                                       &marker, &decoder, &decoder,
                                                       &reader) == orbStsNoErr);
    require(std::memcmp(decoded, block, sizeof block) == 0);
  }
  return 0;
}
