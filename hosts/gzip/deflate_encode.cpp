#include "hosts/gzip/deflate_encode.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "hosts/error.h"
#include "orb90legacy.h"

namespace orbhost::gzip {

namespace {

// No match leads from one call of the search into the next, so each gets at least this much while
// there is more to come.
constexpr size_t kLeastSearched = size_t{1} << 18;
constexpr size_t kSourceRoom = 4 * kLeastSearched;
constexpr size_t kOutputRoom = 65536;
// More pairs in a block share the cost of its codes; fewer let codes follow the data.
constexpr int kPairsPerBlock = 16384;
// LEN of RFC 1951 3.2.4 has 16 bits.
constexpr int kLongestStored = 65535;

struct Free {
  void operator()(OrbLZ77EncState* state) const { legacy90orbsLZ77Free_8u(state); }
};

int levelOf(Level level) {
  switch (level) {
    case Level::kFast:
      return orbLZ77LevelFast;
    case Level::kChain:
      return orbLZ77LevelChain;
    case Level::kLazy:
      break;
  }
  return orbLZ77LevelLazy;
}

int kindOf(Checksum checksum) {
  switch (checksum) {
    case Checksum::kNone:
      return orbLZ77ChecksumNone;
    case Checksum::kAdler32:
      return orbLZ77ChecksumAdler32;
    case Checksum::kCrc32:
      break;
  }
  return orbLZ77ChecksumCRC32;
}

class Encoder {
 public:
  Encoder(Source& source, Sink& sink, const DeflateOptions& options, Checksum checksum)
      : source_(source), sink_(sink), blocks_(options.blocks), checksum_(checksum) {
    OrbLZ77EncState* state = nullptr;
    if (legacy90orbsEncodeLZ77InitAlloc_8u(levelOf(options.level), kindOf(checksum), &state) !=
        orbStsNoErr) {
      throw std::bad_alloc();
    }
    state_.reset(state);
    if (!options.dictionary.empty()) setDictionary(options.dictionary);
  }

  Deflated run() {
    do {
      if (end_ - begin_ < kLeastSearched) fill();
      codeBlock();
    } while (!ended_ || begin_ != end_);
    flush();
    return {length_, readChecksum()};
  }

 private:
  void setDictionary(ByteView dictionary);
  void fill();
  void codeBlock();
  int choose(OrbLZ77Pair* pairs, int count);
  void codeStored(Orb8u* bytes, int count, bool last);
  template <class Code>
  void codeAll(Code code);
  void flush();
  uint32_t readChecksum();

  Source& source_;
  Sink& sink_;
  const Blocks blocks_;
  const Checksum checksum_;
  std::unique_ptr<OrbLZ77EncState, Free> state_;
  uint64_t length_ = 0;

  // What has been read and not coded.
  Bytes read_ = Bytes(kSourceRoom);
  size_t begin_ = 0;
  size_t end_ = 0;
  bool ended_ = false;

  std::vector<OrbLZ77Pair> pairs_ = std::vector<OrbLZ77Pair>(kPairsPerBlock);

  Bytes output_ = Bytes(kOutputRoom);
  Orb8u* next_ = output_.data();
  int room_ = static_cast<int>(kOutputRoom);
};

void Encoder::setDictionary(ByteView dictionary) {
  constexpr size_t kWindow = 32768;
  const size_t count = std::min(dictionary.size, kWindow);
  const Orb8u* const tail = dictionary.data + (dictionary.size - count);
  legacy90orbsEncodeLZ77SetDictionary_8u(tail, static_cast<int>(count), state_.get());
}

void Encoder::fill() {
  std::memmove(read_.data(), read_.data() + begin_, end_ - begin_);
  end_ -= begin_;
  begin_ = 0;
  while (!ended_ && end_ < read_.size()) {
    const size_t got = source_.read(read_.data() + end_, read_.size() - end_);
    end_ += got;
    ended_ = got == 0;
  }
}

void Encoder::codeBlock() {
  OrbLZ77EncState* const state = state_.get();
  Orb8u* const bytes = read_.data() + begin_;
  // Until the end has been seen one byte stays behind, so that the last block is not an empty one.
  const size_t searched = ended_ ? end_ - begin_ : end_ - begin_ - 1;

  Orb8u* source = bytes;
  int sourceLeft = static_cast<int>(searched);
  OrbLZ77Pair* pairsEnd = pairs_.data();
  int pairRoom = kPairsPerBlock;
  const int flush = ended_ ? orbLZ77FlushFinish : orbLZ77FlushNone;
  legacy90orbsEncodeLZ77SetStatus_8u(orbLZ77PhaseMatch, state);
  legacy90orbsEncodeLZ77_8u(&source, &sourceLeft, &pairsEnd, &pairRoom, flush, state);
  const int used = static_cast<int>(source - bytes);

  OrbLZ77Pair* pairs = pairs_.data();
  int count = kPairsPerBlock - pairRoom;
  legacy90orbsEncodeLZ77SetStatus_8u(orbLZ77PhaseCode, state);
  switch (choose(pairs, count)) {
    case orbLZ77BlockStored:
      codeStored(bytes, used, ended_ && sourceLeft == 0);
      break;
    case orbLZ77BlockFixed:
      codeAll([&] {
        return legacy90orbsEncodeLZ77FixedHuff_8u(&pairs, &count, &next_, &room_, flush, state);
      });
      break;
    default:
      codeAll([&] {
        return legacy90orbsEncodeLZ77DynamicHuff_8u(&pairs, &count, &next_, &room_, flush, state);
      });
  }
  begin_ += static_cast<size_t>(used);
  length_ += static_cast<uint64_t>(used);
}

int Encoder::choose(OrbLZ77Pair* pairs, int count) {
  int mode = orbLZ77BlockDynamic;
  switch (blocks_) {
    case Blocks::kShortest:
      legacy90orbsEncodeLZ77SelectHuffMode_8u(pairs, count, &mode, state_.get());
      break;
    case Blocks::kFixed:
      mode = orbLZ77BlockFixed;
      break;
    case Blocks::kDynamic:
      break;
    case Blocks::kStored:
      mode = orbLZ77BlockStored;
  }
  return mode;
}

// The coder makes as many blocks as it takes, but marks each of one call as the last.
void Encoder::codeStored(Orb8u* bytes, int count, bool last) {
  int tail = last ? std::min(count, kLongestStored) : 0;
  int head = count - tail;
  const auto code = [&](int& part, int flush) {
    codeAll([&] {
      return legacy90orbsEncodeLZ77StoredBlock_8u(&bytes, &part, &next_, &room_, flush,
                                                  state_.get());
    });
  };
  if (head > 0) code(head, orbLZ77FlushNone);
  if (last) code(tail, orbLZ77FlushFinish);
}

// Calls a coder until its block is complete.
template <class Code>
void Encoder::codeAll(Code code) {
  OrbStatus status = orbStsDstFull;
  while (status == orbStsDstFull) {
    // Without room a coder would take the block's header for written.
    if (room_ == 0) flush();
    status = code();
  }
  if (status != orbStsNoErr && status != orbStsStreamEnd) {
    throw Error("a block can't be coded: status " + std::to_string(status));
  }
}

void Encoder::flush() {
  sink_.write(ByteView(output_.data(), static_cast<size_t>(next_ - output_.data())));
  next_ = output_.data();
  room_ = static_cast<int>(kOutputRoom);
}

// From the trailer, whose own count of bytes is of no use: it includes a dictionary, and is cut in
// a stream of 2 GB.
uint32_t Encoder::readChecksum() {
  if (checksum_ == Checksum::kNone) return 0;
  Orb8u trailer[9];  // one more than there may be, as the byte behind it is cleared
  Orb8u* next = trailer;
  int room = sizeof trailer;
  legacy90orbsEncodeLZ77SetStatus_8u(orbLZ77PhaseFinal, state_.get());
  legacy90orbsEncodeLZ77Flush_8u(&next, &room, state_.get());
  const auto byte = [&](int i) { return static_cast<uint32_t>(trailer[i]); };
  if (checksum_ == Checksum::kCrc32) return byte(0) | byte(1) << 8 | byte(2) << 16 | byte(3) << 24;
  // The library starts both sums at 0. Started at 1 as RFC 1950 has it, the sum is 1 more all the
  // time, and the sum of sums gathers that 1 with each byte.
  const uint32_t sumOfSums = byte(0) << 8 | byte(1);
  const uint32_t sum = byte(2) << 8 | byte(3);
  return (sumOfSums + static_cast<uint32_t>(length_ % kAdlerModulus)) % kAdlerModulus << 16 |
         (sum + 1) % kAdlerModulus;
}

}  // namespace

Deflated deflate(Source& source, Sink& sink, const DeflateOptions& options, Checksum checksum) {
  return Encoder(source, sink, options, checksum).run();
}

}  // namespace orbhost::gzip
