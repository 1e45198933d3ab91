// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "formats/MediaProbe.h"
#include "support/IsoBytes.h"
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
