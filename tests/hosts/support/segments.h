// A JPEG file as its parts, to be put together in another way.
#ifndef ORB_TESTS_HOSTS_SUPPORT_SEGMENTS_H
#define ORB_TESTS_HOSTS_SUPPORT_SEGMENTS_H

#include <algorithm>
#include <vector>

#include "hosts/bytes.h"

namespace orbtest {

// The offset of the first marker of a code at or behind an offset; the file's size if there is
// none.
inline size_t findMarker(const orbhost::Bytes& file, int code, size_t from = 0) {
  const uint8_t marker[] = {0xFF, static_cast<uint8_t>(code)};
  return static_cast<size_t>(
      std::search(file.begin() + static_cast<long>(from), file.end(), marker, marker + 2) -
      file.begin());
}

inline orbhost::Bytes slice(const orbhost::Bytes& file, size_t from, size_t to) {
  return orbhost::Bytes(file.begin() + static_cast<long>(from),
                        file.begin() + static_cast<long>(to));
}

// What comes before the first scan's tables, each scan from its tables to its last byte, and no
// end.
struct FileParts {
  orbhost::Bytes head;
  std::vector<orbhost::Bytes> scans;

  explicit FileParts(const orbhost::Bytes& file) {
    size_t at = 2;
    size_t scanStart = 0;
    bool inScan = false;
    while (file[at + 1] != 0xD9) {
      const int code = file[at + 1];
      const size_t end = at + 2 + static_cast<size_t>(file[at + 2] << 8 | file[at + 3]);
      if ((code == 0xC4 || code == 0xDA || code == 0xDD) && !inScan) {
        if (scans.empty()) head = slice(file, 0, at);
        scanStart = at;
        inScan = true;
      }
      at = end;
      if (code == 0xDA) {
        while (file[at] != 0xFF || file[at + 1] == 0 || (file[at + 1] & 0xF8) == 0xD0) ++at;
        scans.push_back(slice(file, scanStart, at));
        inScan = false;
      }
    }
  }

  // A file of these scans, by their places.
  orbhost::Bytes with(const std::vector<int>& places) const {
    orbhost::Bytes file = head;
    for (const int place : places) {
      const orbhost::Bytes& scan = scans[static_cast<size_t>(place)];
      file.insert(file.end(), scan.begin(), scan.end());
    }
    file.insert(file.end(), {0xFF, 0xD9});
    return file;
  }
  orbhost::Bytes withFirst(int count) const {
    std::vector<int> places;
    for (int i = 0; i < count; ++i) places.push_back(i);
    return with(places);
  }
};

}  // namespace orbtest

#endif
