// orb dv decode.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "hosts/commands.h"
#include "hosts/dv/decode.h"
#include "hosts/dv/y4m.h"
#include "hosts/file.h"
#include "hosts/image_file.h"
#include "hosts/replaced_file.h"
#include "hosts/stopwatch.h"
#include "orb90legacy.h"

namespace orbhost {

namespace {

using dv::Decoder;
using dv::Format;
using dv::Picture;

struct Arguments {
  std::string from;
  std::string to;
  std::string pngs;
  int frame = 0;
  bool info = false;
  bool stats = false;
};

// A stream that can be looked into before it is taken.
class Lookahead {
 public:
  explicit Lookahead(Source& source) : source_(source) {}

  // The next bytes, fewer only at the end; until the next call.
  ByteView peek(size_t count) {
    if (bytes_.size() < taken_ + count) {
      bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<ptrdiff_t>(taken_));
      taken_ = 0;
      size_t size = bytes_.size();
      bytes_.resize(std::max(count, size));
      while (size < bytes_.size()) {
        const size_t got = source_.read(bytes_.data() + size, bytes_.size() - size);
        if (got == 0) break;
        size += got;
      }
      bytes_.resize(size);
    }
    return {bytes_.data() + taken_, std::min(count, bytes_.size() - taken_)};
  }
  void take(size_t count) { taken_ += count; }

 private:
  Source& source_;
  Bytes bytes_;
  size_t taken_ = 0;
};

// Where frames go: to a stream, to pictures, or nowhere.
class FrameOutput {
 public:
  FrameOutput(const Arguments& arguments, const Format& format)
      : arguments_(arguments), format_(format) {
    if (arguments.to == kStandard) {
      standard_.emplace(kStandard, true);
    } else if (!arguments.to.empty()) {
      withFile(arguments.to, [&] { file_.emplace(arguments.to); });
    }
    if (!arguments.pngs.empty()) {
      std::error_code error;
      std::filesystem::create_directories(arguments.pngs, error);
      if (error) throw Error(arguments.pngs + ": " + error.message());
    }
    stream(dv::y4mHeader(format));
  }

  void write(const Picture& picture, int number) {
    if (file_ || standard_) {
      stream(dv::y4mFrameHeader());
      stream(planesOf(picture, format_));
    }
    if (!arguments_.pngs.empty()) {
      char name[32];
      std::snprintf(name, sizeof name, "/frame-%06d.png", number);
      const std::string path = arguments_.pngs + name;
      withFile(path,
               [&] { writeFile(path, formatImage(rgbOf(picture, format_), ImageFormat::kPng)); });
    }
  }

  void finish() {
    if (file_) withFile(arguments_.to, [&] { file_->finish(); });
  }

 private:
  void stream(const Bytes& bytes) {
    if (standard_) standard_->write(bytes);
    if (file_) withFile(arguments_.to, [&] { file_->write(bytes); });
  }

  const Arguments& arguments_;
  const Format& format_;
  std::optional<NewFile> file_;
  std::optional<OutputFile> standard_;
};

void printInfo(const Format& format) {
  std::printf("%s: %d x %d pixels, %d/%d frames a second, %zu bytes a frame\n", format.name,
              format.width, format.height, format.rate.numerator, format.rate.denominator,
              format.frameBytes());
}

void decodeFrames(Lookahead& input, const Format& format, const Arguments& arguments) {
  Decoder decoder(format);
  Picture picture(format);
  FrameOutput output(arguments, format);
  int frames = 0;
  long long damaged = 0;
  double seconds = 0;
  for (;;) {
    const ByteView frame = input.peek(format.frameBytes());
    if (frame.size == 0) break;
    const Stopwatch stopwatch;
    const int lost = decoder.decode(frame, picture);
    seconds += stopwatch.seconds();
    // What is left at the end may be a part of a frame, or none.
    if (frame.size < format.frameBytes() && lost == decoder.segments()) break;
    ++frames;
    damaged += lost;
    input.take(frame.size);
    if (arguments.frame == 0 || arguments.frame == frames) output.write(picture, frames);
    if (arguments.frame == frames) break;
  }
  if (frames < arguments.frame) {
    throw Error("there are only " + std::to_string(frames) + " frames");
  }
  output.finish();
  if (arguments.stats) {
    std::fprintf(stderr, "frames=%d frames_per_second=%.1f build=%s\n", frames, frames / seconds,
                 legacy90orbjGetLibVersion()->targetCpu);
  }
  if (damaged > 0) {
    std::cerr << "orb: " << arguments.from << ": " << damaged << " of "
              << static_cast<long long>(frames) * decoder.segments()
              << " segments are missing or damaged, and keep the frame before\n";
  }
}

void decode(const Arguments& arguments) {
  if (arguments.to.empty() && arguments.pngs.empty() && !arguments.info) {
    throw Error("nothing to do: an output file, --png or --info is wanted");
  }
  withFile(arguments.from, [&] {
    InputFile file(arguments.from, InputFile::Purpose::kRead, true);
    Lookahead input(file);
    const Format& format = dv::detectFormat(input.peek(dv::kLongestFrame));
    if (arguments.info) printInfo(format);
    if (!arguments.to.empty() || !arguments.pngs.empty()) decodeFrames(input, format, arguments);
  });
}

}  // namespace

void addDvCommand(CLI::App& program) {
  CLI::App& dv = *program.add_subcommand("dv", "Decode DV video");
  dv.require_subcommand(1);
  CLI::App& command = *dv.add_subcommand(
      "decode",
      "Turn a raw DV stream into frames: DV, DV50 and DV100, of 525, 625, 720 and 1080 "
      "lines");
  const auto arguments = std::make_shared<Arguments>();
  command.add_option("input", arguments->from, "The stream; - is the standard input")->required();
  command.add_option("output", arguments->to,
                     "The frames as YUV4MPEG2, with chroma as it is coded; - is the standard "
                     "output");
  command.add_option("--png", arguments->pngs, "Write each frame as a PNG into this directory")
      ->type_name("DIR");
  command.add_option("--frame", arguments->frame, "Write this frame alone; the first is 1")
      ->type_name("N")
      ->check(CLI::PositiveNumber);
  command.add_flag("--info", arguments->info, "Say what the stream is");
  command.add_flag("--stats", arguments->stats,
                   "Print the speed of the decoder, and the library's build, to the error stream");
  command.footer(
      "Examples:\n"
      "  orb dv decode tape.dv tape.y4m\n"
      "  orb dv decode --info tape.dv\n"
      "  orb dv decode --png pictures --frame 100 tape.dv\n"
      "  orb dv decode tape.dv - | ffplay -\n\n"
      "Segments that are missing, out of their place, marked as wrong or without the end of a "
      "block\n"
      "keep what the frame before shows there; a line at the end says how many there were.");
  command.callback([arguments] { decode(*arguments); });
}

}  // namespace orbhost
