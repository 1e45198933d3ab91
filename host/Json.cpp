// SPDX-License-Identifier: MIT
#include "Json.h"

#include "Failure.h"
#include "SorvikProvider/foundation/UTF16String.h"
#include "SorvikProvider/frame/Provider.h"

namespace host {

void JsonWriter::Strings(const std::vector<std::string>& texts) {
  BeginArray();
  for (const std::string& text : texts) String(text);
  EndArray();
}

void JsonWriter::Value(const Sorvik::any_regular_t& value) {
  if (const auto* text = value.get_if<std::string>()) {
    // A frame count without a duration.
    constexpr std::string_view kNoFrameCount = " @ ";
    String(*text == kNoFrameCount ? std::string_view() : *text);
  } else if (value.holds<std::vector<Sorvik::any_regular_t>>()) {
    BeginArray();
    value.for_each_item([this](const Sorvik::any_regular_t& item) { Value(item); });
    EndArray();
  } else if (const auto* wide = value.get_if<Hestra::UTF16String>()) {
    String(*wide);
  } else if (const auto* size = value.get_if<Sorvik::Provider::ByteSize_t>()) {
    BeginObject();
    Key("bytes");
    Number(size->value);
    EndObject();
  } else {
    Null();
  }
}

void JsonWriter::Fields(const Sorvik::FieldValueMap& fields) {
  BeginObject();
  for (const auto& [name, value] : fields) {
    Key(name);
    Value(value);
  }
  EndObject();
}

void JsonWriter::Entries(const Sorvik::ContentMap& content) {
  BeginObject();
  for (const auto& [key, fields] : content) {
    Key(key);
    Fields(fields);
  }
  EndObject();
}

void WriteErrorJson(Output& output, const Failure& failure) {
  JsonWriter json(output);
  json.BeginObject();
  json.Key("error");
  json.BeginObject();
  json.Key("path");
  json.String(failure.Path());
  json.Key("message");
  json.String(failure.Message());
  json.EndObject();
  json.EndObject();
}

}  // namespace host
