// SPDX-License-Identifier: MIT
#include "SorvikProvider/frame/ProviderRequest.h"

#include <utility>

#include "SorvikProvider/frame/ProviderHost.h"
#include "SorvikProvider/frame/ProviderMessages.h"
#include "foundation/platform/ShareAccess.h"
#include "frame/AbortWatchdog.h"
#include "frame/ThumbnailAnswer.h"

namespace Sorvik {
namespace {

using tarnwick::utility::ImmutableString;
using SelfRef = Hestra::InterfaceRef<ProviderRequest, Hestra::IThreadedQueueRequest>;

// Returns the entries of `raw` whose path has a provider.
ContentMap BrowsableEntries(ContentMap raw) {
  std::erase_if(raw, [](const auto& entry) {
    const auto path = entry.second.find(kPathField);
    if (path == entry.second.end()) return true;
    const auto* text = path->second.template get_if<std::string>();
    return text == nullptr || !ProviderHost::HasProvider(*text);
  });
  return raw;
}

ProviderWrapper* ChooseProvider(const std::vector<ProviderWrapper*>& list,
                                const std::string& identification) {
  // sBestProvider; not the constant itself, which is destroyed before the last worker ends.
  if (identification.empty()) return list.front();
  for (ProviderWrapper* wrapper : list) {
    if (wrapper->GetIdentification() == identification) return wrapper;
  }
  return list.front();
}

}  // namespace

ProviderRequest::ProviderRequest(ImmutableString station, ProviderRef provider)
    : provider_(std::move(provider)),
      station_(std::move(station)),
      record_(std::make_unique<AbortRecord>(*this)) {}

ProviderRequest::~ProviderRequest() = default;

void ProviderRequest::Post(const Hestra::Message& message) const {
  Hestra::StationUtils::PostMessageToUIThread(station_, message, false);
}

void ProviderRequest::PostResult(Hestra::Message& message) {
  if (record_->ClaimForRun()) {
    Post(message);
  } else {
    message.Discard();
  }
}

void ProviderRequest::PostResult(std::unique_ptr<Hestra::Message> message) {
  if (record_->ClaimForRun()) {
    Hestra::StationUtils::PostMessageToUIThread(station_, std::move(message));
  } else {
    message->Discard();
  }
}

bool ProviderRequest::PostPart(const Hestra::Message& message) {
  return record_->IfUnanswered([&] { Post(message); });
}

void ProviderRequest::PostAborted() const {}

void ProviderRequest::Abort() noexcept {
  std::int32_t expected = 0;
  abortWord_.compare_exchange_strong(expected, 1);
  record_->Abort();
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
  auto message = std::make_unique<GetContentMessage>();
  bool aborted = TestAborted();
  if (!aborted) {
    const platform::ShareScope shares(path_);
    message->content = GetProvider()->GetContent(path_, fields_, this);
    aborted = TestAborted();
  }
  if (aborted) {
    message->result = kResultAborted;
    message->content.clear();
  }
  message->path = path_;
  message->fields = fields_;
  message->identification = GetProvider()->GetIdentification();
  PostResult(std::move(message));
}

void ProviderContentRequest::PostAborted() const {
  GetContentMessage message;
  message.path = path_;
  message.fields = fields_;
  message.identification = GetProvider()->GetIdentification();
  message.result = kResultAborted;
  Post(message);
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
  Bitplate** thumbnail = nullptr;
  if (!TestAborted()) {
    const platform::ShareScope shares(path_);
    thumbnail = GetProvider()->GetThumbnail(path_, key_, width_, height_, this);
  }
  GetThumbnailMessage message = ThumbnailAnswer(path_, key_, thumbnail, TestAborted());
  PostResult(message);
}

void ProviderThumbnailRequest::PostAborted() const {
  Post(ThumbnailAnswer(path_, key_, nullptr, true));
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
  PostResult(message);
}

void ProviderListRequest::PostAborted() const {
  GetProviderListMessage message;
  message.path = path_;
  message.result = kResultAborted;
  Post(message);
}

SelfRef ProviderListRequest::GetRef() { return SelfRef(this); }

DefaultContentRequestData::~DefaultContentRequestData() = default;

ProviderDefaultContentRequest::ProviderDefaultContentRequest(ImmutableString station, DataRef data)
    : ProviderRequest(std::move(station), ProviderRef()), data_(std::move(data)) {}

void ProviderDefaultContentRequest::Run() {
  auto message = std::make_unique<GetDefaultContentMessage>();
  message->data = data_;
  if (!TestAborted()) {
    const platform::ShareScope shares(data_->path);
    const auto list = ProviderHost::GetProviderList(data_->path, this);
    if (list.empty()) {
      message->result = kResultNoContent;
    } else {
      message->fields = {kNameField, kPathField};
      message->provider = ChooseProvider(list, data_->identification);
      message->content =
          BrowsableEntries(message->provider->GetContent(data_->path, message->fields, this));
    }
  }
  // An aborted message keeps the content read so far; the result code marks it as invalid.
  if (TestAborted()) {
    message->fields.clear();
    message->result = kResultAborted;
  }
  PostResult(std::move(message));
}

void ProviderDefaultContentRequest::PostAborted() const {
  GetDefaultContentMessage message;
  message.data = data_;
  message.result = kResultAborted;
  Post(message);
}

SelfRef ProviderDefaultContentRequest::GetRef() { return SelfRef(this); }

}  // namespace Sorvik
