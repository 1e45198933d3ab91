// SPDX-License-Identifier: MIT
// A card as one provider describes it: the paths of its entries and the description of its parts,
// merged by path.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "SorvikProvider/frame/Provider.h"
#include "frame/CardChecker.h"

namespace Sorvik {

struct CardContents {
  // All expectations for one path. Keys are those of description and listing.
  struct Part {
    CardPart expectation;
    bool described = false;                  // false: only listed among the paths of an entry
    std::vector<std::string> listedBy = {};  // keys of the entries that list the path

    // The keys of the entries that it belongs to. A description names them more exactly than a
    // listing, in which a file of the card belongs to all.
    const std::vector<std::string>& Owners() const {
      return expectation.entryKeys.empty() ? listedBy : expectation.entryKeys;
    }
  };

  CardContents(const Provider& provider, const CardChecker& checker, const std::string& path,
               CheckDepth depth, ProviderRequest* request);
  // The same from a listing with Path, ExtraPath and ProxyPath.
  CardContents(const ContentMap& content, const CardChecker& checker, const std::string& path,
               CheckDepth depth);

  std::map<std::string, Part> parts;  // by path
  std::set<std::string, std::less<>> entryFolders;
  CardDescription description;
  std::size_t entries = 0;

 private:
  void AddEntry(const std::string& key, const FieldValueMap& fields);
  void AddListedPath(const std::string& key, const std::string& path);
  void AddDescribedPart(const CardPart& part);
};

// Appends the path, or the paths of the list, that a field contains.
void AddPaths(const any_regular_t& value, std::vector<std::string>& paths);

// The role of a file that no description mentions, by its extension.
const char* RoleOfName(std::string_view path);

}  // namespace Sorvik
