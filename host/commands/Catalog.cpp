// SPDX-License-Identifier: MIT
#include <algorithm>
#include <exception>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "CatalogueOutput.h"
#include "Commands.h"
#include "Failure.h"
#include "Paths.h"
#include "SorvikProvider/cardtools/Catalogue.h"

namespace host {
namespace {

using Sorvik::CatalogueOptions;
using Sorvik::CatalogueResult;

CatalogueOptions OptionsOf(const Options& options) {
  CatalogueOptions result;
  if (!options.only.empty()) {
    const auto has = [&options](const char* kind) {
      return std::ranges::find(options.only, kind) != options.only.end();
    };
    result.cards = has("card");
    result.clips = has("clip");
    result.files = has("file");
    result.problems = has("problem");
  }
  result.searchesBelow = !options.here;
  result.depth = options.quick ? Sorvik::CheckDepth::kNames : Sorvik::CheckDepth::kStructure;
  result.jobs = options.jobs;
  result.cardTimeout = options.cardTimeout;
  result.shard = options.shard;
  result.shards = options.shards;
  result.tool = "sorvik " SORVIK_VERSION;
  return result;
}

// Used on a worker, which may outlive the command after Ctrl-C.
struct Run {
  std::vector<std::string> paths;
  CatalogueOptions options;
  std::string since;
  std::vector<std::unique_ptr<LineWriter>> writers;
  std::exception_ptr failure;
  CatalogueResult result;

  bool Write(std::string_view line) {
    try {
      for (const auto& writer : writers) writer->Write(line);
      return true;
    } catch (const Failure&) {
      failure = std::current_exception();
      return false;
    }
  }

  void Finish() {
    if (failure != nullptr || result.aborted) return;
    try {
      for (const auto& writer : writers) writer->Finish();
    } catch (const Failure&) {
      failure = std::current_exception();
    }
  }
};

void AddWriters(Context& context, Run& run) {
  const Options& options = context.options;
  const bool toOutput = options.output == "-" || (options.output.empty() && options.sqlite.empty());
  if (!toOutput && !options.output.empty()) {
    RefuseFileOfCard(context, options.output);
    run.writers.push_back(WriteLinesToFile(ResolvePath(options.output)));
  }
  if (toOutput) run.writers.push_back(WriteLinesToOutput(context.output));
  if (!options.sqlite.empty()) {
    RefuseFileOfCard(context, options.sqlite);
    run.writers.push_back(WriteLinesToDatabase(ResolvePath(options.sqlite)));
  }
}

// The exit code of the most severe problem.
int ExitCodeOf(const CatalogueResult& result) {
  if (result.anyTransient) return kTransientFailure;
  if (result.anyUnreadable) return kUnreadable;
  if (!result.pathsWithoutCards.empty()) return kNothingFound;
  return result.anyIncomplete ? kFailed : kDone;
}

}  // namespace

int RunCatalog(Context& context) {
  const auto run = std::make_shared<Run>();
  for (const std::string& operand : context.options.operands) {
    run->paths.push_back(ResolvePath(operand));
  }
  run->options = OptionsOf(context.options);
  if (!context.options.since.empty()) {
    const std::string since = ResolvePath(context.options.since);
    run->options.since = Sorvik::CatalogueIndex::Open(since);
    if (!run->options.since) {
      throw Failure(kUnreadable, since, DescribePathError(since, "cannot read"));
    }
  }
  AddWriters(context, *run);
  if (!context.options.output.empty()) context.session.GetProgress().Begin("reading");
  const auto& stop = context.session.Stopped();
  context.session.OnWorker<bool>([run, &stop] {
    run->result = Sorvik::WriteCatalogue(
        run->paths, run->options, [&run](std::string_view line) { return run->Write(line); },
        [&stop] { return stop.load(); });
    run->Finish();
    return true;
  });
  if (run->failure != nullptr) std::rethrow_exception(run->failure);
  for (const std::string& path : run->result.pathsWithoutCards) {
    WriteError(path + ": " + context.session.OnWorker<std::string>([path] {
      return DescribePathError(path, "no card found");
    }));
  }
  return ExitCodeOf(run->result);
}

}  // namespace host
