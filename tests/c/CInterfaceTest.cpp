// SPDX-License-Identifier: MIT
// The C interface: the same answers as the C++ interface, requests, and wrong use.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include "SorvikProvider/c/sorvik.h"
#include "SorvikProvider/cardtools/CardCheck.h"
#include "SorvikProvider/cardtools/CardFinder.h"
#include "SorvikProvider/cardtools/Catalogue.h"
#include "SorvikProvider/cardtools/JoinList.h"
#include "SorvikProvider/cardtools/ShotParts.h"
#include "SorvikProvider/foundation/UTF16String.h"
#include "SorvikProvider/frame/ProviderHost.h"
#include "SorvikProvider/metadata/MachineValues.h"
#include "SorvikProvider/metadata/RelatedFiles.h"
#include "SorvikProvider/metadata/ValueSources.h"
#include "support/BindingCards.h"
#include "support/Cards.h"
#include "support/FakeProvider.h"
#include "support/ImageFiles.h"
#include "support/TempTree.h"

extern "C" int CountEntriesFromC(const char* path, const char* provider);

namespace {

using namespace Sorvik;
using namespace sorvik_test;
using testing::ElementsAre;
using testing::HasSubstr;

template <class T>
using Owned = std::unique_ptr<T, void (*)(T*)>;

std::string Text(sorvik_text text) { return std::string(text.data, text.size); }

any_regular_t ValueOf(const sorvik_value& value) {
  if (value.kind == SORVIK_VALUE_TEXT) return any_regular_t(Text(value.text));
  if (value.kind == SORVIK_VALUE_SIZE) return any_regular_t(Provider::ByteSize_t(value.bytes));
  if (value.kind == SORVIK_VALUE_NONE) return any_regular_t();
  std::vector<any_regular_t> items;
  for (std::size_t i = 0; i < value.count; ++i) items.push_back(ValueOf(value.items[i]));
  return any_regular_t(items);
}

ContentMap ContentOf(const sorvik_listing* listing) {
  ContentMap content;
  for (std::size_t i = 0; i < sorvik_listing_size(listing); ++i) {
    const sorvik_entry* entry = sorvik_listing_at(listing, i);
    FieldValueMap& fields = content[Text(sorvik_entry_key(entry))];
    for (std::size_t f = 0; f < sorvik_entry_field_count(entry); ++f) {
      const sorvik_field* field = sorvik_entry_field_at(entry, f);
      fields.emplace(Text(field->name), ValueOf(field->value));
    }
    EXPECT_EQ(sorvik_entry_field_at(entry, sorvik_entry_field_count(entry)), nullptr);
  }
  EXPECT_EQ(sorvik_listing_at(listing, sorvik_listing_size(listing)), nullptr);
  return content;
}

// The typed value of a field, in the form that the JSON of the catalogue uses.
std::string TypedOf(const sorvik_entry* entry, const std::string& field) {
  sorvik_typed_value value;
  sorvik_entry_typed(entry, field.c_str(), &value);
  const Fraction fraction{value.fraction.numerator, value.fraction.denominator};
  switch (value.kind) {
    case SORVIK_TYPED_BOOLEAN:
      return ToJson(value.flag);
    case SORVIK_TYPED_INTEGER:
      return ToJson(value.integer);
    case SORVIK_TYPED_REAL:
      return ToJson(value.real);
    case SORVIK_TYPED_FRACTION:
      return ToJson(fraction);
    case SORVIK_TYPED_TEXT:
      return ToJson(Text(value.text));
    case SORVIK_TYPED_TIME:
      return ToJson(IsoTime{Text(value.text), value.flag});
    case SORVIK_TYPED_TIMECODE:
      return ToJson(TimecodeValue{Text(value.text), fraction, value.flag});
    case SORVIK_TYPED_DURATION:
      return ToJson(DurationValue{value.integer, fraction});
    case SORVIK_TYPED_FRAME_SIZE:
      return ToJson(FrameSizeValue{value.integer, value.height, Text(value.text)});
    case SORVIK_TYPED_TEXTS: {
      std::vector<std::string> texts;
      for (std::size_t i = 0; i < static_cast<std::size_t>(value.integer); ++i) {
        texts.push_back(Text(sorvik_entry_typed_item(entry, field.c_str(), i)));
      }
      return ToJson(texts);
    }
    default:
      return ToJson(MachineValue());
  }
}

class CInterface : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(sorvik_initialize(), SORVIK_OK); }
  void TearDown() override { sorvik_shutdown(); }

  Owned<sorvik_listing> List(const std::string& path, const std::string& provider,
                             const sorvik_fields* fields = nullptr) {
    sorvik_listing* listing = nullptr;
    EXPECT_EQ(sorvik_list(path.c_str(), provider.c_str(), fields, &listing), SORVIK_OK)
        << path << ": " << sorvik_error_text();
    return {listing, sorvik_listing_free};
  }

  // Registers a provider that claims the path "/fake".
  std::shared_ptr<FakeAnswers> RegisterFake() {
    auto answers = std::make_shared<FakeAnswers>();
    answers->score = [](const std::string& path) { return path == "/fake" ? 200 : 0; };
    ProviderHost::RegisterProvider(
        std::make_unique<AsyncProviderWrapper>(new FakeProvider(answers)));
    return answers;
  }

  const TempTree tree_;
};

TEST_F(CInterface, GivesTheAnswersOfTheCppInterface) {
  for (const MadeCard& made : MakeBindingCards(tree_)) {
    SCOPED_TRACE(made.root);
    const ProviderWrapper* best = ProviderHost::GetProviderList(made.root).front();
    ASSERT_EQ(best->GetIdentification(), made.providerId);
    sorvik_card* opened = nullptr;
    ASSERT_EQ(sorvik_open(made.root.c_str(), nullptr, SORVIK_OPEN_NEARBY, &opened), SORVIK_OK);
    const Owned<sorvik_card> card(opened, sorvik_card_free);
    EXPECT_EQ(Text(sorvik_card_path(opened)), made.root);
    EXPECT_EQ(Text(sorvik_card_provider(opened)), made.providerId);
    EXPECT_EQ(Text(sorvik_card_name(opened)), best->GetUIString());
    EXPECT_EQ(sorvik_card_score(opened), best->CanProvideFor(made.root));

    const FieldNameSet all = best->GetFieldList();
    const ContentMap content = best->GetContent(made.root, all, nullptr);
    const sorvik_fields wanted{nullptr, SORVIK_ALL_FIELDS, false};
    const auto listing = List(made.root, made.providerId, &wanted);
    EXPECT_EQ(ContentOf(listing.get()), content);
    EXPECT_EQ(CountEntriesFromC(made.root.c_str(), made.providerId.c_str()),
              static_cast<int>(content.size()));
    const FieldNameList usual = best->GetDefaultFieldList();
    EXPECT_EQ(ContentOf(List(made.root, made.providerId).get()),
              best->GetContent(made.root, FieldNameSet(usual.begin(), usual.end()), nullptr));

    const char* const names[] = {"duration", "nonsense"};
    for (const bool defaults : {false, true}) {
      const sorvik_fields named{names, 2, defaults};
      FieldNameSet expected{"duration", "nonsense"};
      if (defaults) expected.insert(usual.begin(), usual.end());
      EXPECT_EQ(ContentOf(List(made.root, made.providerId, &named).get()),
                best->GetContent(made.root, expected, nullptr));
    }

    const std::string key = content.begin()->first;
    sorvik_listing* entry = nullptr;
    ASSERT_EQ(
        sorvik_read_entry(made.root.c_str(), made.providerId.c_str(), key.c_str(), &wanted, &entry),
        SORVIK_OK);
    EXPECT_EQ(ContentOf(entry), best->GetContent(made.root, key, all));
    EXPECT_EQ(Text(sorvik_entry_key(sorvik_listing_find(entry, key.c_str()))), key);
    sorvik_listing_free(entry);
  }
}

TEST_F(CInterface, TypedValuesAreThoseOfMachineValues) {
  for (const MadeCard& made : MakeBindingCards(tree_)) {
    SCOPED_TRACE(made.root);
    const ProviderWrapper* best = ProviderHost::GetProviderList(made.root).front();
    ContentMap content;
    {
      const MachineValueScope scope;
      content = best->GetContent(made.root, best->GetFieldList(), nullptr);
    }
    const sorvik_fields wanted{nullptr, SORVIK_ALL_FIELDS, false};
    const auto listing = List(made.root, made.providerId, &wanted);
    ASSERT_EQ(sorvik_listing_size(listing.get()), content.size());
    for (auto& [key, fields] : content) {
      const MachineFields expected = TakeMachineValues(fields);
      const sorvik_entry* entry = sorvik_listing_find(listing.get(), key.c_str());
      for (const auto& [name, value] : fields) {
        const auto typed = expected.find(name);
        EXPECT_EQ(TypedOf(entry, name),
                  ToJson(typed == expected.end() ? MachineValue() : typed->second))
            << name;
      }
    }
  }
}

TEST_F(CInterface, ReportsAndFilesAreThoseOfCheckCard) {
  for (const MadeCard& made : MakeBindingCards(tree_)) {
    SCOPED_TRACE(made.root);
    sorvik_report* checked = nullptr;
    const sorvik_status status =
        sorvik_check(made.root.c_str(), made.providerId.c_str(), SORVIK_DEPTH_STRUCTURE, &checked);
    if (!CanCheckCard(made.root, made.providerId)) {
      EXPECT_EQ(status, SORVIK_NO_PROVIDER);
      continue;
    }
    ASSERT_EQ(status, SORVIK_OK) << sorvik_error_text();
    const Owned<sorvik_report> report(checked, sorvik_report_free);
    const CardFindings expected = CheckCard(made.root, made.providerId);
    EXPECT_EQ(sorvik_report_complete(checked), expected.complete);
    EXPECT_EQ(sorvik_report_clips(checked), expected.clips);
    EXPECT_EQ(sorvik_report_bytes(checked), expected.bytes);
    ASSERT_EQ(sorvik_report_finding_count(checked), expected.findings.size());
    for (std::size_t i = 0; i < expected.findings.size(); ++i) {
      const sorvik_finding* finding = sorvik_report_finding_at(checked, i);
      EXPECT_EQ(Text(finding->kind), NameOf(expected.findings[i].kind));
      EXPECT_EQ(Text(finding->path), expected.findings[i].path);
      EXPECT_EQ(finding->entry_count, expected.findings[i].entryKeys.size());
    }
    const sorvik_files* files = sorvik_report_files(checked);
    ASSERT_EQ(sorvik_files_count(files), expected.files.size());
    for (std::size_t i = 0; i < expected.files.size(); ++i) {
      const sorvik_file* file = sorvik_files_at(files, i);
      EXPECT_EQ(Text(file->path), expected.files[i].path);
      EXPECT_EQ(Text(file->role), NameOf(expected.files[i].role));
      EXPECT_EQ(file->owner_count, expected.files[i].owners.size());
      EXPECT_EQ(file->bytes, expected.files[i].bytes);
    }
    EXPECT_EQ(sorvik_report_finding_at(checked, expected.findings.size()), nullptr);
    EXPECT_EQ(sorvik_files_at(files, expected.files.size()), nullptr);
  }
}

TEST_F(CInterface, SourcesAreThoseOfGetValueSources) {
  for (const MadeCard& made : MakeBindingCards(tree_)) {
    SCOPED_TRACE(made.root);
    const ProviderWrapper* best = ProviderHost::GetProviderList(made.root).front();
    const std::string key = best->GetContent(made.root, {}, nullptr).begin()->first;
    FieldNameSet all = best->GetFieldList();
    for (const std::string& name : best->GetDefaultFieldList()) all.insert(name);
    const FieldValueMap fields = best->GetContent(made.root, key, all).at(key);
    XMPSupport::SourcedValueMap expected =
        XMPSupport::GetValueSources(fields.at(kPathField).cast<std::string>());
    XMPSupport::AddProviderValues(fields, expected);
    sorvik_sources* read = nullptr;
    ASSERT_EQ(sorvik_read_sources(made.root.c_str(), made.providerId.c_str(), key.c_str(), &read),
              SORVIK_OK);
    const Owned<sorvik_sources> sources(read, sorvik_sources_free);
    ASSERT_EQ(sorvik_sources_count(read), expected.size());
    std::size_t i = 0;
    for (const auto& [name, value] : expected) {
      const sorvik_source* source = sorvik_sources_at(read, i++);
      EXPECT_EQ(Text(source->name), name);
      EXPECT_EQ(Text(source->value), value.value);
      EXPECT_EQ(Text(source->from), GetSourceName(value.from));
      ASSERT_EQ(source->other_count, value.others.size());
      for (std::size_t other = 0; other < source->other_count; ++other) {
        EXPECT_EQ(Text(source->others[other].value), value.others[other].value);
      }
    }
    EXPECT_EQ(sorvik_sources_at(read, i), nullptr);
  }
}

TEST_F(CInterface, PartsAreThoseOfGetShotParts) {
  for (const MadeCard& made : MakeBindingCards(tree_)) {
    const ProviderWrapper* best = ProviderHost::GetProviderList(made.root).front();
    for (const auto& [key, fields] : best->GetContent(made.root, {kPathField}, nullptr)) {
      SCOPED_TRACE(key);
      const ShotParts expected = GetShotParts(made.root, made.providerId, key);
      sorvik_parts* listed = nullptr;
      const sorvik_status status =
          sorvik_list_parts(made.root.c_str(), made.providerId.c_str(), key.c_str(), &listed);
      ASSERT_EQ(status, expected.parts.empty() ? SORVIK_NO_ENTRY : SORVIK_OK);
      if (status != SORVIK_OK) continue;
      const Owned<sorvik_parts> parts(listed, sorvik_parts_free);
      ASSERT_EQ(sorvik_parts_count(listed), expected.parts.size());
      EXPECT_EQ(sorvik_parts_complete(listed), expected.isComplete);
      if (expected.rate.IsKnown()) {
        EXPECT_EQ(static_cast<std::uint64_t>(sorvik_parts_rate(listed).numerator),
                  expected.rate.numerator);
      }
      for (std::size_t i = 0; i < expected.parts.size(); ++i) {
        const sorvik_part* part = sorvik_parts_at(listed, i);
        EXPECT_EQ(Text(part->path), expected.parts[i].path);
        EXPECT_EQ(Text(part->name), expected.parts[i].name);
        EXPECT_EQ(Text(part->start), expected.parts[i].startTimecode);
        EXPECT_EQ(part->channel, expected.parts[i].channel);
        EXPECT_EQ(part->present, expected.parts[i].isPresent);
        EXPECT_EQ(part->frames, expected.parts[i].frames
                                    ? static_cast<std::int64_t>(*expected.parts[i].frames)
                                    : -1);
        EXPECT_EQ(Text(part->track) == "sound", expected.parts[i].track == ShotTrack::kSound);
      }
      EXPECT_EQ(sorvik_parts_at(listed, expected.parts.size()), nullptr);
    }
  }
}

TEST_F(CInterface, JoinListsAreThoseOfMakeJoinLists) {
  const std::string output = tree_.Path("shot.ffconcat");
  int made = 0;
  const auto compare = [&](const MadeCard& card, const char* key, const char* format) {
    SCOPED_TRACE(card.root + " " + (key == nullptr ? "" : key) + " " + format);
    const JoinOptions options{*JoinFormatNamed(format), output};
    const JoinResult expected =
        MakeJoinLists(card.root, card.providerId, key == nullptr ? "" : key, options);
    const sorvik_join_options wanted{format, output.c_str(), false};
    sorvik_join_lists* joined = nullptr;
    const sorvik_status status =
        sorvik_join(card.root.c_str(), card.providerId.c_str(), key, &wanted, &joined);
    ASSERT_EQ(status == SORVIK_OK, expected.status == JoinStatus::kDone);
    if (status != SORVIK_OK) {
      EXPECT_EQ(sorvik_error_text(), expected.problem.text);
      return;
    }
    const Owned<sorvik_join_lists> lists(joined, sorvik_join_lists_free);
    ASSERT_EQ(sorvik_join_lists_count(joined), expected.files.size());
    for (std::size_t i = 0; i < expected.files.size(); ++i) {
      EXPECT_EQ(Text(sorvik_join_lists_at(joined, i)->path), expected.files[i].path);
      EXPECT_EQ(Text(sorvik_join_lists_at(joined, i)->text), expected.files[i].text);
    }
    ASSERT_EQ(sorvik_join_lists_warning_count(joined), expected.warnings.size());
    for (std::size_t i = 0; i < expected.warnings.size(); ++i) {
      EXPECT_EQ(Text(sorvik_join_lists_warning_at(joined, i)), expected.warnings[i].text);
    }
    ++made;
  };
  for (const MadeCard& card : MakeBindingCards(tree_)) {
    const ProviderWrapper* best = ProviderHost::GetProviderList(card.root).front();
    const ContentMap content = best->GetContent(card.root, {kPathField}, nullptr);
    for (const char* format : {"ffconcat", "otio", "ale", "edl", "fcpxml", "csv", "json"}) {
      compare(card, content.begin()->first.c_str(), format);
      compare(card, nullptr, format);
    }
  }
  EXPECT_GT(made, 40);
}

TEST_F(CInterface, FilesOfAnEntryIncludeMissingOnes) {
  MakeP2Card(tree_, "p2");
  AddP2Clip(tree_, "p2", {.id = "0001AA"});
  AddP2Clip(tree_, "p2", {.id = "0002BB"});
  ASSERT_EQ(remove(tree_.Path("p2/CONTENTS/VIDEO/0001AA.MXF").c_str()), 0);
  sorvik_files* files = nullptr;
  ASSERT_EQ(sorvik_list_files(tree_.Path("p2").c_str(), "ProviderP2", "0001AA", &files), SORVIK_OK)
      << sorvik_error_text();
  std::vector<std::string> texts;
  for (std::size_t i = 0; i < sorvik_files_count(files); ++i) {
    const sorvik_file* file = sorvik_files_at(files, i);
    texts.push_back(Text(file->path).substr(tree_.Path("p2/CONTENTS/").size()) + " " +
                    Text(file->part) + (file->present ? "" : " missing"));
  }
  sorvik_files_free(files);
  EXPECT_THAT(texts, ElementsAre("CLIP/0001AA.XML clip record", "ICON/0001AA.BMP thumbnail",
                                 "AUDIO/0001AA00.MXF sound channel missing",
                                 "AUDIO/0001AA01.MXF sound channel missing",
                                 "VIDEO/0001AA.MXF essence missing"));
}

TEST_F(CInterface, OwnerIsThatOfGetRelatedFiles) {
  MakeAllCards(tree_);
  for (const char* name : {"p2/CONTENTS/VIDEO/0002AA.MXF", "avchd/BDMV/STREAM/00001.MTS"}) {
    const std::string file = tree_.Path(name);
    UTF16String key;
    UTF16String folder;
    UTF16String provider;
    const FieldValueMap fields = GetRelatedFiles(Hestra::MakeString(file), key, folder, provider);
    sorvik_listing* owner = nullptr;
    ASSERT_EQ(sorvik_find_owner(file.c_str(), &owner), SORVIK_OK) << sorvik_error_text();
    EXPECT_EQ(ContentOf(owner), (ContentMap{{Hestra::MakeStdString(key), fields}}));
    EXPECT_EQ(Text(sorvik_listing_path(owner)), Hestra::MakeStdString(folder));
    EXPECT_EQ(Text(sorvik_listing_provider(owner)), Hestra::MakeStdString(provider));
    sorvik_listing_free(owner);
  }
  sorvik_listing* none = nullptr;
  EXPECT_EQ(sorvik_find_owner(tree_.Path("gone.MXF").c_str(), &none), SORVIK_MISSING);
}

TEST_F(CInterface, PicturesAreTopDownRgbaWithStraightColours) {
  RegisterFake()->thumbnail = [](ProviderRequest*) {
    Bitplate** plate = bitplateNew({0, 0, 1, 2});
    bitplateSetRowOrder(plate, BitplateRowOrder::kBottomUp);
    unsigned char* pixels = bitplateGetPixels(plate);
    const unsigned char bottom[] = {10, 20, 40, 128};
    const unsigned char top[] = {1, 2, 3, 255};
    std::copy(std::begin(bottom), std::end(bottom), pixels);
    std::copy(std::begin(top), std::end(top), pixels + bitplateGetRowbytes(plate));
    return plate;
  };
  sorvik_picture* picture = nullptr;
  ASSERT_EQ(sorvik_render_thumbnail("/fake", "test.Fake", "key", 1, 2, &picture), SORVIK_OK);
  ASSERT_EQ(sorvik_picture_width(picture), 1);
  ASSERT_EQ(sorvik_picture_height(picture), 2);
  const uint8_t* pixels = sorvik_picture_pixels(picture);
  EXPECT_THAT(std::vector<int>(pixels, pixels + 8), ElementsAre(3, 2, 1, 255, 80, 40, 20, 128));
  sorvik_picture_free(picture);
}

TEST_F(CInterface, PicturesOfClipsAreThoseOfRenderClipPicture) {
  MakeP2Card(tree_, "p2");
  AddP2Clip(tree_, "p2", {.id = "0001AA"});
  AddP2Clip(tree_, "p2", {.id = "0002BB"});
  tree_.File("p2/CONTENTS/ICON/0001AA.BMP", Saved(Plain(40, 30, {1, 2, 3}), "bmp"));
  ASSERT_EQ(remove(tree_.Path("p2/CONTENTS/ICON/0002BB.BMP").c_str()), 0);
  const std::string root = tree_.Path("p2");
  sorvik_picture* picture = nullptr;
  ASSERT_EQ(sorvik_render_picture(root.c_str(), "ProviderP2", "0001AA", 200, 200, &picture),
            SORVIK_OK)
      << sorvik_error_text();
  EXPECT_EQ(sorvik_picture_width(picture), 40);
  EXPECT_EQ(sorvik_picture_height(picture), 30);
  sorvik_picture_free(picture);
  EXPECT_EQ(sorvik_render_picture(root.c_str(), "ProviderP2", "0002BB", 200, 200, &picture),
            SORVIK_NO_PICTURE);
  EXPECT_EQ(picture, nullptr);
}

TEST_F(CInterface, CatalogueIsThatOfWriteCatalogue) {
  MakeBindingCards(tree_);
  std::vector<std::string> expected;
  CatalogueOptions options;
  options.tool = std::string("sorvik ") + sorvik_version();
  WriteCatalogue({tree_.Root()}, options, [&](std::string_view line) {
    expected.emplace_back(line);
    return true;
  });
  const char* const paths[] = {tree_.Root().c_str()};
  std::vector<std::string> lines;
  const sorvik_line_callback receive = [](sorvik_text line, void* context) {
    static_cast<std::vector<std::string>*>(context)->push_back(Text(line));
    return true;
  };
  EXPECT_EQ(sorvik_write_catalogue(paths, 1, receive, nullptr, &lines), SORVIK_OK);
  EXPECT_EQ(lines, expected);
  const sorvik_line_callback refuse = [](sorvik_text, void*) { return false; };
  EXPECT_EQ(sorvik_write_catalogue(paths, 1, refuse, nullptr, nullptr), SORVIK_ABORTED);
  tree_.Folder("empty");
  const std::string empty = tree_.Path("empty");
  const char* const none[] = {empty.c_str()};
  EXPECT_EQ(sorvik_write_catalogue(none, 1, receive, nullptr, &lines), SORVIK_NO_PROVIDER);
  const char* const relative[] = {"relative"};
  EXPECT_EQ(sorvik_write_catalogue(relative, 1, receive, nullptr, &lines), SORVIK_INVALID_ARGUMENT);
}

struct ScanResult {
  std::vector<std::string> cards;
  std::size_t entries = 0;
  std::size_t problems = 0;
  sorvik_status status = SORVIK_OK;
  bool ended = false;
};

void Receive(sorvik_request*, sorvik_event* event, void* context) {
  auto& result = *static_cast<ScanResult*>(context);
  if (sorvik_card* card = sorvik_event_take_card(event)) {
    result.cards.push_back(Text(sorvik_card_path(card)));
    EXPECT_EQ(sorvik_event_take_card(event), nullptr);
    sorvik_card_free(card);
  } else if (sorvik_listing* listing = sorvik_event_take_listing(event)) {
    result.entries += sorvik_listing_size(listing);
    sorvik_listing_free(listing);
  } else if (sorvik_event_get_kind(event) == SORVIK_EVENT_PROBLEM) {
    ++result.problems;
  } else {
    EXPECT_EQ(sorvik_event_get_kind(event), SORVIK_EVENT_END);
    result.status = sorvik_event_status(event);
    result.ended = true;
  }
}

class CQueue : public CInterface {
 protected:
  void SetUp() override {
    CInterface::SetUp();
    sorvik_queue* queue = nullptr;
    ASSERT_EQ(sorvik_queue_create(&queue), SORVIK_OK);
    queue_.reset(queue);
  }
  void TearDown() override {
    queue_.reset();
    CInterface::TearDown();
  }

  // Dispatches when the descriptor is readable, until `done` or ten seconds have passed.
  void DispatchUntil(const std::function<bool()>& done) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    pollfd waiting{sorvik_queue_descriptor(queue_.get()), POLLIN, 0};
    while (!done() && std::chrono::steady_clock::now() < end) {
      if (poll(&waiting, 1, 100) > 0) sorvik_queue_dispatch(queue_.get(), 1);
    }
  }

  Owned<sorvik_queue> queue_{nullptr, sorvik_queue_free};
};

TEST_F(CQueue, ScanDeliversCardsAndEntries) {
  std::vector<std::string> expected;
  std::size_t entries = 0;
  for (const FoundCard& card :
       (MakeAllCards(tree_), FindCards(tree_.Root(), SearchDirection::kDeep))) {
    expected.push_back(card.path);
    entries += sorvik_listing_size(List(card.path, card.identification).get());
  }
  ScanResult result;
  const sorvik_receiver receiver{queue_.get(), Receive, &result};
  sorvik_request* request = nullptr;
  ASSERT_EQ(
      sorvik_start_scan(tree_.Root().c_str(), SORVIK_SCAN_ENTRIES, nullptr, &receiver, &request),
      SORVIK_OK);
  DispatchUntil([&] { return result.ended; });
  sorvik_request_free(request);
  EXPECT_EQ(result.cards, expected);
  EXPECT_EQ(result.entries, entries);
  EXPECT_EQ(result.status, SORVIK_OK);

  result = {};
  tree_.Folder("empty");
  ASSERT_EQ(sorvik_start_scan(tree_.Path("empty").c_str(), 0, nullptr, &receiver, &request),
            SORVIK_OK);
  DispatchUntil([&] { return result.ended; });
  sorvik_request_free(request);
  EXPECT_EQ(result.status, SORVIK_NO_PROVIDER);
}

TEST_F(CQueue, FreedRequestsCallNoCallback) {
  const auto answers = RegisterFake();
  const auto turnstile = std::make_shared<Turnstile>();  // the worker may outlive the test
  answers->listing = [turnstile](ProviderRequest*) {
    turnstile->ArriveAndWait();
    return ContentMap{{"key", {}}};
  };
  ScanResult result;
  const sorvik_receiver receiver{queue_.get(), Receive, &result};
  sorvik_request* request = nullptr;
  ASSERT_EQ(sorvik_start_list("/fake", "test.Fake", nullptr, &receiver, &request), SORVIK_OK);
  turnstile->WaitForArrival();
  sorvik_request_free(request);
  turnstile->Open();

  // A callback frees its own request, with events still queued.
  sorvik_callback freeing = [](sorvik_request* own, sorvik_event* event, void* context) {
    sorvik_request_free(own);
    EXPECT_NE(sorvik_event_get_kind(event), SORVIK_EVENT_END);
    ++*static_cast<int*>(context);
  };
  int calls = 0;
  const sorvik_receiver counter{queue_.get(), freeing, &calls};
  ASSERT_EQ(sorvik_start_list("/fake", "test.Fake", nullptr, &counter, &request), SORVIK_OK);
  DispatchUntil([&] { return calls > 0; });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  sorvik_queue_dispatch(queue_.get(), 100);
  EXPECT_EQ(calls, 1);
  EXPECT_FALSE(result.ended);
}

TEST_F(CInterface, AbortedRequestEndsWhileItsWorkerIsStuck) {
  const auto answers = RegisterFake();
  const auto turnstile = std::make_shared<Turnstile>();  // the worker may outlive the test
  answers->listing = [turnstile](ProviderRequest*) {
    turnstile->ArriveAndWait();
    return ContentMap{{"key", {}}};
  };
  sorvik_request* request = nullptr;
  ASSERT_EQ(sorvik_start_list("/fake", "test.Fake", nullptr, nullptr, &request), SORVIK_OK);
  turnstile->WaitForArrival();
  sorvik_event* event = nullptr;
  EXPECT_EQ(sorvik_request_next(request, 10, &event), SORVIK_TIMED_OUT);
  EXPECT_EQ(event, nullptr);
  sorvik_request_abort(request);
  ASSERT_EQ(sorvik_request_next(request, 5000, &event), SORVIK_OK);
  EXPECT_EQ(sorvik_event_get_kind(event), SORVIK_EVENT_END);
  EXPECT_EQ(sorvik_event_status(event), SORVIK_ABORTED);
  sorvik_event_free(event);
  EXPECT_EQ(sorvik_request_next(request, 0, &event), SORVIK_INVALID_ARGUMENT);
  // The worker is set aside right after the answer.
  for (int i = 0; i < 5000 && sorvik_stalled_workers() == 0; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  EXPECT_EQ(sorvik_stalled_workers(), 1U);
  turnstile->Open();
  sorvik_request_free(request);
}

TEST_F(CInterface, ShutdownAbortsRunningRequests) {
  const auto answers = RegisterFake();
  std::atomic<bool> begun{false};
  answers->listing = [&](ProviderRequest* request) {
    begun = true;
    begun.notify_one();
    while (!request->TestAborted()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return ContentMap();
  };
  sorvik_request* request = nullptr;
  ASSERT_EQ(sorvik_start_list("/fake", "test.Fake", nullptr, nullptr, &request), SORVIK_OK);
  begun.wait(false);
  sorvik_shutdown();
  sorvik_event* event = nullptr;
  ASSERT_EQ(sorvik_request_next(request, 5000, &event), SORVIK_OK);
  EXPECT_EQ(sorvik_event_status(event), SORVIK_ABORTED);
  sorvik_event_free(event);
  sorvik_request_free(request);
  sorvik_card* card = nullptr;
  EXPECT_EQ(sorvik_open("/", nullptr, SORVIK_OPEN_EXACT, &card), SORVIK_NOT_INITIALIZED);
  ASSERT_EQ(sorvik_initialize(), SORVIK_OK);
}

TEST_F(CInterface, FailuresHaveAStatusTextAndPath) {
  const std::string root = tree_.Root();
  tree_.File("file.txt");
  const auto open = [](const std::string& path, const char* provider = nullptr) {
    sorvik_card* card = nullptr;
    const sorvik_status status = sorvik_open(path.c_str(), provider, SORVIK_OPEN_EXACT, &card);
    EXPECT_EQ(card != nullptr, status == SORVIK_OK);
    sorvik_card_free(card);
    return status;
  };
  struct Case {
    sorvik_status got;
    sorvik_status expected;
    const char* text;
  };
  EXPECT_EQ(open(root + "/./x/.."), SORVIK_OK);
  const auto check = [](Case c) {
    EXPECT_EQ(c.got, c.expected) << c.text;
    EXPECT_THAT(sorvik_error_text(), HasSubstr(c.text));
  };
  check({open("relative"), SORVIK_INVALID_ARGUMENT, "path must be absolute"});
  check({open(""), SORVIK_INVALID_ARGUMENT, "path must not be empty"});
  check({open("/" + std::string(5000, 'x')), SORVIK_INVALID_ARGUMENT, "path is too long"});
  check({open(root + "/gone"), SORVIK_MISSING, "No such file or directory"});
  EXPECT_EQ(sorvik_error_path(), root + "/gone");
  check({open(root + "/file.txt"), SORVIK_NO_PROVIDER, "no provider for this path"});
  check({open(root, "ProviderP2"), SORVIK_NO_PROVIDER, "not supported by this provider"});
  check({open(root, "Nonsense"), SORVIK_INVALID_ARGUMENT, "unknown provider 'Nonsense'"});
  check({sorvik_open(nullptr, nullptr, SORVIK_OPEN_EXACT, nullptr), SORVIK_INVALID_ARGUMENT,
         "output must not be NULL"});
  sorvik_listing* listing = nullptr;
  check({sorvik_list(root.c_str(), nullptr, nullptr, &listing), SORVIK_INVALID_ARGUMENT,
         "provider must not be empty"});
  check({sorvik_list((root + "/gone").c_str(), "WinProviderDirectory", nullptr, &listing),
         SORVIK_MISSING, "No such file"});
  check({sorvik_read_entry(root.c_str(), "WinProviderDirectory", "nothing", nullptr, &listing),
         SORVIK_NO_ENTRY, "no entry 'nothing'"});
  sorvik_picture* picture = nullptr;
  check({sorvik_render_thumbnail(root.c_str(), "WinProviderDirectory", "k", 0, 5, &picture),
         SORVIK_INVALID_ARGUMENT, "width and height must be 1 to 16384"});
  check({sorvik_render_thumbnail(root.c_str(), "ProviderP2", "k", 5, 5, &picture),
         SORVIK_NO_PICTURE, "no picture of 'k'"});
  check({sorvik_start_list(root.c_str(), "ProviderP2", nullptr, nullptr, nullptr),
         SORVIK_INVALID_ARGUMENT, "request must not be NULL"});
  sorvik_join_lists* lists = nullptr;
  sorvik_join_options options{"mov", nullptr, false};
  check({sorvik_join(root.c_str(), "WinProviderDirectory", "k", &options, &lists),
         SORVIK_INVALID_ARGUMENT, "unknown format 'mov'"});
  options.format = "csv";
  check({sorvik_join(root.c_str(), "ProviderP2", "k", &options, &lists), SORVIK_NO_ENTRY,
         "no entry 'k'"});
  RegisterFake()->listing = [](ProviderRequest*) -> ContentMap {
    throw std::runtime_error("broken card");
  };
  check({sorvik_list("/fake", "test.Fake", nullptr, &listing), SORVIK_FAILED, "broken card"});
}

TEST_F(CInterface, ThreadsShareTheLibrary) {
  MakeAllCards(tree_);
  std::atomic<int> failures{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < 25; ++i) {
        const std::string path = tree_.Path((t + i) % 2 == 0 ? "p2" : "gone" + std::to_string(t));
        sorvik_card* card = nullptr;
        sorvik_initialize();
        const bool opened =
            sorvik_open(path.c_str(), nullptr, SORVIK_OPEN_NEARBY, &card) == SORVIK_OK;
        if (opened != ((t + i) % 2 == 0)) ++failures;
        if (!opened && sorvik_error_path() != path) ++failures;
        sorvik_card_free(card);
        sorvik_shutdown();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(failures, 0);
}

TEST_F(CInterface, LabelsAreThoseOfTheProvider) {
  MakeP2Card(tree_, "p2");
  AddP2Clip(tree_, "p2", {.id = "0001AA"});
  ASSERT_EQ(sorvik_set_language("de-DE"), SORVIK_OK);
  const auto listing = List(tree_.Path("p2"), "ProviderP2");
  EXPECT_EQ(Text(sorvik_listing_label(listing.get(), "duration")), "Dauer");
  EXPECT_EQ(Text(sorvik_listing_label(listing.get(), "unknown")), "unknown");
  sorvik_set_language("");
}

}  // namespace
