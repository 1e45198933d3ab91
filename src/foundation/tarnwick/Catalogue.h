// SPDX-License-Identifier: MIT
// A catalogue of translations in gettext's compiled form (.mo), the context of an entry being the
// path of a localisation key.
#pragma once

#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tarnwick::config {

class Catalogue {
 public:
  Catalogue() = default;  // without entries
  // Reads a catalogue; entries that point outside `bytes` are left out, and bytes that are no
  // catalogue give one without entries.
  static Catalogue FromBytes(std::span<const std::byte> bytes);
  // Without entries if there is no such file.
  static Catalogue FromFile(const std::string& path);

  std::optional<std::string> Find(std::string_view context, std::string_view text) const;
  bool Empty() const noexcept { return entries_.empty(); }

 private:
  std::map<std::string, std::string, std::less<>> entries_;
};

}  // namespace tarnwick::config
