// SPDX-License-Identifier: MIT
#include "foundation/Digest.h"

#include <glib.h>

#include <memory>

namespace Sorvik::foundation {

std::string MD5Hex(std::string_view bytes) {
  const std::unique_ptr<char, decltype(&g_free)> digits(
      g_compute_checksum_for_data(G_CHECKSUM_MD5, reinterpret_cast<const guchar*>(bytes.data()),
                                  bytes.size()),
      &g_free);
  std::string hex = digits.get();
  for (char& c : hex) c = g_ascii_toupper(c);
  return hex;
}

}  // namespace Sorvik::foundation
