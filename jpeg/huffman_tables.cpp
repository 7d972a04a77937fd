// Huffman tables and bit-stream state: argument checks, then one call into a kernel.
#include "jpeg/px/huffman_tables.h"

namespace orb::ORB_BUILD {

static OrbStatus storeSize(Orb32s* pSize, Orb32s size) {
  if (!pSize) return orbStsNullPtrErr;
  store(pSize, size);
  return orbStsNoErr;
}

// A record of the library's own, stored whether or not `init` succeeds in it.
template <class Record, class Init>
static OrbStatus allocate(Record** ppRecord, Init init) {
  void* const memory = orbMalloc(sizeof(Record));
  if (!memory) return orbStsNullPtrErr;
  Record* const record = static_cast<Record*>(memory);
  store(ppRecord, record);
  return init(record);
}

static OrbStatus release(void* record) {
  if (!record) return orbStsNullPtrErr;
  orbFree(record);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiEncodeHuffmanSpecGetBufSize_JPEG_8u(Orb32s* pSize) {
  return storeSize(pSize, sizeof(OrbiEncodeHuffmanSpec));
}

OrbStatus ORB_CALL orbiDecodeHuffmanSpecGetBufSize_JPEG_8u(Orb32s* pSize) {
  return storeSize(pSize, sizeof(OrbiDecodeHuffmanSpec));
}

OrbStatus ORB_CALL orbiEncodeHuffmanStateGetBufSize_JPEG_8u(Orb32s* pSize) {
  return storeSize(pSize, sizeof(OrbiEncodeHuffmanState));
}

OrbStatus ORB_CALL orbiDecodeHuffmanStateGetBufSize_JPEG_8u(Orb32s* pSize) {
  return storeSize(pSize, sizeof(OrbiDecodeHuffmanState));
}

OrbStatus ORB_CALL orbiEncodeHuffmanSpecInit_JPEG_8u(const Orb8u* pListBits, const Orb8u* pListVals,
                                                     OrbiEncodeHuffmanSpec* pEncHuffSpec) {
  if (!pListBits || !pListVals || !pEncHuffSpec) return orbStsNullPtrErr;
  return kernel::orbMakeEncodeSpec(pListBits, pListVals, *pEncHuffSpec);
}

OrbStatus ORB_CALL orbiDecodeHuffmanSpecInit_JPEG_8u(const Orb8u* pListBits, const Orb8u* pListVals,
                                                     OrbiDecodeHuffmanSpec* pDecHuffSpec) {
  if (!pListBits || !pListVals || !pDecHuffSpec) return orbStsNullPtrErr;
  return kernel::orbMakeDecodeSpec(pListBits, pListVals, *pDecHuffSpec);
}

OrbStatus ORB_CALL orbiEncodeHuffmanSpecInitAlloc_JPEG_8u(const Orb8u* pListBits,
                                                          const Orb8u* pListVals,
                                                          OrbiEncodeHuffmanSpec** ppEncHuffSpec) {
  if (!pListBits || !pListVals || !ppEncHuffSpec) return orbStsNullPtrErr;
  return allocate(ppEncHuffSpec, [&](OrbiEncodeHuffmanSpec* spec) {
    return kernel::orbMakeEncodeSpec(pListBits, pListVals, *spec);
  });
}

OrbStatus ORB_CALL orbiDecodeHuffmanSpecInitAlloc_JPEG_8u(const Orb8u* pListBits,
                                                          const Orb8u* pListVals,
                                                          OrbiDecodeHuffmanSpec** ppDecHuffSpec) {
  if (!pListBits || !pListVals || !ppDecHuffSpec) return orbStsNullPtrErr;
  return allocate(ppDecHuffSpec, [&](OrbiDecodeHuffmanSpec* spec) {
    return kernel::orbMakeDecodeSpec(pListBits, pListVals, *spec);
  });
}

OrbStatus ORB_CALL orbiEncodeHuffmanSpecFree_JPEG_8u(OrbiEncodeHuffmanSpec* pEncHuffSpec) {
  return release(pEncHuffSpec);
}

OrbStatus ORB_CALL orbiDecodeHuffmanSpecFree_JPEG_8u(OrbiDecodeHuffmanSpec* pDecHuffSpec) {
  return release(pDecHuffSpec);
}

OrbStatus ORB_CALL orbiEncodeHuffmanStateInit_JPEG_8u(OrbiEncodeHuffmanState* pEncHuffState) {
  if (!pEncHuffState) return orbStsNullPtrErr;
  orbZero(pEncHuffState, sizeof *pEncHuffState);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiDecodeHuffmanStateInit_JPEG_8u(OrbiDecodeHuffmanState* pDecHuffState) {
  if (!pDecHuffState) return orbStsNullPtrErr;
  orbZero(pDecHuffState, sizeof *pDecHuffState);
  return orbStsNoErr;
}

OrbStatus ORB_CALL
orbiEncodeHuffmanStateInitAlloc_JPEG_8u(OrbiEncodeHuffmanState** ppEncHuffState) {
  if (!ppEncHuffState) return orbStsNullPtrErr;
  return allocate(ppEncHuffState, orbiEncodeHuffmanStateInit_JPEG_8u);
}

OrbStatus ORB_CALL
orbiDecodeHuffmanStateInitAlloc_JPEG_8u(OrbiDecodeHuffmanState** ppDecHuffState) {
  if (!ppDecHuffState) return orbStsNullPtrErr;
  return allocate(ppDecHuffState, orbiDecodeHuffmanStateInit_JPEG_8u);
}

OrbStatus ORB_CALL orbiEncodeHuffmanStateFree_JPEG_8u(OrbiEncodeHuffmanState* pEncHuffState) {
  return release(pEncHuffState);
}

OrbStatus ORB_CALL orbiDecodeHuffmanStateFree_JPEG_8u(OrbiDecodeHuffmanState* pDecHuffState) {
  return release(pDecHuffState);
}

OrbStatus ORB_CALL orbiEncodeHuffmanRawTableInit_JPEG_8u(const Orb32s* pStatistics,
                                                         Orb8u* pListBits, Orb8u* pListVals) {
  if (!pStatistics || !pListBits || !pListVals) return orbStsNullPtrErr;
  return kernel::orbMakeOptimalLists(pStatistics, pListBits, pListVals);
}

}  // namespace orb::ORB_BUILD
