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
 *
 * A stream is made in rounds. In each the host
 *
 *   1. sets orbLZ77PhaseMatch, which empties the record's pair list, and takes the pair cursor;
 *   2. calls EncodeLZ77 to turn source bytes into pairs, until the source is consumed or the list
 * is full, and puts the cursor back with the number of pairs made;
 *   3. sets orbLZ77PhaseCode, which makes the list the next block's work;
 *   4. asks SelectHuffMode for the cheapest kind of block, or decides by itself, and calls the
 * coder of that kind until it no longer returns orbStsDstFull.
 *
 * With orbLZ77FlushFinish in both, the round that consumes the last of the source ends the stream
 * with orbStsStreamEnd. For the trailer of a zlib or gzip file the host then sets orbLZ77PhaseFinal
 * and calls Flush.
 *
 * Sources and destinations are cursors: a pointer and a count that a call moves by what it has
 * consumed or written. Nothing behind a cursor is touched, but for one byte that Flush describes.
 * ---------------------------------------------------------------------------------------------- */

/* Stores the size of an encoder's record in bytes: 598508.
 *
 * Returns orbStsNullPtrErr.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeLZ77GetSize_8u(Orb32s* pSize);

/* Makes a new record in memory of the host's, at any address. A level other than orbLZ77LevelFast
 * and orbLZ77LevelLazy counts as orbLZ77LevelChain. A checksum kind that is none of the three keeps
 * no checksum, and Flush refuses it.
 *
 * Returns orbStsNullPtrErr.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeLZ77Init_8u(OrbLZ77Level level,
                                                         OrbLZ77Checksum checksumKind,
                                                         OrbLZ77EncState* pState);

/* The same in a record that the library allocates, at a multiple of 64 bytes.
 *
 * Returns orbStsNullPtrErr; orbStsMemAllocErr if the allocation fails, with nothing stored.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeLZ77InitAlloc_8u(OrbLZ77Level level,
                                                              OrbLZ77Checksum checksumKind,
                                                              OrbLZ77EncState** ppState);

/* Makes the record ready for another stream with the same level and kind of checksum, in less time
 * than Init. The phase stays as it is, for the host to set, and so does a choice that
 * SelectHuffMode has made: it stands until EncodeLZ77 makes pairs.
 *
 * Returns orbStsNullPtrErr.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeLZ77Reset_8u(OrbLZ77EncState* pState);

/* Sets the phase. orbLZ77PhaseMatch empties the pair list: 0 pairs are done, and 65280 fit.
 * orbLZ77PhaseCode starts a block: the pairs that were done are now left, and none is done. Neither
 * moves the pointer of the cursor. Any other value is stored, and nothing else happens.
 *
 * Returns orbStsNullPtrErr.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeLZ77SetStatus_8u(OrbLZ77Phase phase,
                                                              OrbLZ77EncState* pState);

/* Puts a text in front of the stream, for matches to refer to: the last 32768 of its dictLen bytes,
 * which are copied. A decoder has to be given the same text. No checksum covers it. Fewer than 3
 * bytes are of no use, and change nothing.
 *
 * Returns orbStsNullPtrErr for pDict or pState; orbStsSizeErr if dictLen < 0; orbStsNoErr if it is
 * below 3; orbStsErr if the phase is other than orbLZ77PhaseInit.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeLZ77SetDictionary_8u(const Orb8u* pDict,
                                                                  Orb32s dictLen,
                                                                  OrbLZ77EncState* pState);

/* Turns the *pSrcLen bytes at *ppSrc into at most *pPairsLen pairs at *ppPairs, and moves both
 * cursors. The bytes consumed go into the checksum and into the history of 32 KB that matches refer
 * to, so the source may be given in pieces of any size. No match goes on from one call to the next,
 * and the last 2 bytes of a call, or 3 at orbLZ77LevelLazy, are always literals.
 *
 * orbLZ77FlushRestart is for streams that are made of independent parts. Matches stay within the
 * call, and the encoder counts bytes from 0 again behind it. It is meant for calls at the beginning
 * of a stream, behind Reset or behind another restart, and with at most 32768 bytes, for which all
 * distances are those of deflate. From a restart to another kind of call leads Reset alone. In a
 * stream that has n bytes already, a restart makes good pairs, but moves the source by n bytes too
 * many. The other flushes make no difference here; the coder of the block carries them out.
 *
 * *ppSrc is not looked at if *pSrcLen is 0, and not checked.
 *
 * Returns orbStsNullPtrErr for ppSrc, ppPairs, pSrcLen, pPairsLen, *ppPairs or pState;
 * orbStsSizeErr if *pPairsLen < 0, then if *pSrcLen < 0; orbStsDstFull if there is no room for
 * pairs, whether there is a source or not; orbStsDstFull also if the room ended before the source.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeLZ77_8u(Orb8u** ppSrc, Orb32s* pSrcLen,
                                                     OrbLZ77Pair** ppPairs, Orb32s* pPairsLen,
                                                     OrbLZ77Flush flush, OrbLZ77EncState* pState);

/* ------------------------------------------------------------------------------------------------
 * Deflate encoding: the blocks (RFC 1951, 3.2.3 to 3.2.7)
 *
 * A coder that returns orbStsDstFull has filled its destination to the last byte and goes on at the
 * next bit, when it is called again with the rest of its pairs or bytes and the same flush. Bits
 * that do not fill a byte wait in the record for the next block, and so may whole bytes at the end
 * of a block.
 *
 * flush says what follows the block's last pair:
 *
 *   orbLZ77FlushNone                       nothing yet: another block
 *   orbLZ77FlushSync, orbLZ77FlushRestart  an empty stored block: the stream is at a byte boundary,
 *                                          and its last bytes are 00 00 FF FF
 *   orbLZ77FlushFinish                     the end of the stream, and the block says so. If the
 * last call of EncodeLZ77 left source bytes, another block
 *
 * Pairs that no match search makes are coded as they can be, and nothing is touched outside of the
 * record and the buffers: of a literal the low 8 bits count, of a length less 3 the low 8 bits, of
 * a distance less 1 the low 15 bits.
 * ---------------------------------------------------------------------------------------------- */

/* Finds the kind of block that takes the fewest bits for these pairs. Stored blocks have to be
 * cheaper than both others, fixed ones than dynamic ones. The dynamic block's codes and its header
 * are made on the way, with the flush of the last call of EncodeLZ77, and DynamicHuff uses them.
 *
 * The choice stands until EncodeLZ77 makes pairs or the block is coded: until then a call returns
 * it again. If it is not followed, another kind of block may be coded all the same. But if the
 * choice was a header that no coder took, the next block wants a choice, too: DynamicHuff would
 * begin with the header that is left over.
 *
 * Returns orbStsNullPtrErr for pPairs, pMode or pState; orbStsSizeErr if count < 0.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeLZ77SelectHuffMode_8u(const OrbLZ77Pair* pPairs,
                                                                   Orb32s count,
                                                                   OrbLZ77BlockMode* pMode,
                                                                   OrbLZ77EncState* pState);

/* Code *pPairsLen pairs at *ppPairs as one block to the *pDstLen bytes at *ppDst, and move both
 * cursors. FixedHuff uses the code of RFC 1951, DynamicHuff one that is made for these pairs,
 * unless SelectHuffMode has made it: the first call of a block has to be given all pairs of it.
 *
 * The first call without room takes the place of the block's header: begin a block with room for a
 * byte at least. A call without pairs goes on with what a flush has begun, when it is not the first
 * of its block. If there is no such thing, it ends the block: FixedHuff without a bit, DynamicHuff
 * with a code for its end.
 *
 * Return orbStsNullPtrErr for ppPairs, ppDst, pPairsLen, pDstLen, *ppDst or pState; orbStsSizeErr
 * if *pDstLen < 0, then if *pPairsLen < 0; orbStsDstFull for want of room; orbStsStreamEnd if the
 * stream is at its end; orbStsNoErr if the block is.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeLZ77FixedHuff_8u(OrbLZ77Pair** ppPairs,
                                                              Orb32s* pPairsLen, Orb8u** ppDst,
                                                              Orb32s* pDstLen, OrbLZ77Flush flush,
                                                              OrbLZ77EncState* pState);
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeLZ77DynamicHuff_8u(OrbLZ77Pair** ppPairs,
                                                                Orb32s* pPairsLen, Orb8u** ppDst,
                                                                Orb32s* pDstLen, OrbLZ77Flush flush,
                                                                OrbLZ77EncState* pState);

/* Copies *pSrcLen bytes, those that the pairs of the round were made of, to stored blocks of up to
 * 65535 bytes, and moves both cursors. No bytes make an empty block. A stored block ends at a byte
 * boundary, so no flush has anything to add; with orbLZ77FlushFinish each block of the call says
 * that it is the last of the stream, and there may be only one: at most 65535 bytes.
 *
 * Returns orbStsNullPtrErr for ppSrc, ppDst, pSrcLen, pDstLen, *ppSrc, *ppDst or pState;
 * orbStsDstFull for want of room; orbStsStreamEnd with orbLZ77FlushFinish. Lengths are not checked:
 * less than 0 counts as 0.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeLZ77StoredBlock_8u(Orb8u** ppSrc, Orb32s* pSrcLen,
                                                                Orb8u** ppDst, Orb32s* pDstLen,
                                                                OrbLZ77Flush flush,
                                                                OrbLZ77EncState* pState);

/* Writes the trailer behind a stream that has ended. For orbLZ77ChecksumAdler32 that is the
 * checksum in 4 bytes, the highest first. It is started at 0, where RFC 1950 starts it at 1: for a
 * zlib file the host adds 1 to the low half and the number of bytes to the high half, each modulo
 * 65521. For orbLZ77ChecksumCRC32 it is the trailer of RFC 1952: the checksum and the number of
 * bytes consumed, in 4 bytes each, the lowest first; orbLZ77ChecksumNone writes the same with a
 * checksum of 0. The number is right for up to 2147483647 bytes in all, without a dictionary and
 * without restarts.
 *
 * Behind each byte that is written, a byte of 0 is stored where there is room for it.
 *
 * Returns orbStsNullPtrErr for ppDst, pDstLen or pState; orbStsErr if the phase is other than
 * orbLZ77PhaseFinal; orbStsErr for another kind of checksum; orbStsDstFull for want of room, and
 * goes on in the next call.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeLZ77Flush_8u(Orb8u** ppDst, Orb32s* pDstLen,
                                                          OrbLZ77EncState* pState);

/* ------------------------------------------------------------------------------------------------
 * Deflate decoding
 * ---------------------------------------------------------------------------------------------- */

#ifdef __cplusplus
}
#endif

#endif
