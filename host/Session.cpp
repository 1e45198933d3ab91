// SPDX-License-Identifier: MIT
#include "Session.h"

#include <poll.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "Failure.h"
#include "SorvikProvider/cardtools/ClipPicture.h"
#include "SorvikProvider/foundation/AsyncExecutor.h"
#include "SorvikProvider/frame/ProviderHost.h"

namespace host {
namespace {

namespace StationUtils = Hestra::StationUtils;
using Sorvik::ProviderHost;
using Sorvik::ProviderWrapper;
using tarnwick::utility::ImmutableString;

constexpr char kFailureStation[] = "sorvik/failure";
constexpr auto kDrainTime = std::chrono::milliseconds(1200);

// Posted when a function of RunOnWorker has returned.
struct WorkDone final : Hestra::MessageImpl<WorkDone>, Hestra::Allocated<WorkDone> {};

// Posted when a function on a worker threw: its request posts no message.
struct WorkFailed final : Hestra::MessageImpl<WorkFailed>, Hestra::Allocated<WorkFailed> {
  std::string what;
};

std::string TextOf(const std::exception_ptr& failure) {
  try {
    std::rethrow_exception(failure);
  } catch (const std::exception& exception) {
    return exception.what();
  } catch (...) {
    return "unknown failure";
  }
}

void ReportFailure(const std::exception_ptr& failure) {
  WorkFailed message;
  message.what = TextOf(failure);
  StationUtils::PostMessageToUIThread(kFailureStation, message, false);
}

}  // namespace

Session::Session(bool withAdditionalProviders) {
  if (StationUtils::GetEventDescriptor() < 0) {
    throw Failure(kFailed, "too many open files");
  }
  tarnwick::threads::SetFailureHook(ReportFailure);
  ProviderHost::SetShutdownTimeout(kDrainTime);
  ProviderHost::Initialize();
  if (withAdditionalProviders) ProviderHost::RegisterAdditionalProviders();
  StationUtils::RegisterStation(kFailureStation, [this](const Hestra::Message& message) {
    ++failures_;
    const auto* failed = dynamic_cast<const WorkFailed*>(&message);
    throw Failure(kFailed, "request failed (" + (failed != nullptr ? failed->what : "") + ")");
  });
}

Session::~Session() {
  progress_.Clear();
  if (!Drain()) {
    std::fflush(nullptr);
    std::_Exit(interrupts_.Raised() ? kInterrupted : kFailed);
  }
  StationUtils::UnregisterStation(kFailureStation);
  ProviderHost::Shutdown();
  tarnwick::threads::SetFailureHook({});
}

std::vector<ProviderWrapper*> Session::Providers(const std::string& path) {
  progress_.Begin("looking");
  return Await<Sorvik::GetProviderListMessage>([&](const ImmutableString& station) {
           return ProviderHost::RequestProviderList(path, station);
         })
      .providers;
}

Sorvik::ContentMap Session::Content(const ProviderWrapper& provider, const std::string& path,
                                    const Sorvik::FieldNameSet& fields) {
  progress_.Begin("listing");
  return std::move(Await<Sorvik::GetContentMessage>([&](const ImmutableString& station) {
                     return provider.RequestContent(path, fields, station);
                   }).content);
}

void Session::ReadContent(const ProviderWrapper& provider, const std::string& path,
                          const Sorvik::FieldNameSet& fields,
                          const std::function<void(const Sorvik::ContentMap&)>& read) {
  progress_.Begin("listing");
  // Shared with the receiver, which may outlive an interrupted wait.
  const auto done = std::make_shared<bool>(false);
  const ImmutableString station = OpenStation([this, done, read](const Hestra::Message& message) {
    *done = true;
    const auto* answer = dynamic_cast<const Sorvik::GetContentMessage*>(&message);
    if (answer == nullptr || ending_) return;
    progress_.Clear();
    read(answer->content);
  });
  const auto request = provider.RequestContent(path, fields, station);
  TrackRequest(station, [request] { request->Abort(); });
  WaitUntil([&] { return *done; });
}

Sorvik::CardFindings Session::Check(const std::string& path, const std::string& identification,
                                    Sorvik::CheckDepth depth) {
  progress_.Begin("checking");
  return std::move(Await<Sorvik::CardCheckMessage>([&](const ImmutableString& station) {
                     return Sorvik::RequestCardCheck(path, identification, depth, station);
                   }).findings);
}

Sorvik::JoinResult Session::Join(const std::string& path, const std::string& identification,
                                 const std::string& key, const Sorvik::JoinOptions& options) {
  progress_.Begin("reading");
  return std::move(Await<Sorvik::JoinListsMessage>([&](const ImmutableString& station) {
                     return Sorvik::RequestJoinLists(path, identification, key, options, station);
                   }).joined);
}

Sorvik::GetDefaultContentMessage Session::Places(const std::string& path,
                                                 const std::string& provider) {
  progress_.Begin("listing");
  const Sorvik::ProviderDefaultContentRequest::DataRef data(
      new Sorvik::DefaultContentRequestData(path, provider));
  return Await<Sorvik::GetDefaultContentMessage>([&](const ImmutableString& station) {
    return ProviderHost::RequestDefaultProviderContent(data, station);
  });
}

std::vector<std::string> Session::FindCards(const std::string& path,
                                            Sorvik::SearchDirection direction,
                                            const CardReceiver& receive) {
  progress_.Begin("searching");
  // Shared with the station, which may outlive an interrupted wait.
  const auto done = std::make_shared<bool>(false);
  const auto unreadable = std::make_shared<std::vector<std::string>>();
  const ImmutableString station("sorvik/" + std::to_string(++stations_));
  StationUtils::RegisterStation(
      station, [this, station, done, unreadable, receive](const Hestra::Message& message) {
        const auto* answer = dynamic_cast<const Sorvik::FindCardsMessage*>(&message);
        if (answer == nullptr || answer->isLast) {
          StationUtils::UnregisterStation(station);
          running_.erase(station);
          if (answer != nullptr) *unreadable = answer->unreadableFolders;
          *done = true;
        } else if (!ending_) {
          receive(answer->card);
        }
      });
  const auto request = ProviderHost::RequestCards(path, direction, station);
  TrackRequest(station, [request] { request->Abort(); });
  WaitUntil([&] { return *done; });
  return std::move(*unreadable);
}

void Session::RequestPicture(const ProviderWrapper& provider, const std::string& path,
                             const std::string& key, int width, int height,
                             PictureReceiver receive) {
  const ImmutableString station = OpenPictureStation(std::move(receive));
  const auto request = provider.RequestThumbnail(path, key, width, height, station);
  TrackRequest(station, [request] { request->Abort(); });
}

void Session::RequestClipPicture(const std::string& identification, const std::string& path,
                                 const std::string& key, int width, int height,
                                 PictureReceiver receive) {
  const ImmutableString station = OpenPictureStation(std::move(receive));
  const auto request =
      Sorvik::RequestClipPicture(path, identification, key, width, height, station);
  TrackRequest(station, [request] { request->Abort(); });
}

ImmutableString Session::OpenPictureStation(PictureReceiver receive) {
  CheckInterrupt();  // queueing the requests of a large folder takes time
  return OpenStation([this, receive = std::move(receive)](const Hestra::Message& message) {
    const auto* answer = dynamic_cast<const Sorvik::GetThumbnailMessage*>(&message);
    Picture picture = answer != nullptr ? PictureFromBitplate(answer->thumbnail) : Picture();
    // At the end of a session the objects that the receiver refers to may have been destroyed.
    if (!ending_) receive(std::move(picture));
  });
}

void Session::WaitForPictures(std::size_t running) {
  WaitUntil([this, running] { return running_.size() <= running; });
}

void Session::CheckInterrupt() const {
  if (interrupts_.Raised()) throw Interrupted();
}

// Each request has a station of its own, which identifies its result. The station is unregistered
// with its one message.
ImmutableString Session::OpenStation(StationUtils::Receiver receiver) {
  const ImmutableString station("sorvik/" + std::to_string(++stations_));
  StationUtils::RegisterStation(
      station, [this, station, receiver = std::move(receiver)](const Hestra::Message& message) {
        StationUtils::UnregisterStation(station);
        running_.erase(station);
        receiver(message);
      });
  return station;
}

void Session::TrackRequest(const ImmutableString& station, Abort abort) {
  running_.emplace(station, std::move(abort));
}

template <class MessageT, class Send>
MessageT Session::Await(const Send& send) {
  // Shared with the receiver, which may outlive an interrupted wait.
  const auto answer = std::make_shared<std::optional<MessageT>>();
  const ImmutableString station = OpenStation([answer](const Hestra::Message& message) {
    if (const auto* typed = dynamic_cast<const MessageT*>(&message)) answer->emplace(*typed);
  });
  const auto request = send(station);
  TrackRequest(station, [request] { request->Abort(); });
  WaitUntil([&] { return answer->has_value(); });
  return std::move(**answer);
}

void Session::ShareReads() {
  reads_.emplace();
  readScope_.emplace(*reads_);
}

void Session::RunOnWorker(std::function<void()> work) {
  const auto done = std::make_shared<bool>(false);
  const ImmutableString station = OpenStation([done](const Hestra::Message&) { *done = true; });
  TrackRequest(station, [] {});
  ProviderHost::GetProviderExecutor()->Post([station, reads = reads_, work = std::move(work)] {
    {
      std::optional<Sorvik::SharedReads::Scope> scope;
      if (reads) scope.emplace(*reads);
      work();
    }
    StationUtils::PostMessageToUIThread(station, WorkDone(), false);
  });
  WaitUntil([&] { return *done; });
}

void Session::WaitUntil(const std::function<bool()>& done) {
  while (!done()) {
    DispatchOnce(progress_.TickMilliseconds());
    CheckInterrupt();
    if (!done()) progress_.Tick();
  }
  progress_.Clear();
}

void Session::DispatchOnce(int milliseconds) {
  pollfd waiting[] = {{StationUtils::GetEventDescriptor(), POLLIN, 0},
                      {interrupts_.Descriptor(), POLLIN, 0}};
  if (poll(waiting, 2, milliseconds) > 0 && (waiting[0].revents & POLLIN) != 0) {
    StationUtils::Dispatch();
  }
}

// Aborts the running requests and receives their messages. Returns false if a request doesn't end
// in time.
bool Session::Drain() {
  ending_ = true;
  for (const auto& [station, abort] : running_) abort();
  const auto end = std::chrono::steady_clock::now() + kDrainTime;
  while (running_.size() > failures_ && std::chrono::steady_clock::now() < end) {
    try {
      // Not DispatchOnce: after Ctrl-C its second descriptor stays readable.
      StationUtils::WaitAndDispatch(50);
    } catch (const Failure&) {
      // Only the first failure is reported; later ones are counted.
    }
  }
  return running_.size() <= failures_;
}

}  // namespace host
