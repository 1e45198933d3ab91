// SPDX-License-Identifier: MIT
// A catalogue of translations in gettext's compiled form (.mo). The context of an entry is the path
// of a localization key. Immutable, so any thread may read it.
#pragma once

#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tarnwick::config {

class Catalogue {
 public:
  Catalogue() = default;  // empty
  // Parses a catalogue. Skips entries that point outside `bytes`. Returns an empty catalogue if the
  // header is invalid.
  static Catalogue FromBytes(std::span<const std::byte> bytes);
  // Returns an empty catalogue if the file is missing or invalid.
  static Catalogue FromFile(const std::string& path);

  // The translation of `text`; nullopt if there is none.
  std::optional<std::string> Find(std::string_view context, std::string_view text) const;
  bool Empty() const noexcept { return entries_.empty(); }

 private:
  std::map<std::string, std::string, std::less<>> entries_;
};

// Makes the Localizer read its catalogue again, after the default folder has changed.
void ReloadCatalogue();

}  // namespace tarnwick::config
