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
// Messages of one sender keep their order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <typeinfo>

#include "SorvikProvider/foundation/Export.h"
#include "SorvikProvider/foundation/ImmutableString.h"

namespace Hestra {

// FNV-1a, 32 bits, of the name of a message's type.
SORVIK_EXPORT std::uint32_t HashMessageTypeNameToMessageID(const char* typeName) noexcept;

class SORVIK_EXPORT Message {
 public:
  virtual ~Message();
  // A new instance with a deep copy of all that the message holds.
  virtual std::unique_ptr<Message> Clone() const = 0;
  virtual std::uint32_t GetMessageID() const noexcept = 0;
  // Called instead of a receiver when nobody will take the message: frees what a receiver would
  // have taken over. The message is destroyed right after.
  virtual void Discard() noexcept;

 protected:
  Message() = default;
  Message(const Message&) = default;
  Message& operator=(const Message&) = default;
};

// Supplies T's clone operation and its id, which is the same in all instances.
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

// Memory of the foundation's allocator, so that a message made on one side of the library's border
// can be freed on the other.
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

// Copies `message` by its clone operation and queues the copy for the UI thread. Any thread; never
// waits. `flag` is the library's word to other queues and has no meaning for this one.
SORVIK_EXPORT void PostMessageToUIThread(const ImmutableString& station, const Message& message,
                                         bool flag);

// Who receives the messages of `station` from now on; a second registration replaces the first.
// UI thread. A message for a station that nobody registered is discarded when its turn comes.
SORVIK_EXPORT void RegisterStation(const ImmutableString& station, Receiver receiver);
SORVIK_EXPORT void UnregisterStation(const ImmutableString& station);

// A descriptor that is readable while a message waits. Owned by the library; don't read or close
// it. -1 if the system has no descriptor left.
SORVIK_EXPORT int GetEventDescriptor();

// Hands up to `most` waiting messages to their receivers on the calling (UI) thread and returns
// their number, messages without a receiver included. What a receiver throws goes to the caller;
// the messages behind it stay queued. A receiver may post, abort, register and unregister; a
// Dispatch from within a receiver does nothing.
SORVIK_EXPORT std::size_t Dispatch(std::size_t most = 64);

// Waits at most `milliseconds` (-1: without end) for a message, then dispatches. For tests and
// programs without a loop of their own.
SORVIK_EXPORT std::size_t WaitAndDispatch(int milliseconds);

}  // namespace StationUtils
}  // namespace Hestra
