// The cache format, TitanTV documents and Radio Times files.

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "browser/progress_indicator.h"
#include "import/dm_data.h"
#include "import/import_driver.h"
#include "import/rt_data.h"
#include "tests/support/test_support.h"

namespace {

using epg_test::At;
using ORVANE::MSTR;

// "key|network|call sign|channels: start-end title, ..." of every station, a line each.
std::string Dump(const CProviderData& store) {
  std::string dump;
  for (std::int32_t i = 0; i < store.GetStationCount(); ++i) {
    const CStation& s = *store.GetStation(i);
    MSTR line;
    line.Format("%s|%s|%s|%i|%i|%i:", s.key.Text(), s.network.Text(), s.call_sign.Text(),
                s.rf_channel, s.second_channel, s.third_channel);
    dump += line.View();
    for (std::int32_t k = 0; k < s.GetProgramCount(); ++k) {
      const CScheduleItem& item = *s.GetProgram(k);
      line.Format(" %i-%i %s", item.start, item.end,
                  item.program != nullptr ? item.program->title.Text() : "none");
      dump += line.View();
    }
    dump += '\n';
  }
  return dump;
}

class PlainData final : public CProviderData {};

class FormatsImport : public testing::Test {
 protected:
  FormatsImport() { platform_.SetTicksPerReading(1056); }

  // Result and status text, FILE standing for the path; the store is filled.
  template <typename Store>
  std::string Import(std::string_view content,
                     bool (CProviderData::*importer)(const MSTR&, MSTR&, CProgressIndicator*)) {
    if (!keep_store_ || store_ == nullptr) store_ = std::make_shared<Store>();
    file_.Write(content);
    MSTR status;
    const bool result = ((*store_).*importer)(file_.Name(), status, &progress_);
    status.Replace(file_.Path(), "FILE");
    return (result ? "true " : "false ") + std::string(status.View());
  }
  std::string Cache(std::string_view root_content, const std::string& root = "ProviderData") {
    return Import<PlainData>("<?xml?><" + root + " xmlns=\"HTTP://www.norvex.example\">" +
                                 std::string(root_content) + "</" + root + ">",
                             &CProviderData::LoadCacheXML);
  }
  std::string Titan(std::string_view content) {
    return Import<CDMData>(content, &CProviderData::ImportXML);
  }
  std::string RadioTimes(std::string_view content) {
    return Import<CRTData>(content, &CProviderData::ImportXML);
  }

  struct Progress final : CProgressIndicator {
    void SetRange(std::int32_t range) override {
      ++announced;
      CProgressIndicator::SetRange(range);
    }
    int announced = 0;
  };

  epg_test::FakePlatform platform_;
  epg_test::LogCapture log_;
  const epg_test::TempFile file_{""};
  Progress progress_;
  bool keep_store_ = false;
  std::shared_ptr<CProviderData> store_;
};

constexpr std::string_view kPrograms =
    "<ProgramMap><Prog><f1>P1</f1><_2>Tea</_2><f14>x</f14></Prog><Prog><f1>P2</f1><f2>Jam</f2>"
    "</Prog><Prog><f1>P1</f1><f2>late</f2></Prog><Other><f1>P3</f1></Other><Prog/></ProgramMap>";
constexpr std::string_view kStations =
    "<StationList><Station/><Other><f1/></Other><Station><Text>x</Text><StationData><f1>S</f1>"
    "<f2>Net</f2><f3>Call</f3><f4>7</f4><f5> 8x</f5><f6/><f7>9</f7></StationData><Schedule><Item>"
    "<f1>900</f1><f2>960</f2><f3>P2</f3></Item><Item><f1>600</f1><f2>660</f2><f3>P1</f3></Item>"
    "<Item><f1>600</f1><f2>700</f2><f3>P2</f3></Item><Gap><f1>1</f1></Gap></Schedule></Station>"
    "<Station><StationData><f1>S</f1></StationData></Station><Station><Schedule><Item><f1>5</f1>"
    "<f3>P9</f3></Item></Schedule></Station></StationList>";

TEST_F(FormatsImport, CacheFilesFillAStore) {
  const std::string both =
      std::string(kPrograms) + "<Skip><a>b</a></Skip>" + std::string(kStations);
  constexpr const char* kLoaded =
      "File \"FILE\" loaded OK.  Stations: 2   Programmes: 3   Schedule Items: 3  (1056 msec)";
  EXPECT_EQ(Cache(both), std::string("true ") + kLoaded);
  EXPECT_EQ(Dump(*store_), "S|Net|Call|7|8|0: 600-660 Tea 900-960 Jam\n|||-1|-1|-1: 5--1 none\n");
  EXPECT_EQ(progress_.announced, 1);
  EXPECT_EQ(progress_.Position(), progress_.Range());
  EXPECT_GT(progress_.Range(), 0);
  std::string logged = log_.Take().at(0);
  EXPECT_EQ(logged.substr(logged.find("loaded")), std::string(kLoaded).substr(12));
  // An item finds only programmes that stand before it.
  Cache(std::string(kStations) + std::string(kPrograms));
  EXPECT_EQ(Dump(*store_), "S|Net|Call|7|8|0: 600-660 none 900-960 none\n|||-1|-1|-1: 5--1 none\n");
}

TEST_F(FormatsImport, CacheFilesFailWithTheirReason) {
  const std::string nothing =
      "false File \"FILE\" loaded OK.  Stations: 0   Programmes: 0   Schedule Items: 0  (1056 "
      "msec)";
  const std::pair<std::string, std::string> rows[] = {
      {"", nothing},
      {"<ProgramMap/><StationList/>", nothing},
      {"<ProgramMap><Prog><a/></ProgramMap>", "false <Prog> end tag is bad, found <ProgramMap>."},
      {"<ProgramMap><Prog><f1>x</f2></Prog></ProgramMap>", "false Premature end of file."},
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
  const auto load = &CProviderData::LoadCacheXML;
  EXPECT_EQ(Import<PlainData>("<ProviderData xmlns='a%s'><a/></ProviderData>", load),
            "false Unexpected xmlns value: \"a%s\".");
  EXPECT_EQ(Import<PlainData>("", load), "false Unexpected xmlns value: \"\".");
  EXPECT_EQ(progress_.Range(), 0);
  EXPECT_NE(progress_.Position(), 0);  // a failed load is never complete
}

// A TitanTV document; `cut` names a container to leave out.
std::string TitanDocument(const std::string& cut = "", const std::string& error = "0",
                          const std::string& provider = "Prov") {
  const auto part = [&](const std::string& name, const std::string& content) {
    return name == cut ? "" : "<" + name + ">" + content + "</" + name + ">";
  };
  return "<!DOCTYPE x><x>" +
         part("ProgramDataCollection",
              part("ErrorCode", error) + part("ErrorDescription", "It %s broke") +
                  part("ProgramData",
                       part("ProviderID", provider) + part("BaseTime", "2009-03-01T18:00:00") +
                           part("Stations",
                                "<s><station_id>1</station_id><call_sign>C&#65;</call_sign>"
                                "<rf_channel>9</rf_channel></s><t><station_id>1</station_id></t>") +
                           part("Programs",
                                "<p><program_id>P</program_id><title>A &amp; B</title></p>"
                                "<p><program_id>P</program_id></p><p/><p/>") +
                           part("Schedules",
                                "<i><station_id>1</station_id><program_id>P</program_id>"
                                "<start_time>90</start_time><end_time>120</end_time></i>"
                                "<i><station_id>1</station_id><program_id>Q</"
                                "program_id><start_time>-60</start_time></i>"
                                "<i><station_id>2</station_id></i>"
                                "<i><station_id>1</station_id><start_time>90</start_time></i>"))) +
         "</x>";
}

TEST_F(FormatsImport, TitanDocumentsFillAStoreOfOneProvider) {
  const std::int32_t base = At("2009-03-01 18:00");
  EXPECT_EQ(Titan(TitanDocument()),
            "true Provider:       \tProv\nBaseTime:\t2009-03-01T18:00:00\n"
            "Stations: 1   Programmes: 2   Schedule Items: 2\n"
            "Duplicates:\n\tStations:\t1\n\tPrograms:\t2\n\tSchedule Items:\t2\n"
            "(Times: Load = 1.056 secs, Parse = 1.056 secs)");
  const std::string filled = "1||CA|9|-1|-1: " + std::to_string(base - 60) + "--1 none " +
                             std::to_string(base + 90) + "-" + std::to_string(base + 120) +
                             " A & B\n";
  EXPECT_EQ(Dump(*store_), filled);
  EXPECT_EQ(progress_.announced, 0);
  EXPECT_TRUE(log_.Take().empty());
  keep_store_ = true;
  EXPECT_EQ(Titan(TitanDocument("", "0", "prov")),
            "false Cannot merge data from provider \"prov\", current provider is \"Prov\".");
  EXPECT_NE(Titan(TitanDocument()).find("\tStations:\t2\n\tPrograms:\t4\n\tSchedule Items:\t4\n"),
            std::string::npos);
}

TEST_F(FormatsImport, TitanDocumentsFailWithTheirReason) {
  for (const auto& [cut, called] : {std::pair("ProgramDataCollection", "ProgramDataCollection"),
                                    {"ErrorCode", "ErrorCode"},
                                    {"ProgramData", "ProgramData"},
                                    {"ProviderID", "Provider"},
                                    {"BaseTime", "BaseTime"},
                                    {"Stations", "Stations"},
                                    {"Programs", "Programs"},
                                    {"Schedules", "Schedules"}}) {
    EXPECT_EQ(Titan(TitanDocument(cut)),
              std::string("false Container '") + called + "' not found.");
  }
  EXPECT_EQ(Titan(TitanDocument("", "7")), "false It %s broke");
  EXPECT_EQ(Titan(TitanDocument("ErrorDescription", " 12x")),
            "false XML data contained ErrorCode = 12, error description not found.");
  EXPECT_EQ(Titan(TitanDocument("", "none")).substr(0, 4), "true");
  for (const char* const content : {"", "text", "<a>", "<a></b>"}) {
    EXPECT_EQ(Titan(content), "false XML load failed, document length is zero.") << content;
  }
}

std::string Programme(const std::string& fields) { return "<Programme>" + fields + "</Programme>"; }

TEST_F(FormatsImport, RadioTimesFilesMakeStationsAsTheyAppear) {
  const std::string day = "<Date>05/02/2007</Date>";
  const std::string texts = "<Title>T</Title><Episode>E</Episode><Description>D</Description>";
  EXPECT_EQ(
      RadioTimes(
          "<Programmes>" +
          Programme("<ChannelName>b</ChannelName>" + texts + day +
                    "<StartTime>23:30</StartTime><EndTime>00:15</EndTime><Film/><Genre>G</Genre>") +
          Programme("<ChannelName>B</ChannelName>" + texts + "<Genre>H</Genre><Other>x</Other>" +
                    "<Date>05/02/2007 14:30</Date><!-- x --><EndTime>15:00</EndTime>") +
          Programme("<ChannelName>b</ChannelName><Title>late</Title>" + day +
                    "<StartTime>23:30</StartTime><EndTime>23:45</EndTime>") +
          Programme("<Title>A</Title><Title>nowhere</Title>" + day) + "</Programmes>"),
      "true File \"FILE\" loaded OK.");
  const auto at = [](const char* time) { return std::to_string(At(time)); };
  EXPECT_EQ(Dump(*store_),
            "b|b||-1|-1|-1: " + at("2007-02-05 23:30") + "-" + at("2007-02-06 00:15") +
                " T\nB|B||-1|-1|-1: " + at("2007-02-05 14:30") + "-" + at("2007-02-05 15:00") +
                " T\n|||-1|-1|-1: " + at("2007-02-05 00:00") + "-" + at("2007-02-05 00:00") +
                " nowhere\n");
  const CScheduleItem& item = *store_->GetStation(1)->GetProgram(0);
  EXPECT_EQ(item.program, store_->GetStation(0)->GetProgram(0)->program);
  EXPECT_EQ(item.program->genre, "G");  // the first of the same texts stays
  EXPECT_EQ(item.program->show_type, "Feature Film");
  const auto sum = static_cast<std::int32_t>(MSTR("D").Id() + MSTR("E").Id());
  EXPECT_EQ(item.program_key, "RT-T-" + std::to_string(sum));
  EXPECT_EQ(progress_.announced, 0);
  EXPECT_TRUE(log_.Take().empty());
}

TEST_F(FormatsImport, RadioTimesFilesFailWithTheirReason) {
  const std::string good = Programme("<Title>T</Title>");
  const std::pair<std::string, std::string> rows[] = {
      {"", "false File \"FILE\" loaded OK."},
      {"<programmes>" + good + "</programmes>", "false File \"FILE\" loaded OK."},
      {"<Programmes></Programmes>", "false File \"FILE\" loaded OK."},
      {"<Programmes>" + good + "<!-- x --></Programmes>",
       "false <Programme> node not found in <Programmes> collection (found <>)."},
      {"<Programmes><programme/></Programmes>",
       "false <Programme> node not found in <Programmes> collection (found <programme>)."},
      {"<Programmes>" + Programme("<Title><b/></Title>"),
       "false Unexpected sub-element, Title, in Programme Field."},
      {"<Programmes><Programme/>" + good,
       "false Unexpected sub-element, Programme, in Programme Field."},
      {"<Programmes><Programme><Title>T</Title>", "false Premature end of file."},
      {"<Programmes><Programme><Title>T</Title></Programmes>",
       "false <Programme> end tag is bad, found <Programmes>."},
      {"<Programmes>" + good + "</Programme>", "false Programmes end tag bad, found Programme."},
      {"<Programmes>" + good + "</End>", "false Programmes end tag bad, found End."},
      {"<Programmes>" + good, "false Programmes end tag bad, found Programme."},
      {"<Programmes", "false File \"FILE\" loaded OK."},
      {"<Programmes> <", "false Programmes end tag bad, found ."},
  };
  for (const auto& [content, report] : rows) EXPECT_EQ(RadioTimes(content), report) << content;
}

TEST_F(FormatsImport, TheDriverKnowsAFormatByItsRoot) {
  const auto load = [&](const std::string& attributes, const std::string& name = "ProviderData") {
    file_.Write("<" + name + " " + attributes + ">" + std::string(kStations) + "</" + name + ">");
    MSTR status;
    const auto store = ImportEPGFile(file_.Name(), status, &progress_);
    std::string entry = log_.Take().at(0);
    entry = entry.substr(0, entry.find(" format")).substr(entry.find("Importing") + 10);
    return entry + (store != nullptr ? " " + std::to_string(static_cast<int>(store->Kind())) : "");
  };
  const std::string maker = "xmlns=\"http://www.Norvex.example\"";
  const std::string titan = "xmlns=\"http://www.TitanTV.com/services/dataservice\"";
  EXPECT_EQ(load(maker), "Norvex 0");
  EXPECT_EQ(load(maker + " EPGSource=\"1\""), "Norvex 1");
  EXPECT_EQ(load(maker + " EPGSource=\"2x\""), "Norvex 2");
  EXPECT_EQ(load(maker + " EPGSource=\"3\" generator-info-name=\"XMLTV\""), "Norvex 3");
  EXPECT_EQ(load(maker + " EPGSource=\"9\""), "Norvex 0");
  EXPECT_EQ(load(maker, "Programmes"), "Norvex");
  EXPECT_EQ(load(titan + " generator-info-name=\"XMLTV\""), "Titan TV");
  EXPECT_EQ(load("xmlns=\"http://www.norvex.example/\""), "Radio Times");
}

}  // namespace
