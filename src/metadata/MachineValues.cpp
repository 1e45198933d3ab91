// SPDX-License-Identifier: MIT
#include "SorvikProvider/metadata/MachineValues.h"

#include <charconv>
#include <string_view>
#include <utility>

#include "SorvikProvider/foundation/JsonText.h"
#include "SorvikProvider/frame/Provider.h"
#include "metadata/MachineRecord.h"
#include "metadata/MachineRules.h"
#include "metadata/XMPFieldTable.h"

namespace Sorvik {
namespace {

using XMPSupport::MachineRecord;

thread_local int activeScopes = 0;

constexpr char kDurationField[] = "duration";

std::vector<std::string> TextsOf(const std::vector<any_regular_t>& list) {
  std::vector<std::string> texts;
  for (const any_regular_t& item : list) {
    if (const auto* text = item.get_if<std::string>()) texts.push_back(*text);
  }
  return texts;
}

MachineValue ValueOf(const std::string& name, const any_regular_t& value,
                     const MachineRecord* record) {
  if (const auto* list = value.get_if<std::vector<any_regular_t>>()) return TextsOf(*list);
  if (const auto* size = value.get_if<Provider::ByteSize_t>()) {
    return static_cast<std::int64_t>(size->value);
  }
  const auto* text = value.get_if<std::string>();
  if (text == nullptr) return {};
  const MachineRecord::Item* item = record == nullptr ? nullptr : record->Find(name);
  if (item != nullptr && item->MadeText(*text)) return item->value;
  if (text->empty()) return {};
  if (name == kDurationField) {
    const auto* own = item == nullptr ? nullptr : std::get_if<DurationValue>(&item->value);
    MachineValue total = XMPSupport::DurationOfTimecode(*text, own ? own->rate : Fraction());
    if (total.index() != 0) return total;
  }
  return XMPSupport::MachineValueOfText(name, *text);
}

void Append(std::string& json, std::monostate) { json += "null"; }
void Append(std::string& json, bool value) { json += value ? "true" : "false"; }
void Append(std::string& json, std::int64_t value) { json += std::to_string(value); }
void Append(std::string& json, double value) {
  char digits[32];
  const auto [end, error] = std::to_chars(digits, digits + sizeof(digits), value);
  json.append(digits, end);
}
void Append(std::string& json, const std::string& text) { Hestra::AppendJsonString(json, text); }
void Append(std::string& json, const Fraction& value) {
  json += '"' + std::to_string(value.numerator) + '/' + std::to_string(value.denominator) + '"';
}
void Append(std::string& json, const IsoTime& time) { Append(json, time.text); }
void AppendRate(std::string& json, const Fraction& rate) {
  json += ",\"rate\":";
  if (rate.numerator == 0) {
    json += "null";
  } else {
    Append(json, rate);
  }
}
void Append(std::string& json, const TimecodeValue& timecode) {
  json += "{\"timecode\":";
  Append(json, timecode.text);
  AppendRate(json, timecode.rate);
  json += ",\"dropFrame\":";
  Append(json, timecode.dropFrame);
  json += '}';
}
void Append(std::string& json, const DurationValue& duration) {
  json += "{\"count\":" + std::to_string(duration.count);
  AppendRate(json, duration.rate);
  json += '}';
}
void Append(std::string& json, const FrameSizeValue& size) {
  json += "{\"width\":" + std::to_string(size.width) +
          ",\"height\":" + std::to_string(size.height) + ",\"unit\":";
  Append(json, size.unit);
  json += '}';
}
void Append(std::string& json, const std::vector<std::string>& texts) {
  json += '[';
  for (std::size_t i = 0; i < texts.size(); ++i) {
    if (i > 0) json += ',';
    Append(json, texts[i]);
  }
  json += ']';
}

}  // namespace

MachineValueScope::MachineValueScope() noexcept { ++activeScopes; }
MachineValueScope::~MachineValueScope() { --activeScopes; }
bool MachineValueScope::IsActive() noexcept { return activeScopes > 0; }

MachineFields TakeMachineValues(FieldValueMap& entry) {
  const auto record = MachineRecord::TakeFrom(entry);
  MachineFields values;
  for (const auto& [name, field] : entry) {
    MachineValue value = ValueOf(name, field, record.get());
    if (value.index() != 0) values.emplace(name, std::move(value));
  }
  return values;
}

std::string ToJson(const MachineValue& value) {
  std::string json;
  std::visit([&json](const auto& held) { Append(json, held); }, value);
  return json;
}

std::string ToJson(const MachineFields& fields) {
  std::string json = "{";
  for (const auto& [name, value] : fields) {
    if (json.size() > 1) json += ',';
    Hestra::AppendJsonString(json, name);
    json += ':';
    std::visit([&json](const auto& held) { Append(json, held); }, value);
  }
  return json + '}';
}

}  // namespace Sorvik
