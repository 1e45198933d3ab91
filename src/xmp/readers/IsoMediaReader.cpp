// SPDX-License-Identifier: MIT
#include "xmp/readers/IsoMediaReader.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "xmp/Namespaces.h"
#include "xmp/NativeValues.h"
#include "xmp/readers/BrawValues.h"
#include "xmp/readers/ClipRecord.h"
#include "xmp/readers/GpmfTelemetry.h"
#include "xmp/readers/Insta360Trailer.h"
#include "xmp/readers/IsoFragments.h"
#include "xmp/readers/IsoItems.h"
#include "xmp/readers/IsoMakers.h"
#include "xmp/readers/IsoTexts.h"
#include "xmp/readers/IsoTracks.h"
#include "xmp/readers/NonRealTimeMetaReader.h"
#include "xmp/readers/PictureSize.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

// The first boxes of such files; JPEG 2000 has its own signature.
constexpr std::uint32_t kFirstBoxes[] = {
    FourCC("ftyp"), FourCC("moov"), FourCC("mdat"), FourCC("wide"),
    FourCC("free"), FourCC("skip"), FourCC("pnot"), FourCC("jP  "),
};

bool Recognises(const ReaderInput& input) {
  const auto size = input.head.U32BE(0);
  const auto type = input.head.U32BE(4);
  if (!size || !type || (*size < 8 && *size > 1)) return false;
  return std::find(std::begin(kFirstBoxes), std::end(kFirstBoxes), *type) != std::end(kFirstBoxes);
}

class IsoFile {
 public:
  IsoFile(const ReaderInput& input, const WantedProperties& wanted, ReaderOutput& output)
      : file_(input), path_(input.path), wanted_(wanted), output_(output) {}

  // Media data is skipped, wherever it is.
  void Read() {
    IsoBoxes boxes(file_, 0, file_.Size());
    while (const auto box = boxes.Next()) {
      if (!Take(*box)) break;
    }
    if (movie_) StoreMovie();
  }

  bool IsMovie() const { return movie_.has_value(); }
  bool HasCameraDocument() const { return hasCamera_; }

 private:
  // Returns false after the first fragment: only the end of the file is read after it.
  bool Take(const IsoBox& box) {
    switch (box.type) {
      case FourCC("moov"):
        if (movie_) break;
        movie_ = ReadMovie(file_, box);
        if (movie_->fragmented) fragments_.emplace(file_, *movie_);
        break;
      case FourCC("uuid"):
        TakeXMP(box);
        break;
      case FourCC("meta"):
        TakeMeta(box);
        break;
      case FourCC("jp2h"):
        TakeJPEG2000(box);
        break;
      case FourCC("sidx"):
        if (fragments_) fragments_->TakeIndex(box);
        break;
      case FourCC("moof"):
        if (!fragments_) break;
        fragments_->TakeFirst(box);
        fragments_->ReadTail(output_.packet);
        return false;
      default:
        break;
    }
    return true;
  }

  void TakeXMP(const IsoBox& uuid) {
    if (!output_.packet.empty() || uuid.Size() <= kXMPBoxId.size()) return;
    if (file_.At(uuid.body, kXMPBoxId.size()).Text() != kXMPBoxId) return;
    output_.packet = file_.Copy(uuid.body + kXMPBoxId.size(), uuid.Size() - kXMPBoxId.size());
  }

  // ihdr: height, width, number of components, bits minus one (ISO/IEC 15444-1, I.5.3.1).
  void TakeJPEG2000(const IsoBox& box) {
    const auto header = FindBox(file_, box, FourCC("ihdr"));
    if (!header) return;
    const ByteReader body = file_.At(header->body, 14);
    SetPictureSize(output_.native, body.U32BE(4).value_or(0), body.U32BE(0).value_or(0));
    if (const auto bits = body.U8(10); bits && *bits != 0xFF) {
      SetPixelDepth(output_.native, (*bits & 0x7Fu) + 1);
    }
    output_.hasNative = output_.hasNative || !output_.native.Empty();
  }

  void TakeMeta(const IsoBox& box) {
    if (SetNonRealTimeBox(file_, box, camera_)) {
      hasCamera_ = true;
      return;
    }
    const bool exif = ReadItemMetadata(file_, box, output_.native, output_.packet);
    output_.hasNative = output_.hasNative || exif;
  }

  // The tracks of a photograph have neither a rate nor a duration.
  bool StoreStill() {
    for (const IsoBox& box : movie_->texts) {
      if (!IsCanonStill(file_, box)) continue;
      TXMPMeta facts;
      SetMovieFacts(file_, *movie_, facts);
      output_.native.TakeFrom(facts, kNsXMP, "CreateDate");
      const auto [width, height] = VideoSizeOf(*movie_);
      SetCanonStillSize(file_, box, width, height, output_.native);
      SetMakerBox(file_, box, output_.native);
      output_.hasNative = true;
      return true;
    }
    return false;
  }

  void StoreMovie() {
    if (StoreStill()) return;
    if (fragments_) fragments_->Store(*movie_);
    TXMPMeta& native = output_.native;
    SetMovieFacts(file_, *movie_, native);
    for (const IsoBox& box : movie_->texts) {
      if (box.type == FourCC("udta")) {
        SetUserData(file_, box, native, output_.packet);
      } else if (box.type == FourCC("uuid")) {
        SetMakerBox(file_, box, native);
      } else if (SetNonRealTimeBox(file_, box, camera_)) {
        hasCamera_ = true;
      } else {
        SetMetaItems(file_, box, native);
      }
    }
    if (wanted_.Wants(kNsDM, "startTimecode")) SetMovieTimecode(file_, *movie_, native);
    if (wanted_.Wants(kNsDM, "videoFieldOrder") || wanted_.Wants(kNsDM, "videoColorSpace") ||
        wanted_.Wants(kNsDM, "videoPixelDepth")) {
      SetFirstFrame(file_, *movie_, native);
    }
    SetTelemetryTrack(file_, *movie_, wanted_, native);
    if (MayHaveInsta360Trailer(path_)) SetInsta360Trailer(file_, wanted_, native);
    if (hasCamera_) {
      AddNonRealTimeFacts(std::move(camera_), native);
    }
    if (IsBrawPath(path_)) StoreBraw();
    output_.hasNative = true;
  }

  void StoreBraw() {
    TXMPMeta braw;
    for (const IsoBox& box : movie_->texts) SetBrawItems(file_, box, braw);
    AddBrawFacts(std::move(braw), output_.native);
    TXMPMeta sidecar = ReadSidecarOfBraw(path_);
    // The movie header also has the time.
    if (output_.native.HasProperty(kNsXMP, "CreateDate")) {
      sidecar.DeleteProperty(kNsXMP, "CreateDate");
    }
    output_.overriding.push_back({NativeOrigin::kRecord, std::move(sidecar)});
  }

  FileWindow file_;
  const std::string& path_;
  const WantedProperties& wanted_;
  ReaderOutput& output_;
  std::optional<IsoMovie> movie_;
  std::optional<IsoFragments> fragments_;
  TXMPMeta camera_;
  bool hasCamera_ = false;
};

void Read(const ReaderInput& input, const WantedProperties& wanted, ReaderOutput& output) {
  if (!Recognises(input)) return;
  IsoFile file(input, wanted, output);
  file.Read();
  // The document in the file is the same.
  if (file.IsMovie() && !file.HasCameraDocument()) AddClipRecord(input.path, wanted, output);
}

}  // namespace

const Reader kIsoMediaReader = {"ISO base media", Recognises, Read};

}  // namespace Sorvik::xmp
