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
      ResolvePath(options.operands.empty() ? Sorvik::kVolumeListPath : options.operands.front());
  const Sorvik::ProviderWrapper& provider = ChooseProvider(context, path);
  const Sorvik::FieldNameList fields =
      ChosenFields(options, provider, provider.GetDefaultFieldList());
  const Sorvik::ContentMap content = ListEntries(context, provider, path, fields);
  if (options.json) {
    WriteEntriesJson(context.output, path, provider.GetIdentification(), content);
    return kDone;
  }
  const PictureProtocol protocol = ChooseProtocol(options.thumbs, context.output.IsTerminal());
  if (protocol != PictureProtocol::kNone) {
    WritePictureList(context, provider, path, fields, content, protocol);
  } else {
    // With --all, columns without any value are omitted.
    WriteEntriesTable(context.output, provider,
                      options.all ? NonEmptyFields(fields, content) : fields, content);
  }
  return kDone;
}

}  // namespace host
