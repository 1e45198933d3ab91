// SPDX-License-Identifier: MIT
// Round trip of a request, from the call to its message on the UI thread, with a provider that does
// nothing.
#include <benchmark/benchmark.h>

#include <memory>

#include "SorvikProvider/frame/ProviderHost.h"
#include "SorvikProvider/frame/ProviderMessages.h"
#include "support/FakeProvider.h"

namespace {

using namespace Sorvik;

class Host {
 public:
  Host() {
    ProviderHost::Initialize();
    wrapper_ = new AsyncProviderWrapper(
        new sorvik_test::FakeProvider(std::make_shared<sorvik_test::FakeAnswers>()));
    ProviderHost::RegisterProvider(std::unique_ptr<ProviderWrapper>(wrapper_));
    Hestra::StationUtils::RegisterStation("bench", [this](const Hestra::Message&) { ++received_; });
  }
  ~Host() {
    ProviderHost::Shutdown();
    while (Hestra::StationUtils::Dispatch() > 0) {
    }
    Hestra::StationUtils::UnregisterStation("bench");
  }
  auto Request() { return wrapper_->RequestContent("bench:", {}, "bench"); }
  void WaitFor(long count) {
    while (received_ < count) Hestra::StationUtils::WaitAndDispatch(-1);
  }

 private:
  AsyncProviderWrapper* wrapper_;
  long received_ = 0;
};

void RoundTrip(benchmark::State& state) {
  Host host;
  long requested = 0;
  for (auto _ : state) {
    host.Request();
    host.WaitFor(++requested);
  }
}
BENCHMARK(RoundTrip)->UseRealTime()->Unit(benchmark::kMicrosecond);

// 1,000 requests, every second one aborted: exactly 1,000 messages.
void ThousandHalfAborted(benchmark::State& state) {
  Host host;
  long requested = 0;
  for (auto _ : state) {
    for (int i = 0; i < 1000; ++i) {
      const auto request = host.Request();
      if (i % 2 == 0) request->Abort();
    }
    host.WaitFor(requested += 1000);
  }
  state.SetItemsProcessed(requested);
}
BENCHMARK(ThousandHalfAborted)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
