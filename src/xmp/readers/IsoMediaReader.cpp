// SPDX-License-Identifier: MIT
#include "xmp/readers/IsoMediaReader.h"

#include <algorithm>

#include "xmp/Namespaces.h"
#include "xmp/readers/IsoItems.h"
#include "xmp/readers/IsoTexts.h"
#include "xmp/readers/IsoTracks.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

// The 'uuid' box of XMP (ISO 16684-3, 1.2.6).
constexpr std::string_view kXMPUUID{
    "\xBE\x7A\xCF\xCB\x97\xA9\x42\xE8\x9C\x71\x99\x94\x91\xE3\xAF\xAC", 16};

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

void ReadMoov(FileWindow& file, const IsoBox& moov, const WantedProperties& wanted,
              ReaderOutput& output) {
  const IsoMovie movie = ReadMovie(file, moov);
  SetMovieFacts(file, movie, output.native);
  for (const IsoBox& box : movie.texts) {
    if (box.type == FourCC("udta")) {
      SetUserData(file, box, output.native, output.packet);
    } else {
      SetMetaItems(file, box, output.native);
    }
  }
  if (wanted.Wants(kNsDM, "startTimecode")) SetMovieTimecode(file, movie, output.native);
  output.hasNative = true;
}

// Media data is skipped, wherever it is.
void Read(const ReaderInput& input, const WantedProperties& wanted, ReaderOutput& output) {
  if (!Recognises(input)) return;
  FileWindow file(input);
  IsoBoxes boxes(file, 0, file.Size());
  bool moov = false;
  while (const auto box = boxes.Next()) {
    if (box->type == FourCC("moov") && !moov) {
      ReadMoov(file, *box, wanted, output);
      moov = true;
    } else if (box->type == FourCC("uuid") && output.packet.empty() &&
               file.At(box->body, kXMPUUID.size()).Text() == kXMPUUID &&
               box->Size() > kXMPUUID.size()) {
      output.packet = file.Copy(box->body + kXMPUUID.size(), box->Size() - kXMPUUID.size());
    } else if (box->type == FourCC("meta")) {
      const bool exif = ReadItemMetadata(file, *box, output.native, output.packet);
      output.hasNative = output.hasNative || exif;
    } else if (box->type == FourCC("moof")) {
      return;  // the rest of a fragmented stream is the same
    }
  }
}

}  // namespace

const Reader kIsoMediaReader = {"ISO base media", Recognises, Read};

}  // namespace Sorvik::xmp
