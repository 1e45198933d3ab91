// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <string>

#include "xmp/Namespaces.h"
#include "xmp/XMPMeta.h"

namespace {

using namespace Sorvik::xmp;

TXMPMeta OneOfEachForm() {
  TXMPMeta meta;
  meta.SetProperty(kNsDM, "simple", "text");
  meta.SetStructField(kNsDM, "struct", kNsDM, "field", "in it");
  meta.AppendArrayItem(kNsDM, "bag", ArrayForm::kBag, "first");
  meta.AppendArrayItem(kNsDM, "bag", ArrayForm::kBag, "second");
  meta.SetLocalizedText(kNsDM, "text", "x-default", "default");
  return meta;
}

// Returns the id of the error that `read` throws, or 0.
template <class Read>
int ErrorOf(Read read) {
  try {
    read();
  } catch (const XMP_Error& error) {
    return error.GetID();
  }
  return 0;
}

TEST(XMPMeta, ThrowsForPropertiesOfAnotherForm) {
  const TXMPMeta meta = OneOfEachForm();
  std::string value = "kept";
  const auto item = [&](const char* name) {
    return ErrorOf([&] { meta.GetArrayItem(kNsDM, name, 1, &value); });
  };
  const auto field = [&](const char* name) {
    return ErrorOf([&] { meta.GetStructField(kNsDM, name, kNsDM, "field", &value); });
  };
  const auto text = [&](const char* name) {
    return ErrorOf([&] { meta.GetLocalizedText(kNsDM, name, "", "en", nullptr, &value); });
  };
  for (const char* name : {"simple", "struct"}) EXPECT_EQ(item(name), kXMPErr_BadXPath) << name;
  for (const char* name : {"simple", "bag", "text"}) EXPECT_EQ(field(name), kXMPErr_BadXPath);
  for (const char* name : {"simple", "struct", "bag"}) EXPECT_EQ(text(name), kXMPErr_BadXPath);
  EXPECT_EQ(value, "kept");
  // A missing property is not an error.
  EXPECT_FALSE(meta.GetArrayItem(kNsDM, "none", 1, &value));
  EXPECT_FALSE(meta.GetStructField(kNsDM, "none", kNsDM, "field", &value));
  EXPECT_FALSE(meta.GetLocalizedText(kNsDM, "none", "", "en", nullptr, &value));
  EXPECT_FALSE(meta.GetProperty(kNsDC, "simple", &value));
  for (const int index : {-1, 0, 3}) EXPECT_FALSE(meta.GetArrayItem(kNsDM, "bag", index, &value));
  EXPECT_EQ(value, "kept");
  EXPECT_TRUE(meta.GetArrayItem(kNsDM, "bag", 2, &value));
  EXPECT_EQ(value, "second");
}

TEST(XMPMeta, ReportsTheFormOfAProperty) {
  const TXMPMeta meta = OneOfEachForm();
  const auto options = [&](const char* name) {
    XMP_OptionBits bits = 0xFFFF;
    std::string value;
    EXPECT_TRUE(meta.GetProperty(kNsDM, name, &value, &bits));
    return bits;
  };
  EXPECT_EQ(options("simple"), 0u);
  EXPECT_EQ(options("struct"), kXMP_PropValueIsStruct);
  EXPECT_EQ(options("bag"), kXMP_PropValueIsArray);
  EXPECT_EQ(options("text"), kXMP_PropValueIsArray | kXMP_PropArrayIsOrdered |
                                 kXMP_PropArrayIsAlternate | kXMP_PropArrayIsAltText);
}

TEST(XMPMeta, ChoosesTheLanguage) {
  TXMPMeta meta;
  for (const char* language : {"fr", "de-AT", "de-CH", "X-Default", "en-GB"}) {
    meta.SetLocalizedText(kNsDC, "title", language, language);
  }
  const auto choose = [&](const char* generic, const char* specific) {
    std::string value, actual;
    meta.GetLocalizedText(kNsDC, "title", generic, specific, &actual, &value);
    EXPECT_EQ(value, actual);
    return value;
  };
  EXPECT_EQ(choose("", "EN-gb"), "en-GB");
  EXPECT_EQ(choose("de", "de-DE"), "de-AT");
  EXPECT_EQ(choose("fr", "fr-FR"), "fr");
  EXPECT_EQ(choose("d", "d"), "X-Default");  // not a subtag
  EXPECT_EQ(choose("", "de-DE"), "X-Default");
  EXPECT_EQ(choose(nullptr, "ja"), "X-Default");

  TXMPMeta withoutDefault;
  withoutDefault.SetLocalizedText(kNsDC, "title", "fr", "premier");
  withoutDefault.SetLocalizedText(kNsDC, "title", "de", "zweiter");
  std::string value;
  EXPECT_TRUE(withoutDefault.GetLocalizedText(kNsDC, "title", "", "en", nullptr, &value));
  EXPECT_EQ(value, "premier");

  // An item without a language is the default; an empty array gives no text.
  const std::string head = R"(<r:RDF xmlns:r="http://www.w3.org/1999/02/22-rdf-syntax-ns#"
      xmlns:d="http://purl.org/dc/elements/1.1/"><r:Description><d:title><r:Alt>)";
  const std::string tail = "</r:Alt></d:title></r:Description></r:RDF>";
  const auto parse = [&](const std::string& items) {
    TXMPMeta parsed;
    const std::string text = head + items + tail;
    parsed.ParseFromBuffer(text.data(), static_cast<std::uint32_t>(text.size()));
    return parsed;
  };
  EXPECT_TRUE(parse("<r:li xml:lang='fr'>f</r:li><r:li>plain</r:li>")
                  .GetLocalizedText(kNsDC, "title", "", "en", nullptr, &value));
  EXPECT_EQ(value, "plain");
  EXPECT_FALSE(parse("").GetLocalizedText(kNsDC, "title", "", "en", nullptr, &value));
}

TEST(XMPMeta, SetsAndMerges) {
  TXMPMeta strong = OneOfEachForm();
  strong.SetProperty(kNsDM, "empty", "");
  EXPECT_FALSE(strong.HasProperty(kNsDM, "empty"));
  strong.SetProperty(kNsDM, "bag", "now simple");
  std::string value;
  EXPECT_TRUE(strong.GetProperty(kNsDM, "bag", &value));
  EXPECT_EQ(value, "now simple");

  TXMPMeta weak;
  weak.SetProperty(kNsDM, "simple", "weak");
  weak.SetProperty(kNsDC, "identifier", "weak");
  weak.SetProperty(kNsXMP, "Rating", "weak");
  TXMPMeta sum = strong;
  sum.FillFrom(weak);
  sum.FillFrom(TXMPMeta());
  EXPECT_TRUE(sum.GetProperty(kNsDM, "simple", &value));
  EXPECT_EQ(value, "text");
  EXPECT_TRUE(sum.GetProperty(kNsDC, "identifier", &value));
  EXPECT_FALSE(strong.HasProperty(kNsDC, "identifier"));  // copies are independent

  sum.TakeFrom(weak, kNsDM, "simple");
  sum.TakeFrom(weak, kNsDM, "struct");
  EXPECT_TRUE(sum.GetProperty(kNsDM, "simple", &value));
  EXPECT_EQ(value, "weak");
  EXPECT_TRUE(sum.HasProperty(kNsDM, "struct"));
  sum.DeleteProperty(kNsXMP, "Rating");
  EXPECT_FALSE(sum.HasProperty(kNsXMP, "Rating"));
  sum.Clear();
  EXPECT_TRUE(sum.Empty());
}

}  // namespace
