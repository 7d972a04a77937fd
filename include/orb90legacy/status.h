/* What a call returns: 0 for success, a negative number for an error, a positive one for a warning.
 *
 * A function that returns an error has left its outputs as they were, unless its note says
 * otherwise. A warning comes with valid outputs, as far as the warning allows.
 */
#ifndef ORB90LEGACY_STATUS_H
#define ORB90LEGACY_STATUS_H

#include "orb90legacy/types.h"

typedef Orb32s OrbStatus;

enum {
  /* Success and warnings. */
  /* Success. */
  orbStsNoErr = 0,
  /* The call had nothing to do. */
  orbStsNoOperation = 1,
  /* A buffer isn't aligned to 16 bytes; the call did its work. */
  orbStsMisalignedData = 2,
  /* A divisor in a table was zero; the entry has been replaced, and the rest of the result is
   * valid. */
  orbStsDivByZero = 6,
  /* The processor has no CPUID or is not of the reference vendor. */
  orbStsForeignCpu = 20,
  /* The source ROI lies outside the image, or a right-angle box has no overlap; nothing is
   * written. */
  orbStsRoiOutside = 29,
  /* The quadrangle of a rotation or warp misses the destination rectangle; nothing is written. */
  orbStsQuadOutside = 30,
  /* The source ran out before the coded item was complete; call again with more input. */
  orbStsSrcShort = 32,
  /* The destination ran out; call again with more room. From the GIT size and Init functions:
   * their sizes were raised. */
  orbStsDstFull = 33,
  /* The final deflate block has been coded or read. */
  orbStsStreamEnd = 34,
  /* A width or height that the format wants even, or a multiple of a block, is not; the work
   * is done on what there is. */
  orbStsDoubleSize = 35,
  /* The feature query found no CPUID. */
  orbStsNoCpuid = 36,
  /* The antialias option has no effect on nearest and area averaging; the work is done without
   * it. */
  orbStsAntialiasIgnored = 46,
  /* A row's width is odd; its last sample is left out. */
  orbStsOddRowWidth = 48,

  /* Errors. */
  /* Generic failure. */
  orbStsErr = -2,
  /* An argument has an invalid value. */
  orbStsBadArgErr = -5,
  /* A size or length is out of range, as a rule less than 1. */
  orbStsSizeErr = -6,
  /* A value lies outside its allowed range. */
  orbStsOutOfRangeErr = -7,
  /* A required pointer is null; also a failed allocation in the JPEG InitAlloc functions. */
  orbStsNullPtrErr = -8,
  /* Memory could not be allocated. */
  orbStsMemAllocErr = -9,
  /* A rotation angle is infinite or not a number. */
  orbStsAngleErr = -11,
  /* A row step is less than 1. */
  orbStsStepErr = -14,
  /* A state record's id tag does not match. */
  orbStsContextMatchErr = -17,
  /* The interpolation argument is invalid. */
  orbStsInterpolationErr = -22,
  /* A resize factor is not positive, or above 1 for area averaging. */
  orbStsResizeFactorErr = -23,
  /* A mask size is other than 33 or 55. */
  orbStsMaskSizeErr = -33,
  /* A row step is smaller than width + 2 (morphology). */
  orbStsStrideErr = -37,
  /* A channel count lies outside what the function takes. */
  orbStsChannelCountErr = -53,
  /* Transform coefficients are degenerate, or a quadrangle is not convex. */
  orbStsCoeffErr = -56,
  /* A clipped source ROI is under 2 pixels wide or high. */
  orbStsRoiSmallErr = -57,
  /* A JPEG bit stream's byte buffer ran out: the source when decoding, the destination when
   * encoding. */
  orbStsJpegBufferEndErr = -62,
  /* A JPEG bit stream can't go on: bits are wanted behind a marker, no code matches, or a
   * value is outside what the coding can represent. */
  orbStsJpegBitStreamErr = -63,
  /* A Huffman table breaks the rules of T.81 annex C, or a symbol to be coded has no code. */
  orbStsJpegHuffTableErr = -64,
  /* A termination or segmentation check found corrupt code-block data. */
  orbStsCodeBlockDataErr = -112,
  /* A pass or segment index is out of range. */
  orbStsPassIndexErr = -113,
  /* A PackBits row ran out of source or destination. */
  orbStsPackBitsDstErr = -124,
  /* A progressive decoder step came before attach. */
  orbStsNotAttachedErr = -180,
  /* A matrix stride is not a positive multiple of 8. */
  orbStsStrideMatrixErr = -182,
  /* A pivot lies below the singularity threshold. */
  orbStsSingularErr = -195,
  /* Byte Huffman coder: a frequency table is unusable. */
  orbStsHuffFreqErr = -197,
  /* Byte Huffman coder: a code length or length table is unusable. */
  orbStsHuffLenErr = -198,
  /* Byte Huffman coder: a code would be too long. */
  orbStsHuffTooLongErr = -199,
  /* The result of a YUV 4:2:2 resize would be too small. */
  orbStsResizeTooSmallErr = -201
};

#endif
