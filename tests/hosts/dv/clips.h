// Clips of DV that FFmpeg codes and decodes.
#ifndef ORB_TESTS_HOSTS_DV_CLIPS_H
#define ORB_TESTS_HOSTS_DV_CLIPS_H

#include <string>
#include <vector>

#include "hosts/bytes.h"

namespace orbtest {

struct Clip {
  std::string name;
  int width, height;
  std::string pixels;  // FFmpeg's name of the format
  std::string rate;
  bool isInterlaced;
};

// One of each format.
const std::vector<Clip>& clips();

// Two frames of moving pictures and noise, each field of its own moment, with the 2-4-8 transform
// where the coder finds it better. Coded once.
const orbhost::Bytes& codedClip(const Clip& clip);

// The planes of all frames, as FFmpeg decodes them with its accurate transform.
orbhost::Bytes judgeDecodeDv(const orbhost::Bytes& stream);

}  // namespace orbtest

#endif
