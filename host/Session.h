// SPDX-License-Identifier: MIT
// The UI thread of this program: queues requests, waits in a poll loop and receives the results as
// messages, so that a command can be written as a sequence of calls. A call that is waiting throws
// Interrupted after Ctrl-C, and Failure after an exception on a worker.
#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Interrupts.h"
#include "Picture.h"
#include "Progress.h"
#include "SorvikProvider/cardtools/CardCheck.h"
#include "SorvikProvider/cardtools/CardFinder.h"
#include "SorvikProvider/cardtools/JoinList.h"
#include "SorvikProvider/foundation/ImmutableString.h"
#include "SorvikProvider/foundation/Messaging.h"
#include "SorvikProvider/frame/FieldModel.h"
#include "SorvikProvider/frame/ProviderMessages.h"
#include "SorvikProvider/frame/ProviderWrapper.h"
#include "SorvikProvider/frame/SharedReads.h"

namespace host {

class Session {
 public:
  // Initializes the library; the destructor shuts it down. If a worker is still blocked then, the
  // process exits.
  // `withAdditionalProviders` registers the providers of newer cards, too.
  explicit Session(bool withAdditionalProviders = true);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // Returns the providers that claim `path`, best first.
  std::vector<Sorvik::ProviderWrapper*> Providers(const std::string& path);
  // Returns the entries of `path`.
  Sorvik::ContentMap Content(const Sorvik::ProviderWrapper& provider, const std::string& path,
                             const Sorvik::FieldNameSet& fields);
  // Calls `read` with the entries of `path` while they are in the message: they aren't copied.
  void ReadContent(const Sorvik::ProviderWrapper& provider, const std::string& path,
                   const Sorvik::FieldNameSet& fields,
                   const std::function<void(const Sorvik::ContentMap&)>& read);
  // Checks the structure at `path` as that provider understands it.
  Sorvik::CardFindings Check(const std::string& path, const std::string& identification,
                             Sorvik::CheckDepth depth);
  // Makes the list that joins the files of an entry, or of all entries if `key` is empty.
  Sorvik::JoinResult Join(const std::string& path, const std::string& identification,
                          const std::string& key, const Sorvik::JoinOptions& options);
  // Returns the entries that can be browsed further. The message's provider is null if none claims
  // `path`.
  Sorvik::GetDefaultContentMessage Places(const std::string& path, const std::string& provider);

  // Calls `receive` with each card as it is found. Returns the folders that can't be listed.
  using CardReceiver = std::function<void(const Sorvik::FoundCard&)>;
  std::vector<std::string> FindCards(const std::string& path, Sorvik::SearchDirection direction,
                                     const CardReceiver& receive);

  // Queues a thumbnail request. `receive` is called while this thread waits, and never after the
  // session has begun to end. WaitForPictures waits for them. All throw Interrupted after Ctrl-C.
  using PictureReceiver = std::function<void(Picture)>;
  void RequestPicture(const Sorvik::ProviderWrapper& provider, const std::string& path,
                      const std::string& key, int width, int height, PictureReceiver receive);
  // The same for the picture of a clip; the answer is empty if it has none.
  void RequestClipPicture(const std::string& identification, const std::string& path,
                          const std::string& key, int width, int height, PictureReceiver receive);
  // Waits until at most `running` requests are left.
  void WaitForPictures(std::size_t running = 0);

  // From now on, calls and requests share what the library reads (frame/SharedReads.h). For a
  // command with a call for each entry of one card.
  void ShareReads();

  // Runs `work` on a worker, for operations that the library has no request for. Throws Failure if
  // `work` throws.
  template <class T>
  T OnWorker(std::function<T()> work) {
    const auto answer = std::make_shared<std::optional<T>>();
    RunOnWorker([answer, work = std::move(work)] { answer->emplace(work()); });
    return std::move(**answer);
  }

  Progress& GetProgress() noexcept { return progress_; }
  // Set after Ctrl-C; loops on a worker poll it.
  const std::atomic<bool>& Stopped() const noexcept { return interrupts_.Raised(); }
  // Throws Interrupted after Ctrl-C.
  void CheckInterrupt() const;

 private:
  using Abort = std::function<void()>;

  tarnwick::utility::ImmutableString OpenPictureStation(PictureReceiver receive);
  tarnwick::utility::ImmutableString OpenStation(Hestra::StationUtils::Receiver receiver);
  void TrackRequest(const tarnwick::utility::ImmutableString& station, Abort abort);
  template <class MessageT, class Send>
  MessageT Await(const Send& send);
  void RunOnWorker(std::function<void()> work);
  void WaitUntil(const std::function<bool()>& done);
  void DispatchOnce(int milliseconds);
  bool Drain();

  Interrupts interrupts_;
  Progress progress_;
  std::optional<Sorvik::SharedReads> reads_;
  std::optional<Sorvik::SharedReads::Scope> readScope_;
  bool ending_ = false;
  unsigned stations_ = 0;
  std::size_t failures_ = 0;  // requests that will never post a message
  std::map<tarnwick::utility::ImmutableString, Abort> running_;
};

}  // namespace host
