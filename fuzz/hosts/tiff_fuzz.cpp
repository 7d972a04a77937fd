// Fuzzes the readers of TIFF and BMP: small files with any bytes changed, or any bytes at all.
#include <vector>

#include "fuzz/support/input.h"
#include "hosts/bmp_file.h"
#include "hosts/error.h"
#include "hosts/tiff/tiff_file.h"
#include "tests/hosts/support/pictures.h"

namespace {

using orbfuzz::Input;
using orbhost::Bytes;

std::vector<Bytes> someFiles() {
  std::vector<Bytes> files;
  for (const int channels : {1, 3}) {
    for (const int maximum : {255, 65535}) {
      files.push_back(orbhost::tiff::formatTiff(
          orbtest::draw(orbtest::Motif::kEdges, 20, 9, channels, maximum)));
    }
  }
  for (const auto format : {orbhost::PackedFormat::kBgr555, orbhost::PackedFormat::kBgr565}) {
    files.push_back(formatBmp(pack(orbtest::draw(orbtest::Motif::kEdges, 11, 5, 3), format)));
  }
  return files;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const std::vector<Bytes> files = someFiles();
  Input input(data, size);
  const size_t kind = input.byte() % (files.size() + 1);
  Bytes file;
  if (kind < files.size()) {
    file = files[kind];
    for (int changes = input.byte() % 16; changes > 0; --changes) {
      const size_t at = (static_cast<size_t>(input.byte()) << 8 | input.byte()) % file.size();
      file[at] = input.byte();
    }
  } else {
    file = input.rest();
  }
  try {
    orbhost::tiff::parseTiff(file);
  } catch (const orbhost::Error&) {
  }
  try {
    orbhost::parsePackedBmp(file);
  } catch (const orbhost::Error&) {
  }
  return 0;
}
