// A codestream in its parts, to be put together in another way.
#ifndef ORB_TESTS_HOSTS_SUPPORT_CODESTREAM_PARTS_H
#define ORB_TESTS_HOSTS_SUPPORT_CODESTREAM_PARTS_H

#include <vector>

#include "hosts/bytes.h"

namespace orbtest {

// What a file of opj_compress -SOP -EPH has between its markers for packets.
struct PacketParts {
  orbhost::Bytes header;
  orbhost::Bytes body;
};

struct TileParts {
  orbhost::Bytes segments;  // of the first tile-part's header
  std::vector<PacketParts> packets;
};

struct CodestreamParts {
  orbhost::Bytes mainHeader;  // from its start on, up to the first tile-part
  std::vector<TileParts> tiles;
};

CodestreamParts takeApart(const orbhost::Bytes& file);

void appendWord(orbhost::Bytes& to, uint32_t value);
void appendDoubleWord(orbhost::Bytes& to, uint32_t value);
void append(orbhost::Bytes& to, const orbhost::Bytes& bytes);

// A marker segment.
orbhost::Bytes segmentOf(int marker, const orbhost::Bytes& contents);

// A tile-part with the segments of its header; its length is 0 if it is not told.
orbhost::Bytes tilePartOf(int tile, int part, const orbhost::Bytes& segments,
                          const orbhost::Bytes& data, bool tellsLength = true);

}  // namespace orbtest

#endif
