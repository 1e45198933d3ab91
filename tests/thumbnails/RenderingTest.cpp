// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "foundation/imaging/Premultiply.h"
#include "support/ImageFiles.h"
#include "support/TempTree.h"
#include "thumbnails/OwnedBitplate.h"
#include "thumbnails/PictureFit.h"
#include "thumbnails/Rendering.h"

namespace sorvik_test {
namespace {

using Sorvik::OwnedBitplate;

struct FitCase {
  int pictureWidth, pictureHeight, cellWidth, cellHeight;
  int x, y, width, height;
};
class PictureFitting : public testing::TestWithParam<FitCase> {};
TEST_P(PictureFitting, KeepsTheAspectAndAlignsToTheBottom) {
  const FitCase& c = GetParam();
  const auto place = Sorvik::FitPicture(c.pictureWidth, c.pictureHeight, c.cellWidth, c.cellHeight);
  EXPECT_EQ(place.x, c.x);
  EXPECT_EQ(place.y, c.y);
  EXPECT_EQ(place.width, c.width);
  EXPECT_EQ(place.height, c.height);
}
INSTANTIATE_TEST_SUITE_P(Cells, PictureFitting,
                         testing::Values(FitCase{1000, 500, 100, 100, 0, 50, 100, 50},
                                         FitCase{500, 1000, 100, 100, 25, 0, 50, 100},
                                         FitCase{1000, 1000, 80, 60, 10, 0, 60, 60},
                                         // 170.67 rounds up, 1.5 rounds down.
                                         FitCase{6000, 4000, 256, 256, 0, 85, 256, 171},
                                         FitCase{4, 2, 3, 3, 0, 2, 3, 1},
                                         FitCase{2, 1, 1, 1, 0, 0, 1, 1},
                                         FitCase{1000, 1, 10, 10, 0, 10, 10, 0},
                                         FitCase{0, 5, 7, 9, 0, 0, 7, 9},
                                         // Products that exceed 32 bits.
                                         FitCase{200000, 1000, 16384, 16384, 0, 16302, 16384, 82}));

TEST(Premultiplying, MatchesTheFormulaAtItsLimits) {
  using Sorvik::imaging::Premultiplied;
  EXPECT_EQ(Premultiplied(255, 255), 255);
  EXPECT_EQ(Premultiplied(200, 0), 0);
  EXPECT_EQ(Premultiplied(255, 1), 1);
  EXPECT_EQ(Premultiplied(127, 1), 0);
  EXPECT_EQ(Premultiplied(128, 1), 1);
  EXPECT_EQ(Premultiplied(200, 100), 78);
}

class Rendering : public testing::Test {
 protected:
  Hestra::UTF16String File(const std::string& bytes) {
    return Hestra::MakeString(tree_.File("picture.bin", bytes));
  }
  OwnedBitplate Render(const std::string& bytes, int width, int height) {
    return OwnedBitplate(Sorvik::RenderThumbnail(File(bytes), width, height));
  }
  TempTree tree_;
};

TEST_F(Rendering, OwnSizeDrawsOpaquePicturesUnchangedAndTopDown) {
  const auto plate = Render(Saved(SixColours(), "png"), 0, 0);
  ASSERT_TRUE(plate);
  EXPECT_EQ(Upright(plate.get()).pixels, SixColours().pixels);
  EXPECT_EQ(bitplateGetRowOrder(plate.get()), BitplateRowOrder::kTopDown);
  const unsigned char* first = bitplateGetPixels(plate.get());
  EXPECT_EQ(std::vector<int>(first, first + 4), (std::vector<int>{0, 0, 255, 255}));
}

TEST_F(Rendering, TransparentPicturesArePremultipliedAndBottomUp) {
  Drawing drawing = SixColours();
  drawing.pixels[0] = {200, 100, 7, 100};
  drawing.pixels[1] = {90, 80, 70, 0};
  const auto plate = Render(Saved(drawing, "png", true), 0, 0);
  ASSERT_TRUE(plate);
  EXPECT_EQ(bitplateGetRowOrder(plate.get()), BitplateRowOrder::kBottomUp);
  EXPECT_EQ(PixelOf(plate.get(), 0, 0), (Pixel{78, 39, 3, 100}));
  EXPECT_EQ(PixelOf(plate.get(), 1, 0), kClear);
  EXPECT_EQ(PixelOf(plate.get(), 1, 2), kYellow);
  // In memory the lowest row is first: black, yellow.
  const unsigned char* first = bitplateGetPixels(plate.get());
  EXPECT_EQ(std::vector<int>(first, first + 8), (std::vector<int>{0, 0, 0, 255, 0, 255, 255, 255}));
}

TEST_F(Rendering, InternalFormIsTopDownAndKeepsRowPadding) {
  Drawing seeThrough = SixColours();
  seeThrough.pixels[4] = kClear;
  for (const auto& bytes : {Saved(SixColours(), "png"), Saved(seeThrough, "png", true)}) {
    constexpr int kRowBytes = 2 * 4 + 5;
    std::vector<unsigned char> buffer(kRowBytes * 3 + 4, 0xAA);
    ASSERT_TRUE(Sorvik::RenderThumbnail(File(bytes), 2, 3, kRowBytes, buffer.data()));
    EXPECT_EQ(buffer[2], 255);                // red at the top left
    EXPECT_EQ(buffer[4 + 1], 255);            // green next to it
    EXPECT_EQ(buffer[2 * kRowBytes + 4], 0);  // yellow has no blue
    EXPECT_EQ(buffer[2 * kRowBytes + 6], 255);
    EXPECT_EQ(buffer[kRowBytes - 1], 0xAA);  // padding is untouched
  }
}

TEST_F(Rendering, BoxFilterRoundsTheMeanOfBlocksDown) {
  const Drawing drawing{4,
                        2,
                        {{10, 0, 0},
                         {11, 0, 0},
                         {0, 100, 0},
                         {0, 101, 0},
                         {10, 0, 0},
                         {12, 0, 0},
                         {0, 0, 50},
                         {0, 0, 53}}};
  const auto plate = Render(Saved(drawing, "png"), 2, 2);
  ASSERT_TRUE(plate);
  EXPECT_EQ(PixelOf(plate.get(), 0, 0), kClear);  // the picture is at the bottom
  EXPECT_EQ(PixelOf(plate.get(), 0, 1), (Pixel{10, 0, 0}));
  EXPECT_EQ(PixelOf(plate.get(), 1, 1), (Pixel{0, 50, 25}));
  // A block of more bright rows than a 16-bit sum can hold.
  const Drawing white{300, 300, std::vector<Pixel>(300 * 300, Pixel{255, 255, 255})};
  const auto one = Render(Saved(white, "png"), 1, 1);
  ASSERT_TRUE(one);
  EXPECT_EQ(PixelOf(one.get(), 0, 0), (Pixel{255, 255, 255}));
}

TEST_F(Rendering, UnevenBlocksAreCountedFromTheLeftAndTheBottom) {
  const Drawing drawing{3,
                        3,
                        {{0, 0, 10},
                         {20, 0, 0},
                         {40, 0, 0},
                         {0, 0, 30},
                         {60, 0, 0},
                         {80, 0, 0},
                         {0, 9, 0},
                         {100, 0, 0},
                         {120, 0, 0}}};
  const auto plate = Render(Saved(drawing, "png"), 2, 2);
  ASSERT_TRUE(plate);
  EXPECT_EQ(Upright(plate.get()).pixels,
            (std::vector<Pixel>{{0, 0, 20}, {50, 0, 0}, {0, 9, 0}, {110, 0, 0}}));
}

TEST_F(Rendering, EnlargedOpaquePicturesHaveClearGaps) {
  const auto plate = Render(Saved(SixColours(), "png"), 4, 6);
  ASSERT_TRUE(plate);
  const Drawing six = SixColours();
  for (int y = 0; y < 6; ++y) {
    for (int x = 0; x < 4; ++x) {
      const bool written = x % 2 == 1 && y % 2 == 0;
      EXPECT_EQ(PixelOf(plate.get(), x, y), written ? six.At(x / 2, y / 2) : kClear) << x << y;
    }
  }
}

TEST_F(Rendering, SmoothStretchKeepsFlatAreasAndPosition) {
  const Pixel half{255, 0, 0, 128};
  for (const int side : {3, 40}) {
    const auto plate = Render(Saved(Plain(20, 10, half), "png", true), side, side);
    ASSERT_TRUE(plate);
    const auto place = Sorvik::FitPicture(20, 10, side, side);
    for (int y = 0; y < side; ++y) {
      const Pixel expected = y < place.y ? kClear : Pixel{128, 0, 0, 128};
      EXPECT_EQ(PixelOf(plate.get(), side / 2, y), expected) << side << " at " << y;
    }
  }
}

TEST_F(Rendering, SmoothStretchBlendsAndNeverExceedsAlpha) {
  const Drawing drawing{2, 1, {kWhite, kClear}};
  const auto plate = Render(Saved(drawing, "png", true), 8, 4);
  ASSERT_TRUE(plate);
  int last = 255;
  for (int x = 0; x < 8; ++x) {
    const Pixel pixel = PixelOf(plate.get(), x, 3);
    EXPECT_LE(pixel.alpha, last);
    EXPECT_EQ(pixel.red, pixel.alpha);
    last = pixel.alpha;
  }
  EXPECT_EQ(PixelOf(plate.get(), 0, 3).alpha, 255);
  EXPECT_EQ(last, 0);
}

TEST_F(Rendering, StreamedJpegEqualsFullDecodeInEveryKind) {
  // Compares the streamed rows with gdk-pixbuf's decode of the same file, through a PNG of it.
  for (const auto kind : {JpegKind::kColour, JpegKind::kGrey, JpegKind::kProgressive,
                          JpegKind::kCmyk, JpegKind::kFullChroma}) {
    const std::string jpeg = Jpeg(Ramps(251, 167), kind);
    const auto full = DecodeByPixbuf(jpeg);
    for (const auto& [width, height] : {std::pair{0, 0}, std::pair{64, 64}, std::pair{300, 200}}) {
      const auto streamed = Render(jpeg, width, height);
      const auto decoded = Render(Saved(full, "png"), width, height);
      ASSERT_TRUE(streamed && decoded);
      EXPECT_EQ(Upright(streamed.get()).pixels, Upright(decoded.get()).pixels)
          << static_cast<int>(kind) << " at " << width;
    }
    for (int i : {0, 40, 166}) {
      EXPECT_NEAR(full.At(i, i).green, Ramps(251, 167).At(i, i).green, 8) << static_cast<int>(kind);
    }
  }
}

TEST_F(Rendering, InvalidSidesAndBytesInMemoryAreRejected) {
  const std::string png = Saved(SixColours(), "png");
  EXPECT_FALSE(Render(png, -1, 10));
  EXPECT_FALSE(Render(png, 10, 16385));
  std::vector<unsigned char> buffer(64, 1);
  for (const auto& [width, height, rowBytes] :
       {std::tuple{0, 3, 8}, {2, 0, 8}, {2, -3, 8}, {2, 3, 7}, {2, 3, -8}}) {
    EXPECT_FALSE(Sorvik::RenderThumbnail(File(png), width, height, rowBytes, buffer.data()));
  }
  EXPECT_EQ(buffer, std::vector<unsigned char>(64, 1));
  EXPECT_EQ(Sorvik::RenderThumbnail(std::vector<unsigned char>(png.begin(), png.end()), 2, 3),
            nullptr);
}

TEST_F(Rendering, PicturesTooFlatForTheCellDrawNothing) {
  // Fitted to a height of 0: an opaque picture counts as drawn, another one doesn't.
  std::vector<unsigned char> buffer(10 * 10 * 4, 7);
  EXPECT_TRUE(
      Sorvik::RenderThumbnail(File(Saved(Plain(1000, 1, kRed), "png")), 10, 10, 40, buffer.data()));
  EXPECT_EQ(buffer, std::vector<unsigned char>(10 * 10 * 4, 0));
  EXPECT_FALSE(Sorvik::RenderThumbnail(File(Saved(Plain(1000, 1, {1, 2, 3, 4}), "png", true)), 10,
                                       10, 40, buffer.data()));
}

}  // namespace
}  // namespace sorvik_test
