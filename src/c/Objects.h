// SPDX-License-Identifier: MIT
// The results of the C interface. They own their texts; the structs of the public header that they
// contain refer to them.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "SorvikProvider/c/sorvik.h"
#include "SorvikProvider/cardtools/CardCheck.h"
#include "SorvikProvider/cardtools/JoinList.h"
#include "SorvikProvider/cardtools/ShotParts.h"
#include "SorvikProvider/foundation/Bitplate.h"
#include "SorvikProvider/frame/ProviderWrapper.h"
#include "SorvikProvider/metadata/MachineValues.h"
#include "SorvikProvider/metadata/ValueSources.h"

namespace Sorvik::c {

// The text must be followed by a NUL, as in std::string and in literals.
inline sorvik_text TextOf(std::string_view text) noexcept { return {text.data(), text.size()}; }

}  // namespace Sorvik::c

struct sorvik_card {
  std::string path;
  std::string provider;
  std::string name;
  int score = 0;
};

struct sorvik_entry {
  sorvik_text key;
  std::vector<sorvik_field> fields;
  Sorvik::MachineFields typed;
};

struct sorvik_listing {
  // Entries that were made within a MachineValueScope have exact typed values. Labels are those of
  // `wrapper`, which may be null.
  sorvik_listing(std::string folder, std::string identification, Sorvik::ContentMap entries,
                 const Sorvik::ProviderWrapper* wrapper);
  sorvik_listing(const sorvik_listing&) = delete;
  sorvik_listing& operator=(const sorvik_listing&) = delete;

  std::string path;
  std::string provider;
  Sorvik::ContentMap content;
  std::map<std::string, std::string, std::less<>> labels;  // field name to label
  std::vector<sorvik_entry> entries;

 private:
  sorvik_value ValueOf(const Sorvik::any_regular_t& value);

  std::deque<std::vector<sorvik_value>> lists_;
  std::deque<std::string> texts_;  // converted from UTF-16
};

struct sorvik_files {
  explicit sorvik_files(std::vector<Sorvik::CardFile> cardFiles);
  sorvik_files(const sorvik_files&) = delete;
  sorvik_files& operator=(const sorvik_files&) = delete;

  // Adds a file that entries require and that is missing. Before the first use of `files`.
  void AddMissing(const Sorvik::Finding& finding);
  // Sets `files` from what was added.
  void Complete();

  std::vector<sorvik_file> files;

 private:
  struct Row {
    Sorvik::CardFile file;
    bool present;
    std::vector<sorvik_text> owners = {};
  };
  std::deque<Row> rows_;
};

struct sorvik_sources {
  explicit sorvik_sources(Sorvik::XMPSupport::SourcedValueMap sourcedValues);
  sorvik_sources(const sorvik_sources&) = delete;
  sorvik_sources& operator=(const sorvik_sources&) = delete;

  Sorvik::XMPSupport::SourcedValueMap values;
  std::vector<sorvik_source> sources;

 private:
  std::deque<std::vector<sorvik_source_value>> others_;
};

struct sorvik_parts {
  explicit sorvik_parts(Sorvik::ShotParts shotParts);
  sorvik_parts(const sorvik_parts&) = delete;
  sorvik_parts& operator=(const sorvik_parts&) = delete;

  Sorvik::ShotParts shot;
  std::vector<sorvik_part> parts;
};

struct sorvik_join_lists {
  explicit sorvik_join_lists(Sorvik::JoinResult result);
  sorvik_join_lists(const sorvik_join_lists&) = delete;
  sorvik_join_lists& operator=(const sorvik_join_lists&) = delete;

  Sorvik::JoinResult joined;
  std::vector<sorvik_join_list> lists;
};

struct sorvik_report {
  sorvik_report(std::string card, std::string identification, Sorvik::CardFindings findings);
  sorvik_report(const sorvik_report&) = delete;
  sorvik_report& operator=(const sorvik_report&) = delete;

  std::string path;
  std::string provider;
  Sorvik::CardFindings result;  // without its files
  std::vector<sorvik_finding> findings;
  sorvik_files files;

 private:
  std::deque<std::vector<sorvik_text>> entries_;
};

struct sorvik_picture {
  // Converts a thumbnail of the library, which stays with the caller.
  explicit sorvik_picture(Bitplate** plate);

  int width;
  int height;
  std::vector<std::uint8_t> pixels;
};
