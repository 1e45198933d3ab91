// SPDX-License-Identifier: MIT
#include "SorvikProvider/cardtools/CardCheck.h"

#include <utility>

#include "SorvikProvider/frame/ProviderHost.h"
#include "cardtools/CardCheckInput.h"
#include "cardtools/CardContents.h"
#include "cardtools/CardEvaluation.h"
#include "cardtools/CardInventory.h"
#include "cardtools/ProviderLookup.h"
#include "foundation/CallScope.h"
#include "foundation/platform/ShareAccess.h"
#include "frame/CardChecker.h"
#include "frame/ProviderAccess.h"
#include "frame/RequestQueue.h"

namespace Sorvik {
namespace {

const CardChecker* CheckerAt(const ProviderWrapper& wrapper, const std::string& path) {
  const auto* checker = ProviderAccess::InterfaceOf<CardChecker>(wrapper);
  return checker != nullptr && wrapper.CanProvideFor(path) >= 1 ? checker : nullptr;
}

}  // namespace

CardCheckMessage::~CardCheckMessage() = default;

std::string_view NameOf(Finding::Kind kind) {
  static constexpr std::string_view kNames[] = {"missing",  "empty",    "truncated", "unreadable",
                                                "orphaned", "unlisted", "stale",     "differs"};
  return kNames[static_cast<std::size_t>(kind)];
}

std::string_view NameOf(Finding::Severity severity) {
  static constexpr std::string_view kNames[] = {"error", "warning", "note"};
  return kNames[static_cast<std::size_t>(severity)];
}

std::string_view NameOf(CardFileRole role) {
  static constexpr std::string_view kNames[] = {"clip", "structure", "foreign", "hidden"};
  return kNames[static_cast<std::size_t>(role)];
}

bool CanCheckCard(const std::string& path, const std::string& identification) {
  const platform::ShareScope shares(path);
  const ProviderWrapper* wrapper = FindProvider(identification);
  return wrapper != nullptr && CheckerAt(*wrapper, path) != nullptr;
}

CardFindings CheckCard(const std::string& path, const std::string& identification, CheckDepth depth,
                       ProviderRequest* request) {
  return CheckCard(path, identification, depth, CardCheckInput(), request);
}

CardFindings CheckCard(const std::string& path, const std::string& identification, CheckDepth depth,
                       const CardCheckInput& input, ProviderRequest* request) {
  const foundation::CallScope scope;
  const platform::ShareScope shares(path);
  CardFindings none;
  none.depth = depth;
  const ProviderWrapper* wrapper = FindProvider(identification);
  const CardChecker* checker = wrapper == nullptr ? nullptr : CheckerAt(*wrapper, path);
  if (checker == nullptr || ProviderRequest::TestAborted(request)) return none;
  const CardContents contents = input.content == nullptr
                                    ? CardContents(*wrapper, *checker, path, depth, request)
                                    : CardContents(*input.content, *checker, path, depth);
  std::vector<CardContents> others;
  for (const ProviderWrapper* other : ProviderHost::GetAllProviders()) {
    if (other == wrapper || ProviderRequest::TestAborted(request)) continue;
    if (const CardChecker* second = CheckerAt(*other, path)) {
      others.emplace_back(*other, *second, path, CheckDepth::kNames, request);
    }
  }
  const CardInventory inventory(
      path, [request](const std::string&) { return !ProviderRequest::TestAborted(request); },
      input.folders);
  if (input.modificationTimes != nullptr) {
    for (const InventoryFile& file : inventory.Files()) {
      input.modificationTimes->emplace(file.path, file.modified);
    }
  }
  return CardEvaluation(inventory, contents, others, request).Run();
}

CardCheckRequest::CardCheckRequest(tarnwick::utility::ImmutableString station, std::string path,
                                   std::string identification, CheckDepth depth)
    : ProviderRequest(std::move(station), ProviderRef()),
      path_(std::move(path)),
      identification_(std::move(identification)),
      depth_(depth) {}

void CardCheckRequest::Run() {
  auto message = std::make_unique<CardCheckMessage>();
  message->path = path_;
  message->identification = identification_;
  if (!TestAborted()) message->findings = CheckCard(path_, identification_, depth_, this);
  if (TestAborted()) {
    message->findings = {};
    message->result = kResultAborted;
  }
  PostResult(std::move(message));
}

void CardCheckRequest::PostAborted() const {
  CardCheckMessage message;
  message.path = path_;
  message.identification = identification_;
  message.result = kResultAborted;
  Post(message);
}

Hestra::InterfaceRef<ProviderRequest, Hestra::IThreadedQueueRequest> CardCheckRequest::GetRef() {
  return Hestra::InterfaceRef<ProviderRequest, Hestra::IThreadedQueueRequest>(this);
}

Hestra::InterfaceRef<CardCheckRequest, Hestra::IThreadedQueueRequest> RequestCardCheck(
    const std::string& path, const std::string& identification, CheckDepth depth,
    tarnwick::utility::ImmutableString station) {
  const Hestra::InterfaceRef<CardCheckRequest, Hestra::IThreadedQueueRequest> request(
      new CardCheckRequest(std::move(station), path, identification, depth));
  QueueRequest(request);
  return request;
}

}  // namespace Sorvik
