// SPDX-License-Identifier: MIT
#include "ProviderNames.h"

#include <string_view>
#include <vector>

#include "Failure.h"
#include "SorvikProvider/frame/ProviderHost.h"
#include "Suggestions.h"
#include "Text.h"

namespace host {
namespace {

std::string LastComponent(const std::string& identification) {
  return LowerAscii(std::string_view(identification).substr(identification.rfind('.') + 1));
}

// Removes the prefix that the last components of all identifications have.
std::string ShortName(const std::string& identification) {
  const std::string last = LastComponent(identification);
  for (const std::string_view prefix : {"winprovider", "provider"}) {
    if (last.starts_with(prefix) && last.size() > prefix.size()) return last.substr(prefix.size());
  }
  return last;
}

}  // namespace

bool IsNamed(const std::string& identification, const std::string& name) {
  const std::string wanted = LowerAscii(name);
  return LowerAscii(identification) == wanted || LastComponent(identification) == wanted ||
         ShortName(identification) == wanted;
}

const Sorvik::ProviderWrapper& ProviderNamed(const std::string& name) {
  std::vector<Suggestion> known;
  for (const Sorvik::ProviderWrapper* provider : Sorvik::ProviderHost::GetAllProviders()) {
    const std::string identification = provider->GetIdentification();
    if (IsNamed(identification, name)) return *provider;
    const std::string shown = ShortName(identification);
    known.push_back({shown, shown});
  }
  throw Failure(kUsageError, "unknown provider '" + name + "' (nearest: " +
                                 NearestNames(known, name) + "; try 'sorvik providers')");
}

}  // namespace host
