// SPDX-License-Identifier: MIT
// The providers that a host works with: the operations of Provider, and two that queue requests.
#pragma once

#include <string>

#include "SorvikProvider/foundation/Export.h"
#include "SorvikProvider/foundation/Hestra.h"
#include "SorvikProvider/foundation/ImmutableString.h"
#include "SorvikProvider/frame/Provider.h"
#include "SorvikProvider/frame/ProviderRequest.h"

namespace Sorvik {

class SORVIK_EXPORT ProviderWrapper : public Provider {
 public:
  ~ProviderWrapper() override;

  // Both queue a request whose message goes to `station`, and return a reference to abort it with.
  // Before ProviderHost::Initialize the request never runs and posts no message.
  virtual Hestra::InterfaceRef<ProviderThumbnailRequest, Hestra::IThreadedQueueRequest>
  RequestThumbnail(const std::string& path, const std::string& key, int width, int height,
                   tarnwick::utility::ImmutableString station) const = 0;
  virtual Hestra::InterfaceRef<ProviderContentRequest, Hestra::IThreadedQueueRequest>
  RequestContent(const std::string& path, const FieldNameSet& fields,
                 tarnwick::utility::ImmutableString station) const = 0;
};

// Shares ownership of its provider with the queued requests. Direct calls run on the caller's
// thread. Three operations are not forwarded and keep the defaults of Provider:
// GetHasPossibleDirectoryContent, DoesPathSupportOpenCommand and ProcessOpenCommand.
class SORVIK_EXPORT AsyncProviderWrapper final : public ProviderWrapper {
 public:
  // Takes ownership. A wrapper of nullptr may only be destroyed.
  explicit AsyncProviderWrapper(Provider* provider);
  ~AsyncProviderWrapper() override;
  AsyncProviderWrapper(const AsyncProviderWrapper&) = delete;
  AsyncProviderWrapper& operator=(const AsyncProviderWrapper&) = delete;

  // The only call that catches exceptions: returns an empty map if the provider throws.
  ContentMap GetContent(const std::string& path, const std::string& key,
                        const FieldNameSet& fields) const override;
  ContentMap GetContent(const std::string& path, const FieldNameSet& fields,
                        ProviderRequest* request) const override;
  FieldNameSet GetFieldList() const override;
  FieldNameList GetDefaultFieldList() const override;
  FieldLabelMap GetFieldLabelList() const override;
  int CanProvideFor(const std::string& path) const override;
  std::string GetIdentification() const override;
  std::string GetUIString() const override;
  int GetMaximumThumbnailHeight(int height) const override;
  Bitplate** GetThumbnail(const std::string& path, const std::string& key, int width, int height,
                          ProviderRequest* request) const override;
  bool ShouldCheckFilter() const override;
  bool IsFileBased() const override;

  Hestra::InterfaceRef<ProviderThumbnailRequest, Hestra::IThreadedQueueRequest> RequestThumbnail(
      const std::string& path, const std::string& key, int width, int height,
      tarnwick::utility::ImmutableString station) const override;
  Hestra::InterfaceRef<ProviderContentRequest, Hestra::IThreadedQueueRequest> RequestContent(
      const std::string& path, const FieldNameSet& fields,
      tarnwick::utility::ImmutableString station) const override;

 private:
  friend class ProviderAccess;

  Hestra::ObjectPtr<Provider, Hestra::AtomicValue> provider_;
  Hestra::HestraUnknown* further_ = nullptr;  // released with the wrapper; the library sets none
};

}  // namespace Sorvik
