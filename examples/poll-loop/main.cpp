// SPDX-License-Identifier: MIT
// A host with its own event loop: polls the library's event descriptor and dispatches when it is
// readable. Lists a folder with its best provider and prints the names of its entries.
#include <poll.h>

#include <cstdio>
#include <string>

#include "SorvikProvider/foundation/Messaging.h"
#include "SorvikProvider/frame/ProviderHost.h"
#include "SorvikProvider/frame/ProviderMessages.h"

namespace {

constexpr const char* kStation = "poll-loop";

struct Browser {
  std::string path;
  int exitCode = -1;  // running while negative

  void Receive(const Hestra::Message& message) {
    if (const auto* list = dynamic_cast<const Sorvik::GetProviderListMessage*>(&message)) {
      RequestContent(*list);
    } else if (const auto* content = dynamic_cast<const Sorvik::GetContentMessage*>(&message)) {
      Print(*content);
    }
  }

  void RequestContent(const Sorvik::GetProviderListMessage& list) {
    if (list.result != Sorvik::kResultDone) {
      std::fprintf(stderr, "poll-loop: %s: no provider for this path\n", path.c_str());
      exitCode = 1;
      return;
    }
    list.providers.front()->RequestContent(path, {Sorvik::kNameField}, kStation);
  }

  void Print(const Sorvik::GetContentMessage& content) {
    std::printf("%s\n", content.identification.c_str());
    for (const auto& [key, fields] : content.content) {
      const auto name = fields.find(Sorvik::kNameField);
      const auto* text = name == fields.end() ? nullptr : name->second.get_if<std::string>();
      std::printf("  %s\n", text != nullptr ? text->c_str() : key.c_str());
    }
    exitCode = 0;
  }
};

}  // namespace

int main(int argc, char** argv) {
  Browser browser;
  browser.path = argc > 1 ? argv[1] : Sorvik::kVolumeListPath;
  Sorvik::ProviderHost::Initialize();
  Hestra::StationUtils::RegisterStation(
      kStation, [&](const Hestra::Message& message) { browser.Receive(message); });
  Sorvik::ProviderHost::RequestProviderList(browser.path, kStation);
  pollfd waiting{Hestra::StationUtils::GetEventDescriptor(), POLLIN, 0};
  while (browser.exitCode < 0) {
    if (poll(&waiting, 1, -1) > 0) Hestra::StationUtils::Dispatch();
  }
  Sorvik::ProviderHost::Shutdown();
  return browser.exitCode;
}
