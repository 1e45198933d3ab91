// SPDX-License-Identifier: MIT
#include "filesystem/Shortcuts.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "SorvikProvider/foundation/UTF16String.h"
#include "filesystem/ShellLink.h"
#include "foundation/CallScope.h"
#include "foundation/Mounts.h"
#include "foundation/Paths.h"
#include "foundation/hestra/Directory.h"
#include "foundation/platform/DesktopEntry.h"
#include "foundation/platform/FileSystem.h"
#include "foundation/platform/ShareAccess.h"

namespace Sorvik {
namespace {

using platform::Volume;

constexpr std::string_view kShellLinkExtension = ".lnk";
constexpr std::string_view kDesktopExtension = ".desktop";

bool EndsWith(std::string_view name, std::string_view extension) noexcept {
  if (name.size() <= extension.size()) return false;
  const auto end = name.substr(name.size() - extension.size());
  return std::equal(end.begin(), end.end(), extension.begin(), [](char a, char b) {
    return a == b || (a >= 'A' && a <= 'Z' && a - 'A' + 'a' == b);
  });
}

std::string FoldName(std::string_view name) {
  return Hestra::MakeStdString(tarnwick::utility::FoldCase(Hestra::MakeString(name)));
}

std::string WithSlashes(std::string text) {
  std::replace(text.begin(), text.end(), '\\', '/');
  return text;
}

// The names of a folder by their case-folded forms, cached: many shortcuts may point into one
// folder.
struct FoldedNames {
  std::unordered_map<std::string, std::string> names;
};

std::optional<std::string> NameOnDisk(const std::string& folder, std::string_view name) {
  const auto folded = foundation::CallScope::Remember<FoldedNames>(folder, [&] {
    FoldedNames all;
    const auto items = Hestra::Directory::GetItems(folder);
    if (!items) return all;
    for (const auto& item : *items) all.names.emplace(FoldName(item.name), item.name);
    return all;
  });
  const auto found = folded->names.find(FoldName(name));
  return found == folded->names.end() ? std::nullopt : std::optional<std::string>(found->second);
}

// True if `path` is on a share that hasn't answered: whether it exists is unknown.
bool IsOnUnresponsiveShare(const std::string& path) {
  const auto access = platform::ShareAccess::Current();
  if (!access) return false;
  const auto place = access->OtherShareAt(path);
  return place.share != nullptr && access->IsUnresponsive(*place.share);
}

// Resolves the targets of the shortcuts of one folder.
class TargetFinder {
 public:
  explicit TargetFinder(const std::string& folder) : folder_(folder) {}

  // Returns `path` if it exists.
  std::optional<std::string> Exact(const std::string& path) const {
    if (path.size() >= platform::kPathLimit || path.find('\0') != path.npos) return std::nullopt;
    const bool exists = platform::KindOf(path) || IsOnUnresponsiveShare(path);
    return exists ? std::optional<std::string>(path) : std::nullopt;
  }

  // Returns the existing path `rest` below `top`, first as spelled, then case-insensitive with the
  // spelling on disk.
  std::optional<std::string> Below(const std::string& top, std::string_view rest) const {
    const std::string full = foundation::NormalizedPath((top + "/").append(rest));
    if (!platform::IsAtOrBelow(full, top)) return std::nullopt;
    if (auto found = Exact(full)) return found;
    if (full.size() >= platform::kPathLimit || full.find('\0') != full.npos) return std::nullopt;
    std::string path = top;
    std::string_view left = std::string_view(full).substr(top.size());
    while (!left.empty()) {
      const auto part = left.substr(0, left.find('/'));
      left.remove_prefix(std::min(part.size() + 1, left.size()));
      if (part.empty()) continue;
      if (path != "/") path += '/';
      if (platform::KindOf(path + std::string(part))) {
        path += part;
      } else if (const auto name = NameOnDisk(path, part)) {
        path += *name;
      } else {
        return std::nullopt;
      }
    }
    return path;
  }

  // Resolves a path relative to the shortcut's folder. ".." is resolved lexically.
  std::optional<std::string> Relative(std::string_view relative) const {
    if (relative.empty()) return std::nullopt;
    const std::string full = foundation::NormalizedPath((folder_ + "/").append(relative));
    std::string top = folder_;
    while (!platform::IsAtOrBelow(full, top)) {
      top.resize(std::max<std::size_t>(top.rfind('/'), 1));
    }
    return Below(top, std::string_view(full).substr(top.size()));
  }

 private:
  const std::string& folder_;
};

std::optional<std::string> FindOnShare(const TargetFinder& finder, const ShellLink& link,
                                       const std::vector<Volume>& volumes) {
  if (link.networkName.empty()) return std::nullopt;
  const std::string wanted = FoldName(WithSlashes(link.networkName));
  for (const Volume& volume : volumes) {
    if (!volume.isNetwork || FoldName(volume.remoteName) != wanted) continue;
    if (auto path = finder.Below(volume.mountPoint, WithSlashes(link.pathSuffix))) return path;
  }
  return std::nullopt;
}

// A FAT serial number is written "8A3F-1C2D". Shortcuts store the lower half of an NTFS one.
std::optional<std::uint32_t> SerialNumber(std::string text) {
  std::erase(text, '-');
  if (text.size() != 8 && text.size() != 16) return std::nullopt;
  const std::string_view half = std::string_view(text).substr(text.size() - 8);
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(half.data(), half.data() + half.size(), number, 16);
  if (error != std::errc() || end != half.data() + half.size()) return std::nullopt;
  return number;
}

bool IsVolumeOf(const ShellLink& link, const Volume& volume) {
  if (volume.isNetwork) return false;
  if (link.volumeSerial != 0 && SerialNumber(volume.serial) == link.volumeSerial) return true;
  return !link.volumeLabel.empty() && FoldName(volume.label) == FoldName(link.volumeLabel);
}

std::optional<std::string> FindOnVolume(const TargetFinder& finder, const ShellLink& link,
                                        const std::vector<Volume>& volumes) {
  const std::string full = WithSlashes(link.localBasePath + link.pathSuffix);
  if (full.size() < 3 || full[1] != ':' || full[2] != '/') return std::nullopt;
  for (const Volume& volume : volumes) {
    if (!IsVolumeOf(link, volume)) continue;
    if (auto path = finder.Below(volume.mountPoint, full.substr(3))) return path;
  }
  return std::nullopt;
}

std::optional<std::string> TargetOfShellLink(const std::string& folder, const std::string& path) {
  const auto bytes = platform::ReadHead(path, kMaxShortcutBytes);
  if (!bytes) return std::nullopt;
  const auto link = ParseShellLink(foundation::ByteReader(*bytes));
  if (!link) return std::nullopt;
  const TargetFinder finder(folder);
  if (auto target = finder.Relative(WithSlashes(link->relativePath))) return target;
  if (link->networkName.empty() && link->localBasePath.empty()) return std::nullopt;
  const auto volumes = foundation::ListVolumes();
  if (auto target = FindOnShare(finder, *link, volumes)) return target;
  return FindOnVolume(finder, *link, volumes);
}

std::optional<std::string> TargetOfDesktopEntry(const std::string& folder,
                                                const std::string& path) {
  const auto bytes = platform::ReadHead(path, kMaxShortcutBytes);
  if (!bytes) return std::nullopt;
  const auto target = platform::LinkOfDesktopEntry(foundation::ByteReader(*bytes).Text());
  if (!target) return std::nullopt;
  return TargetFinder(folder).Exact(foundation::NormalizedPath(*target));
}

}  // namespace

bool HasShortcutName(std::string_view name) noexcept {
  return EndsWith(name, kShellLinkExtension) || EndsWith(name, kDesktopExtension);
}

std::optional<std::string> ShortcutTarget(const std::string& folder, const std::string& name) {
  const std::string path = (folder == "/" ? folder : folder + "/") + name;
  if (EndsWith(name, kShellLinkExtension)) return TargetOfShellLink(folder, path);
  if (EndsWith(name, kDesktopExtension)) return TargetOfDesktopEntry(folder, path);
  return std::nullopt;
}

}  // namespace Sorvik
