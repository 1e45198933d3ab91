// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <map>

#include "support/Bytes.h"
#include "support/Deflated.h"
#include "support/ReadWith.h"
#include "xmp/readers/PdfReader.h"

namespace {

using namespace Sorvik::xmp;
using sorvik_test::Bytes;
using sorvik_test::Deflated;
using sorvik_test::ReadWith;

const std::string kOwn = "<rdf:RDF>own</rdf:RDF>";
const std::string kOther = "<?xpacket begin=''?><rdf:RDF>other</rdf:RDF><?xpacket end='w'?>";

std::string Stream(const std::string& dictionary, const std::string& data) {
  return "<<" + dictionary + "/Length " + std::to_string(data.size()) + ">>\nstream\r\n" + data +
         "\nendstream";
}

// A file under construction, which remembers where its objects begin.
class Pdf {
 public:
  explicit Pdf(const std::string& junk = "") : base_(junk.size()), bytes_(junk + "%PDF-1.7\n") {}

  Pdf& Object(int number, const std::string& content) {
    offsets_[number] = bytes_.size() - base_;
    bytes_ += std::to_string(number) + " 0 obj\n" + content + "\nendobj\n";
    return *this;
  }
  // A table with a subsection for each object that was added since the last one.
  Pdf& Table(const std::string& trailer) {
    const std::size_t at = bytes_.size() - base_;
    bytes_ += "xref\n0 1\n0000000000 65535 f \n";
    for (const auto& [number, offset] : offsets_) {
      char entry[32];
      std::snprintf(entry, sizeof entry, "%010zu 00000 n \n", offset);
      bytes_ += std::to_string(number) + " 1\n" + entry;
    }
    offsets_.clear();
    bytes_ += "trailer\n<<" + trailer + Previous(at) + ">>\n";
    return End(at);
  }
  // A cross-reference stream; entries of object streams are given as (number, container, index).
  Pdf& XrefStream(int number, const std::string& trailer,
                  const std::vector<std::array<int, 3>>& inStreams, bool predicted) {
    const std::size_t at = bytes_.size() - base_;
    std::string index;
    std::string rows;
    const auto row = [&](int object, int type, std::size_t second, int third) {
      index += std::to_string(object) + " 1 ";
      rows += Bytes().U8(type).U16(second).U8(third).str();
    };
    for (const auto& [object, offset] : offsets_) row(object, 1, offset, 0);
    for (const auto& [object, container, place] : inStreams) {
      row(object, 2, static_cast<std::size_t>(container), place);
    }
    offsets_.clear();
    std::string parameters;
    if (predicted) {
      parameters = "/DecodeParms<</Predictor 12/Columns 4>>";
      rows = Predicted(rows);
    }
    bytes_ += std::to_string(number) + " 0 obj\n" +
              Stream("/Type/XRef/W[1 2 1]/Index[" + index + "]/Filter/FlateDecode" + parameters +
                         trailer + Previous(at),
                     Deflated(rows)) +
              "\nendobj\n";
    return End(at);
  }
  const std::string& str() const { return bytes_; }

 private:
  // PNG filters 1 (difference to the left) and 2 (above) in turn.
  static std::string Predicted(const std::string& rows) {
    std::string result;
    for (std::size_t at = 0; at < rows.size(); at += 4) {
      const bool above = at / 4 % 2 == 1;
      result.push_back(above ? '\2' : '\1');
      for (std::size_t i = 0; i < 4; ++i) {
        const char other = above ? rows[at + i - 4] : i == 0 ? '\0' : rows[at + i - 1];
        result.push_back(static_cast<char>(rows[at + i] - other));
      }
    }
    return result;
  }
  std::string Previous(std::size_t at) {
    const std::string text = last_ == 0 ? "" : "/Prev " + std::to_string(last_);
    last_ = at;
    return text;
  }
  Pdf& End(std::size_t at) {
    bytes_ += "startxref\n" + std::to_string(at) + "\n%%EOF\n";
    return *this;
  }

  std::size_t base_;
  std::string bytes_;
  std::map<int, std::size_t> offsets_;
  std::size_t last_ = 0;
};

std::string PacketOf(const Pdf& pdf) { return ReadWith(kPdfReader, pdf.str()).output.packet; }

TEST(PdfReader, ReadsTheMetadataOfTheCatalog) {
  for (const char* junk : {"", "junk\n"}) {
    Pdf pdf(junk);
    pdf.Object(
        1, "<</Type/Catalog /Names<</Metadata 9 0 R>>(a \\) /Metadata 8 0 R)/x /Metadata 3 0 R>>");
    EXPECT_EQ(PacketOf(pdf.Table("/Root 1 0 R")), "");
  }
  for (const char* junk : {"", "junk\n"}) {
    Pdf pdf(junk);
    pdf.Object(1, "<</Names<</Metadata 5 0 R>>/Title(\\) /Metadata 5 0 R)%/x\n/Metadata 3 0 R>>")
        .Object(3, Stream("/Type/Metadata", kOwn))
        .Object(5, Stream("/Type/XObject", kOther))
        .Table("/Size 6/Root 1 0 R");
    const auto result = ReadWith(kPdfReader, pdf.str());
    EXPECT_TRUE(result.recognised);
    EXPECT_EQ(result.output.packet, kOwn);
    sorvik_test::ReadDamaged(kPdfReader, pdf.str());
  }
}

TEST(PdfReader, IgnoresMetadataOfPictures) {
  Pdf pdf;
  pdf.Object(1, "<</Type/Catalog>>").Object(2, Stream("/Type/XObject", kOther));
  EXPECT_EQ(PacketOf(pdf.Table("/Root 1 0 R")), "");
  EXPECT_EQ(ReadWith(kPdfReader, "%PDF-1.4\n" + kOther).output.packet, "") << "no cross-reference";
  Pdf encrypted;
  encrypted.Object(1, "<</Metadata 2 0 R>>").Object(2, Stream("", "\x93\xE1 ciphertext"));
  EXPECT_EQ(PacketOf(encrypted.Table("/Root 1 0 R/Encrypt 7 0 R")), "");
}

TEST(PdfReader, ReadsTheLatestRevision) {
  Pdf pdf;
  pdf.Object(1, "<</Metadata 2 0 R>>").Object(2, Stream("", "<RDF>old</RDF>")).Table("/Root 1 0 R");
  pdf.Object(2, Stream("/Filter[/FlateDecode]", Deflated(kOwn))).Table("/Root 1 0 R");
  EXPECT_EQ(PacketOf(pdf), kOwn);
  // A length in an object of its own, and a filter that isn't supported.
  Pdf indirect;
  indirect.Object(1, "<</Metadata 2 0 R>>")
      .Object(2, "<</Length 4 0 R>>stream\n" + kOwn + "\nendstream")
      .Object(4, std::to_string(kOwn.size()));
  EXPECT_EQ(PacketOf(indirect.Table("/Root 1 0 R")), kOwn);
  Pdf unsupported;
  unsupported.Object(1, "<</Metadata 2 0 R>>").Object(2, Stream("/Filter/LZWDecode", kOwn));
  EXPECT_EQ(PacketOf(unsupported.Table("/Root 1 0 R")), "");
}

TEST(PdfReader, ReadsCrossReferenceStreams) {
  for (const bool predicted : {false, true}) {
    Pdf pdf;
    const std::string catalog = "<</Type/Catalog/Metadata 2 0 R>>";
    const std::string header = "7 0 1 4 ";
    pdf.Object(2, Stream("/Type/Metadata", kOwn))
        .Object(3, Stream("/Type/ObjStm/N 2/First " + std::to_string(header.size()) +
                              "/Filter/FlateDecode",
                          Deflated(header + "123 " + catalog)))
        .XrefStream(4, "/Root 1 0 R", {{7, 3, 0}, {1, 3, 1}}, predicted);
    EXPECT_EQ(PacketOf(pdf), kOwn) << predicted;
  }
}

TEST(PdfReader, SurvivesCycles) {
  Pdf cycle;
  cycle.Object(1, "<</Metadata 1 0 R/Length 1 0 R>>stream\n\nendstream");
  cycle.Table("/Root 1 0 R/Prev 0");
  EXPECT_EQ(PacketOf(cycle), "");
  const std::string self = "%PDF-1.7\nxref\n0 0\ntrailer\n<</Root 1 0 R/Prev 9>>\nstartxref\n9\n";
  EXPECT_EQ(ReadWith(kPdfReader, self).output.packet, "");
}

}  // namespace
