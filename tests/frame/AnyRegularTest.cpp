// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <array>
#include <set>
#include <type_traits>

#include "SorvikProvider/frame/Provider.h"
#include "SorvikProvider/frame/any_regular_t.h"

namespace {

using halvane::any_regular_t;
using halvane::bad_cast;
using halvane::empty_t;
using halvane::ToText;
using halvane::TypeRecordOf;
using Sorvik::Provider;
using List = std::vector<any_regular_t>;

std::string MessageOfCast(const any_regular_t& value) {
  try {
    static_cast<void>(value.cast<std::string>());
  } catch (const bad_cast& failure) {
    return failure.what();
  }
  return {};
}

TEST(AnyRegular, CopiesMovesAndSwapsEachType) {
  const std::vector<any_regular_t> kinds{
      any_regular_t(), any_regular_t(std::string("a text too long for the small string buffer")),
      any_regular_t(List{any_regular_t(std::string("/a")), any_regular_t()}),
      any_regular_t(Sorvik::UTF16String(u"wide")),
      any_regular_t(Provider::ByteSize_t(5'000'000'000))};
  for (std::size_t i = 0; i < kinds.size(); ++i) {
    any_regular_t copy = kinds[i];
    any_regular_t moved = std::move(copy);
    EXPECT_EQ(moved, kinds[i]);
    for (std::size_t j = 0; j < kinds.size(); ++j) {
      EXPECT_EQ(kinds[i] == kinds[j], i == j);
      any_regular_t other = kinds[j];
      any_regular_t one = kinds[i];
      one.swap(other);
      EXPECT_EQ(one, kinds[j]);
      EXPECT_EQ(other, kinds[i]);
      one = kinds[i];
      EXPECT_EQ(one, kinds[i]);
    }
  }
}

TEST(AnyRegular, AcceptsItsOwnElements) {
  // Two elements: the second is read after the first was assigned.
  const any_regular_t inner(List{any_regular_t("/a"), any_regular_t("/b")});
  const List outer{inner, any_regular_t("second")};
  any_regular_t copied(outer);
  copied = (*copied.get_if<List>())[0];
  EXPECT_EQ(copied, inner);

  any_regular_t moved(outer);
  moved = std::move(const_cast<List&>(*moved.get_if<List>())[0]);
  EXPECT_EQ(moved, inner);

  List list = outer;
  EXPECT_TRUE(list[0].cast(list));
  EXPECT_EQ(any_regular_t(list), inner);
}

TEST(AnyRegular, CopiesListsDeeply) {
  const any_regular_t list(List{any_regular_t(std::string("/a"))});
  List taken = list.cast<List>();
  taken[0] = any_regular_t(std::string("/b"));
  EXPECT_EQ(list, any_regular_t(List{any_regular_t(std::string("/a"))}));
}

TEST(AnyRegular, DistinguishesTypesOfSimilarValues) {
  EXPECT_FALSE(any_regular_t(std::string()) == any_regular_t());
  EXPECT_FALSE(any_regular_t(std::string("7")) == any_regular_t(Provider::ByteSize_t(7)));
  EXPECT_EQ(any_regular_t(Provider::ByteSize_t(0)), any_regular_t(Provider::ByteSize_t()));
}

TEST(AnyRegular, CastsOnlyToTheTypeOfTheValue) {
  std::string text = "old";
  EXPECT_FALSE(any_regular_t(Provider::ByteSize_t(1)).cast(text));
  EXPECT_EQ(text, "old");
  EXPECT_TRUE(any_regular_t(std::string("new")).cast(text));
  EXPECT_EQ(text, "new");
  EXPECT_EQ(MessageOfCast(any_regular_t()),
            "bad_cast: empty_t:version_1:halvane -> string_t:version_1:halvane");
  EXPECT_EQ(MessageOfCast(any_regular_t(List{})),
            "bad_cast: vector:version_1:halvane<any_regular_t:version_1:halvane> -> "
            "string_t:version_1:halvane");
  EXPECT_EQ(MessageOfCast(any_regular_t(Provider::ByteSize_t(1))),
            "bad_cast: ByteSize_t:Provider:Sorvik -> string_t:version_1:halvane");
  EXPECT_STREQ(bad_cast().what(), "bad_cast");
}

TEST(AnyRegular, HoldsOtherRegularTypes) {
  const any_regular_t small(42);
  const any_regular_t large(std::array<double, 16>{1.5});
  EXPECT_EQ(small.cast<int>(), 42);
  EXPECT_EQ((large.cast<std::array<double, 16>>()[0]), 1.5);
  EXPECT_EQ(large, any_regular_t(large));
  EXPECT_EQ(ToText(TypeRecordOf<int>::Get()), "int*");
}

TEST(AnyRegular, CopiesTextsAndRejectsPointers) {
  char buffer[] = "first";
  const any_regular_t fromBuffer(buffer);
  buffer[0] = 'F';
  EXPECT_EQ(fromBuffer, any_regular_t(std::string("first")));
  EXPECT_EQ(any_regular_t("literal").cast<std::string>(), "literal");
  static_assert(!std::is_constructible_v<any_regular_t, const char16_t*>);
  static_assert(!std::is_constructible_v<any_regular_t, int*>);
}

TEST(TypeRecords, OrderNamedBeforeUnnamedThenByNameAndParameters) {
  const auto& empty = TypeRecordOf<empty_t>::Get();
  const auto& text = TypeRecordOf<std::string>::Get();
  const auto& wide = TypeRecordOf<Sorvik::UTF16String>::Get();
  const halvane::TypeRecord shortList{nullptr, "vector:version_1:halvane", nullptr};
  const auto& list = TypeRecordOf<List>::Get();
  EXPECT_TRUE(empty < text && !(text < empty));
  EXPECT_TRUE(text < wide && !(wide < text));
  EXPECT_TRUE(shortList < list && !(list < shortList));
  EXPECT_FALSE(shortList == list);
  const halvane::TypeRecord sameName{nullptr, "string_t:version_1:halvane", nullptr};
  EXPECT_TRUE(sameName == text && !(sameName < text));
}

// Items of a list in order, with their addresses.
std::vector<const any_regular_t*> ItemsOf(const any_regular_t& value) {
  std::vector<const any_regular_t*> items;
  EXPECT_TRUE(value.for_each_item([&items](const any_regular_t& item) { items.push_back(&item); }));
  return items;
}

TEST(AnyRegular, ListsCanShareItems) {
  const auto shared = std::make_shared<const List>(List{any_regular_t("b"), any_regular_t("c")});
  const auto first = any_regular_t::list({any_regular_t("a")}, shared);
  const auto second = any_regular_t::list({}, shared);
  EXPECT_TRUE(first.holds<List>());
  EXPECT_EQ(*first.get_if<List>(),
            (List{any_regular_t("a"), any_regular_t("b"), any_regular_t("c")}));
  EXPECT_EQ(first, any_regular_t(first.cast<List>()));
  EXPECT_EQ(ItemsOf(first).at(2), ItemsOf(second).at(1)) << "the same memory";
  EXPECT_FALSE(any_regular_t("a").for_each_item([](const any_regular_t&) {}));
  EXPECT_TRUE(ItemsOf(any_regular_t::list({}, nullptr)).empty());
}

TEST(AnyRegular, CopiesOfListsAreIndependent) {
  any_regular_t value(List{any_regular_t(List{any_regular_t("inner")}), any_regular_t("b")});
  const any_regular_t copy = value;
  EXPECT_EQ(ItemsOf(copy), ItemsOf(value)) << "the same memory";
  value = (*value.get_if<List>())[0];
  EXPECT_EQ(value, any_regular_t(List{any_regular_t("inner")}));
  EXPECT_EQ(copy.get_if<List>()->size(), 2u);
  List changed = copy.cast<List>();
  changed.pop_back();
  EXPECT_EQ(ItemsOf(copy).size(), 2u);
}

}  // namespace
