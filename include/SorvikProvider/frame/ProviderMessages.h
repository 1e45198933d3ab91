// SPDX-License-Identifier: MIT
// The messages of the four requests. A wrapper in a message is valid until the last
// ProviderHost::Shutdown: a host aborts its requests, drains its queue, then shuts down.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "SorvikProvider/foundation/Bitplate.h"
#include "SorvikProvider/foundation/Export.h"
#include "SorvikProvider/foundation/Hestra.h"
#include "SorvikProvider/foundation/Messaging.h"
#include "SorvikProvider/frame/FieldModel.h"
#include "SorvikProvider/frame/ProviderRequest.h"

namespace Sorvik {

class ProviderWrapper;

using ContentResultCode = std::uint32_t;
inline constexpr ContentResultCode kResultDone = 0;
inline constexpr ContentResultCode kResultNoContent = 0xA00F0001u;  // no provider or no thumbnail
inline constexpr ContentResultCode kResultAborted = 0xA00F0007u;

struct SORVIK_EXPORT GetContentMessage : Hestra::MessageImpl<GetContentMessage>,
                                         Hestra::Allocated<GetContentMessage> {
  ContentMap content;
  std::string path;
  FieldNameSet fields;
  std::string identification;  // of the provider
  ContentResultCode result = kResultDone;

  ~GetContentMessage() override;
};

// The receiver owns the thumbnail and disposes of it.
struct SORVIK_EXPORT GetThumbnailMessage : Hestra::MessageImpl<GetThumbnailMessage>,
                                           Hestra::Allocated<GetThumbnailMessage> {
  Bitplate** thumbnail = nullptr;
  std::string path;
  std::string key;
  ContentResultCode result = kResultDone;

  ~GetThumbnailMessage() override;
  void Discard() noexcept override;
};

struct SORVIK_EXPORT GetProviderListMessage : Hestra::MessageImpl<GetProviderListMessage>,
                                              Hestra::Allocated<GetProviderListMessage> {
  std::string path;
  std::vector<ProviderWrapper*> providers;  // best first
  ContentResultCode result = kResultDone;

  ~GetProviderListMessage() override;
};

struct SORVIK_EXPORT GetDefaultContentMessage : Hestra::MessageImpl<GetDefaultContentMessage>,
                                                Hestra::Allocated<GetDefaultContentMessage> {
  ContentMap content;
  FieldNameSet fields;
  ProviderWrapper* provider = nullptr;
  Hestra::ObjectPtr<DefaultContentRequestData, Hestra::AtomicValue> data;
  ContentResultCode result = kResultDone;

  ~GetDefaultContentMessage() override;
};

}  // namespace Sorvik
