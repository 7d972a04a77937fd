// The checksums of gzip and zlib, against published values and zlib's own functions.
#include "hosts/gzip/checksum.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include "tests/hosts/support/texts.h"

namespace {

using orbhost::Bytes;
using orbhost::ByteView;
using orbtest::bytesOf;

TEST(Checksum, PublishedValues) {
  EXPECT_EQ(orbhost::gzip::crc32(0, bytesOf("")), 0u);
  EXPECT_EQ(orbhost::gzip::crc32(0, bytesOf("123456789")), 0xCBF43926u);
  EXPECT_EQ(orbhost::gzip::adler32(1, bytesOf("")), 1u);
  EXPECT_EQ(orbhost::gzip::adler32(1, bytesOf("123456789")), 0x091E01DEu);
}

TEST(Checksum, AnyLengthFromAnyAddress) {
  const Bytes bytes = orbtest::noise(300);
  for (size_t first = 0; first < 9; ++first) {
    for (size_t count = 0; count + first <= bytes.size(); ++count) {
      const ByteView view(bytes.data() + first, count);
      const uInt size = static_cast<uInt>(count);
      ASSERT_EQ(orbhost::gzip::crc32(0x12345678, view), ::crc32(0x12345678, view.data, size));
      ASSERT_EQ(orbhost::gzip::adler32(0x12345678, view), ::adler32(0x12345678, view.data, size));
    }
  }
}

TEST(Checksum, LargestSums) {
  const Bytes bytes(1000000, 0xFF);
  const uInt size = static_cast<uInt>(bytes.size());
  // Both sums at their largest.
  EXPECT_EQ(orbhost::gzip::adler32(0xFFF0FFF0, bytes), ::adler32(0xFFF0FFF0, bytes.data(), size));
  EXPECT_EQ(orbhost::gzip::crc32(0xFFFFFFFF, bytes), ::crc32(0xFFFFFFFF, bytes.data(), size));
}

TEST(Checksum, PiecesMakeTheWhole) {
  const Bytes bytes = orbtest::mixture(100000);
  uint32_t crc = 0;
  uint32_t adler = 1;
  for (size_t done = 0, count = 1; done < bytes.size(); done += count, count = count * 3 % 10007) {
    count = std::min(count, bytes.size() - done);
    crc = orbhost::gzip::crc32(crc, ByteView(bytes.data() + done, count));
    adler = orbhost::gzip::adler32(adler, ByteView(bytes.data() + done, count));
  }
  EXPECT_EQ(crc, ::crc32(0, bytes.data(), static_cast<uInt>(bytes.size())));
  EXPECT_EQ(adler, ::adler32(1, bytes.data(), static_cast<uInt>(bytes.size())));
}

}  // namespace
