// SPDX-License-Identifier: MIT
#include "SorvikProvider/frame/ProviderWrapper.h"

#include <utility>

#include "foundation/platform/ShareAccess.h"
#include "frame/RequestQueue.h"

namespace Sorvik {

using tarnwick::utility::ImmutableString;

ProviderWrapper::~ProviderWrapper() = default;

AsyncProviderWrapper::AsyncProviderWrapper(Provider* provider) : provider_(provider) {}

AsyncProviderWrapper::~AsyncProviderWrapper() {
  if (further_ != nullptr) further_->Release();
}

ContentMap AsyncProviderWrapper::GetContent(const std::string& path, const std::string& key,
                                            const FieldNameSet& fields) const {
  try {
    const platform::ShareScope shares(path);
    return provider_->GetContent(path, key, fields);
  } catch (...) {
    // Hosts make this call on the UI thread; one damaged entry must not end the program.
    return {};
  }
}

ContentMap AsyncProviderWrapper::GetContent(const std::string& path, const FieldNameSet& fields,
                                            ProviderRequest* request) const {
  const platform::ShareScope shares(path);
  return provider_->GetContent(path, fields, request);
}

FieldNameSet AsyncProviderWrapper::GetFieldList() const { return provider_->GetFieldList(); }

FieldNameList AsyncProviderWrapper::GetDefaultFieldList() const {
  return provider_->GetDefaultFieldList();
}

FieldLabelMap AsyncProviderWrapper::GetFieldLabelList() const {
  return provider_->GetFieldLabelList();
}

int AsyncProviderWrapper::CanProvideFor(const std::string& path) const {
  const platform::ShareScope shares(path);
  return provider_->CanProvideFor(path);
}

std::string AsyncProviderWrapper::GetIdentification() const {
  return provider_->GetIdentification();
}

std::string AsyncProviderWrapper::GetUIString() const { return provider_->GetUIString(); }

int AsyncProviderWrapper::GetMaximumThumbnailHeight(int height) const {
  return provider_->GetMaximumThumbnailHeight(height);
}

Bitplate** AsyncProviderWrapper::GetThumbnail(const std::string& path, const std::string& key,
                                              int width, int height,
                                              ProviderRequest* request) const {
  const platform::ShareScope shares(path);
  return provider_->GetThumbnail(path, key, width, height, request);
}

bool AsyncProviderWrapper::ShouldCheckFilter() const { return provider_->ShouldCheckFilter(); }

bool AsyncProviderWrapper::IsFileBased() const { return provider_->IsFileBased(); }

Hestra::InterfaceRef<ProviderThumbnailRequest, Hestra::IThreadedQueueRequest>
AsyncProviderWrapper::RequestThumbnail(const std::string& path, const std::string& key, int width,
                                       int height, ImmutableString station) const {
  const Hestra::InterfaceRef<ProviderThumbnailRequest, Hestra::IThreadedQueueRequest> request(
      new ProviderThumbnailRequest(std::move(station), provider_, path, key, width, height));
  QueueRequest(request);
  return request;
}

Hestra::InterfaceRef<ProviderContentRequest, Hestra::IThreadedQueueRequest>
AsyncProviderWrapper::RequestContent(const std::string& path, const FieldNameSet& fields,
                                     ImmutableString station) const {
  const Hestra::InterfaceRef<ProviderContentRequest, Hestra::IThreadedQueueRequest> request(
      new ProviderContentRequest(std::move(station), provider_, path, fields));
  QueueRequest(request);
  return request;
}

}  // namespace Sorvik
