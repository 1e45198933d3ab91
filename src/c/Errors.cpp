// SPDX-License-Identifier: MIT
#include "c/Errors.h"

namespace Sorvik::c {
namespace {

thread_local Outcome lastError;

}  // namespace

Outcome DescribeException() noexcept {
  try {
    throw;
  } catch (const std::bad_alloc&) {
    return {SORVIK_OUT_OF_MEMORY, {}, "out of memory"};
  } catch (const std::exception& exception) {
    try {
      return {SORVIK_FAILED, {}, exception.what()};
    } catch (...) {
      return {SORVIK_FAILED};
    }
  } catch (...) {
    return {SORVIK_FAILED, {}, "unknown failure"};
  }
}

sorvik_status SetLastError(Outcome outcome) noexcept {
  lastError = std::move(outcome);
  return lastError.status;
}

}  // namespace Sorvik::c

const char* sorvik_error_text(void) { return Sorvik::c::lastError.text.c_str(); }
const char* sorvik_error_path(void) { return Sorvik::c::lastError.path.c_str(); }
