// SPDX-License-Identifier: MIT
#include "Commands.h"
#include "Failure.h"
#include "Paths.h"
#include "PictureList.h"
#include "TerminalPictures.h"

namespace host {

int RunLs(Context& context) {
  const Options& options = context.options;
  const std::string path =
      PlacePath(options.operands.empty() ? Sorvik::kVolumeListPath : options.operands.front());
  const Sorvik::ProviderWrapper& provider = ChooseProvider(context, path);
  const Sorvik::FieldNameList fields =
      ChosenFields(options, provider, provider.GetDefaultFieldList());
  const Sorvik::ContentMap content = AllEntries(context, provider, path, fields);
  if (options.json) {
    WriteEntriesJson(context.output, path, provider.GetIdentification(), content);
    return kDone;
  }
  const PictureProtocol protocol = ChooseProtocol(options.thumbs, context.output.IsTerminal());
  if (protocol != PictureProtocol::kNone) {
    WritePictureList(context, provider, path, fields, content, protocol);
  } else {
    // Of all that a provider could fill, a table shows what it did fill.
    WriteEntriesTable(context.output, provider,
                      options.all ? FilledFields(fields, content) : fields, content);
  }
  return kDone;
}

}  // namespace host
