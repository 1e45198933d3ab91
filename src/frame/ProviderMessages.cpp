// SPDX-License-Identifier: MIT
#include "SorvikProvider/frame/ProviderMessages.h"

#include <utility>

namespace Sorvik {

GetContentMessage::~GetContentMessage() = default;

GetThumbnailMessage::~GetThumbnailMessage() = default;

void GetThumbnailMessage::Discard() noexcept { bitplateDispose(std::exchange(thumbnail, nullptr)); }

GetProviderListMessage::~GetProviderListMessage() = default;

GetDefaultContentMessage::~GetDefaultContentMessage() = default;

}  // namespace Sorvik
