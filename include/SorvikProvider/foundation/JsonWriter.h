// SPDX-License-Identifier: MIT
// Streaming writer for one JSON document (RFC 8259).
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "SorvikProvider/foundation/Export.h"

namespace Hestra {

// The output is always valid JSON: a byte that isn't valid UTF-8 becomes the escape \udcXX, and
// control characters are escaped. One thread.
class SORVIK_EXPORT JsonWriter {
 public:
  // Receives the parts of the document. `indents`: one value per line, otherwise all on one line.
  using Sink = std::function<void(std::string_view)>;
  JsonWriter(Sink sink, bool indents) : sink_(std::move(sink)), indents_(indents) {}
  // Writes the newline after the document.
  ~JsonWriter();
  JsonWriter(const JsonWriter&) = delete;
  JsonWriter& operator=(const JsonWriter&) = delete;

  void BeginObject() { Open('{'); }
  void EndObject() { Close('}'); }
  void BeginArray() { Open('['); }
  void EndArray() { Close(']'); }

  // Inside an object, call it before each value.
  void Key(std::string_view key);

  void String(std::string_view text);
  void String(std::u16string_view text);
  void Number(unsigned long long number);
  void Number(int number);
  // The shortest decimal that gives the same number.
  void Number(double number);
  void Boolean(bool value);
  void Null();
  // A value that is JSON already.
  void Json(std::string_view json);

 private:
  void Open(char bracket);
  void Close(char bracket);
  void BeforeValue();
  void NewLine();

  Sink sink_;
  bool indents_;
  std::vector<bool> filled_;  // for each open bracket: whether it has content
  bool afterKey_ = false;
};

}  // namespace Hestra
