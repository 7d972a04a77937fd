// WAV files of samples of 16 or 24 bits, or of floats: their container is libsndfile's affair.
#ifndef ORB_HOSTS_WAV_WAV_FILE_H
#define ORB_HOSTS_WAV_WAV_FILE_H

#include "hosts/bytes.h"

namespace orbhost::wav {

enum class SampleFormat { k16, k24, kFloat };

inline int bytesOf(SampleFormat format) {
  return format == SampleFormat::k16 ? 2 : format == SampleFormat::k24 ? 3 : 4;
}

// Interleaved samples as they lie in a file, the lowest byte first.
struct Sound {
  SampleFormat format;
  int rate;
  int channels;
  Bytes samples;

  size_t length() const {
    return samples.size() / (static_cast<size_t>(channels) * bytesOf(format));
  }
};

// An Error if the file is no WAV, or its samples are of another kind.
Sound parseWav(const Bytes& file);

Bytes formatWav(const Sound& sound);

}  // namespace orbhost::wav

#endif
