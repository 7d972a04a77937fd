/* Data compression: the stages of a deflate coder (RFC 1951), each of which can stop at any byte of
 * its output and go on in the next call.
 *
 * A zlib or gzip header is the host's business, as is the loop over the stages.
 */
#ifndef ORB90LEGACY_COMPRESS_H
#define ORB90LEGACY_COMPRESS_H

#include "orb90legacy/status.h"
#include "orb90legacy/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------------------------------------
 * What the deflate encoder and the deflate decoder share
 * ---------------------------------------------------------------------------------------------- */

/* One step of a text, as the match search finds it and the block coders write it: a literal byte if
 * offset is 0, else lengthOrLiteral bytes (3 to 258) that are copied from offset bytes back (1 to
 * 32768).
 */
typedef struct OrbLZ77Pair {
  Orb16u lengthOrLiteral;
  Orb16u offset;
} OrbLZ77Pair;

/* How hard the match search tries. */
typedef Orb32s OrbLZ77Level;
enum {
  orbLZ77LevelFast = 0,  /* one candidate */
  orbLZ77LevelChain = 1, /* up to 16 candidates */
  orbLZ77LevelLazy = 2   /* up to 512 candidates, and a look at the next position */
};

/* The checksum of the data that an encoder keeps for the trailer. */
typedef Orb32s OrbLZ77Checksum;
enum {
  orbLZ77ChecksumNone = 0,
  orbLZ77ChecksumAdler32 = 1, /* RFC 1950, but for its start at 0 */
  orbLZ77ChecksumCRC32 = 2    /* RFC 1952 */
};

/* What is to follow the data of a call. */
typedef Orb32s OrbLZ77Flush;
enum {
  orbLZ77FlushNone = 0,    /* more data */
  orbLZ77FlushSync = 1,    /* an empty stored block, which ends at a byte boundary */
  orbLZ77FlushRestart = 2, /* the same, and the data of this call refer to no earlier data */
  orbLZ77FlushFinish = 3   /* nothing: the block is the last of the stream */
};

/* Where the host's loop stands. */
typedef Orb32s OrbLZ77Phase;
enum {
  orbLZ77PhaseInit = 0,  /* nothing is coded yet, and a dictionary may be set */
  orbLZ77PhaseMatch = 1, /* pairs are being made */
  orbLZ77PhaseCode = 2,  /* pairs are being turned into a block */
  orbLZ77PhaseFinal = 3  /* the last block is out, and the trailer is due */
};

/* The three kinds of blocks of RFC 1951. */
typedef Orb32s OrbLZ77BlockMode;
enum { orbLZ77BlockFixed = 0, orbLZ77BlockDynamic = 1, orbLZ77BlockStored = 2 };

/* An encoder of one stream, and a decoder of one. Opaque, without a tag: a record of the wrong kind
 * goes undetected. Neither may be moved or copied byte by byte, because it holds the address of the
 * pair list inside of it.
 */
typedef struct OrbLZ77EncState OrbLZ77EncState;
typedef struct OrbLZ77DecState OrbLZ77DecState;

/* Releases a record that InitAlloc allocated, the encoder's or the decoder's. Null is ignored. */
ORB_API void ORB_CALL legacy90orbsLZ77Free_8u(void* pState);

/* Takes the pair cursor out of a record, or puts one in: where the next pair stands or is to stand,
 * how many pairs are done, and how many are left or still fit. A new record's cursor stands at the
 * start of its own list, with 0 pairs done, and 65280 still to fit in an encoder, 8192 in a
 * decoder. The functions that make and use pairs take the cursor as arguments and leave the
 * record's alone, so a host may as well use a list of its own.
 *
 * Returns orbStsNullPtrErr for any pointer.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeLZ77GetPairs_8u(OrbLZ77Pair** ppPairs, Orb32s* pCount,
                                                             Orb32s* pLeft,
                                                             const OrbLZ77EncState* pState);
ORB_API OrbStatus ORB_CALL legacy90orbsDecodeLZ77GetPairs_8u(OrbLZ77Pair** ppPairs, Orb32s* pCount,
                                                             Orb32s* pLeft,
                                                             const OrbLZ77DecState* pState);
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeLZ77SetPairs_8u(OrbLZ77Pair* pPairs, Orb32s count,
                                                             Orb32s left, OrbLZ77EncState* pState);
ORB_API OrbStatus ORB_CALL legacy90orbsDecodeLZ77SetPairs_8u(OrbLZ77Pair* pPairs, Orb32s count,
                                                             Orb32s left, OrbLZ77DecState* pState);

/* Stores the phase that the host has set.
 *
 * Returns orbStsNullPtrErr for either pointer.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeLZ77GetStatus_8u(OrbLZ77Phase* pPhase,
                                                              const OrbLZ77EncState* pState);
ORB_API OrbStatus ORB_CALL legacy90orbsDecodeLZ77GetStatus_8u(OrbLZ77Phase* pPhase,
                                                              const OrbLZ77DecState* pState);

/* ------------------------------------------------------------------------------------------------
 * Deflate encoding: the record and the match search
 * ---------------------------------------------------------------------------------------------- */

/* Stores the size of an encoder's record in bytes: 598508.
 *
 * Returns orbStsNullPtrErr.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeLZ77GetSize_8u(Orb32s* pSize);
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeLZ77Init_8u(OrbLZ77Level level,
                                                         OrbLZ77Checksum checksumKind,
                                                         OrbLZ77EncState* pState);
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeLZ77InitAlloc_8u(OrbLZ77Level level,
                                                              OrbLZ77Checksum checksumKind,
                                                              OrbLZ77EncState** ppState);
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeLZ77Reset_8u(OrbLZ77EncState* pState);
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeLZ77SetStatus_8u(OrbLZ77Phase phase,
                                                              OrbLZ77EncState* pState);
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeLZ77SetDictionary_8u(const Orb8u* pDict,
                                                                  Orb32s dictLen,
                                                                  OrbLZ77EncState* pState);
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeLZ77_8u(Orb8u** ppSrc, Orb32s* pSrcLen,
                                                     OrbLZ77Pair** ppPairs, Orb32s* pPairsLen,
                                                     OrbLZ77Flush flush, OrbLZ77EncState* pState);

/* ------------------------------------------------------------------------------------------------
 * Deflate encoding: the blocks
 * ---------------------------------------------------------------------------------------------- */

ORB_API OrbStatus ORB_CALL legacy90orbsEncodeLZ77SelectHuffMode_8u(const OrbLZ77Pair* pPairs,
                                                                   Orb32s count,
                                                                   OrbLZ77BlockMode* pMode,
                                                                   OrbLZ77EncState* pState);
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeLZ77FixedHuff_8u(OrbLZ77Pair** ppPairs,
                                                              Orb32s* pPairsLen, Orb8u** ppDst,
                                                              Orb32s* pDstLen, OrbLZ77Flush flush,
                                                              OrbLZ77EncState* pState);
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeLZ77DynamicHuff_8u(OrbLZ77Pair** ppPairs,
                                                                Orb32s* pPairsLen, Orb8u** ppDst,
                                                                Orb32s* pDstLen, OrbLZ77Flush flush,
                                                                OrbLZ77EncState* pState);
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeLZ77StoredBlock_8u(Orb8u** ppSrc, Orb32s* pSrcLen,
                                                                Orb8u** ppDst, Orb32s* pDstLen,
                                                                OrbLZ77Flush flush,
                                                                OrbLZ77EncState* pState);
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeLZ77Flush_8u(Orb8u** ppDst, Orb32s* pDstLen,
                                                          OrbLZ77EncState* pState);

/* ------------------------------------------------------------------------------------------------
 * Deflate decoding
 * ---------------------------------------------------------------------------------------------- */

#ifdef __cplusplus
}
#endif

#endif
