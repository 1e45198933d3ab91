// SPDX-License-Identifier: MIT
#include "xmp/readers/PdfReader.h"

#include <optional>

#include "xmp/readers/FileWindow.h"
#include "xmp/readers/PdfObjects.h"
#include "xmp/readers/PdfXref.h"

namespace Sorvik::xmp {

namespace {

// The header may follow up to 1,024 bytes of other data, as most readers accept it.
std::optional<std::uint64_t> HeaderOffset(const ReaderInput& input) {
  constexpr std::uint64_t kSearch = 1024;
  const std::size_t at = input.head.Clip(0, kSearch).Text().find("%PDF-");
  if (at == std::string_view::npos) return std::nullopt;
  return at;
}

bool Recognises(const ReaderInput& input) { return HeaderOffset(input).has_value(); }

void Read(const ReaderInput& input, const WantedProperties&, ReaderOutput& output) {
  const auto base = HeaderOffset(input);
  if (!base) return;
  FileWindow file(input);
  PdfXref xref(file, *base);
  if (!xref.Open()) return;
  const auto root = PdfReference(PdfValue(xref.Trailer(), "/Root"));
  if (!root) return;
  const std::string catalog = xref.Object(*root);
  const auto metadata = PdfReference(PdfValue(catalog, "/Metadata"));
  if (!metadata) return;
  std::string packet = xref.Stream(*metadata);
  // The stream of an encrypted document may be encrypted, too.
  if (packet.find("RDF") != packet.npos) output.packet = std::move(packet);
}

}  // namespace

const Reader kPdfReader = {"PDF", Recognises, Read};

}  // namespace Sorvik::xmp
