// The records of the code-block coders. Of both the host sees the address alone, and the size of
// the decoder's; each begins with a tag by which the functions know it.
#ifndef ORB_JPEG2K_CODEBLOCK_RECORDS_H
#define ORB_JPEG2K_CODEBLOCK_RECORDS_H

#include "jpeg2k/tables/contexts.h"
#include "orb90legacy/jpeg2k.h"

namespace orb {

// The four bytes of a tag in memory, read as a number.
constexpr Orb32u tagOf(const char (&text)[5]) {
  return static_cast<Orb32u>(text[0]) | static_cast<Orb32u>(text[1]) << 8 |
         static_cast<Orb32u>(text[2]) << 16 | static_cast<Orb32u>(text[3]) << 24;
}
constexpr Orb32u kEncodeTag = tagOf("DSML");
constexpr Orb32u kDecodeTag = tagOf("PAMC");

// Code-block styles (T.800 table A.19, in an order of this library's own): those that encoder and
// decoder share, those of the encoder, those of the decoder.
enum {
  kStyleCausal = 1,
  kStyleBypass = 2,
  kStyleTerminateAll = 4,
  kStyleResetContexts = 8,
  kStyleSegmentationSymbols = 16,

  kEncodeExactLastPlane = 32,

  kDecodeFallBack = 0x10000,
  kDecodeKeepSamples = 0x20000,
  kDecodeKeepMidpoints = 0x40000,
  kDecodeKeepSignificance = 0x80000,
  kDecodeCheckTerminations = 0x100000,
};

// The four decisions that may end a cleanup pass, the first one highest (T.800 D.5).
constexpr Orb32u kSegmentationSymbols = 10;

// A coding pass of a block: a cleanup pass on the top plane, and three on each of up to 30 below.
struct OrbCodingPass {
  // From the modelling stage.
  Orb32s gain;      // the decrease of distortion, in units of ...
  Orb32s exponent;  // ... 2 to the power of this
  Orb32s decisionCount;
  Orb32s isRaw;
  // From the output stage; of an earlier block until it has been there.
  Orb32s length;  // bytes delivered
  Orb32s rate;    // bytes of the block that are needed to decode it
};
constexpr Orb32s kMaxPasses = 1 + 3 * 30;

// The MQ coder between two decisions (T.800 C.2).
struct OrbMqEncoder {
  Orb32u a;
  Orb32u c;
  Orb32u ct;
  Orb32u b;        // the byte in hand, to which a carry may still be added
  Orb32u hasByte;  // 0 while the byte in hand is the one in front of the first
};

// The raw bits of the bypass that do not yet fill a byte (T.800 D.6).
struct OrbRawWriter {
  Orb32u bits;
  Orb32s position;  // of the next bit, from 7, or from 6 behind a byte of 255
  Orb32u follows255;
};

}  // namespace orb

struct OrbiEncodeState_JPEG2K {
  Orb32u tag;
  // How many stripe words there is room for behind the record, and for the decisions of how many
  // columns behind these.
  Orb32s wordCapacity;
  Orb32s columnCapacity;

  Orb32s style;
  Orb32s terminationMode;
  Orb32s passCount;
  orb::OrbCodingPass passes[orb::kMaxPasses];

  // Where the output stage stands.
  Orb32s pass;
  Orb32s decisionsBefore;  // those of the passes before
  Orb32s decisionsCoded;   // of this pass
  Orb32s bytesBefore;
  Orb32s bytesDelivered;                  // of the block
  Orb32u lastByte;                        // the last of them
  Orb32u contexts[orb::orbContextCount];  // entries of orbMqStates
  orb::OrbMqEncoder mq;
  Orb32s hasCoded;  // whether the MQ coder has anything to flush
  orb::OrbRawWriter raw;
  // Bytes for which there was no room.
  Orb32s waitingCount;
  Orb8u waiting[16];
};

// What the next pass of a progressive decoder is. A raw pair is a significance and a refinement
// pass of the bypass.
enum OrbNextPass {
  kNextCleanup,
  kNextRefinement,
  kNextSignificance,
  kNextCleanupBehindRaw,
  kNextRawRefinement,
  kNextRawSignificance,
};

// At any address. The stripe words stand behind it, from the next multiple of 32 bytes on.
struct [[gnu::packed]] OrbiDecodeCBProgrState_JPEG2K {
  Orb32u tag;
  Orb32s isAttached;
  Orb32s* dst;
  Orb32s dstStep;
  OrbiSize size;
  Orb32s subband;
  Orb32s flags;
  Orb32s bypassPlane;  // raw passes follow the cleanup pass of this plane, if there are any
  Orb32s plane;        // of the next pass; below 0 when all are decoded
  Orb32s nextPass;
  Orb32s passCounter;
  Orb32s hasFailed;
  Orb32u contexts[orb::orbContextCount];  // entries of orbMqStates
};
// Of what the host gives, the words may take all but 388 bytes.
constexpr Orb32s kDecodeRecordRoom = 388;
static_assert(sizeof(OrbiDecodeCBProgrState_JPEG2K) + 31 <= kDecodeRecordRoom,
              "the record and its alignment have to fit");

#endif
