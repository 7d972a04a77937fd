#include "tests/hosts/support/j2k_judges.h"

#include <stdexcept>

#include "hosts/file.h"
#include "hosts/image_file.h"
#include "tests/hosts/support/program.h"

namespace orbtest {

using orbhost::Bytes;
using orbhost::Image;

bool isRawJ2k(orbhost::ByteView file) {
  return file.size > 1 && file[0] == 0xFF && file[1] == 0x4F;
}

Image opjDecode(const Bytes& file, const std::vector<std::string>& options) {
  const Directory directory;
  const std::string from = directory / (isRawJ2k(file) ? "in.j2k" : "in.jp2");
  const std::string to = directory / "out.pnm";
  orbhost::writeFile(from, file);
  std::vector<std::string> command = {"opj_decompress", "-i", from, "-o", to};
  command.insert(command.end(), options.begin(), options.end());
  const Outcome outcome = run(command);
  if (outcome.status != 0 || outcome.output.find("[WARNING]") != std::string::npos) {
    throw std::runtime_error("opj_decompress: " + outcome.output);
  }
  return orbhost::parseImage(orbhost::readFile(to));
}

Bytes opjEncode(const Image& image, const std::vector<std::string>& options) {
  const Directory directory;
  const std::string from = directory / (image.channels() == 1 ? "in.pgm" : "in.ppm");
  const std::string to = directory / "out.jp2";
  orbhost::writeFile(from, formatImage(image, orbhost::ImageFormat::kPnm));
  std::vector<std::string> command = {"opj_compress", "-i", from, "-o", to};
  command.insert(command.end(), options.begin(), options.end());
  const Outcome outcome = run(command);
  if (outcome.status != 0) throw std::runtime_error("opj_compress: " + outcome.output);
  return orbhost::readFile(to);
}

}  // namespace orbtest
