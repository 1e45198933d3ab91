// SPDX-License-Identifier: MIT
#include "SorvikProvider/frame/Provider.h"

namespace Sorvik {

Provider::ByteSize_t::~ByteSize_t() = default;

Provider::~Provider() = default;

bool Provider::GetHasPossibleDirectoryContent([[maybe_unused]] const std::string& path) const {
  return true;
}

bool Provider::DoesPathSupportOpenCommand([[maybe_unused]] const std::string& path,
                                          [[maybe_unused]] std::string& command) const {
  return false;
}

bool Provider::ProcessOpenCommand([[maybe_unused]] const std::string& path) const { return false; }

}  // namespace Sorvik
