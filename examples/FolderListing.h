// SPDX-License-Identifier: MIT
// What the examples share: lists a folder with its best provider and prints the names of its
// entries. The event loop calls Hestra::StationUtils::Dispatch, which calls Receive.
#pragma once

#include <cstdio>
#include <functional>
#include <string>
#include <utility>

#include "SorvikProvider/foundation/Messaging.h"
#include "SorvikProvider/frame/ProviderHost.h"
#include "SorvikProvider/frame/ProviderMessages.h"

class FolderListing {
 public:
  // `finished` is called on the UI thread once the entries are printed, or there are none.
  FolderListing(std::string path, std::function<void()> finished)
      : path_(std::move(path)), finished_(std::move(finished)) {
    Sorvik::ProviderHost::Initialize();
    Hestra::StationUtils::RegisterStation(
        kStation, [this](const Hestra::Message& message) { Receive(message); });
    Sorvik::ProviderHost::RequestProviderList(path_, kStation);
  }
  ~FolderListing() {
    Hestra::StationUtils::UnregisterStation(kStation);
    Sorvik::ProviderHost::Shutdown();
  }
  FolderListing(const FolderListing&) = delete;
  FolderListing& operator=(const FolderListing&) = delete;

  int ExitCode() const { return exitCode_; }

 private:
  static constexpr const char* kStation = "folder-listing";

  void Receive(const Hestra::Message& message) {
    if (const auto* list = dynamic_cast<const Sorvik::GetProviderListMessage*>(&message)) {
      RequestContent(*list);
    } else if (const auto* content = dynamic_cast<const Sorvik::GetContentMessage*>(&message)) {
      Print(*content);
    }
  }

  void RequestContent(const Sorvik::GetProviderListMessage& list) {
    if (list.result != Sorvik::kResultDone) {
      std::fprintf(stderr, "%s: no provider for this path\n", path_.c_str());
      Finish(1);
      return;
    }
    list.providers.front()->RequestContent(path_, {Sorvik::kNameField}, kStation);
  }

  void Print(const Sorvik::GetContentMessage& content) {
    std::printf("%s\n", content.identification.c_str());
    for (const auto& [key, fields] : content.content) {
      const auto name = fields.find(Sorvik::kNameField);
      const auto* text = name == fields.end() ? nullptr : name->second.get_if<std::string>();
      std::printf("  %s\n", text != nullptr ? text->c_str() : key.c_str());
    }
    Finish(0);
  }

  void Finish(int exitCode) {
    exitCode_ = exitCode;
    finished_();
  }

  std::string path_;
  std::function<void()> finished_;
  int exitCode_ = 1;
};

// The folder to list: the first argument, or the list of volumes.
inline std::string PathOfArguments(int argc, char** argv) {
  return argc > 1 ? argv[1] : Sorvik::kVolumeListPath;
}
