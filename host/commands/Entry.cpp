// SPDX-License-Identifier: MIT
#include "Commands.h"
#include "Failure.h"
#include "Paths.h"

namespace host {

int RunEntry(Context& context) {
  const std::string path = ResolvePath(context.options.operands[0]);
  const std::string& key = context.options.operands[1];
  const Sorvik::ProviderWrapper& provider = ChooseProvider(context, path);
  const Sorvik::FieldNameList fields = ChosenFields(context.options, provider, AllFields(provider));
  const Sorvik::FieldValueMap entry = ReadEntry(context, provider, path, key, fields);
  if (context.options.json) {
    WriteEntriesJson(context.output, path, provider.GetIdentification(), {{key, entry}});
  } else {
    WriteFieldLines(context.output, provider.GetFieldLabelList(), fields, entry);
  }
  return kDone;
}

}  // namespace host
