// orb jxr encode, orb jxr decode.
#include <cstdio>
#include <map>
#include <memory>
#include <string>

#include "hosts/commands.h"
#include "hosts/file.h"
#include "hosts/image_file.h"
#include "hosts/jxr/decode.h"
#include "hosts/jxr/encode.h"

namespace orbhost {

namespace {

using jxr::EncodeOptions;
using jxr::Subsampling;

struct EncodeArguments {
  std::string from;
  std::string to;
  std::string tile;
  EncodeOptions options;
};

struct DecodeArguments {
  std::string from;
  std::string to;
};

// Two numbers of pixels: "256x256".
void parseTile(const std::string& text, EncodeOptions& options) {
  char behind = 0;
  if (std::sscanf(text.c_str(), "%5dx%5d%c", &options.tileWidth, &options.tileHeight, &behind) !=
          2 ||
      options.tileWidth < 1 || options.tileHeight < 1) {
    throw Error("--tile takes a width and a height, as in 256x256; not " + text);
  }
}

void encode(EncodeArguments& arguments) {
  if (!arguments.tile.empty()) parseTile(arguments.tile, arguments.options);
  const Bytes file = withFile(arguments.from, [&] {
    return jxr::encodeJxr(parseImage(readFile(arguments.from)), arguments.options);
  });
  withFile(arguments.to, [&] { writeFile(arguments.to, file); });
}

void decode(const DecodeArguments& arguments) {
  const ImageFormat format = withFile(arguments.to, [&] { return imageFormatOf(arguments.to); });
  const Image image =
      withFile(arguments.from, [&] { return jxr::decodeJxr(readFile(arguments.from)); });
  withFile(arguments.to, [&] { writeFile(arguments.to, formatImage(image, format)); });
}

void addEncode(CLI::App& jxr) {
  CLI::App& command = *jxr.add_subcommand("encode", "Write a picture as JPEG XR");
  const auto arguments = std::make_shared<EncodeArguments>();
  EncodeOptions& options = arguments->options;
  static const std::map<std::string, Subsampling> kSubsamplings = {
      {"444", Subsampling::k444}, {"422", Subsampling::k422}, {"420", Subsampling::k420}};
  static const std::map<std::string, bool> kOrders = {{"spatial", false}, {"frequency", true}};
  command.add_option("input", arguments->from, "PNG, PGM, PPM or PAM; the content tells which")
      ->required();
  command.add_option("output", arguments->to, "The JPEG XR file")->required();
  CLI::Option* const quality =
      command
          .add_option("-q,--quality", options.quality,
                      "1 (smallest) to 100, which keeps every sample if chroma is not halved")
          ->check(CLI::Range(1, 100))
          ->capture_default_str();
  command
      .add_option("--quantiser", options.quantiser,
                  "The format's own index of a step in place of the quality: 0 keeps all, and 16 "
                  "more double the step")
      ->type_name("N")
      ->check(CLI::Range(0, 255))
      ->excludes(quality);
  command
      .add_option("-s,--subsampling", options.subsampling,
                  "Chroma of RGB in full (444, the default), halved across (422), or halved both "
                  "ways (420)")
      ->transform(CLI::CheckedTransformer(kSubsamplings).description("444|422|420"));
  command
      .add_option("-l,--overlap", options.overlap,
                  "Stages of filters across the borders of blocks: none is fastest, 2 is smoothest "
                  "for coarse steps")
      ->check(CLI::Range(0, 2))
      ->capture_default_str();
  command
      .add_option("--order", options.frequencyOrder,
                  "Blocks one after the other (spatial, the default), or the whole picture from "
                  "coarse to fine (frequency)")
      ->transform(CLI::CheckedTransformer(kOrders).description("spatial|frequency"));
  command
      .add_option("--trim", options.trim,
                  "Lowest bits of the finest coefficients that are dropped, 0 to 15")
      ->type_name("N")
      ->check(CLI::Range(0, 15))
      ->capture_default_str();
  command
      .add_option("--tile", arguments->tile,
                  "Code tiles of this size, in multiples of 16, each by itself")
      ->type_name("WxH");
  command.add_flag("--hard-tiles", options.hardTiles,
                   "Stop the filters at the borders of tiles, so that each can be decoded without "
                   "the others");
  command.footer(
      "Examples:\n"
      "  orb jxr encode photo.png photo.jxr\n"
      "  orb jxr encode --quality 100 scan.pgm scan.jxr\n"
      "  orb jxr encode --quantiser 40 --subsampling 420 --overlap 2 photo.png small.jxr\n"
      "  orb jxr encode --order frequency --tile 256x256 map.png map.jxr\n\n"
      "Grey and RGB pictures, and CMYK from a PAM, of 8 or 16 bits to a sample; samples of "
      "another\n"
      "depth are scaled. A PNG's transparency is dropped.");
  command.callback([arguments] { encode(*arguments); });
}

void addDecode(CLI::App& jxr) {
  CLI::App& command = *jxr.add_subcommand("decode", "Turn a JPEG XR file into pixels");
  const auto arguments = std::make_shared<DecodeArguments>();
  command.add_option("input", arguments->from, "The JPEG XR file")->required();
  command
      .add_option(
          "output", arguments->to,
          "The picture, as its extension says: .png, .ppm, .pgm, .pnm for PGM or PPM, .pam, which "
          "alone holds CMYK, or .bmp")
      ->required();
  command.footer(
      "Examples:\n"
      "  orb jxr decode photo.jxr photo.png\n"
      "  orb jxr decode inks.jxr inks.pam\n\n"
      "Reads grey, RGB and CMYK of 8 and 16 bits to a sample, in any order, tiles and "
      "subsampling.\n"
      "Transparency is dropped. A damaged or cut-off file is refused, and nothing is written.");
  command.callback([arguments] { decode(*arguments); });
}

}  // namespace

void addJxrCommand(CLI::App& program) {
  CLI::App& jxr = *program.add_subcommand("jxr", "JPEG XR (ITU-T T.832): encode, decode");
  jxr.require_subcommand(1);
  addEncode(jxr);
  addDecode(jxr);
}

}  // namespace orbhost
