// SPDX-License-Identifier: MIT
// Messages from workers to the host's UI thread.
//
// A host registers a receiver under a station name, watches the event descriptor in its loop (poll,
// GLib, Qt, asio) and calls Dispatch on its UI thread when it is readable:
//
//   StationUtils::RegisterStation("browser", [](const Hestra::Message& m) { ... });
//   pollfd waiting{StationUtils::GetEventDescriptor(), POLLIN, 0};
//   while (running && poll(&waiting, 1, -1) >= 0) StationUtils::Dispatch();
//
// Messages from one thread keep their order. The queue has no limit: blocking a sender could block
// the UI thread that waits for it, and a dropped message would leave a request without its answer.
// Each request posts one message, so a host bounds the queue by the number of requests that it
// has running. A host's own sender that may be faster than its UI thread checks
// GetQueuedMessageCount.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <typeinfo>

#include "SorvikProvider/foundation/Export.h"
#include "SorvikProvider/foundation/ImmutableString.h"

namespace Hestra {

// The 32-bit FNV-1a hash of the name of a message type.
SORVIK_EXPORT std::uint32_t HashMessageTypeNameToMessageID(const char* typeName) noexcept;

class SORVIK_EXPORT Message {
 public:
  virtual ~Message();
  // Returns a deep copy.
  virtual std::unique_ptr<Message> Clone() const = 0;
  virtual std::uint32_t GetMessageID() const noexcept = 0;
  // Called if the message has no receiver: frees the resources that the receiver would own. The
  // message is destroyed right after.
  virtual void Discard() noexcept;

 protected:
  Message() = default;
  Message(const Message&) = default;
  Message& operator=(const Message&) = default;
};

// Implements Clone and GetMessageID for T. All instances have the same id.
template <class T>
class MessageImpl : public Message {
 public:
  std::unique_ptr<Message> Clone() const override {
    return std::make_unique<T>(static_cast<const T&>(*this));
  }
  std::uint32_t GetMessageID() const noexcept override { return StaticMessageID(); }
  static std::uint32_t StaticMessageID() noexcept {
    static const std::uint32_t id = HashMessageTypeNameToMessageID(typeid(T).name());
    return id;
  }
};

// The library's allocator, so that the host can free a message of the library and vice versa.
SORVIK_EXPORT void* AllocateMessageMemory(std::size_t size);
SORVIK_EXPORT void FreeMessageMemory(void* memory) noexcept;

template <class T>
class Allocated {
 public:
  static void* operator new(std::size_t size) { return AllocateMessageMemory(size); }
  static void* operator new(std::size_t, void* place) noexcept { return place; }
  static void operator delete(void* memory) noexcept { FreeMessageMemory(memory); }
};

namespace StationUtils {

using tarnwick::utility::ImmutableString;
using Receiver = std::function<void(const Message&)>;

// Queues a clone of `message` for the UI thread. Any thread; locks the queue for the time of a
// push. `flag` is ignored.
SORVIK_EXPORT void PostMessageToUIThread(const ImmutableString& station, const Message& message,
                                         bool flag);
// The same for a message that isn't copied, such as a large listing.
SORVIK_EXPORT void PostMessageToUIThread(const ImmutableString& station,
                                         std::unique_ptr<Message> message);

// Registers the receiver of `station`; a second registration replaces the first. UI thread.
// Messages for a station without a receiver are discarded when they are dispatched.
SORVIK_EXPORT void RegisterStation(const ImmutableString& station, Receiver receiver);
SORVIK_EXPORT void UnregisterStation(const ImmutableString& station);

// A descriptor that is readable while messages are queued. Owned by the library; don't read or
// close it. -1 if the process has no descriptor left.
SORVIK_EXPORT int GetEventDescriptor();

// Returns a new descriptor that is readable at the same times, for event loops that close what they
// are given, such as asio's stream_descriptor. Owned by the caller; don't read it. -1 if the
// process has no descriptor left.
SORVIK_EXPORT int DuplicateEventDescriptor();

// The number of messages that are queued and not yet dispatched. Any thread.
SORVIK_EXPORT std::size_t GetQueuedMessageCount();

// Passes up to `maxMessages` queued messages to their receivers on the calling (UI) thread. Returns
// the number of messages, those without a receiver included. Exceptions of a receiver propagate;
// the messages after it stay queued. A receiver may post, abort, register and unregister. It may
// also run a nested event loop, such as a modal dialog: a nested Dispatch delivers the messages
// after the current one, in order, and may call the same receiver again.
SORVIK_EXPORT std::size_t Dispatch(std::size_t maxMessages = 64);

// Waits at most `milliseconds` (-1: forever) for a message, then dispatches. For tests and for
// programs without an event loop.
SORVIK_EXPORT std::size_t WaitAndDispatch(int milliseconds);

}  // namespace StationUtils
}  // namespace Hestra
