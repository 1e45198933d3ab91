// SPDX-License-Identifier: MIT
// What a host holds instead of a bare provider: the provider's operations, and two that start work
// in the background.
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

  // Both queue a request whose message goes to `station`, and return a reference by which it can be
  // aborted. Before ProviderHost::Initialize the request is never run and never answered.
  virtual Hestra::InterfaceRef<ProviderThumbnailRequest, Hestra::IThreadedQueueRequest>
  RequestThumbnail(const std::string& path, const std::string& key, int width, int height,
                   tarnwick::utility::ImmutableString station) const = 0;
  virtual Hestra::InterfaceRef<ProviderContentRequest, Hestra::IThreadedQueueRequest>
  RequestContent(const std::string& path, const FieldNameSet& fields,
                 tarnwick::utility::ImmutableString station) const = 0;
};

// Shares ownership of its provider with every request in flight. Direct calls run on the caller's
// thread. Three operations are not forwarded and keep Provider's own answers:
// GetHasPossibleDirectoryContent, DoesPathSupportOpenCommand and ProcessOpenCommand.
class SORVIK_EXPORT AsyncProviderWrapper final : public ProviderWrapper {
 public:
  // Takes ownership. A wrapper of null may only be destroyed.
  explicit AsyncProviderWrapper(Provider* provider);
  ~AsyncProviderWrapper() override;
  AsyncProviderWrapper(const AsyncProviderWrapper&) = delete;
  AsyncProviderWrapper& operator=(const AsyncProviderWrapper&) = delete;

  // The only call with a guard: whatever the provider throws gives an empty map.
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
