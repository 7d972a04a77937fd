// orb yuv encode, orb yuv decode.
#include <cstdio>
#include <map>
#include <memory>
#include <string>

#include "hosts/bmp_file.h"
#include "hosts/commands.h"
#include "hosts/error.h"
#include "hosts/file.h"
#include "hosts/image_file.h"
#include "hosts/yuv/video.h"

namespace orbhost {

namespace {

using yuv::Layout;

struct Arguments {
  std::string from;
  std::string to;
  Layout layout = Layout::kI420;
  std::string size;
  PackedFormat pixels = PackedFormat::kBgr565;
};

bool isBmp(ByteView file) {
  return file.size >= 2 && file[0] == 'B' && file[1] == 'M';
}

void encode(const Arguments& arguments) {
  const Bytes frame = withFile(arguments.from, [&] {
    const Bytes file = readFile(arguments.from);
    const PackedImage image =
        isBmp(file) ? parsePackedBmp(file) : pack(parseImage(file), arguments.pixels);
    return yuv::toVideo(image, arguments.layout);
  });
  withFile(arguments.to, [&] { writeFile(arguments.to, frame); });
}

void decode(const Arguments& arguments) {
  int width = 0, height = 0, end = 0;
  if (std::sscanf(arguments.size.c_str(), "%dx%d%n", &width, &height, &end) != 2 ||
      arguments.size.c_str()[end] != 0 || width < 1 || height < 1) {
    throw Error("--size takes a width and a height, as in 640x480; not " + arguments.size);
  }
  const Bytes bmp = withFile(arguments.from, [&] {
    return formatBmp(
        yuv::ofVideo(readFile(arguments.from), arguments.layout, width, height, arguments.pixels));
  });
  withFile(arguments.to, [&] { writeFile(arguments.to, bmp); });
}

void addLayout(CLI::App& command, Arguments& arguments, bool isDecoder) {
  std::map<std::string, Layout> layouts = {
      {"i420", Layout::kI420}, {"yv12", Layout::kYv12}, {"yuyv", Layout::kYuyv}};
  if (!isDecoder) layouts["i422"] = Layout::kI422;
  command
      .add_option("--layout", arguments.layout,
                  "Planes of Y, Cb and Cr with chroma halved both ways (i420, the default), the "
                  "same with Cr first (yv12)" +
                      std::string(isDecoder ? "" : ", chroma halved across (i422)") +
                      ", or Y, Cb, Y, Cr for two pixels (yuyv)")
      ->transform(CLI::CheckedTransformer(layouts).description(isDecoder ? "i420|yv12|yuyv"
                                                                         : "i420|yv12|i422|yuyv"));
}

void addPixels(CLI::App& command, Arguments& arguments, const std::string& description) {
  static const std::map<std::string, PackedFormat> kPixels = {{"bgr555", PackedFormat::kBgr555},
                                                              {"bgr565", PackedFormat::kBgr565}};
  command.add_option("--pixels", arguments.pixels, description)
      ->transform(CLI::CheckedTransformer(kPixels).description("bgr555|bgr565"));
}

}  // namespace

void addYuvCommand(CLI::App& program) {
  CLI::App& yuv = *program.add_subcommand("yuv", "Frames of video between BMP and raw YCbCr");
  yuv.require_subcommand(1);
  const auto arguments = std::make_shared<Arguments>();

  CLI::App& encoder = *yuv.add_subcommand("encode", "Write a picture as a raw frame");
  encoder
      .add_option("input", arguments->from,
                  "A BMP with 16 bits to a pixel; or PNG, PGM, PPM or PAM, which is cut to that")
      ->required();
  encoder.add_option("output", arguments->to, "The frame")->required();
  addLayout(encoder, *arguments, false);
  addPixels(encoder, *arguments, "What a picture is cut to that is no BMP; bgr565 is the default");
  encoder.footer(
      "Example:\n"
      "  orb yuv encode --layout yuyv photo.bmp photo.yuv\n\n"
      "YCbCr of BT.601 in video range. The file has no header; ffplay -f rawvideo shows it.");
  encoder.callback([arguments] { encode(*arguments); });

  CLI::App& decoder = *yuv.add_subcommand("decode", "Turn a raw frame into pixels of 16 bits");
  decoder.add_option("input", arguments->from, "The frame")->required();
  decoder.add_option("output", arguments->to, "The BMP file")->required();
  decoder.add_option("--size", arguments->size, "Width and height, as in 640x480")
      ->type_name("WxH")
      ->required();
  addLayout(decoder, *arguments, true);
  addPixels(decoder, *arguments, "The pixels of the BMP; bgr565 is the default");
  decoder.footer(
      "Example:\n"
      "  orb yuv decode --size 640x480 --layout yuyv photo.yuv photo.bmp\n\n"
      "What lies behind the first frame is not looked at.");
  decoder.callback([arguments] { decode(*arguments); });
}

}  // namespace orbhost
