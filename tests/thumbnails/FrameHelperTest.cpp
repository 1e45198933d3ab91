// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <signal.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "support/TempTree.h"
#include "support/Video.h"
#include "thumbnails/FrameHelper.h"
#include "thumbnails/PlainPicture.h"

namespace {

using namespace Sorvik;
using namespace sorvik_test;
using std::chrono::seconds;
using std::chrono::steady_clock;

class FrameHelper : public testing::Test {
 protected:
  void SetUp() override {
    if (!HasFrameHelper()) GTEST_SKIP() << "sorvik-frame isn't built";
  }
  void TearDown() override { SetFrameHelperProgram(""); }

  static OwnedBitplate Decode(const std::string& path, int width = 0, int height = 0,
                              frames::Kind kind = frames::Kind::kVideo) {
    const auto picture = DecodeInHelper(path, kind, width, height, [] { return false; });
    return picture ? DrawFramePicture(*picture) : nullptr;
  }

  // Replaces the helper by a shell script.
  void UseScript(const std::string& text) const {
    const std::string path = tree_.File("helper", "#!/bin/sh\n" + text + "\n");
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    SetFrameHelperProgram(path);
  }

  const TempTree tree_;
};

struct FormatCase {
  const char* file;
  VideoOptions options;
  int width;  // as shown
  int height;
};

TEST_F(FrameHelper, ShowsTheFrameAtTenPercentOfEachFormat) {
  const FormatCase kCases[] = {
      {"a.mxf", {}, 320, 240},
      {"a.MTS",
       {.encoding = "-c:v libx264 -preset ultrafast -qp 10 -g 1 -pix_fmt yuv420p -f mpegts "
                    "-mpegts_m2ts_mode 1"},
       320,
       240},
      {"a.m2t", {.encoding = "-c:v mpeg2video -q:v 2 -g 1 -f mpegts"}, 320, 240},
      {"a.mp4",
       {.encoding = "-c:v libx264 -preset ultrafast -qp 10 -g 1 -pix_fmt yuv422p10le"},
       320,
       240},
      {"a.mov", {.encoding = "-c:v prores_ks"}, 320, 240},
      {"a.avi", {.encoding = "-c:v mjpeg -q:v 2 -pix_fmt yuvj420p"}, 320, 240},
      // Pixels that aren't square: DV is shown at 16:9, DVCPRO HD at 1920 by 1080.
      {"a.dv", {720, 576, "-c:v dvvideo -pix_fmt yuv420p -aspect 16:9", "null", true}, 1024, 576},
      {"opatom.mxf",
       {1440, 1080, "-c:v dvvideo -pix_fmt yuv422p -aspect 16:9 -f mxf_opatom"},
       1920,
       1080},
  };
  for (const FormatCase& c : kCases) {
    const std::string path = tree_.Path(c.file);
    ASSERT_TRUE(MakeVideo(path, c.options)) << c.file;
    const OwnedBitplate plate = Decode(path);
    ASSERT_NE(plate, nullptr) << c.file;
    EXPECT_EQ(bitplateGetWidth(plate.get()), c.width) << c.file;
    EXPECT_EQ(bitplateGetHeight(plate.get()), c.height) << c.file;
    EXPECT_TRUE(ShowsColours(plate.get())) << c.file;
    EXPECT_NEAR(FrameNumber(plate.get()), kVideoFrames / 10, 1) << c.file;
  }
}

TEST_F(FrameHelper, ReducesButNeverEnlarges) {
  const std::string path = tree_.Path("a.mov");
  ASSERT_TRUE(MakeVideo(path, {.encoding = "-c:v prores_ks"}));
  const OwnedBitplate small = Decode(path, 100, 100);
  ASSERT_NE(small, nullptr);
  EXPECT_EQ(bitplateGetWidth(small.get()), 100);
  EXPECT_EQ(bitplateGetHeight(small.get()), 75);
  EXPECT_TRUE(ShowsColours(small.get()));
  const OwnedBitplate large = Decode(path, 1000, 0);
  ASSERT_NE(large, nullptr);
  EXPECT_EQ(bitplateGetWidth(large.get()), 320);
}

TEST_F(FrameHelper, TurnsPicturesUpright) {
  const std::string plain = tree_.Path("plain.mp4");
  const std::string turned = tree_.Path("turned.mp4");
  const std::string upright = tree_.Path("upright.png");
  ASSERT_TRUE(MakeVideo(plain, {.encoding = "-c:v mpeg4 -q:v 1 -g 1"}));
  for (const char* rotation : {"90", "180", "270"}) {
    const std::string ffmpeg = "ffmpeg -loglevel error -y -i ";
    ASSERT_EQ(std::system((ffmpeg + plain + " -c copy -metadata:s:v rotate=" + rotation + " " +
                           turned + " && " + ffmpeg + turned + " -frames:v 1 " + upright)
                              .c_str()),
              0);
    const OwnedBitplate plate = Decode(turned);
    const auto source = imaging::ImageSource::OpenFile(upright);
    ASSERT_TRUE(source);
    const OwnedBitplate expected = DrawPlainPicture(*source, 0, 0);
    ASSERT_NE(plate, nullptr);
    ASSERT_NE(expected, nullptr);
    EXPECT_EQ(bitplateGetWidth(plate.get()), bitplateGetWidth(expected.get())) << rotation;
    EXPECT_FALSE(ShowsColours(plate.get())) << rotation;
    const auto at = [&expected](double x, double y) { return PixelAt(expected.get(), x, y); };
    EXPECT_TRUE(
        ShowsColours(plate.get(), at(0.25, 0.25), at(0.75, 0.25), at(0.25, 0.7), at(0.75, 0.7)))
        << rotation;
  }
}

TEST_F(FrameHelper, ShowsOneFieldOfInterlacedVideo) {
  // The fields differ: one is white, the other black. Weaving them gives stripes or grey.
  const std::string path = tree_.Path("a.mxf");
  ASSERT_TRUE(MakeVideo(
      path, {.width = 720,
             .height = 576,
             .encoding = "-c:v mpeg2video -q:v 1 -g 1 -pix_fmt yuv422p -flags +ilme+ildct -top 1",
             .filters = "format=gray,geq=lum='if(mod(Y\\,2)\\,0\\,255)',setfield=tff"}));
  const OwnedBitplate plate = Decode(path, 160, 120);
  ASSERT_NE(plate, nullptr);
  EXPECT_GT(PixelAt(plate.get(), 0.5, 0.5).green, 220);
  EXPECT_GT(PixelAt(plate.get(), 0.2, 0.8).green, 220);
}

TEST_F(FrameHelper, SkipsABlackBeginning) {
  const std::string path = tree_.Path("a.mov");
  ASSERT_TRUE(MakeVideo(
      path, {.encoding = "-c:v prores_ks", .filters = "drawbox=t=fill:c=black:enable='lt(n,14)'"}));
  const OwnedBitplate plate = Decode(path);
  EXPECT_TRUE(ShowsColours(plate.get()));
  EXPECT_NEAR(FrameNumber(plate.get()), 15, 1);
}

TEST_F(FrameHelper, ConvertsHDRToNaturalBrightness) {
  // The signals of reference white, 203 cd/m2.
  for (const auto& [transfer, signal] :
       {std::pair{"smpte2084", "0.58"}, std::pair{"arib-std-b67", "0.75"}}) {
    const std::string path = tree_.Path("a.mkv");
    ASSERT_TRUE(MakeVideo(
        path, {.encoding = std::string("-c:v ffv1 -pix_fmt yuv420p10le -color_primaries bt2020 "
                                       "-colorspace bt2020nc -color_range tv -color_trc ") +
                           transfer,
               .filters = std::string("format=gray10le,geq=lum='64+876*") + signal + "'"}));
    const OwnedBitplate plate = Decode(path);
    ASSERT_NE(plate, nullptr) << transfer;
    const Pixel pixel = PixelAt(plate.get(), 0.5, 0.5);
    EXPECT_GT(pixel.green, 150) << transfer;
    EXPECT_LT(pixel.green, 230) << transfer;
    EXPECT_NEAR(pixel.red, pixel.blue, 4) << transfer;
  }
}

TEST_F(FrameHelper, DecodesHeifPicturesAndTheirThumbnails) {
  const std::string png = tree_.Path("a.png");
  const std::string heic = tree_.Path("a.heic");
  ASSERT_TRUE(MakeVideo(png, {.width = 640, .height = 480, .encoding = "-frames:v 1"}));
  ASSERT_EQ(std::system(("heif-enc -t 160 -q 90 " + png + " -o " + heic + " > /dev/null").c_str()),
            0);
  for (const int side : {0, 100, 400}) {
    const OwnedBitplate plate = Decode(heic, side, side, frames::Kind::kHeif);
    EXPECT_TRUE(ShowsColours(plate.get())) << side;
    EXPECT_EQ(bitplateGetWidth(plate.get()), side == 0 ? 640 : side);
  }
  EXPECT_EQ(Decode(png, 0, 0, frames::Kind::kHeif), nullptr);
  EXPECT_EQ(Decode(tree_.File("b.heic"), 0, 0, frames::Kind::kHeif), nullptr);
}

TEST_F(FrameHelper, DevelopsRawFrames) {
  // ARRIRAW: 12 bits per pixel; blue and red halves in a Bayer mosaic.
  constexpr int kWidth = 64;
  constexpr int kHeight = 48;
  std::string file(4096, '\0');
  file.replace(0, 4, "ARRI");
  file.replace(20, 8, LE32(kWidth) + LE32(kHeight));
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; x += 8) {
      const int values[2][2][2] = {{{3000, 700}, {700, 200}}, {{200, 700}, {700, 3000}}};
      std::uint32_t words[3] = {};
      for (int bit = 0; bit < 96; ++bit) {
        const int value = values[x < kWidth / 2 ? 0 : 1][y % 2][bit / 12 % 2];
        words[bit / 32] |= static_cast<std::uint32_t>(value >> (11 - bit % 12) & 1)
                           << (31 - bit % 32);
      }
      for (const std::uint32_t word : words) file += LE32(word);
    }
  }
  const OwnedBitplate plate = Decode(tree_.File("a.ari", file), 0, 0, frames::Kind::kRaw);
  ASSERT_NE(plate, nullptr);
  EXPECT_EQ(bitplateGetWidth(plate.get()), kWidth / 2);
  const Pixel left = PixelAt(plate.get(), 0.25, 0.5);
  const Pixel right = PixelAt(plate.get(), 0.75, 0.5);
  EXPECT_GT(left.red, left.blue + 40);
  EXPECT_GT(right.blue, right.red + 40);
  EXPECT_EQ(Decode(tree_.File("b.ari", file.substr(0, 4000)), 0, 0, frames::Kind::kRaw), nullptr);
}

TEST_F(FrameHelper, SurvivesTruncationAndCorruption) {
  for (const auto& [file, encoding] :
       {std::pair{"a.mp4", "-c:v libx264 -preset ultrafast -g 5"},
        std::pair{"a.mxf", "-c:v mpeg2video -g 5"},
        std::pair{"a.ts", "-c:v libx264 -preset ultrafast -g 5 -f mpegts"},
        std::pair{"a.avi", "-c:v mjpeg -pix_fmt yuvj420p"}}) {
    const std::string path = tree_.Path(file);
    ASSERT_TRUE(MakeVideo(path, {.width = 160, .height = 120, .encoding = encoding}));
    std::ostringstream content;
    content << std::ifstream(path, std::ios::binary).rdbuf();
    const std::string good = content.str();
    std::string damaged = good;
    std::uint32_t random = 1;
    for (std::size_t round = 0; round < 12; ++round) {
      for (int i = 0; i < 40; ++i) {
        random = random * 1664525 + 1013904223;
        damaged[random % damaged.size()] = static_cast<char>(random >> 24);
      }
      Decode(tree_.File("damaged", damaged), 80, 60);
      Decode(tree_.File("short", std::string_view(good).substr(0, good.size() * round / 12)), 80,
             60);
    }
    EXPECT_NE(Decode(path), nullptr) << "the helper must go on after damaged files: " << file;
  }
}

TEST_F(FrameHelper, ReadsNeitherPlaylistsNorOtherFilesNorSpecialFiles) {
  const std::string video = tree_.Path("a.ts");
  ASSERT_TRUE(MakeVideo(video, {.encoding = "-c:v mpeg2video -f mpegts"}));
  EXPECT_NE(Decode(video), nullptr);
  EXPECT_EQ(Decode(tree_.File("a.m3u8", "#EXTM3U\n#EXT-X-TARGETDURATION:2\n#EXTINF:2,\n" + video +
                                            "\n#EXT-X-ENDLIST\n")),
            nullptr);
  EXPECT_EQ(Decode(tree_.File("a.txt", "ffconcat version 1.0\nfile '" + video + "'\n")), nullptr);
  EXPECT_EQ(Decode(tree_.Folder("folder")), nullptr);
  ASSERT_EQ(std::system(("mkfifo " + tree_.Path("fifo")).c_str()), 0);
  EXPECT_EQ(Decode(tree_.Path("fifo")), nullptr);
  EXPECT_EQ(Decode("/dev/zero"), nullptr);
  EXPECT_EQ(Decode(tree_.Path("missing.mp4")), nullptr);
}

TEST_F(FrameHelper, ReusesItsProcessAndReplacesAKilledOne) {
  const std::string path = tree_.Path("a.ts");
  ASSERT_TRUE(MakeVideo(path, {.encoding = "-c:v mpeg2video -f mpegts"}));
  EXPECT_NE(Decode(path), nullptr);
  const auto first = IdleFrameHelpers();
  ASSERT_EQ(first.size(), 1u);
  EXPECT_NE(Decode(path), nullptr);
  EXPECT_EQ(IdleFrameHelpers(), first);
  ASSERT_EQ(kill(first.front(), SIGKILL), 0);
  EXPECT_NE(Decode(path), nullptr);
  EXPECT_NE(IdleFrameHelpers(), first);
}

TEST_F(FrameHelper, CostsOnePictureIfItCrashesOrAnswersNonsense) {
  const std::string path = tree_.File("a.mp4", "not a video");
  for (const char* script : {"exit 1", "sleep 0.2; kill -9 $$", "sleep 0.2; kill -SEGV $$",
                             "head -c 4 <&0 >/dev/null; printf nonsense_nonsense >&0; sleep 9"}) {
    UseScript(script);
    const auto start = steady_clock::now();
    EXPECT_EQ(Decode(path), nullptr) << script;
    EXPECT_LT(steady_clock::now() - start, seconds(3)) << script;
    EXPECT_TRUE(IdleFrameHelpers().empty()) << script;
  }
}

TEST_F(FrameHelper, IsKilledAfterFiveSeconds) {
  UseScript("exec sleep 60");
  const auto start = steady_clock::now();
  EXPECT_EQ(Decode(tree_.File("a.mp4", "x")), nullptr);
  EXPECT_GT(steady_clock::now() - start, seconds(4));
  EXPECT_LT(steady_clock::now() - start, seconds(9));
}

TEST_F(FrameHelper, StopsWhenAskedTo) {
  UseScript("exec sleep 60");
  const auto start = steady_clock::now();
  std::atomic<bool> stopped = false;
  std::jthread stopping([&stopped] {
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    stopped = true;
  });
  EXPECT_FALSE(DecodeInHelper(tree_.File("a.mp4", "x"), frames::Kind::kVideo, 0, 0,
                              [&stopped] { return stopped.load(); }));
  EXPECT_LT(steady_clock::now() - start, seconds(3));
}

TEST_F(FrameHelper, RunsAtMostOneProcessPerCore) {
  UseScript("echo x >> " + tree_.Path("starts") + "; exec sleep 60");
  const std::string path = tree_.File("a.mp4", "x");
  std::atomic<bool> stopped = false;
  {
    std::vector<std::jthread> threads;
    for (unsigned i = 0; i < 3 * std::thread::hardware_concurrency(); ++i) {
      threads.emplace_back([&] {
        DecodeInHelper(path, frames::Kind::kVideo, 0, 0, [&] { return stopped.load(); });
      });
    }
    std::this_thread::sleep_for(seconds(1));
    stopped = true;
  }
  std::ifstream starts(tree_.Path("starts"));
  unsigned count = 0;
  for (std::string line; std::getline(starts, line);) ++count;
  EXPECT_GE(count, 1u);
  EXPECT_LE(count, std::thread::hardware_concurrency());
}

TEST_F(FrameHelper, GivesNothingWithoutTheProgram) {
  SetFrameHelperProgram(tree_.Path("missing"));
  EXPECT_EQ(Decode(tree_.File("a.mp4", "x")), nullptr);
}

}  // namespace
