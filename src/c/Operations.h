// SPDX-License-Identifier: MIT
// What the requests of the C interface do on their worker. Arguments have been checked.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "SorvikProvider/cardtools/JoinList.h"
#include "SorvikProvider/frame/FieldModel.h"
#include "c/Requests.h"

namespace Sorvik::c {

// The fields of a listing.
struct FieldChoice {
  bool defaults = true;  // those of the provider
  bool all = false;      // all that the provider supports
  FieldNameSet names = {};
};

struct Place {
  std::string path;
  std::string provider;  // an identification or its last component
};

Outcome Open(TaskRequest& request, const Place& place, sorvik_open_mode mode);
Outcome List(TaskRequest& request, const Place& place, const FieldChoice& fields);
Outcome ReadEntry(TaskRequest& request, const Place& place, const std::string& key,
                  const FieldChoice& fields);
// Without a key the files of all entries and of the card.
Outcome ListFiles(TaskRequest& request, const Place& place, const std::string& key);
Outcome ReadSources(TaskRequest& request, const Place& place, const std::string& key);
Outcome ListParts(TaskRequest& request, const Place& place, const std::string& key);
// Without a key the lists of all entries.
Outcome Join(TaskRequest& request, const Place& place, const std::string& key,
             const JoinOptions& options);
Outcome Check(TaskRequest& request, const Place& place, CheckDepth depth);
Outcome FindOwner(TaskRequest& request, const std::string& path);
Outcome RenderThumbnail(TaskRequest& request, const Place& place, const std::string& key, int width,
                        int height);
Outcome RenderPicture(TaskRequest& request, const Place& place, const std::string& key, int width,
                      int height);
Outcome Scan(TaskRequest& request, const std::string& path, unsigned flags,
             const FieldChoice& fields);

// Runs on the calling thread.
Outcome WriteCatalogueLines(const std::vector<std::string>& paths,
                            const std::function<bool(std::string_view)>& receive,
                            const std::function<bool()>& isStopped);

}  // namespace Sorvik::c
