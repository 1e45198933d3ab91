// SPDX-License-Identifier: MIT
#include "foundation/platform/OwnModule.h"

#include <dlfcn.h>

#include <stdexcept>

#include "foundation/platform/FileSystem.h"

namespace Sorvik::platform {
namespace {

[[noreturn]] void Fail() {
  const char* const message = dlerror();
  throw std::runtime_error(message == nullptr ? "cannot load a module of the library" : message);
}

}  // namespace

void (*FunctionOfOwnModule(const std::string& file, const char* name))() {
  const std::string& library = OwnLibraryPath();
  const std::string path = library.substr(0, library.rfind('/') + 1) + "SorvikProvider/" + file;
  void* const module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) Fail();
  void* const function = dlsym(module, name);
  if (function == nullptr) Fail();
  return reinterpret_cast<void (*)()>(function);
}

}  // namespace Sorvik::platform
