// The library's own frame state, put back as it was when a test is done with it.
#ifndef ORB_TESTS_SUPPORT_FRAME_STATE_H
#define ORB_TESTS_SUPPORT_FRAME_STATE_H

#include "frame/dispatch.h"

namespace orbtest {

class SavedFrameState {
 public:
  SavedFrameState() : saved_(orbFrameState) {}
  SavedFrameState(const SavedFrameState&) = delete;
  SavedFrameState& operator=(const SavedFrameState&) = delete;
  ~SavedFrameState() { orbFrameState = saved_; }

  // As it is when the library has just been loaded.
  static void reload() { orbFrameState = orb::FrameState{}; }

 private:
  orb::FrameState saved_;
};

}  // namespace orbtest

#endif
