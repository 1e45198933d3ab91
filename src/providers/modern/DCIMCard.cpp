// SPDX-License-Identifier: MIT
#include "providers/modern/DCIMCard.h"

#include <algorithm>
#include <set>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "foundation/CallScope.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "foundation/hestra/PathUtils.h"
#include "foundation/platform/FileStatus.h"
#include "providers/common/CardParts.h"

namespace Sorvik::dcim {
namespace {

using foundation::CardFolder;
using foundation::EqualIgnoringCase;
using foundation::FileName;
using foundation::FileStem;
using foundation::FoldCase;
using foundation::JoinPath;

constexpr int kMaxDepth = 8;  // of folders below DCIM; cameras use two

bool IsCompanionFolder(const Maker* maker, std::string_view name) {
  return maker != nullptr &&
         std::ranges::any_of(maker->companions, [name](const CompanionFolder& companion) {
           return EqualIgnoringCase(companion.name, name);
         });
}

// "100" of "100MEDIA", "001" of "DJI_001": the name of the folder of its thumbnails.
std::string_view NumberOfFolder(std::string_view name) {
  constexpr std::size_t kDigits = 3;
  const auto isNumber = [](std::string_view text) {
    return text.size() == kDigits &&
           std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
  };
  if (isNumber(name.substr(0, kDigits))) return name.substr(0, kDigits);
  const std::string_view end = name.substr(name.size() - std::min(kDigits, name.size()));
  return isNumber(end) ? end : std::string_view();
}

// The files of MISC/THM/<number>, by folded stem.
struct MiscThumbnails {
  std::unordered_multimap<std::string, std::string> byStem;
};

std::shared_ptr<const MiscThumbnails> ThumbnailsOf(const std::string& root,
                                                   std::string_view folder) {
  const std::string path =
      FindFolder(FindFolder(FindFolder(root, kMisc), "THM"), NumberOfFolder(folder));
  return foundation::CallScope::Share<MiscThumbnails>(path, [&path] {
    auto thumbnails = std::make_shared<MiscThumbnails>();
    if (path.empty()) return thumbnails;
    const auto listed = CardFolder::Of(path);
    for (const std::string& name : listed->VisibleFiles()) {
      thumbnails->byStem.emplace(FoldCase(FileStem(name)), listed->PathOf(name));
    }
    return thumbnails;
  });
}

struct ObjectFile {
  std::string path;
  FileIdentity identity;

  // The first one of the originals is the file that represents the object.
  auto Order() const {
    return std::make_tuple(identity.role, identity.form, identity.number, identity.rank,
                           std::string_view(path));
  }
};

bool IsPlainFolderOf(const std::string& parent, std::string_view name) {
  return Hestra::PathUtils::IsItemName(name) && !foundation::IsHidden(name) &&
         CardFolder::Of(parent)->ContainsFolder(name);
}

// The folder `relative` (below DCIM, "" for DCIM itself), shared with the call scope; null if it
// isn't a folder of objects.
std::shared_ptr<const ObjectFolder> FolderBelow(const std::string& root, const std::string& dcim,
                                                std::string_view relative) {
  std::string path = dcim;
  const Maker* maker = nullptr;
  std::string_view rest = relative;
  std::string_view name;
  for (int depth = 0; !rest.empty(); ++depth) {
    name = rest.substr(0, rest.find('/'));
    rest.remove_prefix(std::min(name.size() + 1, rest.size()));
    if (depth == kMaxDepth || IsCompanionFolder(maker, name) || !IsPlainFolderOf(path, name)) {
      return nullptr;
    }
    path = JoinPath(path, name);
    if (const Maker* own = MakerOfFolder(name)) maker = own;
  }
  return foundation::CallScope::Share<ObjectFolder>(path, [&] {
    ObjectFolder::FindThumbnails find;
    if (maker != nullptr && maker->thumbnailsInMisc) {
      find = [thumbnails = ThumbnailsOf(root, name)](std::string_view stem) {
        std::vector<std::string> paths;
        const auto [begin, end] = thumbnails->byStem.equal_range(FoldCase(stem));
        for (auto found = begin; found != end; ++found) paths.push_back(found->second);
        std::ranges::sort(paths);
        return paths;
      };
    }
    const std::string prefix = relative.empty() ? "" : std::string(relative) + "/";
    return std::make_shared<const ObjectFolder>(path, prefix, maker, find);
  });
}

}  // namespace

class ObjectFolder::Builder {
 public:
  Builder(ObjectFolder& folder, const std::string& keyPrefix, const Maker* maker,
          const FindThumbnails& findThumbnails)
      : folder_(folder),
        keyPrefix_(keyPrefix),
        maker_(maker),
        findThumbnails_(findThumbnails),
        listed_(CardFolder::Of(folder.path_)) {}

  void Build() {
    for (const std::string& name : listed_->VisibleFiles()) {
      if (IsFolderFile(maker_, name)) {
        folder_.folderFiles_.push_back(listed_->PathOf(name));
      } else {
        Take({listed_->PathOf(name), Identify(maker_, name)});
      }
    }
    for (std::string& name : listed_->VisibleFolders()) {
      if (!IsCompanionFolder(maker_, name)) folder_.subfolders_.push_back(std::move(name));
    }
    if (maker_ != nullptr) {
      for (const CompanionFolder& companion : maker_->companions) TakeCompanions(companion);
    }
    for (ObjectFile& file : ambiguous_) {
      groups_[GroupOf(file.identity)].push_back(std::move(file));
    }
    for (auto& [group, files] : groups_) AddObject(files);
    std::ranges::sort(folder_.objects_, {}, &Object::key);
  }

 private:
  void Take(ObjectFile file) {
    if (file.identity.groups.size() > 1) {
      ambiguous_.push_back(std::move(file));
      return;
    }
    auto& files = groups_[file.identity.groups.front()];
    files.push_back(std::move(file));
  }

  void TakeCompanions(const CompanionFolder& companion) {
    const std::string path = FindFolder(folder_.path_, companion.name);
    if (path.empty()) return;
    const auto listed = CardFolder::Of(path);
    for (const std::string& name : listed->VisibleFiles()) {
      const std::string_view stem = FileStem(name);
      const std::size_t end = companion.stemEnd.size();
      std::string original = name;
      if (stem.size() > end &&
          EqualIgnoringCase(stem.substr(stem.size() - end), companion.stemEnd)) {
        original = std::string(stem.substr(0, stem.size() - end)) +
                   std::string(foundation::FileExtension(name));
      }
      ObjectFile file{listed->PathOf(name), Identify(maker_, original)};
      if (file.identity.isKnown) file.identity.role = companion.role;
      Take(std::move(file));
    }
  }

  bool HasOriginal(const std::string& group, std::uint32_t number) const {
    const auto found = groups_.find(group);
    return found != groups_.end() &&
           std::ranges::any_of(found->second, [number](const ObjectFile& file) {
             return file.identity.role == Role::kOriginal && file.identity.number == number;
           });
  }

  // The group of a proxy that can belong to several kinds of recordings.
  std::string GroupOf(const FileIdentity& proxy) const {
    for (const std::string& group : proxy.groups) {
      if (HasOriginal(group, proxy.number)) return group;
    }
    for (const std::string& group : proxy.groups) {
      if (groups_.contains(group)) return group;
    }
    return proxy.groups.front();
  }

  void AddObject(std::vector<ObjectFile>& files) {
    MarkProxiesOfRaw(files);
    PromoteSoundWithoutOriginal(files);
    std::ranges::sort(files, {}, &ObjectFile::Order);
    if (files.front().identity.role > Role::kThumbnail) {
      // Cameras write indexes next to the folders of objects.
      const bool isTop = keyPrefix_.empty();
      for (ObjectFile& file : files) {
        if (file.identity.isKnown || isTop) folder_.folderFiles_.push_back(std::move(file.path));
      }
      return;
    }
    Object object;
    object.maker = files.front().identity.maker;
    object.pattern = files.front().identity.pattern;
    object.key = keyPrefix_ + std::string(FileStem(files.front().path));
    for (ObjectFile& file : files) AddFile(std::move(file), object);
    if (findThumbnails_) AddThumbnails(object);
    folder_.objects_.push_back(std::move(object));
  }

  static void MarkProxiesOfRaw(std::vector<ObjectFile>& files) {
    const Maker& maker = *files.front().identity.maker;
    const auto has = [](std::string_view extension) {
      return [extension](const ObjectFile& file) {
        return foundation::HasExtension(file.path, extension);
      };
    };
    if (maker.rawExtension.empty() || std::ranges::none_of(files, has(maker.rawExtension))) return;
    for (ObjectFile& file : files) {
      if (has(maker.proxyExtension)(file)) file.identity.role = Role::kProxy;
    }
  }

  // A sound file alone is a recording.
  static void PromoteSoundWithoutOriginal(std::vector<ObjectFile>& files) {
    if (std::ranges::any_of(
            files, [](const ObjectFile& file) { return file.identity.role <= Role::kThumbnail; })) {
      return;
    }
    for (ObjectFile& file : files) {
      if (file.identity.role == Role::kSound) file.identity.role = Role::kOriginal;
    }
  }

  static void AddFile(ObjectFile file, Object& object) {
    switch (file.identity.role) {
      case Role::kOriginal: {
        const bool isNext =
            object.parts.empty() || (file.identity.form == Form::kOriginal &&
                                     object.parts.back().number != file.identity.number);
        if (isNext) return object.parts.push_back({std::move(file.path), file.identity.number});
        break;
      }
      case Role::kProxy:
        return object.proxies.push_back(std::move(file.path));
      case Role::kThumbnail:
        return object.thumbnails.push_back(std::move(file.path));
      default:
        break;
    }
    object.files.push_back(std::move(file.path));
  }

  void AddThumbnails(Object& object) const {
    for (const Part& part : object.parts) {
      for (std::string& path : findThumbnails_(FileStem(part.path))) {
        object.thumbnails.push_back(std::move(path));
      }
    }
  }

  ObjectFolder& folder_;
  const std::string& keyPrefix_;
  const Maker* const maker_;
  const FindThumbnails& findThumbnails_;
  const std::shared_ptr<const CardFolder> listed_;
  std::unordered_map<std::string, std::vector<ObjectFile>> groups_;
  std::vector<ObjectFile> ambiguous_;
};

ObjectFolder::ObjectFolder(const std::string& path, const std::string& keyPrefix,
                           const Maker* maker, const FindThumbnails& findThumbnails)
    : path_(path) {
  Builder(*this, keyPrefix, maker, findThumbnails).Build();
}

const Object* ObjectFolder::Find(std::string_view key) const {
  const auto found = std::ranges::lower_bound(objects_, key, {}, &Object::key);
  return found == objects_.end() || found->key != key ? nullptr : &*found;
}

std::string Card::FolderOf(const std::string& root) { return FindFolder(root, kDCIM); }

std::shared_ptr<const Card> Card::Of(const std::string& root) {
  return foundation::CallScope::Share<Card>(root, [&root] {
    auto card = std::make_shared<Card>();
    const std::string dcim = FolderOf(root);
    if (dcim.empty()) return card;
    std::vector<std::string> pending{""};
    std::set<std::pair<std::uint64_t, std::uint64_t>> seen;  // links can lead back to a parent
    while (!pending.empty()) {
      const std::string relative = std::move(pending.back());
      pending.pop_back();
      auto folder = FolderBelow(root, dcim, relative);
      if (!folder) continue;
      const auto status = platform::StatusOf(folder->Path());
      if (!status || !seen.emplace(status->device, status->inode).second) continue;
      const auto& below = folder->Subfolders();
      for (auto name = below.rbegin(); name != below.rend(); ++name) {
        pending.push_back(relative.empty() ? *name : relative + "/" + *name);
      }
      card->folders_.push_back(std::move(folder));
    }
    return card;
  });
}

std::shared_ptr<const Object> FindObject(const std::string& root, std::string_view key) {
  const std::string dcim = Card::FolderOf(root);
  if (dcim.empty()) return nullptr;
  const std::size_t slash = key.rfind('/');
  const std::string_view relative = slash == key.npos ? std::string_view() : key.substr(0, slash);
  if (relative.ends_with('/')) return nullptr;
  auto folder = FolderBelow(root, dcim, relative);
  const Object* object = folder ? folder->Find(key) : nullptr;
  return {std::move(folder), object};
}

}  // namespace Sorvik::dcim
