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

#include "browser/progress_indicator.h"
#include "tests/support/test_support.h"
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
  for (const MSTR& text :
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

std::string Describe(const CStation& s) {
  MSTR text;
  text.Format("%s|%s|%s|%i|%i|%i", s.key.Text(), s.network.Text(), s.call_sign.Text(), s.rf_channel,
              s.second_channel, s.third_channel);
  return std::string(text.View());
}

class XmltvImport : public testing::Test {
 protected:
  XmltvImport() { platform_.SetTicksPerReading(7); }

  // Imports into a new store. Gives the log, then position and range of the progress, the result
  // and the status text; FILE stands for the path.
  std::string Import(std::string_view content) {
    class Progress final : public CProgressIndicator {
    } progress;
    MSTR status;
    file_.Write(content);
    const bool result = store_.emplace().ImportXML(file_.Name(), status, &progress);
    std::string report;
    for (const std::string& entry : log_.Take()) report += entry + '\n';
    for (const std::int32_t bytes : {progress.Position(), progress.Range()}) {
      report += std::cmp_equal(bytes, content.size()) ? "all " : std::to_string(bytes) + ' ';
    }
    report.append(result ? "true " : "false ").append(status.View());
    for (std::size_t at; (at = report.find(file_.Path())) != std::string::npos;) {
      report.replace(at, file_.Path().size(), "FILE");
    }
    return report;
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

constexpr std::string_view kGoodFile = R"(<?xml version="1.0" encoding="UTF-8"?>
<tv generator-info-name="XMLTV"><note>neither channel nor programme</note><!-- either -->
  <channel id="m.example"><display-name>Metro</display-name><display-name>City One</display-name>
    <icon src="m.png"/><display-name>Third</display-name></channel>
  <programme start="20070205143000 +0100" stop="20070205150000 +0100" channel="m.example">
    <title>Tea &amp; Cake</title><sub-title>Scones</sub-title>
    <desc>Jam first&lt;br&gt;or cream&amp;#63;</desc><category>Food</category><date>2006</date>
    <video><aspect>16:9</aspect><colour>no</colour></video><subtitles>teletext</subtitles>
    <credits><director>Ann</director><director>Bob</director><actor>Cyd</actor><actor>Dan</actor>
    </credits><previously-shown/><new/><premiere>First</premiere>
    <rating system="BBFC"><value>PG</value></rating><star-rating><value>3/5</value></star-rating>
    <rating system="VCHIP"><value>TV-G</value></rating>
  </programme>
</tv>)";
constexpr const char* kNothing =
    "log: File \"FILE\" loaded OK.  Stations: 0   Programmes: 0   Schedule Items: 0  (7 msec)\n"
    "all all false "
    "File \"FILE\" loaded OK.  Stations: 0   Programmes: 0   Schedule Items: 0  (7 msec)";
constexpr const char* kCutOff = "0 all false Premature end of file.";

TEST_F(XmltvImport, FillsEveryField) {
  EXPECT_EQ(
      "log: File \"FILE\" loaded OK.  Stations: 1   Programmes: 1   Schedule Items: 1  (7 msec)\n"
      "all all true "
      "File \"FILE\" loaded OK.  Stations: 1   Programmes: 1   Schedule Items: 1  (7 msec)",
      Import(kGoodFile));
  EXPECT_EQ("m.example|Metro|City One|-1|-1|-1", Describe(*store_->GetStation(0)));
  const CScheduleItem& item = Item(0, 0);
  EXPECT_EQ(
      "Title=Tea & Cake|EpisodeTitle=Scones|Description=Jam first\nor cream?|Genre=Food|"
      "Director=Bob|Actors=Cyd, Dan|PublishDate=2006|RatingBBFC=PG|StarRating=3/5|BlackAndWhite=Y|"
      "RatingOther=VCHIP rating: TV-G|Repeat=Y|Aspect=16:9|Subtitles=teletext|New=Y|Premiere=First",
      Describe(item));
}

TEST_F(XmltvImport, KeysProgrammesByTheirTexts) {
  std::string title = "T";
  const auto sum = [&] {
    return MSTR(title).Id() + MSTR("S").Id() + MSTR("D").Id() + MSTR("A, B").Id();
  };
  while (sum() >= 0x1000000) title += '.';  // until the key has no more than six digits
  ImportElements("<programme channel='a'><title>" + title + "</title><sub-title>S</sub-title>" +
                 "<desc>D</desc><credits><actor>A</actor><actor>B</actor></credits></programme>");
  MSTR key;
  key.Format("X%X", sum());
  EXPECT_EQ(key, Item(0, 0).program_key);
  EXPECT_EQ(Item(0, 0).program, store_->FindProgram(key.View()));
}

TEST_F(XmltvImport, ReadsProgrammeElements) {
  const char* const rows[][3] = {
      // elements, fields, name of an unknown element
      {"<title>A</title><title> B\n</title>", "Title= B\n", nullptr},
      {"<Title>A</Title>", "", "Title"},
      {"<title/><!-- x -->", "", ""},
      {"<%n%s/>", "", "%n%s"},
      {"<desc>It&amp;#8217;s &lt;BR/&gt;so</desc>", "Description=It\x92s \nso", nullptr},
      {"<premiere/>", "Premiere=Premiere", nullptr},
      {"<premiere> </premiere><new>no</new>", "New=Y|Premiere= ", nullptr},
      {"<rating system='bbfc'><value>%s</value></rating>", "RatingOther=bbfc rating: %s", nullptr},
      {"<rating><value>7</value><icon/></rating>", "RatingOther= rating: 7", "rating->icon"},
      {"<star-rating><url/><value>1</value></star-rating>", "StarRating=1", "star rating->url"},
      {"<video><colour>No</colour><quality/></video>", "", "video->quality"},
      {"<video><colour>no</colour><colour>yes</colour></video>", "BlackAndWhite=Y", nullptr},
      {"<credits><actor/><actor>A</actor><actor/><guest/></credits>", "Actors=A, ",
       "credits->guest"},
  };
  for (const auto& [elements, fields, unknown] : rows) {
    SCOPED_TRACE(elements);
    const std::string report =
        ImportElements("<programme channel='a'>"s + elements + "</programme>");
    EXPECT_EQ(fields, Describe(Item(0, 0)));
    const std::string line =
        unknown != nullptr ? "log: Unknown XMLTV data element: "s + unknown + '\n' : "";
    EXPECT_EQ(line, report.substr(0, report.find("log: File")));
  }
}

TEST_F(XmltvImport, ReadsTimes) {
  const std::tuple<const char*, const char*, std::int32_t, std::int32_t> rows[] = {
      {"20070205143000 +0100", "200702051159", At("2007-02-05 13:30"), At("2007-02-06 11:59")},
      {"20070205143000", "20070205143000", At("2007-02-05 14:30"), At("2007-02-05 14:30")},
      {"20070205143000", "20070203000000", At("2007-02-05 14:30"), At("2007-02-04 00:00")},
      {"20070205143000", "", At("2007-02-05 14:30"), 1439},
  };
  for (const auto& [start, stop, expected_start, expected_end] : rows) {
    SCOPED_TRACE(start + " to "s + stop);
    ImportElements("<programme channel='a' start='"s + start + "' stop='" + stop + "'/>");
    EXPECT_EQ(expected_start, Item(0, 0).start);
    EXPECT_EQ(expected_end, Item(0, 0).end);
  }
}

TEST_F(XmltvImport, SharesProgrammesOfOneText) {
  const std::string same = "<title>T</title><sub-title>S</sub-title><desc>D</desc>";
  ImportElements("<programme channel='a'>" + same + "<category>Food</category><new/></programme>" +
                 "<programme channel='b'>" + same + "<category>News</category><date>2001</date>" +
                 "<credits><director>Ann</director></credits><previously-shown/>" +
                 "<rating system='BBFC'><value>18</value></rating></programme>" +
                 "<programme channel='b' start='2007'>" + same +
                 "<credits><actor>Bob</actor></credits></programme>");
  EXPECT_EQ("Title=T|EpisodeTitle=S|Description=D|Genre=Food|New=Y", Describe(Item(0, 0)));
  EXPECT_EQ("Title=T|EpisodeTitle=S|Description=D|Genre=Food|Repeat=Y", Describe(Item(1, 0)));
  EXPECT_EQ("Title=T|EpisodeTitle=S|Description=D|Actors=Bob", Describe(Item(1, 1)));
  EXPECT_EQ("Stations: 2   Programmes: 2   Schedule Items: 3", store_->GetStatistics());
}

TEST_F(XmltvImport, DropsWhatItCannotFile) {
  ImportElements(
      "<programme channel='c' start='2007'><title>too early</title></programme>"
      "<channel id='c'><display-name>C</display-name></channel>"
      "<channel id='c'><display-name>other</display-name></channel>"
      "<channel><display-name>no id</display-name></channel>"
      "<programme channel='C' start='2007'><title>letter case</title></programme>"
      "<programme channel='c' start='20070101000000'><title>kept</title></programme>"
      "<programme channel='c' start='20070101000059'><title>same minute</title></programme>"
      "<programme start='2007'><title>no channel</title></programme>");
  EXPECT_EQ("Stations: 4   Programmes: 3   Schedule Items: 2", store_->GetStatistics());
  EXPECT_EQ("c|C||-1|-1|-1", Describe(*store_->GetStation(2)));
  EXPECT_EQ("kept", Item(2, 0).GetTitle());
  EXPECT_EQ("|no id||-1|-1|-1", Describe(*store_->GetStation(3)));
  EXPECT_EQ("no channel", Item(3, 0).GetTitle());
}

TEST_F(XmltvImport, SaysWhatIsWrongWithAFile) {
  const char* const rows[][2] = {
      {"", kNothing},
      {"<TV><channel id='a'/></TV>", kNothing},
      {"<tv/>", kNothing},
      {"<tv></tv>", kNothing},
      {"<tv><note/></tv>", kNothing},
      {"<tv><channel id='a'><icon/></channel></TV>",
       "0 all false <tv> end tag is bad, found <TV>."},
      {"<tv><channel><icon/></programme></tv>",
       "0 all false <channel> end tag is bad, found <programme>."},
      {"<tv><programme><credits><actor/></video></programme></tv>",
       "0 all false <credits> end tag is bad, found <video>."},
      // An element with nothing but text is not told apart from one that never ends.
      {"<tv><channel id='a'><display-name>A</icon></channel></tv>", kCutOff},
  };
  for (const auto& [content, report] : rows) EXPECT_EQ(report, Import(content)) << content;
  MSTR status;
  EXPECT_FALSE(store_->ImportXML("/nowhere/%n%s.xml", status, nullptr));
  EXPECT_EQ("Failed to open file \"/nowhere/%n%s.xml\".", status);
}

TEST_F(XmltvImport, MeetsTheEndOfAFileThatIsCutAnywhere) {
  const std::size_t inside = kGoodFile.find("<note>");
  for (std::size_t size = 0; size < kGoodFile.size(); ++size) {
    ASSERT_EQ(size < inside ? kNothing : kCutOff, Import(kGoodFile.substr(0, size))) << size;
  }
}

TEST_F(XmltvImport, ReparsesDescriptions) {
  const std::string rows[][3] = {
      // text, result, log
      {"R&D; 3 > 2 & 1 < 2", "R&D; 3 > 2 & 1 < 2", ""},
      {"It&#8217;s&#x2019;&#X20Ac;&#xe9;&#x81;", "It\x92s\x92\x80\xe9\x81", ""},
      {"&# 65x;&#x4z;&#65601;&#x10041;", "A@AA", ""},  // 16 bits; what is no digit is passed over
      {"&#12354;!", ".!", "log: ReParse() Error: Used default character for &#12354;."},
      {"&#X3A9;%s", ".%s", "log: ReParse() Error: Used default character for &#x3a9;."},
      {"a&#0;b&#;c&#x;d", "a\0b\0c\0d"s, ""},
      {"&#65;&#65 <br>", "A#65 \n", ""},
      {"&#65&#66;", "A", ""},
      {"&#60;br>", "<br>", ""},
      {"1<br>2<BR />3<brow>4", "1\n2\n3\n4", ""},
      {"<%N%s>a", "a", "log: ReParse() - Warning: Unsupported tag in data: \"&lt;%n%s&gt;\"."},
      {"< br>", "", "log: ReParse() - Warning: Unsupported tag in data: \"&lt; br&gt;\"."},
      {"<>", "", "log: ReParse() - Warning: Unsupported tag in data: \"&lt;&gt;\"."},
      {"<&#65;>", "", "log: ReParse() - Warning: Unsupported tag in data: \"&lt;&#65;&gt;\"."},
      {"&<br>x<y&#65;&", "&\nx<yA&", ""},
  };
  for (const auto& [text, result, log] : rows) {
    SCOPED_TRACE(text);
    EXPECT_EQ(result, ReParse(MSTR(std::string_view(text))).View());
    EXPECT_EQ(log.empty() ? std::vector<std::string>() : std::vector{log}, log_.Take());
  }
}

// An element with children as "name=text name=text".
std::unique_ptr<CSafeNode> Element(const char* children) {
  auto node = std::make_unique<CSafeNode>();
  std::istringstream words(children);
  for (std::string word; words >> word;) {
    node->AddNode(new CSafeNode);
    node->last_child->name = std::string_view(word).substr(0, word.find('='));
    node->last_child->value = std::string_view(word).substr(word.find('=') + 1);
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
      {ProviderKind::kTitanTV, "end_time=2147483647",
       "|||-1|-1|-1; ; -1 to -2147482649, ; "},  // sums wrap
      {ProviderKind::kOther,
       "f1=501 A2=-2 _3=3 f04=4 f5x=5 f6=6 f7=7 f8=8 f9=9 f10=10 f11=11 f12=12 f13=13 f14=14 "
       "f15=x f0=x =x f=x 2=x f-1=x title=x hd=x",
       "501|-2|3|4|5|6; 501; 501 to -2, 3; Title=-2|EpisodeTitle=3|Description=4|Genre=5|"
       "ShowType=6|Director=7|Actors=8|PublishDate=9|Language=10|RatingBBFC=11|StarRating=12|"
       "BlackAndWhite=13|HD=4|Stereo=5|Subtitle=6|RatingTV=7|RatingFV=8|RatingOther=9|Repeat=10|"
       "Aspect=11|Subtitles=12|New=13|Premiere=14"},
      {ProviderKind::kRadioTimes, "f2=1 f2=2", "|2||-1|-1|-1; ; -1 to 2, ; Title=2"},
  };
  for (const auto& [dialect, content, expected] : rows) {
    CStation station;
    station.ReadStationFields(*Element(content), dialect);
    CProgram program;
    program.ReadProgramFields(*Element(content), dialect);
    CScheduleItem item;
    item.program = &program;
    item.ReadScheduleItemFields(*Element(content), dialect, 1000);
    MSTR text;
    text.Format("%s; %s; %i to %i, %s; %s", Describe(station).c_str(), program.key.Text(),
                item.start, item.end, item.program_key.Text(), Describe(item).c_str());
    EXPECT_EQ(expected, text.View());
  }
}

}  // namespace
