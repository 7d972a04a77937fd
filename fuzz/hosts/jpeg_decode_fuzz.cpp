// Fuzzes the JPEG host: small files of every kind with any bytes changed, or any bytes at all.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "fuzz/support/input.h"
#include "hosts/error.h"
#include "hosts/jpeg/decode.h"
#include "hosts/jpeg/packed_decode.h"
#include "tests/hosts/support/file_kinds.h"

namespace {

using orbfuzz::Input;
using orbhost::Bytes;

// A file with a number of changes: to a byte, or to the place where it ends.
Bytes changed(Bytes file, Input& input) {
  for (int changes = input.byte() % 16; changes > 0; --changes) {
    const size_t at = (static_cast<size_t>(input.byte()) << 8 | input.byte()) % file.size();
    const int kind = input.byte();
    if (kind == 0) {
      file.resize(at + 1);
    } else {
      file[at] = input.byte();
    }
  }
  return file;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const std::vector<orbtest::FileKind> kinds = orbtest::everyFileKind();
  Input input(data, size);
  orbhost::jpeg::DecodeOptions options;
  options.scale = 1 << input.byte() % 4;
  options.scansTo = input.byte() % 8;
  const bool packed = input.byte() % 4 == 0;
  const size_t kind = input.byte() % (kinds.size() + 1);
  const Bytes file = kind < kinds.size() ? changed(kinds[kind].file, input) : input.rest();
  try {
    if (packed) {
      decodeJpegPacked(file, orbhost::PackedFormat::kBgr565, options);
    } else {
      decodeJpeg(file, options);
    }
  } catch (const orbhost::Error&) {
  }
  return 0;
}
