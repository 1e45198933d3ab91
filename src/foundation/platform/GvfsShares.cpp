// SPDX-License-Identifier: MIT
#include "foundation/platform/GvfsShares.h"

#include <dirent.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <optional>

#include "foundation/platform/ShareAccess.h"

namespace Sorvik::platform {
namespace {

// The parts of "scheme:key=value,key=value". Values keep their percent encoding, as URLs need it.
struct ShareName {
  std::string scheme;
  std::map<std::string, std::string> values;

  std::string Value(const std::string& key) const {
    const auto found = values.find(key);
    return found == values.end() ? std::string() : found->second;
  }
};

std::optional<ShareName> ParseShareName(std::string_view text) {
  const auto colon = text.find(':');
  if (colon == text.npos || colon == 0) return std::nullopt;
  ShareName name{std::string(text.substr(0, colon)), {}};
  text.remove_prefix(colon + 1);
  while (!text.empty()) {
    const auto end = std::min(text.find(','), text.size());
    const auto part = text.substr(0, end);
    const auto equals = part.find('=');
    if (equals != part.npos) {
      name.values.emplace(part.substr(0, equals), part.substr(equals + 1));
    }
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return name;
}

// The separators of a path inside a share are percent-encoded.
std::string UnescapeSlashes(std::string text) {
  for (const std::string_view escape : {"%2F", "%2f"}) {
    for (auto at = text.find(escape); at != text.npos; at = text.find(escape, at)) {
      text.replace(at, escape.size(), "/");
    }
  }
  return text;
}

std::string SchemeOf(const ShareName& name) {
  if (name.scheme == "smb-share" || name.scheme == "smb-server") return "smb";
  if (name.scheme == "afp-volume" || name.scheme == "afp-server") return "afp";
  if (name.scheme == "dav" && name.Value("ssl") == "true") return "davs";
  return name.scheme;
}

std::vector<std::string> NamesIn(const std::string& folder) {
  std::vector<std::string> names;
  DIR* stream = opendir(folder.c_str());
  if (stream == nullptr) return names;
  while (const dirent* entry = readdir(stream)) {
    if (entry->d_name[0] != '.') names.emplace_back(entry->d_name);
  }
  closedir(stream);
  std::sort(names.begin(), names.end());
  return names;
}

bool IsOwnGvfsMount(const Mount& mount) {
  if (mount.type != "fuse.gvfsd-fuse") return false;
  const std::string owner = ",user_id=" + std::to_string(getuid()) + ",";
  return ("," + mount.options + ",").find(owner) != std::string::npos;
}

}  // namespace

std::string UrlOfGvfsShare(std::string_view folderName) {
  const auto name = ParseShareName(folderName);
  if (!name) return std::string(folderName);
  std::string host = name->Value("host");
  if (host.empty()) host = name->Value("server");
  if (host.empty()) return std::string(folderName);
  std::string url = SchemeOf(*name) + "://";
  if (const std::string user = name->Value("user"); !user.empty()) url += user + "@";
  url += host;
  if (const std::string port = name->Value("port"); !port.empty()) url += ":" + port;
  std::string path = name->Value("share");
  if (path.empty()) path = name->Value("volume");
  if (path.empty()) path = UnescapeSlashes(name->Value("prefix"));
  if (!path.empty() && path.front() != '/') url += '/';
  return url + path;
}

void AddGvfsShares(const VolumeSources& sources, const MountTable& table,
                   std::vector<Volume>& volumes) {
  const auto access = ShareAccess::CurrentOr(std::string());
  for (const Mount& mount : table.Mounts()) {
    if (!IsOwnGvfsMount(mount)) continue;
    // The mount's own folder is answered by a program of the session, which may hang.
    const auto read = [path = sources.filePrefix + mount.mountPoint] { return NamesIn(path); };
    const auto names =
        access->Ask<std::vector<std::string>>(mount, read).value_or(std::vector<std::string>());
    for (const std::string& name : names) {
      Volume volume;
      volume.mountPoint = mount.mountPoint + "/" + name;
      volume.kind = VolumeKind::kRemote;
      volume.isNetwork = true;
      volume.remoteName = UrlOfGvfsShare(name);
      volume.hasLocalName = false;
      volumes.push_back(std::move(volume));
    }
  }
}

}  // namespace Sorvik::platform
