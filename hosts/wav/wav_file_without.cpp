// A build for a target that has no libsndfile.
#include "hosts/error.h"
#include "hosts/wav/wav_file.h"

namespace orbhost::wav {

Sound parseWav(const Bytes&) {
  throw Error("this orb was built without libsndfile and reads no WAV");
}

Bytes formatWav(const Sound&) {
  throw Error("this orb was built without libsndfile and writes no WAV");
}

}  // namespace orbhost::wav
