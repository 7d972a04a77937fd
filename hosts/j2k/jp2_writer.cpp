#include "hosts/j2k/jp2_writer.h"

#include <cstdint>
#include <limits>

namespace orbhost::j2k {

namespace {

void putWord(uint32_t value, Bytes& to) {
  to.push_back(static_cast<uint8_t>(value >> 8));
  to.push_back(static_cast<uint8_t>(value));
}
void putDoubleWord(uint32_t value, Bytes& to) {
  putWord(value >> 16, to);
  putWord(value, to);
}

constexpr size_t kBoxHeadLength = 8;

// The length is that of the whole box; 0 for one that goes to the end of the file.
void putBoxHead(size_t length, const char (&type)[5], Bytes& to) {
  putDoubleWord(static_cast<uint32_t>(length), to);
  to.insert(to.end(), type, type + 4);
}

void putBox(const char (&type)[5], const Bytes& contents, Bytes& to) {
  putBoxHead(kBoxHeadLength + contents.size(), type, to);
  to.insert(to.end(), contents.begin(), contents.end());
}

Bytes imageHeader(const PictureSize& size) {
  Bytes box;
  putDoubleWord(size.y1 - size.y0, box);
  putDoubleWord(size.x1 - size.x0, box);
  putWord(static_cast<uint32_t>(size.components.size()), box);
  box.push_back(static_cast<uint8_t>(size.components[0].precision - 1));
  box.push_back(7);  // compressed as in this standard
  box.push_back(0);  // the colours are known
  box.push_back(0);  // nobody's rights
  return box;
}

Bytes colourSpecification(const PictureSize& size) {
  constexpr uint32_t kSrgb = 16;
  constexpr uint32_t kGrey = 17;
  Bytes box = {1, 0, 0};  // by a number
  putDoubleWord(size.components.size() == 1 ? kGrey : kSrgb, box);
  return box;
}

}  // namespace

Bytes jp2Header(const PictureSize& size, size_t codestreamLength) {
  Bytes file;
  putBox("jP  ", {0x0D, 0x0A, 0x87, 0x0A}, file);
  putBox("ftyp", {'j', 'p', '2', ' ', 0, 0, 0, 0, 'j', 'p', '2', ' '}, file);
  Bytes header;
  putBox("ihdr", imageHeader(size), header);
  putBox("colr", colourSpecification(size), header);
  putBox("jp2h", header, file);
  const uint64_t length = uint64_t{codestreamLength} + kBoxHeadLength;
  putBoxHead(length > std::numeric_limits<uint32_t>::max() ? 0 : static_cast<size_t>(length),
             "jp2c", file);
  return file;
}

}  // namespace orbhost::j2k
