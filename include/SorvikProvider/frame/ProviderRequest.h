// SPDX-License-Identifier: MIT
// Requests run once on the provider executor and post exactly one message to a station, aborted
// ones included. There are two exceptions, which post none:
//  - if the provider throws, the exception goes to the hook of tarnwick::threads::SetFailureHook
//    (AsyncExecutor.h) instead; without a hook it is dropped. A host that waits for messages sets
//    the hook;
//  - without an executor, before ProviderHost::Initialize and after the last Shutdown, a request
//    never runs.
// Abort may be called on any thread at any time. The message of an aborted request comes within
// about 100 ms, even if the run is stuck in a system call, such as a read from a share that doesn't
// answer. The worker of such a run is replaced (ProviderHost::GetStalledWorkerCount), and the late
// result of the run is dropped.
#pragma once

#include <atomic>
#include <boost/smart_ptr/shared_ptr.hpp>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "SorvikProvider/foundation/Export.h"
#include "SorvikProvider/foundation/Hestra.h"
#include "SorvikProvider/foundation/ImmutableString.h"
#include "SorvikProvider/foundation/Messaging.h"
#include "SorvikProvider/frame/FieldModel.h"
#include "SorvikProvider/frame/Provider.h"

namespace Sorvik {

class AbortRecord;

class SORVIK_EXPORT ProviderRequest : public Hestra::IThreadedQueueRequest {
 public:
  // Asks the run to stop. Returns at once; may be called before, during or after the run.
  void Abort() noexcept;

  // True once Abort has been called. Only for the thread of the run: it resets the atomic abort
  // word and caches the result.
  bool TestAborted() noexcept;
  // The same for providers. A null request is never aborted.
  static bool TestAborted(ProviderRequest* request) noexcept {
    return request != nullptr && request->TestAborted();
  }

  void AddRef() noexcept override;
  void Release() noexcept override;
  Hestra::QueryResult QueryInterface(Hestra::InterfaceID id, void** result) noexcept override;
  Hestra::QueryResult QueryInterfaceWithoutRef(Hestra::InterfaceID id,
                                               void** result) noexcept override;

  // A new reference to this request.
  virtual Hestra::InterfaceRef<ProviderRequest, Hestra::IThreadedQueueRequest> GetRef() = 0;

  ProviderRequest(const ProviderRequest&) = delete;
  ProviderRequest& operator=(const ProviderRequest&) = delete;

 protected:
  using ProviderRef = Hestra::ObjectPtr<Provider, Hestra::AtomicValue>;

  ProviderRequest(tarnwick::utility::ImmutableString station, ProviderRef provider);
  ~ProviderRequest() override;

  const ProviderRef& GetProvider() const noexcept { return provider_; }
  // Posts the result of the run, unless the request has been answered as aborted: then the message
  // is discarded.
  void PostResult(Hestra::Message& message);
  // The same for a large result, which isn't copied.
  void PostResult(std::unique_ptr<Hestra::Message> message);
  // Posts a message before the result. Returns false if the request has been answered as aborted.
  bool PostPart(const Hestra::Message& message);
  // Posts the message of a run that was aborted at its beginning. Called instead of PostResult, on
  // another thread, possibly during the run: reads only what the run doesn't change. The default
  // posts nothing.
  virtual void PostAborted() const;
  // Posts to the station.
  void Post(const Hestra::Message& message) const;

 private:
  friend class AbortRecord;

  ProviderRef provider_;
  tarnwick::utility::ImmutableString station_;
  std::atomic<std::int32_t> abortWord_{0};
  bool aborted_ = false;
  boost::shared_ptr<void> spare_;  // unused; part of the layout that hosts were compiled with
  std::atomic<std::int32_t> references_{0};
  const std::unique_ptr<AbortRecord> record_;
};

using RequestRef = Hestra::InterfaceRef<Hestra::IThreadedQueueRequest>;

// Queued by ProviderWrapper::RequestContent; posts a GetContentMessage.
class SORVIK_EXPORT ProviderContentRequest final : public ProviderRequest {
 public:
  ProviderContentRequest(tarnwick::utility::ImmutableString station, ProviderRef provider,
                         std::string path, FieldNameSet fields);
  void Run() override;
  Hestra::InterfaceRef<ProviderRequest, Hestra::IThreadedQueueRequest> GetRef() override;

 private:
  void PostAborted() const override;

  std::string path_;
  FieldNameSet fields_;
};

// Queued by ProviderWrapper::RequestThumbnail; posts a GetThumbnailMessage.
class SORVIK_EXPORT ProviderThumbnailRequest final : public ProviderRequest {
 public:
  ProviderThumbnailRequest(tarnwick::utility::ImmutableString station, ProviderRef provider,
                           std::string path, std::string key, int width, int height);
  void Run() override;
  Hestra::InterfaceRef<ProviderRequest, Hestra::IThreadedQueueRequest> GetRef() override;

 private:
  void PostAborted() const override;

  std::string path_;
  std::string key_;
  int width_;
  int height_;
};

// Queued by ProviderHost::RequestProviderList; posts a GetProviderListMessage.
class SORVIK_EXPORT ProviderListRequest final : public ProviderRequest {
 public:
  ProviderListRequest(tarnwick::utility::ImmutableString station, std::string path);
  void Run() override;
  Hestra::InterfaceRef<ProviderRequest, Hestra::IThreadedQueueRequest> GetRef() override;

 private:
  void PostAborted() const override;

  std::string path_;
};

// Created by the host: the path to list and the identification of a provider, or
// ProviderHost::sBestProvider for the best one.
class SORVIK_EXPORT DefaultContentRequestData {
 public:
  DefaultContentRequestData(std::string wantedPath, std::string wantedIdentification)
      : path(std::move(wantedPath)), identification(std::move(wantedIdentification)) {}
  virtual ~DefaultContentRequestData();

  std::string path;
  std::string identification;
};

// Queued by ProviderHost::RequestDefaultProviderContent; posts a GetDefaultContentMessage.
class SORVIK_EXPORT ProviderDefaultContentRequest final : public ProviderRequest {
 public:
  using DataRef = Hestra::ObjectPtr<DefaultContentRequestData, Hestra::AtomicValue>;

  ProviderDefaultContentRequest(tarnwick::utility::ImmutableString station, DataRef data);
  void Run() override;
  Hestra::InterfaceRef<ProviderRequest, Hestra::IThreadedQueueRequest> GetRef() override;

 private:
  void PostAborted() const override;

  DataRef data_;
};

}  // namespace Sorvik
