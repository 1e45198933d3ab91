// SPDX-License-Identifier: MIT
#include "xmp/readers/BrawJson.h"

#include <cstddef>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

namespace Sorvik::xmp {
namespace {

using nlohmann::json;

constexpr std::size_t kMaxDepth = 32;
constexpr std::size_t kMaxValues = 4096;

// Receives the parts of the text one after the other, so that no tree is built. Each function
// returns false to stop.
class ValueCollector {
 public:
  std::map<std::string, std::string> values;

  // NOLINTBEGIN(readability-identifier-naming): names of the library
  bool null() { return Skip(); }
  bool boolean(bool value) { return Add(value ? "true" : "false"); }
  bool number_integer(json::number_integer_t value) { return Add(std::to_string(value)); }
  bool number_unsigned(json::number_unsigned_t value) { return Add(std::to_string(value)); }
  // The text as written.
  bool number_float(json::number_float_t, const std::string& text) { return Add(text); }
  bool string(const std::string& text) { return Add(text); }
  bool binary(const json::binary_t&) { return Skip(); }
  bool key(const std::string& name) {
    name_ = name;
    return true;
  }
  bool start_object(std::size_t) { return Open(false); }
  bool end_object() { return Close(); }
  bool start_array(std::size_t) { return Open(true); }
  bool end_array() { return Close(); }
  bool parse_error(std::size_t, const std::string&, const json::exception&) { return false; }
  // NOLINTEND(readability-identifier-naming)

 private:
  bool Skip() {
    name_.clear();
    return true;
  }
  bool Add(const std::string& text) {
    if (!inArray_.empty() && !inArray_.back() && values.size() < kMaxValues) {
      values.emplace(name_, text);
    }
    return Skip();
  }
  bool Open(bool isArray) {
    inArray_.push_back(isArray);
    name_.clear();
    return inArray_.size() <= kMaxDepth;
  }
  bool Close() {
    inArray_.pop_back();
    return Skip();
  }

  std::string name_;
  std::vector<bool> inArray_;
};

}  // namespace

std::map<std::string, std::string> ReadNamedValues(std::string_view text) {
  ValueCollector collector;
  json::sax_parse(text.begin(), text.end(), &collector, json::input_format_t::json, false);
  return std::move(collector.values);
}

}  // namespace Sorvik::xmp
