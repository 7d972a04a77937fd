#include "tests/hosts/support/judges.h"

#include <gtest/gtest.h>
// jpeglib.h needs size_t and FILE.
#include <jpeglib.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

#include "tests/hosts/support/program.h"

namespace orbtest {

using orbhost::Bytes;
using orbhost::ByteView;
using orbhost::Image;

namespace {

void onError(j_common_ptr info) {
  char text[JMSG_LENGTH_MAX];
  info->err->format_message(info, text);
  throw std::runtime_error(std::string("libjpeg: ") + text);
}
void onMessage(j_common_ptr) {}

class Decompress {
 public:
  explicit Decompress(ByteView file) {
    info_.err = jpeg_std_error(&errors_);
    errors_.error_exit = onError;
    errors_.output_message = onMessage;
    jpeg_create_decompress(&info_);
    jpeg_mem_src(&info_, file.data, file.size);
    jpeg_read_header(&info_, TRUE);
  }
  Decompress(const Decompress&) = delete;
  Decompress& operator=(const Decompress&) = delete;
  ~Decompress() { jpeg_destroy_decompress(&info_); }

  jpeg_decompress_struct* operator->() { return &info_; }
  jpeg_decompress_struct* get() { return &info_; }
  void finish() {
    jpeg_finish_decompress(&info_);
    EXPECT_EQ(errors_.num_warnings, 0);
  }

 private:
  jpeg_decompress_struct info_;
  jpeg_error_mgr errors_;
};

Bytes read(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(in), {});
}
void write(const std::string& path, const void* data, size_t size) {
  std::ofstream(path, std::ios::binary).write(static_cast<const char*>(data), size);
}

Bytes runOnFile(const char* program, const void* input, size_t size,
                const std::vector<std::string>& options) {
  const Directory directory;
  write(directory / "in", input, size);
  std::vector<std::string> command = {program};
  command.insert(command.end(), options.begin(), options.end());
  command.insert(command.end(), {"-outfile", directory / "out", directory / "in"});
  const Outcome outcome = run(command);
  if (outcome.status != 0) throw std::runtime_error(command[0] + ": " + outcome.output);
  return read(directory / "out");
}

}  // namespace

namespace {

Image decodeTo(J_COLOR_SPACE colours, ByteView file, int scale, Chroma chroma) {
  Decompress info(file);
  if (colours != JCS_UNKNOWN) info->out_color_space = colours;
  info->dct_method = JDCT_ISLOW;
  // Of a progressive picture without its last scans it would guess what they tell.
  info->do_block_smoothing = FALSE;
  info->do_fancy_upsampling = chroma == Chroma::kSmooth ? TRUE : FALSE;
  info->scale_num = 1;
  info->scale_denom = static_cast<unsigned>(scale);
  jpeg_start_decompress(info.get());
  Image image(static_cast<int>(info->output_width), static_cast<int>(info->output_height),
              info->output_components);
  while (info->output_scanline < info->output_height) {
    JSAMPROW row = image.row(static_cast<int>(info->output_scanline));
    jpeg_read_scanlines(info.get(), &row, 1);
  }
  info.finish();
  return image;
}

}  // namespace

Image judgeDecode(ByteView file, int scale, Chroma chroma) {
  return decodeTo(JCS_UNKNOWN, file, scale, chroma);
}

Image judgeDecodeInks(ByteView file) {
  Image light = decodeTo(JCS_CMYK, file, 1, Chroma::kSmooth);
  for (size_t i = 0; i < light.size(); ++i) {
    light.row(0)[i] = static_cast<uint8_t>(255 - light.row(0)[i]);
  }
  return light;
}

std::vector<Coefficients> judgeCoefficients(ByteView file) {
  Decompress info(file);
  jvirt_barray_ptr* const arrays = jpeg_read_coefficients(info.get());
  std::vector<Coefficients> result;
  for (int c = 0; c < info->num_components; ++c) {
    const jpeg_component_info& component = info->comp_info[c];
    Coefficients one = {static_cast<int>(component.width_in_blocks),
                        static_cast<int>(component.height_in_blocks),
                        {}};
    for (int y = 0; y < one.blocksHigh; ++y) {
      JBLOCKARRAY rows =
          info->mem->access_virt_barray(reinterpret_cast<j_common_ptr>(info.get()), arrays[c],
                                        static_cast<JDIMENSION>(y), 1, FALSE);
      for (int x = 0; x < one.blocksWide; ++x) {
        one.values.insert(one.values.end(), rows[0][x], rows[0][x] + 64);
      }
    }
    result.push_back(std::move(one));
  }
  info.finish();
  return result;
}

Bytes judgeEncodeCmyk(const Image& inks, const JudgeOptions& options) {
  jpeg_compress_struct info;
  jpeg_error_mgr errors;
  info.err = jpeg_std_error(&errors);
  errors.error_exit = onError;
  jpeg_create_compress(&info);
  unsigned char* memory = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&info, &memory, &size);
  info.image_width = static_cast<JDIMENSION>(inks.width());
  info.image_height = static_cast<JDIMENSION>(inks.height());
  info.input_components = 4;
  info.in_color_space = JCS_CMYK;
  jpeg_set_defaults(&info);
  jpeg_set_colorspace(&info, options.ycck ? JCS_YCCK : JCS_CMYK);
  jpeg_set_quality(&info, options.quality, TRUE);
  info.write_Adobe_marker = options.adobeMarker ? TRUE : FALSE;
  jpeg_start_compress(&info, TRUE);
  for (int y = 0; y < inks.height(); ++y) {
    JSAMPROW row = const_cast<JSAMPROW>(inks.row(y));
    jpeg_write_scanlines(&info, &row, 1);
  }
  jpeg_finish_compress(&info);
  Bytes file(memory, memory + size);
  jpeg_destroy_compress(&info);
  std::free(memory);
  return file;
}

Bytes cjpeg(const Image& image, const std::vector<std::string>& options) {
  std::ostringstream pnm;
  pnm << (image.channels() == 1 ? "P5 " : "P6 ") << image.width() << ' ' << image.height()
      << " 255\n";
  pnm.write(reinterpret_cast<const char*>(image.row(0)), static_cast<long>(image.size()));
  const std::string input = pnm.str();
  return runOnFile("cjpeg", input.data(), input.size(), options);
}

Image djpeg(const Bytes& file, const std::vector<std::string>& options) {
  std::vector<std::string> all = {"-dct", "int", "-pnm"};
  all.insert(all.end(), options.begin(), options.end());
  const Bytes pnm = runOnFile("djpeg", file.data(), file.size(), all);
  std::istringstream in(std::string(pnm.begin(), pnm.end()));
  std::string magic;
  int width = 0;
  int height = 0;
  int maximum = 0;
  in >> magic >> width >> height >> maximum;
  if (maximum != 255) throw std::runtime_error("djpeg wrote no picture");
  in.get();
  Image image(width, height, magic == "P6" ? 3 : 1);
  in.read(reinterpret_cast<char*>(image.row(0)), static_cast<long>(image.size()));
  if (!in) throw std::runtime_error("djpeg wrote a part of a picture");
  return image;
}

Bytes jpegtran(const Bytes& file, const std::vector<std::string>& options) {
  return runOnFile("jpegtran", file.data(), file.size(), options);
}

Bytes wrjpgcom(const Bytes& file, const std::string& comment) {
  const Directory directory;
  write(directory / "in.jpg", file.data(), file.size());
  // wrjpgcom writes to its output stream only.
  const Outcome outcome = run({"wrjpgcom", "-comment", comment, directory / "in.jpg"});
  if (outcome.status != 0) throw std::runtime_error("wrjpgcom: " + outcome.output);
  return Bytes(outcome.output.begin(), outcome.output.end());
}

}  // namespace orbtest
