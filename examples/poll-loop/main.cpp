// SPDX-License-Identifier: MIT
// A host with an event loop of its own: polls the library's descriptor and dispatches when it is
// readable.
#include <poll.h>

#include "FolderListing.h"

int main(int argc, char** argv) {
  bool running = true;
  FolderListing listing(PathOfArguments(argc, argv), [&] { running = false; });
  pollfd waiting{Hestra::StationUtils::GetEventDescriptor(), POLLIN, 0};
  while (running) {
    if (poll(&waiting, 1, -1) > 0) Hestra::StationUtils::Dispatch();
  }
  return listing.ExitCode();
}
