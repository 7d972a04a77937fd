// orb j2k decode.
#include <cstdio>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "hosts/commands.h"
#include "hosts/file.h"
#include "hosts/image_file.h"
#include "hosts/j2k/decode.h"
#include "hosts/j2k/encode_command.h"
#include "hosts/j2k/picture.h"
#include "hosts/pnm_file.h"
#include "hosts/stopwatch.h"
#include "orb90legacy.h"

namespace orbhost {

namespace {

struct DecodeArguments {
  std::string from;
  std::string to;
  std::optional<int> component;
  bool stats = false;
  j2k::DecodeOptions options;
};

// `seconds` is what the codec alone took, without files and their formats.
void printStats(size_t bytes, const Image& image, double seconds) {
  const double pixels = static_cast<double>(image.width()) * image.height();
  std::fprintf(stderr, "bytes=%zu bits_per_pixel=%.3f mpixels_per_second=%.1f build=%s\n", bytes,
               static_cast<double>(bytes) * 8 / pixels, pixels / 1e6 / seconds,
               legacy90orbjGetLibVersion()->targetCpu);
}

void decode(const DecodeArguments& arguments) {
  const ImageFormat format = withFile(arguments.to, [&] { return imageFormatOf(arguments.to); });
  j2k::Damage damage;
  const Bytes file = withFile(arguments.from, [&] {
    const Bytes coded = readFile(arguments.from);
    const Stopwatch stopwatch;
    const j2k::Decoded decoded = j2k::decodeJ2k(coded, arguments.options);
    damage = decoded.damage;
    const bool hasAllChannels = format == ImageFormat::kPam && !arguments.component;
    j2k::Channels channels =
        hasAllChannels ? j2k::allChannels(decoded)
        : arguments.component
            ? j2k::Channels{j2k::componentPicture(decoded, *arguments.component), ""}
            : j2k::Channels{j2k::colourPicture(decoded), ""};
    if (arguments.stats) printStats(coded.size(), channels.image, stopwatch.seconds());
    return hasAllChannels ? formatPam(channels.image, channels.tupleType)
                          : formatImage(channels.image, format);
  });
  withFile(arguments.to, [&] { writeFile(arguments.to, file); });
  if (damage.count() != 0) {
    std::cerr << "orb: " << arguments.from
              << ": damaged, and decoded as far as it goes: " << damage.first() << '\n';
    throw ExitStatus{1};
  }
}

void addDecode(CLI::App& j2k) {
  CLI::App& command = *j2k.add_subcommand("decode", "Turn a JPEG 2000 file into pixels");
  const auto arguments = std::make_shared<DecodeArguments>();
  command.add_option("input", arguments->from, "A JP2 file or a bare codestream")->required();
  command
      .add_option(
          "output", arguments->to,
          "The picture, as its extension says: .png, .ppm, .pgm, .pnm for PGM or PPM, .bmp, "
          "or .pam, which alone holds opacity and any number of channels")
      ->required();
  command
      .add_option("-r,--reduce", arguments->options.reduce,
                  "Halve the size so many times, rounding up; it is also faster")
      ->type_name("N")
      ->check(CLI::Range(0, 32));
  command
      .add_option("-l,--layers", arguments->options.layers,
                  "Decode the first N quality layers only")
      ->type_name("N")
      ->check(CLI::Range(1, 65535));
  command
      .add_option("-c,--component", arguments->component,
                  "Write one component, from 0 on, as it was coded: in grey, with its own size and "
                  "precision. Signed samples are moved up to begin at 0")
      ->type_name("N")
      ->check(CLI::NonNegativeNumber);
  command.add_flag("--stats", arguments->stats,
                   "Print size and speed of the codec, and the library's build, to the error "
                   "stream");
  command.footer(
      "Examples:\n"
      "  orb j2k decode photo.jp2 photo.png\n"
      "  orb j2k decode --reduce 3 map.jp2 overview.ppm\n"
      "  orb j2k decode --layers 1 scan.j2k preview.png\n"
      "  orb j2k decode layers.jp2 layers.pam\n"
      "  orb j2k decode --component 2 bands.j2k infrared.pgm\n\n"
      "Reads all of ITU-T T.800: samples of up to 31 bits, signed ones too. Coarser components\n"
      "are repeated to the size of the finest, palettes looked up, and sYCC becomes RGB. Samples "
      "of\n"
      "more than 16 bits lose the lowest. A damaged or cut-off file is decoded as far as it goes,\n"
      "and the exit status is 1.");
  command.callback([arguments] { decode(*arguments); });
}

}  // namespace

void addJ2kCommand(CLI::App& program) {
  CLI::App& j2k = *program.add_subcommand("j2k", "JPEG 2000 (ITU-T T.800): encode, decode");
  j2k.require_subcommand(1);
  j2k::addEncodeCommand(j2k);
  addDecode(j2k);
}

}  // namespace orbhost
