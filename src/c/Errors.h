// SPDX-License-Identifier: MIT
// Failures of the C interface: how they are described, and the last one of each thread.
#pragma once

#include <exception>
#include <new>
#include <string>
#include <utility>

#include "SorvikProvider/c/sorvik.h"

namespace Sorvik::c {

struct Outcome {
  sorvik_status status = SORVIK_OK;
  std::string path = {};
  std::string text = {};

  bool Ok() const noexcept { return status == SORVIK_OK; }
};

// The outcome of an exception that is being handled.
Outcome DescribeException() noexcept;

// Stores a failure as the last one of this thread. Returns its status.
sorvik_status SetLastError(Outcome outcome) noexcept;

// Calls `function`, which returns an Outcome. An exception counts as a failure.
template <class Function>
sorvik_status Guarded(const Function& function) noexcept {
  Outcome outcome;
  try {
    outcome = function();
  } catch (...) {
    outcome = DescribeException();
  }
  return outcome.Ok() ? SORVIK_OK : SetLastError(std::move(outcome));
}

}  // namespace Sorvik::c
