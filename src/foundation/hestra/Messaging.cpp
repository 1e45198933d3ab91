// SPDX-License-Identifier: MIT
#include "SorvikProvider/foundation/Messaging.h"

#include <deque>
#include <map>
#include <mutex>
#include <new>
#include <utility>

#include "foundation/platform/WakeEvent.h"

namespace Hestra {
namespace {

using tarnwick::utility::ImmutableString;

struct Waiting {
  ImmutableString station;
  std::unique_ptr<Message> message;
};

// The queue to the UI thread. The lock guards the messages; receivers are used by the UI thread
// only.
class Queue {
 public:
  // Never destroyed: workers may still post while the process exits.
  static Queue& Get() {
    static Queue& queue = *new Queue;
    return queue;
  }
  Queue() = default;
  Queue(const Queue&) = delete;
  Queue& operator=(const Queue&) = delete;

  int Descriptor() const noexcept { return event_.Descriptor(); }
  int DuplicateDescriptor() const noexcept { return event_.DuplicateDescriptor(); }

  std::size_t Size() {
    const std::lock_guard lock(mutex_);
    return waiting_.size();
  }

  void Post(const ImmutableString& station, std::unique_ptr<Message> message) {
    Waiting item{station, std::move(message)};
    const std::lock_guard lock(mutex_);
    waiting_.push_back(std::move(item));
    if (waiting_.size() == 1) event_.Set();
  }

  void Register(const ImmutableString& station, StationUtils::Receiver receiver) {
    receivers_[station] = std::make_shared<StationUtils::Receiver>(std::move(receiver));
  }
  void Unregister(const ImmutableString& station) { receivers_.erase(station); }

  // Takes one message at a time, so that a nested call continues with the next one.
  std::size_t Dispatch(std::size_t maxMessages) {
    std::size_t handled = 0;
    while (handled < maxMessages) {
      Waiting item;
      if (!Take(item)) break;
      ++handled;
      Deliver(item);
    }
    return handled;
  }

  bool Wait(int milliseconds) const { return event_.Wait(milliseconds); }

 private:
  // The event stays set while messages are queued, so that the host's loop wakes up again.
  bool Take(Waiting& item) {
    const std::lock_guard lock(mutex_);
    if (waiting_.empty()) return false;
    item = std::move(waiting_.front());
    waiting_.pop_front();
    if (waiting_.empty()) event_.Clear();
    return true;
  }

  void Deliver(Waiting& item) {
    const auto found = receivers_.find(item.station);
    if (found == receivers_.end() || !*found->second) {
      item.message->Discard();
      return;
    }
    // A receiver may unregister itself while it runs.
    const auto receiver = found->second;
    (*receiver)(*item.message);
  }

  std::mutex mutex_;
  std::deque<Waiting> waiting_;
  Sorvik::platform::WakeEvent event_;
  std::map<ImmutableString, std::shared_ptr<StationUtils::Receiver>> receivers_;
};

}  // namespace

std::uint32_t HashMessageTypeNameToMessageID(const char* typeName) noexcept {
  constexpr std::uint32_t kOffsetBasis = 2166136261u;
  constexpr std::uint32_t kPrime = 16777619u;
  std::uint32_t hash = kOffsetBasis;
  for (const char* c = typeName; *c != '\0'; ++c) {
    hash = (hash ^ static_cast<unsigned char>(*c)) * kPrime;
  }
  return hash;
}

Message::~Message() = default;

void Message::Discard() noexcept {}

void* AllocateMessageMemory(std::size_t size) { return ::operator new(size); }

void FreeMessageMemory(void* memory) noexcept { ::operator delete(memory); }

namespace StationUtils {

void PostMessageToUIThread(const ImmutableString& station, const Message& message,
                           [[maybe_unused]] bool flag) {
  Queue::Get().Post(station, message.Clone());
}

void PostMessageToUIThread(const ImmutableString& station, std::unique_ptr<Message> message) {
  if (message) Queue::Get().Post(station, std::move(message));
}

void RegisterStation(const ImmutableString& station, Receiver receiver) {
  Queue::Get().Register(station, std::move(receiver));
}

void UnregisterStation(const ImmutableString& station) { Queue::Get().Unregister(station); }

int GetEventDescriptor() { return Queue::Get().Descriptor(); }

int DuplicateEventDescriptor() { return Queue::Get().DuplicateDescriptor(); }

std::size_t GetQueuedMessageCount() { return Queue::Get().Size(); }

std::size_t Dispatch(std::size_t maxMessages) { return Queue::Get().Dispatch(maxMessages); }

std::size_t WaitAndDispatch(int milliseconds) {
  return Queue::Get().Wait(milliseconds) ? Dispatch() : 0;
}

}  // namespace StationUtils
}  // namespace Hestra
