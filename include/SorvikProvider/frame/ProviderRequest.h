// SPDX-License-Identifier: MIT
// Questions that run once on the provider executor and always end in one message to a station.
// A request may be aborted from any thread at any time; it still posts its message.
#pragma once

#include <atomic>
#include <boost/smart_ptr/shared_ptr.hpp>
#include <cstdint>
#include <string>

#include "SorvikProvider/foundation/Export.h"
#include "SorvikProvider/foundation/Hestra.h"
#include "SorvikProvider/foundation/ImmutableString.h"
#include "SorvikProvider/frame/FieldModel.h"
#include "SorvikProvider/frame/Provider.h"

namespace Sorvik {

class SORVIK_EXPORT ProviderRequest : public Hestra::IThreadedQueueRequest {
 public:
  // Asks the run to stop soon. Doesn't wait; may come before, during or after the run.
  void Abort() noexcept;

  // The abort test, for the thread of the run alone: true once Abort has been called. It consumes
  // the abort word and remembers the answer.
  bool TestAborted() noexcept;
  // The same for providers; a null request is never aborted.
  static bool TestAborted(ProviderRequest* request) noexcept {
    return request != nullptr && request->TestAborted();
  }

  void AddRef() noexcept override;
  void Release() noexcept override;
  Hestra::QueryResult QueryInterface(Hestra::InterfaceID id, void** result) noexcept override;
  Hestra::QueryResult QueryInterfaceWithoutRef(Hestra::InterfaceID id,
                                               void** result) noexcept override;

  // A new reference to the request itself.
  virtual Hestra::InterfaceRef<ProviderRequest, Hestra::IThreadedQueueRequest> GetRef() = 0;

  ProviderRequest(const ProviderRequest&) = delete;
  ProviderRequest& operator=(const ProviderRequest&) = delete;

 protected:
  using ProviderRef = Hestra::ObjectPtr<Provider, Hestra::AtomicValue>;

  ProviderRequest(tarnwick::utility::ImmutableString station, ProviderRef provider);
  ~ProviderRequest() override;

  const ProviderRef& GetProvider() const noexcept { return provider_; }
  const tarnwick::utility::ImmutableString& GetStation() const noexcept { return station_; }

 private:
  ProviderRef provider_;
  tarnwick::utility::ImmutableString station_;
  std::atomic<std::int32_t> abortWord_{0};
  bool aborted_ = false;
  boost::shared_ptr<void> spare_;  // part of the layout that hosts were built against; stays empty
  std::atomic<std::int32_t> references_{0};
};

using RequestRef = Hestra::InterfaceRef<Hestra::IThreadedQueueRequest>;

// What ProviderWrapper::RequestContent queues; ends in a GetContentMessage.
class SORVIK_EXPORT ProviderContentRequest final : public ProviderRequest {
 public:
  ProviderContentRequest(tarnwick::utility::ImmutableString station, ProviderRef provider,
                         std::string path, FieldNameSet fields);
  void Run() override;
  Hestra::InterfaceRef<ProviderRequest, Hestra::IThreadedQueueRequest> GetRef() override;

 private:
  std::string path_;
  FieldNameSet fields_;
};

// What ProviderWrapper::RequestThumbnail queues; ends in a GetThumbnailMessage.
class SORVIK_EXPORT ProviderThumbnailRequest final : public ProviderRequest {
 public:
  ProviderThumbnailRequest(tarnwick::utility::ImmutableString station, ProviderRef provider,
                           std::string path, std::string key, int width, int height);
  void Run() override;
  Hestra::InterfaceRef<ProviderRequest, Hestra::IThreadedQueueRequest> GetRef() override;

 private:
  std::string path_;
  std::string key_;
  int width_;
  int height_;
};

// What ProviderHost::RequestProviderList queues; ends in a GetProviderListMessage.
class SORVIK_EXPORT ProviderListRequest final : public ProviderRequest {
 public:
  ProviderListRequest(tarnwick::utility::ImmutableString station, std::string path);
  void Run() override;
  Hestra::InterfaceRef<ProviderRequest, Hestra::IThreadedQueueRequest> GetRef() override;

 private:
  std::string path_;
};

// Made by the host: the path to list, and the identification of the wanted provider, or
// ProviderHost::sBestProvider for the best one.
class SORVIK_EXPORT DefaultContentRequestData {
 public:
  DefaultContentRequestData(std::string wantedPath, std::string wantedIdentification)
      : path(std::move(wantedPath)), identification(std::move(wantedIdentification)) {}
  virtual ~DefaultContentRequestData();

  std::string path;
  std::string identification;
};

// What ProviderHost::RequestDefaultProviderContent queues; ends in a GetDefaultContentMessage.
class SORVIK_EXPORT ProviderDefaultContentRequest final : public ProviderRequest {
 public:
  using DataRef = Hestra::ObjectPtr<DefaultContentRequestData, Hestra::AtomicValue>;

  ProviderDefaultContentRequest(tarnwick::utility::ImmutableString station, DataRef data);
  void Run() override;
  Hestra::InterfaceRef<ProviderRequest, Hestra::IThreadedQueueRequest> GetRef() override;

 private:
  DataRef data_;
};

}  // namespace Sorvik
