#include "tests/hosts/support/lossless_judges.h"

#include <cstring>
#include <sstream>
#include <stdexcept>

#include "hosts/file.h"
#include "hosts/image_file.h"
#include "tests/hosts/support/program.h"

namespace orbtest {

using orbhost::Bytes;
using orbhost::Image;
using orbhost::ImageFormat;
using orbhost::readFile;
using orbhost::writeFile;

namespace {

void runWell(const std::vector<std::string>& command) {
  const Outcome outcome = run(command);
  if (outcome.status != 0) throw std::runtime_error(command[0] + ": " + outcome.output);
}

void ffmpeg(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), {"ffmpeg", "-nostdin", "-loglevel", "error", "-y"});
  runWell(arguments);
}

// A data set in the language of dump2dcm, up to its pixels.
std::string dumpOf(const Image& image, size_t frames, const char* transferSyntax) {
  int bits = 8;
  while ((1 << bits) - 1 < image.maximum()) ++bits;
  std::ostringstream dump;
  dump << "(0002,0010) UI =" << transferSyntax << '\n'
       << "(0008,0016) UI =MultiframeTrueColorSecondaryCaptureImageStorage\n"
       << "(0008,0018) UI [1.2.3.4]\n"
       << "(0028,0002) US " << image.channels() << '\n'
       << "(0028,0004) CS [" << (image.channels() == 1 ? "MONOCHROME2" : "RGB") << "]\n"
       << "(0028,0006) US 0\n"
       << "(0028,0008) IS [" << frames << "]\n"
       << "(0028,0010) US " << image.height() << '\n'
       << "(0028,0011) US " << image.width() << '\n'
       << "(0028,0100) US " << (bits > 8 ? 16 : 8) << '\n'
       << "(0028,0101) US " << bits << '\n'
       << "(0028,0102) US " << bits - 1 << '\n'
       << "(0028,0103) US 0\n";
  return dump.str();
}

void writeText(const std::string& path, const std::string& text) {
  writeFile(path, Bytes(text.begin(), text.end()));
}

// The pixels of a DICOM file: one item after the other.
Bytes pixelsOf(const Directory& directory, const std::string& file, int item) {
  runWell({"dcmdump", "-q", "+W", directory.path(), directory / file});
  return readFile(directory / (file + "." + std::to_string(item) + ".raw"));
}

}  // namespace

Bytes ffmpegDecode(const Bytes& file, const std::string& pixelFormat) {
  const Directory directory;
  writeFile(directory / "in", file);
  ffmpeg({"-i", directory / "in", "-fps_mode", "passthrough", "-f", "rawvideo", "-pix_fmt",
          pixelFormat, directory / "out"});
  return readFile(directory / "out");
}

Bytes ffmpegEncode(const Image& image, const std::string& pixelFormat,
                   const std::string& prediction) {
  const Directory directory;
  writeFile(directory / "in.pnm", formatImage(image, ImageFormat::kPnm));
  ffmpeg({"-i", directory / "in.pnm", "-pix_fmt", pixelFormat, "-c:v", "ljpeg", "-pred", prediction,
          "-frames:v", "1", directory / "out.jpg"});
  return readFile(directory / "out.jpg");
}

Bytes ffmpegConvert(const Image& image, const std::string& pixelFormat) {
  const Directory directory;
  writeFile(directory / "in.pnm", formatImage(image, ImageFormat::kPnm));
  ffmpeg(
      {"-i", directory / "in.pnm", "-f", "rawvideo", "-pix_fmt", pixelFormat, directory / "out"});
  return readFile(directory / "out");
}

std::vector<Image> dcmtkDecode(const std::vector<Bytes>& files, const Image& like) {
  const Directory directory;
  std::string dump = dumpOf(like, files.size(), "JPEGLossless:Non-hierarchical:Process14") +
                     "(7fe0,0010) OB (PixelSequence #=" + std::to_string(files.size() + 1) +
                     ")\n(fffe,e000) pi (no value available)\n";
  for (size_t i = 0; i < files.size(); ++i) {
    const std::string name = directory / ("frame" + std::to_string(i));
    writeFile(name, files[i]);
    dump += "(fffe,e000) pi =" + name + "\n";
  }
  writeText(directory / "dump", dump + "(fffe,e0dd) na (SequenceDelimitationItem)\n");
  runWell({"dump2dcm", "-q", directory / "dump", directory / "coded"});
  runWell({"dcmdjpeg", directory / "coded", directory / "plain"});
  const Bytes pixels = pixelsOf(directory, "plain", 0);

  std::vector<Image> frames;
  for (size_t i = 0; i < files.size(); ++i) {
    Image frame(like.width(), like.height(), like.channels(), like.maximum());
    if (pixels.size() < (i + 1) * frame.size()) throw std::runtime_error("DCMTK: frames lack");
    // Words are little-endian, as on the machines that these tests run on.
    std::memcpy(frame.row(0), pixels.data() + i * frame.size(), frame.size());
    frames.push_back(std::move(frame));
  }
  return frames;
}

Bytes dcmtkEncode(const Image& image, int predictor, int pointTransform) {
  const Directory directory;
  Bytes pixels(image.row(0), image.row(0) + image.size());
  if (pixels.size() % 2 != 0) pixels.push_back(0);
  writeFile(directory / "pixels", pixels);
  writeText(directory / "dump", dumpOf(image, 1, "LittleEndianExplicit") +
                                    "(7fe0,0010) OW =" + (directory / "pixels") + "\n");
  runWell({"dump2dcm", "-q", directory / "dump", directory / "plain"});
  runWell({"dcmcjpeg", "+el", "+sv", std::to_string(predictor), "+pt",
           std::to_string(pointTransform), directory / "plain", directory / "coded"});
  return pixelsOf(directory, "coded", 1);
}

}  // namespace orbtest
