// SPDX-License-Identifier: MIT
// A host with the event loop of Qt. The notifier is level-triggered and doesn't close the
// descriptor.
#include <QCoreApplication>
#include <QSocketNotifier>

#include "FolderListing.h"

int main(int argc, char** argv) {
  QCoreApplication application(argc, argv);
  FolderListing listing(PathOfArguments(argc, argv), [] { QCoreApplication::quit(); });
  QSocketNotifier notifier(Hestra::StationUtils::GetEventDescriptor(), QSocketNotifier::Read);
  QObject::connect(&notifier, &QSocketNotifier::activated,
                   [] { Hestra::StationUtils::Dispatch(); });
  QCoreApplication::exec();
  return listing.ExitCode();
}
