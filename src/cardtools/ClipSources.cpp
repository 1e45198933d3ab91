// SPDX-License-Identifier: MIT
#include "cardtools/ClipSources.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <string_view>
#include <utility>

#include "cardtools/CardContents.h"
#include "foundation/Paths.h"

namespace Sorvik {
namespace {

using foundation::FileStem;
using Kind = ClipSource::Kind;

// A damaged part of a clip is replaced by the next one; more aren't tried.
constexpr std::size_t kMaxMediaFiles = 3;
// The place of the frame in a sequence, as in a video: 10 %.
constexpr std::size_t kFramePlace = 10;

constexpr std::string_view kPictureExtensions[] = {".BMP", ".JPG", ".JPEG", ".THM",
                                                   ".PNG", ".TIF", ".TIFF"};
constexpr std::string_view kVideoExtensions[] = {".MXF", ".MP4", ".MOV", ".MTS",  ".M2TS", ".M2T",
                                                 ".TS",  ".AVI", ".DV",  ".MPG",  ".MPEG", ".M4V",
                                                 ".3GP", ".MKV", ".LRV", ".INSV", ".LRF",  ".360"};
constexpr std::string_view kRawExtensions[] = {".DNG", ".ARI", ".RMF", ".CR2", ".CR3", ".CRW",
                                               ".NEF", ".NRW", ".ARW", ".RAF", ".ORF", ".RW2",
                                               ".PEF", ".SRW", ".3FR", ".IIQ"};
constexpr std::string_view kHeifExtensions[] = {".HEIC", ".HEIF", ".HIF", ".AVIF"};
// Files that may contain pictures: raw pictures except those of cinema cameras, and these.
constexpr std::string_view kEmbeddingExtensions[] = {".MP4", ".MOV", ".M4V",  ".3GP", ".LRV",
                                                     ".LRF", ".360", ".INSV", ".CRM"};
// Folders and extensions that cameras use for the picture of a clip.
constexpr std::string_view kThumbnailFolders[] = {"ICON", "THMBNL", "THM"};
constexpr std::string_view kThumbnailExtensions[] = {".THM", ".BMP"};

bool HasOneOf(std::string_view path, std::span<const std::string_view> extensions) {
  return std::ranges::any_of(extensions, [path](std::string_view extension) {
    return foundation::HasExtension(path, extension);
  });
}

std::vector<std::string> PathsOf(const FieldValueMap& fields, const char* field) {
  std::vector<std::string> paths;
  if (const auto found = fields.find(field); found != fields.end()) AddPaths(found->second, paths);
  std::erase_if(paths, [](const std::string& path) { return !foundation::IsValidPath(path); });
  return paths;
}

bool IsThumbnail(std::string_view path) {
  const std::string_view folder = foundation::FileName(foundation::ParentFolder(path));
  return HasOneOf(path, kThumbnailExtensions) ||
         std::ranges::any_of(kThumbnailFolders, [folder](std::string_view name) {
           return foundation::EqualIgnoringCase(folder, name);
         });
}

bool IsNamedAfter(std::string_view path, std::string_view stem) {
  const std::string name = foundation::FoldCase(FileStem(path));
  return !stem.empty() && name.starts_with(foundation::FoldCase(stem));
}

// The files of one entry, sorted into sources.
class SourceSearch {
 public:
  explicit SourceSearch(const FieldValueMap& fields)
      : main_(PathsOf(fields, kPathField)),
        extra_(PathsOf(fields, kExtraPathField)),
        proxies_(PathsOf(fields, kProxyPathField)) {}

  ClipSources Run() {
    AddCameraPictures();
    AddEmbedded();
    AddFrame();
    AddHeif();
    AddVideos(main_);
    AddVideos(extra_);
    AddVideos(proxies_);
    return std::move(sources_);
  }

 private:
  std::string_view MainStem() const { return main_.empty() ? "" : FileStem(main_.front()); }

  // A file that is a picture itself, then those with the name of the clip: the pictures of a
  // recording in several parts are listed together.
  void AddCameraPictures() {
    for (const std::string& path : main_) {
      if (HasOneOf(path, kPictureExtensions)) sources_.push_back({Kind::kPicture, path});
    }
    std::vector<std::string> others;
    for (const std::string& path : extra_) {
      if (!HasOneOf(path, kPictureExtensions)) continue;
      if (IsNamedAfter(path, MainStem())) {
        sources_.push_back({Kind::kPicture, path});
      } else if (IsThumbnail(path)) {
        others.push_back(path);
      }
    }
    for (std::string& path : others) sources_.push_back({Kind::kPicture, std::move(path)});
    if (sources_.size() > kMaxMediaFiles) sources_.resize(kMaxMediaFiles);
  }

  void AddEmbedded() {
    if (main_.empty()) return;
    const bool isRaw = HasOneOf(main_.front(), kRawExtensions);
    if (isRaw || HasOneOf(main_.front(), kEmbeddingExtensions)) {
      sources_.push_back({Kind::kEmbedded, isRaw ? ChosenFrame() : main_.front()});
    }
  }

  void AddFrame() {
    if (main_.empty() || !HasOneOf(main_.front(), kRawExtensions)) return;
    sources_.push_back({Kind::kRaw, ChosenFrame()});
  }

  void AddHeif() {
    if (main_.empty() || !HasOneOf(main_.front(), kHeifExtensions)) return;
    sources_.push_back({Kind::kHeif, main_.front()});
  }

  // A raw picture, or one frame of a sequence of them.
  std::string ChosenFrame() const {
    const std::string_view extension = foundation::FileExtension(main_.front());
    std::vector<std::string> frames = main_;
    for (const std::string& path : extra_) {
      if (foundation::HasExtension(path, extension)) frames.push_back(path);
    }
    std::ranges::sort(frames);
    const auto repeated = std::unique(frames.begin(), frames.end());
    frames.erase(repeated, frames.end());
    return frames[frames.size() / kFramePlace];
  }

  void AddVideos(const std::vector<std::string>& paths) {
    for (const std::string& path : paths) {
      if (videos_ >= kMaxMediaFiles) return;
      if (!HasOneOf(path, kVideoExtensions)) continue;
      sources_.push_back({Kind::kVideo, path});
      ++videos_;
    }
  }

  std::vector<std::string> main_;
  std::vector<std::string> extra_;
  std::vector<std::string> proxies_;
  ClipSources sources_;
  std::size_t videos_ = 0;
};

}  // namespace

ClipSources FindClipSources(const ProviderWrapper& provider, const std::string& path,
                            const std::string& key) {
  const ContentMap entry =
      provider.GetContent(path, key, {kPathField, kExtraPathField, kProxyPathField});
  const auto found = entry.find(key);
  if (found == entry.end()) return {};
  return SourceSearch(found->second).Run();
}

}  // namespace Sorvik
