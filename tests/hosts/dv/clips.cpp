#include "tests/hosts/dv/clips.h"

#include <map>
#include <stdexcept>

#include "hosts/file.h"
#include "tests/hosts/support/program.h"

namespace orbtest {

using orbhost::Bytes;

namespace {

void runFfmpeg(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), {"ffmpeg", "-v", "error", "-nostdin", "-y"});
  const Outcome outcome = run(arguments);
  if (outcome.status != 0) throw std::runtime_error("ffmpeg: " + outcome.output);
}

Bytes encode(const Clip& clip) {
  const Directory directory;
  const auto size = [&](int divisor) {
    return std::to_string(clip.width / divisor) + "x" + std::to_string(clip.height / 2);
  };
  // Twice as many pictures as frames of two fields.
  const std::string rate = ":r=" + clip.rate + (clip.isInterlaced ? "*2" : "");
  const std::string whole = std::to_string(clip.width) + "x" + std::to_string(clip.height);
  const std::string graph =
      "testsrc2=s=" + whole + rate + "[a];mandelbrot=s=" + size(2) + rate +
      ":start_scale=0.3,format=yuv444p[b];color=c=gray:s=" + size(4) + rate +
      ",format=yuv444p,noise=alls=60:allf=t+u:all_seed=7[n];[a][b]overlay=x=" +
      std::to_string(clip.width / 2) +
      ":y=t*600:format=yuv444[c];[c][n]overlay=x=t*900:y=" + std::to_string(clip.height / 2) +
      ":format=yuv444" + (clip.isInterlaced ? ",tinterlace=interleave_bottom" : "");
  runFfmpeg({"-f", "lavfi", "-i", graph, "-frames:v", "2", "-pix_fmt", clip.pixels, "-r", clip.rate,
             "-flags", "+ildct+bitexact", "-threads", "1", "-c:v", "dvvideo", "-f", "rawvideo",
             directory / "clip.dv"});
  return orbhost::readFile(directory / "clip.dv");
}

}  // namespace

const std::vector<Clip>& clips() {
  static const std::vector<Clip> all = {
      {"DV 525 411", 720, 480, "yuv411p", "30000/1001", true},
      {"DV 625 420", 720, 576, "yuv420p", "25", true},
      {"DV 625 411", 720, 576, "yuv411p", "25", true},
      {"DV50 525", 720, 480, "yuv422p", "30000/1001", true},
      {"DV50 625", 720, 576, "yuv422p", "25", true},
      {"DV100 1080 60", 1280, 1080, "yuv422p", "30000/1001", true},
      {"DV100 1080 50", 1440, 1080, "yuv422p", "25", true},
      {"DV100 720 60", 960, 720, "yuv422p", "60000/1001", false},
      {"DV100 720 50", 960, 720, "yuv422p", "50", false},
  };
  return all;
}

const Bytes& codedClip(const Clip& clip) {
  static std::map<std::string, Bytes> coded;
  const auto found = coded.find(clip.name);
  if (found != coded.end()) return found->second;
  return coded[clip.name] = encode(clip);
}

Bytes judgeDecodeDv(const Bytes& stream) {
  const Directory directory;
  orbhost::writeFile(directory / "clip.dv", stream);
  runFfmpeg({"-flags", "+bitexact", "-idct", "simple", "-f", "dv", "-i", directory / "clip.dv",
             "-fps_mode", "passthrough", "-f", "rawvideo", directory / "clip.yuv"});
  return orbhost::readFile(directory / "clip.yuv");
}

}  // namespace orbtest
