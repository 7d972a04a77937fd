#include "hosts/image/gallery.h"

#include <algorithm>
#include <cstring>
#include <filesystem>

#include "hosts/file.h"
#include "hosts/image/caption.h"
#include "hosts/image_convert.h"
#include "hosts/image_file.h"

namespace orbhost::image {

namespace {

constexpr int kSampleWidth = 280, kSampleHeight = 210;
constexpr int kCellWidth = 328, kCellHeight = 306;  // room for a sample that is turned
constexpr int kCaptionHeight = 26, kColumns = 5;

// The middle of a picture, of so many pixels at most.
Image middleOf(const Image& image, int width, int height) {
  Image part(std::min(width, image.width()), std::min(height, image.height()), image.channels());
  const int left = (image.width() - part.width()) / 2, top = (image.height() - part.height()) / 2;
  for (int y = 0; y < part.height(); ++y) {
    std::memcpy(part.row(y), image.row(top + y) + left * image.channels(), part.rowBytes());
  }
  return part;
}

// As RGB on the sheet: a transparent picture over the sheet's white.
void draw(const Picture& picture, Image& sheet, int left, int top) {
  const Image& image = picture.pixels;
  for (int y = 0; y < image.height(); ++y) {
    const uint8_t* from = image.row(y);
    uint8_t* to = sheet.row(top + y) + left * 3;
    for (int x = 0; x < image.width(); ++x, from += image.channels(), to += 3) {
      const int cover = picture.isTransparent ? from[3] : 255;
      for (int k = 0; k < 3; ++k) {
        const int light = from[image.channels() == 1 ? 0 : k];
        to[k] = static_cast<uint8_t>((light * cover + 255 * (255 - cover) + 127) / 255);
      }
    }
  }
}

Image makeSheet(const std::vector<Picture>& pictures, const std::vector<Exhibit>& exhibits) {
  const int rows = (static_cast<int>(pictures.size()) + kColumns - 1) / kColumns;
  Image sheet(kColumns * kCellWidth, rows * (kCellHeight + kCaptionHeight), 3);
  std::memset(sheet.row(0), 255, sheet.size());
  for (int i = 0; i < static_cast<int>(pictures.size()); ++i) {
    const Picture cell = {middleOf(pictures[i].pixels, kCellWidth - 4, kCellHeight - 4),
                          pictures[i].isTransparent};
    const int left = i % kColumns * kCellWidth, top = i / kColumns * (kCellHeight + kCaptionHeight);
    const int x = left + (kCellWidth - cell.pixels.width()) / 2;
    const int y = top + kCaptionHeight + (kCellHeight - cell.pixels.height()) / 2;
    writeCaption(sheet, left + 8, top + kCaptionHeight - 8, 15, exhibits[i].caption);
    draw(cell, sheet, x, y);
  }
  return sheet;
}

Bytes makePage(const std::vector<Exhibit>& exhibits, const std::string& extension) {
  std::string page =
      "<!DOCTYPE html>\n<html lang=\"en\">\n<meta charset=\"utf-8\">\n<title>orb image</title>\n"
      "<style>\n"
      "body { font: 15px sans-serif; margin: 1em; background: #fff; color: #000 }\n"
      "main { display: flex; flex-wrap: wrap; gap: 1em; align-items: flex-end }\n"
      "figure { margin: 0 }\n"
      "figcaption { margin-top: 0.3em }\n"
      "</style>\n<h1>Every operation of orb image</h1>\n<main>\n";
  for (const Exhibit& exhibit : exhibits) {
    page += "<figure><img src=\"" + exhibit.name + extension + "\" alt=\"" + exhibit.caption +
            "\"><figcaption>" + exhibit.caption + "</figcaption></figure>\n";
  }
  page += "</main>\n</html>\n";
  return Bytes(page.begin(), page.end());
}

}  // namespace

void writeGallery(const Picture& picture, const std::string& directory) {
  // CMYK is shown as the light that its inks leave.
  const bool hasInks = picture.pixels.channels() == 4 && !picture.isTransparent;
  const Image light = hasInks ? withoutInks(picture.pixels) : Image();
  const Image sample = middleOf(hasInks ? light : picture.pixels, kSampleWidth, kSampleHeight);
  std::vector<Exhibit> exhibits = {{"original", "the sample", [](const Image& image) {
                                      return middleOf(image, image.width(), image.height());
                                    }}};
  for (Exhibit& exhibit : allExhibits()) exhibits.push_back(std::move(exhibit));

  std::filesystem::create_directories(directory);
  std::vector<Picture> pictures;
  for (const Exhibit& exhibit : exhibits) {
    pictures.push_back({exhibit.make(sample), picture.isTransparent});
    writePicture(directory + "/" + exhibit.name + ".png", pictures.back());
  }
  writePicture(directory + "/sheet.png", {makeSheet(pictures, exhibits), false});
  writeFile(directory + "/index.html", makePage(exhibits, ".png"));
}

}  // namespace orbhost::image
