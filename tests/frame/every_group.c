/* Calls functions of every dispatch group through the door, and tells which build answers and what
 * came out, a line for each group. scripts/check_processors.sh runs it on processors of every
 * class.
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "orb90legacy.h"

/* FNV-1a: lines are compared, nothing more. */
static unsigned digest(const void* data, size_t size) {
  const unsigned char* const bytes = (const unsigned char*)data;
  unsigned hash = 2166136261u;
  for (size_t i = 0; i < size; ++i) hash = (hash ^ bytes[i]) * 16777619u;
  return hash;
}

static void tell(const char* group, OrbStatus status, const void* data, size_t size) {
  printf("%s: status %d, result %08x\n", group, (int)status, digest(data, size));
}

enum { kWidth = 70, kHeight = 40, kSize = kWidth * kHeight };
static const OrbiSize kRegion = {kWidth - 4, kHeight - 4};

static Orb8u bytes[3 * kSize];
static Orb16s words[kSize];
static Orb32f floats[kSize];

static void samples(void) {
  Orb16s* const channels[2] = {words, words + kSize / 2};
  Orb16s joined[kSize];
  const OrbStatus status = legacy90orbsInterleave_16s(channels, 2, kSize / 2, joined);
  tell("samples", status, joined, sizeof joined);
}

static void video(void) {
  Orb8u colours[3 * kSize];
  const OrbiSize all = {kWidth, kHeight};
  const OrbStatus status = legacy90orbiBGR565ToBGR_16u8u_C3R(
      (const Orb16u*)words, kWidth * (Orb32s)sizeof *words, colours, 3 * kWidth, all);
  tell("video", status, colours, sizeof colours);
}

static void compression(void) {
  Orb8u sorted[kSize], packed[2 * kSize];
  Orb8u* source = sorted;
  Orb32s row = 0, left = kSize, length = sizeof packed, room = 0;
  OrbStatus status = legacy90orbsBWTGetSize_SmallBlock_8u(kSize, &room);
  Orb8u* const scratch = (Orb8u*)malloc((size_t)room);
  if (status == orbStsNoErr)
    status = legacy90orbsBWTFwd_SmallBlock_8u(bytes, sorted, kSize, &row, scratch);
  if (status == orbStsNoErr) status = legacy90orbsEncodeRLE_8u(&source, &left, packed, &length);
  free(scratch);
  tell("compression", status, packed, (size_t)length);
}

static void images(void) {
  Orb8u filtered[kSize] = {0};
  const Orb32s corner = 2 * kWidth + 2;
  const OrbStatus status =
      legacy90orbiFilterGauss_8u_C1R(bytes + corner, kWidth, filtered, kWidth, kRegion, orbMask5x5);
  tell("images", status, filtered, sizeof filtered);
}

static void jpeg(void) {
  Orb8u divisors[64];
  Orb16u table[64];
  Orb16s block[64];
  memset(divisors, 16, sizeof divisors);
  OrbStatus status = legacy90orbiQuantFwdTableInit_JPEG_8u16u(divisors, table);
  if (status == orbStsNoErr)
    status = legacy90orbiDCTQuantFwd8x8LS_JPEG_8u16s_C1R(bytes, kWidth, block, table);
  tell("JPEG", status, block, sizeof block);
}

static void wavelets(void) {
  Orb16s low[kSize] = {0}, high[kSize] = {0};
  const OrbiSize half = {kWidth / 2 - 2, kHeight};
  OrbStatus status = legacy90orbiWTFwdRow_B53_JPEG2K_16s_C1R(
      words + 2, kWidth * (Orb32s)sizeof *words, low, kWidth, high, kWidth, half, 0);
  tell("JPEG 2000", status, low, sizeof low);
}

static void photo(void) {
  Orb16s block[16 * 16];
  memcpy(block, words, sizeof block);
  const OrbStatus status =
      legacy90orbiPCTFwd16x16_JPEGXR_16s_C1IR(block, 16 * (Orb32u)sizeof *block);
  tell("JPEG XR", status, block, sizeof block);
}

static void tiff(void) {
  Orb8u packed[2 * kSize] = {0};
  Orb32s cursor = 0;
  const OrbStatus status =
      legacy90orbiPackBitsRow_TIFF_8u_C1(bytes, kSize, packed, &cursor, sizeof packed);
  tell("TIFF", status, packed, (size_t)cursor);
}

static void matrices(void) {
  Orb64f matrix[25], factors[25];
  Orb32s index[5];
  for (int i = 0; i < 25; ++i) matrix[i] = i * i % 7 - 3;
  const Orb32s row = 5 * (Orb32s)sizeof *matrix, column = (Orb32s)sizeof *matrix;
  const OrbStatus status =
      legacy90orbmLUDecomp_m_64f(matrix, row, column, index, factors, row, column, 5);
  tell("matrices", status, index, sizeof index);
}

static void scaledSamples(void) {
  Orb32f* const channels[2] = {floats, floats + kSize / 2};
  Orb16s joined[kSize];
  const OrbStatus status = legacy90orbsJoinScaled_32f16s_D2L(channels, 2, kSize / 2, joined);
  tell("scaled samples", status, joined, sizeof joined);
}

static void dv(void) {
  Orb16s block[64];
  for (int i = 0; i < 64; ++i) block[i] = (Orb16s)(words[i] % 256);
  const OrbStatus status = legacy90orbiDCT2x4x8Inv_16s_C1I(block);
  tell("DV", status, block, sizeof block);
}

int main(void) {
  unsigned state = 1;
  for (int i = 0; i < 3 * kSize; ++i) {
    state = state * 1664525u + 1013904223u;
    bytes[i] = (Orb8u)(state >> (i % 5 ? 26 : 24));
    words[i % kSize] = (Orb16s)(state >> 20);
    floats[i % kSize] = (Orb32f)(state >> 8) / (1 << 23) - 1.0f;
  }
  printf("%s\n", legacy90orbjGetLibVersion()->name);
  printf("%s\n", legacy90orbdcGetLibVersion()->name);
  samples();
  video();
  compression();
  images();
  jpeg();
  wavelets();
  photo();
  tiff();
  matrices();
  scaledSamples();
  dv();
  return 0;
}
