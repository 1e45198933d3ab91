// SPDX-License-Identifier: MIT
#include <algorithm>
#include <filesystem>
#include <system_error>

#include "Commands.h"
#include "Failure.h"
#include "Paths.h"
#include "SorvikProvider/cardtools/CardCheck.h"
#include "SorvikProvider/frame/ProviderHost.h"

namespace host {
namespace {

// The deepest file of a structure is four folders below its root.
constexpr int kMaxParents = 8;

bool IsFileOfCard(const std::string& card, const std::string& path) {
  for (const Sorvik::ProviderWrapper* provider : Sorvik::ProviderHost::GetProviderList(card)) {
    const auto result =
        Sorvik::CheckCard(card, provider->GetIdentification(), Sorvik::CheckDepth::kNames);
    const bool found = std::ranges::any_of(result.files, [&path](const Sorvik::CardFile& file) {
      return file.isPartOfCopy && (file.path == path || IsSameFile(file.path, path));
    });
    if (found) return true;
  }
  return false;
}

}  // namespace

void RefuseFileOfCard(Context& context, const std::string& output) {
  if (output == "-" || context.options.force) return;
  const std::string path = ResolvePath(output);
  const bool refused = context.session.OnWorker<bool>([path] {
    if (!IsRegularFile(path)) return false;
    // A link to a file or folder of a card lies anywhere.
    std::error_code error;
    const std::string file = std::filesystem::canonical(path, error).string();
    if (error) return false;
    std::string folder = file;
    for (int i = 0; i < kMaxParents && folder.size() > 1; ++i) {
      folder.resize(std::max<std::size_t>(folder.rfind('/'), 1));
      if (IsFileOfCard(folder, file)) return true;
    }
    return false;
  });
  if (refused) {
    throw Failure(kFailed, path + ": cannot write (a file of a camera card; use --force)");
  }
}

}  // namespace host
