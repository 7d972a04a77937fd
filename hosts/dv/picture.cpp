#include "hosts/dv/picture.h"

#include <algorithm>

namespace orbhost::dv {

namespace {

constexpr uint8_t kBlack = 16, kNoColour = 128;

// Of each so many bytes of a row one, from `first` on.
uint8_t* takeEvery(int distance, const uint8_t* row, int first, int end, uint8_t* to) {
  for (int i = first; i < end; i += distance) *to++ = row[i];
  return to;
}

// Rows of the picture that hold chroma row y, and the distance of its samples. Where the library
// repeats or interpolates chroma, every other sample is as it was coded.
int chromaRow(const Format& format, int y) {
  return format.macroblocks == Macroblocks::k420 ? y / 2 * 4 + y % 2 : y;
}
int chromaRows(const Format& format) {
  return format.macroblocks == Macroblocks::k420 ? format.height / 2 : format.height;
}
int chromaDistance(const Format& format) {
  return format.macroblocks == Macroblocks::k411 ? 8 : 4;
}

// In units of 1/65536: samples of 16 to 235 and 16 to 240 become 0 to 255.
struct Matrix {
  int luma, redOfCr, greenOfCb, greenOfCr, blueOfCb;
};
constexpr Matrix kBt601 = {76309, 104597, -25675, -53279, 132201};
constexpr Matrix kBt709 = {76309, 117489, -13975, -34925, 138438};

uint8_t channel(int sum) {
  return static_cast<uint8_t>(std::clamp((sum + 32768) >> 16, 0, 255));
}

void rgbRow(const Matrix& matrix, const uint8_t* row, int width, uint8_t* rgb) {
  for (int x = 0; x < width; ++x, rgb += 3) {
    const uint8_t* const pair = row + x / 2 * 4;
    const uint8_t* const next = x % 2 == 1 && x + 1 < width ? pair + 4 : pair;
    const int y = matrix.luma * (row[2 * x] - 16);
    // Twice the chroma, about 0.
    const int cb = pair[1] + next[1] - 256, cr = pair[3] + next[3] - 256;
    rgb[0] = channel(y + matrix.redOfCr * cr / 2);
    rgb[1] = channel(y + (matrix.greenOfCb * cb + matrix.greenOfCr * cr) / 2);
    rgb[2] = channel(y + matrix.blueOfCb * cb / 2);
  }
}

}  // namespace

Picture::Picture(const Format& format)
    : width_(format.width),
      height_(format.height),
      bytes_(static_cast<size_t>(step()) * format.height, kNoColour) {
  for (size_t i = 0; i < bytes_.size(); i += 2) bytes_[i] = kBlack;
}

Bytes planesOf(const Picture& picture, const Format& format) {
  const int distance = chromaDistance(format), rows = chromaRows(format);
  const size_t luma = static_cast<size_t>(picture.width()) * picture.height();
  Bytes planes(luma + 2 * static_cast<size_t>(picture.step() / distance) * rows);
  uint8_t* to = planes.data();
  for (int y = 0; y < picture.height(); ++y) {
    to = takeEvery(2, picture.row(y), 0, picture.step(), to);
  }
  for (const int first : {1, 3}) {
    for (int y = 0; y < rows; ++y) {
      to = takeEvery(distance, picture.row(chromaRow(format, y)), first, picture.step(), to);
    }
  }
  return planes;
}

Image rgbOf(const Picture& picture, const Format& format) {
  Image image(picture.width(), picture.height(), 3);
  const Matrix& matrix = format.isHighDefinition() ? kBt709 : kBt601;
  for (int y = 0; y < picture.height(); ++y) {
    rgbRow(matrix, picture.row(y), picture.width(), image.row(y));
  }
  return image;
}

}  // namespace orbhost::dv
