// SPDX-License-Identifier: MIT
#include "providers/modern/XAVCCard.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "formats/sony/ClipRecord.h"
#include "foundation/CallScope.h"
#include "foundation/Paths.h"
#include "foundation/ReadAhead.h"

namespace Sorvik::xavc {
namespace {

using formats::sony::ClipRecord;
using formats::sony::Material;
using formats::sony::MaterialPart;
using foundation::CardFolder;
using foundation::FileName;
using foundation::FileStem;
using foundation::FoldCase;
using foundation::JoinPath;

// The stem without the letter and two digits at its end; nullopt if it doesn't end so.
std::optional<std::string_view> WithoutKind(std::string_view stem) {
  if (stem.size() <= kKindSize) return std::nullopt;
  const std::string_view kind = stem.substr(stem.size() - kKindSize);
  const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
  const bool isLetter = (kind[0] >= 'A' && kind[0] <= 'Z') || (kind[0] >= 'a' && kind[0] <= 'z');
  if (!isLetter || !isDigit(kind[1]) || !isDigit(kind[2])) return std::nullopt;
  return stem.substr(0, stem.size() - kKindSize);
}

// The uri of a material ("./CLIP/C0001.MP4") as a folded path relative to the root.
std::string RelativePath(std::string_view uri) {
  if (uri.starts_with("./")) uri.remove_prefix(2);
  return FoldCase(uri);
}

std::string_view DeviceOf(const Clip& clip) {
  return clip.material == nullptr ? std::string_view()
                                  : formats::sony::DeviceOfUmid(clip.material->umid);
}

bool ContinuesClip(const Clip& clip, const Clip& next) {
  if (!clip.exists || !next.exists) return false;
  const std::string record = clip.Record();
  const std::string nextRecord = next.Record();
  if (record.empty() || nextRecord.empty()) return false;
  const auto first = ClipRecord::Of(record);
  const auto second = ClipRecord::Of(nextRecord);
  return first != nullptr && second != nullptr && Continues(*first, *second);
}

}  // namespace

bool IsEssenceName(std::string_view name) {
  return foundation::HasExtension(name, ".mp4") || foundation::HasExtension(name, ".mxf");
}

bool IsFileOfKind(std::string_view name, char letter) {
  const std::string_view stem = FileStem(name);
  if (!WithoutKind(stem)) return false;
  const char c = stem[stem.size() - kKindSize];
  return c == letter || c == letter + ('a' - 'A');
}

std::optional<std::string> FindInRoot(const std::string& root, std::string_view folder,
                                      std::string_view name) {
  const auto top = CardFolder::Of(root);
  const auto found = top->Find(folder);
  if (!found || !top->ContainsFolder(*found)) return std::nullopt;
  const auto inside = CardFolder::Of(top->PathOf(*found));
  const auto file = inside->Find(name);
  if (!file) return std::nullopt;
  return inside->PathOf(*file);
}

std::string Clip::FirstFile(char kind, bool (*hasExtension)(std::string_view)) const {
  const auto found = std::ranges::find_if(files, [&](const std::string& path) {
    return IsFileOfKind(FileName(path), kind) && hasExtension(path);
  });
  return found == files.end() ? std::string() : *found;
}

std::string Clip::Record() const {
  return FirstFile('M', [](auto path) { return foundation::HasExtension(path, ".xml"); });
}

std::string Clip::Proxy() const { return FirstFile('S', IsEssenceName); }

std::string Clip::Thumbnail() const {
  return FirstFile('T', [](auto path) { return foundation::HasExtension(path, ".jpg"); });
}

// Joins the material list with the files of the folders.
class Card::Builder {
 public:
  explicit Builder(Card& card) : card_(card), root_(CardFolder::Of(card.root_)) {}

  void Build() {
    ReadIndex();
    ListFiles();
    for (const Material& material : card_.index_->Materials()) AddMaterial(material);
    for (const std::string& name : essences_) AddUnlisted(name);
    for (std::size_t i = 0; i < card_.clips_.size(); ++i) {
      const std::string& essence = card_.clips_[i].essence;
      byStem_.emplace(FoldCase(FileStem(essence)), i);
      byStem_.emplace(FoldCase(essence), i);
    }
    for (const std::string& file : files_) Assign(file);
    RemoveStale();
  }

 private:
  void ReadIndex() {
    if (const auto index = root_->Find(kIndex)) card_.indexPath_ = root_->PathOf(*index);
    card_.index_ = formats::sony::MediaProfile::Of(card_.indexPath_);
    for (const std::string_view name : kStructureFiles) {
      const auto file = root_->Find(name);
      if (file && root_->KindOf(*file) == platform::FileKind::kRegular) {
        card_.sharedFiles_.push_back(root_->PathOf(*file));
      }
    }
  }

  std::string Folder(std::string_view name) const {
    const auto found = root_->Find(name);
    return found && root_->ContainsFolder(*found) ? root_->PathOf(*found) : std::string();
  }

  void ListFiles() {
    card_.clipFolder_ = Folder(kClipFolder);
    if (card_.clipFolder_.empty()) card_.clipFolder_ = root_->PathOf(kClipFolder);
    std::vector<std::string> folders;
    for (const std::string_view name : {kClipFolder, kProxyFolder, kThumbnailFolder}) {
      if (std::string path = Folder(name); !path.empty()) folders.push_back(std::move(path));
    }
    foundation::FolderReadAhead ahead(folders);
    for (std::size_t i = 0; i < folders.size(); ++i) {
      ahead.Await(i);
      const auto folder = CardFolder::Of(folders[i]);
      for (std::string& file : folder->VisibleFiles()) {
        if (folders[i] == card_.clipFolder_ && IsEssenceName(file)) {
          essences_.push_back(std::move(file));
        } else {
          files_.push_back(folder->PathOf(file));
        }
      }
    }
    for (const std::string_view name : kOtherFolders) {
      if (std::string path = Folder(name); !path.empty()) {
        card_.sharedFolders_.push_back(std::move(path));
      }
    }
    // Below it a camera keeps the pieces of a proxy (PXTMP), among files that belong to no clip.
    general_ = Folder(kGeneralFolder);
    if (general_.empty()) return;
    for (std::string& file : foundation::ListFilesBelow(general_)) {
      if (!foundation::IsHidden(file)) files_.push_back(std::move(file));
    }
  }

  void AddMaterial(const Material& material) {
    const std::string name(FileName(material.uri));
    if (name.empty() || material.IsTake()) return;
    const auto [known, isNew] = byEssence_.emplace(FoldCase(name), card_.clips_.size());
    if (!isNew) return;
    Clip clip;
    clip.essence = name;
    clip.material = &material;
    for (const MaterialPart& part : material.parts) {
      byPath_.emplace(RelativePath(part.uri), card_.clips_.size());
    }
    card_.clips_.push_back(std::move(clip));
  }

  void AddUnlisted(const std::string& name) {
    const auto [known, isNew] = byEssence_.emplace(FoldCase(name), card_.clips_.size());
    if (isNew) card_.clips_.emplace_back();
    Clip& clip = card_.clips_[known->second];
    if (clip.exists) {
      // The same name in another case: another file.
      card_.clips_.emplace_back();
      card_.clips_.back().essence = name;
      card_.clips_.back().exists = true;
      return;
    }
    clip.essence = name;
    clip.exists = true;
  }

  void Assign(const std::string& path) {
    const std::string relative = FoldCase(path.substr(JoinPath(card_.root_, {}).size()));
    if (const auto listed = byPath_.find(relative); listed != byPath_.end()) {
      card_.clips_[listed->second].files.push_back(path);
      return;
    }
    const std::string_view stem = FileStem(path);
    for (const auto& candidate : {WithoutKind(stem), std::optional(stem)}) {
      if (!candidate) continue;
      const auto clip = byStem_.find(FoldCase(*candidate));
      if (clip == byStem_.end()) continue;
      card_.clips_[clip->second].files.push_back(path);
      return;
    }
    AssignChunk(path, stem);
  }

  // The pieces of a proxy have the name of the clip and a number of unknown form.
  void AssignChunk(const std::string& path, std::string_view stem) {
    const bool isBelowGeneral = !general_.empty() && path.starts_with(general_);
    const bool isChunk =
        foundation::EqualIgnoringCase(FileName(foundation::ParentFolder(path)), "PXTMP");
    for (std::size_t size = isChunk ? stem.size() : 0; size > 0; --size) {
      const auto clip = byStem_.find(FoldCase(stem.substr(0, size)));
      if (clip == byStem_.end()) continue;
      card_.clips_[clip->second].files.push_back(path);
      return;
    }
    if (!isBelowGeneral) card_.looseFiles_.push_back(path);
  }

  void RemoveStale() {
    std::erase_if(card_.clips_, [this](const Clip& clip) {
      const bool stale = !clip.exists && clip.files.empty();
      if (stale) card_.stale_.push_back(clip.material);
      return stale;
    });
  }

  Card& card_;
  std::shared_ptr<const CardFolder> root_;
  std::string general_;                // the path of that folder; empty if there is none
  std::vector<std::string> essences_;  // names
  std::vector<std::string> files_;     // paths
  std::unordered_map<std::string, std::size_t> byEssence_;
  std::unordered_map<std::string, std::size_t> byPath_;
  std::unordered_map<std::string, std::size_t> byStem_;
};

std::shared_ptr<const Card> Card::Of(const std::string& root) {
  return foundation::CallScope::Share<Card>(root, [&root] {
    const auto card = std::make_shared<Card>();
    card->root_ = root;
    Builder(*card).Build();
    card->LinkClips();
    return card;
  });
}

std::string Card::PathOf(const Clip& clip) const { return JoinPath(clipFolder_, clip.essence); }

const Clip* Card::Find(std::string_view essence) const {
  const auto found = std::ranges::find(clips_, essence, &Clip::essence);
  return found == clips_.end() ? nullptr : &*found;
}

void Card::LinkClips() {
  std::unordered_map<std::string_view, std::size_t> last;  // by device
  links_.resize(clips_.size(), {kNone, kNone});
  for (std::size_t i = 0; i < clips_.size(); ++i) {
    const auto [previous, isFirst] = last.emplace(DeviceOf(clips_[i]), i);
    if (isFirst) continue;
    links_[i].previous = previous->second;
    links_[previous->second].next = i;
    previous->second = i;
  }
}

const Clip* Card::ClipAt(std::size_t index) const {
  return index == kNone ? nullptr : &clips_[index];
}

const Card::Link& Card::LinkOf(const Clip& clip) const {
  return links_[static_cast<std::size_t>(&clip - clips_.data())];
}

std::vector<const Clip*> Card::PartsAfter(const Clip& clip) const {
  std::vector<const Clip*> parts;
  const Clip* last = &clip;
  for (const Clip* next = ClipAt(LinkOf(*last).next);
       next != nullptr && ContinuesClip(*last, *next); next = ClipAt(LinkOf(*last).next)) {
    parts.push_back(next);
    last = next;
  }
  return parts;
}

bool Card::IsLaterPart(const Clip& clip) const {
  const Clip* previous = ClipAt(LinkOf(clip).previous);
  return previous != nullptr && ContinuesClip(*previous, clip);
}

}  // namespace Sorvik::xavc
