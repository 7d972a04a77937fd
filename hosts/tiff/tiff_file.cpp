#include "hosts/tiff/tiff_file.h"

#include <algorithm>
#include <string>

#include "hosts/error.h"
#include "hosts/image_convert.h"
#include "orb90legacy.h"

namespace orbhost::tiff {

namespace {

// TIFF 6.0, sections 2 and 8.
enum Tag : uint32_t {
  kImageWidth = 256,
  kImageLength = 257,
  kBitsPerSample = 258,
  kCompression = 259,
  kPhotometric = 262,
  kFillOrder = 266,
  kStripOffsets = 273,
  kSamplesPerPixel = 277,
  kRowsPerStrip = 278,
  kStripByteCounts = 279,
  kXResolution = 282,
  kYResolution = 283,
  kPlanarConfiguration = 284,
  kResolutionUnit = 296,
  kSampleFormat = 339,
};
enum Type : uint32_t { kByte = 1, kShort = 3, kLong = 4, kRational = 5 };
enum Compression : uint32_t { kNone = 1, kPackBits = 32773 };
enum Photometric : uint32_t { kWhiteIsZero = 0, kBlackIsZero = 1, kRgb = 2 };

constexpr uint32_t kMagic = 42;
constexpr uint32_t kHeaderSize = 8;
constexpr uint32_t kEntrySize = 12;
// Of a strip before it is packed, as the standard recommends; a longer row is a strip of its own.
constexpr size_t kStripBytes = 8192;

// ---- Reading

class Reader {
 public:
  explicit Reader(ByteView file) : file_(file) {
    if (file.size < kHeaderSize || file[0] != file[1] || (file[0] != 'I' && file[0] != 'M')) {
      throw Error("this is no TIFF file");
    }
    bigEndian_ = file[0] == 'M';
    if (number(2, 2) != kMagic) throw Error("this is no TIFF file");
  }

  bool bigEndian() const { return bigEndian_; }
  ByteView part(uint32_t offset, uint64_t size) const {
    if (offset > file_.size || size > file_.size - offset) {
      throw Error("the file is damaged: it ends before byte " + std::to_string(offset + size));
    }
    return {file_.data + offset, static_cast<size_t>(size)};
  }
  uint32_t number(uint32_t offset, uint32_t bytes) const {
    const ByteView at = part(offset, bytes);
    uint32_t value = 0;
    for (uint32_t i = 0; i < bytes; ++i) value = value << 8 | at[bigEndian_ ? i : bytes - 1 - i];
    return value;
  }

  // The numbers of an entry, in place or elsewhere. No picture that can be held has more strips
  // than there are bytes in the file.
  std::vector<uint32_t> numbers(uint32_t entry) const {
    const uint32_t type = number(entry + 2, 2);
    const uint32_t count = number(entry + 4, 4);
    const uint32_t size = type == kByte ? 1 : type == kShort ? 2 : type == kLong ? 4 : 0;
    if (size == 0) {
      throw Error("the file is damaged: tag " + std::to_string(number(entry, 2)) +
                  " has values of type " + std::to_string(type));
    }
    const uint64_t all = uint64_t{size} * count;
    const uint32_t at = all <= 4 ? entry + 8 : number(entry + 8, 4);
    part(at, all);
    std::vector<uint32_t> values;
    for (uint32_t i = 0; i < count; ++i) values.push_back(number(at + i * size, size));
    return values;
  }

 private:
  ByteView file_;
  bool bigEndian_;
};

uint32_t bytesPerSample(const Directory& directory) {
  return directory.bits[0] / 8;
}

void checkSupported(const Directory& d) {
  const auto refuse = [](const std::string& what) { throw Error(what + " is not supported"); };
  const std::string bits = std::to_string(d.bits[0]);
  if (d.compression != kNone && d.compression != kPackBits) {
    refuse("compression " + std::to_string(d.compression));
  }
  if (d.photometric > kRgb) {
    refuse("photometric interpretation " + std::to_string(d.photometric));
  }
  const uint32_t wanted = d.photometric == kRgb ? 3 : 1;
  if (d.samplesPerPixel != wanted) {
    refuse("a pixel of " + std::to_string(d.samplesPerPixel) + " samples");
  }
  if (d.bits[0] != 8 && d.bits[0] != 16) refuse("a sample of " + bits + " bits");
  for (const uint32_t other : d.bits) {
    if (other != d.bits[0]) refuse("a pixel with samples of several sizes");
  }
  if (d.planarConfiguration != 1 && d.samplesPerPixel > 1) refuse("a plane for each colour");
  if (d.fillOrder != 1) refuse("reversed order of bits");
  if (d.sampleFormat != 1) refuse("a sample that is no unsigned number");
  if (d.stripOffsets.empty()) refuse("a picture without strips");
}

// A strip's bytes. Runs that reach from row to row are none of PackBits', but they do no harm.
void unpackStrip(ByteView packed, Bytes& strip) {
  Orb32s cursor = 0;
  if (packed.size == 0 || legacy90orbiUnpackBitsRow_TIFF_8u_C1(
                              packed.data, &cursor, static_cast<Orb32s>(packed.size), strip.data(),
                              static_cast<Orb32s>(strip.size())) != orbStsNoErr) {
    throw Error("the file is damaged: a strip has not all of its rows");
  }
}

// Rows of a strip of 16-bit samples: their bytes apart, and joined in this machine's order.
void joinSamples(const uint8_t* bytes, bool bigEndian, uint16_t* samples, size_t count) {
  Bytes first(count), second(count);
  for (size_t i = 0; i < count; ++i) {
    first[i] = bytes[2 * i];
    second[i] = bytes[2 * i + 1];
  }
  const Orb8u* const highAndLow[2] = {bigEndian ? first.data() : second.data(),
                                      bigEndian ? second.data() : first.data()};
  legacy90orbiJoinRow_TIFF_8u16u_C1(highAndLow, samples, static_cast<Orb32s>(count));
}

void invert(Image& image) {
  for (int y = 0; y < image.height(); ++y) {
    image.withRow(y, [&](auto* row) {
      for (size_t i = 0; i < image.rowSamples(); ++i) {
        row[i] = static_cast<std::remove_reference_t<decltype(*row)>>(image.maximum() - row[i]);
      }
    });
  }
}

// ---- Writing, in the order of bytes that samples are split into: the highest first

class Writer {
 public:
  explicit Writer(Bytes& bytes) : bytes_(bytes) {}

  void put(uint32_t value, int size) {
    for (int shift = 8 * size - 8; shift >= 0; shift -= 8) {
      bytes_.push_back(static_cast<uint8_t>(value >> shift));
    }
  }
  void putAt(size_t offset, uint32_t value) {
    for (int i = 0; i < 4; ++i) bytes_[offset + i] = static_cast<uint8_t>(value >> (24 - 8 * i));
  }
  // Everything that an offset leads to begins at an even one.
  uint32_t offset() {
    if (bytes_.size() % 2 != 0) bytes_.push_back(0);
    // The file may still grow by its directory.
    if (bytes_.size() > UINT32_MAX - (1 << 20)) throw Error("a TIFF file holds at most 4 GB");
    return static_cast<uint32_t>(bytes_.size());
  }

 private:
  Bytes& bytes_;
};

struct Entry {
  Tag tag;
  Type type;
  std::vector<uint32_t> values;  // of a rational, two
};

size_t sizeOf(Type type) {
  return type == kShort ? 2 : 4;
}

// Values of more than four bytes lie in front of the directory.
uint32_t putDirectory(Writer& writer, const std::vector<Entry>& entries) {
  std::vector<uint32_t> elsewhere;
  for (const Entry& entry : entries) {
    elsewhere.push_back(writer.offset());
    if (entry.values.size() * sizeOf(entry.type) <= 4) continue;
    for (const uint32_t value : entry.values) {
      writer.put(value, static_cast<int>(sizeOf(entry.type)));
    }
  }
  const uint32_t offset = writer.offset();
  writer.put(static_cast<uint32_t>(entries.size()), 2);
  for (size_t i = 0; i < entries.size(); ++i) {
    const auto& [tag, type, values] = entries[i];
    writer.put(tag, 2);
    writer.put(type, 2);
    writer.put(static_cast<uint32_t>(type == kRational ? values.size() / 2 : values.size()), 4);
    if (values.size() * sizeOf(type) > 4) {
      writer.put(elsewhere[i], 4);
      continue;
    }
    // To the left in its four bytes.
    for (size_t k = 0; k < 4 / sizeOf(type); ++k) {
      writer.put(k < values.size() ? values[k] : 0, static_cast<int>(sizeOf(type)));
    }
  }
  writer.put(0, 4);  // no other picture
  return offset;
}

// A row's bytes as they are to be packed: of 16-bit samples, the higher one first.
void splitSamples(const uint16_t* samples, size_t count, Bytes& row) {
  Bytes high(count), low(count);
  Orb8u* const highAndLow[2] = {high.data(), low.data()};
  legacy90orbiSplitRow_TIFF_16u8u_C1(samples, highAndLow, static_cast<Orb32s>(count));
  for (size_t i = 0; i < count; ++i) {
    row[2 * i] = high[i];
    row[2 * i + 1] = low[i];
  }
}

void packRow(const Bytes& row, Bytes& file) {
  // No row grows by more than a control byte for every 125 bytes, and two.
  Bytes packed(row.size() + row.size() / 64 + 16);
  Orb32s size = 0;
  if (legacy90orbiPackBitsRow_TIFF_8u_C1(row.data(), static_cast<Orb32s>(row.size()), packed.data(),
                                         &size,
                                         static_cast<Orb32s>(packed.size())) != orbStsNoErr) {
    throw Error("a row can't be packed");
  }
  file.insert(file.end(), packed.begin(), packed.begin() + size);
}

}  // namespace

Directory readDirectory(ByteView file) {
  const Reader reader(file);
  Directory d;
  d.bigEndian = reader.bigEndian();
  const uint32_t first = reader.number(4, 4);
  const uint32_t entries = reader.number(first, 2);
  reader.part(first, 2 + uint64_t{kEntrySize} * entries + 4);  // with the place of the next one
  for (uint32_t i = 0; i < entries; ++i) {
    const uint32_t entry = first + 2 + i * kEntrySize;
    const auto one = [&] {
      const std::vector<uint32_t> values = reader.numbers(entry);
      if (values.empty()) throw Error("the file is damaged: a tag has no value");
      return values[0];
    };
    switch (reader.number(entry, 2)) {
      case kImageWidth:
        d.width = one();
        break;
      case kImageLength:
        d.height = one();
        break;
      case kBitsPerSample:
        one();
        d.bits = reader.numbers(entry);
        break;
      case kCompression:
        d.compression = one();
        break;
      case kPhotometric:
        d.photometric = one();
        break;
      case kFillOrder:
        d.fillOrder = one();
        break;
      case kStripOffsets:
        d.stripOffsets = reader.numbers(entry);
        break;
      case kSamplesPerPixel:
        d.samplesPerPixel = one();
        break;
      case kRowsPerStrip:
        d.rowsPerStrip = one();
        break;
      case kStripByteCounts:
        d.stripSizes = reader.numbers(entry);
        break;
      case kPlanarConfiguration:
        d.planarConfiguration = one();
        break;
      case kSampleFormat:
        d.sampleFormat = one();
        break;
    }
  }
  return d;
}

Image parseTiff(ByteView file) {
  const Reader reader(file);
  const Directory d = readDirectory(file);
  checkSupported(d);
  if (d.width > INT32_MAX || d.height > INT32_MAX || d.rowsPerStrip == 0) {
    throw Error("the file is damaged: it has no rows");
  }
  const int width = static_cast<int>(d.width);
  const int height = static_cast<int>(d.height);
  const uint32_t rowsPerStrip = std::min(d.rowsPerStrip, d.height);
  const size_t strips = rowsPerStrip == 0 ? 0 : (d.height - 1) / rowsPerStrip + 1;
  if (d.stripOffsets.size() < strips || d.stripSizes.size() < strips) {
    throw Error("the file is damaged: it has fewer strips than its rows take");
  }
  // A packed byte stands for at most 64: no picture is made room for that the file can't fill.
  const int channels = static_cast<int>(d.samplesPerPixel);
  checkCanBeHeld(width, height, int64_t{width} * channels * bytesPerSample(d));
  const uint64_t all = uint64_t{d.width} * d.samplesPerPixel * bytesPerSample(d) * d.height;
  if (all / 64 > file.size) throw Error("the file is damaged: it is too short for its picture");

  Image image(width, height, channels, bytesPerSample(d) == 2 ? 65535 : 255);
  for (size_t i = 0; i < strips; ++i) {
    const int firstRow = static_cast<int>(i * rowsPerStrip);
    const int rows = std::min(static_cast<int>(rowsPerStrip), height - firstRow);
    const size_t size = image.rowBytes() * rows;
    if (size > INT32_MAX || d.stripSizes[i] > INT32_MAX) throw Error("a strip is above 2 GB");
    const ByteView stored = reader.part(d.stripOffsets[i], d.stripSizes[i]);
    Bytes strip(size);
    if (d.compression == kPackBits) {
      unpackStrip(stored, strip);
    } else if (stored.size < size) {
      throw Error("the file is damaged: a strip has not all of its rows");
    } else {
      std::copy_n(stored.data, size, strip.data());
    }
    if (image.isWide()) {
      joinSamples(strip.data(), d.bigEndian, image.wideRow(firstRow), size / 2);
    } else {
      std::copy_n(strip.data(), size, image.row(firstRow));
    }
  }
  if (d.photometric == kWhiteIsZero) invert(image);
  return image;
}

Bytes formatTiff(const Image& image) {
  if (image.channels() == 4) return formatTiff(withoutInks(image));
  const int maximum = image.isWide() ? 65535 : 255;
  if (image.maximum() != maximum) return formatTiff(withMaximum(image, maximum));

  Bytes file = {'M', 'M'};
  Writer writer(file);
  writer.put(kMagic, 2);
  writer.put(0, 4);  // where the directory will be
  const int rowsPerStrip =
      static_cast<int>(std::clamp<size_t>(kStripBytes / image.rowBytes(), 1, image.height()));
  std::vector<uint32_t> offsets, sizes;
  Bytes row(image.rowBytes());
  for (int y = 0; y < image.height(); ++y) {
    if (y % rowsPerStrip == 0) offsets.push_back(writer.offset());
    if (image.isWide()) {
      splitSamples(image.wideRow(y), image.rowSamples(), row);
    } else {
      std::copy_n(image.row(y), row.size(), row.data());
    }
    packRow(row, file);
    if ((y + 1) % rowsPerStrip == 0 || y + 1 == image.height()) {
      sizes.push_back(static_cast<uint32_t>(file.size() - offsets.back()));
    }
  }
  const uint32_t channels = static_cast<uint32_t>(image.channels());
  const uint32_t directory = putDirectory(
      writer, {{kImageWidth, kLong, {static_cast<uint32_t>(image.width())}},
               {kImageLength, kLong, {static_cast<uint32_t>(image.height())}},
               {kBitsPerSample, kShort, std::vector<uint32_t>(channels, image.isWide() ? 16 : 8)},
               {kCompression, kShort, {kPackBits}},
               {kPhotometric, kShort, {channels == 3 ? kRgb : kBlackIsZero}},
               {kStripOffsets, kLong, offsets},
               {kSamplesPerPixel, kShort, {channels}},
               {kRowsPerStrip, kLong, {static_cast<uint32_t>(rowsPerStrip)}},
               {kStripByteCounts, kLong, sizes},
               {kXResolution, kRational, {72, 1}},
               {kYResolution, kRational, {72, 1}},
               {kResolutionUnit, kShort, {2}}});  // an inch
  writer.putAt(4, directory);
  return file;
}

}  // namespace orbhost::tiff
