// Holds the exports against the public list, and the tests against the exports.
#include <gtest/gtest.h>

#include <iostream>
#include <map>
#include <set>
#include <string>

#include "tests/support/builds.h"

namespace {

using Groups = std::map<std::string, int>;  // group of each name, 0 for the frame's own

const Groups& publicList() {
  static const Groups list = {
#define ORB_LISTED(group, name) {#name, group},
#include "tests/frame/full_exports.inc"
  };
  return list;
}

const Groups& standing() {
  static const Groups list = {
#define ORB_FRAME_EXPORT(bytes, name) {#name, 0},
#define ORB_VERSION_EXPORT(group, bytes, name) {#name, group},
#define ORB_EXPORT(group, bytes, name) {#name, group},
#include "frame/exports.inc"
  };
  return list;
}

TEST(Coverage, ThePublicListIsWhole) {
  std::map<int, int> sizes;
  for (const auto& [name, group] : publicList()) ++sizes[group];
  const std::map<int, int> expected = {{0, 6},   {1, 3}, {2, 14}, {3, 67}, {4, 27},
                                       {5, 285}, {6, 2}, {7, 4},  {8, 13}};
  EXPECT_EQ(sizes, expected);
  EXPECT_EQ(publicList().size(), 421u);
}

TEST(Coverage, EveryExportIsOnThePublicList) {
  for (const auto& [name, group] : standing()) {
    const auto listed = publicList().find(name);
    if (listed == publicList().end()) {
      ADD_FAILURE() << name << " is no export of the public list";
    } else {
      EXPECT_EQ(group, listed->second) << "group of " << name;
    }
  }
  std::cout << standing().size() << " of " << publicList().size() << " exports stand, "
            << publicList().size() - standing().size() << " are missing\n";
}

// The exports that the notes leave out.
std::string without(const std::set<std::string>& notes) {
  std::string missing;
#define ORB_EXPORT(group, bytes, name) \
  if (notes.count(#name) == 0) missing += "\n  " #name;
#include "frame/exports.inc"
  return missing;
}

TEST(Coverage, EveryBodyHasATestOfItsMeaning) {
  EXPECT_EQ(without(orbtest::testedMeanings()), "") << "have no ORB_MEANING";
}

TEST(Coverage, EveryBodyHasATestOfAgreement) {
  EXPECT_EQ(without(orbtest::testedAgreements()), "") << "have no ORB_AGREEMENT";
}

}  // namespace
