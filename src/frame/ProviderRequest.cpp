// SPDX-License-Identifier: MIT
#include "SorvikProvider/frame/ProviderRequest.h"

#include <utility>

#include "SorvikProvider/foundation/Messaging.h"
#include "SorvikProvider/frame/ProviderHost.h"
#include "SorvikProvider/frame/ProviderMessages.h"
#include "foundation/platform/ShareAccess.h"

namespace Sorvik {
namespace {

using tarnwick::utility::ImmutableString;
using SelfRef = Hestra::InterfaceRef<ProviderRequest, Hestra::IThreadedQueueRequest>;

void Post(const ImmutableString& station, const Hestra::Message& message) {
  Hestra::StationUtils::PostMessageToUIThread(station, message, false);
}

// Returns the entries of `raw` whose path has a provider.
ContentMap BrowsableEntries(const ContentMap& raw) {
  ContentMap browsable;
  for (const auto& [key, fields] : raw) {
    const auto path = fields.find(kPathField);
    if (path == fields.end()) continue;
    const auto* text = path->second.get_if<std::string>();
    if (text != nullptr && ProviderHost::HasProvider(*text)) browsable.emplace(key, fields);
  }
  return browsable;
}

ProviderWrapper* ChooseProvider(const std::vector<ProviderWrapper*>& list,
                                const std::string& identification) {
  if (identification == ProviderHost::sBestProvider) return list.front();
  for (ProviderWrapper* wrapper : list) {
    if (wrapper->GetIdentification() == identification) return wrapper;
  }
  return list.front();
}

}  // namespace

ProviderRequest::ProviderRequest(ImmutableString station, ProviderRef provider)
    : provider_(std::move(provider)), station_(std::move(station)) {}

ProviderRequest::~ProviderRequest() = default;

void ProviderRequest::Abort() noexcept {
  std::int32_t expected = 0;
  abortWord_.compare_exchange_strong(expected, 1);
}

bool ProviderRequest::TestAborted() noexcept {
  if (!aborted_) aborted_ = abortWord_.exchange(0) == 1;
  return aborted_;
}

void ProviderRequest::AddRef() noexcept { references_.fetch_add(1, std::memory_order_relaxed); }

void ProviderRequest::Release() noexcept {
  if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
}

Hestra::QueryResult ProviderRequest::QueryInterfaceWithoutRef(Hestra::InterfaceID id,
                                                              void** result) noexcept {
  if (id == Hestra::kThreadedQueueRequestID) {
    *result = static_cast<Hestra::IThreadedQueueRequest*>(this);
    return Hestra::kQueryDone;
  }
  if (id == Hestra::kHestraUnknownID) {
    *result = static_cast<Hestra::HestraUnknown*>(this);
    return Hestra::kQueryDone;
  }
  *result = nullptr;
  return Hestra::kNoInterface;
}

Hestra::QueryResult ProviderRequest::QueryInterface(Hestra::InterfaceID id,
                                                    void** result) noexcept {
  const Hestra::QueryResult answer = QueryInterfaceWithoutRef(id, result);
  if (answer == Hestra::kQueryDone) AddRef();
  return answer;
}

ProviderContentRequest::ProviderContentRequest(ImmutableString station, ProviderRef provider,
                                               std::string path, FieldNameSet fields)
    : ProviderRequest(std::move(station), std::move(provider)),
      path_(std::move(path)),
      fields_(std::move(fields)) {}

void ProviderContentRequest::Run() {
  GetContentMessage message;
  bool aborted = TestAborted();
  if (!aborted) {
    const platform::ShareScope shares(path_);
    message.content = GetProvider()->GetContent(path_, fields_, this);
    aborted = TestAborted();
  }
  if (aborted) {
    message.result = kResultAborted;
    message.content.clear();
  }
  message.path = path_;
  message.fields = fields_;
  message.identification = GetProvider()->GetIdentification();
  Post(GetStation(), message);
}

SelfRef ProviderContentRequest::GetRef() { return SelfRef(this); }

ProviderThumbnailRequest::ProviderThumbnailRequest(ImmutableString station, ProviderRef provider,
                                                   std::string path, std::string key, int width,
                                                   int height)
    : ProviderRequest(std::move(station), std::move(provider)),
      path_(std::move(path)),
      key_(std::move(key)),
      width_(width),
      height_(height) {}

void ProviderThumbnailRequest::Run() {
  GetThumbnailMessage message;
  message.path = path_;
  message.key = key_;
  if (!TestAborted()) {
    const platform::ShareScope shares(path_);
    message.thumbnail = GetProvider()->GetThumbnail(path_, key_, width_, height_, this);
  }
  if (TestAborted()) {
    message.Discard();
    message.result = kResultAborted;
  } else {
    message.result = message.thumbnail != nullptr ? kResultDone : kResultNoContent;
  }
  Post(GetStation(), message);
}

SelfRef ProviderThumbnailRequest::GetRef() { return SelfRef(this); }

ProviderListRequest::ProviderListRequest(ImmutableString station, std::string path)
    : ProviderRequest(std::move(station), ProviderRef()), path_(std::move(path)) {}

void ProviderListRequest::Run() {
  GetProviderListMessage message;
  message.path = path_;
  if (!TestAborted()) {
    message.providers = ProviderHost::GetProviderList(path_, this);
    message.result = message.providers.empty() ? kResultNoContent : kResultDone;
  }
  if (TestAborted()) {
    message.result = kResultAborted;
    message.providers.clear();
  }
  Post(GetStation(), message);
}

SelfRef ProviderListRequest::GetRef() { return SelfRef(this); }

DefaultContentRequestData::~DefaultContentRequestData() = default;

ProviderDefaultContentRequest::ProviderDefaultContentRequest(ImmutableString station, DataRef data)
    : ProviderRequest(std::move(station), ProviderRef()), data_(std::move(data)) {}

void ProviderDefaultContentRequest::Run() {
  GetDefaultContentMessage message;
  message.data = data_;
  if (!TestAborted()) {
    const platform::ShareScope shares(data_->path);
    ContentMap raw;
    const auto list = ProviderHost::GetProviderList(data_->path, this);
    if (list.empty()) {
      message.result = kResultNoContent;
    } else {
      message.fields = {kNameField, kPathField};
      message.provider = ChooseProvider(list, data_->identification);
      raw = message.provider->GetContent(data_->path, message.fields, this);
    }
    message.content = BrowsableEntries(raw);
  }
  // An aborted message keeps the content read so far; the result code marks it as invalid.
  if (TestAborted()) {
    message.fields.clear();
    message.result = kResultAborted;
  }
  Post(GetStation(), message);
}

SelfRef ProviderDefaultContentRequest::GetRef() { return SelfRef(this); }

}  // namespace Sorvik
