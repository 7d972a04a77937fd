// What the gallery shows of filters, morphology, rotation and warp.
#include "hosts/image/gallery.h"
#include "hosts/image/operations.h"

namespace orbhost::image {

namespace {

struct Method {
  const char* name;
  int value;
};
constexpr Method kMethods[] = {{"nearest", orbInterNearest},
                               {"linear", orbInterLinear},
                               {"lagrange", orbInterLagrange},
                               {"catmullrom", orbInterCatmullRom}};

// The corners of a picture in a frame that leans back, as fractions of its size.
Corners leaning(const Image& sample) {
  const double w = sample.width() - 1, h = sample.height() - 1;
  return {{{0.22 * w, 0.12 * h}, {0.82 * w, 0.02 * h}, {0.97 * w, 0.93 * h}, {0.03 * w, 0.78 * h}}};
}
// The picture six times as large and turned a little, so that a place right of its middle is there.
Corners enlarged(const Image& sample) {
  const double w = sample.width() - 1, h = sample.height() - 1;
  const auto corner = [=](double x, double y) {
    const double dx = (x - 0.72) * w, dy = (y - 0.6) * h;
    return Point{w / 2 + 5.8 * dx + 1.5 * dy, h / 2 - 1.5 * dx + 5.8 * dy};
  };
  return {{corner(0, 0), corner(1, 0), corner(1, 1), corner(0, 1)}};
}

}  // namespace

void addOperations(std::vector<Exhibit>& exhibits) {
  const auto add = [&](const std::string& name, const std::string& caption,
                       std::function<Image(const Image&)> make) {
    exhibits.push_back({name, caption, std::move(make)});
  };
  const struct {
    const char* name;
    FilterKind kind;
  } filters[] = {{"gauss", FilterKind::kGauss},
                 {"lowpass", FilterKind::kLowpass},
                 {"hipass", FilterKind::kHipass},
                 {"laplace", FilterKind::kLaplace}};
  for (const auto& filterOf : filters) {
    const std::string name = filterOf.name;
    const FilterKind kind = filterOf.kind;
    add(name + "-3", name + " 3 x 3",
        [=](const Image& sample) { return filter(sample, kind, orbMask3x3); });
    add(name + "-5", name + " 5 x 5",
        [=](const Image& sample) { return filter(sample, kind, orbMask5x5); });
  }
  add("dilate", "dilate", dilate);
  add("erode", "erode", erode);
  for (const int angle : {90, 180, 270}) {
    add("rotate-" + std::to_string(angle), "rotate by " + std::to_string(angle),
        [=](const Image& sample) { return rotate(sample, angle, Canvas::kFit, orbInterNearest); });
  }
  for (const Method& method : kMethods) {
    const std::string name = method.name;
    const int value = method.value;
    add("rotate-15-" + name, "rotate by 15, " + name,
        [=](const Image& sample) { return rotate(sample, 15, Canvas::kFit, value); });
  }
  add("rotate-15-smooth", "rotate by 15, linear, smooth edges", [](const Image& sample) {
    return rotate(sample, 15, Canvas::kFit, orbInterLinear | orbInterEdgeBlend);
  });
  for (const Method& method : kMethods) {
    const std::string name = method.name;
    const int value = method.value;
    add("warp-" + name, "warp, " + name,
        [=](const Image& sample) { return warp(sample, leaning(sample), Canvas::kSame, value); });
  }
  add("warp-smooth", "warp, linear, smooth edges", [](const Image& sample) {
    return warp(sample, leaning(sample), Canvas::kSame, orbInterLinear | orbInterEdgeBlend);
  });
  for (const Method& method : kMethods) {
    const std::string name = method.name;
    const int value = method.value;
    add("detail-" + name, "warp, 6 times as large, " + name,
        [=](const Image& sample) { return warp(sample, enlarged(sample), Canvas::kSame, value); });
  }
}

std::vector<Exhibit> allExhibits() {
  std::vector<Exhibit> exhibits;
  addOperations(exhibits);
  addResizes(exhibits);
  return exhibits;
}

}  // namespace orbhost::image
