// Symbols as bits: Huffman codes in turns.
//
// Every 50 symbols choose one of up to 4 codes, which are made to measure for those that choose
// them; so each can follow a part of the data that is unlike the others. The choices are coded,
// too, as places in a list that the last choice leads. A code's symbols make one stream.
//
//   codes     1 byte, 1 to 4; with 1 there are no choices
//   choices   a stream
//   streams   of each code
//
// and a stream is a packed table of lengths, 3 bytes number of bytes, and as many bytes.
#ifndef ORB_HOSTS_PACK_SYMBOL_CODE_H
#define ORB_HOSTS_PACK_SYMBOL_CODE_H

#include "hosts/bytes.h"
#include "hosts/pack/input.h"

namespace orbhost::pack {

// Of at least one symbol.
void appendSymbols(ByteView symbols, Bytes& to);

// As many symbols as were appended. Throws an Error if they are not there.
Bytes readSymbols(Input& input, size_t count);

}  // namespace orbhost::pack

#endif
