// Tag trees, as they are written (ITU-T T.800 B.10.2).
#ifndef ORB_HOSTS_J2K_TAG_TREE_WRITER_H
#define ORB_HOSTS_J2K_TAG_TREE_WRITER_H

#include <cstdint>
#include <vector>

#include "hosts/j2k/header_bit_writer.h"

namespace orbhost::j2k {

// A number for each of width x height leaves, told as far as it is asked for: each node has the
// least number of the four below it, and what was told of a node is not told again.
class TagTreeWriter {
 public:
  TagTreeWriter(int width, int height);

  // Sets a leaf, which has no number at first: it is above all others. What was written of it so
  // far has to be true of the number.
  void set(int leaf, int number);

  // Tells whether the leaf's number is below the threshold, and if it is, which one.
  static constexpr int kAll = INT32_MAX;
  void write(int leaf, int threshold, HeaderBitWriter& bits);

 private:
  static constexpr int32_t kNone = -1;

  struct Node {
    int32_t parent;
    int32_t number;
    int32_t told;  // the number is known not to be below this
    bool isKnown;  // all is told
  };
  std::vector<Node> nodes_;
};

}  // namespace orbhost::j2k

#endif
