#include "hosts/jpeg/marker_reader.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <limits>

#include "hosts/error.h"

namespace orbhost::jpeg {

namespace {

std::string hex(int value) {
  char text[8];
  std::snprintf(text, sizeof text, "%02X", value & 255);
  return text;
}

// What a frame marker stands for, or null if it is none that could be decoded one day.
const char* processName(int marker) {
  static constexpr const char* kNames[16] = {"baseline",
                                             "extended sequential",
                                             "progressive",
                                             "lossless",
                                             nullptr,
                                             "differential sequential",
                                             "differential progressive",
                                             "differential lossless",
                                             nullptr,
                                             "arithmetic-coded sequential",
                                             "arithmetic-coded progressive",
                                             "arithmetic-coded lossless",
                                             nullptr,
                                             "differential arithmetic-coded sequential",
                                             "differential arithmetic-coded progressive",
                                             "differential arithmetic-coded lossless"};
  return marker >= kSof0 && marker <= kSof15 ? kNames[marker - kSof0] : nullptr;
}

}  // namespace

// The bytes behind a segment's length.
class MarkerReader::Segment {
 public:
  Segment(ByteView file, size_t first, size_t end, int marker)
      : file_(file), position_(first), end_(end), marker_(marker) {}

  size_t position() const { return position_; }
  size_t left() const { return end_ - position_; }

  int byte() {
    if (left() < 1) fail("is too short");
    return file_[position_++];
  }
  int word() {
    const int high = byte();
    return high << 8 | byte();
  }
  bool startsWith(const char* text, size_t length) const {
    return left() >= length && std::memcmp(file_.data + position_, text, length) == 0;
  }
  void skip(size_t count) { position_ += count; }
  void expectEnd() const {
    if (left() != 0) fail("is too long");
  }
  [[noreturn]] void fail(const std::string& what) const {
    failAt(position_, "the segment FF" + hex(marker_) + " " + what);
  }

 private:
  ByteView file_;
  size_t position_;
  size_t end_;
  int marker_;
};

MarkerReader::MarkerReader(ByteView file) : file_(file) {
  if (file.size == 0) throw Error("the file is empty");
  if (file.size > static_cast<size_t>(std::numeric_limits<int32_t>::max())) {
    throw Error("files above 2 GiB are not supported");
  }
  if (file.size < 3 || file[0] != 0xFF || file[1] != kSoi || file[2] != 0xFF) {
    throw Error("not a JPEG file");
  }
  position_ = 2;
}

int MarkerReader::nextMarker() {
  if (position_ < file_.size && file_[position_] != 0xFF) {
    failAt(position_, "a marker was expected, not " + hex(file_[position_]));
  }
  // Any number of fill bytes may stand before the code.
  while (position_ < file_.size && file_[position_] == 0xFF) ++position_;
  if (position_ >= file_.size) failAt(file_.size, "the file ends before the picture does");
  return file_[position_++];
}

bool MarkerReader::nextScan() {
  for (;;) {
    const int marker = nextMarker();
    const size_t offset = position_ - 2;
    if (marker == kEoi) {
      if (!frame_) failAt(offset, "the end of the picture, and no picture");
      return false;
    }
    if (marker == kTem) continue;
    if (marker == kSoi || (marker >= kRst0 && marker <= kRst7) || marker < kSof0) {
      failAt(offset, "the marker FF" + hex(marker) + " has no place here");
    }

    if (file_.size - position_ < 2) failAt(file_.size, "the file ends within a segment");
    const size_t length = static_cast<size_t>(file_[position_] << 8 | file_[position_ + 1]);
    if (length < 2) failAt(position_, "a segment of length " + std::to_string(length));
    if (length > file_.size - position_) {
      failAt(position_, "the segment FF" + hex(marker) + " reaches beyond the file's end");
    }
    const Segment segment(file_, position_ + 2, position_ + length, marker);
    position_ += length;

    if (processName(marker) != nullptr) {
      readFrame(segment, marker);
    } else if (marker == kDqt) {
      readQuantisation(segment);
    } else if (marker == kDht) {
      readHuffman(segment);
    } else if (marker == kDri) {
      Segment reader = segment;
      restartInterval_ = reader.word();
      reader.expectEnd();
    } else if (marker == kSos) {
      scan_.offset = offset;
      readScan(segment);
      scan_.dataOffset = position_;
      return true;
    } else if (marker == kDhp) {
      failAt(offset, "hierarchical JPEG is not supported");
    } else if (marker == kApp0 || marker == kApp14) {
      readApplication(segment, marker);
    }
    // Comments, other applications' segments and what is reserved carry nothing for us.
  }
}

void MarkerReader::readQuantisation(Segment segment) {
  while (segment.left() > 0) {
    const int kind = segment.byte();
    const int table = kind & 15;
    if (kind >> 4 > 1 || table > 3) segment.fail("has a table of class and number " + hex(kind));
    Divisors& divisors = divisors_[table].emplace();
    for (uint16_t& divisor : divisors) {
      divisor = static_cast<uint16_t>(kind >> 4 == 1 ? segment.word() : segment.byte());
      if (divisor == 0) segment.fail("has a divisor of 0");
    }
  }
}

void MarkerReader::readHuffman(Segment segment) {
  while (segment.left() > 0) {
    const int kind = segment.byte();
    const int table = kind & 15;
    if (kind >> 4 > 1 || table > 3) segment.fail("has a table of class and number " + hex(kind));
    HuffmanTable codes{};
    // The codes of each length take the next values, then double for the next length.
    int code = 0;
    for (int length = 1; length <= 16; ++length) {
      const int count = segment.byte();
      codes.counts[length - 1] = static_cast<uint8_t>(count);
      code += count;
      if (code > 1 << length) segment.fail("has more codes than their lengths allow");
      code *= 2;
    }
    const int size = codes.size();
    if (size > 256) segment.fail("has more than 256 codes");
    for (int i = 0; i < size; ++i) {
      const int symbol = segment.byte();
      if (kind >> 4 == 0 && symbol > 16) segment.fail("has a DC category of more than 16 bits");
      codes.symbols[i] = static_cast<uint8_t>(symbol);
    }
    huffman_[kind >> 4][table] = codes;
  }
}

void MarkerReader::readFrame(Segment segment, int marker) {
  const size_t offset = segment.position();
  if (frame_) failAt(offset, "a second frame");
  if (marker > kSof3) {
    failAt(offset, std::string(processName(marker)) + " JPEG is not supported");
  }
  Frame frame{};
  frame.marker = marker;
  frame.precision = segment.byte();
  const bool fits =
      frame.isLossless() ? frame.precision >= 2 && frame.precision <= 16 : frame.precision == 8;
  if (!fits) {
    failAt(offset, "samples of " + std::to_string(frame.precision) + " bits are not supported");
  }
  frame.height = segment.word();
  frame.width = segment.word();
  if (frame.height == 0) failAt(offset, "a height that comes later (DNL) is not supported");
  if (frame.width == 0) failAt(offset, "a picture without columns");

  const int count = segment.byte();
  if (count != 1 && count != 3 && count != 4) {
    failAt(offset, "a picture of " + std::to_string(count) +
                       " components is neither grey nor colour nor CMYK");
  }
  for (int i = 0; i < count; ++i) {
    FrameComponent component{};
    component.id = segment.byte();
    const int factors = segment.byte();
    component.h = factors >> 4;
    component.v = factors & 15;
    component.table = segment.byte();
    for (const FrameComponent& other : frame.components) {
      if (other.id == component.id) segment.fail("has two components of one name");
    }
    if (component.h < 1 || component.h > 4 || component.v < 1 || component.v > 4) {
      segment.fail("has sampling factors outside 1 to 4");
    }
    if (component.h > 2 || component.v > 2) {
      segment.fail("has sampling factors above 2, which are not supported");
    }
    if (component.table > 3) segment.fail("names a table of divisors above 3");
    frame.components.push_back(component);
  }
  segment.expectEnd();

  // One component has nothing that its factors could relate it to.
  if (count == 1) frame.components[0].h = frame.components[0].v = 1;
  frame_ = frame;
}

void MarkerReader::readScan(Segment segment) {
  const size_t offset = segment.position();
  if (!frame_) failAt(offset, "a scan before the frame");
  scan_.components.clear();
  const int count = segment.byte();
  if (count < 1 || count > 4) segment.fail("has " + std::to_string(count) + " components");
  int blocks = 0;
  for (int i = 0; i < count; ++i) {
    const int id = segment.byte();
    const int tables = segment.byte();
    const auto& all = frame_->components;
    const auto found = std::find_if(all.begin(), all.end(),
                                    [id](const FrameComponent& one) { return one.id == id; });
    if (found == all.end()) segment.fail("names a component that the frame does not have");
    const ScanComponent component = {static_cast<int>(found - all.begin()), tables >> 4,
                                     tables & 15};
    for (const ScanComponent& other : scan_.components) {
      if (other.component == component.component) segment.fail("names a component twice");
    }
    if (component.dcTable > 3 || component.acTable > 3) segment.fail("names a table above 3");
    scan_.components.push_back(component);
    blocks += found->h * found->v;
  }
  if (count > 1 && blocks > 10) segment.fail("interleaves more than 10 blocks");
  readSelection(segment);
  segment.expectEnd();
}

void MarkerReader::readSelection(Segment& segment) {
  Selection read;
  read.ss = segment.byte();
  read.se = segment.byte();
  const int bits = segment.byte();
  read.ah = bits >> 4;
  read.al = bits & 15;
  if (frame_->isLossless()) {
    if (read.ss < 1 || read.ss > 7) {
      segment.fail("has predictor " + std::to_string(read.ss) + ", which is not one of 1 to 7");
    }
    if (read.al >= frame_->precision) {
      segment.fail("has a point transform of " + std::to_string(read.al) +
                   " bits, which leaves nothing");
    }
  }
  // A sequential scan holds all there is, whatever the bytes say: some encoders leave them at 0.
  scan_.selection = frame_->isProgressive() || frame_->isLossless() ? read : Selection{};
}

void MarkerReader::readApplication(Segment segment, int marker) {
  if (marker == kApp0) {
    if (segment.startsWith("JFIF\0", 5)) hasJfif_ = true;
  } else if (segment.startsWith("Adobe", 5) && segment.left() >= 12) {
    segment.skip(11);
    adobeTransform_ = segment.byte();
  }
}

}  // namespace orbhost::jpeg
