#include "hosts/j2k/encode_command.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "hosts/error.h"
#include "hosts/file.h"
#include "hosts/image_file.h"
#include "hosts/j2k/encode.h"
#include "hosts/stopwatch.h"
#include "orb90legacy.h"

namespace orbhost::j2k {

namespace {

struct Arguments {
  std::string from;
  std::string to;
  std::string tile;
  std::string block;
  std::vector<std::string> styles;
  std::vector<std::string> precincts;
  bool isLossless = false;
  bool isLossy = false;
  bool stats = false;
  EncodeOptions options;
};

struct Size {
  int width;
  int height;
};

// "64x32", "64" for 64x64.
Size parseSize(const std::string& text, const char* option) {
  const auto number = [&](const std::string& digits) {
    const bool isNumber =
        !digits.empty() && digits.size() <= 9 &&
        std::all_of(digits.begin(), digits.end(), [](unsigned char c) { return std::isdigit(c); });
    const int value = isNumber ? std::atoi(digits.c_str()) : 0;
    if (value < 1) throw Error(std::string(option) + " takes a size, as in 64x32; not " + text);
    return value;
  };
  const size_t times = text.find('x');
  if (times == std::string::npos) return {number(text), number(text)};
  return {number(text.substr(0, times)), number(text.substr(times + 1))};
}

int exponentOf(int power, const std::string& text) {
  int exponent = 0;
  while (1 << exponent < power) ++exponent;
  if (1 << exponent != power) {
    throw Error("the sides of a precinct are powers of 2; those of " + text + " are not");
  }
  return exponent;
}

bool isRawName(const std::string& path) {
  const size_t dot = path.rfind('.');
  std::string extension = dot == std::string::npos ? "" : path.substr(dot);
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  if (extension == ".jp2") return false;
  if (extension == ".j2k" || extension == ".j2c" || extension == ".jpc") return true;
  throw Error("the extension .jp2 makes a JP2 file, and .j2k, .j2c or .jpc a codestream alone");
}

int styleOf(const std::vector<std::string>& names) {
  static const std::map<std::string, int> kStyles = {{"bypass", kBypass},
                                                     {"reset", kResetContexts},
                                                     {"terminate", kTerminateEach},
                                                     {"causal", kVerticallyCausal},
                                                     {"predictable", kPredictableTermination},
                                                     {"segsym", kSegmentationSymbols}};
  int style = 0;
  for (const std::string& name : names) {
    const auto found = kStyles.find(name);
    if (found == kStyles.end()) {
      throw Error("--style takes bypass, reset, terminate, causal, predictable and segsym; not " +
                  name);
    }
    style |= found->second;
  }
  return style;
}

void encode(Arguments& arguments) {
  EncodeOptions& options = arguments.options;
  const bool hasGoals = !options.rates.empty() || !options.psnrs.empty();
  options.isLossless = arguments.isLossless || !(arguments.isLossy || hasGoals);
  options.blockStyle = styleOf(arguments.styles);
  if (!arguments.tile.empty()) {
    const Size tile = parseSize(arguments.tile, "--tile");
    options.tileWidth = static_cast<uint32_t>(tile.width);
    options.tileHeight = static_cast<uint32_t>(tile.height);
  }
  if (!arguments.block.empty()) {
    const Size block = parseSize(arguments.block, "--block");
    options.blockWidth = block.width;
    options.blockHeight = block.height;
  }
  for (const std::string& text : arguments.precincts) {
    const Size precinct = parseSize(text, "--precincts");
    options.precincts.push_back(
        {exponentOf(precinct.width, text), exponentOf(precinct.height, text)});
  }
  options.isRaw = withFile(arguments.to, [&] { return isRawName(arguments.to); });
  const Bytes file = withFile(arguments.from, [&] {
    const Image image = parseImage(readFile(arguments.from));
    const Stopwatch stopwatch;
    Bytes coded = encodeJ2k(image, options);
    const double seconds = stopwatch.seconds();
    if (arguments.stats) {
      const double pixels = static_cast<double>(image.width()) * image.height();
      std::fprintf(stderr, "bytes=%zu bits_per_pixel=%.3f mpixels_per_second=%.1f build=%s\n",
                   coded.size(), static_cast<double>(coded.size()) * 8 / pixels,
                   pixels / 1e6 / seconds, legacy90orbjGetLibVersion()->targetCpu);
    }
    return coded;
  });
  withFile(arguments.to, [&] { writeFile(arguments.to, file); });
}

}  // namespace

void addEncodeCommand(CLI::App& j2k) {
  CLI::App& command =
      *j2k.add_subcommand("encode", "Write a picture as JPEG 2000, lossless or of a chosen size");
  const auto arguments = std::make_shared<Arguments>();
  EncodeOptions& options = arguments->options;
  static const std::map<std::string, Progression> kProgressions = {{"LRCP", Progression::kLrcp},
                                                                   {"RLCP", Progression::kRlcp},
                                                                   {"RPCL", Progression::kRpcl},
                                                                   {"PCRL", Progression::kPcrl},
                                                                   {"CPRL", Progression::kCprl}};
  command.add_option("input", arguments->from, "PNG, PGM, PPM or PAM; the content tells which")
      ->required();
  command
      .add_option("output", arguments->to, "A .jp2 file, or a codestream alone: .j2k, .j2c, .jpc")
      ->required();
  CLI::Option* const rate =
      command
          .add_option(
              "-r,--rate", options.rates,
              "Lossy: bits per pixel of the file; of several layers, of the file up to each")
          ->type_name("BITS[,BITS...]")
          ->delimiter(',');
  command
      .add_option("-p,--psnr", options.psnrs,
                  "Lossy: how good the picture is, or is with each layer")
      ->type_name("DB[,DB...]")
      ->delimiter(',')
      ->excludes(rate);
  CLI::Option* const lossless =
      command.add_flag("--lossless", arguments->isLossless,
                       "Keep every sample, as without --rate and --psnr; with them, in one more "
                       "layer behind the others");
  command
      .add_flag("--lossy", arguments->isLossy,
                "The 9/7 wavelet, and all bits of it if there is no --rate and no --psnr")
      ->excludes(lossless);
  command
      .add_option("--layers", options.layers,
                  "How many quality layers; what --rate and --psnr do not say of them is chosen "
                  "below the first")
      ->type_name("N")
      ->check(CLI::Range(1, 65535));
  command.add_option("--levels", options.levels, "Levels of the wavelet, 0 to 32")
      ->type_name("N")
      ->check(CLI::Range(0, kMaxLevels))
      ->capture_default_str();
  command.add_option("--tile", arguments->tile, "Code the picture in tiles of this size")
      ->type_name("WxH");
  command
      .add_option("--block", arguments->block,
                  "The size of a code-block: powers of 2 from 4 to 1024, 4096 samples at most; "
                  "64x64 if not given")
      ->type_name("WxH");
  command
      .add_option("--precincts", arguments->precincts,
                  "The size of precincts, powers of 2, for the highest resolution first; the last "
                  "one is for all that follow too")
      ->type_name("WxH[,WxH...]")
      ->delimiter(',');
  command
      .add_option(
          "--style", arguments->styles,
          "How code-blocks are coded, any of: bypass (raw bits in low planes, faster), reset "
          "(contexts in each pass), terminate (each pass), causal (contexts within stripes), "
          "predictable (terminations, which then are the only places to cut at), segsym "
          "(symbols that show damage)")
      ->type_name("STYLE[,STYLE...]")
      ->delimiter(',');
  command
      .add_option("--progression", options.progression,
                  "The order of packets: L is layer, R resolution, C component, P position")
      ->transform(CLI::CheckedTransformer(kProgressions, CLI::ignore_case)
                      .description("LRCP|RLCP|RPCL|PCRL|CPRL"));
  command.add_flag("--sop", options.hasSop, "A marker in front of each packet");
  command.add_flag("--eph", options.hasEph, "A marker behind each packet's header");
  command.add_flag("--stats", arguments->stats,
                   "Print size and speed of the codec, and the library's build, to the error "
                   "stream");
  command.footer(
      "Examples:\n"
      "  orb j2k encode photo.png photo.jp2                          (lossless)\n"
      "  orb j2k encode --rate 0.5 photo.png photo.jp2\n"
      "  orb j2k encode --psnr 38 --tile 1024 photo.png photo.j2k\n"
      "  orb j2k encode --lossless --rate 0.25,0.5,1,2 scan.pgm scan.jp2\n"
      "  orb j2k encode --progression RPCL --precincts 256,128 --block 32 map.png map.jp2\n\n"
      "Grey and RGB of 1 to 16 bits: as many as a PGM's or PPM's maximum, or as a PNG says that\n"
      "its samples have. A PNG's transparency is dropped.");
  command.callback([arguments] { encode(*arguments); });
}

}  // namespace orbhost::j2k
