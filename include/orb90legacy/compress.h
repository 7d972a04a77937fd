/* Data compression: the stages of a deflate coder (RFC 1951), each of which can stop at any byte of
 * its output and go on in the next call; a byte Huffman coder; the stages of a block-sorting
 * compressor; and the GIT coder.
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
 * Deflate decoding (RFC 1951)
 *
 * A decoder goes block by block, and stops wherever its source or its output ends, at any bit and
 * any byte. Two routes lead from bits to bytes, and a stream keeps to one of them, since each has
 * its own memory of what came before:
 *
 * - in one step: FixedHuffFull, DynamicHuffFull and StoredBlock write bytes;
 * - in two steps: FixedHuff, DynamicHuff and StoredHuff write pairs, and DecodeLZ77 makes bytes of
 *   pairs.
 *
 * The host's loop: GetBlockType tells the kind of the next block, and the coder of that kind is
 * called until it returns orbStsNoErr, which ends the block, or orbStsStreamEnd, which ends the
 * stream. In between it returns
 *
 * - orbStsSrcShort: the source is used up, and the call is to be repeated with what follows it;
 * - orbStsDstFull: the room is used up, and the call is to be repeated with more;
 * - orbStsSizeErr: the stream is bad. Cursors and output stand where this came to light, and only
 *   Reset leads on.
 *
 * Between blocks a coder may also be called without GetBlockType. It then reads the header itself.
 * If that is the header of another kind of block, or if the decoder is in the middle of a block of
 * another kind, it returns orbStsErr and has changed nothing.
 *
 * Sources, outputs and pair lists are given by the address of a pointer and of a length. Both move
 * on by what was taken or written, and that is the same for every build and however the source is
 * cut into calls: a byte of the source is taken only when one of its bits is needed. Room that is
 * left over may have been written to. A match reaches as far back as its distance says, also in
 * front of the first byte of the stream: there it finds a dictionary, or else whatever the record
 * holds, but never memory outside of it.
 *
 * Codes are checked more strictly than RFC 1951 asks for: each has to be complete, so that a block
 * without distances, or with a single one, is bad. Only a literal code of a single symbol is taken
 * as it is, up to 10 bits long. The symbols 286 and 287, and the distances 30 and 31, may have
 * codes but may not occur.
 * ---------------------------------------------------------------------------------------------- */

/* Stores the size of a decoder's record in bytes: 105544.
 *
 * Returns orbStsNullPtrErr.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsDecodeLZ77GetSize_8u(Orb32s* pSize);

/* Makes a record: at the start of a stream, in phase orbLZ77PhaseInit, its pair cursor at the start
 * of its own list. The checksum's kind is kept, and nothing is done with it: the decoder verifies
 * no checksum. The memory for what came before is left as it is.
 *
 * Returns orbStsNullPtrErr.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsDecodeLZ77Init_8u(OrbLZ77Checksum checksumKind,
                                                         OrbLZ77DecState* pState);

/* The same in a record that the library allocates, at a multiple of 64 bytes.
 *
 * Returns orbStsNullPtrErr; orbStsMemAllocErr if the allocation fails, with nothing stored.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsDecodeLZ77InitAlloc_8u(OrbLZ77Checksum checksumKind,
                                                              OrbLZ77DecState** ppState);

/* Goes to the start of a new stream, whatever has happened before, in phase orbLZ77PhaseInit. The
 * pair cursor counts anew, 0 done and 8192 left, but stays in the list in which it stands.
 *
 * Returns orbStsNullPtrErr.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsDecodeLZ77Reset_8u(OrbLZ77DecState* pState);

/* Sets what came before the stream, for either route: the last 32768 bytes of the dictionary, or
 * all of it. To be called behind Init or Reset.
 *
 * Returns orbStsNullPtrErr for either pointer; orbStsSizeErr if dictLen is below 1.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsDecodeLZ77SetDictionary_8u(const Orb8u* pDict,
                                                                  Orb32s dictLen,
                                                                  OrbLZ77DecState* pState);

/* Makes one decoder like another, at any point of a stream. The destination has to be a record that
 * was made by Init: of its own it keeps the address of its pair list. The pairs in the source's own
 * list are copied to its own, and so are the counts of the cursor.
 *
 * Returns orbStsNullPtrErr for either pointer.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsDecodeLZ77CopyState_8u(const OrbLZ77DecState* pSrcState,
                                                              OrbLZ77DecState* pDstState);

/* Sets the phase, which is the host's alone.
 *
 * Returns orbStsNullPtrErr.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsDecodeLZ77SetStatus_8u(OrbLZ77Phase phase,
                                                              OrbLZ77DecState* pState);

/* Stores the kind of the block that the decoder is in, or between blocks, that of the next one,
 * whose 3 header bits it takes. At a block of the reserved type it takes them too, but stores
 * nothing and stays between blocks.
 *
 * A negative length of the source counts as 0.
 *
 * Returns orbStsNullPtrErr for any pointer, *ppSrc among them; orbStsSrcShort.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsDecodeLZ77GetBlockType_8u(Orb8u** ppSrc, Orb32s* pSrcLen,
                                                                 OrbLZ77BlockMode* pBlockMode,
                                                                 OrbLZ77DecState* pState);

/* Decode a block of the fixed or a dynamic code to pairs. A pair is written when it is complete.
 *
 * At the end of the stream the source stands behind the last byte of the deflate data: whole bytes
 * that were taken and are not of it go back, also those that came from an earlier call.
 *
 * With flush orbLZ77FlushSync or orbLZ77FlushRestart nothing is decoded. From the next byte
 * boundary on the source is searched for the bytes 0, 0, 255, 255, which end what such a flush has
 * written. They are taken from the source but stay in the record, so that a repeated call finds
 * them again; from there only Reset leads on. Every other flush means to decode.
 *
 * Returns orbStsNullPtrErr for a pointer, but *ppSrc and *ppPairs are not looked at; orbStsSizeErr
 * if *pSrcLen or *pPairsLen is negative. In a search, orbStsNoErr if it found, orbStsSrcShort if it
 * did not. Else orbStsDstFull if *pPairsLen is 0, and then as it comes orbStsNoErr,
 * orbStsStreamEnd, orbStsSrcShort, orbStsDstFull (also if all that is left to be read is the end of
 * the block), orbStsSizeErr, orbStsErr.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsDecodeLZ77FixedHuff_8u(Orb8u** ppSrc, Orb32s* pSrcLen,
                                                              OrbLZ77Pair** ppPairs,
                                                              Orb32s* pPairsLen, OrbLZ77Flush flush,
                                                              OrbLZ77DecState* pState);
ORB_API OrbStatus ORB_CALL legacy90orbsDecodeLZ77DynamicHuff_8u(Orb8u** ppSrc, Orb32s* pSrcLen,
                                                                OrbLZ77Pair** ppPairs,
                                                                Orb32s* pPairsLen,
                                                                OrbLZ77Flush flush,
                                                                OrbLZ77DecState* pState);

/* Makes a literal of each byte of a stored block. It reads the block's header itself: behind
 * GetBlockType, which leads to orbsDecodeLZ77StoredBlock_8u, it returns orbStsErr.
 *
 * Returns orbStsNullPtrErr for any pointer, *ppSrc and *ppPairs among them; orbStsSizeErr if
 * *pSrcLen or *pPairsLen is negative; then as it comes orbStsNoErr, orbStsStreamEnd, orbStsDstFull
 * before orbStsSrcShort, orbStsSizeErr if the length and its complement differ, orbStsErr. The
 * header and the length of the block are read even without room for a pair.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsDecodeLZ77StoredHuff_8u(Orb8u** ppSrc, Orb32s* pSrcLen,
                                                               OrbLZ77Pair** ppPairs,
                                                               Orb32s* pPairsLen,
                                                               OrbLZ77DecState* pState);

/* Makes bytes of pairs. The first word of a pair may be anything: a literal is its low 8 bits, a
 * match as many bytes as it says. The pairs may come from anywhere. Flush is not looked at.
 *
 * A match that the room cuts is among the pairs that are done. Its rest waits in the record for the
 * next call that brings pairs, and goes in front of them.
 *
 * Returns orbStsNullPtrErr for a pointer, but *ppPairs and *ppDst are not looked at; orbStsSizeErr
 * if *pDstLen or *pPairsLen is negative; orbStsNoErr without pairs, even if the rest of a match
 * waits; orbStsDstFull if *pDstLen is 0; then orbStsDstFull if a pair or a part of one is left;
 * orbStsStreamEnd if a coder has met the end of the final block, other than a stored one; else
 * orbStsNoErr. Behind orbStsStreamEnd what came before is not kept up to date.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsDecodeLZ77_8u(OrbLZ77Pair** ppPairs, Orb32s* pPairsLen,
                                                     Orb8u** ppDst, Orb32s* pDstLen,
                                                     OrbLZ77Flush flush, OrbLZ77DecState* pState);

/* Decode a block of the fixed or a dynamic code to bytes. A match that the room cuts goes on in the
 * next call. Flush is not looked at. At the end of the stream the source stands as it does behind
 * orbsDecodeLZ77FixedHuff_8u, and what came before is not kept up to date.
 *
 * Returns orbStsNullPtrErr for any pointer, *ppSrc and *ppDst among them; orbStsSizeErr if *pSrcLen
 * or *pDstLen is negative; orbStsDstFull if *pDstLen is 0; then as it comes orbStsNoErr,
 * orbStsStreamEnd, orbStsSrcShort, orbStsDstFull (also if all that is left to be read is the end of
 * the block), orbStsSizeErr, orbStsErr.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsDecodeLZ77FixedHuffFull_8u(Orb8u** ppSrc, Orb32s* pSrcLen,
                                                                  Orb8u** ppDst, Orb32s* pDstLen,
                                                                  OrbLZ77Flush flush,
                                                                  OrbLZ77DecState* pState);
ORB_API OrbStatus ORB_CALL legacy90orbsDecodeLZ77DynamicHuffFull_8u(Orb8u** ppSrc, Orb32s* pSrcLen,
                                                                    Orb8u** ppDst, Orb32s* pDstLen,
                                                                    OrbLZ77Flush flush,
                                                                    OrbLZ77DecState* pState);

/* Copies the bytes of a stored block, whose header GetBlockType has read: elsewhere, also between
 * blocks, it returns orbStsErr.
 *
 * Returns orbStsNullPtrErr for any pointer, *ppSrc and *ppDst among them; orbStsDstFull if *pDstLen
 * is below 1; then as it comes orbStsNoErr, orbStsStreamEnd, orbStsDstFull before orbStsSrcShort,
 * orbStsSizeErr if the length and its complement differ, orbStsErr. A negative length of the source
 * counts as 0.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsDecodeLZ77StoredBlock_8u(Orb8u** ppSrc, Orb32s* pSrcLen,
                                                                Orb8u** ppDst, Orb32s* pDstLen,
                                                                OrbLZ77DecState* pState);

/* ------------------------------------------------------------------------------------------------
 * Byte Huffman coder
 *
 * Each of the 256 byte values that occurs has a code of 1 to 32 bits. An encoder is made from how
 * often each occurs, a decoder from the lengths of the codes, which a packed table carries from the
 * one to the other. The bits of a stream come most significant first.
 *
 * Tables of frequencies and of lengths are 256 signed 32-bit values, by byte; the length of a byte
 * without a code is 0. The lengths determine the codes. From the longest length to the shortest,
 * and from the highest byte to the lowest within each, codes are counted up from 0, and halved,
 * rounding down, wherever the length falls by one: the highest byte of the longest length has the
 * code of zeros.
 *
 * A record serves one direction of one stream, and holds the bits between its calls. It is opaque
 * and has no tag. What the host allocated itself is never passed to Free.
 * ---------------------------------------------------------------------------------------------- */

typedef struct OrbHuffState OrbHuffState;

/* Stores the size of a record in bytes: 2596.
 *
 * Returns orbStsNullPtrErr.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsHuffGetSize_8u(Orb32s* pSize);

/* Releases a record of InitAlloc. Null is ignored. */
ORB_API void ORB_CALL legacy90orbsHuffFree_8u(OrbHuffState* pState);

/* Makes an encoder with no bits in it. The codes are those of a Huffman tree; a byte that is alone
 * has a code of one bit. They are not shortened: frequencies that grow like the Fibonacci numbers
 * want codes that are too long.
 *
 * Returns orbStsNullPtrErr for either pointer; orbStsHuffFreqErr if a frequency is negative, if
 * they add up to 2^31 or more, or if all are 0; orbStsHuffTooLongErr if a code would have more than
 * 32 bits.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeHuffInit_8u(const Orb32s* pFreqTable,
                                                         OrbHuffState* pState);

/* The same in a record that the library allocates, at a multiple of 64 bytes. Its pointer is stored
 * before anything else is looked at: it is null if the allocation fails, and after any other
 * failure it is there for the host to release.
 *
 * Returns orbStsNullPtrErr for ppState, and if the allocation fails; then as Init does.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeHuffInitAlloc_8u(const Orb32s* pFreqTable,
                                                              OrbHuffState** ppState);

/* Writes the code of one byte from bit dstBitOffset of pDst on, 0 to 7, where 0 is the most
 * significant bit. With an offset the first byte keeps its bits, and takes the code's by OR: those
 * at and behind the offset should be 0. All other bytes that the code reaches are stored whole,
 * with zeros behind the code. The record and its bits are not changed; the offset is the host's to
 * advance, by the code's length.
 *
 * Returns orbStsNullPtrErr for pDst or pState; orbStsSizeErr if dstBitOffset is not within 0 to 7;
 * orbStsHuffLenErr if the byte has no code.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeHuffOne_8u(Orb8u src, Orb8u* pDst, Orb32s dstBitOffset,
                                                        const OrbHuffState* pState);

/* Encodes srcLen bytes. The stream is written in words of 4 bytes; bits that do not fill one stay
 * in the record for the next call. *pDstLen is set to the number of bytes written; what it was is
 * not read, so the destination has to have the room that orbsHuffGetDstBuffSize_8u reports. A byte
 * without a code is passed over, and nothing tells.
 *
 * Returns orbStsNullPtrErr for any pointer, orbStsSizeErr if srcLen < 1.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeHuff_8u(const Orb8u* pSrc, Orb32s srcLen, Orb8u* pDst,
                                                     Orb32s* pDstLen, OrbHuffState* pState);

/* Writes the bits that the record holds, in up to 4 bytes, with zeros behind them, and sets
 * *pDstLen to the number of bytes. The record still holds the bits.
 *
 * Returns orbStsNullPtrErr for any pointer.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeHuffFinal_8u(Orb8u* pDst, Orb32s* pDstLen,
                                                          const OrbHuffState* pState);

/* Stores the lengths of a record's codes.
 *
 * Returns orbStsNullPtrErr for either pointer.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsHuffGetLenCodeTable_8u(Orb32s* pCodeLenTable,
                                                              const OrbHuffState* pState);

/* How much room coding wants, by the lengths of the codes. *pDstBytes is set to the bytes that
 * srcLen bytes take at most when they are encoded, those of orbsEncodeHuffFinal_8u among them;
 * *pMaxSymbols to a number that is never too small for the bytes that srcLen bytes of a stream
 * decode to: srcLen * 64 divided by the least length, which is 8 times what it could be. Both are
 * computed in signed 32-bit arithmetic that wraps. Either pointer may be null.
 *
 * Returns orbStsNullPtrErr for pCodeLenTable; orbStsSizeErr if srcLen < 1; orbStsHuffLenErr if a
 * length is not within 0 to 32.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsHuffGetDstBuffSize_8u(const Orb32s* pCodeLenTable,
                                                             Orb32s srcLen, Orb32s* pDstBytes,
                                                             Orb32s* pMaxSymbols);

/* Packs a table of lengths into pDst, which has *pDstLen bytes of room, and sets *pDstLen to the
 * number of bytes written. 256 bytes are always enough.
 *
 * The packed table is a row of digits of 4 bits, the first in the high half of a byte, with a 0
 * behind the last if need be. There are three pages of 13 values: 0 to 12, 13 to 25, 26 to 38. A
 * digit of 0 to 12 is that value of the page at hand, and 13, 14 or 15 turns to one of the pages,
 * which then stays; the first is at hand at the start. Lengths are written in the order of their
 * bytes. When two in a row have been the same as the one before them (0 before the first), the next
 * value is the number of further ones, 0 to 32, and counting begins anew.
 *
 * Returns orbStsNullPtrErr for any pointer; orbStsSizeErr if *pDstLen < 1; then, with what there is
 * room for written, orbStsHuffLenErr if a length is not within 0 to 32, having been packed as the
 * nearest value of the pages; orbStsSizeErr if the table did not fit.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsHuffLenCodeTablePack_8u(const Orb32s* pCodeLenTable,
                                                               Orb8u* pDst, Orb32s* pDstLen);

/* Unpacks a table of lengths from *pSrcLen bytes, and sets *pSrcLen to the number of bytes that it
 * took. Nothing is said of the lengths, which may be up to 38.
 *
 * Returns orbStsNullPtrErr for any pointer; orbStsSizeErr if *pSrcLen < 1, and if the table goes on
 * behind the source: *pSrcLen is then left as it was, and the missing digits are taken for zeros.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsHuffLenCodeTableUnpack_8u(const Orb8u* pSrc, Orb32s* pSrcLen,
                                                                 Orb32s* pCodeLenTable);

/* Makes a decoder with no bits in it. Its codes are an encoder's, too: the record may be used with
 * the functions that encode, on a stream of its own. Whether the lengths leave bits without a code
 * is not looked at.
 *
 * Returns orbStsNullPtrErr for either pointer; orbStsHuffLenErr if a length is not within 0 to 32,
 * or if all are 0.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsDecodeHuffInit_8u(const Orb32s* pCodeLenTable,
                                                         OrbHuffState* pState);

/* The same in a record that the library allocates, at a multiple of 64 bytes. Its pointer is stored
 * before the lengths are looked at: it is null if the allocation fails, and after orbStsHuffLenErr
 * it is there for the host to release.
 *
 * Returns orbStsNullPtrErr for either pointer, and if the allocation fails; then as Init does.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsDecodeHuffInitAlloc_8u(const Orb32s* pCodeLenTable,
                                                              OrbHuffState** ppState);

/* Decodes the byte whose code begins at bit srcBitOffset of pSrc, 0 to 7. As many bytes are read as
 * the longest code would reach, (srcBitOffset + that length + 7) / 8. The record and its bits are
 * not changed; how long the code was, the host finds in its table of lengths.
 *
 * Returns orbStsNullPtrErr for any pointer; orbStsSizeErr if srcBitOffset is not within 0 to 7, or
 * if there are no codes in the record; orbStsNullPtrErr if it is an encoder's, in memory that was
 * cleared before; orbStsHuffLenErr if the bits are the code of no byte.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsDecodeHuffOne_8u(const Orb8u* pSrc, Orb32s srcBitOffset,
                                                        Orb8u* pDst, const OrbHuffState* pState);

/* Decodes into pDst, which has *pDstLen bytes of room, until it is full or the source is used up,
 * and sets *pDstLen to the number of bytes decoded. A code that the source ends within stays in the
 * record, and is complete with the next call's source. Decoding also ends at bits that are the code
 * of no byte, which stay in the record as well.
 *
 * When the room is full, how much of the source has been read is not reported, and some of it may
 * have gone into the record. So the host asks for just as many bytes as were encoded, and takes a
 * count below that for the end of the source.
 *
 * Returns orbStsNullPtrErr for any pointer; orbStsSizeErr if srcLen < 1 or *pDstLen < 1.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsDecodeHuff_8u(const Orb8u* pSrc, Orb32s srcLen, Orb8u* pDst,
                                                     Orb32s* pDstLen, OrbHuffState* pState);

/* ------------------------------------------------------------------------------------------------
 * Block sorting: the Burrows-Wheeler transform, the move-to-front table and run lengths
 *
 * The stages of a block-sorting compressor, each a function over the host's buffers that keeps
 * nothing between calls.
 * ---------------------------------------------------------------------------------------------- */

/* Stores the size in bytes of the work buffer that a block of len bytes wants in either direction:
 * len * 4 + 2080. The buffer may lie at any address, and holds nothing of use between calls.
 *
 * Returns orbStsNullPtrErr; orbStsSizeErr if len is not within 1 to 32768.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsBWTGetSize_SmallBlock_8u(Orb32s len, Orb32s* pSize);

/* The Burrows-Wheeler transform of a block of len bytes: of its rotations in lexicographic order,
 * with bytes as unsigned numbers, the last byte of each. *pIndex is the row of the block itself,
 * counted from 0; of several equal rows, one of them. The destination may be the block.
 *
 * Blocks that repeat themselves, in part or as a whole, take a few times as long as others, and no
 * more.
 *
 * Returns orbStsNullPtrErr for any pointer; orbStsSizeErr if len is not within 1 to 32768.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsBWTFwd_SmallBlock_8u(const Orb8u* pSrc, Orb8u* pDst,
                                                            Orb32s len, Orb32s* pIndex,
                                                            Orb8u* pBuf);

/* The block whose transform is pSrc, with `index` as the row of the block. The destination may not
 * overlap the source. Any bytes and any row lead to some block; a negative row is taken for row 0.
 *
 * Returns orbStsNullPtrErr for any pointer; orbStsSizeErr if len < 1, index >= len or len > 32768.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsBWTInv_SmallBlock_8u(const Orb8u* pSrc, Orb8u* pDst,
                                                            Orb32s len, Orb32s index, Orb8u* pBuf);

/* Allocates the table that move-to-front coding begins with, the 256 bytes 0 to 255 in order, at a
 * multiple of 64 bytes; and releases it, where null is ignored. The coding is the host's.
 *
 * InitAlloc returns orbStsNullPtrErr; orbStsMemAllocErr with nothing stored.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsMTFInitAlloc_8u(Orb8u** ppTable);
ORB_API void ORB_CALL legacy90orbsMTFFree_8u(Orb8u* pTable);

/* Run-length coding: 2 to 257 equal bytes become two of them and a byte that counts the others, and
 * a byte on its own stays as it is. *ppSrc and *pSrcLen are moved by the bytes read; *pDstLen, the
 * room in pDst, becomes the number of bytes written.
 *
 * The last two bytes of room take bytes of the source as they are, and two equal ones among them
 * would be read as a run: give one and a half times the source's length and 2 bytes more, and that
 * does not happen.
 *
 * Returns orbStsNullPtrErr for any pointer, *ppSrc among them; orbStsSizeErr if *pSrcLen < 1 or
 * *pDstLen < 1; orbStsDstFull, a warning, if source is left.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeRLE_8u(Orb8u** ppSrc, Orb32s* pSrcLen, Orb8u* pDst,
                                                    Orb32s* pDstLen);

/* The reverse, with the same arguments, checks and statuses. A run that there is no room for is
 * left as a whole, with the source at its start. The last two bytes of the source are copied as
 * they are.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsDecodeRLE_8u(Orb8u** ppSrc, Orb32s* pSrcLen, Orb8u* pDst,
                                                    Orb32s* pDstLen);

/* Takes back the run-length coding that bzip2 applies to a block before it is sorted: behind 4
 * equal bytes in a row stands a byte that counts further ones, 0 to 255, after which counting
 * begins anew. The arguments move as those of orbsDecodeRLE_8u do. An empty source is no failure.
 *
 * Give room for the whole block. When there is none for the copies of a count, the count has been
 * read all the same; and when the room ends in front of the fourth equal byte, the next byte is
 * read as a count.
 *
 * Returns orbStsNullPtrErr for any pointer, *ppSrc among them; orbStsSizeErr if *pDstLen < 1 or
 * *pSrcLen < 0; orbStsDstFull, a warning, if there was no room for copies, or if the room is full,
 * even with nothing left of the source.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsDecodeRLE_BZ2_8u(Orb8u** ppSrc, Orb32s* pSrcLen, Orb8u* pDst,
                                                        Orb32s* pDstLen);

/* ------------------------------------------------------------------------------------------------
 * GIT coder
 *
 * Turns a block into 256 streams, one for each byte value, and back. Each of the 256 ranks belongs
 * to a byte, at the start rank r to the byte 255 - r. For each occurrence of a byte its stream says
 * how many bytes of higher ranks have come since the last one; of the byte 0, whose rank is the
 * highest for good, only the number of its occurrences is told. The numbers are written in Rice
 * codes that adapt to each stream, most significant bit first.
 *
 * The mode says whether ranks change, and whether every byte occurs once, from rank 255 down to 0,
 * before the block begins:
 *
 *   1, 0   it does; a byte moves down a rank when it has occurred more often than the one below
 *   2      it does; a byte moves up a rank when it has occurred more often than the one above
 *   3      it does not, and ranks stay
 *   else   it does, and ranks stay
 *
 * The coded block is, for s from 0 to 255, the length of the stream of the byte 255 - s as 4 bytes,
 * most significant first, and that stream. Its last byte is filled up with ones, at least one of
 * them. The decoder has to be told the same mode.
 *
 * Records are opaque and have no tag. What the host allocated itself is never passed to Free.
 * ---------------------------------------------------------------------------------------------- */

typedef struct OrbGITEncState OrbGITEncState;
typedef struct OrbGITDecState OrbGITDecState;

/* Stores the size in bytes of an encoder's record for sources of up to maxSrcLen bytes and coded
 * blocks of up to maxDstLen: with both rounded down to a multiple of 8, maxSrcLen * 256 + maxDstLen
 * + 33912. A maxSrcLen below 4096 makes these lengths 4096 and 8192, whatever they were.
 *
 * Returns orbStsNullPtrErr; orbStsSizeErr if a length is below 1 or the size is above 2^31 - 1;
 * orbStsDstFull, a warning, if the lengths were raised.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeGITGetSize_8u(Orb32s maxSrcLen, Orb32s maxDstLen,
                                                           Orb32s* pSize);

/* Makes an encoder, for the same lengths as those of its size.
 *
 * Returns as GetSize does.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeGITInit_8u(Orb32s maxSrcLen, Orb32s maxDstLen,
                                                        OrbGITEncState* pState);

/* The same in a record that the library allocates, at a multiple of 64 bytes.
 *
 * Returns as GetSize does; orbStsMemAllocErr, with nothing stored, if the allocation fails.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeGITInitAlloc_8u(Orb32s maxSrcLen, Orb32s maxDstLen,
                                                             OrbGITEncState** ppState);

/* Encodes a block of srcLen bytes, none at all being a block, too, and sets *pDstLen to the length
 * of the coded block. What *pDstLen was is not read: the destination has to have the room that the
 * record was made for, raised lengths included.
 *
 * Returns orbStsNullPtrErr for any pointer; orbStsSizeErr if srcLen is negative or above the
 * record's maxSrcLen, and if the coded block is longer than its maxDstLen.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsEncodeGIT_8u(const Orb8u* pSrc, Orb32s srcLen, Orb8u* pDst,
                                                    Orb32s* pDstLen, Orb32s mode,
                                                    OrbGITEncState* pState);

/* Stores the size in bytes of a decoder's record: maxSrcLen, rounded down to a multiple of 8, times
 * 256, + 28824.
 *
 * Returns orbStsNullPtrErr; orbStsSizeErr if maxSrcLen is below 1 or the size is above 2^31 - 1.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsDecodeGITGetSize_8u(Orb32s maxSrcLen, Orb32s* pSize);

/* Makes a decoder for blocks of up to maxDstLen bytes.
 *
 * Returns orbStsNullPtrErr; orbStsSizeErr if maxDstLen < 1.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsDecodeGITInit_8u(Orb32s maxDstLen, OrbGITDecState* pState);

/* The same in a record that the library allocates, at a multiple of 64 bytes. Its pointer is stored
 * even if it is null.
 *
 * Returns orbStsNullPtrErr, also if the allocation fails; orbStsSizeErr if a length is below 1 or
 * the size is above 2^31 - 1.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsDecodeGITInitAlloc_8u(Orb32s maxSrcLen, Orb32s maxDstLen,
                                                             OrbGITDecState** ppState);

/* Releases a record of InitAlloc, the encoder's or the decoder's. Null is ignored. */
ORB_API void ORB_CALL legacy90orbsGITFree_8u(void* pState);

/* Decodes a block from srcLen bytes, and sets *pDstLen to its length. What *pDstLen was is not
 * read: the destination has to have the room that the record was made for. Streams that go on
 * behind the source are cut off there. A damaged block isn't noticed otherwise: its streams end
 * early, and the output is short.
 *
 * Returns orbStsNullPtrErr for any pointer; orbStsSizeErr if srcLen is negative; orbStsSizeErr if
 * the block is longer than the record's maxDstLen, as many bytes being written.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsDecodeGIT_8u(const Orb8u* pSrc, Orb32s srcLen, Orb8u* pDst,
                                                    Orb32s* pDstLen, Orb32s mode,
                                                    OrbGITDecState* pState);

#ifdef __cplusplus
}
#endif

#endif
