// SPDX-License-Identifier: MIT
// A fixture for tests that nothing accesses a share whose server is unreachable.
#pragma once

#include <gtest/gtest.h>

#include <utility>

#include "support/RealMount.h"
#include "support/TempTree.h"

namespace sorvik_test {

class DeadShareTest : public testing::Test {
 protected:
  DeadShareTest() : mount_(RealMount::DeadShare(tree_.Folder("folder/nas"))) {}

  // Runs `question`. If it blocks, fails and removes the share, which unblocks it.
  template <class Question>
  void Ask(const char* what, Question question) {
    if (!mount_.DoesNotBlock(std::move(question))) {
      ADD_FAILURE() << what << " waited for the share";
    }
  }

  TempTree tree_;
  RealMount mount_;  // at folder/nas; false if this machine doesn't allow it
};

}  // namespace sorvik_test
