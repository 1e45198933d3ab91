// SPDX-License-Identifier: MIT
// Compares a provider's description of a card with the files on it.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "SorvikProvider/cardtools/CardCheck.h"
#include "cardtools/CardContents.h"
#include "cardtools/CardInventory.h"

namespace Sorvik {

class CardEvaluation {
 public:
  // All outlive the object. `others` are the contents of the other structures at the same path.
  CardEvaluation(const CardInventory& inventory, const CardContents& contents,
                 const std::vector<CardContents>& others, ProviderRequest* request)
      : inventory_(inventory), contents_(contents), others_(others), request_(request) {}

  // Runs the check; aborted if the request is.
  CardFindings Run();

 private:
  void CheckParts();
  void CheckPart(const CardContents::Part& part);
  void CheckFile(const CardContents::Part& part, const std::string& path, std::uint64_t bytes);
  void CheckContent(const CardContents::Part& part, const std::string& path);
  void AddFinding(const CardContents::Part& part, Finding::Kind kind, std::string detail);
  void AddFiles();
  void MergeSpellings();
  CardFile DescribeFile(std::size_t index);
  void AddPartsOnOtherCards();
  void AddOrphans();
  void AddEmptyFolders();
  void AddUnreadableFolders();
  void AddUnreadableMedia();
  void RemoveSkeletonFindings();
  void Finish();

  const CardInventory& inventory_;
  const CardContents& contents_;
  const std::vector<CardContents>& others_;
  ProviderRequest* request_;
  CardFindings result_;
  std::vector<const CardContents::Part*>
      partOfFile_;  // by index in the inventory; null if there is none
  std::vector<bool> ownedByOther_;
  std::vector<bool> structure_;
  std::set<std::size_t> orphans_;
  bool aborted_ = false;
};

}  // namespace Sorvik
