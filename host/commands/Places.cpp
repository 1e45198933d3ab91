// SPDX-License-Identifier: MIT
#include "Commands.h"
#include "Failure.h"
#include "Paths.h"
#include "SorvikProvider/frame/ProviderHost.h"

namespace host {
namespace {

// The full identification of a provider that was named by its last part.
std::string FullIdentification(const std::string& name) {
  if (name.empty()) return Sorvik::ProviderHost::sBestProvider;
  for (const Sorvik::ProviderWrapper* provider : Sorvik::ProviderHost::GetAllProviders()) {
    if (IsNamed(provider->GetIdentification(), name)) return provider->GetIdentification();
  }
  return name;
}

}  // namespace

int RunPlaces(Context& context) {
  const std::string path = PlacePath(context.options.operands.front());
  const std::string wanted = FullIdentification(context.options.provider);
  const Sorvik::GetDefaultContentMessage answer = context.session.Places(path, wanted);
  if (answer.provider == nullptr) RefusePlace(context, path);
  const std::string identification = answer.provider->GetIdentification();
  // A wish that can't be met is answered by the best provider instead.
  if (!wanted.empty() && identification != wanted) {
    throw Failure(kNothing, context.options.provider + " doesn't understand " + path);
  }
  if (answer.content.empty()) RequireReadable(context, path);
  if (context.options.json) {
    WriteEntriesJson(context.output, path, identification, answer.content);
  } else {
    WriteEntriesTable(context.output, *answer.provider, {Sorvik::kNameField, Sorvik::kPathField},
                      answer.content);
  }
  return kDone;
}

}  // namespace host
