// SPDX-License-Identifier: MIT
#include "providers/modern/DCIMMakers.h"

#include <algorithm>
#include <utility>

#include "foundation/Paths.h"
#include "providers/common/NameMask.h"

namespace Sorvik::dcim {
namespace {

using foundation::EqualIgnoringCase;
using foundation::FileExtension;
using foundation::FileStem;
using foundation::FoldCase;

// GoPro: GX##NNNN is chapter ## of recording NNNN; GL is the proxy of GX, GH and GS. In looping
// video two letters identify the recording and the number counts its chapters. HERO2 to HERO5 give
// no number to the first chapter (GOPRNNNN). G###NNNN is photograph NNNN of series ###.
constexpr std::string_view kGoProFolders[] = {"###GOPRO"};
constexpr StemPattern kGoProStems[] = {
    {"GX######", "--nnkkkk", "GX", Form::kOriginal, Numbering::kChapters, 1},
    {"GH######", "--nnkkkk", "GH", Form::kOriginal, Numbering::kChapters, 1},
    {"GS######", "--nnkkkk", "GS", Form::kOriginal, Numbering::kChapters, 1},
    {"GL######", "--nnkkkk", "GX,GH,GS", Form::kProxy, Numbering::kChapters, 1},
    {"GX@@####", "--kknnnn", "GX loop", Form::kOriginal, Numbering::kLoop},
    {"GH@@####", "--kknnnn", "GH loop", Form::kOriginal, Numbering::kLoop},
    {"GL@@####", "--kknnnn", "GX loop,GH loop", Form::kProxy, Numbering::kLoop},
    {"GOPR####", "----kkkk", "GP", Form::kOriginal, Numbering::kChapters, 0},
    {"GP######", "--nnkkkk", "GP", Form::kOriginal, Numbering::kChapters, 0},
    {"GP@@####", "--kknnnn", "GP series", Form::kOriginal, Numbering::kFrames},
    {"G#######", "-kkknnnn", "G", Form::kOriginal, Numbering::kFrames},
};
constexpr ExtensionRole kGoProExtensions[] = {
    {".360", Role::kOriginal}, {".mp4", Role::kOriginal},  {".jpg", Role::kOriginal},
    {".lrv", Role::kProxy},    {".thm", Role::kThumbnail}, {".wav", Role::kSound},
};
constexpr CompanionFolder kGoProCompanions[] = {
    {"Proxy", "", Role::kProxy},
    {"Proxies", "_Proxy", Role::kProxy},
};

// DJI: new names have the time, a number and the letter of the lens. Parts of a long take have
// consecutive numbers and other times; their names don't show that they belong together.
constexpr std::string_view kDJIFolders[] = {"###MEDIA", "DJI_###", "HYPERLAPSE", "HYPERLAPSE_####"};
constexpr StemPattern kDJIStems[] = {
    {"DJI_####", "kkkkkkkk", "DJI"},
    {"DJI_##############_####_@", "kkkkkkkkkkkkkkkkkkkkkkkkk", "DJI"},
    {"CAM_##############_####_@", "kkkkkkkkkkkkkkkkkkkkkkkkk", "CAM"},
    {"HYPERLAPSE_####", "-----------nnnn", "HYPERLAPSE", Form::kOriginal, Numbering::kFrames},
};
constexpr ExtensionRole kDJIExtensions[] = {
    {".osv", Role::kOriginal},  {".mov", Role::kOriginal}, {".mp4", Role::kOriginal},
    {".jpg", Role::kOriginal},  {".lrf", Role::kProxy},    {".thm", Role::kThumbnail},
    {".scr", Role::kThumbnail}, {".srt", Role::kSidecar},  {".wav", Role::kSound},
};
// Of survey missions.
constexpr std::string_view kDJIFolderFiles[] = {"*_Timestamp.MRK", "*_PPKRAW.bin", "*_PPKNAV.bin",
                                                "*_Rinex.obs"};

constexpr std::uint64_t kDJIFileLimits[] = {4'000'000'000, 16'000'000'000};

// Insta360: the two lenses have the same time and number, and 00 and 10 between them.
constexpr std::string_view kInsta360Folders[] = {"Camera##"};
constexpr StemPattern kInsta360Stems[] = {
    {"VID_########_######_##_###", "----kkkkkkkkkkkkkkk-nn-kkk", "VID"},
    {"PRO_########_######_##_###", "----kkkkkkkkkkkkkkk-nn-kkk", "PRO"},
    {"IMG_########_######_##_###", "----kkkkkkkkkkkkkkk-nn-kkk", "IMG"},
    {"LRV_########_######_##_###", "----kkkkkkkkkkkkkkk-nn-kkk", "VID,PRO", Form::kProxy},
};
constexpr ExtensionRole kInsta360Extensions[] = {
    {".insv", Role::kOriginal}, {".insp", Role::kOriginal}, {".mp4", Role::kOriginal},
    {".jpg", Role::kOriginal},  {".lrv", Role::kProxy},     {".gyro", Role::kSidecar},
};

constexpr bool HaveUseOfEachCharacter(std::span<const StemPattern> patterns) {
  for (const StemPattern& pattern : patterns) {
    if (pattern.mask.size() != pattern.use.size()) return false;
  }
  return true;
}
static_assert(HaveUseOfEachCharacter(kGoProStems) && HaveUseOfEachCharacter(kDJIStems) &&
              HaveUseOfEachCharacter(kInsta360Stems));

// Nikon: N-RAW has a proxy of the same stem. Only the metadata of a MOV determines whether the MP4
// next to it is its proxy.
constexpr std::string_view kNikonFolders[] = {"###NCZ_*", "###NZ_*", "###NZ_**", "###NIKON"};
constexpr ExtensionRole kNikonExtensions[] = {
    {".nev", Role::kOriginal}, {".mov", Role::kOriginal}, {".mp4", Role::kOriginal},
    {".hif", Role::kOriginal}, {".jpg", Role::kOriginal}, {".ndf", Role::kOriginal},
    {".wav", Role::kSound},    {".nksc", Role::kSidecar},
};
constexpr CompanionFolder kNikonCompanions[] = {{"NKSC_PARAM", "", Role::kSidecar}};
constexpr std::string_view kNikonFolderFiles[] = {"NC_FLLST.DAT"};

constexpr std::string_view kLumixFolders[] = {"###_PANA"};
constexpr ExtensionRole kLumixExtensions[] = {
    {".mov", Role::kOriginal},
    {".mp4", Role::kOriginal},
    {".hsp", Role::kOriginal},
    {".jpg", Role::kOriginal},
};

// Canon: folders by model or by date (###_mmdd, ###___mm).
constexpr std::string_view kCanonFolders[] = {"###CANON", "###EOS**", "###_####", "###___##"};
constexpr ExtensionRole kCanonExtensions[] = {
    {".crm", Role::kOriginal}, {".mov", Role::kOriginal}, {".mp4", Role::kOriginal},
    {".hif", Role::kOriginal}, {".jpg", Role::kOriginal}, {".thm", Role::kThumbnail},
    {".wav", Role::kSound},    {".xml", Role::kSidecar},
};

constexpr std::string_view kSonyFolders[] = {"###MSDCF"};
constexpr ExtensionRole kSonyExtensions[] = {
    {".hif", Role::kOriginal},
    {".jpg", Role::kOriginal},
    {".mp4", Role::kOriginal},
    {".wav", Role::kSound},
};

constexpr std::string_view kFujiFolders[] = {"###_FUJI"};
constexpr ExtensionRole kFujiExtensions[] = {
    {".mov", Role::kOriginal}, {".mp4", Role::kOriginal}, {".hif", Role::kOriginal},
    {".jpg", Role::kOriginal}, {".wav", Role::kSound},
};

constexpr std::string_view kOlympusFolders[] = {"###OLYMP"};
constexpr ExtensionRole kOlympusExtensions[] = {
    {".mov", Role::kOriginal},
    {".jpg", Role::kOriginal},
    {".wav", Role::kSound},
};

// iPhone: IMG_ENNNN is the edited form of IMG_NNNN, the AAE file the recipe. In a Live Photo a
// picture and a movie have the same stem.
constexpr std::string_view kAppleFolders[] = {"###APPLE"};
constexpr StemPattern kAppleStems[] = {
    {"IMG_####", "----kkkk", "IMG"},
    {"IMG_E####", "-----kkkk", "IMG", Form::kEdit},
};
static_assert(HaveUseOfEachCharacter(kAppleStems));
constexpr ExtensionRole kAppleExtensions[] = {
    {".heic", Role::kOriginal}, {".jpg", Role::kOriginal}, {".png", Role::kOriginal},
    {".mov", Role::kOriginal},  {".mp4", Role::kOriginal}, {".aae", Role::kSidecar},
};

constexpr std::string_view kDCFFolders[] = {"###*****"};
constexpr ExtensionRole kDCFExtensions[] = {
    {".mov", Role::kOriginal},  {".mp4", Role::kOriginal},  {".avi", Role::kOriginal},
    {".mts", Role::kOriginal},  {".m2ts", Role::kOriginal}, {".mxf", Role::kOriginal},
    {".insv", Role::kOriginal}, {".insp", Role::kOriginal}, {".osv", Role::kOriginal},
    {".360", Role::kOriginal},  {".nev", Role::kOriginal},  {".braw", Role::kOriginal},
    {".r3d", Role::kOriginal},  {".crm", Role::kOriginal},  {".heic", Role::kOriginal},
    {".heif", Role::kOriginal}, {".hif", Role::kOriginal},  {".tif", Role::kOriginal},
    {".jpg", Role::kOriginal},  {".jpeg", Role::kOriginal}, {".png", Role::kOriginal},
    {".gif", Role::kOriginal},  {".lrv", Role::kProxy},     {".lrf", Role::kProxy},
    {".thm", Role::kThumbnail}, {".wav", Role::kSound},     {".srt", Role::kSidecar},
    {".xmp", Role::kSidecar},   {".xml", Role::kSidecar},   {".aae", Role::kSidecar},
};
// Raw pictures of any maker come before the originals that their cameras derive from them.
constexpr ExtensionRole kRawExtensions[] = {
    {".raf", Role::kOriginal}, {".rw2", Role::kOriginal}, {".nef", Role::kOriginal},
    {".cr3", Role::kOriginal}, {".cr2", Role::kOriginal}, {".crw", Role::kOriginal},
    {".arw", Role::kOriginal}, {".orf", Role::kOriginal}, {".pef", Role::kOriginal},
    {".gpr", Role::kOriginal}, {".dng", Role::kOriginal},
};

constexpr Maker kMakers[] = {
    {.name = "GoPro",
     .folders = kGoProFolders,
     .stems = kGoProStems,
     .extensions = kGoProExtensions,
     .companions = kGoProCompanions},
    {.name = "DJI",
     .folders = kDJIFolders,
     .stems = kDJIStems,
     .extensions = kDJIExtensions,
     .folderFiles = kDJIFolderFiles,
     .thumbnailsInMisc = true,
     .fileLimits = kDJIFileLimits},
    {.name = "Insta360",
     .folders = kInsta360Folders,
     .stems = kInsta360Stems,
     .extensions = kInsta360Extensions},
    {.name = "iPhone",
     .folders = kAppleFolders,
     .stems = kAppleStems,
     .extensions = kAppleExtensions},
    {.name = "Nikon",
     .folders = kNikonFolders,
     .extensions = kNikonExtensions,
     .rawExtension = ".nev",
     .proxyExtension = ".mp4",
     .companions = kNikonCompanions,
     .folderFiles = kNikonFolderFiles},
    {.name = "LUMIX", .folders = kLumixFolders, .extensions = kLumixExtensions},
    {.name = "Canon", .folders = kCanonFolders, .extensions = kCanonExtensions},
    {.name = "Sony", .folders = kSonyFolders, .extensions = kSonyExtensions},
    {.name = "Fujifilm", .folders = kFujiFolders, .extensions = kFujiExtensions},
    {.name = "Olympus", .folders = kOlympusFolders, .extensions = kOlympusExtensions},
    {.name = "DCF", .folders = kDCFFolders, .extensions = kDCFExtensions},
};
constexpr const Maker& kPlainMaker = kMakers[std::size(kMakers) - 1];

void SetRole(const Maker& maker, std::string_view name, FileIdentity& identity) {
  std::size_t rank = 0;
  const std::span<const ExtensionRole> lists[] = {kRawExtensions, maker.extensions, kDCFExtensions};
  for (const std::span<const ExtensionRole> extensions : lists) {
    for (const ExtensionRole& row : extensions) {
      ++rank;
      if (!foundation::HasExtension(name, row.extension)) continue;
      identity.role = row.role;
      identity.rank = rank;
      identity.isKnown = true;
      return;
    }
  }
}

bool HasKnownExtension(const Maker& maker, std::string_view name) {
  FileIdentity identity;
  SetRole(maker, name, identity);
  return identity.isKnown;
}

// "IMG_0001.JPG.xmp" and "IMG_0001.xmp" belong to the same object.
std::string_view StemOf(const Maker& maker, std::string_view name) {
  const std::string_view stem = FileStem(name);
  return HasKnownExtension(maker, stem) ? FileStem(stem) : stem;
}

const StemPattern* PatternOf(const Maker& maker, std::string_view stem) {
  const auto found = std::ranges::find_if(maker.stems, [stem](const StemPattern& pattern) {
    return MatchesPattern(stem, pattern.mask);
  });
  return found == maker.stems.end() ? nullptr : &*found;
}

void SetPattern(const StemPattern& pattern, std::string_view stem, FileIdentity& identity) {
  identity.pattern = &pattern;
  identity.form = pattern.form;
  std::string key = "/";
  for (std::size_t i = 0; i < stem.size(); ++i) {
    if (pattern.use[i] == 'k') key += stem[i];
    if (pattern.use[i] == 'n') {
      identity.number = identity.number * 10 + static_cast<std::uint32_t>(stem[i] - '0');
    }
  }
  key = FoldCase(key);
  std::string_view kinds = pattern.kinds;
  while (!kinds.empty()) {
    const std::size_t end = std::min(kinds.find(','), kinds.size());
    identity.groups.push_back(std::string(kinds.substr(0, end)) + key);
    kinds.remove_prefix(std::min(end + 1, kinds.size()));
  }
}

}  // namespace

std::span<const Maker> Makers() { return kMakers; }

const Maker* MakerOfFolder(std::string_view folder) {
  const auto* const found = std::ranges::find_if(kMakers, [folder](const Maker& maker) {
    return std::ranges::any_of(maker.folders, [folder](std::string_view pattern) {
      return MatchesPattern(folder, pattern);
    });
  });
  return found == std::end(kMakers) ? nullptr : found;
}

FileIdentity Identify(const Maker* folder, std::string_view name) {
  FileIdentity identity;
  for (const Maker& maker : kMakers) {
    if (folder != nullptr && folder != &maker) continue;
    const std::string_view stem = StemOf(maker, name);
    const StemPattern* pattern = PatternOf(maker, stem);
    if (pattern == nullptr) continue;
    identity.maker = &maker;
    SetPattern(*pattern, stem, identity);
    break;
  }
  if (identity.maker == nullptr) {
    identity.maker = folder == nullptr ? &kPlainMaker : folder;
    identity.groups.push_back("/" + FoldCase(StemOf(*identity.maker, name)));
  }
  SetRole(*identity.maker, name, identity);
  if (identity.form == Form::kProxy && identity.role == Role::kOriginal) {
    identity.role = Role::kProxy;
  }
  return identity;
}

bool IsFolderFile(const Maker* folder, std::string_view name) {
  return std::ranges::any_of(kMakers, [folder, name](const Maker& maker) {
    if (folder != nullptr && folder != &maker) return false;
    return std::ranges::any_of(maker.folderFiles, [name](std::string_view known) {
      if (!known.starts_with('*')) return EqualIgnoringCase(name, known);
      known.remove_prefix(1);
      return name.size() >= known.size() &&
             EqualIgnoringCase(name.substr(name.size() - known.size()), known);
    });
  });
}

std::string StemOfChapter(const Maker& maker, const StemPattern& pattern, std::string_view stem,
                          std::uint32_t number) {
  std::string key;
  for (std::size_t i = 0; i < stem.size(); ++i) {
    if (pattern.use[i] == 'k') key += stem[i];
  }
  for (const StemPattern& other : maker.stems) {
    const bool isNumbered = other.use.find('n') != other.use.npos;
    if (other.kinds != pattern.kinds || other.form != pattern.form) continue;
    if (!isNumbered && number != other.firstNumber) continue;
    std::string made(other.mask);
    std::size_t nextKey = 0;
    std::uint32_t rest = number;
    for (std::size_t i = made.size(); i-- > 0;) {
      if (other.use[i] != 'n') continue;
      made[i] = static_cast<char>('0' + rest % 10);
      rest /= 10;
    }
    for (std::size_t i = 0; i < made.size(); ++i) {
      if (other.use[i] == 'k' && nextKey < key.size()) made[i] = key[nextKey++];
    }
    return made;
  }
  return std::string(stem);
}

}  // namespace Sorvik::dcim
