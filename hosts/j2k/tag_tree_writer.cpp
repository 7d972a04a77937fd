#include "hosts/j2k/tag_tree_writer.h"

#include <limits>

namespace orbhost::j2k {

TagTreeWriter::TagTreeWriter(int width, int height) {
  if (width == 0 || height == 0) return;
  for (int first = 0;;) {
    const bool isRoot = width == 1 && height == 1;
    const int parents = first + width * height;
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        const int parent = isRoot ? kNone : parents + y / 2 * ((width + 1) / 2) + x / 2;
        nodes_.push_back({parent, std::numeric_limits<int32_t>::max(), 0, false});
      }
    }
    if (isRoot) return;
    first = parents;
    width = (width + 1) / 2;
    height = (height + 1) / 2;
  }
}

void TagTreeWriter::set(int leaf, int number) {
  for (int32_t i = leaf; i != kNone && nodes_[i].number > number; i = nodes_[i].parent) {
    nodes_[i].number = number;
  }
}

void TagTreeWriter::write(int leaf, int threshold, HeaderBitWriter& bits) {
  int32_t path[32];
  int depth = 0;
  for (int32_t i = leaf; i != kNone; i = nodes_[i].parent) path[depth++] = i;
  int32_t least = 0;
  while (depth > 0) {
    Node& node = nodes_[path[--depth]];
    if (node.told < least) node.told = least;
    while (node.told < threshold && !node.isKnown) {
      node.isKnown = node.told == node.number;
      bits.put(node.isKnown ? 1 : 0);
      if (!node.isKnown) ++node.told;
    }
    least = node.told;
  }
}

}  // namespace orbhost::j2k
