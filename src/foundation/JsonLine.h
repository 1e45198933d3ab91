// SPDX-License-Identifier: MIT
// Builds one JSON object on one line.
#pragma once

#include <concepts>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "SorvikProvider/foundation/JsonText.h"

namespace Sorvik::foundation {

class JsonLine {
 public:
  JsonLine& Text(std::string_view name, std::string_view text) {
    Name(name);
    Hestra::AppendJsonString(json_, text);
    return *this;
  }
  // Null if `text` is empty.
  JsonLine& OptionalText(std::string_view name, std::string_view text) {
    return text.empty() ? Json(name, "null") : Text(name, text);
  }
  JsonLine& Texts(std::string_view name, const std::vector<std::string>& texts) {
    Name(name);
    json_ += '[';
    for (std::size_t i = 0; i < texts.size(); ++i) {
      if (i > 0) json_ += ',';
      Hestra::AppendJsonString(json_, texts[i]);
    }
    json_ += ']';
    return *this;
  }
  template <std::integral Number>
  JsonLine& Integer(std::string_view name, Number number) {
    return Json(name, std::to_string(number));
  }
  JsonLine& Boolean(std::string_view name, bool value) {
    return Json(name, value ? "true" : "false");
  }
  // A member that is JSON already.
  JsonLine& Json(std::string_view name, std::string_view json) {
    Name(name);
    json_ += json;
    return *this;
  }

  // The complete line, with its end. The object is empty afterwards.
  std::string Take() { return std::exchange(json_, "{") + "}\n"; }

 private:
  void Name(std::string_view name) {
    if (json_.size() > 1) json_ += ',';
    json_.append("\"").append(name).append("\":");
  }

  std::string json_ = "{";
};

}  // namespace Sorvik::foundation
