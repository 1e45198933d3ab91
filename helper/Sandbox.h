// SPDX-License-Identifier: MIT
// Limits of the helper process, which decodes untrusted files.
#pragma once

namespace frame {

// Limits memory, processor time and files, and denies all system calls except those that reading an
// open file, allocating memory and answering need: no file can be opened, no process or connection
// made. Returns false if that isn't possible. Libraries must have been loaded before.
bool EnterSandbox();

}  // namespace frame
