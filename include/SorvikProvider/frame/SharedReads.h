// SPDX-License-Identifier: MIT
// Several calls about one card that read its folders, indexes and clip records once. Without it
// each call reads what it needs, so that one call for each clip takes time quadratic in the number
// of clips.
//
//   const Sorvik::SharedReads reads;
//   const Sorvik::SharedReads::Scope scope(reads);
//   for (const std::string& key : keys) Use(Sorvik::GetShotParts(path, identification, key));
#pragma once

#include <memory>

#include "SorvikProvider/foundation/Export.h"

namespace Sorvik {

// Shared results of earlier reads. Copies share one cache. It exists until the last reference,
// scope and request that uses it is destroyed, and isn't updated if the card changes: use one
// object for one task. Any thread.
class SORVIK_EXPORT SharedReads {
 public:
  SharedReads();
  ~SharedReads();
  SharedReads(const SharedReads&);
  SharedReads& operator=(const SharedReads&);

  // While a scope exists, calls on its thread and requests that the thread queues share their
  // reads. Destroy it on the same thread. No effect inside another scope. A call that waits for a
  // record that another request reads can't be aborted until that one ends.
  class SORVIK_EXPORT Scope {
   public:
    explicit Scope(const SharedReads& reads);
    ~Scope();
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

   private:
    class State;
    const std::unique_ptr<State> state_;
  };

 private:
  struct Cache;
  std::shared_ptr<Cache> cache_;
};

}  // namespace Sorvik
