#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "schedule/program_details.h"
#include "schedule/schedule_item.h"
#include "schedule/station.h"
#include "tests/support/test_support.h"

namespace {

using ORVANE::MSTR;

constexpr std::string_view kSeparators = " .,:;(){}!\xa3$%^&*_-+=#~@?/|\"'\\[]";

std::vector<std::string> Words(const std::string& text) {
  std::istringstream words(text);
  return {std::istream_iterator<std::string>(words), {}};
}

// An item whose programme has a title, a director and a rating, and nothing else.
class ItemTest : public testing::Test {
 protected:
  ItemTest() {
    FillFieldTable();
    FillStationFieldTable();
    program_.title = "Alien";
    program_.director = "Scott";
    program_.star_rating = "3/5";
    item_.program = &program_;
  }

  std::string Field(std::string_view name, std::string_view argument = "ignored") const {
    return std::string(GetField(item_, name, argument).View());
  }
  std::string Expand(std::string_view text, bool preceding_text = false) const {
    return std::string(ExpandTemplate(item_, text, preceding_text).View());
  }

  CProgram program_;
  CScheduleItem item_;
};
using FieldTest = ItemTest;
using TemplateTest = ItemTest;

TEST_F(FieldTest, ReadsProgrammeAndItem) {
  const auto all = [](auto*... fields) { return std::vector<MSTR*>{fields...}; };
  const auto fields =
      all(&program_.title, &program_.description, &program_.episode_title, &program_.genre,
          &program_.show_type, &program_.director, &program_.language, &program_.actors,
          &program_.publish_date, &program_.rating_bbfc, &program_.black_and_white, &item_.subtitle,
          &item_.stereo, &item_.repeat, &item_.rating_tv, &item_.rating_fv, &item_.rating_other,
          &item_.new_marker, &item_.premiere);
  const auto names = Words(
      "Title Description EpisodeTitle Genre ShowType Director Language Actors PublishDate "
      "RatingBBFC BlackAndWhite Subtitle Stereo Repeat RatingTV RatingFV RatingOther New Premiere");
  for (std::size_t i = 0; i < names.size(); ++i) *fields[i] = std::string_view(names[i]);
  for (const std::string& name : names) EXPECT_EQ(name, Field(name));
  for (const std::string genre : {"film", "Film", "FILM", "Films", "fil", "Comedy", ""}) {
    program_.genre = std::string_view(genre);
    EXPECT_EQ(genre.size() == 4 ? "Y" : "", Field("Film")) << genre;
  }
  item_.program = nullptr;
  for (std::size_t i = 0; i < names.size(); ++i) {
    EXPECT_EQ(i < 11 ? "" : names[i], Field(names[i]));  // the first 11 are the programme's
  }
  EXPECT_EQ("", Field("Film") + Field("StarRating"));
  for (const std::string name : {"HD", "Aspect", "Subtitles", "title", ""}) {
    EXPECT_EQ("[Not Found! (" + name + ":x)]", Field(name, "x"));
  }
  epg_test::FakePlatform system;
  system.SetZone(60);
  item_.start = epg_test::At("2007-02-05 19:05");
  EXPECT_EQ("08:05 pm", Field("Time"));
}

TEST_F(FieldTest, FlagsStandInOrder) {
  MSTR* const fields[] = {&item_.new_marker,        &item_.aspect, &item_.stereo,
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
    for (int i = 0; i < 7; ++i) *fields[i] = row[i];
    EXPECT_EQ(row[7], Field("Flags"));
  }
}

TEST_F(FieldTest, StarRatingIsDrawn) {
  const auto words = Words(
      "3/5 * ***  3/5 *,- ***--  3/5 ,- --  3/5 *, ***  1/2 ab,c,d abc,d  5/3 *,- *****  2 *,- ** "
      "-2/3 *,- ---  0/0 * none  2.5of3/4/9 *,- **--  /2 *,- --  x *,- none  4294967297/2 *,- *- "
      "2000000000/9 ,- none");
  for (std::size_t i = 0; i < words.size(); i += 3) {
    program_.star_rating = std::string_view(words[i]);
    EXPECT_EQ(words[i + 2] == "none" ? "" : words[i + 2], Field("StarRating", words[i + 1]))
        << words[i];
    EXPECT_EQ(words[i], Field("StarRating", ""));
  }
  rusage before = {};
  ::getrusage(RUSAGE_SELF, &before);
  for (const char* const rating : {"2000000000", "0/2000000000"}) {
    program_.star_rating = rating;
    EXPECT_THROW(Expand("$StarRating(*,-)"), std::bad_alloc);
  }
  rusage after = {};
  ::getrusage(RUSAGE_SELF, &after);
  EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 64 * 1024) << "KB";
}

TEST_F(FieldTest, TablesAreFilledOnce) {
  FillFieldTable();
  FillStationFieldTable();
  EXPECT_EQ(24u, field_table.size());
  EXPECT_EQ(2u, station_field_table.size());
  const CStation station;
  EXPECT_EQ(&station.network, &station_field_table.at("Network")(station));
  EXPECT_EQ(&station.call_sign, &station_field_table.at("CallSign")(station));
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
      "$Combination($Nope(a)b)=[Not Found! (Nope:a)]b|$Combination(a\\)b)=ab)|");
  std::string expanded;
  for (std::string text; std::getline(std::getline(rows, text, '='), expanded, '|');) {
    EXPECT_EQ(expanded, Expand(text)) << text;
  }
  EXPECT_EQ("xyz", Expand("[$(a)]$(x)[$(y)]$Combination($(a)z)", true));
  item_.program = nullptr;
  EXPECT_EQ("a", Expand("[$Title]a"));
}

TEST_F(TemplateTest, NamesRunToASeparator) {
  std::string plain;
  for (int code = 0; code < 256; ++code) {
    const char c = static_cast<char>(code);
    if (std::string_view("$[]\\").find(c) == std::string_view::npos) plain += c;
    const std::string name = std::string("Nope") + c + 'z';
    EXPECT_EQ(kSeparators.find(c) == std::string_view::npos,
              Expand('$' + name) == "[Not Found! (" + name + ":)]")
        << code;
  }
  EXPECT_EQ(plain, Expand(plain));
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

// Expands the plain way, with a call for every group and for every template in an argument.
std::string Plain(const CScheduleItem& item, const std::string& text, std::size_t& at,
                  bool preceding_text) {
  std::string result;
  while (at < text.size()) {
    const char c = text[at++];
    if (c == ']') break;
    if (c == '[') {
      result += Plain(item, text, at, !result.empty());
    } else if (c == '\\') {
      if (at == text.size()) break;
      const char escaped = text[at++];
      result += escaped == 'n' ? "\n" : escaped == 't' ? "<t>" : std::string(1, escaped);
    } else if (c != '$') {
      result += c;
    } else {
      const std::size_t end = std::min(text.find_first_of(kSeparators, at), text.size());
      const std::string name = text.substr(at, end - at);
      at = end;
      const bool test_only = text[at] == '!';
      if (test_only) ++at;
      std::string argument;
      if (text[at] == '(') {
        for (int depth = 1; ++at < text.size(); argument += text[at]) {
          depth += (text[at] == '(') - (text[at] == ')');
          if (depth == 0) break;
        }
        at = std::min(at + 1, text.size());
      }
      if (name.empty()) {
        if (preceding_text) result += argument;
        continue;
      }
      std::size_t begin = 0;
      const std::string value = name == "Combination"
                                    ? Plain(item, argument, begin, false)
                                    : std::string(GetField(item, name, argument).View());
      if (value.empty()) {
        for (int depth = 1; at < text.size() && depth > 0; ++at)
          depth += (text[at] == '[') - (text[at] == ']');
        return "";
      }
      if (!test_only) result += value;
    }
  }
  return result;
}

TEST_F(TemplateTest, ExpandsAsThePlainWay) {
  const auto pieces = Words(
      "[ [ ] ] $ ( ) ) ! \\ , a n t \xa3 $Title $Genre $Nope $( $Combination( $Combination!( "
      "$StarRating(*,-");
  std::mt19937 random(1979);
  for (int i = 0; i < 100'000; ++i) {
    std::string text;
    for (auto rest = random() % 16; rest > 0; --rest) text += pieces[random() % pieces.size()];
    const bool preceding_text = i % 4 == 0;
    std::size_t begin = 0;
    ASSERT_EQ(Plain(item_, text, begin, preceding_text), Expand(text, preceding_text)) << text;
  }
}

}  // namespace
