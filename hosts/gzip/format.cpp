#include "hosts/gzip/format.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "hosts/error.h"
#include "hosts/gzip/checksum.h"

namespace orbhost::gzip {

namespace {

// RFC 1952 2.3.1.
constexpr uint8_t kMagic[] = {0x1F, 0x8B};
constexpr uint8_t kMethodDeflate = 8;
constexpr int kFlagHeaderCrc = 1 << 1;
constexpr int kFlagExtra = 1 << 2;
constexpr int kFlagName = 1 << 3;
constexpr int kFlagComment = 1 << 4;
constexpr int kFlagsReserved = 0xE0;
constexpr uint8_t kSystemUnix = 3;

// RFC 1950 2.2: deflate with a window of 32768 bytes.
constexpr uint8_t kZlibMethod = 0x78;
constexpr int kZlibDictionary = 1 << 5;

// A name may be as long as a file lets it; what is longer than any system takes is not kept.
constexpr size_t kLongestName = 4096;

uint32_t adlerOf(ByteView bytes) {
  return adler32(1, bytes);
}

void appendLittleEndian(Bytes& bytes, uint32_t value) {
  for (int shift = 0; shift <= 24; shift += 8)
    bytes.push_back(static_cast<uint8_t>(value >> shift));
}

void appendBigEndian(Bytes& bytes, uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8)
    bytes.push_back(static_cast<uint8_t>(value >> shift));
}

Bytes gzipHeader(const CompressOptions& options) {
  constexpr uint8_t kSpeedNotes[] = {4, 0, 2};  // fastest, none, smallest
  Bytes header = {kMagic[0], kMagic[1], kMethodDeflate};
  header.push_back(options.origin.name.empty() ? 0 : kFlagName);
  appendLittleEndian(header, options.origin.time);
  header.push_back(kSpeedNotes[static_cast<int>(options.coding.level)]);
  header.push_back(kSystemUnix);
  if (!options.origin.name.empty()) {
    header.insert(header.end(), options.origin.name.begin(), options.origin.name.end());
    header.push_back(0);
  }
  return header;
}

Bytes zlibHeader(const CompressOptions& options) {
  constexpr int kSpeedNotes[] = {0, 2, 3};  // fastest, default, smallest
  const bool dictionary = !options.coding.dictionary.empty();
  int flags = kSpeedNotes[static_cast<int>(options.coding.level)] << 6;
  if (dictionary) flags |= kZlibDictionary;
  flags += (31 - (kZlibMethod * 256 + flags) % 31) % 31;
  Bytes header = {kZlibMethod, static_cast<uint8_t>(flags)};
  if (dictionary) appendBigEndian(header, adlerOf(options.coding.dictionary));
  return header;
}

// Passes on what it is given, counts it and takes its checksum.
class CheckingSink : public Sink {
 public:
  CheckingSink(Sink& sink, Checksum kind)
      : sink_(sink), kind_(kind), checksum_(kind == Checksum::kAdler32 ? 1 : 0) {}

  void write(ByteView bytes) override {
    if (kind_ == Checksum::kAdler32) checksum_ = adler32(checksum_, bytes);
    if (kind_ == Checksum::kCrc32) checksum_ = crc32(checksum_, bytes);
    length_ += bytes.size;
    sink_.write(bytes);
  }
  uint32_t checksum() const { return checksum_; }
  uint64_t length() const { return length_; }

 private:
  Sink& sink_;
  const Checksum kind_;
  uint32_t checksum_;
  uint64_t length_ = 0;
};

// The fields of a header or trailer, one after the other.
class Fields {
 public:
  Fields(Input& input, const char* part) : input_(input), part_(part) {}

  uint8_t byte() {
    if (!input_.require(1)) throw Error(std::string("the file ends within the ") + part_);
    const uint8_t value = *input_.data();
    input_.moveTo(input_.data() + 1);
    crc_ = crc32(crc_, ByteView(&value, 1));
    return value;
  }
  uint32_t littleEndian(int count) {
    uint32_t value = 0;
    for (int i = 0; i < count; ++i) value |= static_cast<uint32_t>(byte()) << (8 * i);
    return value;
  }
  uint32_t bigEndian() {
    uint32_t value = 0;
    for (int i = 0; i < 4; ++i) value = value << 8 | byte();
    return value;
  }
  void skip(uint32_t count) {
    for (; count > 0; --count) byte();
  }
  // Up to a zero byte.
  std::string text() {
    std::string value;
    while (const uint8_t character = byte()) {
      if (value.size() <= kLongestName) value.push_back(static_cast<char>(character));
    }
    return value.size() <= kLongestName ? value : std::string();
  }
  // Of what has been read.
  uint32_t crc() const { return crc_; }

 private:
  Input& input_;
  const char* const part_;
  uint32_t crc_ = 0;
};

bool isZlibHeader(int method, int flags) {
  return (method & 15) == kMethodDeflate && method >> 4 <= 7 && (method * 256 + flags) % 31 == 0;
}

std::string hexadecimal(uint32_t value) {
  char text[9];
  std::snprintf(text, sizeof text, "%08x", static_cast<unsigned>(value));
  return text;
}

void verify(const char* checksum, uint32_t stored, uint32_t found) {
  if (stored == found) return;
  throw Error(std::string("the data is damaged: its ") + checksum + " is " + hexadecimal(found) +
              ", not " + hexadecimal(stored));
}

Checksum checksumOf(Format format) {
  switch (format) {
    case Format::kGzip:
      return Checksum::kCrc32;
    case Format::kZlib:
      return Checksum::kAdler32;
    case Format::kRaw:
      break;
  }
  return Checksum::kNone;
}

}  // namespace

void compress(Source& source, Sink& sink, const CompressOptions& options) {
  const Format format = options.format;
  if (format == Format::kGzip && !options.coding.dictionary.empty()) {
    throw Error("a gzip file has no place for a dictionary: that takes --format zlib or raw");
  }
  if (format == Format::kGzip) sink.write(gzipHeader(options));
  if (format == Format::kZlib) sink.write(zlibHeader(options));
  const Deflated coded = deflate(source, sink, options.coding, checksumOf(format));
  Bytes trailer;
  if (format == Format::kGzip) {
    appendLittleEndian(trailer, coded.checksum);
    appendLittleEndian(trailer, static_cast<uint32_t>(coded.length));
  }
  if (format == Format::kZlib) appendBigEndian(trailer, coded.checksum);
  sink.write(trailer);
}

Expander::Expander(Source& source, std::optional<Format> format, Bytes dictionary)
    : input_(source), dictionary_(std::move(dictionary)) {
  if (format == Format::kGzip && !dictionary_.empty()) {
    throw Error("a gzip file has no place for a dictionary: that is for zlib and raw streams");
  }
  if (!input_.require(1)) throw Error("the file is empty");
  const bool gzip = isGzipNext();
  const bool zlib = input_.require(2) && isZlibHeader(input_.data()[0], input_.data()[1]);
  if (!format && !gzip && !zlib) throw Error("neither a gzip nor a zlib file");
  if (format == Format::kGzip && !gzip) throw Error("not a gzip file");
  if (format == Format::kZlib && !zlib) throw Error("not a zlib file");
  format_ = format.value_or(gzip ? Format::kGzip : Format::kZlib);
  if (format_ == Format::kGzip) origin_ = readGzipHeader();
  if (format_ == Format::kZlib) readZlibHeader();
}

Expander::Totals Expander::expand(Sink& sink) {
  uint64_t length = expandStream(sink);
  while (format_ == Format::kGzip && isGzipNext()) {
    readGzipHeader();
    length += expandStream(sink);
  }
  const uint64_t compressed = input_.position();
  return {compressed, length, isGarbageNext()};
}

uint64_t Expander::expandStream(Sink& sink) {
  CheckingSink checking(sink, checksumOf(format_));
  decoder_.decode(input_, dictionary_, checking);
  Fields trailer(input_, "trailer");
  if (format_ == Format::kGzip) {
    verify("CRC-32", trailer.littleEndian(4), checking.checksum());
    const uint32_t size = trailer.littleEndian(4);
    if (size != static_cast<uint32_t>(checking.length())) {
      throw Error("the data is damaged: it is " + std::to_string(checking.length()) +
                  " bytes long, where " + std::to_string(size) + " (modulo 2^32) are promised");
    }
  }
  if (format_ == Format::kZlib) verify("Adler-32", trailer.bigEndian(), checking.checksum());
  return checking.length();
}

Origin Expander::readGzipHeader() {
  Fields header(input_, "header");
  header.skip(sizeof kMagic);
  const int method = header.byte();
  if (method != kMethodDeflate) {
    throw Error("a gzip file of method " + std::to_string(method) + ", which is not deflate");
  }
  const int flags = header.byte();
  if ((flags & kFlagsReserved) != 0) throw Error("a gzip header with flags that are reserved");
  Origin origin;
  origin.time = header.littleEndian(4);
  header.skip(2);
  if ((flags & kFlagExtra) != 0) header.skip(header.littleEndian(2));
  if ((flags & kFlagName) != 0) origin.name = header.text();
  if ((flags & kFlagComment) != 0) header.text();
  if ((flags & kFlagHeaderCrc) != 0) {
    const uint32_t found = header.crc() & 0xFFFF;
    if (header.littleEndian(2) != found)
      throw Error("the gzip header is damaged: its checksum is wrong");
  }
  return origin;
}

void Expander::readZlibHeader() {
  Fields header(input_, "header");
  header.byte();
  if ((header.byte() & kZlibDictionary) == 0) {
    dictionary_.clear();
    return;
  }
  const uint32_t wanted = header.bigEndian();
  if (dictionary_.empty()) {
    throw Error("needs the dictionary whose Adler-32 is " + hexadecimal(wanted));
  }
  const uint32_t given = adlerOf(dictionary_);
  if (given != wanted) {
    throw Error("needs the dictionary whose Adler-32 is " + hexadecimal(wanted) + "; that of the " +
                "given one is " + hexadecimal(given));
  }
}

bool Expander::isGzipNext() {
  return input_.require(2) && input_.data()[0] == kMagic[0] && input_.data()[1] == kMagic[1];
}

bool Expander::isGarbageNext() {
  do {
    const Orb8u* const end = input_.data() + input_.size();
    if (std::any_of(input_.data(), input_.data() + input_.size(), [](Orb8u b) { return b != 0; }))
      return true;
    input_.moveTo(end);
  } while (input_.more());
  return false;
}

}  // namespace orbhost::gzip
