// SPDX-License-Identifier: MIT
#include <algorithm>
#include <optional>
#include <vector>

#include "CardReport.h"
#include "Commands.h"
#include "CopyComparison.h"
#include "Failure.h"
#include "Json.h"
#include "OfflineCatalogue.h"
#include "Paths.h"

namespace host {
namespace {

using Sorvik::CardFile;
using Sorvik::Finding;

// The files of the card that a copy must contain, those on other cards left out.
std::vector<const CardFile*> FilesToCompare(const CardReport& report) {
  std::vector<const CardFile*> files;
  for (const CardFile& file : report.result.files) {
    const bool isBelow = RelativePath(file.path, report.path) != file.path;
    if (file.isPartOfCopy && isBelow) files.push_back(&file);
  }
  return files;
}

// Empty folders that the structure needs: without them a copy may not be recognised as a card.
void AddMissingFolders(Context& context, const CardReport& report,
                       std::vector<Finding>& differences) {
  const bool isCard = context.session.OnWorker<bool>(
      [copy = report.against, id = report.provider] { return Sorvik::CanCheckCard(copy, id); });
  for (const std::string& folder : report.result.emptyFolders) {
    if (IsFolder(report.against + "/" + RelativePath(folder, report.path))) continue;
    differences.push_back(
        {Finding::Kind::kDiffers,
         isCard ? Finding::Severity::kWarning : Finding::Severity::kError,
         "folder",
         folder,
         {},
         isCard ? "missing in the copy" : "missing in the copy, which is no card without it"});
  }
}

// Works file by file, so that the progress is shown.
void CompareWithCopy(Context& context, CardReport& report) {
  Session& session = context.session;
  const std::vector<const CardFile*> files = FilesToCompare(report);
  std::vector<Finding> differences;
  const auto& stop = session.Stopped();
  session.GetProgress().Begin("comparing", files.size());
  for (const CardFile* file : files) {
    const std::string name = RelativePath(file->path, report.path);
    const std::string copy = report.against + "/" + name;
    session.GetProgress().AddItem(name);
    auto difference = session.OnWorker<std::optional<std::string>>(
        [file, copy, hashed = report.hashed, &stop]() -> std::optional<std::string> {
          if (auto size = CompareSize(*file, copy)) return size;
          if (hashed) return CompareContents(file->path, copy, stop);
          return std::nullopt;
        });
    if (difference) differences.push_back(MakeDifference(*file, std::move(*difference)));
    session.GetProgress().FinishItem(name);
  }
  AddMissingFolders(context, report, differences);
  if (std::ranges::any_of(differences, [](const Finding& finding) {
        return finding.severity == Finding::Severity::kError;
      })) {
    report.result.complete = false;
  }
  auto& findings = report.result.findings;
  findings.insert(findings.begin(), differences.begin(), differences.end());
}

// `root` is the folder that the copy is a copy of; the card can be below it.
void CompareIfWanted(Context& context, const std::string& root, CardReport& report) {
  const Options& options = context.options;
  if (options.against.empty()) return;
  report.against = ResolvePath(options.against);
  if (const std::string below = RelativePath(report.path, root); below != report.path) {
    report.against += "/" + below;
  }
  if (!IsFolder(report.against)) {
    throw Failure(kFailed, report.against, DescribePathError(report.against, "Not a directory"));
  }
  report.hashed = options.hash;
  CompareWithCopy(context, report);
}

CardReport MakeReport(Context& context, const std::string& root, const std::string& path,
                      const std::string& provider) {
  const Options& options = context.options;
  CardReport report{path, provider, {}, false, {}};
  const auto depth = options.quick ? Sorvik::CheckDepth::kNames : Sorvik::CheckDepth::kStructure;
  report.result = context.session.Check(path, provider, depth);
  CompareIfWanted(context, root, report);
  return report;
}

std::vector<CardReport> ReportsOfCatalogue(Context& context, const std::string& path) {
  std::vector<CardReport> reports;
  for (Sorvik::CataloguedCard& card : CataloguedCards(context, path)) {
    reports.push_back({card.path, card.identification, {}, false, std::move(card.findings)});
    CompareIfWanted(context, path, reports.back());
  }
  return reports;
}

}  // namespace

CardsOfPath CardsFor(Context& context, const std::string& path) {
  std::vector<Sorvik::FoundCard> candidates;
  const bool isChosen = !context.options.provider.empty();
  if (isChosen) {
    candidates.push_back({path, ChooseProvider(context, path).GetIdentification(), 0});
  } else {
    const auto providers = context.session.Providers(path);
    if (providers.empty()) FailUnclaimedPath(context, path);
    for (const auto* provider : providers) {
      candidates.push_back({path, provider->GetIdentification(), 0});
    }
  }
  const auto checkable = [&context](const std::vector<Sorvik::FoundCard>& cards) {
    return context.session.OnWorker<std::vector<Sorvik::FoundCard>>([cards] {
      std::vector<Sorvik::FoundCard> kept = cards;
      std::erase_if(kept, [](const Sorvik::FoundCard& card) {
        return !Sorvik::CanCheckCard(card.path, card.identification);
      });
      return kept;
    });
  };
  CardsOfPath result{checkable(candidates), {}};
  std::vector<Sorvik::FoundCard>& cards = result.cards;
  if (isChosen) return result;
  const bool isCard = !cards.empty();
  CardsOfPath nearby = NearbyCards(context, path);
  for (Sorvik::FoundCard& card : checkable(nearby.cards)) {
    const bool isBelow = RelativePath(card.path, path) != card.path;
    if (!isCard || isBelow) cards.push_back(std::move(card));
  }
  result.unreadableFolders = std::move(nearby.unreadableFolders);
  // What is unreadable in a card is a finding of that card.
  std::erase_if(result.unreadableFolders, [&cards](const std::string& folder) {
    return std::ranges::any_of(cards, [&folder](const Sorvik::FoundCard& card) {
      return RelativePath(folder, card.path) != folder;
    });
  });
  return result;
}

std::vector<CardFile> MediumFiles(Context& context, const std::string& path,
                                  const std::vector<Sorvik::FoundCard>& cards,
                                  Sorvik::MediumFileScope scope) {
  const auto& stop = context.session.Stopped();
  return context.session.OnWorker<std::vector<CardFile>>([&path, &cards, scope, &stop] {
    return Sorvik::ListMediumFiles(path, cards, scope, [&stop] { return stop.load(); });
  });
}

namespace {

// A file below another card's root belongs to that card.
void RemoveFilesOfInnerCards(std::vector<CardReport>& reports) {
  for (CardReport& report : reports) {
    std::erase_if(report.result.files, [&](const CardFile& file) {
      return file.role == Sorvik::CardFileRole::kForeign &&
             std::ranges::any_of(reports, [&](const CardReport& other) {
               return RelativePath(other.path, report.path) != other.path &&
                      RelativePath(file.path, other.path) != file.path;
             });
    });
  }
}

// What is on the medium outside its cards.
CardReport MakeMediumReport(Context& context, const std::string& path, const CardsOfPath& found) {
  CardReport report{path, ChooseProvider(context, path).GetIdentification(), {}, false, {}};
  report.isMedium = true;
  report.result.complete = found.unreadableFolders.empty();
  for (const std::string& folder : found.unreadableFolders) {
    report.result.findings.push_back(
        {Finding::Kind::kUnreadable,
         Finding::Severity::kError,
         "folder",
         folder,
         {},
         context.session.OnWorker<std::string>([folder] { return ListingError(folder); })});
  }
  if (!context.options.files) return report;
  report.result.files = MediumFiles(context, path, found.cards, Sorvik::MediumFileScope::kAll);
  for (const CardFile& file : report.result.files) {
    if (file.isPartOfCopy) report.result.bytes += file.bytes;
  }
  return report;
}

std::vector<CardReport> MakeReports(Context& context, const std::string& path) {
  if (!context.options.catalog.empty()) return ReportsOfCatalogue(context, path);
  const CardsOfPath found = CardsFor(context, path);
  if (found.cards.empty()) {
    ReportUnreadable(context, found.unreadableFolders);
    RequireReadable(context, path);
    throw Failure(kFailed, path, "not a camera card or clip folder");
  }
  std::vector<CardReport> reports;
  for (const Sorvik::FoundCard& card : found.cards) {
    reports.push_back(MakeReport(context, path, card.path, card.identification));
  }
  RemoveFilesOfInnerCards(reports);
  CardReport medium = MakeMediumReport(context, path, found);
  if (!medium.result.files.empty() || !medium.result.findings.empty()) {
    reports.push_back(std::move(medium));
  }
  return reports;
}

}  // namespace

int RunCheck(Context& context) {
  const std::string path = ResolvePath(context.options.operands.front());
  const std::vector<CardReport> reports = MakeReports(context, path);
  if (context.options.json) {
    JsonWriter json(context.output);
    if (reports.size() > 1) json.BeginArray();
    for (const CardReport& report : reports) {
      WriteReportJson(json, report, context.options.files);
    }
    if (reports.size() > 1) json.EndArray();
  } else {
    for (const CardReport& report : reports) {
      if (reports.size() > 1 || report.path != path) {
        context.output.Write(context.output.Shown(report.path + ": " + report.provider) + "\n");
      }
      WriteReportText(context.output, report, context.options.files);
    }
  }
  return std::ranges::all_of(reports,
                             [](const CardReport& report) { return report.result.complete; })
             ? kDone
             : kFailed;
}

}  // namespace host
