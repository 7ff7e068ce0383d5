#include <gtest/gtest.h>

#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "schedule/fields.h"
#include "schedule/schedule_item.h"
#include "schedule/template.h"
#include "schedule/text_blocks.h"
#include "tests/support/test_support.h"

namespace {

std::vector<std::string> Words(const std::string& text) {
  std::istringstream words(text);
  return {std::istream_iterator<std::string>(words), {}};
}

// An item whose programme has a title, a director and a rating, and nothing else.
class ItemTest : public testing::Test {
 protected:
  ItemTest() {
    FillFieldTable();
    program_.title = texts_.Keep("Alien");
    program_.director = texts_.Keep("Scott");
    program_.star_rating = texts_.Keep("3/5");
    item_.program = &program_;
  }

  std::string Field(std::string_view name, std::string_view argument = "ignored") const {
    return GetField(item_, name, argument);
  }
  std::string Expand(std::string_view text, bool preceding_text = false) const {
    return ExpandTemplate(item_, text, preceding_text);
  }

  CTextBlocks texts_;
  CProgram program_;
  CScheduleItem item_;
};
using FieldTest = ItemTest;
using TemplateTest = ItemTest;

TEST_F(FieldTest, ReadsProgrammeAndItem) {
  const auto all = [](auto*... fields) { return std::vector<CText*>{fields...}; };
  const auto fields =
      all(&program_.title, &program_.description, &program_.episode_title, &program_.genre,
          &program_.show_type, &program_.director, &program_.language, &program_.actors,
          &program_.publish_date, &program_.rating_bbfc, &program_.black_and_white, &item_.subtitle,
          &item_.stereo, &item_.repeat, &item_.rating_tv, &item_.rating_fv, &item_.rating_other,
          &item_.new_marker, &item_.premiere);
  const auto names = Words(
      "Title Description EpisodeTitle Genre ShowType Director Language Actors PublishDate "
      "RatingBBFC BlackAndWhite Subtitle Stereo Repeat RatingTV RatingFV RatingOther New Premiere");
  for (std::size_t i = 0; i < names.size(); ++i) *fields[i] = texts_.Keep(names[i]);
  for (const std::string& name : names) EXPECT_EQ(name, Field(name));
  for (const std::string genre : {"film", "Film", "FILM", "Films", "fil", "Comedy", ""}) {
    program_.genre = texts_.Keep(genre);
    EXPECT_EQ(genre.size() == 4 ? "Y" : "", Field("Film")) << genre;
  }
  item_.program = nullptr;
  for (std::size_t i = 0; i < names.size(); ++i) {
    EXPECT_EQ(i < 11 ? "" : names[i], Field(names[i]));  // the first 11 are the programme's
  }
  EXPECT_EQ("", Field("Film") + Field("StarRating"));
  EXPECT_EQ("[Not Found! (title:x)][Not Found! (:x)]", Field("title", "x") + Field("", "x"));
  epg_test::FakePlatform system;
  system.SetZone(60);
  item_.start = epg_test::At("2007-02-05 19:05");
  EXPECT_EQ("08:05 pm", Field("Time"));
}

TEST_F(FieldTest, FlagsStandInOrder) {
  CText* const fields[] = {&item_.new_marker,        &item_.aspect, &item_.stereo,
                           &item_.subtitle,          &item_.hd,     &item_.repeat,
                           &program_.black_and_white};
  const char* const rows[][8] = {
      {"Y", "16:9", "Y", "Yes", "Y", "Y", "Y", "New, 16:9, Stereo, CC, HD, Repeat, B/W"},
      {"N", "Y", "N", "N", "N", "No", "N", "Y, Repeat(N)"},
      {"y", "", "y", "y", "y", "y", "y", "Repeat(y)"},
      {"", "", "", "", "Y", "", "", "HD"},
      {"Y", "", "", "", "", "", "Y", "New, B/W"},
      {"", "", "", "", "", "", "", ""}};
  for (const auto& row : rows) {
    for (int i = 0; i < 7; ++i) *fields[i] = texts_.Keep(row[i]);
    EXPECT_EQ(row[7], Field("Flags"));
  }
}

TEST_F(FieldTest, StarRatingIsDrawn) {
  const auto words = Words(
      "3/5 * ***  3/5 *,- ***--  3/5 ,- --  3/5 *, ***  1/2 ab,c,d abc,d  5/3 *,- *****  2 *,- ** "
      "7/9 ab,c,d abababababababc,dc,d  -2/3 *,- ---  0/0 * none  2.5of3/4/9 *,- **--  /2 *,- --  "
      "x *,- none  4294967297/2 *,- *- "
      "2000000000/9 ,- none");
  for (std::size_t i = 0; i < words.size(); i += 3) {
    program_.star_rating = texts_.Keep(words[i]);
    EXPECT_EQ(words[i + 2] == "none" ? "" : words[i + 2], Field("StarRating", words[i + 1]))
        << words[i];
    EXPECT_EQ(words[i], Field("StarRating", ""));
  }
  for (const char* const rating : {"2000000000", "0/2000000000"}) {
    program_.star_rating = texts_.Keep(rating);
    EXPECT_THROW(Expand("$StarRating(*,-)"), std::bad_alloc);
  }
}

TEST_F(TemplateTest, FollowsEveryRule) {
  // "template=text|"
  std::istringstream rows(
      "Title=Title|$Title=Alien|a$Title b$Director=aAlien bScott|$$Title$=Alien|$!a=a|"
      "$Titles=[Not Found! (Titles:)]|$title[a=[Not Found! (title:)]a|"
      // An empty field takes its group away, and nothing more.
      "a$Genre=|x[a$Genre]y=xy|[$Genre (film)]=|[a[b$Genre]c]d=acd|[a$Genre[b]c]d=d|"
      "[a$Genre]b$Genre=|[$Genre\\]a]b=a|[$Genre\\[a]b]c=c|x[y[z$Genre=xy|x[$Genre[y]z=x|"
      "x[y[$Title=xyAlien|a]b=a|a[b]]c=ab|"
      // A test leaves no text.
      "[$EpisodeTitle!Episode]=|[$Title!Episode]=Episode|$Title!!=!|$Title!(x)y=y|a$Nope!(x)b=ab|"
      // Arguments nest; a backslash means nothing in them.
      "$StarRating(*,-)=***--|$Title()x(y)=Alienx(y)|$Title (x)=Alien (x)|$Title(=Alien|"
      "$Nope(a(b)c)d)=[Not Found! (Nope:a(b)c)]d)|$Nope(a\\)b=[Not Found! (Nope:a\\)]b|"
      "$Nope(a[b](=[Not Found! (Nope:a[b]()]|"
      // What separates needs something before its group.
      "$(x)=|a$(x)=a|[$(, )$Title]=Alien|$Title[$(, )$Director]=Alien, Scott|"
      "$Title[$(: )$EpisodeTitle]=Alien|[$Genre][$(, )$Title]=Alien|a[[$(x)]b[$(x)]]=abx|"
      "a[$!([$Genre])]=a[$Genre]|a[$(x$Title\\n]=ax$Title\\n]|"
      "A\\tB\\nC=A<t>B\nC|\\\\\\$\\[\\]\\(=\\$[](|[a\\=a|\\Title=Title|"
      // Templates in arguments.
      "$Combination($Title)!=Alien!|$Combination=|a$Combination([$Genre])=|"
      "[a$Combination(b$Genre)c]d=d|x$Combination(a]b)y=xay|a$Combination([$(, )b])=ab|"
      "$Combination(a[$(, )b])=a, b|$Combination!($Title)x=x|[$Combination!([$Genre])x]y=y|"
      "$Combination(a$Combination(b$Title)c=abAlienc|[x$Combination(a[$Genre)]b=xab|"
      "$Combination($Nope(a)b)=[Not Found! (Nope:a)]b|$Combination(a\\)b)=ab)|"
      "$Nope((a)$Combination(b(c)d=[Not Found! (Nope:(a)$Combination(b(c)d)]|"
      "$Combination((a)[$Combination([b]c]d)e)f=(a)bcef|");
  std::string expanded;
  for (std::string text; std::getline(std::getline(rows, text, '='), expanded, '|');) {
    EXPECT_EQ(expanded, Expand(text)) << text;
  }
  EXPECT_EQ("xyz", Expand("[$(a)]$(x)[$(y)]$Combination($(a)z)", true));
  item_.program = nullptr;
  EXPECT_EQ("a", Expand("[$Title]a"));
}

TEST_F(TemplateTest, NamesRunToASeparator) {
  const std::string separators = " .,:;(){}!\xa3$%^&*_-+=#~@?/|\"'\\[]";
  for (int code = 0; code < 256; ++code) {
    const std::string name = std::string("Nope") + static_cast<char>(code) + 'z';
    EXPECT_EQ(separators.find(name[4]) == std::string::npos,
              Expand('$' + name) == "[Not Found! (" + name + ":)]")
        << code;
  }
}

std::string Times(int count, std::string_view text) {
  std::string all;
  for (; count > 0; --count) all += text;
  return all;
}

TEST_F(TemplateTest, NestsAsDeepAsTextsAreLong) {
  EXPECT_EQ("x", Expand("x" + Times(1'000'000, "[")));
  EXPECT_EQ(Times(999'999, "a"), Expand(Times(1'000'000, "[a") + "$Genre" + Times(1'000'000, "]")));
  const std::string open = Times(300'000, "$Combination(");
  const std::string close = Times(300'000, ")");
  EXPECT_EQ("", Expand(open));
  EXPECT_EQ("Alien", Expand(open + "$Title"));
  EXPECT_EQ("Alien!", Expand(open + "$Title" + close + "!"));
  EXPECT_EQ("", Expand(open + "$Genre" + close + "!"));
}

}  // namespace
