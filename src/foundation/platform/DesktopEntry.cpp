// SPDX-License-Identifier: MIT
#include "foundation/platform/DesktopEntry.h"

#include <glib.h>

#include <memory>

namespace Sorvik::platform {
namespace {

struct FreeFile {
  void operator()(GKeyFile* file) const noexcept { g_key_file_unref(file); }
};
struct FreeText {
  void operator()(char* text) const noexcept { g_free(text); }
};
using TextPtr = std::unique_ptr<char, FreeText>;

TextPtr Value(GKeyFile* file, const char* key) {
  return TextPtr(g_key_file_get_string(file, G_KEY_FILE_DESKTOP_GROUP, key, nullptr));
}

}  // namespace

std::optional<std::string> LinkOfDesktopEntry(std::string_view text) {
  if (text.empty()) return std::nullopt;
  const std::unique_ptr<GKeyFile, FreeFile> file(g_key_file_new());
  if (!g_key_file_load_from_data(file.get(), text.data(), text.size(), G_KEY_FILE_NONE, nullptr)) {
    return std::nullopt;
  }
  const TextPtr type = Value(file.get(), G_KEY_FILE_DESKTOP_KEY_TYPE);
  if (!type || std::string_view(type.get()) != G_KEY_FILE_DESKTOP_TYPE_LINK) return std::nullopt;
  const TextPtr url = Value(file.get(), G_KEY_FILE_DESKTOP_KEY_URL);
  if (!url) return std::nullopt;
  char* hostName = nullptr;
  const TextPtr path(g_filename_from_uri(url.get(), &hostName, nullptr));
  const TextPtr host(hostName);
  if (!path || path.get()[0] != '/') return std::nullopt;
  if (host && host.get()[0] != '\0' && g_ascii_strcasecmp(host.get(), "localhost") != 0) {
    return std::nullopt;
  }
  return std::string(path.get());
}

}  // namespace Sorvik::platform
