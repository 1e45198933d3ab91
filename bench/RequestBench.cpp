// SPDX-License-Identifier: MIT
// The way of a request from the call to the message on the UI thread, with a provider that costs
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
  auto Ask() { return wrapper_->RequestContent("bench:", {}, "bench"); }
  void WaitFor(long count) {
    while (received_ < count) Hestra::StationUtils::WaitAndDispatch(-1);
  }

 private:
  AsyncProviderWrapper* wrapper_;
  long received_ = 0;
};

void RoundTrip(benchmark::State& state) {
  Host host;
  long asked = 0;
  for (auto _ : state) {
    host.Ask();
    host.WaitFor(++asked);
  }
}
BENCHMARK(RoundTrip)->UseRealTime()->Unit(benchmark::kMicrosecond);

// A thousand requests in flight, every second one aborted: exactly a thousand messages.
void ThousandHalfAborted(benchmark::State& state) {
  Host host;
  long asked = 0;
  for (auto _ : state) {
    for (int i = 0; i < 1000; ++i) {
      const auto request = host.Ask();
      if (i % 2 == 0) request->Abort();
    }
    host.WaitFor(asked += 1000);
  }
  state.SetItemsProcessed(asked);
}
BENCHMARK(ThousandHalfAborted)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
