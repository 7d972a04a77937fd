#include "tests/hosts/support/jxr_judges.h"

#include <cstring>
#include <stdexcept>

#include "hosts/file.h"
#include "tests/hosts/support/program.h"

namespace orbtest {

using orbhost::Bytes;
using orbhost::Image;
using orbhost::readFile;
using orbhost::writeFile;

namespace {

void runWell(std::vector<std::string> command, const std::vector<std::string>& options) {
  command.insert(command.end(), options.begin(), options.end());
  const Outcome outcome = run(command);
  if (outcome.status != 0) throw std::runtime_error(command[0] + ": " + outcome.output);
}

// The programs' number of a pixel format.
std::string formatOf(const Image& image) {
  if (image.channels() == 1) return image.isWide() ? "3" : "2";
  return image.isWide() ? "10" : "9";
}

}  // namespace

Bytes jxrEncApp(const Image& image, const std::vector<std::string>& options) {
  const Directory directory;
  const std::string from = directory / (image.channels() == 1 ? "in.pgm" : "in.ppm");
  // Samples of 16 bits are taken in the machine's order.
  const std::string head = std::string(image.channels() == 1 ? "P5" : "P6") + "\n" +
                           std::to_string(image.width()) + " " + std::to_string(image.height()) +
                           "\n" + std::to_string(image.maximum()) + "\n";
  Bytes file(head.begin(), head.end());
  file.insert(file.end(), image.row(0), image.row(0) + image.size());
  writeFile(from, file);
  runWell({"JxrEncApp", "-i", from, "-o", directory / "out.jxr", "-c", formatOf(image)}, options);
  return readFile(directory / "out.jxr");
}

Image jxrDecApp(const Bytes& file, const Image& like) {
  const Directory directory;
  writeFile(directory / "in.jxr", file);
  const std::string to = directory / (like.channels() == 1 ? "out.pgm" : "out.ppm");
  runWell({"JxrDecApp", "-i", directory / "in.jxr", "-o", to, "-c", formatOf(like)}, {});
  // The program writes a head that is not always right, and samples in the machine's order.
  const Bytes pixels = readFile(to);
  Image image(like.width(), like.height(), like.channels(), like.maximum());
  if (pixels.size() < image.size()) throw std::runtime_error("JxrDecApp: samples lack");
  std::memcpy(image.row(0), pixels.data() + pixels.size() - image.size(), image.size());
  return image;
}

}  // namespace orbtest
