// SPDX-License-Identifier: MIT
#include "xmp/readers/IsoTexts.h"

#include <algorithm>

#include "xmp/Namespaces.h"
#include "xmp/readers/IsoMakers.h"
#include "xmp/readers/NativeText.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

constexpr std::uint64_t kMaxTextBytes = 64 * 1024;
constexpr std::size_t kMaxKeys = 1024;

enum class Fact {
  kTitle,
  kDescription,
  kComment,
  kArtist,
  kAuthor,
  kAlbum,
  kGenre,
  kComposer,
  kDirector,
  kCopyright,
  kDate,
  kMake,
  kModel,
  kSoftware,
  kPlace,
};
struct Name {
  std::string_view code;  // type of a box or item
  std::string_view key;   // the part of a key after its reverse-domain prefix
  Fact fact;
};
// The copyright sign in QuickTime types is one byte.
constexpr Name kNames[] = {
    {"\xA9nam", "title", Fact::kTitle},
    {"titl", "displayname", Fact::kTitle},
    {"\xA9"
     "des",
     "description", Fact::kDescription},
    {"desc", {}, Fact::kDescription},
    {"dscp", {}, Fact::kDescription},
    {"\xA9"
     "cmt",
     "comment", Fact::kComment},
    {"\xA9"
     "ART",
     "artist", Fact::kArtist},
    {"\xA9prf", {}, Fact::kArtist},
    {"perf", {}, Fact::kArtist},
    {"\xA9"
     "aut",
     "author", Fact::kAuthor},
    {"auth", {}, Fact::kAuthor},
    {"\xA9"
     "alb",
     "album", Fact::kAlbum},
    {"albm", {}, Fact::kAlbum},
    {"\xA9gen", "genre", Fact::kGenre},
    {"\xA9wrt", "composer", Fact::kComposer},
    {"\xA9"
     "com",
     {},
     Fact::kComposer},
    {"\xA9"
     "dir",
     "director", Fact::kDirector},
    {"\xA9"
     "cpy",
     "copyright", Fact::kCopyright},
    {"cprt", {}, Fact::kCopyright},
    {"\xA9"
     "day",
     "creationdate", Fact::kDate},
    {"\xA9mak", "make", Fact::kMake},
    {"\xA9mod", "model", Fact::kModel},
    {"\xA9mdl", {}, Fact::kModel},
    {"manu", {}, Fact::kMake},
    {"modl", {}, Fact::kModel},
    {"\xA9swr", "software", Fact::kSoftware},
    {"\xA9too", {}, Fact::kSoftware},
    {"\xA9xyz", "location.ISO6709", Fact::kPlace},
};
constexpr std::string_view kKeyPrefix = "com.apple.quicktime.";
// Complete keys.
constexpr Name kOtherKeys[] = {
    {{}, "com.android.manufacturer", Fact::kMake},
    {{}, "com.android.model", Fact::kModel},
};

const Name* FindCode(std::uint32_t type) {
  const auto found = std::find_if(std::begin(kNames), std::end(kNames),
                                  [type](const Name& name) { return FourCC(name.code) == type; });
  return found == std::end(kNames) ? nullptr : found;
}

const Name* FindKey(std::string_view key) {
  for (const Name& name : kOtherKeys) {
    if (name.key == key) return &name;
  }
  // Some writers omit the prefix.
  if (key.starts_with(kKeyPrefix)) key.remove_prefix(kKeyPrefix.size());
  const auto found = std::find_if(std::begin(kNames), std::end(kNames),
                                  [key](const Name& name) { return name.key == key; });
  return found == std::end(kNames) || key.empty() ? nullptr : found;
}

// A full date and time is the time of recording with its zone, which the movie header lacks; a date
// or year alone is the release date.
void SetDate(TXMPMeta& meta, const std::string& text) {
  const std::string date = ExifDate(text);
  if (date.empty()) {
    meta.SetProperty(kNsDM, "releaseDate", text);
    return;
  }
  std::string zone = text.substr(std::min<std::size_t>(text.size(), 19));
  if (zone.size() == 5) zone.insert(3, ":");  // "+0100"
  const bool known =
      zone == "Z" || (zone.size() == 6 && zone[3] == ':' && (zone[0] == '+' || zone[0] == '-'));
  meta.SetProperty(kNsXMP, "CreateDate", date + (known ? zone : ""));
}

void Store(TXMPMeta& meta, Fact fact, const std::string& text) {
  if (text.empty()) return;
  switch (fact) {
    case Fact::kTitle:
      return meta.SetLocalizedText(kNsDC, "title", "x-default", text);
    case Fact::kDescription:
      return meta.SetLocalizedText(kNsDC, "description", "x-default", text);
    case Fact::kComment:
      return meta.SetProperty(kNsDM, "logComment", text);
    case Fact::kArtist:
      return meta.SetProperty(kNsDM, "artist", text);
    case Fact::kAuthor:
      return SetCreators(meta, text);
    case Fact::kAlbum:
      return meta.SetProperty(kNsDM, "album", text);
    case Fact::kGenre:
      return meta.SetProperty(kNsDM, "genre", text);
    case Fact::kComposer:
      return meta.SetProperty(kNsDM, "composer", text);
    case Fact::kDirector:
      return meta.SetProperty(kNsDM, "director", text);
    case Fact::kCopyright:
      return SetCopyright(meta, text);
    case Fact::kDate:
      return SetDate(meta, text);
    case Fact::kMake:
      return meta.SetProperty(kNsTIFF, "Make", text);
    case Fact::kModel:
      return meta.SetProperty(kNsTIFF, "Model", text);
    case Fact::kSoftware:
      return SetSoftware(meta, text);
    case Fact::kPlace:
      return SetISO6709(meta, text);
  }
}

// QuickTime user data: length, language, text. 3GPP: version and flags, language, NUL-terminated
// text.
std::string UserText(std::uint32_t type, ByteReader body) {
  if (type >> 24 == 0xA9) return NativeText(body.Clip(4, body.U16BE(0).value_or(0)).Text());
  const std::string_view text = body.Clip(6).Text();
  const bool wide = text.starts_with("\xFE\xFF") || text.starts_with("\xFF\xFE");
  return wide ? UTF16Text(text, true) : NativeText(text);
}

// data: type of the value, country and language, value.
std::string ItemText(FileWindow& file, const IsoBox& item) {
  const auto data = FindBox(file, item, FourCC("data"));
  if (!data) return {};
  const ByteReader body = file.At(data->body, std::min(kMaxTextBytes, data->Size()));
  switch (body.U32BE(0).value_or(0)) {
    case 1:
      return NativeText(body.Clip(8).Text());
    case 2:
      return UTF16Text(body.Clip(8).Text(), true);
    default:
      return {};
  }
}

// keys: version and flags, count, then size, namespace and name for each.
std::vector<std::string> ReadKeys(FileWindow& file, const IsoBox& keys) {
  std::vector<std::string> names;
  const ByteReader body = file.At(keys.body, std::min(kMaxTextBytes, keys.Size()));
  const std::size_t count = std::min<std::size_t>(body.U32BE(4).value_or(0), kMaxKeys);
  std::uint64_t at = 8;
  while (names.size() < count) {
    const std::uint64_t size = body.U32BE(at).value_or(0);
    if (size < 8 || !body.Holds(at, size)) break;
    names.emplace_back(body.TextAt(at + 8, size - 8));
    at += size;
  }
  return names;
}

}  // namespace

MetaItems FindMetaItems(FileWindow& file, const IsoBox& metaBox) {
  MetaItems items;
  // QuickTime writes this box without the version and flags that it has elsewhere.
  const std::uint64_t skip = file.At(metaBox.body, 8).Matches(4, "hdlr") ? 0 : 4;
  if (metaBox.Size() < skip) return items;
  if (const auto box = FindBox(file, metaBox, FourCC("keys"), skip)) {
    items.keys = ReadKeys(file, *box);
  }
  items.list = FindBox(file, metaBox, FourCC("ilst"), skip);
  return items;
}

void SetMetaItems(FileWindow& file, const IsoBox& metaBox, TXMPMeta& meta) {
  const MetaItems items = FindMetaItems(file, metaBox);
  if (!items.list) return;
  IsoBoxes boxes(file, *items.list);
  while (const auto item = boxes.Next()) {
    const bool hasKey = item->type >= 1 && item->type <= items.keys.size();
    const Name* name = hasKey ? FindKey(items.keys[item->type - 1]) : FindCode(item->type);
    if (name != nullptr) Store(meta, name->fact, ItemText(file, *item));
  }
}

void SetUserData(FileWindow& file, const IsoBox& udta, TXMPMeta& meta, std::string& packet) {
  IsoBoxes boxes(file, udta);
  while (const auto box = boxes.Next()) {
    if (box->type == FourCC("XMP_")) {
      if (packet.empty()) packet = file.Copy(box->body, box->Size());
    } else if (box->type == FourCC("meta")) {
      SetMetaItems(file, *box, meta);
    } else if (const Name* name = FindCode(box->type)) {
      const ByteReader body = file.At(box->body, std::min(kMaxTextBytes, box->Size()));
      Store(meta, name->fact, UserText(box->type, body));
    } else {
      SetMakerBox(file, *box, meta);
    }
  }
}

}  // namespace Sorvik::xmp
