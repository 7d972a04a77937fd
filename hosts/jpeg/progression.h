// Which scans a picture may have, and in which order (ITU-T T.81 B.2.3, G.1.1.1): the same rules
// for a file that is read and for a script that is to be followed.
#ifndef ORB_HOSTS_JPEG_PROGRESSION_H
#define ORB_HOSTS_JPEG_PROGRESSION_H

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "hosts/jpeg/markers.h"

namespace orbhost::jpeg {

// How a scan codes a block (T.81 F.1.2, G.1.2).
enum class Pass { kSequential, kDcFirst, kDcRefine, kAcFirst, kAcRefine };

inline Pass passOf(bool progressive, const Selection& selection) {
  if (!progressive) return Pass::kSequential;
  if (selection.ss == 0) return selection.ah == 0 ? Pass::kDcFirst : Pass::kDcRefine;
  return selection.ah == 0 ? Pass::kAcFirst : Pass::kAcRefine;
}

inline bool needsDcTable(Pass pass) {
  return pass == Pass::kSequential || pass == Pass::kDcFirst;
}
inline bool needsAcTable(Pass pass) {
  return pass == Pass::kSequential || pass == Pass::kAcFirst || pass == Pass::kAcRefine;
}

// Follows the scans of a picture.
class Progression {
 public:
  Progression(int components, bool progressive);

  // Takes note of the next scan. Returns what is wrong with it, if anything.
  std::optional<std::string> add(const std::vector<int>& components, const Selection& selection);

  // Whether every component has been begun. What else a progressive picture may lack is precision.
  bool isShowable() const;

 private:
  static constexpr int8_t kUnknown = -1;

  std::optional<std::string> addSequential(int component);
  std::optional<std::string> addProgressive(int component, const Selection& selection);

  bool progressive_;
  // The lowest bit that is known of each coefficient of each component.
  std::vector<std::array<int8_t, 64>> known_;
};

}  // namespace orbhost::jpeg

#endif
