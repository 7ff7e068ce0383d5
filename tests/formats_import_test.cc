// The import driver, and the cache format, TitanTV documents and Radio Times files.

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "host/engine.h"
#include "import/dm_data.h"
#include "import/import_driver.h"
#include "import/progress_indicator.h"
#include "import/rt_data.h"
#include "tests/support/test_support.h"
#include "text/counted_text.h"

namespace {

using epg_test::At;
using ORVANE::MSTR;
using std::string_literals::operator""s;

class Progress final : public CProgressIndicator {};

class FormatsImport : public testing::Test {
 protected:
  FormatsImport() { platform_.SetTicksPerReading(1056); }

  // Result and status text of an import into the store, FILE standing for the path.
  std::string ImportMore(std::string_view content,
                         decltype(&CProviderData::LoadCacheXML) importer) {
    file_.Write(content);
    MSTR status;
    const bool result = ((*store_).*importer)(file_.Name(), status, &progress_);
    status.Replace(file_.Path().c_str(), "FILE");
    return (result ? "true " : "false ") + std::string(ViewOf(status));
  }
  template <typename Store>
  std::string Import(std::string_view content) {
    store_ = std::make_shared<Store>();
    return ImportMore(content, &CProviderData::ImportXML);
  }
  // The numbers of a cache file's fields are the same whatever the store's own format is.
  std::string Cache(const std::string& content, const char* root = "ProviderData",
                    const char* name_space = "HTTP://www.norvex.example") {
    MSTR file;
    file.Format("<?xml?><%s xmlns='%s'>%s</%s>", root, name_space, content.c_str(), root);
    store_ = std::make_shared<CDMData>();
    return ImportMore(ViewOf(file), &CProviderData::LoadCacheXML);
  }

  // "key|network|call sign|channels: start-end title, ..." of every station, a line each.
  std::string Stations(std::int32_t times_from = 0) const {
    MSTR text;
    for (std::int32_t i = 0; i < store_->GetStationCount(); ++i) {
      const CStation& s = *store_->GetStation(i);
      text.Format("%s%s|%s|%s|%i|%i|%i:", text.text, s.key.Characters(), s.network.Characters(),
                  s.call_sign.Characters(), s.rf_channel, s.second_channel, s.third_channel);
      for (std::int32_t k = 0; k < s.GetProgramCount(); ++k) {
        const CScheduleItem& item = *s.GetProgram(k);
        text.Format("%s %i-%i %s", text.text, item.start - times_from, item.end - times_from,
                    item.program != nullptr ? item.program->title.Characters() : "none");
      }
      text += '\n';
    }
    return std::string(ViewOf(text));
  }

  // Kind of the schedule that the driver makes, status text and log, one to a line.
  std::string Drive(const std::string& path) {
    MSTR status = "left from the last load";
    Progress progress;
    const auto store = ImportEPGFile(path.c_str(), status, &progress);
    MSTR report = store != nullptr ? std::to_string(static_cast<int>(store->Kind())).c_str() : "-";
    (report += progress.Range() > 0 ? ", with progress\n" : "\n") += status;
    for (const std::string& entry : log_.Take()) report += ('\n' + entry).c_str();
    report.Replace(path.c_str(), "FILE");
    return std::string(ViewOf(report));
  }

  epg_test::FakePlatform platform_;
  epg_test::LogCapture log_;
  const epg_test::TempFile file_{""};
  Progress progress_;
  std::shared_ptr<CProviderData> store_;
};

constexpr const char* kPrograms =
    "<ProgramMap><Prog><f1>P1</f1><_2>Tea</_2><f14>x</f14></Prog><Prog><f1>P2</f1><f2>Jam</f2>"
    "</Prog><Prog><f1>P1</f1><f2>late</f2></Prog><Other><f1>P3</f1></Other><Prog/></ProgramMap>";
constexpr const char* kStations =
    "<StationList><Station/><Other><f1/></Other><Station><Text>x</Text><StationData><f1>S</f1>"
    "<f2>Net</f2><f3>Call</f3><f4>7</f4><f5> 8x</f5><f6/><f7>9</f7></StationData><Schedule><Item>"
    "<f1>900</f1><f2>960</f2><f3>P2</f3></Item><Item><f1>600</f1><f2>660</f2><f3>P1</f3></Item>"
    "<Item><f1>600</f1><f2>700</f2><f3>P2</f3></Item><Gap><f1>1</f1></Gap></Schedule></Station>"
    "<Station><StationData><f1>S</f1></StationData></Station><Station><Schedule><Item><f1>5</f1>"
    "</Item></Schedule></Station></StationList>";

TEST_F(FormatsImport, CacheFilesFillAStore) {
  const std::string loaded =
      "File \"FILE\" loaded OK.  Stations: 2   Programmes: 3   Schedule Items: 3  (1056 msec)";
  EXPECT_EQ(Cache(kPrograms + "<Skip><a>b</a></Skip>"s + kStations), "true " + loaded);
  EXPECT_EQ(Stations(), "S|Net|Call|7|8|0: 600-660 Tea 900-960 Jam\n|||-1|-1|-1: 5--1 \n");
  EXPECT_EQ(log_.Take().at(0), "log: File \"" + file_.Path() + loaded.substr(10));
  EXPECT_EQ(progress_.Position(), progress_.Range());
  EXPECT_GT(progress_.Range(), 0);
  // An item finds only programmes that stand before it.
  Cache(kStations + std::string(kPrograms));
  EXPECT_EQ(Stations(), "S|Net|Call|7|8|0: 600-660 none 900-960 none\n|||-1|-1|-1: 5--1 none\n");
}

TEST_F(FormatsImport, CacheFilesFailWithTheirReason) {
  const std::string nothing =
      "false File \"FILE\" loaded OK.  Stations: 0   Programmes: 0   Schedule Items: 0  (1056 "
      "msec)";
  const std::pair<std::string, std::string> rows[] = {
      {"", nothing},
      {"<ProgramMap><Prog><a/></ProgramMap>", "false <Prog> end tag is bad, found <ProgramMap>."},
      {"<StationList><Station><Data><f1/></Data></Station></StationList>",
       "false Unknown element, <Data>, in <Station> data."},
      {"<StationList><Station><Schedule><Item><f1/></Item></Station></StationList>",
       "false <Schedule> end tag is bad, found <Station>."},
      {"<StationList><Station><Schedule><a/></Schedule></StationList>",
       "false <Station> end tag is bad, found <StationList>."},
      // A tag that is broken before its name shows the name before it on its level.
      {"<StationList><Station><x/>< <Text>", "false Unknown element, <x>, in <Station> data."},
  };
  for (const auto& [content, report] : rows) EXPECT_EQ(Cache(content), report) << content;
  EXPECT_EQ(Cache(kStations, "providerdata"), nothing);
  EXPECT_EQ(Cache(kStations, "ProviderData", "a%s"), "false Unexpected xmlns value: \"a%s\".");
}

constexpr std::string_view kTitan = R"(<!DOCTYPE x><x><ProgramDataCollection>
<ErrorCode>0</ErrorCode><ErrorDescription>It %s broke</ErrorDescription><ProgramData>
<ProviderID>Prov</ProviderID><BaseTime>2009-03-01T18:00:00</BaseTime>
<Stations><s><station_id>1</station_id><call_sign>C&#65;</call_sign><rf_channel>9</rf_channel></s>
<t><station_id>1</station_id></t></Stations>
<Programs><p><program_id>P</program_id><title>A longer title</title><title>A &amp; B</title></p>
<p><program_id>P</program_id></p><p/><p/></Programs>
<Schedules><i><station_id>1</station_id><program_id>P</program_id><start_time>90</start_time>
<end_time>120</end_time></i><i><station_id>1</station_id><program_id>Q</program_id>
<start_time>-60</start_time><end_time>-90</end_time></i><i><station_id>2</station_id></i>
<i><station_id>1</station_id><start_time>90</start_time></i></Schedules>
</ProgramData></ProgramDataCollection></x>)";

std::string TitanWith(const char* part, const char* replacement) {
  MSTR document = kTitan.data();
  document.Replace(part, replacement);
  return std::string(ViewOf(document));
}

TEST_F(FormatsImport, TitanDocumentsFillAStoreOfOneProvider) {
  EXPECT_EQ(Import<CDMData>(kTitan),
            "true Provider:       \tProv\nBaseTime:\t2009-03-01T18:00:00\n"
            "Stations: 1   Programmes: 2   Schedule Items: 2\n"
            "Duplicates:\n\tStations:\t1\n\tPrograms:\t2\n\tSchedule Items:\t2\n"
            "(Times: Load = 1.056 secs, Parse = 1.056 secs)");
  EXPECT_EQ(Stations(At("2009-03-01 18:00")), "1||CA|9|-1|-1: -60--90 none 90-120 A & B\n");
  EXPECT_TRUE(log_.Take().empty());
  EXPECT_EQ(ImportMore(TitanWith("Prov<", "prov<"), &CProviderData::ImportXML),
            "false Cannot merge data from provider \"prov\", current provider is \"Prov\".");
  const std::string again = ImportMore(kTitan, &CProviderData::ImportXML);
  EXPECT_NE(again.find("\tStations:\t2\n\tPrograms:\t4\n\tSchedule Items:\t4\n"), again.npos);
  ImportMore(TitanWith("T18:", "T21:"), &CProviderData::ImportXML);
  EXPECT_EQ(Stations(At("2009-03-01 18:00")),
            "1||CA|9|-1|-1: -60--90 none 90-120 A & B 120-90 none 270-300 A & B\n");
  const std::int32_t late = At("2009-03-01 22:40");
  EXPECT_EQ(store_->GetStation(0)->FindFirstIndex(late, late + 1), 3);
}

TEST_F(FormatsImport, TitanDocumentsFailWithTheirReason) {
  for (const std::string name : {"ProgramDataCollection", "ErrorCode", "ProgramData", "BaseTime",
                                 "Stations", "Programs", "Schedules"}) {
    EXPECT_EQ(Import<CDMData>(TitanWith((name + '>').c_str(), "x>")),
              "false Container '" + name + "' not found.");
  }
  const char* const rows[][3] = {
      {"ProviderID>", "x>", "false Container 'Provider' not found."},
      {">0</ErrorCode>", ">7</ErrorCode>", "false It %s broke"},
      {">0</ErrorCode>", ">-1</ErrorCode>", "false It %s broke"},
      {">0</ErrorCode><ErrorDescription>It %s broke</ErrorDescription>", "> 12x</ErrorCode>",
       "false XML data contained ErrorCode = 12, error description not found."},
      {"</x>", "", "false XML load failed, document length is zero."},
  };
  for (const auto& [part, replacement, report] : rows) {
    EXPECT_EQ(Import<CDMData>(TitanWith(part, replacement)), report) << part;
  }
}

TEST_F(FormatsImport, RadioTimesFilesMakeStationsAsTheyAppear) {
  EXPECT_EQ(Import<CRTData>(R"(<Programmes><Programme><ChannelName>b</ChannelName><Title>T</Title>
<Episode>E</Episode><Description>D</Description><Date>05/02/2007</Date>
<StartTime>23:30</StartTime><EndTime>00:15</EndTime><Film/><Genre>G</Genre></Programme>
<Programme><ChannelName>B</ChannelName><Title>T</Title><Episode>E</Episode>
<Description>D</Description><Genre>H</Genre><Other>x</Other><Date>05/02/2007 14:30</Date><!-- x -->
<EndTime>15:00</EndTime></Programme>
<Programme><ChannelName>b</ChannelName><Title>late</Title><Date>05/02/2007</Date>
<StartTime>23:30</StartTime><EndTime>23:45</EndTime></Programme>
<Programme><Title>A</Title><Title>nowhere</Title><Date>05/02/2007</Date></Programme>
</Programmes>)"),
            "true File \"FILE\" loaded OK.");
  EXPECT_EQ(Stations(At("2007-02-05 00:00")),
            "b|b||-1|-1|-1: 1410-1455 T\nB|B||-1|-1|-1: 870-900 T\n|||-1|-1|-1: 0-0 nowhere\n");
  const CScheduleItem& item = *store_->GetStation(1)->GetProgram(0);
  EXPECT_EQ(item.program->genre, "G");  // the first of the same texts stays
  EXPECT_EQ(item.program->show_type, "Feature Film");
  const auto sum = static_cast<std::int32_t>(MSTR("D").Id() + MSTR("E").Id());
  EXPECT_EQ(item.program_key, "RT-T-" + std::to_string(sum));
}

TEST_F(FormatsImport, RadioTimesFilesFailWithTheirReason) {
  const std::string good = "<Programme><Title>T</Title></Programme>";
  const std::pair<std::string, std::string> rows[] = {
      {"<programmes>" + good + "</programmes>", "false File \"FILE\" loaded OK."},
      {"<Programmes></Programmes>", "false File \"FILE\" loaded OK."},
      {"<Programmes>" + good + "<!-- x --></Programmes>",
       "false <Programme> node not found in <Programmes> collection (found <>)."},
      {"<Programmes><Programme><Title><b/></Title></Programme>",
       "false Unexpected sub-element, Title, in Programme Field."},
      {"<Programmes><Programme/>" + good,
       "false Unexpected sub-element, Programme, in Programme Field."},
      {"<Programmes><Programme><Title>T</Title></Programmes>",
       "false <Programme> end tag is bad, found <Programmes>."},
      {"<Programmes>" + good, "false Programmes end tag bad, found Programme."},
      {"<Programmes> <", "false Programmes end tag bad, found ."},
  };
  for (const auto& [content, report] : rows) EXPECT_EQ(Import<CRTData>(content), report) << content;
}

using ImportDriver = FormatsImport;

TEST_F(ImportDriver, KnowsAFormatByTheRootsAttributes) {
  const std::string maker = "xmlns='http://www.Norvex.example' ";
  const std::string titan = "xmlns='http://www.TitanTV.com/services/dataservice' ";
  const std::string xmltv = "generator-info-name='xMlTv' ";
  const std::pair<std::string, std::string> rows[] = {
      // root; format and the schedule's kind
      {"ProviderData " + maker, "Norvex 0, with progress"},
      {"ProviderData " + maker + "EPGSource='1'", "Norvex 1, with progress"},
      {"ProviderData " + maker + "EPGSource='2x'", "Norvex 2, with progress"},
      {"ProviderData " + maker + "EPGSource='3' " + xmltv, "Norvex 3, with progress"},
      {"ProviderData " + maker + "EPGSource='9'", "Norvex 0, with progress"},
      {"Programmes " + maker, "Norvex -, with progress"},
      {"x " + titan + xmltv, "Titan TV -"},
      {"tv xmlns='http://www.norvex.example/'", "Radio Times -"},
      {"tv x='1' " + xmltv, "XMLTV 3, with progress"},
      {"x/><tv " + xmltv, "XMLTV -, with progress"},  // the first that has children is the root
      {"x><tv " + xmltv, "Radio Times -"},
      {"tv generator-info-name='XMLT'", "Radio Times -"},
      {"tv Generator-Info-Name='XMLTV'", "Radio Times -"},
  };
  for (const auto& [root, expected] : rows) {
    file_.Write("<?xml?><!-- x --><" + root + "><channel/>" + kStations + "</" +
                root.substr(0, root.find(' ')) + ">");
    const std::string report = Drive(file_.Path());
    const std::size_t begin = report.find("Importing ") + 10;
    const std::string format = report.substr(begin, report.find(" format") - begin);
    EXPECT_EQ(format + ' ' + report.substr(0, report.find('\n')), expected) << root;
  }
}

TEST_F(ImportDriver, TellsTheReasonOfAFailureInTheLogAlone) {
  const std::string none = "-\nCan't identify content, don't know how to decode!\n";
  const std::string no_listings =
      none +
      "log: EPG Loader: Importing Radio Times format XML, FILE.\n"
      "log: EPG Loader: Import failed, [File &quot;FILE&quot; loaded OK.]";
  const std::string radio_times = "<Programmes><Programme><Title/></Programme></Programmes>";
  const std::pair<std::string, std::string> rows[] = {
      {radio_times,
       "2\nFile \"FILE\" loaded OK.\nlog: EPG Loader: Importing Radio Times format XML, FILE."},
      {"<Programmes><%s&amp;'\"/></Programmes>",
       none + "log: EPG Loader: Importing Radio Times format XML, FILE.\n"
              "log: EPG Loader: Import failed, [&lt;Programme&gt; node not found in "
              "&lt;Programmes&gt; collection (found &lt;%s&amp;&apos;&quot;&gt;).]"},
      {"<tv generator-info-name='XMLTV'><x/></TV>",
       "-, with progress\nCan't identify content, don't know how to decode!\n"
       "log: EPG Loader: Importing XMLTV format XML, FILE.\n"
       "log: EPG Loader: Import failed. [&lt;tv&gt; end tag is bad, found &lt;TV&gt;.]"},
      {"", no_listings},
      {"\0\xff<\0\x80>\x01 \"'&;\n"s, no_listings},
  };
  for (const auto& [content, report] : rows) {
    file_.Write(content);
    EXPECT_EQ(Drive(file_.Path()), report) << content;
  }
  const epg_test::TempFile odd(radio_times, "%n%s%5\xff\x80 &'.xml");
  EXPECT_EQ(Drive(odd.Path()), rows[0].second);
  for (const auto& path : {odd.Stem(), odd.Path().substr(0, odd.Path().rfind('/'))}) {
    EXPECT_EQ(Drive(path), "-\nFailed to open file \"FILE\".\nlog: Failed to open file \"FILE\".");
  }
}

TEST_F(ImportDriver, FailsWhenTheFileIsGoneAtTheSecondOpen) {
  for (const std::string root :
       {"x", "x generator-info-name='XMLTV'", "x xmlns='http://www.norvex.example'"}) {
    file_.Write("<" + root + "></x>");
    std::string reason;
    ORVANE::SetLogSink([&](auto, std::string_view text) {
      std::filesystem::remove(file_.Path());
      reason = text.substr(text.find('[') + 1);
    });
    MSTR status;
    EXPECT_EQ(nullptr, ImportEPGFile(file_.Name(), status, nullptr)) << root;
    EXPECT_EQ("Failed to open file &quot;" + file_.Path() + "&quot;.]", reason) << root;
    EXPECT_EQ("Can't identify content, don't know how to decode!", ViewOf(status));
  }
}

}  // namespace
