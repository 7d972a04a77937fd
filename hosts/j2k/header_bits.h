// The bits of packet headers, and the tag trees in them (ITU-T T.800 B.10.1, B.10.2).
#ifndef ORB_HOSTS_J2K_HEADER_BITS_H
#define ORB_HOSTS_J2K_HEADER_BITS_H

#include <algorithm>
#include <cstdint>
#include <vector>

#include "hosts/bytes.h"

namespace orbhost::j2k {

// Reads bits, highest first. A byte behind one of 255 has only seven.
class HeaderBits {
 public:
  explicit HeaderBits(ByteView bytes) : bytes_(bytes) {}

  // 0 behind the end.
  uint32_t bit() {
    if (left_ == 0) {
      left_ = byte_ == 0xFF ? 7 : 8;
      if (position_ < bytes_.size) {
        byte_ = bytes_[position_++];
      } else {
        byte_ = 0;
        isPastEnd_ = true;
      }
    }
    --left_;
    return static_cast<uint32_t>(byte_ >> left_) & 1;
  }
  uint32_t bits(int count) {
    uint32_t value = 0;
    for (int i = 0; i < count; ++i) value = value << 1 | bit();
    return value;
  }

  bool isPastEnd() const { return isPastEnd_; }

  // How many bytes a header that ends here has: whole ones, and one more behind one of 255.
  size_t byteCount() const {
    return byte_ == 0xFF && position_ < bytes_.size ? position_ + 1 : position_;
  }

 private:
  ByteView bytes_;
  size_t position_ = 0;
  int byte_ = 0;
  int left_ = 0;
  bool isPastEnd_ = false;
};

// Reads a number for each code-block of a precinct: a tree's nodes have the minima of four below.
class TagTreeReader {
 public:
  TagTreeReader(uint32_t columns, uint32_t rows) {
    size_t nodes = 0;
    for (;;) {
      levels_.push_back({columns, nodes});
      nodes += static_cast<size_t>(columns) * rows;
      if (columns <= 1 && rows <= 1) break;
      columns = (columns + 1) / 2;
      rows = (rows + 1) / 2;
    }
    nodes_.resize(nodes);
  }

  // Whether a leaf is below the threshold: reads on until that is known.
  bool isBelow(uint32_t column, uint32_t row, uint32_t threshold, HeaderBits& bits) {
    const Node& leaf = readTo(column, row, threshold, bits);
    return leaf.isKnown && leaf.low < threshold;
  }

  // A leaf, or `limit` if it is not below that.
  uint32_t value(uint32_t column, uint32_t row, uint32_t limit, HeaderBits& bits) {
    return std::min<uint32_t>(readTo(column, row, limit, bits).low, limit);
  }

 private:
  struct Node {
    uint16_t low = 0;  // what the number is known to reach
    bool isKnown = false;
  };
  struct Level {
    uint32_t columns;
    size_t first;
  };

  // From the root down, as far as the thresholds of all earlier calls and this one ask for.
  const Node& readTo(uint32_t column, uint32_t row, uint32_t threshold, HeaderBits& bits) {
    uint16_t low = 0;
    for (size_t i = levels_.size();; --i) {
      const int level = static_cast<int>(i) - 1;
      Node& node =
          nodes_[levels_[level].first + static_cast<size_t>(row >> level) * levels_[level].columns +
                 (column >> level)];
      if (node.low < low) node.low = low;
      while (!node.isKnown && node.low < threshold) {
        if (bits.bit() != 0) {
          node.isKnown = true;
        } else {
          ++node.low;
        }
      }
      if (level == 0) return node;
      low = node.low;
    }
  }

  std::vector<Level> levels_;  // the leaves' first
  std::vector<Node> nodes_;
};

}  // namespace orbhost::j2k

#endif
