#include "import/import_driver.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "browser/progress_indicator.h"
#include "import/rt_data.h"
#include "import/xmltv_data.h"
#include "tests/support/test_support.h"

namespace {

using ORVANE::MSTR;
using std::string_literals::operator""s;

class Progress final : public CProgressIndicator {};

class ImportDriver : public testing::Test {
 protected:
  ImportDriver() { platform_.SetTicksPerReading(5); }

  // The schedule's class, the status text and the log, one to a line, FILE standing for `path`.
  std::string Import(const std::string& path) {
    MSTR status = "left from the last load";
    const auto store = ImportEPGFile(std::string_view(path), status, &progress_);
    std::string report = store == nullptr ? "none" : "other";
    if (dynamic_cast<const CXMLTVData*>(store.get()) != nullptr) report = "XMLTV";
    if (dynamic_cast<const CRTData*>(store.get()) != nullptr) report = "Radio Times";
    if (store != nullptr) report += ' ' + std::to_string(static_cast<int>(store->Kind()));
    report.append("\n").append(status.View());
    for (const std::string& entry : log_.Take()) report += '\n' + entry;
    for (std::size_t at; (at = report.find(path)) != std::string::npos;) {
      report.replace(at, path.size(), "FILE");
    }
    return report;
  }

  epg_test::FakePlatform platform_;
  epg_test::LogCapture log_;
  Progress progress_;
};

constexpr std::string_view kRadioTimes =
    "<Programmes><Programme><ChannelName>A</ChannelName></Programme></Programmes>";
constexpr const char* kNotRadioTimes =
    "none\nCan't identify content, don't know how to decode!\n"
    "log: EPG Loader: Importing Radio Times format XML, FILE.\n"
    "log: EPG Loader: Import failed, [File &quot;FILE&quot; loaded OK.]";

TEST_F(ImportDriver, ChoosesTheImporterByTheRootElement) {
  const std::string xmltv =
      "XMLTV 3\n"
      "File \"FILE\" loaded OK.  Stations: 1   Programmes: 0   Schedule Items: 0  (5 msec)\n"
      "log: EPG Loader: Importing XMLTV format XML, FILE.\n"
      "log: File \"FILE\" loaded OK.  Stations: 1   Programmes: 0   Schedule Items: 0  (5 msec)";
  const std::string empty_xmltv =
      "none\nCan't identify content, don't know how to decode!\n"
      "log: EPG Loader: Importing XMLTV format XML, FILE.\n"
      "log: File \"FILE\" loaded OK.  Stations: 0   Programmes: 0   Schedule Items: 0  (5 msec)\n"
      "log: EPG Loader: Import failed. [File &quot;FILE&quot; loaded OK.  Stations: 0   "
      "Programmes: 0   Schedule Items: 0  (5 msec)]";
  const std::pair<std::string, std::string> rows[] = {
      {"<tv generator-info-name='XMLTV'><channel id='a'/></tv>", xmltv},
      {"<?xml?><!-- x --><x/><tv x='1' generator-info-name='xMlTv'><channel id='a'/></tv>", xmltv},
      {"<tv generator-info-name='XMLTV 2'><channel id='a'/></tv>", kNotRadioTimes},
      {"<tv generator-info-name='XMLT'><channel id='a'/></tv>", kNotRadioTimes},
      {"<tv Generator-Info-Name='XMLTV'><channel id='a'/></tv>", kNotRadioTimes},
      {"<tv><x generator-info-name='XMLTV'/></tv>", kNotRadioTimes},
      {"<Programmes generator-info-name='XMLTV'><x/></Programmes>", empty_xmltv},
      {"<tv generator-info-name='XMLTV'/>", empty_xmltv},  // has no children, but attributes
      {"<Programmes></Programmes>", kNotRadioTimes},
      {"", kNotRadioTimes},
      {"no markup at all", kNotRadioTimes},
      {"\0\xff<\0\x80>\x01 \"'&;\n"s, kNotRadioTimes},
  };
  for (const auto& [content, report] : rows) {
    EXPECT_EQ(report, Import(epg_test::TempFile(content).Path())) << content;
  }
}

TEST_F(ImportDriver, LogsTheReasonOfAFailureEscaped) {
  EXPECT_EQ(
      "none\nCan't identify content, don't know how to decode!\n"
      "log: EPG Loader: Importing XMLTV format XML, FILE.\n"
      "log: EPG Loader: Import failed. [&lt;tv&gt; end tag is bad, found &lt;TV&gt;.]",
      Import(epg_test::TempFile("<tv generator-info-name='XMLTV'><x/></TV>").Path()));
  EXPECT_EQ(
      "none\nCan't identify content, don't know how to decode!\n"
      "log: EPG Loader: Importing Radio Times format XML, FILE.\n"
      "log: EPG Loader: Import failed, [&lt;Programme&gt; node not found in &lt;Programmes&gt; "
      "collection (found &lt;%s&amp;&apos;&quot;&gt;).]",
      Import(epg_test::TempFile("<Programmes><%s&amp;'\"/></Programmes>").Path()));
}

TEST_F(ImportDriver, TakesAnyFileName) {
  constexpr const char* kNotOpened =
      "none\nFailed to open file \"FILE\".\nlog: Failed to open file \"FILE\".";
  for (const char* const name : {"%n%s%5.xml", "\xff\x80 \"&'.xml"}) {
    const epg_test::TempFile file(kRadioTimes, name);
    EXPECT_EQ(kNotOpened, Import(file.Stem()));                                    // missing
    EXPECT_EQ(kNotOpened, Import(file.Path().substr(0, file.Path().rfind('/'))));  // a directory
    EXPECT_EQ(
        "Radio Times 2\nFile \"FILE\" loaded OK.\n"
        "log: EPG Loader: Importing Radio Times format XML, FILE.",
        Import(file.Path()));
  }
}

TEST_F(ImportDriver, HandsTheIndicatorToXmltvAlone) {
  Import(epg_test::TempFile(kRadioTimes).Path());
  EXPECT_EQ(0, progress_.Range());
  Import(epg_test::TempFile("<tv generator-info-name='XMLTV'><channel/></tv>").Path());
  EXPECT_EQ(47, progress_.Range());
  EXPECT_EQ(47, progress_.Position());
}

}  // namespace
