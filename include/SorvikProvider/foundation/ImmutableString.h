// SPDX-License-Identifier: MIT
// An immutable reference-counted string, used for station names. Copies share the text. Any thread.
// The null string differs from the empty string.
#pragma once

#include <compare>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace tarnwick::utility {

class ImmutableString {
 public:
  ImmutableString() = default;       // the null string
  ImmutableString(const char* text)  // NOLINT(google-explicit-constructor): for literals
      : text_(text == nullptr ? nullptr : std::make_shared<const std::string>(text)) {}
  ImmutableString(std::string text)  // NOLINT(google-explicit-constructor)
      : text_(std::make_shared<const std::string>(std::move(text))) {}

  bool IsNull() const noexcept { return text_ == nullptr; }
  // The text; empty for the null string. Valid while any copy of this string exists.
  std::string_view View() const noexcept { return text_ ? std::string_view(*text_) : ""; }
  std::string ToStdString() const { return std::string(View()); }

  friend bool operator==(const ImmutableString& a, const ImmutableString& b) noexcept {
    return a.IsNull() == b.IsNull() && a.View() == b.View();
  }
  friend std::strong_ordering operator<=>(const ImmutableString& a,
                                          const ImmutableString& b) noexcept {
    if (a.IsNull() != b.IsNull()) return b.IsNull() <=> a.IsNull();
    return a.View() <=> b.View();
  }

 private:
  std::shared_ptr<const std::string> text_;
};

}  // namespace tarnwick::utility
