// SPDX-License-Identifier: MIT
// RDF/XML as XMP uses it (ISO 16684-1, clause 7 and annex C), in every form that writers choose.
#pragma once

#include <vector>

#include "foundation/XmlTree.h"
#include "xmp/XMPNode.h"

namespace Sorvik::xmp {

// The properties of the document's rdf:RDF, in order of their names. Where the rules are broken,
// what can be understood is kept: of a property that stands twice, the first. Raises
// kXMPErr_BadRDF if the document holds no RDF.
std::vector<XMPNode> ReadRDF(const foundation::XmlDocument& document);

}  // namespace Sorvik::xmp
