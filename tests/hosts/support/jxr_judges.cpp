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
  if (image.channels() == 4) return image.isWide() ? "18" : "17";
  return image.isWide() ? "10" : "9";
}

std::string extensionOf(const Image& image) {
  return image.channels() == 1 ? ".pgm" : image.channels() == 3 ? ".ppm" : ".tif";
}

// Pixels of four bytes, of which the last one is their opacity.
constexpr char kTransparent[] = "22";
constexpr uint32_t kBmpHead = 54;

Bytes transparentBmp(const Image& image) {
  const uint32_t size = static_cast<uint32_t>(image.width()) * image.height() * 4;
  Bytes file = {'B', 'M'};
  const auto put = [&](uint32_t number, int bytes) {
    for (int i = 0; i < bytes; ++i, number >>= 8) file.push_back(static_cast<uint8_t>(number));
  };
  for (const uint32_t number : {kBmpHead + size, 0u, kBmpHead, 40u}) put(number, 4);
  put(static_cast<uint32_t>(image.width()), 4);
  put(static_cast<uint32_t>(image.height()), 4);
  put(1, 2);
  put(32, 2);
  for (const uint32_t number : {0u, size, 0u, 0u, 0u, 0u}) put(number, 4);
  for (int y = image.height() - 1; y >= 0; --y) {
    for (int x = 0; x < image.width(); ++x) {
      const uint8_t* const pixel = image.row(y) + 3 * x;
      file.insert(file.end(), {pixel[2], pixel[1], pixel[0], static_cast<uint8_t>(9 * x - 5 * y)});
    }
  }
  return file;
}

}  // namespace

Bytes jxrEncApp(const Image& image, const std::vector<std::string>& options) {
  const Directory directory;
  const std::string from = directory / ("in" + extensionOf(image));
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

Image jxrDecApp(const Bytes& file, const Image& like, const std::vector<std::string>& options) {
  const Directory directory;
  writeFile(directory / "in.jxr", file);
  const std::string to = directory / ("out" + extensionOf(like));
  runWell({"JxrDecApp", "-i", directory / "in.jxr", "-o", to, "-c", formatOf(like)}, options);
  // The program writes a head that is not always right, and samples in the machine's order.
  const Bytes pixels = readFile(to);
  Image image(like.width(), like.height(), like.channels(), like.maximum());
  if (pixels.size() < image.size()) throw std::runtime_error("JxrDecApp: samples lack");
  std::memcpy(image.row(0), pixels.data() + pixels.size() - image.size(), image.size());
  return image;
}

Bytes jxrEncAppTransparent(const Image& image, const std::vector<std::string>& options) {
  const Directory directory;
  writeFile(directory / "in.bmp", transparentBmp(image));
  runWell(
      {"JxrEncApp", "-i", directory / "in.bmp", "-o", directory / "out.jxr", "-c", kTransparent},
      options);
  return readFile(directory / "out.jxr");
}

Image jxrDecAppTransparent(const Bytes& file, const Image& like) {
  const Directory directory;
  writeFile(directory / "in.jxr", file);
  runWell({"JxrDecApp", "-i", directory / "in.jxr", "-o", directory / "out.bmp"},
          {"-c", kTransparent});
  const Bytes pixels = readFile(directory / "out.bmp");
  Image image(like.width(), like.height(), 3);
  const size_t size = static_cast<size_t>(image.width()) * image.height() * 4;
  if (pixels.size() < size) throw std::runtime_error("JxrDecApp: samples lack");
  const uint8_t* from = pixels.data() + pixels.size() - size;
  for (int y = image.height() - 1; y >= 0; --y) {
    for (int x = 0; x < image.width(); ++x, from += 4) {
      for (int c = 0; c < 3; ++c) image.row(y)[3 * x + c] = from[2 - c];
    }
  }
  return image;
}

}  // namespace orbtest
