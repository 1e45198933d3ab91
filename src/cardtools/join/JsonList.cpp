// SPDX-License-Identifier: MIT
#include "SorvikProvider/foundation/JsonWriter.h"
#include "cardtools/ShotJson.h"
#include "cardtools/join/JoinFormats.h"

namespace Sorvik {
namespace {

void WriteText(Hestra::JsonWriter& json, const char* name, const std::string& text) {
  json.Key(name);
  json.String(text);
}

}  // namespace

std::string JsonList(const JoinList& list, bool indents) {
  std::string text;
  {
    Hestra::JsonWriter json([&text](std::string_view part) { text += part; }, indents);
    json.BeginObject();
    WriteText(json, "path", list.path);
    WriteText(json, "provider", list.provider);
    json.Key("clips");
    json.BeginArray();
    for (const JoinShot& shot : list.shots) {
      json.BeginObject();
      WriteText(json, "key", shot.key);
      WriteText(json, "name", shot.name);
      WriteShot(json, shot.shot);
      json.EndObject();
    }
    json.EndArray();
    json.EndObject();
  }
  return text;
}

}  // namespace Sorvik
