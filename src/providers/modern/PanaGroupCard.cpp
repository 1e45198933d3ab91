// SPDX-License-Identifier: MIT
#include "providers/modern/PanaGroupCard.h"

#include <algorithm>
#include <map>
#include <utility>

#include "foundation/CallScope.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "providers/common/NameMask.h"

namespace Sorvik::panagroup {
namespace {

using foundation::CardFolder;
using foundation::FileName;
using foundation::FileStem;
using foundation::FoldCase;
using foundation::HasExtension;

bool IsClipName(std::string_view name) {
  return HasExtension(name, ".mov") || HasExtension(name, ".mp4");
}

bool IsSharedName(std::string_view name) {
  return foundation::EqualIgnoringCase(name, "INDEX.DAT") ||
         foundation::EqualIgnoringCase(name, "BACKUP.TMP");
}

std::string_view RateOf(char letter) {
  switch (letter) {
    case 'A':
      return "59.94";
    case 'B':
      return "50";
    case 'C':
      return "29.97";
    case 'D':
      return "25";
    case 'F':
      return "23.976";
    default:
      return {};
  }
}

}  // namespace

std::optional<FolderCode> ParseFolderName(std::string_view name) {
  if (!MatchesPattern(name, "###@@@A@")) return std::nullopt;
  const std::string letters = foundation::UpperCase(name.substr(3));
  FolderCode code;
  if (letters[0] == 'R') std::tie(code.width, code.height) = std::pair(3840U, 2160U);
  if (letters[0] == 'Y') std::tie(code.width, code.height) = std::pair(1920U, 1080U);
  code.frameRate = RateOf(letters[1]);
  code.isProgressive = letters[2] == 'Q';
  code.isSimultaneous = letters[4] == 'T';
  code.isComplete = code.width != 0 && !code.frameRate.empty() &&
                    (letters[2] == 'Q' || letters[2] == 'J') &&
                    (letters[4] == 'M' || letters[4] == 'T');
  return code;
}

std::shared_ptr<const Card> Card::Of(const std::string& root) {
  return foundation::CallScope::Share<Card>(root, [&root] {
    auto card = std::make_shared<Card>();
    const auto folder = CardFolder::Of(root);
    for (const std::string& name : folder->VisibleFolders()) {
      if (const auto code = ParseFolderName(name)) {
        card->AddFolder(folder->PathOf(name), *code);
      } else {
        card->hasUnrelated_ = true;
      }
    }
    for (const std::string& name : folder->VisibleFiles()) {
      if (IsSharedName(name)) {
        card->sharedFiles_.push_back(folder->PathOf(name));
      } else {
        card->hasUnrelated_ = true;
      }
    }
    return card;
  });
}

void Card::AddFolder(const std::string& path, const FolderCode& code) {
  const auto folder = CardFolder::Of(path);
  folders_.push_back(path);
  std::map<std::string, std::size_t> byStem;  // folded
  std::vector<std::string> others;
  for (std::string& name : folder->VisibleFiles()) {
    if (!IsClipName(name)) {
      others.push_back(std::move(name));
      continue;
    }
    byStem.emplace(FoldCase(FileStem(name)), clips_.size());
    clips_.push_back({std::string(FileName(path)) + "/" + name, folder->PathOf(name), code, {}});
  }
  hasKnownFormat_ = hasKnownFormat_ || (code.isComplete && !byStem.empty());
  for (const std::string& name : others) {
    const auto clip = byStem.find(FoldCase(FileStem(name)));
    if (clip != byStem.end()) {
      clips_[clip->second].files.push_back(folder->PathOf(name));
    } else if (IsSharedName(name)) {
      sharedFiles_.push_back(folder->PathOf(name));
    } else {
      hasUnrelated_ = true;
    }
  }
}

const Clip* Card::Find(std::string_view key) const {
  const auto found = std::ranges::find(clips_, key, &Clip::key);
  return found == clips_.end() ? nullptr : &*found;
}

}  // namespace Sorvik::panagroup
