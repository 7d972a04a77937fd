#include "tests/hosts/support/j2k_judge.h"

#include <sstream>
#include <stdexcept>
#include <utility>

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

std::string runWith(std::vector<std::string> command, const std::string& options) {
  std::istringstream words(options);
  for (std::string word; words >> word;) command.push_back(word);
  const Outcome outcome = run(command);
  if (outcome.status != 0) throw std::runtime_error(command[0] + ": " + outcome.output);
  return outcome.output;
}

// As above; a warning is a failure too.
void runQuietly(std::vector<std::string> command, const std::string& options) {
  const std::string output = runWith(std::move(command), options);
  if (output.find("[WARNING]") != std::string::npos) throw std::runtime_error(output);
}

const char* nameOf(J2kFormat format) {
  return format == J2kFormat::kJp2 ? "coded.jp2" : "coded.j2k";
}

std::string writtenFile(const Directory& directory, const Bytes& file) {
  const bool isCodestream = file.size() > 0 && file[0] == 0xFF;
  std::string path = directory / (isCodestream ? "coded.j2k" : "coded.jp2");
  writeFile(path, file);
  return path;
}

}  // namespace

Bytes opjCompress(const Image& image, const std::string& options, J2kFormat format) {
  const Directory directory;
  const std::string from = directory / (image.channels() == 1 ? "image.pgm" : "image.ppm");
  const std::string to = directory / nameOf(format);
  writeFile(from, formatImage(image, ImageFormat::kPnm));
  runWith({"opj_compress", "-i", from, "-o", to}, options);
  return readFile(to);
}

Bytes opjCompressRaw(const Bytes& samples, const std::string& layout, const std::string& options,
                     J2kFormat format) {
  const Directory directory;
  const std::string from = directory / "image.raw";
  const std::string to = directory / nameOf(format);
  writeFile(from, samples);
  runWith({"opj_compress", "-i", from, "-o", to, "-F", layout}, options);
  return readFile(to);
}

Image opjDecompress(const Bytes& file, const std::string& options) {
  const Directory directory;
  const std::string to = directory / "image.pnm";
  runQuietly({"opj_decompress", "-i", writtenFile(directory, file), "-o", to}, options);
  return orbhost::parseImage(readFile(to));
}

Image opjDecompressComponent(const Bytes& file, int component, const std::string& options) {
  const Directory directory;
  const std::string to = directory / "image.pgm";
  runWith({"opj_decompress", "-i", writtenFile(directory, file), "-o", to, "-c",
           std::to_string(component)},
          options);
  return orbhost::parseImage(readFile(to));
}

}  // namespace orbtest
