#include "hosts/image_file.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <filesystem>

#include "hosts/bmp_file.h"
#include "hosts/error.h"
#include "hosts/image_convert.h"
#include "hosts/png_file.h"
#include "hosts/pnm_file.h"

namespace orbhost {

namespace {

bool startsWith(ByteView file, const char* magic, size_t length) {
  return file.size >= length && std::memcmp(file.data, magic, length) == 0;
}

}  // namespace

ImageFormat imageFormatOf(const std::string& path) {
  std::string extension = std::filesystem::path(path).extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  if (extension == ".png") return ImageFormat::kPng;
  if (extension == ".pgm") return ImageFormat::kPgm;
  if (extension == ".ppm") return ImageFormat::kPpm;
  if (extension == ".pnm") return ImageFormat::kPnm;
  if (extension == ".pam") return ImageFormat::kPam;
  if (extension == ".bmp") return ImageFormat::kBmp;
  throw Error("a picture is written as .png, .ppm, .pgm, .pnm, .pam or .bmp");
}

Image parseImage(ByteView file) {
  if (file.size == 0) throw Error("the file is empty");
  if (startsWith(file, "\x89PNG\r\n\x1a\n", 8)) return parsePng(file);
  if (isPnm(file)) return parsePnm(file);
  throw Error("neither PNG nor PGM, PPM or PAM");
}

Bytes formatImage(const Image& image, ImageFormat format) {
  if (format == ImageFormat::kPam) return formatPam(image);
  if (image.channels() == 4) return formatImage(withoutInks(image), format);
  if (format == ImageFormat::kPng) return formatPng(image);
  if (format == ImageFormat::kBmp) return formatBmp(image);
  if (format == ImageFormat::kPgm && image.channels() != 1) {
    throw Error("a colour picture does not fit a .pgm; write a .ppm or .png");
  }
  return formatPnm(image, format == ImageFormat::kPpm ? 3 : image.channels());
}

}  // namespace orbhost
