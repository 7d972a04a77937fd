// Pictures that tests draw, and how far two of them are apart.
#ifndef ORB_TESTS_HOSTS_SUPPORT_PICTURES_H
#define ORB_TESTS_HOSTS_SUPPORT_PICTURES_H

#include <ostream>

#include "hosts/image.h"

namespace orbtest {

enum class Motif { kGradient, kNoise, kEdges, kScene };

// Drawn afresh for each size, and always the same.
orbhost::Image draw(Motif motif, int width, int height, int channels, int maximum = 255);

// The Earth from Debian's xplanet-images, 2048 x 1024 divided by 1 or 2, where that is installed;
// else a scene.
const orbhost::Image& photograph(int scale = 1);
bool isPhotographThere();

struct Difference {
  int largest;
  double mean;
};
std::ostream& operator<<(std::ostream& out, const Difference& difference);

// Of two pictures, sample by sample; all that there can be if their shapes differ.
Difference difference(const orbhost::Image& a, const orbhost::Image& b);

// In dB, over all samples; infinite for equal pictures, 0 if their shapes differ.
double psnr(const orbhost::Image& a, const orbhost::Image& b);

}  // namespace orbtest

#endif
