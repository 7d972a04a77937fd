#include "hosts/image/resize_command.h"

#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "hosts/error.h"
#include "hosts/file.h"
#include "hosts/image/picture.h"
#include "hosts/image/resize.h"

namespace orbhost::image {

namespace {

OrbiSize parseSize(const std::string& text) {
  OrbiSize size = {};
  char behind = 0;
  if (std::sscanf(text.c_str(), "%9dx%9d%c", &size.width, &size.height, &behind) != 2 ||
      size.width < 1 || size.height < 1) {
    throw Error("a size is written as 640x480 and not as " + text);
  }
  return size;
}

void addMethod(CLI::App& command, int& method, const std::map<std::string, int>& methods) {
  std::string names;
  for (const auto& [name, value] : methods) names += (names.empty() ? "" : "|") + name;
  command
      .add_option("-m,--method", method,
                  "How pixels are interpolated: linear by default; area takes means and only "
                  "reduces")
      ->transform(CLI::CheckedTransformer(methods).description(names));
}

struct Arguments {
  std::vector<std::string> files;
  double scale = 0;
  int method = orbInterLinear;
  bool antialias = false;
  int edge = 0;
};

void addResize(CLI::App& image) {
  CLI::App& command = *image.add_subcommand("resize", "Make a picture larger or smaller");
  const auto arguments = std::make_shared<Arguments>();
  static const std::map<std::string, int> kMethods = {{"nearest", orbInterNearest},
                                                      {"linear", orbInterLinear},
                                                      {"lagrange", orbInterLagrange},
                                                      {"bspline", orbInterBSpline},
                                                      {"catmullrom", orbInterCatmullRom},
                                                      {"b05c03", orbInterCubicB05C03},
                                                      {"area", orbInterSuper},
                                                      {"lanczos", orbInterLanczos}};
  static const std::map<std::string, int> kEdges = {{"fade", orbInterEdgeFade},
                                                    {"blend", orbInterEdgeBlend}};
  command
      .add_option("arguments", arguments->files,
                  "The new size, unless --scale is given; the picture, as PNG, PGM, PPM or PAM; "
                  "the picture that is written")
      ->required()
      ->expected(2, 3)
      ->type_name("[WxH] INPUT OUTPUT");
  command.add_option("-s,--scale", arguments->scale, "Both sides times this number")
      ->check(CLI::PositiveNumber);
  addMethod(command, arguments->method, kMethods);
  CLI::Option* const antialias = command.add_flag("-a,--antialias", arguments->antialias,
                                                  "As much wider a kernel as a reduction wants it");
  command
      .add_option("-e,--edge", arguments->edge,
                  "With --scale: pixels that are covered in part fade, into black or into what is "
                  "there")
      ->transform(CLI::CheckedTransformer(kEdges).description("fade|blend"))
      ->excludes(antialias);
  command.callback([=] {
    const bool hasSize = arguments->files.size() == 3;
    if (hasSize == (arguments->scale > 0)) {
      throw Error("resize takes either a size, as in 640x480, or --scale");
    }
    const std::string from = arguments->files[hasSize ? 1 : 0];
    const Picture picture = readPicture(from);
    const Image& pixels = picture.pixels;
    Image resized = withFile(from, [&] {
      return resize(
          pixels,
          hasSize ? placedInto(pixels, parseSize(arguments->files[0]))
                  : placedBy(pixels, arguments->scale),
          arguments->method | arguments->edge | (arguments->antialias ? orbInterAntialias : 0));
    });
    writePicture(arguments->files.back(), {std::move(resized), picture.isTransparent});
  });
}

void addResizeYuv(CLI::App& image) {
  CLI::App& command =
      *image.add_subcommand("resize-yuv", "Resize raw 4:2:2 frames of bytes Y0, Cb, Y1, Cr");
  struct YuvArguments {
    std::string from, to, input, output;
    int method = orbInterLinear;
  };
  const auto arguments = std::make_shared<YuvArguments>();
  static const std::map<std::string, int> kMethods = {{"nearest", orbInterNearest},
                                                      {"linear", orbInterLinear},
                                                      {"lagrange", orbInterLagrange},
                                                      {"area", orbInterSuper}};
  command.add_option("from", arguments->from, "The size of a frame")->required()->type_name("WxH");
  command.add_option("to", arguments->to, "Its new size")->required()->type_name("WxH");
  command.add_option("input", arguments->input, "Any number of frames")->required();
  command.add_option("output", arguments->output, "The same frames")->required();
  addMethod(command, arguments->method, kMethods);
  command.callback([=] {
    const OrbiSize from = parseSize(arguments->from), to = parseSize(arguments->to);
    const Bytes frames = readFile(arguments->input);
    writeFile(arguments->output, withFile(arguments->input, [&] {
                return resizeYuv(frames, from, to, arguments->method);
              }));
  });
}

}  // namespace

void addResizeCommands(CLI::App& image) {
  addResize(image);
  addResizeYuv(image);
}

}  // namespace orbhost::image
