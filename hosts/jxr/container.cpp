#include "hosts/jxr/container.h"

#include <algorithm>
#include <array>

#include "hosts/error.h"

namespace orbhost::jxr {

namespace {

constexpr uint8_t kStart[] = {'I', 'I', 0xBC, 0x01};
constexpr uint32_t kHeadBytes = 8;
constexpr uint32_t kEntryBytes = 12;

enum Tag : uint32_t {
  kPixelFormat = 0xBC01,
  kWidth = 0xBC80,
  kHeight = 0xBC81,
  kCodestreamOffset = 0xBCC0,
  kCodestreamBytes = 0xBCC1,
};
enum Type : uint32_t { kByte = 1, kWord = 3, kLong = 4 };

// All pixel formats are numbers of one family; the last byte tells them apart.
constexpr std::array<uint8_t, 15> kFormatFamily = {0x24, 0xC3, 0xDD, 0x6F, 0x03, 0x4E, 0xFE, 0x4B,
                                                   0xB1, 0x85, 0x3D, 0x77, 0x76, 0x8D, 0xC9};
uint8_t formatNumber(int channels, int bits) {
  if (channels == 1) return bits == 8 ? 0x08 : 0x0B;
  if (channels == 3) return bits == 8 ? 0x0D : 0x15;
  return bits == 8 ? 0x1C : 0x1F;
}

// Numbers of an entry, lowest byte first. What lies behind the end is an Error.
uint32_t numberAt(ByteView file, uint64_t at, int bytes) {
  if (at + static_cast<uint64_t>(bytes) > file.size) throw Error("the file ends within its tags");
  uint32_t number = 0;
  for (int i = bytes - 1; i >= 0; --i) number = number << 8 | file[static_cast<size_t>(at) + i];
  return number;
}

void append(uint32_t number, int bytes, Bytes& to) {
  for (int i = 0; i < bytes; ++i, number >>= 8) to.push_back(static_cast<uint8_t>(number));
}

}  // namespace

ByteView findCodestream(ByteView file) {
  if (file.size < kHeadBytes || !std::equal(kStart, kStart + 3, file.data) || file[3] > kStart[3]) {
    throw Error("not a JPEG XR file");
  }
  const uint64_t directory = numberAt(file, 4, 4);
  const uint32_t entries = numberAt(file, directory, 2);
  uint64_t offset = 0;
  uint64_t bytes = 0;
  for (uint32_t i = 0; i < entries; ++i) {
    const uint64_t entry = directory + 2 + uint64_t{i} * kEntryBytes;
    const uint32_t tag = numberAt(file, entry, 2);
    const uint32_t type = numberAt(file, entry + 2, 2);
    const uint32_t value = numberAt(file, entry + 8, type == kWord ? 2 : type == kByte ? 1 : 4);
    if (tag == kCodestreamOffset) offset = value;
    if (tag == kCodestreamBytes) bytes = value;
  }
  if (offset == 0) throw Error("the file has no codestream");
  if (offset >= file.size) throw Error("the file ends before its codestream");
  // A count of 0 or one that is too large is taken for all that there is.
  const size_t rest = file.size - static_cast<size_t>(offset);
  return {file.data + static_cast<size_t>(offset),
          bytes == 0 ? rest : std::min(rest, static_cast<size_t>(bytes))};
}

Bytes makeFile(int width, int height, int channels, int bits, ByteView codestream) {
  constexpr uint32_t kEntries = 5;
  constexpr uint32_t kFormatBytes = 16;
  constexpr uint32_t kDirectory = kHeadBytes + kFormatBytes;
  constexpr uint32_t kBegin = kDirectory + 2 + kEntries * kEntryBytes + 4;
  Bytes file(kStart, kStart + sizeof kStart);
  append(kDirectory, 4, file);
  file.insert(file.end(), kFormatFamily.begin(), kFormatFamily.end());
  file.push_back(formatNumber(channels, bits));

  const auto entry = [&](Tag tag, Type type, uint32_t count, uint32_t value) {
    append(tag, 2, file);
    append(type, 2, file);
    append(count, 4, file);
    append(value, 4, file);
  };
  append(kEntries, 2, file);
  entry(kPixelFormat, kByte, kFormatBytes, kHeadBytes);
  entry(kWidth, kLong, 1, static_cast<uint32_t>(width));
  entry(kHeight, kLong, 1, static_cast<uint32_t>(height));
  entry(kCodestreamOffset, kLong, 1, kBegin);
  entry(kCodestreamBytes, kLong, 1, static_cast<uint32_t>(codestream.size));
  append(0, 4, file);  // no further directory
  file.insert(file.end(), codestream.data, codestream.data + codestream.size);
  return file;
}

}  // namespace orbhost::jxr
