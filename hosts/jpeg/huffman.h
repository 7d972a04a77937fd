// The library's Huffman records, owned.
#ifndef ORB_HOSTS_JPEG_HUFFMAN_H
#define ORB_HOSTS_JPEG_HUFFMAN_H

#include <array>
#include <memory>
#include <new>
#include <string>

#include "hosts/error.h"
#include "hosts/jpeg/tables.h"
#include "orb90legacy.h"

namespace orbhost::jpeg {

template <auto release>
struct Release {
  template <class Record>
  void operator()(Record* record) const {
    release(record);
  }
};

using EncodeTable =
    std::unique_ptr<OrbiEncodeHuffmanSpec, Release<legacy90orbiEncodeHuffmanSpecFree_JPEG_8u>>;
using DecodeTable =
    std::unique_ptr<OrbiDecodeHuffmanSpec, Release<legacy90orbiDecodeHuffmanSpecFree_JPEG_8u>>;
using EncodeState =
    std::unique_ptr<OrbiEncodeHuffmanState, Release<legacy90orbiEncodeHuffmanStateFree_JPEG_8u>>;
using DecodeState =
    std::unique_ptr<OrbiDecodeHuffmanState, Release<legacy90orbiDecodeHuffmanStateFree_JPEG_8u>>;

// A record from one of the library's allocating functions, whose last argument takes its address.
// They report want of memory as a null pointer.
template <class Owner, class Function, class... Arguments>
Owner makeRecord(Function* function, Arguments... arguments) {
  typename Owner::pointer record = nullptr;
  const OrbStatus status = function(arguments..., &record);
  Owner owner(record);
  if (status == orbStsNullPtrErr) throw std::bad_alloc();
  if (status != orbStsNoErr) throw Error("a Huffman table that breaks the rules of its codes");
  return owner;
}

inline EncodeTable makeEncodeTable(const HuffmanTable& table) {
  return makeRecord<EncodeTable>(legacy90orbiEncodeHuffmanSpecInitAlloc_JPEG_8u,
                                 table.counts.data(), table.symbols.data());
}
inline DecodeTable makeDecodeTable(const HuffmanTable& table) {
  return makeRecord<DecodeTable>(legacy90orbiDecodeHuffmanSpecInitAlloc_JPEG_8u,
                                 table.counts.data(), table.symbols.data());
}
inline EncodeState makeEncodeState() {
  return makeRecord<EncodeState>(legacy90orbiEncodeHuffmanStateInitAlloc_JPEG_8u);
}
inline DecodeState makeDecodeState() {
  return makeRecord<DecodeState>(legacy90orbiDecodeHuffmanStateInitAlloc_JPEG_8u);
}

// How often each symbol occurs. The last word is the library's own.
using SymbolCounts = std::array<Orb32s, 257>;

// The table that codes them in the fewest bits.
inline HuffmanTable makeOptimalTable(const SymbolCounts& counts) {
  HuffmanTable table{};
  if (legacy90orbiEncodeHuffmanRawTableInit_JPEG_8u(counts.data(), table.counts.data(),
                                                    table.symbols.data()) != orbStsNoErr) {
    throw Error("the picture's symbols make no Huffman table");
  }
  return table;
}

}  // namespace orbhost::jpeg

#endif
