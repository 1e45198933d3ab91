// SPDX-License-Identifier: MIT
// Pictures inside the text of a terminal, by the kitty graphics protocol or as sixels.
#pragma once

#include <string>

#include "Arguments.h"
#include "Picture.h"

namespace host {

// What to use where `asked` leaves it open: told from KITTY_WINDOW_ID, TERM_PROGRAM and TERM, and
// none if the output is no terminal.
PictureProtocol ChooseProtocol(PictureProtocol asked, bool isTerminal);

// How many cells a picture takes on the terminal.
struct CellExtent {
  int columns = 0;
  int rows = 0;
};
CellExtent ExtentOf(int width, int height);

// The picture at the cursor, as bytes for the terminal; `protocol` is kKitty or kSixel.
std::string PictureBytes(const Picture& picture, PictureProtocol protocol);

}  // namespace host
