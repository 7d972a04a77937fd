// orb image: the library's operations on pictures.
#include <cmath>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "hosts/commands.h"
#include "hosts/error.h"
#include "hosts/image/gallery.h"
#include "hosts/image/operations.h"
#include "hosts/image/picture.h"
#include "hosts/image/resize_command.h"

namespace orbhost {

namespace {

using image::Canvas;
using image::Corners;
using image::FilterKind;
using image::Picture;

struct Arguments {
  std::string from;
  std::string to;
  FilterKind kind = FilterKind::kGauss;
  OrbiMaskSize mask = orbMask3x3;
  double angle = 0;
  std::vector<std::string> corners;
  bool fit = false;
  bool center = false;
  int method = orbInterLinear;
  bool smooth = false;

  Canvas canvas() const { return fit ? Canvas::kFit : Canvas::kSame; }
  int interpolation() const { return smooth ? method | orbInterEdgeBlend : method; }
};

void addFiles(CLI::App& command, Arguments& arguments) {
  command.add_option("input", arguments.from, "PNG, PGM, PPM or PAM; the content tells which")
      ->required();
  command
      .add_option("output", arguments.to, "The picture that is written; its name tells the format")
      ->required();
}

void addDrawing(CLI::App& command, Arguments& arguments) {
  static const std::map<std::string, int> kMethods = {{"nearest", orbInterNearest},
                                                      {"linear", orbInterLinear},
                                                      {"lagrange", orbInterLagrange},
                                                      {"catmullrom", orbInterCatmullRom}};
  command
      .add_option(
          "-m,--method", arguments.method,
          "How pixels are interpolated: linear by default; lagrange and catmullrom are cubic")
      ->transform(
          CLI::CheckedTransformer(kMethods).description("nearest|linear|lagrange|catmullrom"));
  command.add_flag("-s,--smooth", arguments.smooth, "Smooth the edges into the background");
}

// A command that makes a picture of a picture.
template <class Make>
void onPicture(CLI::App& command, std::shared_ptr<Arguments> arguments, Make make) {
  command.callback([=] {
    const Picture picture = image::readPicture(arguments->from);
    image::writePicture(
        arguments->to,
        {withFile(arguments->from, [&] { return make(picture.pixels); }), picture.isTransparent});
  });
}

void addFilter(CLI::App& image) {
  CLI::App& command = *image.add_subcommand("filter", "Smooth a picture, or find its edges");
  const auto arguments = std::make_shared<Arguments>();
  static const std::map<std::string, FilterKind> kKinds = {{"gauss", FilterKind::kGauss},
                                                           {"hipass", FilterKind::kHipass},
                                                           {"laplace", FilterKind::kLaplace},
                                                           {"lowpass", FilterKind::kLowpass}};
  static const std::map<std::string, OrbiMaskSize> kMasks = {{"3", orbMask3x3}, {"5", orbMask5x5}};
  command.add_option("kind", arguments->kind, "The kernel")
      ->required()
      ->transform(CLI::CheckedTransformer(kKinds).description("gauss|hipass|laplace|lowpass"));
  addFiles(command, *arguments);
  command.add_option("-k,--mask", arguments->mask, "A kernel of 3 x 3 (the default) or 5 x 5")
      ->transform(CLI::CheckedTransformer(kMasks).description("3|5"));
  onPicture(command, arguments, [=](const Image& picture) {
    return image::filter(picture, arguments->kind, arguments->mask);
  });
}

void addMorphology(CLI::App& image) {
  const auto dilation = std::make_shared<Arguments>(), erosion = std::make_shared<Arguments>();
  CLI::App& dilate =
      *image.add_subcommand("dilate", "The largest of 3 x 3 pixels, in each channel");
  addFiles(dilate, *dilation);
  onPicture(dilate, dilation, [](const Image& picture) { return image::dilate(picture); });
  CLI::App& erode = *image.add_subcommand("erode", "The smallest of 3 x 3 pixels, in each channel");
  addFiles(erode, *erosion);
  onPicture(erode, erosion, [](const Image& picture) { return image::erode(picture); });
}

void addRotate(CLI::App& image) {
  CLI::App& command = *image.add_subcommand("rotate", "Turn a picture about its middle");
  const auto arguments = std::make_shared<Arguments>();
  command.add_option("angle", arguments->angle, "In degrees, counter-clockwise")->required();
  addFiles(command, *arguments);
  CLI::Option* const fit =
      command.add_flag("-f,--fit", arguments->fit, "A result as large as the turned picture");
  command
      .add_flag("-c,--center", arguments->center,
                "A result of the picture's own size, the default: what goes out of it is cut off")
      ->excludes(fit);
  addDrawing(command, *arguments);
  onPicture(command, arguments, [=](const Image& picture) {
    return image::rotate(picture, arguments->angle, arguments->canvas(),
                         arguments->interpolation());
  });
}

image::Point parsePoint(const std::string& text) {
  const char* const begin = text.c_str();
  char* end = nullptr;
  image::Point point;
  point.x = std::strtod(begin, &end);
  const bool hasX = end != begin && *end == ',';
  const char* const second = end + 1;
  if (hasX) point.y = std::strtod(second, &end);
  if (!hasX || end == second || *end != '\0' || !std::isfinite(point.x) ||
      !std::isfinite(point.y)) {
    throw Error("a corner is written as x,y and not as " + text);
  }
  return point;
}

void addWarp(CLI::App& image) {
  CLI::App& command = *image.add_subcommand("warp", "Draw a picture in perspective");
  const auto arguments = std::make_shared<Arguments>();
  command
      .add_option("corners", arguments->corners,
                  "Where its corners go, each as x,y: left top, right top, right bottom, left "
                  "bottom")
      ->required()
      ->expected(4)
      ->allow_extra_args(false)
      ->type_name("X,Y");
  addFiles(command, *arguments);
  command.add_flag("-f,--fit", arguments->fit,
                   "A result that holds the corners, in place of one of the picture's own size");
  addDrawing(command, *arguments);
  onPicture(command, arguments, [=](const Image& picture) {
    Corners corners;
    for (size_t i = 0; i < corners.size(); ++i) corners[i] = parsePoint(arguments->corners[i]);
    return image::warp(picture, corners, arguments->canvas(), arguments->interpolation());
  });
}

void addGallery(CLI::App& image) {
  CLI::App& command =
      *image.add_subcommand("gallery", "Show the middle of a picture by every operation");
  const auto arguments = std::make_shared<Arguments>();
  command.add_option("input", arguments->from, "PNG, PGM, PPM or PAM")->required();
  command
      .add_option("directory", arguments->to,
                  "Gets sheet.png, and index.html with the pictures one by one")
      ->required();
  command.callback(
      [=] { image::writeGallery(image::readPicture(arguments->from), arguments->to); });
}

}  // namespace

void addImageCommand(CLI::App& program) {
  CLI::App& command = *program.add_subcommand("image", "Filter, turn, warp and resize pictures");
  command.require_subcommand(1);
  command.footer(
      "Examples:\n"
      "  orb image filter gauss --mask 5 photo.png soft.png\n"
      "  orb image rotate -7.5 --fit --method catmullrom photo.png straight.png\n"
      "  orb image warp 40,20 600,0 640,480 0,400 photo.png leaning.png\n"
      "  orb image resize 320x240 --method lanczos --antialias photo.png small.png\n"
      "  orb image gallery photo.png all\n\n"
      "Grey, RGB and RGBA, of 8 bits to a sample; others are converted. What is not drawn is "
      "black, "
      "or\n"
      "transparent where the picture can be.");
  addFilter(command);
  addMorphology(command);
  addRotate(command);
  addWarp(command);
  image::addResizeCommands(command);
  addGallery(command);
}

}  // namespace orbhost
