#include "import/xmltv_data.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include "import/progress_indicator.h"
#include "import/record_readers.h"
#include "import/reparse.h"
#include "tests/support/test_support.h"
#include "text/counted_text.h"
#include "xml/safe_node.h"

namespace {

using epg_test::At;
using ORVANE::MSTR;
using std::string_literals::operator""s;

// "Title=Tea|Genre=Food": the texts of an item and its programme that are set.
std::string Describe(const CScheduleItem& i) {
  const CProgram& p = *i.program;
  std::istringstream names(
      "Title EpisodeTitle Description Genre ShowType Director Actors PublishDate Language "
      "RatingBBFC StarRating BlackAndWhite StationKey HD Stereo Subtitle RatingTV RatingFV "
      "RatingOther Repeat Aspect Subtitles New Premiere");
  std::string set;
  for (const CText& text :
       {p.title,       p.episode_title,   p.description,  p.genre,        p.show_type,
        p.director,    p.actors,          p.publish_date, p.language,     p.rating_bbfc,
        p.star_rating, p.black_and_white, i.station_key,  i.hd,           i.stereo,
        i.subtitle,    i.rating_tv,       i.rating_fv,    i.rating_other, i.repeat,
        i.aspect,      i.subtitles,       i.new_marker,   i.premiere}) {
    std::string name;
    names >> name;
    if (!text.IsEmpty()) set.append(set.empty() ? "" : "|").append(name + '=').append(text.View());
  }
  return set;
}

class XmltvImport : public testing::Test {
 protected:
  XmltvImport() { platform_.SetTicksPerReading(7); }

  // Imports into a new store. Gives the log, whether the progress ran to the file's length, and the
  // status text; FILE stands for the path.
  std::string Import(std::string_view content) {
    class Progress final : public CProgressIndicator {
    } progress;
    MSTR status;
    file_.Write(content);
    const bool result = store_.emplace().ImportXML(file_.Name(), status, &progress);
    EXPECT_EQ(store_->GetStationCount() > 0 && progress.Position() == progress.Range(), result);
    EXPECT_TRUE(std::cmp_equal(content.size(), progress.Range()));
    MSTR report;
    for (const std::string& entry : log_.Take()) report += (entry + '\n').c_str();
    report += status;
    report.Replace(file_.Path().c_str(), "FILE");
    return std::string(ViewOf(report));
  }
  std::string ImportElements(const std::string& elements) {
    return Import("<tv><channel id='a'/><channel id='b'/>" + elements + "</tv>");
  }
  const CScheduleItem& Item(std::int32_t station, std::int32_t index) const {
    return *store_->GetStation(station)->GetProgram(index);
  }

  epg_test::FakePlatform platform_;
  epg_test::LogCapture log_;
  const epg_test::TempFile file_{""};
  std::optional<CXMLTVData> store_;
};

TEST_F(XmltvImport, ReadsProgrammeElements) {
  const char* const rows[][3] = {
      // elements, fields, name of an unknown element
      {"<title>Tea &amp; Cake</title><sub-title>Scones</sub-title><desc>D</desc><date>2006</date>"
       "<category>Food</category><video><aspect>16:9</aspect><colour>no</colour></video>"
       "<subtitles>teletext</subtitles><credits><director>Ann</director><director>Bob</director>"
       "<actor>Cyd</actor><actor>Dan</actor></credits><previously-shown/><premiere>P</premiere>"
       "<rating system='BBFC'><value>PG</value></rating><star-rating><value>3/5</value>"
       "</star-rating>",
       "Title=Tea & Cake|EpisodeTitle=Scones|Description=D|Genre=Food|Director=Bob|"
       "Actors=Cyd, Dan|PublishDate=2006|RatingBBFC=PG|StarRating=3/5|BlackAndWhite=Y|Repeat=Y|"
       "Aspect=16:9|Subtitles=teletext|Premiere=P",
       nullptr},
      {"<title>A</title><title> B\n</title>", "Title= B\n", nullptr},
      {"<Title>A</Title>", "", "Title"},
      {"<title/><!-- x -->", "", ""},
      {"<%n%s/>", "", "%n%s"},
      {"<desc>It&amp;#8217;s &lt;BR/&gt;so</desc>", "Description=It\x92s \nso", nullptr},
      {"<premiere/>", "Premiere=Premiere", nullptr},
      {"<premiere> </premiere><new>no</new>", "New=Y|Premiere= ", nullptr},
      {"<rating system='bbfc'><value>%s</value><icon/></rating>", "RatingOther=bbfc rating: %s",
       "rating->icon"},
      {"<star-rating><url/><value>1</value></star-rating>", "StarRating=1", "star rating->url"},
      {"<video><colour>No</colour><quality/></video>", "", "video->quality"},
      {"<video><colour>no</colour><colour>yes</colour></video>", "BlackAndWhite=Y", nullptr},
      {"<credits><actor/><actor>A</actor><actor/><guest/></credits>", "Actors=A, ",
       "credits->guest"},
  };
  for (const auto& [elements, fields, unknown] : rows) {
    const std::string report =
        ImportElements("<programme channel='a'>"s + elements + "</programme>");
    EXPECT_EQ(fields, Describe(Item(0, 0))) << elements;
    const std::string line =
        unknown != nullptr ? "log: Unknown XMLTV data element: "s + unknown + '\n' : "";
    EXPECT_EQ(line, report.substr(0, report.find("log: File")));
  }
}

TEST_F(XmltvImport, SharesProgrammesOfOneText) {
  std::string title = "T";
  const auto sum = [&] {
    return MSTR(title.c_str()).Id() + MSTR("S").Id() + MSTR("D").Id() + MSTR("Bob").Id();
  };
  while (sum() >= 0x1000000) title += '.';  // until the key has no more than six digits
  const std::string same = "<sub-title>S</sub-title><desc>D</desc><title>" + title + "</title>";
  ImportElements("<programme channel='a'>" + same +
                 "<category>Food</category><new>old</new></programme>" +
                 "<programme channel='b'><premiere/>" + same + "<category>News</category>" +
                 "<credits><director>Ann</director></credits><previously-shown/></programme>" +
                 "<programme channel='b' start='2007'>" + same +
                 "<credits><actor>Bob</actor></credits></programme>");
  const std::string texts = "Title=" + title + "|EpisodeTitle=S|Description=D|";
  EXPECT_EQ(texts + "Genre=Food|New=Y", Describe(Item(0, 0)));
  EXPECT_EQ(texts + "Genre=Food|Repeat=Y|Premiere=Premiere", Describe(Item(1, 0)));
  EXPECT_EQ(texts + "Actors=Bob", Describe(Item(1, 1)));
  MSTR key;
  key.Format("X%X", sum());
  EXPECT_EQ(ViewOf(key), Item(1, 1).program_key.View());
  EXPECT_EQ(Item(1, 1).program, store_->FindProgram(ViewOf(key)));
}

TEST_F(XmltvImport, DropsWhatItCannotFile) {
  ImportElements(
      "<programme channel='c' start='2007'><title>too early</title></programme>"
      "<channel id='c'><display-name>C</display-name><icon/><display-name>1</display-name>"
      "<display-name>third</display-name></channel>"
      "<channel id='c'><display-name>other</display-name></channel><channel/>"
      "<programme channel='C' start='2007'><title>letter case</title></programme>"
      "<programme channel='c' start='20070205143000 +0100' stop='200702051159'/>"
      "<programme channel='c' start='20070205133059'><title>same minute</title></programme>"
      "<programme start='2007' stop='2007'><title>no channel</title></programme>");
  EXPECT_EQ("Stations: 4   Programmes: 3   Schedule Items: 2", ViewOf(store_->GetStatistics()));
  EXPECT_EQ("C/1", store_->FindStation("c")->GetLabel());
  EXPECT_EQ(At("2007-02-05 13:30"), Item(2, 0).start);
  EXPECT_EQ(At("2007-02-06 11:59"), Item(2, 0).end);
  EXPECT_EQ("no channel", Item(3, 0).GetTitle());
  EXPECT_EQ(Item(3, 0).start, Item(3, 0).end);
}

TEST_F(XmltvImport, SaysWhatIsWrongWithAFile) {
  const char* const nothing =
      "log: File \"FILE\" loaded OK.  Stations: 0   Programmes: 0   Schedule Items: 0  (7 msec)\n"
      "File \"FILE\" loaded OK.  Stations: 0   Programmes: 0   Schedule Items: 0  (7 msec)";
  for (const char* const content : {"<TV><channel id='a'/></TV>", "<tv></tv>", "<tv><x/></tv>"}) {
    EXPECT_EQ(nothing, Import(content));
  }
  EXPECT_EQ("<tv> end tag is bad, found <TV>.", Import("<tv><channel><x/></channel></TV>"));
  EXPECT_EQ("<channel> end tag is bad, found <y>.", Import("<tv><channel><x/></y></tv>"));
  // A tag that is broken before its name shows the name before it.
  EXPECT_EQ("<channel> end tag is bad, found <tv>.", Import("<tv><channel/>< <x/></tv>"));
  EXPECT_EQ("Premature end of file.", Import("<tv><channel><x/></channel>"));
}

TEST_F(XmltvImport, ReparsesDescriptions) {
  const std::string rows[][3] = {
      // text, result, log
      {"It&#8217;s&#x2019;&#X20Ac;&#xFf;&#160;&#x81;", "It\x92s\x92\x80\xff\xa0\x81", ""},
      {"&# 65x;&#x4z;&#65601;&#x10041;", "A@AA", ""},  // 16 bits; what is not a digit is skipped
      {"&#12354;!", ".!", "log: ReParse() Error: Used default character for &#12354;."},
      {"&#X3A9;%s", ".%s", "log: ReParse() Error: Used default character for &#x3a9;."},
      {"a&#0;b&#;c&#x;d", "a\0b\0c\0d"s, ""},
      {"&#65;&#65 <br>", "A#65 \n", ""},
      {"1<br>2<BR />3<brow>4", "1\n2\n3\n4", ""},
      {"<%N%s>a", "a", "log: ReParse() - Warning: Unsupported tag in data: \"&lt;%n%s&gt;\"."},
      {"&<br>x<y&#65;&", "&\nx<yA&", ""},
  };
  for (const auto& [text, result, log] : rows) {
    EXPECT_EQ(result, ReParse(text)) << text;
    EXPECT_EQ(log.empty() ? std::vector<std::string>() : std::vector{log}, log_.Take());
  }
}

// An element with children as "name=text name=text".
std::unique_ptr<CSafeNode> Element(const char* children) {
  auto node = std::make_unique<CSafeNode>();
  std::istringstream words(children);
  for (std::string word; words >> word;) {
    auto child = std::make_unique<CSafeNode>();
    child->name = word.substr(0, word.find('=')).c_str();
    child->value = word.substr(word.find('=') + 1).c_str();
    node->AddNode(child.release());
  }
  return node;
}

TEST(RecordReaders, FollowTheDialect) {
  const std::tuple<ProviderKind, const char*, const char*> rows[] = {
      {ProviderKind::kTitanTV,
       "network=N call_sign=C station_id=S rf_channel=-7x program_id=P title=x title=2 "
       "episode_title=3 description=4 genre=5 show_type=6 director=7 language=10 start_time=30 "
       "end_time=95min hd=4 stereo=5 cc=6 tv_rating=7 fv_rating=8 other_rating=9 repeat=10 f1=x "
       "=x Title=x actors=x aspect=x",
       "S|N|C|-7|-1|-1; P; 1030 to 1095, P; Title=2|EpisodeTitle=3|Description=4|Genre=5|"
       "ShowType=6|Director=7|Language=10|StationKey=S|HD=4|Stereo=5|Subtitle=6|RatingTV=7|"
       "RatingFV=8|RatingOther=9|Repeat=10"},
      {ProviderKind::kOther,
       "f1=501 A2=-2 _3=3 f04=4 f5x=5 f6=6 f7=7 f8=8 f9=9 f10=10 f11=11 f12=12 f13=13 f14=14 "
       "f15=x f0=x =x f=x 2=x f-1=x title=x hd=x",
       "501|-2|3|4|5|6; 501; 501 to -2, 3; Title=-2|EpisodeTitle=3|Description=4|Genre=5|"
       "ShowType=6|Director=7|Actors=8|PublishDate=9|Language=10|RatingBBFC=11|StarRating=12|"
       "BlackAndWhite=13|HD=4|Stereo=5|Subtitle=6|RatingTV=7|RatingFV=8|RatingOther=9|Repeat=10|"
       "Aspect=11|Subtitles=12|New=13|Premiere=14"},
  };
  for (const auto& [dialect, content, expected] : rows) {
    CProviderData store;
    CStation s;
    ReadStationFields(*Element(content), dialect, s, store.Memory().texts);
    auto program = store.NewProgram();
    ReadProgramFields(*Element(content), dialect, program);
    auto item = store.NewItem();
    item->program = &*program;
    ReadScheduleItemFields(*Element(content), dialect, 1000, item);
    MSTR text;
    text.Format("%s|%s|%s|%i|%i|%i; %s; %i to %i, %s; ", s.key.Characters(), s.network.Characters(),
                s.call_sign.Characters(), s.rf_channel, s.second_channel, s.third_channel,
                program->key.Characters(), item->start, item->end, item->program_key.Characters());
    EXPECT_EQ(expected, std::string(ViewOf(text)) + Describe(*item));
  }
}

}  // namespace
