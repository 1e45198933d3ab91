// SPDX-License-Identifier: MIT
#include "foundation/imaging/IconSource.h"

#include <gio/gio.h>

#include <memory>
#include <string>

#include "SorvikProvider/foundation/Environment.h"
#include "foundation/imaging/ImageDecoder.h"
#include "foundation/platform/FileSystem.h"

namespace Sorvik::imaging {
namespace {

struct Release {
  void operator()(gchar* text) const noexcept { g_free(text); }
  void operator()(GIcon* icon) const noexcept { g_object_unref(icon); }
};

// The icon names of the file's type, the most specific first. Every theme has the last one.
std::vector<std::string> NamesOfType(std::string_view fileName) {
  std::vector<std::string> names;
  // By name only; no file is opened.
  const std::unique_ptr<gchar, Release> type(
      g_content_type_guess(std::string(fileName).c_str(), nullptr, 0, nullptr));
  if (type) {
    const std::unique_ptr<GIcon, Release> icon(g_content_type_get_icon(type.get()));
    if (icon && G_IS_THEMED_ICON(icon.get())) {
      const gchar* const* list = g_themed_icon_get_names(G_THEMED_ICON(icon.get()));
      for (; *list != nullptr; ++list) names.emplace_back(*list);
    }
  }
  names.emplace_back("application-x-generic");
  return names;
}

Icon IconOf(const Image& image) {
  Icon icon{image.Width(), image.Height(), {}, 0, 0, {}};
  const auto channels = static_cast<std::size_t>(image.Channels());
  icon.pixels.reserve(static_cast<std::size_t>(icon.width) * static_cast<std::size_t>(icon.height) *
                      4);
  for (int y = 0; y < icon.height; ++y) {
    const auto row = image.Row(y);
    for (std::size_t i = 0; i + channels <= row.size(); i += channels) {
      const std::uint8_t alpha = image.IsOpaque() ? 255 : row[i + 3];
      icon.pixels.insert(icon.pixels.end(), {row[i + 2], row[i + 1], row[i], alpha});
    }
  }
  return icon;
}

std::optional<Icon> Load(const IconFile& file, int side) {
  // Icons of themes are small.
  constexpr std::uint64_t kMaxIconFileBytes = 4u << 20;
  const auto source = ImageSource::OpenFile(file.path);
  if (!source || source->Size() > kMaxIconFileBytes) return std::nullopt;
  const auto image = file.isSvg ? DecodeSvgIcon(*source, side) : DecodeImage(*source);
  if (!image) return std::nullopt;
  return IconOf(*image);
}

// The built-in icons exist in three sizes.
std::optional<Icon> LoadOwn(const std::vector<std::string>& names, int wanted) {
  const int side = wanted <= 16 ? 16 : wanted <= 32 ? 32 : 48;
  const std::string folder =
      Hestra::MakeStdString(tarnwick::filesupport::commondirs::ResourcesDir()) + "/icons/" +
      std::to_string(side) + "/";
  for (const std::string& name : names) {
    if (auto icon = Load({folder + name + ".png", false}, side)) return icon;
  }
  return std::nullopt;
}

}  // namespace

std::optional<Icon> ThemeIconSource::Find(const std::vector<std::string>& names,
                                          IconContext context, int side) const {
  if (const auto file = theme_.Find(names, context, side)) {
    if (auto icon = Load(*file, side)) return icon;
  }
  return LoadOwn(names, side);
}

std::optional<Icon> ThemeIconSource::OfFile(std::string_view fileName, int side) const {
  return Find(NamesOfType(fileName), IconContext::kMimeTypes, side);
}

std::optional<Icon> ThemeIconSource::OfFolder(int side) const {
  return Find({"folder"}, IconContext::kPlaces, side);
}

}  // namespace Sorvik::imaging
