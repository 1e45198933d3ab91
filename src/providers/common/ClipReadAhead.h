// SPDX-License-Identifier: MIT
// The metadata of the clips of a listing, read ahead on slow storage (foundation/ReadAhead.h).
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "SorvikProvider/frame/FieldModel.h"
#include "SorvikProvider/frame/ProviderRequest.h"
#include "SorvikProvider/metadata/XMPSupport.h"
#include "foundation/ReadAhead.h"
#include "frame/AbortWatchdog.h"

namespace Sorvik {

// For the parameter `stop` of read-ahead objects. `request` may be null.
inline std::function<bool()> StopWith(ProviderRequest* request) {
  return [request] { return ProviderRequest::TestAborted(request); };
}

// For listings that don't test their request for an abort: true once it has been answered without
// them, because it was aborted and the run is stuck. Then nothing needs the entries.
inline bool IsAnsweredWithout(ProviderRequest* request) {
  return request != nullptr && AbortRecord::Of(*request).AnsweredByWatchdog();
}

inline std::function<bool()> StopOnceAnswered(ProviderRequest* request) {
  return [request] { return IsAnsweredWithout(request); };
}

// The result for an index is what XMPSupport::MakeValue returns for that path.
inline foundation::ReadAhead<FieldValueMap> ReadMetadataAhead(std::vector<std::string> paths,
                                                              const XMPSupport::XMPFieldBits& bits,
                                                              ProviderRequest* request) {
  const auto shared = std::make_shared<const std::vector<std::string>>(std::move(paths));
  return {shared->size(),
          [shared, bits](std::size_t i) { return XMPSupport::MakeValue((*shared)[i], bits); },
          StopWith(request)};
}

}  // namespace Sorvik
