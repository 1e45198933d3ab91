// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "SorvikProvider/cardtools/ClipPicture.h"
#include "SorvikProvider/frame/ProviderHost.h"
#include "support/AllCards.h"
#include "support/ImageFiles.h"
#include "support/TempTree.h"
#include "support/TiffBytes.h"
#include "support/Video.h"
#include "thumbnails/FrameHelper.h"
#include "thumbnails/OwnedBitplate.h"
#include "thumbnails/PlainPicture.h"

namespace {

using namespace Sorvik;
using namespace sorvik_test;
namespace StationUtils = Hestra::StationUtils;

class ClipPicture : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    media_ = new TempTree;
    hasMedia_ =
        MakeVideo(media_->Path("a.MXF")) &&
        MakeVideo(media_->Path("a.MP4"), {.encoding = "-c:v mpeg4 -q:v 2 -g 1"}) &&
        MakeVideo(media_->Path("a.MTS"), {.encoding = "-c:v mpeg2video -q:v 2 -g 1 -f mpegts"}) &&
        MakeVideo(media_->Path("a.AVI"),
                  {720, 576, "-c:v dvvideo -pix_fmt yuv420p -f avi", "null", true});
  }
  static void TearDownTestSuite() { delete media_; }

  void SetUp() override {
    ProviderHost::Initialize();
    ProviderHost::RegisterAdditionalProviders();
    if (!HasFrameHelper()) GTEST_SKIP() << "sorvik-frame isn't built";
    ASSERT_TRUE(hasMedia_) << "ffmpeg is needed";
  }
  void TearDown() override {
    SetFrameHelperProgram("");
    ProviderHost::Shutdown();
  }

  // Replaces the media files of a made card by videos.
  void FillWithVideos(const std::string& root) const {
    for (const auto& file : std::filesystem::recursive_directory_iterator(root)) {
      const std::string extension = file.path().extension();
      const std::string video = extension == ".m2ts" || extension == ".M2T" ? ".MTS" : extension;
      const std::string source = media_->Path("a" + video);
      if (!file.is_regular_file() || !std::filesystem::exists(source)) continue;
      std::filesystem::copy_file(source, file.path(),
                                 std::filesystem::copy_options::overwrite_existing);
    }
  }

  const ProviderWrapper& ProviderOf(const MadeCard& card) const {
    for (const ProviderWrapper* wrapper : ProviderHost::GetAllProviders()) {
      if (wrapper->GetIdentification() == card.providerId) return *wrapper;
    }
    throw std::logic_error(card.providerId);
  }

  std::vector<std::string> KeysOf(const MadeCard& card) const {
    std::vector<std::string> keys;
    for (const auto& [key, fields] : ProviderOf(card).GetContent(card.root, {}, nullptr)) {
      keys.push_back(key);
    }
    return keys;
  }

  static TempTree* media_;
  static bool hasMedia_;
  const TempTree tree_;
};

TempTree* ClipPicture::media_ = nullptr;
bool ClipPicture::hasMedia_ = false;

TEST_F(ClipPicture, ShowsTheVideoOfEachStructure) {
  int clips = 0;
  for (const MadeCard& card : MakeAllCards(tree_)) {
    const std::string name = card.root.substr(card.root.rfind('/') + 1);
    if (name == "red" || name == "arri" || name == "dng" || name == "canonraw") continue;
    FillWithVideos(card.root);
    std::filesystem::remove_all(card.root + "/CONTENTS/ICON");
    for (const std::string& key : KeysOf(card)) {
      const OwnedBitplate plate(RenderClipPicture(card.root, card.providerId, key, 160, 120));
      EXPECT_TRUE(ShowsColours(plate.get())) << card.root << " " << key;
      EXPECT_NEAR(FrameNumber(plate.get()), kVideoFrames / 10, 1) << card.root << " " << key;
      ++clips;
    }
  }
  EXPECT_GE(clips, 12);
}

TEST_F(ClipPicture, PrefersThePictureOfTheCamera) {
  for (const MadeCard& card : MakeAllCards(tree_)) {
    if (card.root != tree_.Path("p2")) continue;
    FillWithVideos(card.root);
    for (const std::string& key : KeysOf(card)) {
      tree_.File("p2/CONTENTS/ICON/" + key + ".BMP", Saved(Plain(80, 60, kWhite), "bmp"));
      const OwnedBitplate plate(RenderClipPicture(card.root, card.providerId, key, 320, 240));
      ASSERT_NE(plate, nullptr) << key;
      EXPECT_EQ(bitplateGetWidth(plate.get()), 80) << "never enlarged";
      EXPECT_EQ(PixelAt(plate.get(), 0.5, 0.5), kWhite) << key;
    }
    tree_.File("p2/CONTENTS/ICON/0004BB.BMP", "not a picture");
    const OwnedBitplate plate(RenderClipPicture(card.root, card.providerId, "0004BB", 320, 240));
    EXPECT_TRUE(ShowsColours(plate.get())) << "a damaged icon is replaced by the video";
  }
}

TEST_F(ClipPicture, ShowsThePreviewOfAFrameUpright) {
  const std::string jpeg = Jpeg(Ramps(64, 32), JpegKind::kColour);
  TiffBytes tiff(false);
  constexpr std::uint32_t kAt = 200;
  std::string frame = tiff.File({tiff.Shorts(0x112, {6}), tiff.Long(0x201, kAt),
                                 tiff.Long(0x202, static_cast<std::uint32_t>(jpeg.size()))});
  frame.resize(kAt);
  for (int i = 0; i < 20; ++i) {
    tree_.File("dng/c_" + std::to_string(100 + i) + ".dng", i == 2 ? frame + jpeg : "x");
  }
  const std::string root = tree_.Path("dng");
  const OwnedBitplate plate(
      RenderClipPicture(root, "com.halvane.Merisk.ProviderCinemaDNG", root + "/c_100.dng", 0, 0));
  ASSERT_NE(plate, nullptr) << "the frame at 10 % of the sequence has a preview";
  EXPECT_EQ(bitplateGetWidth(plate.get()), 32);
  EXPECT_EQ(bitplateGetHeight(plate.get()), 64);
  const OwnedBitplate stored = [&] {
    const imaging::ImageSource source(std::as_bytes(std::span(jpeg)));
    return DrawPlainPicture(source, 0, 0);
  }();
  EXPECT_EQ(PixelAt(plate.get(), 0.99, 0), PixelAt(stored.get(), 0, 0)) << "turned clockwise";
  EXPECT_EQ(PixelAt(plate.get(), 0, 0), PixelAt(stored.get(), 0, 0.99));
}

TEST_F(ClipPicture, ShowsAPhotographItselfAndTheThumbnailOfAMovie) {
  const std::string thumbnail = Jpeg(Plain(16, 12, kBlack), JpegKind::kColour);
  tree_.File("card/DCIM/100CANON/IMG_0001.JPG", Jpeg(Plain(64, 48, kWhite), JpegKind::kColour));
  tree_.File("card/DCIM/100CANON/IMG_0001.THM", thumbnail);
  tree_.File("card/DCIM/100CANON/MVI_0002.MOV", "damaged");
  tree_.File("card/DCIM/100CANON/MVI_0002.THM", thumbnail);
  const MadeCard card{tree_.Path("card"), "com.halvane.Merisk.ProviderDCIM"};
  std::vector<int> widths;
  for (const std::string& key : KeysOf(card)) {
    const OwnedBitplate plate(RenderClipPicture(card.root, card.providerId, key, 0, 0));
    widths.push_back(bitplateGetWidth(plate.get()));
  }
  EXPECT_EQ(widths, (std::vector<int>{64, 16}));
}

TEST_F(ClipPicture, IsMissingForUnknownEntriesAndDamagedMedia) {
  for (const MadeCard& card : MakeAllCards(tree_)) {
    for (const char* key : {"", "..", "unknown", "/etc/passwd"}) {
      const OwnedBitplate plate(RenderClipPicture(card.root, card.providerId, key, 80, 60));
      EXPECT_EQ(plate, nullptr) << card.root << " " << key;
    }
    EXPECT_EQ(RenderClipPicture(card.root, "com.halvane.Merisk.Unknown", "x", 80, 60), nullptr);
    for (const std::string& key : KeysOf(card)) {
      bitplateDispose(RenderClipPicture(card.root, card.providerId, key, -1, 60));
      bitplateDispose(RenderClipPicture(card.root, card.providerId, key, 0, 0));
    }
  }
}

// Receives the one message of a request.
GetThumbnailMessage Receive(
    const char* station, const std::function<void()>& request,
    const std::function<void()>& queued = [] {}) {
  GetThumbnailMessage received;
  bool done = false;
  StationUtils::RegisterStation(tarnwick::utility::ImmutableString(station),
                                [&](const Hestra::Message& message) {
                                  received = dynamic_cast<const GetThumbnailMessage&>(message);
                                  done = true;
                                });
  request();
  queued();
  for (int i = 0; i < 100 && !done; ++i) {
    StationUtils::WaitAndDispatch(100);
  }
  StationUtils::UnregisterStation(tarnwick::utility::ImmutableString(station));
  EXPECT_TRUE(done);
  return received;
}

TEST_F(ClipPicture, IsPostedByARequest) {
  tree_.Folder("files");
  const std::string folder = tree_.Path("files");
  std::filesystem::copy_file(media_->Path("a.MP4"), folder + "/loose.mp4");
  tree_.File("files/text.txt", "x");
  const std::string provider = "com.halvane.Merisk.WinProviderDirectory";
  const tarnwick::utility::ImmutableString station("picture");
  const GetThumbnailMessage picture = Receive(
      "picture", [&] { RequestClipPicture(folder, provider, "loose.mp4", 80, 60, station); });
  const OwnedBitplate plate(picture.thumbnail);
  EXPECT_EQ(picture.result, kResultDone);
  EXPECT_EQ(picture.path, folder);
  EXPECT_EQ(picture.key, "loose.mp4");
  EXPECT_TRUE(ShowsColours(plate.get()));
  const GetThumbnailMessage none = Receive(
      "picture", [&] { RequestClipPicture(folder, provider, "text.txt", 80, 60, station); });
  EXPECT_EQ(none.result, kResultNoContent);
  EXPECT_EQ(none.thumbnail, nullptr);
}

TEST_F(ClipPicture, AbortsWhileTheHelperIsBusy) {
  const std::string script = tree_.File("helper", "#!/bin/sh\nexec sleep 60\n");
  std::filesystem::permissions(script, std::filesystem::perms::owner_all);
  SetFrameHelperProgram(script);
  tree_.File("files/a.mp4", "x");
  const auto start = std::chrono::steady_clock::now();
  Hestra::InterfaceRef<ClipPictureRequest, Hestra::IThreadedQueueRequest> request;
  const GetThumbnailMessage message = Receive(
      "picture",
      [&] {
        request =
            RequestClipPicture(tree_.Path("files"), "com.halvane.Merisk.WinProviderDirectory",
                               "a.mp4", 80, 60, tarnwick::utility::ImmutableString("picture"));
      },
      [&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        request->Abort();
      });
  EXPECT_EQ(message.result, kResultAborted);
  EXPECT_EQ(message.thumbnail, nullptr);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(3));
}

}  // namespace
