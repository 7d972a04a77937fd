// Sounds of several channels, and of one.
#ifndef ORB_HOSTS_WAV_CHANNELS_H
#define ORB_HOSTS_WAV_CHANNELS_H

#include <vector>

#include "hosts/wav/wav_file.h"

namespace orbhost::wav {

// The same sound with samples of another kind: integers stand for -1 to 1, and what lies beyond
// becomes the last of them.
Sound withFormat(const Sound& sound, SampleFormat format);

// One sound for each channel.
std::vector<Sound> split(const Sound& sound);

// One sound of all, as long as the longest: the others end in silence. An Error if their rates
// differ. If their formats do, all take that of the first.
Sound join(std::vector<Sound> sounds);

}  // namespace orbhost::wav

#endif
