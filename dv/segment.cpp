// Decoding of video segments, and its code table: argument checks, then one call into a kernel.
#include "dv/px/segment.h"

#include "dv/px/huffman_table.h"
#include "frame/memory.h"

namespace orb::ORB_BUILD {

OrbStatus ORB_CALL orbiInitAllocHuffmanTable_DV_32u(const Orb32s* pSpec1, const Orb32s* pSpec2,
                                                    OrbDVHuffTable** ppTable) {
  if (!pSpec1 || !pSpec2 || !ppTable) return orbStsNullPtrErr;
  const Orb32s width1 = load(pSpec1), width2 = load(pSpec2);
  if (!kernel::isDVTableWidth(width1) || !kernel::isDVTableWidth(width2)) return orbStsMemAllocErr;
  const Orb32s places = kernel::orbCountDVPlaces(width1, width2);
  void* const table = orbMalloc(places * static_cast<Orb32s>(sizeof(DVHuffEntry)));
  if (!table) return orbStsMemAllocErr;
  kernel::orbMakeDVTable(pSpec1, pSpec2, static_cast<DVHuffEntry*>(table));
  store(ppTable, static_cast<OrbDVHuffTable*>(table));
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiFreeHuffmanTable_DV_32u(OrbDVHuffTable* pTable) {
  if (!pTable) return orbStsNullPtrErr;
  orbFree(pTable);
  return orbStsNoErr;
}

template <class Form>
static OrbStatus decodeSegment(const Orb8u* pStream, const Orb32u* pScanTables,
                               const OrbDVHuffTable* pTable, Orb16s* pBlocks, Orb32u* pBlockInfo) {
  if (!pStream || !pScanTables || !pTable || !pBlocks || !pBlockInfo) return orbStsNullPtrErr;
  kernel::orbDecodeDVSegment<Form>(pStream, pScanTables, pTable, pBlocks, pBlockInfo);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiHuffmanDecodeSegment_DV_8u16s(const Orb8u* pStream,
                                                     const Orb32u* pScanTables,
                                                     const OrbDVHuffTable* pTable, Orb16s* pBlocks,
                                                     Orb32u* pBlockInfo) {
  return decodeSegment<kernel::DVForm>(pStream, pScanTables, pTable, pBlocks, pBlockInfo);
}

OrbStatus ORB_CALL orbiHuffmanDecodeSegment_DV100_8u16s(const Orb8u* pStream,
                                                        const Orb32u* pScanTables,
                                                        const OrbDVHuffTable* pTable,
                                                        Orb16s* pBlocks, Orb32u* pBlockInfo) {
  return decodeSegment<kernel::DV100Form>(pStream, pScanTables, pTable, pBlocks, pBlockInfo);
}

}  // namespace orb::ORB_BUILD
