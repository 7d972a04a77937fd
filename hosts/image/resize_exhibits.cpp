// What the gallery shows of resizing: every method, up and down.
#include "hosts/image/gallery.h"
#include "hosts/image/resize.h"

namespace orbhost::image {

namespace {

struct Method {
  const char* name;
  int value;
};
constexpr Method kMethods[] = {{"nearest", orbInterNearest},       {"linear", orbInterLinear},
                               {"lagrange", orbInterLagrange},     {"bspline", orbInterBSpline},
                               {"catmullrom", orbInterCatmullRom}, {"b05c03", orbInterCubicB05C03},
                               {"lanczos", orbInterLanczos}};

// A place right of the middle, six times as large, in a picture of the sample's size.
Image enlarged(const Image& sample, int interpolation) {
  constexpr double kFactor = 6;
  const double x = 0.72 * sample.width(), y = 0.6 * sample.height();
  return resize(sample,
                {{0, 0, sample.width(), sample.height()},
                 kFactor,
                 kFactor,
                 sample.width() / 2. - x * kFactor,
                 sample.height() / 2. - y * kFactor,
                 {sample.width(), sample.height()}},
                interpolation);
}

Image reduced(const Image& sample, int interpolation) {
  return resize(sample, placedBy(sample, 0.37), interpolation);
}

}  // namespace

void addResizes(std::vector<Exhibit>& exhibits) {
  const auto add = [&](const std::string& kind, const std::string& what, const Method& method,
                       int option, Image (*make)(const Image&, int)) {
    const int interpolation = method.value | option;
    exhibits.push_back({kind + "-" + method.name, what + ", " + method.name,
                        [=](const Image& sample) { return make(sample, interpolation); }});
  };
  for (const Method& method : kMethods) add("enlarge", "6 times as large", method, 0, enlarged);
  for (const Method& method : kMethods) add("reduce", "by 0.37", method, 0, reduced);
  add("reduce", "by 0.37", {"area", orbInterSuper}, 0, reduced);
  for (const Method& method : kMethods) {
    if (method.value == orbInterNearest) continue;
    add("antialias", "by 0.37, antialiased", method, orbInterAntialias, reduced);
  }
  add("fade", "by 0.37, faded edges", {"linear", orbInterLinear}, orbInterEdgeFade, reduced);
}

}  // namespace orbhost::image
