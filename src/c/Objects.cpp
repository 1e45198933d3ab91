// SPDX-License-Identifier: MIT
#include "c/Objects.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <utility>

#include "SorvikProvider/foundation/Localizer.h"
#include "SorvikProvider/foundation/UTF16String.h"
#include "SorvikProvider/metadata/XMPSupport.h"
#include "cardtools/ShotJson.h"

namespace {

using Sorvik::any_regular_t;
using Sorvik::c::TextOf;

std::vector<sorvik_text> TextsOf(const std::vector<std::string>& texts) {
  std::vector<sorvik_text> result;
  result.reserve(texts.size());
  for (const std::string& text : texts) result.push_back(TextOf(text));
  return result;
}

// Providers have labels only for some of the fields that they support.
std::map<std::string, std::string, std::less<>> LabelsOf(const Sorvik::ProviderWrapper& provider) {
  const auto& localizer = tarnwick::config::Localizer::Get();
  std::map<std::string, std::string, std::less<>> labels;
  for (const auto& [field, key] : provider.GetFieldLabelList()) {
    labels.emplace(field, localizer.GetUTF8String(key));
  }
  const Sorvik::FieldNameSet fields = provider.GetFieldList();
  for (const auto& row : Sorvik::XMPSupport::kXMPCrossReference) {
    if (!fields.contains(row.propertyName)) continue;
    labels.try_emplace(row.propertyName, localizer.GetUTF8String(row.labelKey));
  }
  return labels;
}

// Swaps red and blue and divides the colours by alpha.
void CopyRow(std::span<const unsigned char> bgra, std::span<std::uint8_t> rgba) {
  for (std::size_t i = 0; i + 3 < bgra.size(); i += 4) {
    const unsigned alpha = bgra[i + 3];
    for (std::size_t c = 0; c < 3; ++c) {
      const unsigned colour = bgra[i + 2 - c];
      const unsigned straight = alpha == 0 ? 0 : (colour * 255 + alpha / 2) / alpha;
      rgba[i + c] = static_cast<std::uint8_t>(std::min(straight, 255U));
    }
    rgba[i + 3] = bgra[i + 3];
  }
}

}  // namespace

sorvik_listing::sorvik_listing(std::string folder, std::string identification,
                               Sorvik::ContentMap entryMap, const Sorvik::ProviderWrapper* wrapper)
    : path(std::move(folder)), provider(std::move(identification)), content(std::move(entryMap)) {
  if (wrapper != nullptr) labels = LabelsOf(*wrapper);
  entries.reserve(content.size());
  for (auto& [key, values] : content) {
    sorvik_entry entry{TextOf(key), {}, Sorvik::TakeMachineValues(values)};
    entry.fields.reserve(values.size());
    for (const auto& [name, value] : values) {
      entry.fields.push_back({TextOf(name), ValueOf(value)});
    }
    entries.push_back(std::move(entry));
  }
}

sorvik_value sorvik_listing::ValueOf(const any_regular_t& value) {
  sorvik_value result{SORVIK_VALUE_NONE, TextOf(""), 0, 0, nullptr};
  if (const auto* text = value.get_if<std::string>()) {
    result.kind = SORVIK_VALUE_TEXT;
    result.text = TextOf(*text);
  } else if (const auto* wide = value.get_if<Hestra::UTF16String>()) {
    result.kind = SORVIK_VALUE_TEXT;
    result.text = TextOf(texts_.emplace_back(Hestra::MakeStdString(*wide)));
  } else if (const auto* size = value.get_if<Sorvik::Provider::ByteSize_t>()) {
    result.kind = SORVIK_VALUE_SIZE;
    result.bytes = size->value;
  } else if (const auto* list = value.get_if<std::vector<any_regular_t>>()) {
    std::vector<sorvik_value>& items = lists_.emplace_back();
    items.reserve(list->size());
    for (const any_regular_t& item : *list) items.push_back(ValueOf(item));
    result.kind = SORVIK_VALUE_LIST;
    result.count = items.size();
    result.items = items.data();
  }
  return result;
}

sorvik_files::sorvik_files(std::vector<Sorvik::CardFile> cardFiles) {
  for (Sorvik::CardFile& file : cardFiles) rows_.push_back({std::move(file), true});
}

void sorvik_files::AddMissing(const Sorvik::Finding& finding) {
  rows_.push_back(
      {{finding.path, Sorvik::CardFileRole::kClip, 0, finding.role, finding.entryKeys}, false});
}

void sorvik_files::Complete() {
  files.reserve(rows_.size());
  for (Row& row : rows_) {
    row.owners = TextsOf(row.file.owners);
    files.push_back({TextOf(row.file.path), TextOf(NameOf(row.file.role)), TextOf(row.file.part),
                     row.file.bytes, row.present, row.owners.size(), row.owners.data()});
  }
}

sorvik_sources::sorvik_sources(Sorvik::XMPSupport::SourcedValueMap sourcedValues)
    : values(std::move(sourcedValues)) {
  sources.reserve(values.size());
  for (const auto& [name, value] : values) {
    auto& others = others_.emplace_back();
    for (const auto& other : value.others) {
      others.push_back({TextOf(GetSourceName(other.from)), TextOf(other.value)});
    }
    sources.push_back({TextOf(name), TextOf(GetSourceName(value.from)), TextOf(value.value),
                       others.size(), others.data()});
  }
}

sorvik_parts::sorvik_parts(Sorvik::ShotParts shotParts) : shot(std::move(shotParts)) {
  parts.reserve(shot.parts.size());
  for (const Sorvik::ShotPart& part : shot.parts) {
    parts.push_back({TextOf(part.name), TextOf(part.path), TextOf(Sorvik::NameOf(part.track)),
                     part.channel, part.isPresent, part.isInferred,
                     part.frames ? static_cast<std::int64_t>(*part.frames) : -1, part.firstFrame,
                     part.framesAfter, TextOf(part.startTimecode)});
  }
}

sorvik_join_lists::sorvik_join_lists(Sorvik::JoinResult result) : joined(std::move(result)) {
  lists.reserve(joined.files.size());
  for (const Sorvik::JoinFile& file : joined.files) {
    lists.push_back({TextOf(file.path), TextOf(file.text)});
  }
}

sorvik_report::sorvik_report(std::string card, std::string identification,
                             Sorvik::CardFindings cardFindings)
    : path(std::move(card)),
      provider(std::move(identification)),
      result(std::move(cardFindings)),
      files(std::exchange(result.files, {})) {
  files.Complete();
  findings.reserve(result.findings.size());
  for (const Sorvik::Finding& finding : result.findings) {
    const auto& keys = entries_.emplace_back(TextsOf(finding.entryKeys));
    findings.push_back({TextOf(NameOf(finding.kind)), TextOf(NameOf(finding.severity)),
                        TextOf(finding.role), TextOf(finding.path), TextOf(finding.detail),
                        keys.size(), keys.data()});
  }
}

sorvik_picture::sorvik_picture(Bitplate** plate)
    : width(bitplateGetWidth(plate)), height(bitplateGetHeight(plate)) {
  const auto rows = static_cast<std::size_t>(height);
  const auto stride = static_cast<std::size_t>(bitplateGetRowbytes(plate));
  const std::size_t packed = static_cast<std::size_t>(width) * 4;
  if (rows == 0 || packed == 0) return;
  const bool topDown = bitplateGetRowOrder(plate) == BitplateRowOrder::kTopDown;
  pixels.resize(rows * packed);
  const std::span<const unsigned char> from(bitplateGetPixels(plate), stride * (rows - 1) + packed);
  const std::span<std::uint8_t> to(pixels);
  for (std::size_t row = 0; row < rows; ++row) {
    const std::size_t source = topDown ? row : rows - 1 - row;
    CopyRow(from.subspan(source * stride, packed), to.subspan(row * packed, packed));
  }
}

sorvik_text sorvik_card_path(const sorvik_card* card) { return TextOf(card->path); }
sorvik_text sorvik_card_provider(const sorvik_card* card) { return TextOf(card->provider); }
sorvik_text sorvik_card_name(const sorvik_card* card) { return TextOf(card->name); }
int sorvik_card_score(const sorvik_card* card) { return card->score; }
void sorvik_card_free(sorvik_card* card) { delete card; }

sorvik_text sorvik_entry_key(const sorvik_entry* entry) { return entry->key; }
size_t sorvik_entry_field_count(const sorvik_entry* entry) { return entry->fields.size(); }

const sorvik_field* sorvik_entry_field_at(const sorvik_entry* entry, size_t index) {
  return index < entry->fields.size() ? &entry->fields[index] : nullptr;
}

const sorvik_field* sorvik_entry_field(const sorvik_entry* entry, const char* name) {
  if (name == nullptr) return nullptr;
  const auto found =
      std::ranges::find_if(entry->fields, [wanted = std::string_view(name)](const auto& field) {
        return std::string_view(field.name.data, field.name.size) == wanted;
      });
  return found == entry->fields.end() ? nullptr : &*found;
}

namespace {

const Sorvik::MachineValue* FindTyped(const sorvik_entry* entry, const char* field) {
  if (field == nullptr) return nullptr;
  const auto found = entry->typed.find(field);
  return found == entry->typed.end() ? nullptr : &found->second;
}

// Sets the members of a sorvik_typed_value.
struct TypedSetter {
  sorvik_typed_value& to;

  void Set(sorvik_typed_kind kind, std::int64_t integer = 0) const {
    to.kind = kind;
    to.integer = integer;
  }
  void Set(sorvik_typed_kind kind, const std::string& text, bool flag) const {
    to.kind = kind;
    to.text = TextOf(text);
    to.flag = flag;
  }
  void SetFraction(const Sorvik::Fraction& value) const {
    to.fraction = {value.numerator, value.denominator};
  }

  void operator()(std::monostate) const {}
  void operator()(bool value) const {
    Set(SORVIK_TYPED_BOOLEAN);
    to.flag = value;
  }
  void operator()(std::int64_t value) const { Set(SORVIK_TYPED_INTEGER, value); }
  void operator()(double value) const {
    Set(SORVIK_TYPED_REAL);
    to.real = value;
  }
  void operator()(const Sorvik::Fraction& value) const {
    Set(SORVIK_TYPED_FRACTION);
    SetFraction(value);
  }
  void operator()(const std::string& value) const { Set(SORVIK_TYPED_TEXT, value, false); }
  void operator()(const Sorvik::IsoTime& value) const {
    Set(SORVIK_TYPED_TIME, value.text, value.hasZone);
  }
  void operator()(const Sorvik::TimecodeValue& value) const {
    Set(SORVIK_TYPED_TIMECODE, value.text, value.dropFrame);
    SetFraction(value.rate);
  }
  void operator()(const Sorvik::DurationValue& value) const {
    Set(SORVIK_TYPED_DURATION, value.count);
    SetFraction(value.rate);
  }
  void operator()(const Sorvik::FrameSizeValue& value) const {
    Set(SORVIK_TYPED_FRAME_SIZE, value.unit, false);
    to.integer = value.width;
    to.height = value.height;
  }
  void operator()(const std::vector<std::string>& value) const {
    Set(SORVIK_TYPED_TEXTS, static_cast<std::int64_t>(value.size()));
  }
};

}  // namespace

bool sorvik_entry_typed(const sorvik_entry* entry, const char* field, sorvik_typed_value* value) {
  *value = {SORVIK_TYPED_NONE, false, 0, 0, 0, {0, 1}, TextOf("")};
  if (const auto* typed = FindTyped(entry, field)) std::visit(TypedSetter{*value}, *typed);
  return value->kind != SORVIK_TYPED_NONE;
}

sorvik_text sorvik_entry_typed_item(const sorvik_entry* entry, const char* field, size_t index) {
  const auto* typed = FindTyped(entry, field);
  const auto* texts = typed == nullptr ? nullptr : std::get_if<std::vector<std::string>>(typed);
  return TextOf(texts == nullptr || index >= texts->size() ? std::string_view("")
                                                           : (*texts)[index]);
}

sorvik_text sorvik_listing_path(const sorvik_listing* listing) { return TextOf(listing->path); }
sorvik_text sorvik_listing_provider(const sorvik_listing* listing) {
  return TextOf(listing->provider);
}
size_t sorvik_listing_size(const sorvik_listing* listing) { return listing->entries.size(); }

const sorvik_entry* sorvik_listing_at(const sorvik_listing* listing, size_t index) {
  return index < listing->entries.size() ? &listing->entries[index] : nullptr;
}

const sorvik_entry* sorvik_listing_find(const sorvik_listing* listing, const char* key) {
  if (key == nullptr) return nullptr;
  const auto keyOf = [](const sorvik_entry& entry) {
    return std::string_view(entry.key.data, entry.key.size);
  };
  const std::string_view wanted(key);
  const auto found = std::ranges::lower_bound(listing->entries, wanted, {}, keyOf);
  return found != listing->entries.end() && keyOf(*found) == wanted ? &*found : nullptr;
}

sorvik_text sorvik_listing_label(const sorvik_listing* listing, const char* field) {
  if (field == nullptr) return TextOf("");
  const auto found = listing->labels.find(std::string_view(field));
  return TextOf(found == listing->labels.end() ? std::string_view(field) : found->second);
}

void sorvik_listing_free(sorvik_listing* listing) { delete listing; }

size_t sorvik_files_count(const sorvik_files* files) { return files->files.size(); }
const sorvik_file* sorvik_files_at(const sorvik_files* files, size_t index) {
  return index < files->files.size() ? &files->files[index] : nullptr;
}
void sorvik_files_free(sorvik_files* files) { delete files; }

size_t sorvik_sources_count(const sorvik_sources* sources) { return sources->sources.size(); }
const sorvik_source* sorvik_sources_at(const sorvik_sources* sources, size_t index) {
  return index < sources->sources.size() ? &sources->sources[index] : nullptr;
}
void sorvik_sources_free(sorvik_sources* sources) { delete sources; }

size_t sorvik_parts_count(const sorvik_parts* parts) { return parts->parts.size(); }
const sorvik_part* sorvik_parts_at(const sorvik_parts* parts, size_t index) {
  return index < parts->parts.size() ? &parts->parts[index] : nullptr;
}
sorvik_fraction sorvik_parts_rate(const sorvik_parts* parts) {
  const Sorvik::ShotRate& rate = parts->shot.rate;
  if (!rate.IsKnown()) return {0, 1};
  return {static_cast<std::int64_t>(rate.numerator), static_cast<std::int64_t>(rate.denominator)};
}
bool sorvik_parts_complete(const sorvik_parts* parts) { return parts->shot.isComplete; }
void sorvik_parts_free(sorvik_parts* parts) { delete parts; }

size_t sorvik_join_lists_count(const sorvik_join_lists* lists) { return lists->lists.size(); }
const sorvik_join_list* sorvik_join_lists_at(const sorvik_join_lists* lists, size_t index) {
  return index < lists->lists.size() ? &lists->lists[index] : nullptr;
}
size_t sorvik_join_lists_warning_count(const sorvik_join_lists* lists) {
  return lists->joined.warnings.size();
}
sorvik_text sorvik_join_lists_warning_at(const sorvik_join_lists* lists, size_t index) {
  const auto& warnings = lists->joined.warnings;
  return TextOf(index < warnings.size() ? std::string_view(warnings[index].text) : "");
}
void sorvik_join_lists_free(sorvik_join_lists* lists) { delete lists; }

sorvik_text sorvik_report_path(const sorvik_report* report) { return TextOf(report->path); }
sorvik_text sorvik_report_provider(const sorvik_report* report) { return TextOf(report->provider); }
bool sorvik_report_complete(const sorvik_report* report) { return report->result.complete; }
sorvik_depth sorvik_report_depth(const sorvik_report* report) {
  return report->result.depth == Sorvik::CheckDepth::kNames ? SORVIK_DEPTH_NAMES
                                                            : SORVIK_DEPTH_STRUCTURE;
}
uint64_t sorvik_report_clips(const sorvik_report* report) { return report->result.clips; }
uint64_t sorvik_report_bytes(const sorvik_report* report) { return report->result.bytes; }
size_t sorvik_report_finding_count(const sorvik_report* report) { return report->findings.size(); }
const sorvik_finding* sorvik_report_finding_at(const sorvik_report* report, size_t index) {
  return index < report->findings.size() ? &report->findings[index] : nullptr;
}
const sorvik_files* sorvik_report_files(const sorvik_report* report) { return &report->files; }
void sorvik_report_free(sorvik_report* report) { delete report; }

int sorvik_picture_width(const sorvik_picture* picture) { return picture->width; }
int sorvik_picture_height(const sorvik_picture* picture) { return picture->height; }
const uint8_t* sorvik_picture_pixels(const sorvik_picture* picture) {
  return picture->pixels.data();
}
void sorvik_picture_free(sorvik_picture* picture) { delete picture; }
