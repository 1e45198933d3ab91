// SPDX-License-Identifier: MIT
#include "Commands.h"
#include "Failure.h"
#include "Paths.h"
#include "ProviderNames.h"
#include "SorvikProvider/frame/ProviderHost.h"

namespace host {
int RunPlaces(Context& context) {
  const std::string path = ResolvePath(context.options.operands.front());
  const std::string& name = context.options.provider;
  const std::string wanted =
      name.empty() ? Sorvik::ProviderHost::sBestProvider : ProviderNamed(name).GetIdentification();
  const Sorvik::GetDefaultContentMessage answer = context.session.Places(path, wanted);
  if (answer.provider == nullptr) FailUnclaimedPath(context, path);
  const std::string identification = answer.provider->GetIdentification();
  // The library falls back to the best provider if the wanted one doesn't claim the path.
  if (!wanted.empty() && identification != wanted) {
    throw Failure(kFailed, path, "not supported by provider '" + name + "'");
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
