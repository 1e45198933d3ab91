// SPDX-License-Identifier: MIT
// Pictures of clips in the program: scaling, the cache, and the commands that show them.
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <sstream>

#include "PictureCache.h"
#include "PictureScale.h"
#include "support/ImageFiles.h"
#include "support/Program.h"
#include "support/TempTree.h"
#include "support/Video.h"

namespace {

namespace fs = std::filesystem;
using host::Picture;
using namespace sorvik_test;

Picture MakePicture(int width, int height, const std::function<Pixel(int, int)>& at) {
  Picture picture{width, height, {}};
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const Pixel p = at(x, y);
      for (const int value : {p.blue, p.green, p.red, p.alpha}) {
        picture.pixels.push_back(static_cast<std::uint8_t>(value));
      }
    }
  }
  return picture;
}

Pixel At(const Picture& picture, int x, int y) {
  const std::size_t i = 4 * static_cast<std::size_t>(y * picture.width + x);
  return {picture.pixels[i + 2], picture.pixels[i + 1], picture.pixels[i], picture.pixels[i + 3]};
}

TEST(PictureScaling, IsSmoothInBothDirections) {
  const Picture halves = MakePicture(4, 2, [](int x, int) { return x < 2 ? kBlack : kWhite; });
  const Picture large = host::Scaled(halves, 40, 20);
  EXPECT_EQ(At(large, 0, 10), kBlack);
  EXPECT_EQ(At(large, 39, 0), kWhite);
  for (int x = 1; x < 40; ++x) EXPECT_GE(At(large, x, 5).red, At(large, x - 1, 5).red);
  EXPECT_NEAR(At(large, 19, 5).red, 115, 20) << "a gradient, no hard edge";
  const Picture small = host::Scaled(large, 2, 1);
  EXPECT_LT(At(small, 0, 0).red, 60);
  EXPECT_GT(At(small, 1, 0).red, 195);
  // The colour of transparent pixels doesn't show.
  const Picture edge = host::Scaled(MakePicture(2, 1,
                                                [](int x, int) {
                                                  return x == 0 ? Pixel{255, 0, 0, 0} : kGreen;
                                                }),
                                    8, 1);
  for (int x = 0; x < 8; ++x) EXPECT_EQ(At(edge, x, 0).red, 0);
}

TEST(PictureScaling, KeepsTheAspectRatioAndOneDirection) {
  const Picture picture = MakePicture(40, 20, [](int, int) { return kRed; });
  EXPECT_EQ(host::EnlargedTo(picture, 100, 100).width, 100);
  EXPECT_EQ(host::EnlargedTo(picture, 100, 100).height, 50);
  EXPECT_EQ(host::EnlargedTo(picture, 0, 100).width, 200);
  EXPECT_EQ(host::EnlargedTo(picture, 20, 20).width, 40);
  EXPECT_EQ(host::EnlargedTo(picture, 0, 0).width, 40);
  EXPECT_EQ(host::ReducedTo(picture, 20, 20).height, 10);
  EXPECT_EQ(host::ReducedTo(picture, 100, 100).width, 40);
  EXPECT_TRUE(host::EnlargedTo({}, 100, 100).Empty());
}

TEST(PictureScaling, RemovesGapsOfEnlargedPicturesOnly) {
  const auto colour = [](int x, int y) { return Pixel{40 * x, 60 * y, 9}; };
  const Picture source = MakePicture(5, 4, colour);
  const Picture gaps = MakePicture(17, 13, [&](int x, int y) {
    return x % 3 == 1 && y % 3 == 1 && x < 15 ? colour(x / 3, y / 3) : kClear;
  });
  const Picture compact = host::WithoutGaps(gaps);
  EXPECT_EQ(compact.width, 5);
  EXPECT_EQ(compact.height, 4);
  EXPECT_EQ(compact.pixels, source.pixels);
  const Picture icon = MakePicture(6, 6, [](int x, int y) { return x == y ? kRed : kClear; });
  EXPECT_EQ(host::WithoutGaps(icon).pixels, icon.pixels);
  EXPECT_TRUE(host::WithoutGaps({}).Empty());
}

class Cache : public testing::Test {
 protected:
  void SetUp() override { setenv("XDG_CACHE_HOME", tree_.Path("cache").c_str(), 1); }
  void TearDown() override { unsetenv("XDG_CACHE_HOME"); }

  const TempTree tree_;
};

TEST_F(Cache, KeepsThePictureUntilTheFileChanges) {
  const std::string file = tree_.File("card/a b.mov", "video");
  const Picture picture = MakePicture(300, 200, [](int x, int) { return x < 9 ? kRed : kBlue; });
  const host::PictureCache cache(320, 0);
  EXPECT_EQ(cache.Side(), 512);
  EXPECT_FALSE(cache.Find(file));
  cache.Store(file, picture);
  const auto found = cache.Find(file);
  ASSERT_TRUE(found);
  EXPECT_EQ(found->pixels, picture.pixels);
  EXPECT_FALSE(host::PictureCache(100, 100).Find(file)) << "another size class";
  fs::last_write_time(file, fs::last_write_time(file) + std::chrono::seconds(5));
  EXPECT_FALSE(cache.Find(file));
}

TEST_F(Cache, FollowsTheThumbnailSpecification) {
  const std::string file = tree_.File("card/a b.mov", "video");
  host::PictureCache(128, 128).Store(file, MakePicture(300, 200, [](int, int) { return kRed; }));
  std::vector<fs::path> files;
  for (const auto& entry : fs::recursive_directory_iterator(tree_.Path("cache"))) {
    struct stat facts;
    ASSERT_EQ(stat(entry.path().c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 0777U, entry.is_directory() ? 0700U : 0600U) << entry.path();
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  ASSERT_EQ(files.size(), 1u);
  EXPECT_EQ(files.front().parent_path(), tree_.Path("cache/thumbnails/normal"));
  EXPECT_EQ(files.front().filename().string().size(), 36u) << "MD5 of the URI";
  const std::unique_ptr<GdkPixbuf, decltype(&g_object_unref)> png(
      gdk_pixbuf_new_from_file(files.front().c_str(), nullptr), &g_object_unref);
  ASSERT_NE(png, nullptr);
  EXPECT_EQ(gdk_pixbuf_get_width(png.get()), 128);
  const std::string uri = "file://" + tree_.Path("card/a%20b.mov");
  EXPECT_EQ(uri, gdk_pixbuf_get_option(png.get(), "tEXt::Thumb::URI"));
  EXPECT_STREQ(gdk_pixbuf_get_option(png.get(), "tEXt::Thumb::Size"), "5");
}

TEST_F(Cache, IgnoresDamageAndUselessSizes) {
  const std::string file = tree_.File("a.mov", "video");
  const host::PictureCache cache(100, 100);
  cache.Store(file, MakePicture(10, 10, [](int, int) { return kRed; }));
  for (const auto& entry : fs::recursive_directory_iterator(tree_.Path("cache"))) {
    if (entry.is_regular_file()) fs::resize_file(entry.path(), entry.file_size() - 20);
  }
  EXPECT_FALSE(cache.Find(file));
  EXPECT_FALSE(cache.Find(tree_.Path("missing")));
  cache.Store(tree_.Path("missing"), MakePicture(10, 10, [](int, int) { return kRed; }));
  EXPECT_EQ(host::PictureCache(0, 0).Side(), 0);
  EXPECT_EQ(host::PictureCache(4000, 10).Side(), 0);
}

struct Loaded {
  int width = 0;
  int height = 0;
  bool opaque = true;
};
Loaded Load(const std::string& path) {
  const std::unique_ptr<GdkPixbuf, decltype(&g_object_unref)> image(
      gdk_pixbuf_new_from_file(path.c_str(), nullptr), &g_object_unref);
  if (!image) return {};
  Loaded loaded{gdk_pixbuf_get_width(image.get()), gdk_pixbuf_get_height(image.get())};
  const auto stride = static_cast<std::size_t>(gdk_pixbuf_get_rowstride(image.get()));
  const guint8* pixels = gdk_pixbuf_read_pixels(image.get());
  if (gdk_pixbuf_get_has_alpha(image.get()) == 0) return loaded;
  for (std::size_t y = 0; y < static_cast<std::size_t>(loaded.height); ++y) {
    for (std::size_t x = 0; x < static_cast<std::size_t>(loaded.width); ++x) {
      loaded.opaque &= pixels[y * stride + 4 * x + 3] == 255;
    }
  }
  return loaded;
}

TEST(PictureCommands, ThumbScalesIconsOfP2Smoothly) {
  const TempTree tree;
  ASSERT_EQ(std::system(
                ("bash " SORVIK_SOURCE_DIR "/tools/make-sample-card " + tree.Path("CARD")).c_str()),
            0);
  const std::string out = tree.Path("out.png");
  for (const char* option : {"--size=320x240", "--icon"}) {
    ASSERT_EQ(
        RunSorvik({"thumb", tree.Path("CARD"), "0001AB", "-o", out, "--size", "320x240", option})
            .exitCode,
        0);
    const Loaded picture = Load(out);
    EXPECT_EQ(picture.width, 320) << option;
    EXPECT_EQ(picture.height, 240) << option;
    EXPECT_TRUE(picture.opaque) << "no gaps between the pixels";
  }
  ASSERT_EQ(RunSorvik({"thumb", tree.Path("CARD"), "0001AB", "-o", out}).exitCode, 0);
  EXPECT_EQ(Load(out).width, 80);
}

TEST(PictureCommands, ShowVideosAndUseTheCache) {
  const TempTree tree;
  tree.Folder("cache");
  const std::string video = tree.File("clips/a.mov");
  if (!fs::exists(SORVIK_BINARY_DIR "/sorvik-frame")) GTEST_SKIP() << "sorvik-frame isn't built";
  ASSERT_TRUE(MakeVideo(video, {.width = 640, .height = 360, .encoding = "-c:v mjpeg -q:v 2"}));
  setenv("XDG_CACHE_HOME", tree.Path("cache").c_str(), 1);
  const std::string out = tree.Path("out.png");
  ASSERT_EQ(RunSorvik({"thumb", tree.Path("clips"), "a.mov", "-o", out}).exitCode, 0);
  EXPECT_EQ(Load(out).width, 80);
  EXPECT_EQ(Load(out).height, 45);
  EXPECT_FALSE(fs::exists(tree.Path("cache/thumbnails"))) << "nothing is kept without --cache";
  ASSERT_EQ(RunSorvik({"thumb", tree.Path("clips"), "a.mov", "-o", out, "--icon"}).exitCode, 0);
  EXPECT_FALSE(Load(out).opaque) << "an icon";

  const std::string page = tree.Path("sheet.html");
  ASSERT_EQ(RunSorvik({"sheet", tree.Path("clips"), "-o", page, "--cache"}).exitCode, 0);
  std::ostringstream html;
  html << std::ifstream(page).rdbuf();
  EXPECT_NE(html.str().find("src=\"data:image/jpeg;base64,/9j/"), std::string::npos);
  int cached = 0;
  for (const auto& entry : fs::directory_iterator(tree.Path("cache/thumbnails/x-large"))) {
    ++cached;
    EXPECT_EQ(Load(entry.path()).width, 512);
  }
  EXPECT_EQ(cached, 1);
  const auto time = fs::last_write_time(video);
  std::ofstream(video) << "no video";
  fs::last_write_time(video, time);
  ASSERT_EQ(
      RunSorvik({"thumb", tree.Path("clips"), "a.mov", "-o", out, "--size", "320x0", "--cache"})
          .exitCode,
      0);
  unsetenv("XDG_CACHE_HOME");
  EXPECT_EQ(Load(out).width, 320);
  EXPECT_EQ(Load(out).height, 180);
  EXPECT_TRUE(Load(out).opaque);
}

}  // namespace
