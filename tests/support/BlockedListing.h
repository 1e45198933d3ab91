// SPDX-License-Identifier: MIT
// A listing that is aborted while a call to its share blocks.
#pragma once

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

#include "SorvikProvider/frame/ProviderHost.h"
#include "SorvikProvider/frame/ProviderMessages.h"
#include "support/FakeProvider.h"
#include "support/TestShare.h"

namespace sorvik_test {

inline const Sorvik::ProviderWrapper& ProviderNamed(const std::string& identification) {
  const auto& all = Sorvik::ProviderHost::GetAllProviders();
  return **std::ranges::find(all, identification, &Sorvik::ProviderWrapper::GetIdentification);
}

// Threads and open files of this process.
struct ProcessUse {
  static long Count(const char* folder) {
    return std::distance(std::filesystem::directory_iterator(folder), {});
  }
  static ProcessUse Now() { return {Count("/proc/self/task"), Count("/proc/self/fd")}; }

  long threads;
  long files;
};

struct AbortTimes {
  bool blocked = false;    // false if the listing ended before the call
  double message = 0;      // milliseconds from the abort to the message
  double other = 0;        // from then to the answer for another, healthy folder
  bool isAborted = false;  // by its result
};

// Blocks the call with the number `call` of a listing of `path`, and all later ones, until the
// listing is aborted and another request is answered.
inline AbortTimes AbortBlockedListing(TestShare& share, const Sorvik::ProviderWrapper& provider,
                                      const std::string& path, long call,
                                      const std::string& healthyFolder) {
  using Clock = std::chrono::steady_clock;
  const auto milliseconds = [](Clock::duration time) {
    return std::chrono::duration<double, std::milli>(time).count();
  };
  Inbox<Sorvik::GetContentMessage> inbox("blocked");
  const auto fields = provider.GetDefaultFieldList();
  share.BlockAt(call);
  const auto request = provider.RequestContent(path, {fields.begin(), fields.end()}, "blocked");
  while (share.Calls() < call && inbox.messages.empty()) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    Hestra::StationUtils::Dispatch();
  }
  AbortTimes times;
  times.blocked = inbox.messages.empty();
  const auto start = Clock::now();
  request->Abort();
  if (!inbox.WaitFor(1)) return times;
  const auto answered = Clock::now();
  times.message = milliseconds(answered - start);
  times.isAborted = inbox.messages.front().result == Sorvik::kResultAborted;
  Inbox<Sorvik::GetProviderListMessage> other("healthy");
  const auto second = Sorvik::ProviderHost::RequestProviderList(healthyFolder, "healthy");
  times.other = other.WaitFor(1) ? milliseconds(Clock::now() - answered) : -1;
  share.Lift();
  return times;
}

}  // namespace sorvik_test
