// SPDX-License-Identifier: MIT
#include "Commands.h"
#include "Failure.h"
#include "Paths.h"
#include "SorvikProvider/frame/ProviderHost.h"

namespace host {
namespace {

// Resolves the last component of an identification to the full identification.
std::string FullIdentification(const std::string& name) {
  if (name.empty()) return Sorvik::ProviderHost::sBestProvider;
  for (const Sorvik::ProviderWrapper* provider : Sorvik::ProviderHost::GetAllProviders()) {
    if (IsNamed(provider->GetIdentification(), name)) return provider->GetIdentification();
  }
  return name;
}

}  // namespace

int RunPlaces(Context& context) {
  const std::string path = ResolvePath(context.options.operands.front());
  const std::string wanted = FullIdentification(context.options.provider);
  const Sorvik::GetDefaultContentMessage answer = context.session.Places(path, wanted);
  if (answer.provider == nullptr) FailUnclaimedPath(context, path);
  const std::string identification = answer.provider->GetIdentification();
  // The library falls back to the best provider if the wanted one doesn't claim the path.
  if (!wanted.empty() && identification != wanted) {
    throw Failure(kFailed, path, "not supported by provider '" + context.options.provider + "'");
  }
  if (answer.content.empty()) RequireReadable(context, path);
  if (context.options.json) {
    WriteEntriesJson(context.output, path, identification, answer.content);
  } else {
    WriteEntriesTable(context, path,
                      ColumnsOf(*answer.provider, {Sorvik::kNameField, Sorvik::kPathField}),
                      answer.content);
  }
  return kDone;
}

}  // namespace host
