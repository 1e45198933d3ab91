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

// A reference to what the calls have read. Copies refer to the same. It stays in memory until the
// last reference, scope and request that uses it is destroyed, and doesn't change while the card
// does: use one object for one task about one path. Any thread.
class SORVIK_EXPORT SharedReads {
 public:
  SharedReads();
  ~SharedReads();
  SharedReads(const SharedReads&);
  SharedReads& operator=(const SharedReads&);

  // While it exists, the library's functions share their reads if this thread calls them, and so do
  // the requests that this thread queues. No effect while another scope of the thread exists.
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
