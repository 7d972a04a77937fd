// orb jpeg encode, orb jpeg decode.
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <string>

#include "hosts/bmp_file.h"
#include "hosts/commands.h"
#include "hosts/file.h"
#include "hosts/image_file.h"
#include "hosts/jpeg/decode.h"
#include "hosts/jpeg/encode.h"
#include "hosts/jpeg/packed_decode.h"
#include "hosts/stopwatch.h"
#include "orb90legacy.h"

namespace orbhost {

namespace {

using jpeg::ColourSpace;
using jpeg::DecodeOptions;
using jpeg::EncodeOptions;
using jpeg::Sampling;

struct EncodeArguments {
  std::string from;
  std::string to;
  std::string restart;
  std::string scans;
  std::string lossless;
  int precision = 0;
  bool stats = false;
  EncodeOptions options;
};

struct DecodeArguments {
  std::string from;
  std::string to;
  std::optional<PackedFormat> packed;
  bool stats = false;
  DecodeOptions options;
};

// A number of MCUs, or of rows of them: "8", "1row", "2rows".
void parseRestart(const std::string& text, EncodeOptions& options) {
  char* end = nullptr;
  const long number = std::strtol(text.c_str(), &end, 10);
  const std::string unit = end;
  const bool rows = unit == "row" || unit == "rows";
  if (end == text.c_str() || (!rows && !unit.empty()) || number < 0 || number > 65535) {
    throw Error("--restart takes a number of MCUs, as in 8, or of rows of them, as in 1row; not " +
                text);
  }
  options.restartInterval = static_cast<int>(number);
  options.restartInRows = rows;
}

// A predictor, and a point transform behind a comma: "1", "4,2".
void parseLossless(const std::string& text, EncodeOptions& options) {
  jpeg::LosslessOptions lossless;
  std::istringstream in(text);
  in >> lossless.predictor;
  if (!in.eof() && in.peek() == ',') in.ignore() >> lossless.pointTransform;
  if (in.fail() || !in.eof()) {
    throw Error(
        "--lossless takes a predictor from 1 to 7, as in 1, and a point transform behind it, as in "
        "1,2; not " +
        text);
  }
  options.lossless = lossless;
}

// `seconds` is what the codec alone took, without files and their formats.
template <class Picture>
void printStats(size_t bytes, const Picture& image, double seconds) {
  const double pixels = static_cast<double>(image.width()) * image.height();
  std::fprintf(stderr, "bytes=%zu bits_per_pixel=%.3f mpixels_per_second=%.1f build=%s\n", bytes,
               static_cast<double>(bytes) * 8 / pixels, pixels / 1e6 / seconds,
               legacy90orbjGetLibVersion()->targetCpu);
}

void encode(EncodeArguments& arguments) {
  if (!arguments.restart.empty()) parseRestart(arguments.restart, arguments.options);
  if (!arguments.lossless.empty()) {
    parseLossless(arguments.lossless, arguments.options);
    arguments.options.lossless->precision = arguments.precision;
  }
  if (!arguments.scans.empty()) {
    arguments.options.script = withFile(arguments.scans, [&] {
      const Bytes text = readFile(arguments.scans);
      return jpeg::parseScript(std::string(text.begin(), text.end()));
    });
  }
  const Bytes file = withFile(arguments.from, [&] {
    const Image image = parseImage(readFile(arguments.from));
    const Stopwatch stopwatch;
    Bytes coded = jpeg::encodeJpeg(image, arguments.options);
    if (arguments.stats) printStats(coded.size(), image, stopwatch.seconds());
    return coded;
  });
  withFile(arguments.to, [&] { writeFile(arguments.to, file); });
}

// `read` turns a JPEG file into a picture, `format` that into a file's bytes.
template <class Read, class Format>
void decodeBy(const DecodeArguments& arguments, Read read, Format format) {
  const auto image = withFile(arguments.from, [&] {
    const Bytes coded = readFile(arguments.from);
    const Stopwatch stopwatch;
    auto decoded = read(coded);
    if (arguments.stats) printStats(coded.size(), decoded, stopwatch.seconds());
    return decoded;
  });
  withFile(arguments.to, [&] { writeFile(arguments.to, format(image)); });
}

void decode(const DecodeArguments& arguments) {
  const ImageFormat format = withFile(arguments.to, [&] { return imageFormatOf(arguments.to); });
  if (!arguments.packed) {
    decodeBy(
        arguments, [&](ByteView coded) { return jpeg::decodeJpeg(coded, arguments.options); },
        [&](const Image& image) { return formatImage(image, format); });
    return;
  }
  if (format != ImageFormat::kBmp) {
    throw Error(arguments.to + ": only a .bmp holds pixels of 16 bits");
  }
  decodeBy(
      arguments,
      [&](ByteView coded) {
        return jpeg::decodeJpegPacked(coded, *arguments.packed, arguments.options);
      },
      [](const PackedImage& image) { return formatBmp(image); });
}

template <class Arguments>
void addStats(CLI::App& command, Arguments& arguments) {
  command.add_flag("--stats", arguments.stats,
                   "Print size and speed of the codec, and the library's build, to the error "
                   "stream");
}

void addEncode(CLI::App& jpeg) {
  CLI::App& command =
      *jpeg.add_subcommand("encode", "Write a picture as baseline, progressive or lossless JPEG");
  const auto arguments = std::make_shared<EncodeArguments>();
  static const std::map<std::string, Sampling> kSamplings = {{"444", Sampling::k444},
                                                             {"422", Sampling::k422},
                                                             {"420", Sampling::k420},
                                                             {"grey", Sampling::kGrey},
                                                             {"gray", Sampling::kGrey}};
  static const std::map<std::string, ColourSpace> kColours = {{"ycbcr", ColourSpace::kYCbCr},
                                                              {"rgb", ColourSpace::kRgb},
                                                              {"ycck", ColourSpace::kYcck},
                                                              {"cmyk", ColourSpace::kCmyk}};
  command.add_option("input", arguments->from, "PNG, PGM, PPM or PAM; the content tells which")
      ->required();
  command.add_option("output", arguments->to, "The JPEG file")->required();
  command
      .add_option("-q,--quality", arguments->options.quality,
                  "1 (smallest) to 100 (best); 50 takes the tables of T.81 annex K as they are")
      ->check(CLI::Range(1, 100))
      ->capture_default_str();
  command
      .add_option("-s,--sampling", arguments->options.sampling,
                  "Chroma in full (444), halved across (422), or halved both ways (420, the "
                  "default); or none of it (grey)")
      ->transform(CLI::CheckedTransformer(kSamplings).description("444|422|420|grey"));
  command
      .add_option("--colour,--color", arguments->options.colours,
                  "How RGB is stored: as ycbcr, or as it is (rgb); and CMYK, which comes in a PAM: "
                  "as ycck, or as it is (cmyk)")
      ->transform(CLI::CheckedTransformer(kColours).description("ycbcr|rgb|ycck|cmyk"));
  command.add_flag("-o,--optimize", arguments->options.optimize,
                   "Make Huffman tables for this picture: a few per cent smaller, and slower");
  command.add_flag("-p,--progressive", arguments->options.progressive,
                   "Code the picture in scans from coarse to fine: smaller, and it can be shown "
                   "before all of it is there");
  command
      .add_option("--scans", arguments->scans,
                  "Code it in the scans of this script, which is written as for cjpeg: such as "
                  "'0,1,2: 0-0, 0, 1;' for a progressive one, '0; 1 2;' for sequential ones")
      ->type_name("FILE");
  command
      .add_option("-r,--restart", arguments->restart,
                  "A restart marker every N MCUs, or every N rows of them: 8, 1row")
      ->type_name("N|Nrows");
  CLI::Option* const lossless =
      command
          .add_option(
              "-l,--lossless", arguments->lossless,
              "Keep every sample, of up to 16 bits, by one of the predictors 1 to 7; or drop "
              "the lowest Pt bits. Few programs read such a file")
          ->type_name("PREDICTOR[,Pt]");
  for (const char* const other :
       {"--quality", "--sampling", "--colour", "--optimize", "--progressive", "--scans"}) {
    lossless->excludes(other);
  }
  command
      .add_option("--precision", arguments->precision,
                  "Bits of a sample in a lossless file, 2 to 16, in place of what the picture has")
      ->type_name("BITS")
      ->check(CLI::Range(2, 16))
      ->needs(lossless);
  addStats(command, *arguments);
  command.footer(
      "Examples:\n"
      "  orb jpeg encode photo.png photo.jpg\n"
      "  orb jpeg encode --quality 95 --sampling 444 chart.ppm chart.jpg\n"
      "  orb jpeg encode -q 60 --optimize --restart 1row scan.pgm scan.jpg\n"
      "  orb jpeg encode --progressive photo.png photo.jpg\n"
      "  orb jpeg encode --lossless 4 x-ray.pgm x-ray.jpg\n"
      "  orb jpeg encode --colour ycck --sampling 444 inks.pam inks.jpg\n\n"
      "A PNG's transparency is dropped. Samples of another depth are scaled to 8 bits, but for a\n"
      "lossless file, which keeps them: it has as many bits as a PGM's or PPM's maximum, or as a\n"
      "PNG says that its samples have.");
  command.callback([arguments] { encode(*arguments); });
}

void addDecode(CLI::App& jpeg) {
  CLI::App& command = *jpeg.add_subcommand("decode", "Turn a JPEG file into pixels");
  const auto arguments = std::make_shared<DecodeArguments>();
  static const std::map<std::string, int> kScales = {
      {"1", 1}, {"1/1", 1}, {"1/2", 2}, {"1/4", 4}, {"1/8", 8}};
  static const std::map<std::string, PackedFormat> kPixels = {{"bgr555", PackedFormat::kBgr555},
                                                              {"bgr565", PackedFormat::kBgr565}};
  command.add_option("input", arguments->from, "The JPEG file")->required();
  command
      .add_option(
          "output", arguments->to,
          "The picture, as its extension says: .png, .ppm, .pgm, .pnm for PGM or PPM, .pam, which "
          "alone holds CMYK, or .bmp")
      ->required();
  command
      .add_option("--scale", arguments->options.scale,
                  "Decode at a part of the size, which is also faster: 1/2, 1/4 or 1/8")
      ->transform(CLI::CheckedTransformer(kScales).description("1|1/2|1/4|1/8"));
  command
      .add_option("--pixels", arguments->packed,
                  "Pixels of 16 bits in a .bmp, in place of 24: blue, green and red of 5 bits each "
                  "(bgr555), or 6 of green (bgr565)")
      ->transform(CLI::CheckedTransformer(kPixels).description("bgr555|bgr565"));
  command
      .add_option("--scans-to", arguments->options.scansTo,
                  "Show the picture as it is after N scans of a progressive file, and read no "
                  "further")
      ->type_name("N")
      ->check(CLI::PositiveNumber);
  addStats(command, *arguments);
  command.footer(
      "Examples:\n"
      "  orb jpeg decode photo.jpg photo.png\n"
      "  orb jpeg decode --scale 1/8 photo.jpg thumbnail.ppm\n"
      "  orb jpeg decode --scans-to 3 progressive.jpg preview.png\n"
      "  orb jpeg decode --pixels bgr565 photo.jpg photo.bmp\n"
      "  orb jpeg decode inks.jpg inks.pam\n\n"
      "Reads baseline, extended sequential and progressive Huffman-coded files of 8-bit samples,\n"
      "and lossless ones of 2 to 16 bits: grey, YCbCr, RGB, CMYK and YCCK. A damaged or cut-off\n"
      "file is refused, and nothing is written; what lies behind the scans of --scans-to is not\n"
      "looked at. Inks become light in every format but PAM.");
  command.callback([arguments] { decode(*arguments); });
}

}  // namespace

void addJpegCommand(CLI::App& program) {
  CLI::App& jpeg = *program.add_subcommand("jpeg", "JPEG (ITU-T T.81): encode, decode");
  jpeg.require_subcommand(1);
  addEncode(jpeg);
  addDecode(jpeg);
}

}  // namespace orbhost
