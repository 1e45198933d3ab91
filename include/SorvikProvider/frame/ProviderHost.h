// SPDX-License-Identifier: MIT
// The library's front door: which providers understand this path, best first.
//
//   Sorvik::ProviderHost::Initialize();
//   auto providers = Sorvik::ProviderHost::GetProviderList("/media/card");
//   ...
//   Sorvik::ProviderHost::Shutdown();
#pragma once

#include <boost/smart_ptr/shared_ptr.hpp>
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

class SORVIK_EXPORT ProviderHost {
 public:
  ProviderHost() = delete;

  // The identification that stands for no particular provider: take the best one. Empty.
  static const std::string sBestProvider;

  // Both count uses; the first Initialize creates the providers and the executor, the last Shutdown
  // waits for the executor and deletes the wrappers. After it Initialize may start anew. These two
  // and RegisterProvider belong to the host's main thread, with no other thread in the library.
  static void Initialize();
  static void Shutdown();
  // Adds a provider behind the others; null is ignored.
  static void RegisterProvider(std::unique_ptr<ProviderWrapper> wrapper);

  // The registered wrappers in order of registration. Valid until the last Shutdown.
  static const std::vector<ProviderWrapper*>& GetAllProviders();
  // The providers that understand `path`, best first, ties in order of registration. Any thread;
  // touches the disk. What a CanProvideFor throws goes to the caller.
  static std::vector<ProviderWrapper*> GetProviderList(const std::string& path);
  // True if any provider understands `path`; false if one throws.
  static bool HasProvider(const std::string& path);

  // Where requests run; empty before Initialize and after the last Shutdown.
  static boost::shared_ptr<tarnwick::threads::AsyncExecutor> GetProviderExecutor();

  // Queue GetProviderList, and the default content of a path: Name and Path of those entries that
  // can be browsed further. Their messages go to `station`. Null `data` throws
  // NullInterfaceException.
  static Hestra::InterfaceRef<ProviderListRequest, Hestra::IThreadedQueueRequest>
  RequestProviderList(const std::string& path, tarnwick::utility::ImmutableString station);
  static Hestra::InterfaceRef<ProviderDefaultContentRequest, Hestra::IThreadedQueueRequest>
  RequestDefaultProviderContent(
      Hestra::ObjectPtr<DefaultContentRequestData, Hestra::AtomicValue> data,
      tarnwick::utility::ImmutableString station);

 private:
  friend class ProviderListRequest;
  friend class ProviderDefaultContentRequest;

  // An aborted request gives an empty list.
  static std::vector<ProviderWrapper*> GetProviderList(const std::string& path,
                                                       ProviderRequest* request);

  static unsigned int sUseCount;
  static std::vector<ProviderWrapper*> sProviders;
  static boost::shared_ptr<tarnwick::threads::AsyncExecutor> sExecutor;
};

}  // namespace Sorvik
