// SPDX-License-Identifier: MIT
#include "foundation/imaging/IconTheme.h"

#include <glib.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <span>
#include <string_view>
#include <tuple>

#include "foundation/platform/FileSystem.h"

namespace Sorvik::imaging {
namespace {

// The index of a large theme has 80 kB.
constexpr std::size_t kMaxIndexBytes = 2u << 20;

struct FreeKeyFile {
  void operator()(GKeyFile* file) const noexcept { g_key_file_free(file); }
};
struct FreeText {
  void operator()(gchar* text) const noexcept { g_free(text); }
  void operator()(gchar** texts) const noexcept { g_strfreev(texts); }
};
using KeyFile = std::unique_ptr<GKeyFile, FreeKeyFile>;

KeyFile ReadIndex(const std::string& path) {
  const auto bytes = platform::ReadHead(path, kMaxIndexBytes);
  if (!bytes || bytes->empty()) return nullptr;
  KeyFile file(g_key_file_new());
  // Lists in an index are comma-separated, unlike those of other key files.
  g_key_file_set_list_separator(file.get(), ',');
  const bool read =
      g_key_file_load_from_data(file.get(), reinterpret_cast<const gchar*>(bytes->data()),
                                bytes->size(), G_KEY_FILE_NONE, nullptr) != FALSE;
  return read ? std::move(file) : nullptr;
}

std::string Value(GKeyFile* file, const char* group, const char* key) {
  const std::unique_ptr<gchar, FreeText> text(g_key_file_get_string(file, group, key, nullptr));
  return text ? std::string(text.get()) : std::string();
}

std::vector<std::string> SectionNames(GKeyFile* file) {
  std::vector<std::string> names;
  gsize count = 0;
  const std::unique_ptr<gchar*, FreeText> list(
      g_key_file_get_string_list(file, "Icon Theme", "Directories", &count, nullptr));
  if (list) names.assign(list.get(), list.get() + count);
  return names;
}

std::optional<IconContext> ContextOf(std::string_view text) {
  if (text == "MimeTypes") return IconContext::kMimeTypes;
  if (text == "Places") return IconContext::kPlaces;
  return std::nullopt;
}

// Sort key of sections: the requested size first, then larger ones in ascending order, then smaller
// ones in descending order.
std::tuple<int, int> SizePriority(int sectionSize, int size) {
  if (sectionSize >= size) return {0, sectionSize - size};
  return {1, size - sectionSize};
}

bool IsRegularFile(const std::string& path) {
  return platform::KindOf(path) == platform::FileKind::kRegular;
}

// Icon names come from the system's MIME database and must not be paths. Symbolic icons are
// outlines for buttons.
bool IsUsable(std::string_view name) {
  return !name.empty() && name.find('/') == name.npos && !name.ends_with("-symbolic");
}

}  // namespace

IconTheme::IconTheme(const std::vector<std::string>& dataFolders)
    : themes_{ReadTheme(dataFolders, "Adwaita"), ReadTheme(dataFolders, "hicolor")} {}

const IconTheme& IconTheme::System() {
  static std::once_flag once;
  static const IconTheme* theme = nullptr;  // never destroyed: workers may outlive main
  std::call_once(once, [] {
    std::vector<std::string> folders{g_get_user_data_dir()};
    for (const gchar* const* folder = g_get_system_data_dirs(); *folder != nullptr; ++folder) {
      folders.emplace_back(*folder);
    }
    theme = new IconTheme(folders);
  });
  return *theme;
}

IconTheme::Theme IconTheme::ReadTheme(const std::vector<std::string>& dataFolders,
                                      const std::string& name) {
  std::vector<std::string> roots;
  KeyFile index;
  for (const std::string& folder : dataFolders) {
    const std::string root = folder + "/icons/" + name;
    if (platform::KindOf(root) != platform::FileKind::kDirectory) continue;
    roots.push_back(root);
    if (!index) index = ReadIndex(root + "/index.theme");
  }
  Theme theme;
  if (!index) return theme;
  for (const std::string& section : SectionNames(index.get())) {
    const auto context = ContextOf(Value(index.get(), section.c_str(), "Context"));
    const std::string scale = Value(index.get(), section.c_str(), "Scale");
    const int size = g_key_file_get_integer(index.get(), section.c_str(), "Size", nullptr);
    if (!context || size < 1 || !(scale.empty() || scale == "1")) continue;
    Section read{{}, *context, size};
    for (const std::string& root : roots) read.folders.push_back(root + "/" + section + "/");
    theme.push_back(std::move(read));
  }
  return theme;
}

std::optional<IconFile> IconTheme::Find(const std::vector<std::string>& names, IconContext context,
                                        int size) const {
  for (const Theme& theme : themes_) {
    std::vector<const Section*> sections;
    for (const Section& section : theme) {
      if (section.context == context) sections.push_back(&section);
    }
    std::stable_sort(sections.begin(), sections.end(), [size](const auto* a, const auto* b) {
      return SizePriority(a->size, size) < SizePriority(b->size, size);
    });
    for (const std::string& name : names) {
      if (!IsUsable(name)) continue;
      for (const Section* section : sections) {
        for (const std::string& folder : section->folders) {
          if (IsRegularFile(folder + name + ".png")) return IconFile{folder + name + ".png", false};
          if (IsRegularFile(folder + name + ".svg")) return IconFile{folder + name + ".svg", true};
        }
      }
    }
  }
  return std::nullopt;
}

}  // namespace Sorvik::imaging
