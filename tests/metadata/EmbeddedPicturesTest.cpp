// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "metadata/EmbeddedPictures.h"
#include "support/ImageFiles.h"
#include "support/IsoBytes.h"
#include "support/TempTree.h"
#include "support/TiffBytes.h"

namespace {

using namespace Sorvik;
using namespace sorvik_test;

const std::string& SmallJpeg() {
  static const std::string jpeg = Jpeg(Plain(16, 16, kRed), JpegKind::kColour);
  return jpeg;
}
const std::string& LargeJpeg() {
  static const std::string jpeg = Jpeg(Ramps(160, 120), JpegKind::kColour);
  return jpeg;
}

class EmbeddedPicturesTest : public testing::Test {
 protected:
  EmbeddedPictures Find(const std::string& bytes) const {
    return FindEmbeddedPictures(tree_.File("file", bytes));
  }
  // The bytes of the largest picture.
  std::string First(const std::string& bytes) const {
    const EmbeddedPictures found = Find(bytes);
    if (found.pictures.empty()) return {};
    return bytes.substr(found.pictures.front().offset, found.pictures.front().length);
  }

  const TempTree tree_;
};

TEST_F(EmbeddedPicturesTest, FindsTheLargestPreviewOfRawFiles) {
  TiffBytes tiff(false);
  // A DNG: a thumbnail in the first directory, a preview and lossless raw data in others.
  constexpr std::uint32_t kAt = 1000;
  const std::uint32_t small = static_cast<std::uint32_t>(SmallJpeg().size());
  const std::uint32_t large = static_cast<std::uint32_t>(LargeJpeg().size());
  std::string file =
      tiff.File({tiff.Shorts(0x112, {6}), tiff.Long(0x201, kAt), tiff.Long(0x202, small)},
                {{0x14A,
                  {tiff.Shorts(0x103, {7}), tiff.Shorts(0x106, {6}), tiff.Long(0x111, kAt + small),
                   tiff.Long(0x117, large)}}});
  file.resize(kAt);
  const std::string raw = file + SmallJpeg() + LargeJpeg();
  EXPECT_EQ(First(raw), LargeJpeg());
  EXPECT_EQ(Find(raw).orientation, 6);
  EXPECT_EQ(Find(raw).pictures.size(), 2u);

  std::string sensor = tiff.File({tiff.Shorts(0x103, {7}), tiff.Shorts(0x106, {32803}),
                                  tiff.Long(0x111, kAt), tiff.Long(0x117, large)});
  sensor.resize(kAt);
  EXPECT_EQ(First(sensor + LargeJpeg()), "") << "the pixels of the sensor are no preview";

  Bytes raf;
  raf.Text("FUJIFILMCCD-RAW ").Fill(68).U32(200).U32(small).Fill(200 - 92);
  EXPECT_EQ(First(raf.str() + SmallJpeg()), SmallJpeg());
}

TEST_F(EmbeddedPicturesTest, FindsPicturesInBoxes) {
  const Bytes small = Bytes().Text(SmallJpeg());
  const Bytes large = Bytes().Text(LargeJpeg());
  const Bytes type = Box("ftyp", Bytes().Text("isom").U32(0));
  const Bytes cover = Box("data", Bytes().U32(13).U32(0).Add(small));
  const Bytes list = Box("ilst", {Box("covr", {cover})});
  const Bytes handler = Handler("mdir");
  const auto file = [&](const Bytes& inUserData) {
    return Bytes()
        .Add(type)
        .Add(Box("moov", {MovieHeader(25, 1), Box("udta", {inUserData})}))
        .str();
  };
  EXPECT_EQ(First(file(Box("meta", Bytes().U32(0).Add(handler).Add(list)))), SmallJpeg());
  EXPECT_EQ(First(file(Box("meta", Bytes().Add(handler).Add(list)))), SmallJpeg());
  EXPECT_EQ(First(file(Box("CNTH", {Box("CNDA", small)}))), SmallJpeg());

  const std::string canon("\x85\xC0\xB6\x87\x82\x0F\x11\xE0\x81\x11\xF4\xCE\x46\x2B\x6A\x48", 16);
  const std::string preview("\xEA\xF4\x2B\x5E\x1C\x98\x4B\x88\xB9\xFB\xB7\xDC\x40\x6E\x4D\x16", 16);
  const Bytes thumbnail = Box("THMB", Bytes().U32(0).U16(16).U16(16).U32(1).U32(0).Add(small));
  const Bytes shown = Box("PRVW", Bytes().U32(0).U16(1).U16(160).U16(120).U16(1).U32(1).Add(large));
  const Bytes raw = Bytes()
                        .Add(type)
                        .Add(Box("moov", {Box("uuid", Bytes().Text(canon).Add(thumbnail))}))
                        .Add(Box("uuid", Bytes().Text(preview).U64(0).Add(shown)));
  EXPECT_EQ(First(raw.str()), LargeJpeg());
}

TEST_F(EmbeddedPicturesTest, SurvivesTruncationAndCorruption) {
  TiffBytes tiff(true);
  std::string file = tiff.File({tiff.Long(0x201, 400), tiff.Long(0x202, 0xFFFFFFFF)});
  file.resize(400);
  file += SmallJpeg();
  EXPECT_EQ(First(file), SmallJpeg()) << "a length past the end of the file is cut";
  for (std::size_t size = 0; size < file.size(); size += 7) {
    const EmbeddedPictures found = Find(file.substr(0, size));
    for (const auto& picture : found.pictures) EXPECT_LE(picture.offset + picture.length, size);
  }
  EXPECT_TRUE(FindEmbeddedPictures(tree_.Root()).pictures.empty());
  EXPECT_TRUE(FindEmbeddedPictures(tree_.Path("missing")).pictures.empty());
}

}  // namespace
