// SPDX-License-Identifier: MIT
#include "SorvikProvider/frame/ProviderHost.h"

#include <algorithm>
#include <boost/smart_ptr/make_shared.hpp>
#include <chrono>
#include <iterator>
#include <utility>

#include "SorvikProvider/foundation/Localizer.h"
#include "filesystem/WinProviderDirectory.h"
#include "filesystem/WinProviderVolume.h"
#include "foundation/CallScope.h"
#include "foundation/ReadAhead.h"
#include "foundation/platform/ShareAccess.h"
#include "frame/AbortWatchdog.h"
#include "frame/HostState.h"
#include "frame/RequestQueue.h"
#include "providers/cards/ProviderP2.h"
#include "providers/cards/ProviderXDCAM.h"
#include "providers/cards/ProviderXDCAMEX.h"
#include "providers/modern/ProviderARRIReel.h"
#include "providers/modern/ProviderBRAW.h"
#include "providers/modern/ProviderCanonXFAVC.h"
#include "providers/modern/ProviderDCIM.h"
#include "providers/modern/ProviderPanaGroup.h"
#include "providers/modern/ProviderREDMOV.h"
#include "providers/modern/ProviderSonyXAVC.h"
#include "providers/modern/ProviderSoundRoll.h"
#include "providers/sequences/ProviderARRIRAW.h"
#include "providers/sequences/ProviderCanonRAW.h"
#include "providers/sequences/ProviderCinemaDNG.h"
#include "providers/sequences/ProviderRED.h"
#include "providers/structures/ProviderAVCHD.h"
#include "providers/structures/ProviderCanonXF.h"
#include "providers/structures/ProviderSonyHDV.h"

namespace Sorvik {
namespace {

template <class T>
Provider* Make() {
  return new T;
}

// Providers are called in this order, and it decides ties between equal scores.
// clang-format off
constexpr Provider* (*kProviders[])() = {
    Make<WinProviderDirectory>,
    Make<WinProviderVolume>,
    Make<ProviderXDCAM>,
    Make<ProviderP2>,
    Make<ProviderXDCAMEX>,
    Make<ProviderSonyHDV>,
    Make<ProviderAVCHD>,
    Make<ProviderRED>,
    Make<ProviderCanonXF>,
    Make<ProviderARRIRAW>,
    Make<ProviderCinemaDNG>,
    Make<ProviderCanonRAW>,
};

// Registered after the others, so that no order among those changes.
constexpr Provider* (*kAdditionalProviders[])() = {
    Make<ProviderSonyXAVC>,
    Make<ProviderCanonXFAVC>,
    Make<ProviderDCIM>,
    Make<ProviderPanaGroup>,
    Make<ProviderBRAW>,
    Make<ProviderARRIReel>,
    Make<ProviderREDMOV>,
    Make<ProviderSoundRoll>,
};
// clang-format on

constexpr std::chrono::milliseconds kNoLimit{-1};

// Used on the main thread only.
std::chrono::milliseconds shutdownTimeout = kNoLimit;

void StartWorkers(HostState& state) {
  AbortWatchdog::Get().Start();
  try {
    state.pool = boost::make_shared<tarnwick::threads::WorkerPool>();
    state.executor = tarnwick::threads::CreateSubExecutor(state.pool, -1);
  } catch (...) {
    state.pool.reset();
    AbortWatchdog::Get().Stop();
    throw;
  }
}

// Returns false if stalled workers keep using `state`.
bool StopWorkers(HostState& state) {
  state.executor->StopAccepting();
  bool ended = true;
  if (shutdownTimeout < std::chrono::milliseconds(0)) {
    state.executor->WaitForAccepted();
  } else {
    ended = state.pool->WaitUnlessStalled(shutdownTimeout);
  }
  foundation::ReadAheadThreads::WaitForAll();
  AbortWatchdog::Get().Stop();
  if (!ended) return false;
  state.executor.reset();
  state.pool.reset();
  return true;
}

}  // namespace

const std::string ProviderHost::sBestProvider;
unsigned int ProviderHost::sUseCount = 0;
bool ProviderHost::sAdditionalRegistered = false;

void ProviderHost::Initialize() {
  if (++sUseCount != 1) return;
  tarnwick::config::Localizer::Get();  // reads the catalogue here, not within a request
  for (const auto make : kProviders) {
    RegisterProvider(std::make_unique<AsyncProviderWrapper>(make()));
  }
  HostState& state = HostState::Get();
  if (!state.executor) StartWorkers(state);
}

void ProviderHost::RegisterAdditionalProviders() {
  if (sUseCount == 0 || std::exchange(sAdditionalRegistered, true)) return;
  for (const auto make : kAdditionalProviders) {
    RegisterProvider(std::make_unique<AsyncProviderWrapper>(make()));
  }
}

void ProviderHost::Shutdown() {
  if (--sUseCount != 0) return;
  sAdditionalRegistered = false;
  HostState& state = HostState::Get();
  if (state.executor && !StopWorkers(state)) {
    HostState::Abandon();
    return;
  }
  for (ProviderWrapper*& wrapper : state.providers) delete std::exchange(wrapper, nullptr);
  state.providers.clear();
}

void ProviderHost::SetShutdownTimeout(std::chrono::milliseconds timeout) {
  shutdownTimeout = timeout;
}

std::size_t ProviderHost::GetStalledWorkerCount() {
  const auto pool = HostState::Get().pool;
  return pool ? pool->StalledCount() : 0;
}

void ProviderHost::RegisterProvider(std::unique_ptr<ProviderWrapper> wrapper) {
  if (!wrapper) return;
  HostState::Get().providers.push_back(wrapper.get());
  wrapper.release();
}

const std::vector<ProviderWrapper*>& ProviderHost::GetAllProviders() {
  return HostState::Get().providers;
}

std::vector<ProviderWrapper*> ProviderHost::GetProviderList(const std::string& path) {
  return GetProviderList(path, nullptr);
}

std::vector<ProviderWrapper*> ProviderHost::GetProviderList(const std::string& path,
                                                            ProviderRequest* request) {
  if (path.empty()) return {};
  const foundation::CallScope scope;  // all providers read the same folder
  const platform::ShareScope shares(path);
  std::vector<std::pair<int, ProviderWrapper*>> scored;
  for (ProviderWrapper* wrapper : HostState::Get().providers) {
    if (ProviderRequest::TestAborted(request) || wrapper == nullptr) return {};
    const int score = wrapper->CanProvideFor(path);
    if (score >= 1) scored.emplace_back(score, wrapper);
  }
  std::stable_sort(scored.begin(), scored.end(),
                   [](const auto& a, const auto& b) { return a.first > b.first; });
  std::vector<ProviderWrapper*> list;
  for (const auto& [score, wrapper] : scored) list.push_back(wrapper);
  return list;
}

bool ProviderHost::HasProvider(const std::string& path) {
  const foundation::CallScope scope;
  const platform::ShareScope shares(path);
  try {
    const auto& providers = HostState::Get().providers;
    return std::any_of(providers.begin(), providers.end(), [&](const ProviderWrapper* wrapper) {
      return wrapper->CanProvideFor(path) >= 1;
    });
  } catch (...) {
    // A provider that throws must not abort a listing.
    return false;
  }
}

boost::shared_ptr<tarnwick::threads::AsyncExecutor> ProviderHost::GetProviderExecutor() {
  return HostState::Get().executor;
}

Hestra::InterfaceRef<ProviderListRequest, Hestra::IThreadedQueueRequest>
ProviderHost::RequestProviderList(const std::string& path,
                                  tarnwick::utility::ImmutableString station) {
  const Hestra::InterfaceRef<ProviderListRequest, Hestra::IThreadedQueueRequest> request(
      new ProviderListRequest(std::move(station), path));
  QueueRequest(request);
  return request;
}

Hestra::InterfaceRef<ProviderDefaultContentRequest, Hestra::IThreadedQueueRequest>
ProviderHost::RequestDefaultProviderContent(
    Hestra::ObjectPtr<DefaultContentRequestData, Hestra::AtomicValue> data,
    tarnwick::utility::ImmutableString station) {
  if (!data) throw Hestra::NullInterfaceException();
  const Hestra::InterfaceRef<ProviderDefaultContentRequest, Hestra::IThreadedQueueRequest> request(
      new ProviderDefaultContentRequest(std::move(station), std::move(data)));
  QueueRequest(request);
  return request;
}

}  // namespace Sorvik
