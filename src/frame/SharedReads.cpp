// SPDX-License-Identifier: MIT
#include "SorvikProvider/frame/SharedReads.h"

#include "foundation/CallScope.h"
#include "frame/RequestReads.h"

namespace Sorvik {
namespace {

using foundation::CallScope;

thread_local CallScope::Cache readsOfRequests;

}  // namespace

struct SharedReads::Cache {
  const CallScope::Cache records = CallScope::NewCache();
};

class SharedReads::Scope::State {
 public:
  explicit State(const CallScope::Cache& records)
      : isOutermost_(CallScope::CurrentCache() == nullptr), scope_(records) {
    if (isOutermost_) readsOfRequests = records;
  }
  ~State() {
    if (isOutermost_) readsOfRequests = nullptr;
  }
  State(const State&) = delete;
  State& operator=(const State&) = delete;

 private:
  const bool isOutermost_;
  const CallScope scope_;
};

SharedReads::SharedReads() : cache_(std::make_shared<Cache>()) {}
SharedReads::~SharedReads() = default;
SharedReads::SharedReads(const SharedReads&) = default;
SharedReads& SharedReads::operator=(const SharedReads&) = default;

SharedReads::Scope::Scope(const SharedReads& reads)
    : state_(std::make_unique<State>(reads.cache_->records)) {}
SharedReads::Scope::~Scope() = default;

CallScope::Cache ReadsOfRequests() { return readsOfRequests; }

}  // namespace Sorvik
