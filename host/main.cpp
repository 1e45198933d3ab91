// SPDX-License-Identifier: MIT
// sorvik: lists camera cards and folders as clips.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <string>
#include <vector>

#include "Arguments.h"
#include "Commands.h"
#include "Failure.h"
#include "Json.h"
#include "Output.h"
#include "ProviderNames.h"
#include "Session.h"

namespace host {
namespace {

struct CommandRow {
  const char* name;
  int (*run)(Context&);
};

constexpr CommandRow kCommands[] = {
    {"ls", RunLs},           {"who", RunWho},
    {"entry", RunEntry},     {"files", RunFiles},
    {"places", RunPlaces},   {"owner", RunOwner},
    {"thumb", RunThumb},     {"providers", RunProviders},
    {"meta", RunMeta},       {"sheet", RunSheet},
    {"check", RunCheck},     {"cards", RunCards},
    {"catalog", RunCatalog}, {"fields", RunFields},
    {"join", RunJoin},
};

int RunCommand(Context& context) {
  if (!context.options.provider.empty()) ProviderNamed(context.options.provider);
  for (const CommandRow& row : kCommands) {
    if (context.options.command == row.name) return row.run(context);
  }
  throw Failure(kUsageError,
                "unknown command '" + context.options.command + "' (try 'sorvik --help')");
}

// Reports a failure on stderr and, with --json, as the document if none has been started.
void ReportFailure(Output& output, bool json, const Failure& failure) {
  if (json && !output.HasWritten()) WriteErrorJson(output, failure);
  output.Flush();
  WriteError(failure.what());
}

// Reports a failure before the session ends, because ending it may wait for workers or exit the
// process.
int RunSession(const Options& options, Output& output) {
  Session session(!options.core);
  Context context{options, session, output};
  int code = kDone;
  try {
    code = RunCommand(context);
    output.Flush();
    session.CheckInterrupt();
  } catch (const Failure& failure) {
    session.GetProgress().Clear();
    ReportFailure(output, options.json, failure);
    code = failure.Code();
  } catch (const Interrupted&) {
    code = kInterrupted;
  }
  return code;
}

// If a standard stream is closed, the next opened file would get its descriptor and receive that
// stream's data. Opens /dev/null in the wrong direction instead, so that every use fails.
void FillStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) >= 0 || errno != EBADF) continue;
    if (open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY) < 0) return;
  }
}

int RunParsed(const Options& options, Output& output) {
  output.SetJsonLines(options.ndjson);
  if (options.command == "help") {
    output.Write(HelpText(options.operands.empty() ? "" : options.operands.front()));
  } else if (options.command == "version") {
    output.Write("sorvik " SORVIK_VERSION "\n");
  } else {
    return RunSession(options, output);
  }
  output.Flush();
  return kDone;
}

int Run(const std::vector<std::string>& arguments) {
  FillStandardStreams();
  Output output;
  try {
    return RunParsed(ParseArguments(arguments), output);
  } catch (const Failure& failure) {
    ReportFailure(output, WantsJson(arguments), failure);
    return failure.Code();
  }
}

}  // namespace
}  // namespace host

int main(int argc, char** argv) {
  try {
    return host::Run(std::vector<std::string>(argv + 1, argv + argc));
  } catch (const host::Failure& failure) {
    host::WriteError(failure.what());
    return failure.Code();
  } catch (const std::exception& exception) {
    host::WriteError(exception.what());
    return host::kFailed;
  }
}
