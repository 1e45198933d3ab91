// SPDX-License-Identifier: MIT
// The result of a check as texts.
#pragma once

#include <string>
#include <vector>

#include "SorvikProvider/cardtools/CardCheck.h"
#include "SorvikProvider/frame/ProviderHost.h"

namespace sorvik_test {

// Checks a card with all providers registered.
struct Checked {
  Checked(const std::string& provider, const std::string& root,
          Sorvik::CheckDepth depth = Sorvik::CheckDepth::kStructure) {
    using namespace Sorvik;
    ProviderHost::Initialize();
    ProviderHost::RegisterAdditionalProviders();
    result = CheckCard(root, provider, depth);
    ProviderHost::Shutdown();
    const auto relative = [&root](const std::string& path) {
      return path.starts_with(root + "/") ? path.substr(root.size() + 1) : path;
    };
    for (const Finding& finding : result.findings) {
      findings.push_back(std::string(NameOf(finding.kind)) + " " +
                         std::string(NameOf(finding.severity)) + " " + finding.role + " " +
                         relative(finding.path));
    }
    for (const CardFile& file : result.files) {
      if (file.role == CardFileRole::kForeign) foreign.push_back(relative(file.path));
    }
  }

  Sorvik::CardFindings result;
  std::vector<std::string> findings;  // "kind severity role path"
  std::vector<std::string> foreign;   // paths
};

}  // namespace sorvik_test
