#include "hosts/image/caption.h"

#include <ft2build.h>
#include FT_FREETYPE_H

namespace orbhost::image {

namespace {

constexpr char kFont[] = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";

// A font that is loaded once, if it is there.
class Font {
 public:
  Font() {
    if (FT_Init_FreeType(&library_) != 0) return;
    if (FT_New_Face(library_, kFont, 0, &face_) != 0) face_ = nullptr;
  }
  Font(const Font&) = delete;
  Font& operator=(const Font&) = delete;
  ~Font() {
    if (face_ != nullptr) FT_Done_Face(face_);
    if (library_ != nullptr) FT_Done_FreeType(library_);
  }

  FT_Face face() const { return face_; }

 private:
  FT_Library library_ = nullptr;
  FT_Face face_ = nullptr;
};

// Darkens the picture by a glyph's coverage.
void drawGlyph(Image& image, int left, int top, const FT_Bitmap& bitmap) {
  for (int row = 0; row < static_cast<int>(bitmap.rows); ++row) {
    for (int column = 0; column < static_cast<int>(bitmap.width); ++column) {
      const int x = left + column, y = top + row;
      if (x < 0 || y < 0 || x >= image.width() || y >= image.height()) continue;
      const int light = 255 - bitmap.buffer[row * bitmap.pitch + column];
      uint8_t* const pixel = image.row(y) + x * image.channels();
      for (int k = 0; k < image.channels(); ++k) {
        pixel[k] = static_cast<uint8_t>(pixel[k] * light / 255);
      }
    }
  }
}

}  // namespace

void writeCaption(Image& image, int x, int y, int height, const std::string& text) {
  static const Font font;
  const FT_Face face = font.face();
  if (face == nullptr || FT_Set_Pixel_Sizes(face, 0, static_cast<FT_UInt>(height)) != 0) return;
  for (const char letter : text) {
    if (FT_Load_Char(face, static_cast<unsigned char>(letter), FT_LOAD_RENDER) != 0) continue;
    const FT_GlyphSlot glyph = face->glyph;
    drawGlyph(image, x + glyph->bitmap_left, y - glyph->bitmap_top, glyph->bitmap);
    x += static_cast<int>(glyph->advance.x >> 6);
  }
}

}  // namespace orbhost::image
