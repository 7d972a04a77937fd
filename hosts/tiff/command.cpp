// orb tiff pack, orb tiff unpack, orb tiff info.
#include <iostream>
#include <memory>
#include <string>

#include "hosts/commands.h"
#include "hosts/error.h"
#include "hosts/file.h"
#include "hosts/image_file.h"
#include "hosts/tiff/tiff_file.h"

namespace orbhost {

namespace {

struct Arguments {
  std::string from;
  std::string to;
};

void packFile(const Arguments& arguments) {
  const Bytes file = withFile(
      arguments.from, [&] { return tiff::formatTiff(parseImage(readFile(arguments.from))); });
  withFile(arguments.to, [&] { writeFile(arguments.to, file); });
}

void unpackFile(const Arguments& arguments) {
  const ImageFormat format = withFile(arguments.to, [&] { return imageFormatOf(arguments.to); });
  const Image image =
      withFile(arguments.from, [&] { return tiff::parseTiff(readFile(arguments.from)); });
  withFile(arguments.to, [&] { writeFile(arguments.to, formatImage(image, format)); });
}

void describeFile(const Arguments& arguments) {
  const auto [directory, size] = withFile(arguments.from, [&] {
    const Bytes file = readFile(arguments.from);
    return std::pair(tiff::readDirectory(file), file.size());
  });
  std::cout << directory.width << " x " << directory.height << " pixels, "
            << directory.samplesPerPixel << " x " << directory.bits[0]
            << " bits, photometric interpretation " << directory.photometric << ", compression "
            << directory.compression << ", " << directory.stripOffsets.size() << " strips, "
            << (directory.bigEndian ? "big" : "little") << "-endian, " << size << " bytes\n";
}

}  // namespace

void addTiffCommand(CLI::App& program) {
  CLI::App& tiff = *program.add_subcommand("tiff", "TIFF files of PackBits rows");
  tiff.require_subcommand(1);
  const auto arguments = std::make_shared<Arguments>();

  CLI::App& pack = *tiff.add_subcommand("pack", "Write a picture as baseline TIFF");
  pack.add_option("input", arguments->from, "PNG, PGM, PPM or PAM; the content tells which")
      ->required();
  pack.add_option("output", arguments->to, "The TIFF file")->required();
  pack.footer(
      "Example:\n"
      "  orb tiff pack chart.png chart.tif\n\n"
      "Grey and RGB, with 8 bits to a sample, or with 16 if the picture has more than 8.");
  pack.callback([arguments] { packFile(*arguments); });

  CLI::App& unpack = *tiff.add_subcommand("unpack", "Turn a TIFF file into pixels");
  unpack.add_option("input", arguments->from, "The TIFF file")->required();
  unpack
      .add_option("output", arguments->to,
                  "The picture, as its extension says: .png, .ppm, .pgm, .pnm, .pam or .bmp")
      ->required();
  unpack.footer(
      "Example:\n"
      "  orb tiff unpack chart.tif chart.png\n\n"
      "Reads the first picture of a file of either byte order: grey or RGB of 8 or 16 bits, in\n"
      "strips, packed by PackBits or not at all. A damaged file is refused, and nothing is "
      "written.");
  unpack.callback([arguments] { unpackFile(*arguments); });

  CLI::App& info = *tiff.add_subcommand("info", "Say in a line what a TIFF file holds");
  info.add_option("input", arguments->from, "The TIFF file")->required();
  info.callback([arguments] { describeFile(*arguments); });
}

}  // namespace orbhost
