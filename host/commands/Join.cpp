// SPDX-License-Identifier: MIT
#include <string>

#include "Commands.h"
#include "Failure.h"
#include "Keys.h"
#include "Paths.h"
#include "SorvikProvider/cardtools/JoinList.h"

namespace host {
namespace {

using Sorvik::JoinFile;
using Sorvik::JoinFormat;
using Sorvik::JoinStatus;

JoinFormat ChooseFormat(const Options& options) {
  if (options.json && options.format.empty()) return JoinFormat::kJson;
  if (options.format.empty()) throw Failure(kUsageError, "join: --format or --json is required");
  const auto format = Sorvik::JoinFormatNamed(options.format);
  if (!format) throw Failure(kUsageError, "join: unknown format '" + options.format + "'");
  if (options.json && *format != JoinFormat::kJson) {
    throw Failure(kUsageError, "join: --json and --format are mutually exclusive");
  }
  if (*format == JoinFormat::kFfconcat && options.operands.size() < 2) {
    throw Failure(kUsageError, "join: --format ffconcat needs a KEY");
  }
  return *format;
}

}  // namespace

int RunJoin(Context& context) {
  const Options& options = context.options;
  Sorvik::JoinOptions wanted;
  wanted.format = ChooseFormat(options);
  wanted.allowGaps = options.allowGaps;
  const bool toFile = !options.output.empty() && options.output != "-";
  if (toFile) RefuseFileOfCard(context, options.output);
  if (toFile) wanted.output = ResolvePath(options.output);
  wanted.indents = !toFile && context.output.IndentsJson();
  const std::string path = ResolvePath(options.operands[0]);
  const Sorvik::ProviderWrapper& provider = ChooseProvider(context, path);
  const std::string key = options.operands.size() < 2
                              ? std::string()
                              : FindKey(context, provider, path, options.operands[1]);
  const Sorvik::JoinResult joined =
      context.session.Join(path, provider.GetIdentification(), key, wanted);
  for (const auto& [place, text] : joined.warnings) WriteError(place + ": " + text);
  if (joined.status != JoinStatus::kDone) {
    RequireReadable(context, path);
    const char* const hint = joined.status == JoinStatus::kGap ? " (use --allow-gaps)" : "";
    throw Failure(kFailed, joined.problem.path, joined.problem.text + hint);
  }
  for (const JoinFile& file : joined.files) {
    if (!file.path.empty()) RefuseFileOfCard(context, file.path);
    WriteFile(context.output, file.path.empty() ? "-" : file.path, file.text);
  }
  return kDone;
}

}  // namespace host
