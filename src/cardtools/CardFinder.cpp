// SPDX-License-Identifier: MIT
#include "SorvikProvider/cardtools/CardFinder.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>

#include "SorvikProvider/frame/ProviderHost.h"
#include "cardtools/CardInventory.h"
#include "cardtools/CardSearch.h"
#include "cardtools/ProviderLookup.h"
#include "formats/MediaNames.h"
#include "foundation/CallScope.h"
#include "foundation/Paths.h"
#include "foundation/platform/FileSystem.h"
#include "foundation/platform/FolderScan.h"
#include "foundation/platform/MountTable.h"
#include "frame/ProviderAccess.h"
#include "frame/RequestQueue.h"
#include "metadata/ClipProvider.h"

namespace Sorvik {
namespace {

using foundation::JoinPath;
using platform::ScannedType;

constexpr int kMaxParents = 4;
constexpr std::size_t kMaxDepth = 64;
constexpr int kPlainDirectoryScore = 30;
constexpr std::string_view kPrivate = "PRIVATE";

bool IsAsciiIgnoringCase(std::string_view a, std::string_view b) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [lower](char x, char y) {
           return lower(x) == lower(y);
         });
}

// Compares a name with a pattern of a CardLayout.
bool Matches(std::string_view name, std::string_view pattern) {
  if (!pattern.starts_with('*')) return IsAsciiIgnoringCase(name, pattern);
  pattern.remove_prefix(1);
  return name.size() >= pattern.size() &&
         IsAsciiIgnoringCase(name.substr(name.size() - pattern.size()), pattern);
}

}  // namespace

bool MatchesAny(std::string_view name, const std::vector<std::string_view>& patterns) {
  return std::ranges::any_of(patterns,
                             [name](std::string_view pattern) { return Matches(name, pattern); });
}

namespace {

// A provider that takes part in the search. Those that a host has registered have no layout: each
// folder is offered to them, and none belongs to them.
struct Candidate {
  const ProviderWrapper* provider;
  const CardLayout* layout;
};

std::vector<Candidate> ListCandidates() {
  std::vector<Candidate> candidates;
  for (const ProviderWrapper* wrapper : ProviderHost::GetAllProviders()) {
    if (wrapper == nullptr || wrapper->ShouldCheckFilter() || !wrapper->IsFileBased()) continue;
    const auto* clips = ProviderAccess::InterfaceOf<ClipProvider>(*wrapper);
    candidates.push_back({wrapper, clips == nullptr ? nullptr : &clips->GetLayout()});
  }
  return candidates;
}

// A folder that can't be listed may contain media.
bool MayHaveMediaBelow(const std::string& folder, std::size_t depth) {
  std::vector<std::string> folders;
  bool found = false;
  const bool isListed = platform::ScanFolder(folder, [&](std::string_view name, ScannedType type) {
    if (foundation::IsHidden(name)) return true;
    if (type == ScannedType::kFolder) folders.push_back(JoinPath(folder, name));
    found = type != ScannedType::kFolder && formats::HasMediaExtension(name);
    return !found;
  });
  return found || !isListed ||
         (depth < kMaxDepth && std::ranges::any_of(folders, [depth](const auto& below) {
            return MayHaveMediaBelow(below, depth + 1);
          }));
}

// A folder on the way down, with what its listing shows.
struct ScannedFolder {
  std::vector<std::string> folders;   // sorted, without hidden ones
  std::vector<Candidate> candidates;  // those whose root it may be
};

struct Claim {
  Candidate candidate;
  int score;
  bool isKnown = false;  // without asking the provider
};

// Two providers of which one lists the clips of the other.
bool AreAlternatives(const Claim& a, const Claim& b) {
  const auto names = [](const Claim& one, const Claim& other) {
    return one.candidate.layout != nullptr && !one.candidate.layout->alternativeTo.empty() &&
           one.candidate.layout->alternativeTo == other.candidate.provider->GetIdentification();
  };
  return names(a, b) || names(b, a);
}

class CardSearch {
 public:
  CardSearch(std::string path, SearchDirection direction, const CardSearchHooks& hooks,
             ProviderRequest* request)
      : path_(std::move(path)),
        direction_(direction),
        hooks_(hooks),
        request_(request),
        candidates_(ListCandidates()) {}

  void Run() {
    if (hooks_.enter && !hooks_.enter(path_)) return;
    const auto kind = platform::KindOf(path_);
    if (!kind) return;
    if (*kind != platform::FileKind::kDirectory) {
      const std::string folder(foundation::ParentFolder(path_));
      if (!Visit(folder, Scan(folder)).isCard) VisitParents(folder);
      return;
    }
    ScannedFolder root = Scan(path_);
    const VisitResult result = Visit(path_, root);
    if (!result.isCard && VisitParents(path_)) return;
    FindMountsBelow();
    Descend(std::move(root.folders), result.ownFolders);
  }

  // Reports the cards whose root is the path itself.
  void RunWithoutSearch() { Visit(path_, Scan(path_)); }

 private:
  struct VisitResult {
    bool isCard = false;
    std::vector<std::string_view> ownFolders;  // patterns
  };
  struct Pending {
    std::string path;
    std::size_t depth;
    bool isPrivate;  // a folder PRIVATE directly below the start
  };

  bool IsStopped() { return stopped_ || ProviderRequest::TestAborted(request_); }

  ScannedFolder Scan(const std::string& path) const {
    ScannedFolder scanned;
    std::vector<bool> possible(candidates_.size(), false);
    const bool isListed = platform::ScanFolder(path, [&](std::string_view name, ScannedType type) {
      for (std::size_t i = 0; i < candidates_.size(); ++i) {
        const CardLayout* layout = candidates_[i].layout;
        if (!possible[i] && layout != nullptr) possible[i] = MatchesAny(name, layout->rootNames);
      }
      if (type == ScannedType::kFolder && !foundation::IsHidden(name)) {
        scanned.folders.emplace_back(name);
      }
      return true;
    });
    const bool mayHaveCards = path != path_ && !IsSystemName(foundation::FileName(path));
    if (!isListed && mayHaveCards && hooks_.unreadable) hooks_.unreadable(path);
    std::ranges::sort(scanned.folders);
    for (std::size_t i = 0; i < candidates_.size(); ++i) {
      if (possible[i] || candidates_[i].layout == nullptr) {
        scanned.candidates.push_back(candidates_[i]);
      }
    }
    return scanned;
  }

  // Reports the cards whose root is `path`.
  VisitResult Visit(const std::string& path, const ScannedFolder& scanned) {
    VisitResult result;
    std::vector<Claim> claims = Claims(path, scanned.candidates);
    for (const Claim& claim : claims) {
      if (claim.candidate.layout == nullptr) continue;
      const auto& own = claim.candidate.layout->ownFolders;
      result.ownFolders.insert(result.ownFolders.end(), own.begin(), own.end());
    }
    std::erase_if(claims, [&](const Claim& claim) {
      return !claim.isKnown && IsEmptyCard(path, claim, scanned);
    });
    FoundFolder found{path, {}, false};
    for (std::size_t i = 0; i < claims.size(); ++i) {
      const bool listed =
          std::any_of(claims.begin(), claims.begin() + static_cast<std::ptrdiff_t>(i),
                      [&](const Claim& better) { return AreAlternatives(better, claims[i]); });
      if (listed) continue;
      const Claim& claim = claims[i];
      found.cards.push_back({path, claim.candidate.provider->GetIdentification(), claim.score});
      found.hasKnownCards = found.hasKnownCards || claim.isKnown;
    }
    result.isCard = !found.cards.empty();
    if (result.isCard && !IsStopped() && !hooks_.receive(std::move(found))) stopped_ = true;
    return result;
  }

  // Those of the candidates that claim the folder as more than a plain directory, best first.
  std::vector<Claim> Claims(const std::string& path,
                            const std::vector<Candidate>& candidates) const {
    std::vector<Claim> claims;
    if (candidates.empty()) return claims;
    const std::vector<FoundCard> known =
        hooks_.known ? hooks_.known(path) : std::vector<FoundCard>();
    const foundation::CallScope scope;  // all of them look at the same folder
    for (const Candidate& candidate : candidates) {
      const std::string id = candidate.provider->GetIdentification();
      const auto found = std::ranges::find(known, id, &FoundCard::identification);
      if (found != known.end()) {
        claims.push_back({candidate, found->score, true});
      } else if (!IsCovered(candidate, known)) {
        const int score = candidate.provider->CanProvideFor(path);
        if (score > kPlainDirectoryScore) claims.push_back({candidate, score});
      }
    }
    std::ranges::stable_sort(claims, std::ranges::greater(), &Claim::score);
    return claims;
  }

  // Whether the answer of the candidate depends only on files of the known cards: it can
  // only have changed if one of them has.
  static bool IsCovered(const Candidate& candidate, const std::vector<FoundCard>& known) {
    if (candidate.layout == nullptr || known.empty()) return false;
    return std::ranges::all_of(candidate.layout->ownFolders, [&known](std::string_view folder) {
      return std::ranges::any_of(known, [folder](const FoundCard& card) {
        const CardLayout* layout = LayoutOf(card.identification);
        return layout != nullptr && std::ranges::count(layout->ownFolders, folder) > 0;
      });
    });
  }

  // Cameras make the folders of several structures when they format a medium.
  bool IsEmptyCard(const std::string& path, const Claim& claim, const ScannedFolder& scanned) {
    if (claim.candidate.layout == nullptr) return false;
    const auto& own = claim.candidate.layout->ownFolders;
    if (own.empty()) return false;
    const bool hasMedia = std::ranges::any_of(scanned.folders, [&](const std::string& name) {
      return MatchesAny(name, own) && MayHaveMediaBelow(JoinPath(path, name), 1);
    });
    // A card that has lost all its media still has clips, which some providers list by their
    // metadata only.
    if (hasMedia) return false;
    FieldNameSet fields{kPathField};
    if (!claim.candidate.layout->hasClipsByName) fields.insert("duration");
    return claim.candidate.provider->GetContent(path, fields, request_).empty();
  }

  // Reports the innermost card that contains `path`. Returns false if there is none.
  bool VisitParents(const std::string& path) {
    std::string inner = path;
    for (int level = 0; level < kMaxParents && inner.size() > 1 && !IsStopped(); ++level) {
      const std::string_view name = foundation::FileName(inner);
      std::string parent(foundation::ParentFolder(inner));
      ScannedFolder scanned;
      for (const Candidate& candidate : candidates_) {
        if (candidate.layout != nullptr && MatchesAny(name, candidate.layout->ownFolders)) {
          scanned.candidates.push_back(candidate);
        }
      }
      scanned.folders.emplace_back(name);
      if (!scanned.candidates.empty() && Visit(parent, scanned).isCard) return true;
      inner = std::move(parent);
    }
    return false;
  }

  // The mount table has paths without links. No link is followed on the way down, so that the path
  // without links is needed once.
  void FindMountsBelow() {
    const foundation::CallScope scope;
    const std::string real = platform::ResolveLinks(path_);
    if (real.empty()) return;
    const std::string prefix = JoinPath(real, {});
    const auto table = platform::MountTable::Current();
    for (const platform::Mount& mount : table->Mounts()) {
      if (mount.mountPoint.size() <= prefix.size() || !mount.mountPoint.starts_with(prefix)) {
        continue;
      }
      mountsBelow_.push_back(JoinPath(path_, mount.mountPoint.substr(prefix.size())));
    }
  }

  bool MayDescend(const Pending& folder) const {
    if (folder.depth > kMaxDepth) return false;
    if (direction_ == SearchDirection::kDeep) return true;
    return folder.depth <= 1 || (folder.depth == 2 && folder.isPrivate);
  }

  void Push(const std::string& parent, const std::vector<std::string>& names, std::size_t depth,
            bool isPrivate, const std::vector<std::string_view>& ownFolders) {
    // The last one is taken first.
    for (auto name = names.rbegin(); name != names.rend(); ++name) {
      if (MatchesAny(*name, ownFolders)) continue;
      Pending folder{JoinPath(parent, *name), depth, isPrivate};
      if (depth == 1) folder.isPrivate = IsAsciiIgnoringCase(*name, kPrivate);
      if (MayDescend(folder) && !std::ranges::count(mountsBelow_, folder.path)) {
        pending_.push_back(std::move(folder));
      }
    }
  }

  void Descend(const std::vector<std::string>& names,
               const std::vector<std::string_view>& ownFolders) {
    Push(path_, names, 1, false, ownFolders);
    while (!pending_.empty() && !IsStopped()) {
      const Pending folder = std::move(pending_.back());
      pending_.pop_back();
      if (hooks_.enter && !hooks_.enter(folder.path)) continue;
      const ScannedFolder scanned = Scan(folder.path);
      const VisitResult result = Visit(folder.path, scanned);
      Push(folder.path, scanned.folders, folder.depth + 1, folder.isPrivate, result.ownFolders);
    }
  }

  const std::string path_;
  const SearchDirection direction_;
  const CardSearchHooks& hooks_;
  ProviderRequest* const request_;
  const std::vector<Candidate> candidates_;
  std::vector<std::string> mountsBelow_;
  std::vector<Pending> pending_;
  bool stopped_ = false;
};

}  // namespace

void SearchCards(const std::string& path, SearchDirection direction, const CardSearchHooks& hooks,
                 ProviderRequest* request) {
  if (!foundation::IsValidPath(path)) return;
  CardSearch(foundation::NormalizedPath(path), direction, hooks, request).Run();
}

std::vector<FoundCard> CardsAt(const std::string& path, ProviderRequest* request) {
  std::vector<FoundCard> cards;
  CardSearchHooks hooks;
  hooks.receive = [&cards](FoundFolder folder) {
    cards = std::move(folder.cards);
    return true;
  };
  CardSearch(path, SearchDirection::kNearby, hooks, request).RunWithoutSearch();
  return cards;
}

const CardLayout* LayoutOf(std::string_view identification) {
  const ProviderWrapper* provider = FindProvider(identification);
  if (provider == nullptr) return nullptr;
  const auto* clips = ProviderAccess::InterfaceOf<ClipProvider>(*provider);
  return clips == nullptr ? nullptr : &clips->GetLayout();
}

namespace {

CardSearchHooks HooksFor(const std::function<bool(const FoundCard&)>& receive,
                         ProviderRequest* request) {
  CardSearchHooks hooks;
  hooks.receive = [&receive, request](const FoundFolder& folder) {
    for (const FoundCard& card : folder.cards) {
      if (ProviderRequest::TestAborted(request) || !receive(card)) return false;
    }
    return true;
  };
  return hooks;
}

}  // namespace

void ForEachCard(const std::string& path, SearchDirection direction,
                 const std::function<bool(const FoundCard&)>& receive, ProviderRequest* request) {
  SearchCards(path, direction, HooksFor(receive, request), request);
}

std::vector<FoundCard> FindCards(const std::string& path, SearchDirection direction,
                                 ProviderRequest* request) {
  std::vector<FoundCard> cards;
  ForEachCard(
      path, direction,
      [&cards](const FoundCard& card) {
        cards.push_back(card);
        return true;
      },
      request);
  return cards;
}

FindCardsMessage::~FindCardsMessage() = default;

FindCardsRequest::FindCardsRequest(tarnwick::utility::ImmutableString station, std::string path,
                                   SearchDirection direction)
    : ProviderRequest(std::move(station), ProviderRef()),
      path_(std::move(path)),
      direction_(direction) {}

void FindCardsRequest::Run() {
  FindCardsMessage last;
  last.path = path_;
  last.isLast = true;
  last.result = kResultNoContent;
  const std::function<bool(const FoundCard&)> post = [&](const FoundCard& card) {
    FindCardsMessage message;
    message.path = path_;
    message.card = card;
    last.result = kResultDone;
    return PostPart(message);
  };
  CardSearchHooks hooks = HooksFor(post, this);
  hooks.unreadable = [&last](const std::string& folder) {
    last.unreadableFolders.push_back(folder);
  };
  if (!TestAborted()) SearchCards(path_, direction_, hooks, this);
  if (TestAborted()) {
    last.result = kResultAborted;
    last.unreadableFolders.clear();
  }
  PostResult(last);
}

void FindCardsRequest::PostAborted() const {
  FindCardsMessage last;
  last.path = path_;
  last.isLast = true;
  last.result = kResultAborted;
  Post(last);
}

Hestra::InterfaceRef<ProviderRequest, Hestra::IThreadedQueueRequest> FindCardsRequest::GetRef() {
  return Hestra::InterfaceRef<ProviderRequest, Hestra::IThreadedQueueRequest>(this);
}

Hestra::InterfaceRef<FindCardsRequest, Hestra::IThreadedQueueRequest> ProviderHost::RequestCards(
    const std::string& path, SearchDirection direction,
    tarnwick::utility::ImmutableString station) {
  const Hestra::InterfaceRef<FindCardsRequest, Hestra::IThreadedQueueRequest> request(
      new FindCardsRequest(std::move(station), path, direction));
  QueueRequest(request);
  return request;
}

}  // namespace Sorvik
