// SPDX-License-Identifier: MIT
// RDF/XML as used by XMP (ISO 16684-1, clause 7 and annex C), in all forms that writers produce.
#pragma once

#include <vector>

#include "foundation/XmlTree.h"
#include "xmp/XMPNode.h"

namespace Sorvik::xmp {

// Returns the properties of the document's rdf:RDF, sorted by name. Invalid RDF is read as far as
// possible: the first of duplicate properties is kept. Throws kXMPErr_BadRDF if the document has no
// rdf:RDF element.
std::vector<XMPNode> ReadRDF(const foundation::XmlDocument& document);

}  // namespace Sorvik::xmp
