// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <future>
#include <string>
#include <vector>

#include "foundation/imaging/ImageSource.h"
#include "support/ImageFiles.h"
#include "support/TempTree.h"
#include "support/TiffBytes.h"
#include "thumbnails/OwnedBitplate.h"
#include "thumbnails/Rendering.h"

namespace sorvik_test {
namespace {

using Sorvik::OwnedBitplate;
using namespace std::string_literals;

class Formats : public testing::Test {
 protected:
  OwnedBitplate Render(const std::string& bytes) {
    return RenderFile(tree_.File("picture.bin", bytes));
  }
  static OwnedBitplate RenderFile(const std::string& path) {
    return OwnedBitplate(Sorvik::RenderThumbnail(Hestra::MakeString(path), 0, 0));
  }
  // Expects exactly this picture when drawn at its own size.
  void ExpectDrawn(const char* what, const std::string& bytes, const Drawing& drawing) {
    const auto plate = Render(bytes);
    ASSERT_TRUE(plate) << what;
    EXPECT_EQ(Upright(plate.get()).pixels, drawing.pixels) << what;
  }
  TempTree tree_;
};

const std::vector<Pixel> kPalette{kRed, kGreen, kBlue, kWhite, kBlack, kYellow};

TEST_F(Formats, BmpOfEveryDepth) {
  const Drawing six = SixColours();
  // Bottom-up rows, each padded to 4 bytes.
  const std::string rows24 =
      "\x00\x00\x00\x00\xFF\xFF\0\0\xFF\x00\x00\xFF\xFF\xFF\0\0\x00\x00\xFF\x00\xFF\x00\0\0"s;
  const std::string rows24FromTop =
      "\x00\x00\xFF\x00\xFF\x00\0\0\xFF\x00\x00\xFF\xFF\xFF\0\0\x00\x00\x00\x00\xFF\xFF\0\0"s;
  const std::string rows32 = "\0\0\0\0\0\xFF\xFF\0\xFF\0\0\0\xFF\xFF\xFF\0\0\0\xFF\0\0\xFF\0\0"s;
  ExpectDrawn("4 bits",
              Bmp({.bits = 4, .palette = kPalette, .data = "\x45\0\0\0\x23\0\0\0\x01\0\0\0"s}),
              six);
  ExpectDrawn("8 bits", Bmp({.bits = 8, .palette = kPalette, .data = "\4\5\0\0\2\3\0\0\0\1\0\0"s}),
              six);
  ExpectDrawn("run lengths, 8 bits",
              Bmp({.bits = 8,
                   .compression = 1,
                   .palette = kPalette,
                   .data = "\1\4\1\5\0\0\1\2\1\3\0\0\1\0\1\1\0\1"s}),
              six);
  ExpectDrawn("run lengths, 4 bits",
              Bmp({.bits = 4,
                   .compression = 2,
                   .palette = kPalette,
                   .data = "\2\x45\0\0\2\x23\0\0\2\x01\0\1"s}),
              six);
  ExpectDrawn("16 bits, 555",
              Bmp({.bits = 16,
                   .data = LE16(0) + LE16(0x7FE0) + LE16(0x1F) + LE16(0x7FFF) + LE16(0x7C00) +
                           LE16(0x3E0)}),
              six);
  ExpectDrawn("16 bits, 565",
              Bmp({.bits = 16,
                   .compression = 3,
                   .masks = {0xF800, 0x7E0, 0x1F, 0},
                   .data = LE16(0) + LE16(0xFFE0) + LE16(0x1F) + LE16(0xFFFF) + LE16(0xF800) +
                           LE16(0x7E0)}),
              six);
  ExpectDrawn("24 bits", Bmp({.data = rows24}), six);
  ExpectDrawn("24 bits from the top", Bmp({.height = -3, .data = rows24FromTop}), six);
  ExpectDrawn("OS/2 header", Bmp({.headerBytes = 12, .data = rows24}), six);
  ExpectDrawn("32 bits, the fourth byte is filling", Bmp({.bits = 32, .data = rows32}), six);
  ExpectDrawn("1 bit",
              Bmp({.bits = 1, .palette = {kRed, kBlue}, .data = "\x40\0\0\0\x80\0\0\0\xC0\0\0\0"s}),
              {2, 3, {kBlue, kBlue, kBlue, kRed, kRed, kBlue}});
}

TEST_F(Formats, BmpHasAlphaOnlyWithAnAlphaMask) {
  // One row: semi-transparent red, opaque green.
  const std::string row = "\0\0\xFF\x80\0\xFF\0\xFF"s;
  BmpParts parts{.headerBytes = 124,
                 .width = 2,
                 .height = 1,
                 .bits = 32,
                 .compression = 3,
                 .masks = {0xFF0000, 0xFF00, 0xFF, 0xFF000000},
                 .data = row};
  ExpectDrawn("with a mask", Bmp(parts), {2, 1, {{128, 0, 0, 128}, kGreen}});
  parts.masks[3] = 0;
  ExpectDrawn("without", Bmp(parts), {2, 1, {kRed, kGreen}});
}

TEST_F(Formats, PngTiffGifAndIco) {
  const Drawing six = SixColours();
  Drawing seeThrough = six;
  seeThrough.pixels[3] = kClear;
  ExpectDrawn("PNG", Saved(six, "png"), six);
  ExpectDrawn("PNG with alpha that is never used", Saved(six, "png", true), six);
  ExpectDrawn("PNG with alpha", Saved(seeThrough, "png", true), seeThrough);
  ExpectDrawn("TIFF", Saved(six, "tiff"), six);
  ExpectDrawn("GIF", SixColourGif(), six);
  ExpectDrawn("ICO", Saved(Plain(16, 16, kRed), "ico", true), Plain(16, 16, kRed));
}

// An uncompressed TIFF of four samples. `place` has the tags of strips or tiles for an offset.
std::string Tiff(unsigned width, unsigned height, unsigned extraSample, const std::string& pixels,
                 const std::function<std::vector<TiffEntry>(std::uint32_t)>& place) {
  TiffBytes t;
  const auto build = [&](std::uint32_t offset) {
    std::vector<TiffEntry> tags = {t.Shorts(256, {width}),      t.Shorts(257, {height}),
                                   t.Shorts(258, {8, 8, 8, 8}), t.Shorts(259, {1}),
                                   t.Shorts(262, {2}),          t.Shorts(277, {4}),
                                   t.Shorts(338, {extraSample})};
    for (const TiffEntry& tag : place(offset)) tags.push_back(tag);
    std::sort(tags.begin(), tags.end(),
              [](const TiffEntry& a, const TiffEntry& b) { return a.tag < b.tag; });
    return t.File(tags);
  };
  return build(static_cast<std::uint32_t>(build(0).size())) + pixels;
}

TEST_F(Formats, TiffWithAlpha) {
  const TiffBytes t;
  const auto strip = [&](std::uint32_t offset) {
    return std::vector{t.Long(273, offset), t.Long(278, 1), t.Long(279, 8)};
  };
  constexpr unsigned kAssociated = 1;
  constexpr unsigned kUnassociated = 2;
  const Drawing expected{2, 1, {{100, 50, 25, 128}, kGreen}};
  const std::string green("\0\xFF\0\xFF", 4);
  ExpectDrawn("straight", Tiff(2, 1, kUnassociated, "\xC8\x64\x32\x80" + green, strip), expected);
  ExpectDrawn("premultiplied", Tiff(2, 1, kAssociated, "\x64\x32\x19\x80" + green, strip),
              expected);
  ExpectDrawn("colours above alpha", Tiff(2, 1, kAssociated, "\xC8\x32\x19\x80" + green, strip),
              {2, 1, {{128, 50, 25, 128}, kGreen}});
}

TEST_F(Formats, TiffInSmallTiles) {
  const TiffBytes t;
  constexpr std::size_t kPixels = 16 * 16;
  std::string rgb;  // two tiles of 768 bytes
  for (std::size_t i = 0; i < kPixels; ++i) rgb += std::string("\xFF\0\0", 3);
  for (std::size_t i = 0; i < kPixels; ++i) rgb += std::string("\0\0\xFF", 3);
  const auto file = [&](std::uint32_t offset) {
    TiffEntry offsets = t.Ratios(324, {{offset, offset + 768}}, 4);
    offsets.count = 2;
    return TiffBytes().File({t.Shorts(256, {32}), t.Shorts(257, {16}), t.Shorts(258, {8, 8, 8}),
                             t.Shorts(259, {1}), t.Shorts(262, {2}), t.Shorts(277, {3}),
                             t.Shorts(322, {16}), t.Shorts(323, {16}), offsets,
                             t.Shorts(325, {768, 768})});
  };
  Drawing expected{32, 16, {}};
  for (int i = 0; i < 32 * 16; ++i) expected.pixels.push_back(i % 32 < 16 ? kRed : kBlue);
  ExpectDrawn("16-pixel tiles", file(static_cast<std::uint32_t>(file(0).size())) + rgb, expected);
}

TEST_F(Formats, IcoUsesTheLargestPicture) {
  const auto bitmapOf = [](const Pixel& pixel, int side) {
    const std::string file = Saved(Plain(side, side, pixel), "ico", true);
    return file.substr(22);
  };
  const std::string png = Saved(Plain(256, 256, kBlue), "png");
  ExpectDrawn("PNG is largest", Ico({{16, bitmapOf(kRed, 16)}, {0, png}}), Plain(256, 256, kBlue));
  ExpectDrawn("bitmap is largest",
              Ico({{8, Saved(Plain(8, 8, kBlue), "png")}, {16, bitmapOf(kRed, 16)}}),
              Plain(16, 16, kRed));
  // An entry without data is skipped.
  std::string damaged = Ico({{0, png}, {16, bitmapOf(kGreen, 16)}});
  damaged.replace(6 + 8, 4, LE32(0x00300000));
  ExpectDrawn("the largest entry is invalid", damaged, Plain(16, 16, kGreen));
}

TEST_F(Formats, TruncatedJpegAndBmpAreDrawnPartially) {
  for (const JpegKind kind : {JpegKind::kColour, JpegKind::kProgressive}) {
    const std::string jpeg = Jpeg(Plain(64, 64, kGreen), kind);
    const auto plate = Render(jpeg.substr(0, jpeg.size() - 12));
    ASSERT_TRUE(plate);
    EXPECT_GT(PixelOf(plate.get(), 2, 2).green, 200);
  }
  const std::string bmp = Saved(Plain(64, 64, kGreen), "bmp");
  const auto upper = Render(bmp.substr(0, bmp.size() / 2));
  ASSERT_TRUE(upper);
  EXPECT_EQ(PixelOf(upper.get(), 2, 62), kGreen);
  EXPECT_EQ(PixelOf(upper.get(), 2, 2), kBlack);
}

TEST_F(Formats, GifDrawsOnlyTheFirstFrame) {
  std::string gif = SixColourGif();
  gif.pop_back();
  const std::string frame = gif.substr(13 + 24);
  // A comment of two sub-blocks in front of the frame, followed by so many frames that reading them
  // all would take minutes.
  std::string file = gif.substr(0, 13 + 24) + "\x21\xFE\x02hi\x01!\0"s + frame;
  for (int i = 0; i < 300000; ++i) file += frame;
  ExpectDrawn("with frames that are cut off", file + ",\0\0", SixColours());
  EXPECT_FALSE(Render(gif.substr(0, gif.size() - 1))) << "the first frame is truncated";
}

// A progressive JPEG with endless scans, each of which passes over every pixel.
std::string EndlessScans() {
  const std::string jpeg = Jpeg(Plain(4096, 4096, kGreen), JpegKind::kProgressive);
  const auto lastScan = jpeg.rfind("\xFF\xDA"s);
  std::string file = jpeg.substr(0, jpeg.size() - 2);
  const std::string scan = file.substr(lastScan, 40);
  for (int i = 0; i < 2000; ++i) file += scan;
  return file + "\xFF\xD9";
}

TEST_F(Formats, InvalidFilesAreRejectedCheaply) {
  const std::string png = Saved(Ramps(64, 64), "png");
  const std::string tiff = Saved(Ramps(64, 64), "tiff");
  const std::string bomb =
      Png({{"IHDR", PngHead(60000, 60000, 8, 2)}, {"IDAT", "\x78\x9C"s + std::string(4000, '\0')}});
  struct Bad {
    const char* what;
    std::string bytes;
  };
  const std::vector<Bad> files{
      {"empty", ""},
      {"one byte", "B"},
      {"text named like a picture", "This is a text file."},
      {"SVG", "<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>"},
      {"PNG, half", png.substr(0, png.size() / 2)},
      {"PNG, the last chunk is missing", png.substr(0, png.size() - 12)},
      {"PNG, signature only", png.substr(0, 8)},
      {"PNG, no width", Png({{"IHDR", PngHead(0, 5, 8, 2)}, {"IEND", ""}})},
      {"PNG of 3600 megapixels", bomb},
      {"TIFF, half", tiff.substr(0, tiff.size() / 2)},
      {"TIFF, directory far away", "II*\0"s + LE32(0xFFFFFFF0)},
      {"GIF, head only", "GIF89a\x02\0\x03\0\0\0\0"s},
      {"JPEG, head only", "\xFF\xD8\xFF\xE0"},
      {"JPEG, no image", "\xFF\xD8\xFF\xD9"},
      {"BMP, no width", Bmp({.width = 0, .data = "abcd"})},
      {"BMP, width below 0", Bmp({.width = -2, .data = "abcd"})},
      {"BMP of 900 megapixels", Bmp({.width = 30000, .height = 30000, .data = "abcd"})},
      {"BMP, height without a negative", Bmp({.height = INT32_MIN, .data = "abcd"})},
      {"BMP, header of 2 GB", "BM\x4E\0\0\0\0\0\0\0\x36\xFF\xFF\x7E\xFE\x2B\x1A\xEF"s + png},
      {"BMP, palette of 4 GB", Bmp({.data = "abcd"}).replace(46, 4, LE32(0xFF0000FF))},
      {"BMP of 7 bits", Bmp({.bits = 7, .data = "abcd"})},
      {"ICO, no entries", Ico({})},
      {"ICO, all entries invalid", Ico({{16, "abc"}}).substr(0, 20)},
      {"ICO with a bomb inside", Ico({{0, bomb}})},
      {"JPEG with 2000 scans", EndlessScans()},
  };
  for (const auto& [what, bytes] : files) {
    EXPECT_FALSE(Render(bytes)) << what;
    std::vector<unsigned char> cell(80 * 60 * 4);
    const auto path = Hestra::MakeString(tree_.Path("picture.bin"));
    EXPECT_FALSE(Sorvik::RenderThumbnail(path, 80, 60, 80 * 4, cell.data())) << what;
  }
}

TEST_F(Formats, OnlyRegularFilesOfLimitedSizeAreRead) {
  const std::string fifo = tree_.Path("fifo.bmp");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  const std::string huge = tree_.File("huge.png", Saved(SixColours(), "png"));
  ASSERT_EQ(truncate(huge.c_str(), std::int64_t{40} << 30), 0);
  const std::string loop = tree_.Path("loop.bmp");
  ASSERT_EQ(symlink(loop.c_str(), loop.c_str()), 0);
  const std::string cutShort = tree_.File("good.png", Saved(SixColours(), "png")) + "\0.png"s;
  rusage before;
  getrusage(RUSAGE_SELF, &before);
  for (const std::string& path :
       {fifo, huge, loop, tree_.Root(), "/dev/zero"s, tree_.Path("none"), ""s, cutShort}) {
    EXPECT_FALSE(RenderFile(path)) << path;
  }
  rusage after;
  getrusage(RUSAGE_SELF, &after);
  EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 32 * 1024) << "in KiB";
}

TEST_F(Formats, OpensNamesOfArbitraryBytes) {
  const std::string path = tree_.File("caf\xE9.png", Saved(SixColours(), "png"));
  EXPECT_TRUE(RenderFile(path));
}

TEST_F(Formats, ThreadsDrawConcurrently) {
  const std::vector<std::string> files{tree_.File("a.png", Saved(Ramps(90, 70), "png")),
                                       tree_.File("b.bmp", Saved(Ramps(90, 70), "bmp")),
                                       tree_.File("c.tif", Saved(Ramps(90, 70), "tiff")),
                                       tree_.File("d.gif", SixColourGif()),
                                       tree_.File("e.jpg", Jpeg(Ramps(90, 70), JpegKind::kColour))};
  const auto drawAll = [&files] {
    std::vector<std::vector<Pixel>> pictures;
    for (const std::string& file : files) {
      const OwnedBitplate picture = RenderFile(file);
      pictures.push_back(Upright(picture.get()).pixels);
      const OwnedBitplate icon(Sorvik::GetIconThumbnail(Hestra::MakeString(file), 20));
      pictures.push_back(Upright(icon.get()).pixels);
    }
    return pictures;
  };
  std::vector<std::future<std::vector<std::vector<Pixel>>>> workers;
  for (int i = 0; i < 4; ++i) workers.push_back(std::async(std::launch::async, drawAll));
  const auto expected = drawAll();
  for (auto& worker : workers) EXPECT_EQ(worker.get(), expected);
}

}  // namespace
}  // namespace sorvik_test
