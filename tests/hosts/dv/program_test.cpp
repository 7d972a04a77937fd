// orb dv decode as a program.
#include "tests/hosts/support/program.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "hosts/dv/decode.h"
#include "hosts/dv/y4m.h"
#include "hosts/file.h"
#include "hosts/image_file.h"
#include "tests/hosts/dv/clips.h"
#include "tests/hosts/support/pictures.h"

namespace {

using orbhost::Bytes;
using orbhost::readFile;
using orbhost::writeFile;
using orbtest::codedClip;
using orbtest::Directory;
using orbtest::Outcome;
using orbtest::runOrb;

class DvProgram : public testing::Test {
 protected:
  DvProgram() { writeFile(path_, clip_); }

  // What stands in a stream with these frames, of 2.
  Bytes stream(const std::vector<int>& frames) const {
    const orbhost::dv::Format& format = orbhost::dv::detectFormat(clip_);
    Bytes all = orbhost::dv::y4mHeader(format);
    for (const int frame : frames) {
      orbhost::dv::Decoder decoder(format);
      orbhost::dv::Picture picture(format);
      decoder.decode({clip_.data() + format.frameBytes() * frame, format.frameBytes()}, picture);
      for (const Bytes& part : {orbhost::dv::y4mFrameHeader(), planesOf(picture, format)}) {
        all.insert(all.end(), part.begin(), part.end());
      }
    }
    return all;
  }

  const Bytes& clip_ = codedClip(orbtest::clips()[1]);
  Directory directory_;
  const std::string path_ = directory_ / "clip.dv";
  const std::string y4m_ = directory_ / "clip.y4m";
};

TEST_F(DvProgram, WritesAStreamThatFfmpegReads) {
  const Outcome outcome = runOrb({"dv", "decode", path_, y4m_});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.output, "");
  EXPECT_EQ(readFile(y4m_), stream({0, 1}));
  const std::string raw = directory_ / "clip.yuv";
  const Outcome ffmpeg = orbtest::run({"ffmpeg", "-v", "error", "-nostdin", "-i", y4m_, "-f",
                                       "rawvideo", "-pix_fmt", "yuv420p", raw});
  EXPECT_EQ(ffmpeg.status, 0) << ffmpeg.output;
  EXPECT_EQ(readFile(raw).size(), size_t{2} * 720 * 576 * 3 / 2);
}

TEST_F(DvProgram, WritesOneFrame) {
  for (const int frame : {1, 2}) {
    EXPECT_EQ(runOrb({"dv", "decode", "--frame", std::to_string(frame), path_, y4m_}).status, 0);
    EXPECT_EQ(readFile(y4m_), stream({frame - 1}));
  }
  const Outcome outcome = runOrb({"dv", "decode", "--frame", "3", path_, directory_ / "none"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.output, "orb: " + path_ + ": there are only 2 frames\n");
  EXPECT_EQ(directory_.files(), (std::vector<std::string>{"clip.dv", "clip.y4m"}));
}

TEST_F(DvProgram, ReadsAndWritesStreams) {
  const Outcome outcome =
      orbtest::run({"sh", "-c", "cat " + path_ + " | " + ORB_PROGRAM + " dv decode - - >" + y4m_});
  EXPECT_EQ(outcome.status, 0) << outcome.output;
  EXPECT_EQ(readFile(y4m_), stream({0, 1}));
}

// As FFmpeg converts the frame, with chroma interpolated in another way.
TEST_F(DvProgram, WritesPictures) {
  const std::string pictures = directory_ / "pictures";
  EXPECT_EQ(runOrb({"dv", "decode", "--png", pictures, path_}).status, 0);
  const std::string theirs = directory_ / "theirs.png";
  ASSERT_EQ(orbtest::run({"ffmpeg", "-v", "error", "-nostdin", "-f", "dv", "-i", path_, "-vf",
                          "select=eq(n\\,1),scale=interl=1:flags=accurate_rnd+full_chroma_inp+"
                          "full_chroma_int:in_color_matrix=bt601",
                          "-frames:v", "1", "-pix_fmt", "rgb24", theirs})
                .status,
            0);
  const auto image = orbhost::parseImage(readFile(pictures + "/frame-000002.png"));
  EXPECT_EQ(image.width(), 720);
  EXPECT_EQ(image.height(), 576);
  EXPECT_GT(orbtest::psnr(image, orbhost::parseImage(readFile(theirs))), 25);
  EXPECT_EQ(orbtest::run({"sh", "-c", "ls " + pictures}).output,
            "frame-000001.png\nframe-000002.png\n");
}

TEST_F(DvProgram, SaysWhatTheStreamIs) {
  const Outcome outcome = runOrb({"dv", "decode", "--info", path_});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.output,
            "DV 625/50 4:2:0: 720 x 576 pixels, 25/1 frames a second, 144000 bytes a frame\n");
}

TEST_F(DvProgram, CountsDamage) {
  Bytes damaged = clip_;
  damaged[560] = 0;                  // the first segment of the first frame
  damaged[damaged.size() - 80] = 0;  // the last of the second
  writeFile(path_, damaged);
  Outcome outcome = runOrb({"dv", "decode", path_, y4m_});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.output, "orb: " + path_ +
                                ": 2 of 648 segments are missing or damaged, and keep the frame "
                                "before\n");
  EXPECT_EQ(readFile(y4m_).size(), stream({0, 1}).size());

  // A frame that is cut is one as long as there is anything of it.
  damaged = clip_;
  damaged.resize(144000 + 560 + 400);
  writeFile(path_, damaged);
  outcome = runOrb({"dv", "decode", path_, y4m_});
  EXPECT_EQ(outcome.output, "orb: " + path_ +
                                ": 323 of 648 segments are missing or damaged, and keep the frame "
                                "before\n");
  damaged.pop_back();
  writeFile(path_, damaged);
  outcome = runOrb({"dv", "decode", path_, y4m_});
  EXPECT_EQ(outcome.output, "");
  EXPECT_EQ(readFile(y4m_), stream({0}));
}

TEST_F(DvProgram, Refuses) {
  const std::string other = directory_ / "other";
  writeFile(other, Bytes(200000, 7));
  Outcome outcome = runOrb({"dv", "decode", other, y4m_});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.output, "orb: " + other + ": not a DV stream\n");
  outcome = runOrb({"dv", "decode", path_});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.output, "orb: nothing to do: an output file, --png or --info is wanted\n");
  EXPECT_EQ(runOrb({"dv", "decode", directory_ / "none", y4m_}).status, 1);
  EXPECT_EQ(runOrb({"dv", "decode", "--frame", "0", path_, y4m_}).status, 1);
  EXPECT_EQ(directory_.files(), (std::vector<std::string>{"clip.dv", "other"}));
}

}  // namespace
