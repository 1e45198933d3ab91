// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "formats/MediaProbe.h"
#include "support/IsoBytes.h"
#include "support/MadeMedia.h"
#include "support/TempTree.h"
#include "support/TiffBytes.h"

namespace {

using namespace sorvik_test;
using Result = Sorvik::formats::MediaProbe::Result;

// An MP4 whose media box extends to the end of the file, so that only the sample tables contain the
// length: the last of three chunks has two samples of 30 bytes.
Bytes OpenEndedMovie(std::uint32_t equalSize) {
  const auto movieWith = [equalSize](std::uint32_t first) {
    Bytes sizes;
    sizes.U32(0).U32(equalSize).U32(6);
    if (equalSize == 0) {
      for (int i = 0; i < 6; ++i) sizes.U32(30);
    }
    Bytes chunks;
    chunks.U32(0).U32(3).U32(first).U32(first + 100).U32(first + 200);
    const Bytes runs = Bytes().U32(0).U32(1).U32(1).U32(2).U32(1);
    const std::vector<Bytes> tables = {Box("stsc", runs), Box("stsz", sizes), Box("stco", chunks)};
    return FileType().Add(Box("moov", Track("vide", MediaHeader(25, 6), tables)));
  };
  const auto first = static_cast<std::uint32_t>(movieWith(0).str().size() + 8);
  return movieWith(first).Add(Bytes().U32(0).Text("mdat").Fill(260));
}

TEST(MediaProbe, FindsTheEndOfTheLastSample) {
  const TempTree tree;
  for (const std::uint32_t equalSize : {0U, 30U}) {
    const std::string movie = OpenEndedMovie(equalSize).str();
    EXPECT_EQ(Sorvik::formats::ProbeMedia(tree.File("a.mp4", movie)).result, Result::kPassed);
    const auto cut =
        Sorvik::formats::ProbeMedia(tree.File("b.mp4", movie.substr(0, movie.size() - 1)));
    EXPECT_EQ(cut.result, Result::kTruncated);
    EXPECT_NE(cut.detail.find("by its sample tables"), std::string::npos) << cut.detail;
  }
  // The units of compressed QuickTime sound have no known size.
  const std::string sound = OpenEndedMovie(1).str();
  const std::string path = tree.File("c.mov", sound.substr(0, sound.size() - 40));
  EXPECT_EQ(Sorvik::formats::ProbeMedia(path).result, Result::kPassed);
}

TEST(MediaProbe, FindsPicturesWithoutAnEndMarker) {
  const TempTree tree;
  const auto resultOf = [&tree](const std::string& picture) {
    return Sorvik::formats::ProbeMedia(tree.File("a.JPG", picture)).result;
  };
  const std::string small = MadeMedia(".jpg");
  EXPECT_EQ(resultOf(small), Result::kPassed);
  EXPECT_EQ(resultOf(small + std::string(300'000, '\0')), Result::kPassed) << "padding";
  for (std::size_t bytes = 2; bytes < small.size(); ++bytes) {
    EXPECT_EQ(resultOf(small.substr(0, bytes)), Result::kTruncated) << bytes << " bytes";
  }
  EXPECT_EQ(resultOf("RIFF"), Result::kUnreadable);

  // A scan that is longer than what is read of it.
  Bytes scan;
  for (int i = 0; i < 1000; ++i) {
    for (unsigned value = 0; value < 0xFF; ++value) scan.U8(value);
    scan.Hex("FF00");
  }
  const std::string large = small.substr(0, small.size() - 2) + scan.str();
  EXPECT_EQ(resultOf(large), Result::kTruncated);
  EXPECT_EQ(resultOf(large + "\xFF\xD9"), Result::kPassed);
  for (const std::size_t zeros : {70'000U, 400'000U}) {
    const std::string tail(zeros, '\0');
    EXPECT_EQ(resultOf(large + tail), Result::kTruncated) << zeros;
    EXPECT_EQ(resultOf(large + "\xFF\xD9" + tail), Result::kPassed) << zeros;
    EXPECT_EQ(resultOf(small.substr(0, 71) + tail), Result::kTruncated) << "no header";
  }
  Bytes trailer;  // of another kind
  for (int i = 0; i < 70'000; ++i) trailer.U16(static_cast<std::uint16_t>(i * 7));
  EXPECT_EQ(resultOf(large + "\xFF\xD9" + trailer.str()), Result::kPassed);
}

TEST(MediaProbe, FindsTheEndOfPicturesBehindAPicture) {
  const TempTree tree;
  const std::string picture = MadeMedia(".jpg");
  // Two pictures; offsets count from the header of the directory, 10 bytes after SOI.
  constexpr std::uint32_t kIndexBytes = 64;
  const auto withIndex = [&](std::uint32_t secondAt) {
    Bytes index = Bytes().Text(std::string_view("MPF\0MM\0*", 8)).U32(8).U16(1);
    index.U16(0xB002).U16(7).U32(32).U32(26).U32(0);
    index.U32(0).U32(0).U32(0).U32(0).U32(0).U32(picture.size()).U32(secondAt).U32(0);
    EXPECT_EQ(index.size() + 2, kIndexBytes);
    return picture.substr(0, 2) + Bytes().Hex("FFE2").U16(kIndexBytes).Add(index).str() +
           picture.substr(2) + picture;
  };
  const std::string both = withIndex(static_cast<std::uint32_t>(kIndexBytes + picture.size()) - 8);
  const auto probe = [&tree](const std::string& bytes) {
    return Sorvik::formats::ProbeMedia(tree.File("a.jpeg", bytes));
  };
  EXPECT_EQ(probe(both).result, Result::kPassed);
  EXPECT_NE(probe(both.substr(0, both.size() - 1)).detail.find("by its index of pictures"),
            std::string::npos);
  EXPECT_EQ(probe(withIndex(7)).result, Result::kPassed) << "no picture there";
}

TEST(MediaProbe, FindsStreamsThatEndInZeros) {
  const TempTree tree;
  for (const char* extension : {".mts", ".m2t"}) {
    std::string stream;
    for (int i = 0; i < 10; ++i) stream += MadeMedia(extension);
    const auto resultOf = [&](const std::string& bytes) {
      return Sorvik::formats::ProbeMedia(tree.File(std::string("a") + extension, bytes)).result;
    };
    EXPECT_EQ(resultOf(stream), Result::kPassed);
    EXPECT_EQ(resultOf(stream.substr(0, stream.size() / 2) + std::string(stream.size() / 2, '\0')),
              Result::kTruncated);
  }
}

TEST(MediaProbe, FindsTheEndOfTheTilesOfADng) {
  const TempTree tree;
  TiffBytes tiff;
  constexpr std::uint32_t kTilesAt = 200;
  const std::string head = tiff.File({tiff.Long(324, kTilesAt), tiff.Long(325, 1000)});
  const auto resultWith = [&](std::size_t bytes) {
    std::string frame = head;
    frame.resize(bytes);
    return Sorvik::formats::ProbeMedia(tree.File("a.dng", frame)).result;
  };
  EXPECT_EQ(resultWith(kTilesAt + 1000), Result::kPassed);
  EXPECT_EQ(resultWith(kTilesAt + 999), Result::kTruncated);
}

}  // namespace
