// SPDX-License-Identifier: MIT
#include <map>
#include <memory>
#include <mutex>

#include "Commands.h"
#include "Failure.h"
#include "Paths.h"
#include "PictureList.h"
#include "SorvikProvider/foundation/ReadFailures.h"
#include "TerminalPictures.h"

namespace host {

namespace {

using Sorvik::ContentMap;
using Sorvik::FoundCard;
using Sorvik::ProviderWrapper;

// Looking for cards in each of many folders takes too long for a hint.
constexpr std::size_t kMaxEntriesForHint = 256;

// Collects the indexes, clip records and folders that a listing can't read while it exists.
class UnreadableFiles {
 public:
  UnreadableFiles() {
    Sorvik::SetReadFailureHandler([list = list_](const Sorvik::ReadFailure& failure) {
      const std::lock_guard lock(list->mutex);
      list->reasons.emplace(failure.path, failure.reason);
    });
  }
  ~UnreadableFiles() { Sorvik::SetReadFailureHandler({}); }
  UnreadableFiles(const UnreadableFiles&) = delete;
  UnreadableFiles& operator=(const UnreadableFiles&) = delete;

  // Writes one line for each on stderr. Returns the exit code.
  int Report(Output& output) const {
    const std::lock_guard lock(list_->mutex);
    if (list_->reasons.empty()) return kDone;
    output.Flush();
    for (const auto& [path, reason] : list_->reasons) {
      WriteError(path + ": cannot read (" + reason + ")");
    }
    return kFailed;
  }

 private:
  struct List {
    std::mutex mutex;
    std::map<std::string, std::string> reasons;  // by path
  };
  const std::shared_ptr<List> list_ = std::make_shared<List>();  // outlives a late call
};

bool IsPlainFolder(const ProviderWrapper& provider) {
  return provider.ShouldCheckFilter() && provider.IsFileBased();
}

std::vector<Column> ChosenColumns(const Options& options, const ProviderWrapper& provider) {
  if (!options.fields && !options.all) return DefaultColumns(provider);
  return ColumnsOf(provider, ChosenFields(options, provider, {}));
}

// Writes the entries from the message, since a large folder has gigabytes of them. Returns their
// number. JSON has the provider's default fields; tables have columns of their own.
std::size_t ListJson(Context& context, const ProviderWrapper& provider, const std::string& path) {
  const Sorvik::FieldNameList fields =
      ChosenFields(context.options, provider, provider.GetDefaultFieldList());
  std::size_t count = 0;
  const auto write = [&](const ContentMap& content) {
    WriteEntriesJson(context.output, path, provider.GetIdentification(), content);
  };
  context.session.ReadContent(provider, path, {fields.begin(), fields.end()},
                              [&](const ContentMap& content) {
                                count = content.size();
                                if (count > 0) write(content);
                              });
  if (count == 0) {
    RequireReadable(context, path);
    write({});
  }
  return count;
}

// Returns the number of entries.
std::size_t List(Context& context, const ProviderWrapper& provider, const std::string& path) {
  const Options& options = context.options;
  if (options.json) return ListJson(context, provider, path);
  const std::vector<Column> columns = ChosenColumns(options, provider);
  const Sorvik::FieldNameList fields = FieldsOf(columns);
  const ContentMap content = ListEntries(context, provider, path, fields);
  const PictureProtocol protocol = ChooseProtocol(options.thumbs, context.output.IsTerminal());
  if (protocol != PictureProtocol::kNone) {
    WritePictureList(context, provider, path, fields, content, protocol);
  } else {
    WriteEntriesTable(context, path, columns, content);
  }
  return content.size();
}

// Reports cards next to a path that was listed as a plain folder.
void ReportNearbyCards(Context& context, const std::string& path) {
  const std::vector<FoundCard> cards = NearbyCards(context, path).cards;
  if (cards.empty()) return;
  std::string message = path + ": a plain folder; card nearby: " + cards.front().path;
  if (cards.size() > 1) message += " and " + std::to_string(cards.size() - 1) + " more";
  context.output.Flush();
  WriteError(message);
}

// Lists each card, with its path as a heading unless it is the path that was asked for.
void ListCards(Context& context, const std::string& path, const std::vector<FoundCard>& cards) {
  const bool forPeople = !context.options.json && context.options.form == TableForm::kAligned;
  const bool headings = forPeople && (cards.size() > 1 || cards.front().path != path);
  for (std::size_t i = 0; i < cards.size(); ++i) {
    const ProviderWrapper& provider = ProviderOf(cards[i]);
    if (headings) {
      context.output.Write(i == 0 ? "" : "\n");
      context.output.Write(
          context.output.Shown(cards[i].path + " (" + provider.GetUIString() + ")") + "\n");
    }
    List(context, provider, cards[i].path);
  }
}

}  // namespace

int RunLs(Context& context) {
  const Options& options = context.options;
  const std::string path =
      ResolvePath(options.operands.empty() ? Sorvik::kVolumeListPath : options.operands.front());
  if (options.nearby && options.provider.empty()) {
    const CardsOfPath found = NearbyCards(context, path);
    if (!found.cards.empty()) {
      const UnreadableFiles unreadable;
      ListCards(context, path, found.cards);
      return std::max(unreadable.Report(context.output),
                      ReportUnreadable(context, found.unreadableFolders));
    }
  }
  const ProviderWrapper& provider = ChooseProvider(context, path);
  if (!IsPlainFolder(provider)) {
    const UnreadableFiles unreadable;
    List(context, provider, path);
    return unreadable.Report(context.output);
  }
  const std::size_t entries = List(context, provider, path);
  if (!options.nearby && entries <= kMaxEntriesForHint) ReportNearbyCards(context, path);
  return kDone;
}

}  // namespace host
