#include "hosts/wav/wav_file.h"

#include <sndfile.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>

#include "hosts/error.h"

namespace orbhost::wav {

namespace {

// A file in memory, as libsndfile's virtual input and output.
struct MemoryFile {
  Bytes bytes;
  sf_count_t at = 0;

  sf_count_t size() const { return static_cast<sf_count_t>(bytes.size()); }
};

MemoryFile& fileOf(void* user) {
  return *static_cast<MemoryFile*>(user);
}
sf_count_t sizeOfFile(void* user) {
  return fileOf(user).size();
}
sf_count_t tellFile(void* user) {
  return fileOf(user).at;
}
sf_count_t seekFile(sf_count_t offset, int whence, void* user) {
  MemoryFile& file = fileOf(user);
  const sf_count_t base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? file.at : file.size();
  if (base + offset < 0) return -1;
  return file.at = base + offset;
}
sf_count_t readFile(void* to, sf_count_t count, void* user) {
  MemoryFile& file = fileOf(user);
  const sf_count_t got = std::clamp<sf_count_t>(file.size() - file.at, 0, count);
  if (got == 0) return 0;
  std::memcpy(to, file.bytes.data() + file.at, static_cast<size_t>(got));
  file.at += got;
  return got;
}
sf_count_t writeFile(const void* from, sf_count_t count, void* user) {
  MemoryFile& file = fileOf(user);
  if (count == 0) return 0;
  if (file.at + count > file.size()) file.bytes.resize(static_cast<size_t>(file.at + count));
  std::memcpy(file.bytes.data() + file.at, from, static_cast<size_t>(count));
  file.at += count;
  return count;
}

struct Close {
  void operator()(SNDFILE* file) const { sf_close(file); }
};
using OpenFile = std::unique_ptr<SNDFILE, Close>;

OpenFile open(MemoryFile& file, int mode, SF_INFO& info) {
  SF_VIRTUAL_IO io = {sizeOfFile, seekFile, readFile, writeFile, tellFile};
  OpenFile opened(sf_open_virtual(&io, mode, &info, &file));
  if (!opened) throw Error(sf_strerror(nullptr));
  return opened;
}

int subtypeOf(SampleFormat format) {
  return format == SampleFormat::k16   ? SF_FORMAT_PCM_16
         : format == SampleFormat::k24 ? SF_FORMAT_PCM_24
                                       : SF_FORMAT_FLOAT;
}

}  // namespace

Sound parseWav(const Bytes& file) {
  MemoryFile memory = {file};
  SF_INFO info = {};
  const OpenFile opened = open(memory, SFM_READ, info);
  const int container = info.format & SF_FORMAT_TYPEMASK;
  const int subtype = info.format & SF_FORMAT_SUBMASK;
  if (container != SF_FORMAT_WAV && container != SF_FORMAT_WAVEX)
    throw Error("this is no WAV file");
  if ((info.format & SF_FORMAT_ENDMASK) == SF_ENDIAN_BIG) throw Error("its samples are big-endian");
  Sound sound = {SampleFormat::k16, info.samplerate, info.channels, {}};
  for (const SampleFormat format : {SampleFormat::k24, SampleFormat::kFloat}) {
    if (subtype == subtypeOf(format)) sound.format = format;
  }
  if (subtype != subtypeOf(sound.format)) {
    throw Error("its samples are neither of 16 or 24 bits nor floats");
  }
  // No more than there is in the file, whatever its header says.
  const sf_count_t frame = sf_count_t{info.channels} * bytesOf(sound.format);
  const sf_count_t size = std::min(info.frames, memory.size() / frame) * frame;
  sound.samples.resize(static_cast<size_t>(size));
  const sf_count_t got = sf_read_raw(opened.get(), sound.samples.data(), size);
  if (got != size) throw Error("the file ends within its samples");
  return sound;
}

Bytes formatWav(const Sound& sound) {
  MemoryFile memory;
  SF_INFO info = {};
  info.samplerate = sound.rate;
  info.channels = sound.channels;
  info.format = SF_FORMAT_WAV | subtypeOf(sound.format);
  OpenFile opened = open(memory, SFM_WRITE, info);
  // A chunk of peaks tells the time too: the same sound would make another file a second later.
  sf_command(opened.get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
  const sf_count_t size = static_cast<sf_count_t>(sound.samples.size());
  if (sf_write_raw(opened.get(), sound.samples.data(), size) != size) {
    throw Error(sf_strerror(opened.get()));
  }
  opened.reset();
  return memory.bytes;
}

}  // namespace orbhost::wav
