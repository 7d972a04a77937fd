#include "hosts/wav/channels.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>

#include "hosts/error.h"
#include "orb90legacy.h"

namespace orbhost::wav {

namespace {

// Channels of their own as arrays of one type, and pointers to them as the library takes them.
template <class T>
struct Channels {
  std::vector<std::vector<T>> samples;
  std::vector<T*> pointers;

  Channels(int count, size_t length) : samples(static_cast<size_t>(count), std::vector<T>(length)) {
    for (std::vector<T>& channel : samples) pointers.push_back(channel.data());
  }
  int count() const { return static_cast<int>(pointers.size()); }
  int length() const { return static_cast<int>(samples[0].size()); }
};

void check(OrbStatus status) {
  if (status < 0) throw Error("the samples can't be converted");
}

int lengthOf(const Sound& sound) {
  if (sound.length() > static_cast<size_t>(std::numeric_limits<int>::max())) {
    throw Error("the sound is too long");
  }
  return static_cast<int>(sound.length());
}

Sound emptyLike(const Sound& sound, SampleFormat format, int channels) {
  const size_t size = sound.length() * static_cast<size_t>(channels) * bytesOf(format);
  return {format, sound.rate, channels, Bytes(size)};
}

// Samples of 16 bits and floats are as they are in memory; those of 24 bits have no type.
const Orb16s* words(const Sound& sound) {
  return reinterpret_cast<const Orb16s*>(sound.samples.data());
}
Orb16s* words(Sound& sound) {
  return reinterpret_cast<Orb16s*>(sound.samples.data());
}
Orb32f* floats(Sound& sound) {
  return reinterpret_cast<Orb32f*>(sound.samples.data());
}

Channels<Orb32f> splitToFloats(const Sound& sound) {
  Channels<Orb32f> channels(sound.channels, sound.length());
  const int length = lengthOf(sound);
  if (length == 0) return channels;
  Orb32f** const to = channels.pointers.data();
  switch (sound.format) {
    case SampleFormat::k16:
      check(legacy90orbsSplitScaled_16s32f_D2L(words(sound), to, sound.channels, length));
      break;
    case SampleFormat::k24:
      check(legacy90orbsSplitScaled_24s32f_D2L(sound.samples.data(), to, sound.channels, length));
      break;
    case SampleFormat::kFloat:
      for (int c = 0; c < sound.channels; ++c) {
        for (int i = 0; i < length; ++i) {
          const size_t index = static_cast<size_t>(i) * sound.channels + c;
          std::memcpy(&to[c][i], sound.samples.data() + index * sizeof(Orb32f), sizeof(Orb32f));
        }
      }
  }
  return channels;
}

// Into a sound that has the room.
void joinFloats(Channels<Orb32f>& channels, Sound& sound) {
  if (channels.length() == 0) return;
  Orb32f** const from = channels.pointers.data();
  const int length = channels.length();
  switch (sound.format) {
    case SampleFormat::k16:
      check(legacy90orbsJoinScaled_32f16s_D2L(from, channels.count(), length, words(sound)));
      break;
    case SampleFormat::k24:
      check(
          legacy90orbsJoinScaled_32f24s_D2L(from, channels.count(), length, sound.samples.data()));
      break;
    case SampleFormat::kFloat:
      check(legacy90orbsInterleave_32f(from, channels.count(), length, floats(sound)));
  }
}

template <class T>
Sound soundOfChannel(const Sound& sound, const std::vector<T>& channel) {
  Sound one = emptyLike(sound, sound.format, 1);
  std::memcpy(one.samples.data(), channel.data(), one.samples.size());
  return one;
}

}  // namespace

Sound withFormat(const Sound& sound, SampleFormat format) {
  if (format == sound.format) return sound;
  Channels<Orb32f> channels = splitToFloats(sound);
  Sound converted = emptyLike(sound, format, sound.channels);
  joinFloats(channels, converted);
  return converted;
}

std::vector<Sound> split(const Sound& sound) {
  std::vector<Sound> sounds;
  if (sound.format == SampleFormat::k16) {
    Channels<Orb16s> channels(sound.channels, sound.length());
    if (sound.length() > 0) {
      check(legacy90orbsDeinterleave_16s(words(sound), sound.channels, lengthOf(sound),
                                         channels.pointers.data()));
    }
    for (const auto& channel : channels.samples) sounds.push_back(soundOfChannel(sound, channel));
    return sounds;
  }
  Channels<Orb32f> channels = splitToFloats(sound);
  for (const auto& channel : channels.samples) {
    if (sound.format == SampleFormat::kFloat) {
      sounds.push_back(soundOfChannel(sound, channel));
      continue;
    }
    Channels<Orb32f> alone(1, 0);
    alone.samples[0] = channel;
    alone.pointers[0] = alone.samples[0].data();
    sounds.push_back(emptyLike(sound, sound.format, 1));
    joinFloats(alone, sounds.back());
  }
  return sounds;
}

Sound join(std::vector<Sound> sounds) {
  size_t longest = 0;
  for (Sound& sound : sounds) {
    if (sound.channels != 1) {
      throw Error("only sounds of one channel are joined, and there is one of " +
                  std::to_string(sound.channels));
    }
    if (sound.rate != sounds[0].rate) {
      throw Error("the sounds have different rates: " + std::to_string(sounds[0].rate) + " and " +
                  std::to_string(sound.rate));
    }
    sound = withFormat(sound, sounds[0].format);
    longest = std::max(longest, sound.length());
  }
  const int count = static_cast<int>(sounds.size());
  for (Sound& sound : sounds) sound.samples.resize(longest * bytesOf(sound.format));
  Sound joined = emptyLike(sounds[0], sounds[0].format, count);
  if (longest == 0) return joined;
  if (joined.format == SampleFormat::k16) {
    std::vector<Orb16s*> pointers;
    for (Sound& sound : sounds) pointers.push_back(words(sound));
    check(legacy90orbsInterleave_16s(pointers.data(), count, lengthOf(sounds[0]), words(joined)));
    return joined;
  }
  Channels<Orb32f> channels(count, longest);
  for (int c = 0; c < count; ++c) {
    channels.samples[c] = splitToFloats(sounds[c]).samples[0];
    channels.pointers[c] = channels.samples[c].data();
  }
  joinFloats(channels, joined);
  return joined;
}

}  // namespace orbhost::wav
