#include "hosts/gzip/deflate_decode.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>

#include "hosts/error.h"

namespace orbhost::gzip {

namespace {

// The decoder holds at most 32 bits, so that is what it can hand back.
constexpr size_t kHandedBack = 4;
constexpr size_t kInputRoom = 65536;
constexpr size_t kOutputRoom = 131072;
constexpr size_t kWindow = 32768;

// None of the three: the decoder leaves the mode alone where a header has the fourth value.
constexpr OrbLZ77BlockMode kNoMode = -1;

// Calls the library on what the input holds and moves the input on.
template <class Call>
OrbStatus step(Input& input, Call call) {
  Orb8u* next = input.data();
  Orb32s left = static_cast<Orb32s>(input.size());
  const OrbStatus status = call(&next, &left);
  input.moveTo(next);
  return status;
}

class DamageError : public Error {
 public:
  using Error::Error;
};

void readOn(Input& input) {
  if (!input.more()) throw DamageError("the file ends within the compressed data");
}

[[noreturn]] void failAt(const Input& input) {
  throw DamageError("the compressed data is damaged, at or before byte " +
                    std::to_string(input.position()));
}

}  // namespace

Input::Input(Source& source) : source_(source), buffer_(kInputRoom) {}

bool Input::more() {
  const size_t kept = std::min(begin_, kHandedBack);
  const size_t dropped = begin_ - kept;
  std::memmove(buffer_.data(), buffer_.data() + dropped, end_ - dropped);
  dropped_ += dropped;
  begin_ -= dropped;
  end_ -= dropped;
  const size_t got = source_.read(buffer_.data() + end_, buffer_.size() - end_);
  end_ += got;
  return got != 0;
}

bool Input::require(size_t count) {
  while (size() < count) {
    if (!more()) return false;
  }
  return true;
}

void Input::moveTo(const Orb8u* next) {
  begin_ = static_cast<size_t>(next - buffer_.data());
}

void Decoder::Free::operator()(OrbLZ77DecState* state) const {
  legacy90orbsLZ77Free_8u(state);
}

Decoder::Decoder() : output_(kOutputRoom) {
  OrbLZ77DecState* state = nullptr;
  if (legacy90orbsDecodeLZ77InitAlloc_8u(orbLZ77ChecksumNone, &state) != orbStsNoErr) {
    throw std::bad_alloc();
  }
  state_.reset(state);
}

void Decoder::decode(Input& input, ByteView dictionary, Sink& sink) {
  begin(dictionary);
  try {
    OrbStatus status = orbStsNoErr;
    while (status != orbStsStreamEnd) {
      const OrbLZ77BlockMode mode = readBlockMode(input);
      status = decodeBlock(mode, input, sink);
    }
  } catch (const DamageError&) {
    flush(sink);
    throw;
  }
  flush(sink);
}

void Decoder::begin(ByteView dictionary) {
  legacy90orbsDecodeLZ77Reset_8u(state_.get());
  // A whole window, so that nothing from before this stream can be reached.
  Orb8u history[kWindow] = {};
  const size_t count = std::min(dictionary.size, kWindow);
  std::copy_n(dictionary.data + (dictionary.size - count), count, history + (kWindow - count));
  legacy90orbsDecodeLZ77SetDictionary_8u(history, kWindow, state_.get());
  next_ = output_.data();
  room_ = static_cast<Orb32s>(output_.size());
}

OrbLZ77BlockMode Decoder::readBlockMode(Input& input) {
  OrbLZ77BlockMode mode = kNoMode;
  const auto read = [&](Orb8u** next, Orb32s* left) {
    return legacy90orbsDecodeLZ77GetBlockType_8u(next, left, &mode, state_.get());
  };
  while (step(input, read) == orbStsSrcShort) readOn(input);
  if (mode == kNoMode) failAt(input);
  return mode;
}

OrbStatus Decoder::decodeBlock(OrbLZ77BlockMode mode, Input& input, Sink& sink) {
  OrbLZ77DecState* const state = state_.get();
  const auto decode = [&](Orb8u** next, Orb32s* left) {
    switch (mode) {
      case orbLZ77BlockStored:
        return legacy90orbsDecodeLZ77StoredBlock_8u(next, left, &next_, &room_, state);
      case orbLZ77BlockFixed:
        return legacy90orbsDecodeLZ77FixedHuffFull_8u(next, left, &next_, &room_, orbLZ77FlushNone,
                                                      state);
      default:
        return legacy90orbsDecodeLZ77DynamicHuffFull_8u(next, left, &next_, &room_,
                                                        orbLZ77FlushNone, state);
    }
  };
  for (;;) {
    const OrbStatus status = step(input, decode);
    switch (status) {
      case orbStsNoErr:
      case orbStsStreamEnd:
        return status;
      case orbStsSrcShort:
        readOn(input);
        break;
      case orbStsDstFull:
        flush(sink);
        break;
      default:
        failAt(input);
    }
  }
}

void Decoder::flush(Sink& sink) {
  sink.write(ByteView(output_.data(), static_cast<size_t>(next_ - output_.data())));
  next_ = output_.data();
  room_ = static_cast<Orb32s>(output_.size());
}

}  // namespace orbhost::gzip
