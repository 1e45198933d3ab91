// SPDX-License-Identifier: MIT
// The entry point of the library: finds the providers for a path, best first.
//
//   Sorvik::ProviderHost::Initialize();
//   auto providers = Sorvik::ProviderHost::GetProviderList("/media/card");
//   ...
//   Sorvik::ProviderHost::Shutdown();
#pragma once

#include <boost/smart_ptr/shared_ptr.hpp>
#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "SorvikProvider/foundation/AsyncExecutor.h"
#include "SorvikProvider/foundation/Export.h"
#include "SorvikProvider/foundation/Hestra.h"
#include "SorvikProvider/foundation/ImmutableString.h"
#include "SorvikProvider/frame/ProviderRequest.h"
#include "SorvikProvider/frame/ProviderWrapper.h"

namespace Sorvik {

class FindCardsRequest;
enum class SearchDirection;

class SORVIK_EXPORT ProviderHost {
 public:
  ProviderHost() = delete;

  // The identification that selects the best provider. Empty.
  static const std::string sBestProvider;

  // Initialize and Shutdown keep a use count. The first Initialize creates the providers and the
  // executor; the last Shutdown waits for accepted requests and deletes the wrappers, after which
  // Initialize may start again. A Shutdown without a matching Initialize has no effect but to
  // cancel the next Initialize: the unsigned count wraps to its maximum. Call these two and
  // RegisterProvider on the main thread, while no other thread uses the library.
  //
  // A process may also end without Shutdown: workers are then stopped by its end.
  static void Initialize();
  static void Shutdown();
  // Adds the providers of newer cards after the others, until the last Shutdown; docs/providers.md
  // lists them. Without effect before Initialize and when called again. Call it on the main thread,
  // too.
  static void RegisterAdditionalProviders();
  // Limits how long the last Shutdown waits for stalled workers: those whose request was aborted
  // and whose run doesn't return. After `timeout` it leaves them alone. What they may use is leaked
  // on purpose: wrappers, providers and executor. Their late results are dropped, queued requests
  // that no worker is left for don't run, and the next Initialize creates everything anew. Workers
  // that aren't stalled are always waited for, so a host aborts its requests first. Without a
  // limit, and with a negative one (the default), Shutdown waits for stalled workers, too. Main
  // thread.
  static void SetShutdownTimeout(std::chrono::milliseconds timeout);
  // The number of workers whose request was aborted and whose run hasn't returned. Up to 64 of them
  // are replaced, so that other requests run; with more, requests wait for a worker. Any thread
  // between Initialize and Shutdown.
  static std::size_t GetStalledWorkerCount();
  // Adds a provider after the others. Ignores nullptr.
  static void RegisterProvider(std::unique_ptr<ProviderWrapper> wrapper);

  // The registered wrappers in order of registration. Valid until the last Shutdown.
  static const std::vector<ProviderWrapper*>& GetAllProviders();
  // Returns the providers with a score above 0 for `path`, best first, ties in order of
  // registration. Any thread; accesses the disk. Exceptions of CanProvideFor propagate.
  static std::vector<ProviderWrapper*> GetProviderList(const std::string& path);
  // True if any provider has a score above 0 for `path`; false if one throws.
  static bool HasProvider(const std::string& path);

  // The executor of requests; null before Initialize and after the last Shutdown.
  static boost::shared_ptr<tarnwick::threads::AsyncExecutor> GetProviderExecutor();

  // Queue GetProviderList, or a listing of the default content of a path: Name and Path of the
  // entries that a provider can list in turn. The messages go to `station`. Throws
  // NullInterfaceException if `data` is null.
  static Hestra::InterfaceRef<ProviderListRequest, Hestra::IThreadedQueueRequest>
  RequestProviderList(const std::string& path, tarnwick::utility::ImmutableString station);
  static Hestra::InterfaceRef<ProviderDefaultContentRequest, Hestra::IThreadedQueueRequest>
  RequestDefaultProviderContent(
      Hestra::ObjectPtr<DefaultContentRequestData, Hestra::AtomicValue> data,
      tarnwick::utility::ImmutableString station);

  // Queues FindCards, in SorvikProvider/cardtools/CardFinder.h. Its messages go to `station`.
  static Hestra::InterfaceRef<FindCardsRequest, Hestra::IThreadedQueueRequest> RequestCards(
      const std::string& path, SearchDirection direction,
      tarnwick::utility::ImmutableString station);

 private:
  friend class ProviderListRequest;
  friend class ProviderDefaultContentRequest;

  // Returns an empty list if `request` is aborted.
  static std::vector<ProviderWrapper*> GetProviderList(const std::string& path,
                                                       ProviderRequest* request);

  static unsigned int sUseCount;
  static bool sAdditionalRegistered;
};

}  // namespace Sorvik
