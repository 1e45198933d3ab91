// SPDX-License-Identifier: MIT
// Inline pictures for terminals: kitty graphics protocol and sixels.
#pragma once

#include <string>

#include "Arguments.h"
#include "Picture.h"

namespace host {

// Resolves kAutomatic by KITTY_WINDOW_ID, TERM_PROGRAM and TERM; kNone if the output isn't a
// terminal. Returns any other value of `requested` unchanged.
PictureProtocol ChooseProtocol(PictureProtocol requested, bool isTerminal);

// The size of a picture in terminal cells.
struct CellExtent {
  int columns = 0;
  int rows = 0;
};
CellExtent ExtentOf(int width, int height);

// Returns the escape sequence that draws the picture at the cursor. `protocol` is kKitty or kSixel.
std::string PictureBytes(const Picture& picture, PictureProtocol protocol);

}  // namespace host
