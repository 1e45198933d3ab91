// SPDX-License-Identifier: MIT
// A provider whose results a test sets, and a receiver of messages.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "SorvikProvider/foundation/Messaging.h"
#include "SorvikProvider/frame/Provider.h"
#include "SorvikProvider/frame/ProviderRequest.h"

namespace sorvik_test {

struct FakeAnswers {
  std::string identification = "test.Fake";
  std::function<int(const std::string&)> score = [](const std::string&) { return 0; };
  std::function<Sorvik::ContentMap(Sorvik::ProviderRequest*)> listing =
      [](Sorvik::ProviderRequest*) { return Sorvik::ContentMap(); };
  std::function<Sorvik::ContentMap()> entry = [] { return Sorvik::ContentMap(); };
  std::function<Bitplate**(Sorvik::ProviderRequest*)> thumbnail =
      [](Sorvik::ProviderRequest*) -> Bitplate** { return nullptr; };
  std::atomic<int> calls{0};
  std::atomic<bool> destroyed{false};
};

class FakeProvider final : public Sorvik::Provider {
 public:
  explicit FakeProvider(std::shared_ptr<FakeAnswers> answers) : answers_(std::move(answers)) {}
  ~FakeProvider() override { answers_->destroyed = true; }

  Sorvik::ContentMap GetContent(const std::string&, const std::string&,
                                const Sorvik::FieldNameSet&) const override {
    ++answers_->calls;
    return answers_->entry();
  }
  Sorvik::ContentMap GetContent(const std::string&, const Sorvik::FieldNameSet&,
                                Sorvik::ProviderRequest* request) const override {
    ++answers_->calls;
    return answers_->listing(request);
  }
  bool GetHasPossibleDirectoryContent(const std::string&) const override { return false; }
  bool DoesPathSupportOpenCommand(const std::string&, std::string& command) const override {
    command = "open";
    return true;
  }
  bool ProcessOpenCommand(const std::string&) const override { return true; }
  Sorvik::FieldNameSet GetFieldList() const override { return {"Name"}; }
  Sorvik::FieldNameList GetDefaultFieldList() const override { return {"Name"}; }
  Sorvik::FieldLabelMap GetFieldLabelList() const override { return {{"Name", "$$$/T=Name"}}; }
  int CanProvideFor(const std::string& path) const override {
    ++answers_->calls;
    return answers_->score(path);
  }
  std::string GetIdentification() const override { return answers_->identification; }
  std::string GetUIString() const override { return "Fake"; }
  int GetMaximumThumbnailHeight(int height) const override { return height / 2; }
  Bitplate** GetThumbnail(const std::string&, const std::string&, int, int,
                          Sorvik::ProviderRequest* request) const override {
    ++answers_->calls;
    return answers_->thumbnail(request);
  }
  bool ShouldCheckFilter() const override { return true; }
  bool IsFileBased() const override { return true; }

 private:
  std::shared_ptr<FakeAnswers> answers_;
};

// Blocks a provider until the test opens it.
class Turnstile {
 public:
  void ArriveAndWait() {
    std::unique_lock lock(mutex_);
    ++arrived_;
    changed_.notify_all();
    changed_.wait(lock, [this] { return open_; });
  }
  void WaitForArrival() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return arrived_ > 0; });
  }
  // The number of calls of ArriveAndWait so far.
  std::size_t Arrived() const {
    const std::lock_guard lock(mutex_);
    return arrived_;
  }
  void Open() {
    const std::lock_guard lock(mutex_);
    open_ = true;
    changed_.notify_all();
  }

 private:
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::size_t arrived_ = 0;
  bool open_ = false;
};

// Registers `station` and stores copies of its messages of type T.
template <class T>
class Inbox {
 public:
  explicit Inbox(std::string station) : station_(std::move(station)) {
    Hestra::StationUtils::RegisterStation(station_, [this](const Hestra::Message& message) {
      if (const auto* typed = dynamic_cast<const T*>(&message)) messages.push_back(*typed);
    });
  }
  ~Inbox() { Hestra::StationUtils::UnregisterStation(station_); }
  Inbox(const Inbox&) = delete;
  Inbox& operator=(const Inbox&) = delete;

  // Dispatches until `count` messages have arrived. Returns false after ten seconds.
  bool WaitFor(std::size_t count) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (messages.size() < count && std::chrono::steady_clock::now() < end) {
      Hestra::StationUtils::WaitAndDispatch(100);
    }
    return messages.size() >= count;
  }

  std::vector<T> messages;

 private:
  std::string station_;
};

}  // namespace sorvik_test
