// SPDX-License-Identifier: MIT
#include "cardtools/ClipIdentity.h"

#include <algorithm>
#include <span>

#include "foundation/Digest.h"
#include "foundation/platform/FileSystem.h"

namespace Sorvik {
namespace {

constexpr std::size_t kHeadBytes = 64 * 1024;
constexpr std::size_t kUmidDigits = 64;
constexpr std::size_t kUuidDigits = 32;
constexpr std::size_t kIdDigits = 16;
constexpr std::string_view kP2 = "com.halvane.Merisk.ProviderP2";
constexpr std::string_view kDigestPrefix = "md5:";
constexpr std::string_view kUrnUuid = "urn:uuid:";
constexpr std::string_view kUrnUmid = "urn:smpte:umid:";

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// The hexadecimal digits of an identifier in lower case, without its prefix and separators. Empty
// if it has anything else.
std::string HexDigits(std::string_view text) {
  std::string lower(text.size(), '\0');
  std::ranges::transform(text, lower.begin(), Lower);
  std::string_view rest = lower;
  for (const std::string_view prefix : {kUrnUuid, kUrnUmid, std::string_view("0x")}) {
    if (rest.starts_with(prefix)) rest.remove_prefix(prefix.size());
  }
  std::string digits;
  for (const char c : rest) {
    const bool isDigit = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
    if (isDigit) digits += c;
    if (!isDigit && std::string_view("-.{}").find(c) == std::string_view::npos) return {};
  }
  return digits;
}

// Cameras and tools write zeros where they have no identifier.
bool IsUnset(std::string_view digits) {
  return digits.find_first_not_of(digits.front()) == digits.npos;
}

std::string JsonOf(const MachineFields& fields, const char* name) {
  const auto field = fields.find(name);
  return field == fields.end() ? std::string() : ToJson(field->second);
}

std::string DigestOf(const MachineFields& fields, const std::string& path) {
  const auto file = platform::RegularFile::Open(path);
  if (!file) return {};
  std::string head(std::min<std::uint64_t>(kHeadBytes, file->Size()), '\0');
  const auto read = file->ReadAt(0, std::as_writable_bytes(std::span(head)));
  if (read < head.size()) return {};
  std::string facts = JsonOf(fields, "startTimecode") + '\n' + JsonOf(fields, "duration") + '\n' +
                      std::to_string(file->Size()) + '\n';
  return std::string(kDigestPrefix) + foundation::MD5Hex(facts + head);
}

}  // namespace

ClipIdentity IdentityOf(const MachineFields& fields, std::string_view provider,
                        const std::string& path) {
  const auto field = fields.find("identifier");
  const auto* text = field == fields.end() ? nullptr : std::get_if<std::string>(&field->second);
  const std::string digits = text == nullptr ? std::string() : HexDigits(*text);
  if (!digits.empty() && !IsUnset(digits)) {
    if (provider == kP2) return {digits, "globalClipId"};
    if (digits.size() == kUmidDigits) return {digits, "umid"};
    if (digits.size() == kUuidDigits) return {digits, "uuid"};
  }
  return {DigestOf(fields, path), "digest"};
}

std::string CardIdentity(std::vector<std::string> clipIdentities) {
  std::erase(clipIdentities, std::string());
  if (clipIdentities.empty()) return {};
  std::ranges::sort(clipIdentities);
  std::string all;
  for (const std::string& identity : clipIdentities) all += identity + '\n';
  return std::string(kDigestPrefix) + foundation::MD5Hex(all);
}

std::string CardId(std::string_view path, std::string_view provider) {
  return foundation::MD5Hex(std::string(path) + '\n' + std::string(provider)).substr(0, kIdDigits);
}

}  // namespace Sorvik
