// SPDX-License-Identifier: MIT
// A counted string that never changes: the name of a station. Copies share the text, so it is cheap
// to pass and may be read on any thread. The null string is distinct from the empty one.
#pragma once

#include <compare>
#include <memory>
#include <string>
#include <string_view>

namespace tarnwick::utility {

class ImmutableString {
 public:
  ImmutableString() = default;       // the null string
  ImmutableString(const char* text)  // NOLINT(google-explicit-constructor): a literal is a name
      : text_(text == nullptr ? nullptr : std::make_shared<const std::string>(text)) {}
  ImmutableString(std::string text)  // NOLINT(google-explicit-constructor)
      : text_(std::make_shared<const std::string>(std::move(text))) {}

  bool IsNull() const noexcept { return text_ == nullptr; }
  // The text; empty for the null string. Lives as long as any copy of this string.
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
