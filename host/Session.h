// SPDX-License-Identifier: MIT
// The UI thread of this program: asks by queued requests, waits in a poll loop and takes the
// answers as messages. A command reads as a sequence of questions; Ctrl-C or a failed worker ends
// it by an exception out of the question that is waiting.
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
#include "SorvikProvider/foundation/ImmutableString.h"
#include "SorvikProvider/foundation/Messaging.h"
#include "SorvikProvider/frame/FieldModel.h"
#include "SorvikProvider/frame/ProviderMessages.h"
#include "SorvikProvider/frame/ProviderWrapper.h"

namespace host {

class Session {
 public:
  // Starts the library, and shuts it down. A worker that is stuck at the end ends the process.
  Session();
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // The providers that understand `path`, best first.
  std::vector<Sorvik::ProviderWrapper*> Providers(const std::string& path);
  // The entries of `path`.
  Sorvik::ContentMap Content(const Sorvik::ProviderWrapper& provider, const std::string& path,
                             const Sorvik::FieldNameSet& fields);
  // The entries that can be browsed further. The provider is null if nothing understands `path`.
  Sorvik::GetDefaultContentMessage Places(const std::string& path, const std::string& provider);

  // Queues a thumbnail; `receive` gets it while this thread waits, and never after an interrupted
  // wait has ended the session. WaitForPictures takes all. Both throw Interrupted after Ctrl-C.
  using PictureReceiver = std::function<void(Picture)>;
  void RequestPicture(const Sorvik::ProviderWrapper& provider, const std::string& path,
                      const std::string& key, int width, int height, PictureReceiver receive);
  void WaitForPictures();

  // Runs on a worker what the library has no request for. What `work` throws ends the program.
  template <class T>
  T OnWorker(std::function<T()> work) {
    const auto answer = std::make_shared<std::optional<T>>();
    RunOnWorker([answer, work = std::move(work)] { answer->emplace(work()); });
    return std::move(**answer);
  }

  Progress& GetProgress() noexcept { return progress_; }
  // For loops of work on a worker: set once they should end.
  const std::atomic<bool>& Stopped() const noexcept { return interrupts_.Raised(); }
  // Throws Interrupted after Ctrl-C.
  void CheckInterrupt() const;

 private:
  using Abort = std::function<void()>;

  tarnwick::utility::ImmutableString OpenStation(Hestra::StationUtils::Receiver receiver);
  void Expect(const tarnwick::utility::ImmutableString& station, Abort abort);
  template <class MessageT, class Ask>
  MessageT Await(const Ask& ask);
  void RunOnWorker(std::function<void()> work);
  void WaitUntil(const std::function<bool()>& done);
  void DispatchOnce(int milliseconds);
  bool Drain();

  Interrupts interrupts_;
  Progress progress_;
  bool ending_ = false;
  unsigned stations_ = 0;
  std::size_t failures_ = 0;  // requests that will never be answered
  std::map<tarnwick::utility::ImmutableString, Abort> running_;
};

}  // namespace host
