// SPDX-License-Identifier: MIT
#include "Values.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <set>
#include <utility>

#include "Paths.h"
#include "SorvikProvider/foundation/Localizer.h"
#include "SorvikProvider/foundation/UTF16String.h"
#include "SorvikProvider/frame/Provider.h"
#include "SorvikProvider/frame/ProviderHost.h"
#include "SorvikProvider/metadata/XMPSupport.h"
#include "Text.h"

namespace host {
namespace {

using Sorvik::any_regular_t;
using List = std::vector<any_regular_t>;

// Formats of composed values keep their separators if all parts are empty.
bool IsOnlySeparators(const std::string& text) {
  return text.find_first_not_of(" @;,|") == std::string::npos;
}

std::string TextOf(const any_regular_t& value) {
  if (const auto* text = value.get_if<std::string>())
    return IsOnlySeparators(*text) ? std::string() : WithoutFraction(*text);
  if (const auto* wide = value.get_if<Hestra::UTF16String>()) return Hestra::MakeStdString(*wide);
  if (const auto* size = value.get_if<Sorvik::Provider::ByteSize_t>()) return SizeText(size->value);
  return {};
}

}  // namespace

std::string CellText(const any_regular_t& value) {
  const auto* list = value.get_if<List>();
  if (list == nullptr) return TextOf(value);
  if (list->size() == 1) return TextOf(list->front());
  return list->empty() ? std::string() : "(" + std::to_string(list->size()) + ")";
}

std::string FullText(const any_regular_t& value) {
  if (const auto* text = value.get_if<std::string>()) {
    return IsOnlySeparators(*text) ? std::string() : *text;
  }
  if (const auto* size = value.get_if<Sorvik::Provider::ByteSize_t>()) {
    return std::to_string(size->value);
  }
  const auto* list = value.get_if<List>();
  if (list == nullptr) return TextOf(value);
  std::string joined;
  for (const any_regular_t& item : *list) {
    const std::string text = FullText(item);
    if (!text.empty()) joined += (joined.empty() ? "" : "; ") + text;
  }
  return joined;
}

std::string SecondsText(const any_regular_t& frameCount) {
  const auto* text = frameCount.get_if<std::string>();
  std::int64_t frames = 0;
  std::string scale;
  if (text == nullptr || !Sorvik::XMPSupport::ParseFrameCount(*text, frames, scale)) return {};
  const std::size_t slash = std::min(scale.find('/'), scale.size());
  const double units = std::strtod(scale.c_str(), nullptr);
  const double perSecond =
      slash == scale.size() ? 1 : std::strtod(scale.c_str() + slash + 1, nullptr);
  const double seconds = static_cast<double>(frames) * units / perSecond;
  constexpr double kMaxSeconds = 1e9;
  if (!(seconds > 0 && seconds < kMaxSeconds)) return {};
  char number[32];
  const auto [end, error] =
      std::to_chars(number, number + sizeof number, seconds, std::chars_format::fixed, 3);
  if (error != std::errc()) return {};
  std::string digits(number, end);
  digits.erase(digits.find_last_not_of('0') + 1);
  if (digits.back() == '.') digits.pop_back();
  return digits + " s";
}

void ShowDuration(Sorvik::FieldValueMap& fields) {
  const auto duration = fields.find(kDurationField);
  const auto count = fields.find(kFrameCountField);
  if (duration == fields.end() || count == fields.end()) return;
  if (FieldTexts(fields, kDurationField).empty()) {
    duration->second = any_regular_t(SecondsText(count->second));
  }
}

std::vector<std::string> ValueLines(const any_regular_t& value) {
  std::vector<std::string> lines;
  if (const auto* list = value.get_if<List>()) {
    for (const any_regular_t& item : *list) lines.push_back(TextOf(item));
  } else {
    lines.push_back(TextOf(value));
  }
  std::erase(lines, std::string());
  return lines;
}

bool IsSize(const any_regular_t& value) { return value.holds<Sorvik::Provider::ByteSize_t>(); }

std::vector<std::string> FieldTexts(const Sorvik::FieldValueMap& fields, const char* name) {
  const auto found = fields.find(name);
  if (found == fields.end()) return {};
  std::vector<std::string> texts;
  if (const auto* text = found->second.get_if<std::string>()) {
    texts.push_back(*text);
  } else if (const auto* list = found->second.get_if<List>()) {
    for (const any_regular_t& item : *list) {
      if (const auto* one = item.get_if<std::string>()) texts.push_back(*one);
    }
  }
  std::erase(texts, std::string());
  return texts;
}

std::string EntryName(const std::string& key, const Sorvik::FieldValueMap& fields) {
  const std::vector<std::string> names = FieldTexts(fields, Sorvik::kNameField);
  return names.empty() ? FileName(key) : names.front();
}

std::vector<std::string> EntryPaths(const Sorvik::FieldValueMap& fields) {
  std::vector<std::string> paths;
  std::set<std::string> seen;
  for (const char* field : {Sorvik::kPathField, Sorvik::kExtraPathField, Sorvik::kProxyPathField}) {
    for (std::string& path : FieldTexts(fields, field)) {
      if (seen.insert(path).second) paths.push_back(std::move(path));
    }
  }
  return paths;
}

std::vector<std::string> AllPaths(const Sorvik::ContentMap& content) {
  std::vector<std::string> paths;
  std::set<std::string> seen;  // entries of a card share most of their paths
  for (const auto& [key, fields] : content) {
    for (std::string& path : EntryPaths(fields)) {
      if (seen.insert(path).second) paths.push_back(std::move(path));
    }
  }
  return paths;
}

std::string LabelOf(const Sorvik::FieldLabelMap& labels, const std::string& field) {
  const auto& localizer = tarnwick::config::Localizer::Get();
  const auto label = labels.find(field);
  if (label != labels.end()) return localizer.GetUTF8String(label->second);
  // Providers supply labels only for some of the fields that they support.
  for (const Sorvik::XMPSupport::XMPCrossReference& row : Sorvik::XMPSupport::kXMPCrossReference) {
    if (field == row.propertyName) return localizer.GetUTF8String(row.labelKey);
  }
  // A field that only other providers support, such as the size of a file.
  for (const Sorvik::ProviderWrapper* provider : Sorvik::ProviderHost::GetAllProviders()) {
    const Sorvik::FieldLabelMap others = provider->GetFieldLabelList();
    const auto other = others.find(field);
    if (other != others.end()) return localizer.GetUTF8String(other->second);
  }
  return field;
}

std::string Translated(const char* key) {
  return tarnwick::config::Localizer::Get().GetUTF8String(key);
}

}  // namespace host
