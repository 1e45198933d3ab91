// SPDX-License-Identifier: MIT
// A host with the main loop of GLib, such as a GTK application. A dialog that runs the loop within
// a receiver keeps receiving messages.
#include <glib-unix.h>

#include "FolderListing.h"

namespace {

gboolean DispatchMessages(gint, GIOCondition, gpointer) {
  Hestra::StationUtils::Dispatch();
  return G_SOURCE_CONTINUE;
}

// By default GLib doesn't dispatch a source within its own callback. A nested loop needs this.
guint AddRecursiveSource(gint descriptor) {
  GSource* const source = g_unix_fd_source_new(descriptor, G_IO_IN);
  g_source_set_can_recurse(source, TRUE);
  g_source_set_callback(source, G_SOURCE_FUNC(DispatchMessages), nullptr, nullptr);
  const guint id = g_source_attach(source, nullptr);
  g_source_unref(source);
  return id;
}

}  // namespace

int main(int argc, char** argv) {
  GMainLoop* const loop = g_main_loop_new(nullptr, FALSE);
  int exitCode = 0;
  {
    FolderListing listing(PathOfArguments(argc, argv), [&] { g_main_loop_quit(loop); });
    const guint source = AddRecursiveSource(Hestra::StationUtils::GetEventDescriptor());
    g_main_loop_run(loop);
    g_source_remove(source);
    exitCode = listing.ExitCode();
  }
  g_main_loop_unref(loop);
  return exitCode;
}
