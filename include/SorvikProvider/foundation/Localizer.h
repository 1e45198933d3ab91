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
// resources/locale/<language>/sorvik.mo, a gettext catalogue with the part in front of the equals
// sign as the context and the default text as the message.
//
// Any thread. The catalogue is read once, by ProviderHost::Initialize or the first Get, and again
// by each setter on the thread that calls it. Look-ups take no lock and never access the disk.
class SORVIK_EXPORT Localizer {
 public:
  static Localizer& Get();

  // Returns the text in the current language, or the default text after the first equals sign if
  // the catalogue doesn't have it. Returns a key without an equals sign unchanged.
  UTF16String GetString(std::string_view key) const;
  std::string GetUTF8String(std::string_view key) const;

  // Sets the language (a tag such as "de-DE"). The empty string, the default, takes it from the
  // environment variables LANGUAGE, LC_ALL, LC_MESSAGES and LANG, which are read in this call.
  // Look-ups that run at the same time use the previous or the new language. Catalogues that were
  // replaced stay in memory.
  void SetLanguage(std::string_view tag);
  // Sets the folder of the catalogues; the empty string goes back to that of the library.
  void SetCatalogueFolder(std::string_view folder);

 private:
  Localizer() = default;
};

}  // namespace tarnwick::config

namespace Hestra {

// The current language as a tag ("de-DE"); "x-default" if none is set or it is C.
SORVIK_EXPORT UTF16String GetLanguageString();

}  // namespace Hestra
