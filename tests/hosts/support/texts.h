// Data for compressors, drawn afresh and always the same.
#ifndef ORB_TESTS_HOSTS_SUPPORT_TEXTS_H
#define ORB_TESTS_HOSTS_SUPPORT_TEXTS_H

#include <string>
#include <vector>

#include "hosts/bytes.h"

namespace orbtest {

orbhost::Bytes bytesOf(const std::string& text);

// Lines of made-up words, a few of them frequent, as in a language.
orbhost::Bytes prose(size_t size);

// Bytes that nothing can be known of.
orbhost::Bytes noise(size_t size);

// One byte over and over.
orbhost::Bytes run(size_t size);

// Stretches of each in turn, of any length up to some hundred thousand bytes, and of records that
// repeat from far away.
orbhost::Bytes mixture(size_t size);

struct Sample {
  std::string name;
  orbhost::Bytes bytes;
};
// The sizes at which something changes, of every nature.
const std::vector<Sample>& samples();

}  // namespace orbtest

#endif
