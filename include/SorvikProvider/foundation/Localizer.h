// SPDX-License-Identifier: MIT
// Texts in the user's language.
#pragma once

#include <string>
#include <string_view>

#include "SorvikProvider/foundation/Export.h"
#include "SorvikProvider/foundation/UTF16String.h"

namespace tarnwick::config {

using Hestra::UTF16String;

// Looks up keys of the form "$$$/path=Default text" in the catalogue of the current language:
// resources/locale/<language>/sorvik.mo, a gettext catalogue with the part before the equals sign
// as the context and the default text as the message. May be used on any thread.
class SORVIK_EXPORT Localizer {
 public:
  static Localizer& Get();

  // The text for the current language; the text behind the first equals sign where the catalogue
  // has none. A key without an equals sign stands for itself.
  UTF16String GetString(std::string_view key) const;
  std::string GetUTF8String(std::string_view key) const;

  // Sets the language (a tag such as "de-DE") instead of the one of LANGUAGE, LC_ALL, LC_MESSAGES
  // and LANG; the empty string goes back to those. For the host, before its first request.
  void SetLanguage(std::string_view tag);
  // Sets the folder that holds the catalogues instead of the library's own.
  void SetCatalogueFolder(std::string_view folder);

 private:
  Localizer() = default;
};

}  // namespace tarnwick::config

namespace Hestra {

// The current language as a tag ("de-DE"), "x-default" where there is none or it is C.
SORVIK_EXPORT UTF16String GetLanguageString();

}  // namespace Hestra
