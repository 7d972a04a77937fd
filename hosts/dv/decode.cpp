#include "hosts/dv/decode.h"

#include <algorithm>
#include <cstring>

#include "hosts/dv/codes.h"
#include "hosts/dv/quantisation.h"
#include "hosts/error.h"

namespace orbhost::dv {

namespace {

constexpr int kBlock = 64;
constexpr int kDv100Blocks = 8;

OrbDVHuffTable* makeTable() {
  const CodeDescriptions codes = describeCodes();
  OrbDVHuffTable* table = nullptr;
  if (legacy90orbiInitAllocHuffmanTable_DV_32u(codes.upTo9Bits.data(), codes.longer.data(),
                                               &table) != orbStsNoErr) {
    throw std::bad_alloc();
  }
  return table;
}

// Whether the DIF blocks of a segment are there, are those that belong there, and do not say of
// themselves that they hold an error.
bool isSound(ByteView frame, const Segment& segment) {
  constexpr int kErrors[] = {7, 15};  // of the status (STA)
  if (segment.offset + kMacroblocksOfSegment * kDifBytes > frame.size) return false;
  for (int m = 0; m < kMacroblocksOfSegment; ++m) {
    const uint8_t* const dif = frame.data + segment.offset + kDifBytes * m;
    if (sectionOf(dif) != Section::kVideo || dif[1] >> 4 != segment.sequence ||
        dif[2] != segment.firstDif + m) {
      return false;
    }
    const int status = dif[3] >> 4;
    if (status == kErrors[0] || status == kErrors[1]) return false;
  }
  return true;
}

// In 4:2:2 of 50 Mbit/s these hold no picture.
bool isUnused(const Format& format, int block) {
  const int within = block % 6;
  return format.macroblocks == Macroblocks::k422 && (within == 1 || within == 3);
}

// Two blocks one above the other hold the even and the odd lines; afterwards the upper and the
// lower ones.
void weaveFields(int16_t* macroblock) {
  constexpr int kPairs[4][2] = {{0, 2}, {1, 3}, {4, 5}, {6, 7}};
  for (const auto& pair : kPairs) {
    int16_t* const upper = macroblock + kBlock * pair[0];
    int16_t* const lower = macroblock + kBlock * pair[1];
    int16_t lines[2 * kBlock];
    for (int y = 0; y < 16; ++y) {
      std::memcpy(lines + 8 * y, (y % 2 == 0 ? upper : lower) + y / 2 * 8, 8 * sizeof(int16_t));
    }
    std::memcpy(upper, lines, kBlock * sizeof(int16_t));
    std::memcpy(lower, lines + kBlock, kBlock * sizeof(int16_t));
  }
}

}  // namespace

Decoder::Decoder(const Format& format)
    : format_(format), segments_(placeSegments(format)), table_(makeTable()) {}

int Decoder::decode(ByteView frame, Picture& picture) {
  // The second byte of the header says which channels the frame has.
  const bool isSecondFrame = format_.isProgressive && frame.size > 1 &&
                             sectionOf(frame.data) == Section::kHeader && (frame[1] & 0x0C) == 0;
  int damaged = 0;
  for (const Segment& segment : segments_) {
    if (isSound(frame, segment) && decodeBlocks(frame, segment)) {
      write(segment, isSecondFrame, picture);
    } else {
      ++damaged;
    }
  }
  return damaged;
}

// The samples of a segment. Every block of a sound one has its end.
bool Decoder::decodeBlocks(ByteView frame, const Segment& segment) {
  const int blocks = kMacroblocksOfSegment * format_.blocksOfMacroblock();
  std::memset(blocks_, 0, sizeof(int16_t) * kBlock * blocks);
  const auto decodeSegment = format_.macroblocks == Macroblocks::kDv100
                                 ? legacy90orbiHuffmanDecodeSegment_DV100_8u16s
                                 : legacy90orbiHuffmanDecodeSegment_DV_8u16s;
  decodeSegment(frame.data + segment.offset, scanTables(), table_.get(), blocks_, info_);
  for (int n = 0; n < blocks; ++n) {
    if (!BlockInfo(info_[n]).hasEnded && !isUnused(format_, n)) return false;
  }
  transform(blocks);
  return true;
}

void Decoder::transform(int blocks) {
  static const std::vector<uint16_t> kOnes(kBlock, 1);
  for (int n = 0; n < blocks; ++n) {
    if (isUnused(format_, n)) continue;
    const BlockInfo info(info_[n]);
    int16_t* const block = blocks_ + kBlock * n;
    if (info.lastPosition == 0) {
      // DC alone: 4 times the coded value, of which both transforms make an eighth, rounded.
      std::fill_n(block, kBlock, static_cast<int16_t>(((block[0] >> 5) + 4) >> 3));
      continue;
    }
    if (format_.macroblocks == Macroblocks::kDv100) {
      const bool isChroma = n % kDv100Blocks >= 4;
      legacy90orbiQuantWeightBlockInv_DV100_16s_C1I(block, dv100Weights(format_, isChroma),
                                                    dv100Step(info));
    } else {
      dequantise(block, info);
      if (info.mode == 1) {
        legacy90orbiDCT2x4x8Inv_16s_C1I(block);
        continue;
      }
    }
    legacy90orbiDCTQuantInv8x8_JPEG_16s_C1I(block, kOnes.data());
  }
  if (format_.macroblocks != Macroblocks::kDv100) return;
  // The mode bit of a macroblock's first block says that its upper blocks are one field.
  for (int m = 0; m < kMacroblocksOfSegment; ++m) {
    if (BlockInfo(info_[m * kDv100Blocks]).mode == 1) {
      weaveFields(blocks_ + kBlock * kDv100Blocks * m);
    }
  }
}

void Decoder::write(const Segment& segment, bool isSecondFrame, Picture& picture) {
  const int macroblockSize = kBlock * format_.blocksOfMacroblock();
  const int16_t* blocks[kMacroblocksOfSegment];
  uint8_t* pixels[2 * kMacroblocksOfSegment];
  for (int m = 0; m < kMacroblocksOfSegment; ++m) {
    blocks[m] = blocks_ + macroblockSize * m;
    pixels[m] = picture.at(segment.macroblock[m].x, segment.macroblock[m].y);
  }
  switch (format_.macroblocks) {
    case Macroblocks::k411: {
      // Those at the edge have a function of their own; the others come before the first null.
      constexpr int kEdge = 704;
      int others = 0;
      for (int m = 0; m < kMacroblocksOfSegment; ++m) {
        if (segment.macroblock[m].x == kEdge) {
          legacy90orbiYCrCb411ToYCbCr422_EdgeDV_16s8u_P3C2R(blocks[m], pixels[m], picture.step());
        } else {
          blocks[others] = blocks[m];
          pixels[others] = pixels[m];
          ++others;
        }
      }
      std::fill(blocks + others, blocks + kMacroblocksOfSegment, nullptr);
      legacy90orbiYCrCb411ToYCbCr422_5MBDV_16s8u_P3C2R(blocks, pixels, picture.step());
      break;
    }
    case Macroblocks::k420:
      legacy90orbiYCrCb420ToYCbCr422_5MBDV_16s8u_P3C2R(blocks, pixels, picture.step());
      break;
    case Macroblocks::k422:
      legacy90orbiYCrCb422ToYCbCr422_5MBDV_16s8u_P3C2R(blocks, pixels, picture.step());
      break;
    case Macroblocks::kDv100:
      // One half above the other; in the last 8 lines of 1080 beside it.
      for (int m = 0; m < kMacroblocksOfSegment; ++m) {
        Place place = segment.macroblock[m];
        if (isSecondFrame) place = inSecondFrame(place);
        const bool isLastLine = place.y + 8 == picture.height();
        pixels[2 * m] = picture.at(place.x, place.y);
        pixels[2 * m + 1] =
            isLastLine ? picture.at(place.x + 16, place.y) : picture.at(place.x, place.y + 8);
      }
      legacy90orbiYCrCb422ToYCbCr422_10HalvesMB16x8_DV100_16s8u_P3C2R(blocks_, pixels,
                                                                      picture.step());
      break;
  }
}

}  // namespace orbhost::dv
