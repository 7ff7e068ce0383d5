// Files that would hang or fell an import that takes them naively. None of these tests looks at a
// clock: what takes quadratic time runs into the test's time limit.

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include "import/import_driver.h"
#include "tests/support/test_support.h"
#include "text/counted_text.h"

namespace {

using ORVANE::MSTR;

#if defined(EPG_SANITIZED)
constexpr std::size_t kMany = 100'000;
#else
constexpr std::size_t kMany = 1'000'000;
#endif
constexpr std::size_t kLong = 100 * kMany;  // 100 MB where nothing slows the test down

std::string Times(std::size_t count, std::string_view text) {
  std::string all;
  all.reserve(count * text.size());
  for (; count > 0; --count) all += text;
  return all;
}

constexpr const char* kXmltv = "<tv generator-info-name='XMLTV'>";
constexpr const char* kCache = "<ProviderData xmlns='http://www.norvex.example'>";
constexpr const char* kTitan =
    "<ProgramDataCollection xmlns='http://www.titantv.com/services/dataservice'>";

// The reason of a failed load as the log has it, or the schedule's statistics.
std::string Import(const std::string& content) {
  const epg_test::TempFile file(content);
  epg_test::LogCapture log;
  MSTR status;
  const auto store = ImportEPGFile(file.Name(), status, nullptr);
  if (store != nullptr) return std::string(ViewOf(store->GetStatistics()));
  const std::string last = log.Take().back();
  return last.substr(last.find('[') + 1, last.rfind(']') - last.find('[') - 1);
}

TEST(HostileFile, NestsAMillionElements) {
  const std::string open = Times(kMany, "<a>");
  const std::string close = Times(kMany, "</a>");
  constexpr const char* kCutOff = "Premature end of file.";
  EXPECT_EQ(Import(kXmltv + open), kCutOff);
  EXPECT_EQ(Import(kXmltv + open + "<b/>" + close + "<channel/></tv>"),
            "Stations: 1   Programmes: 0   Schedule Items: 0");
  EXPECT_EQ(Import(kCache + open), kCutOff);
  EXPECT_EQ(Import(kCache + ("<StationList><Station><Schedule>" + open) + "<b/>" + close +
                   "</Schedule></Station></StationList></ProviderData>"),
            "Stations: 1   Programmes: 0   Schedule Items: 0");
  EXPECT_EQ(Import(kTitan + open), "XML load failed, document length is zero.");
  EXPECT_EQ(Import(kTitan + open + close + "</ProgramDataCollection>"),
            "Container &apos;ErrorCode&apos; not found.");
  EXPECT_EQ(Import("<Programmes><Programme>" + open),
            "Unexpected sub-element, a, in Programme Field.");
}

TEST(HostileFile, HoldsOneVeryLongPiece) {
  const std::string piece = Times(kLong / 4, "abc ");
  EXPECT_EQ(Import(kXmltv + ("<channel id='" + piece) + "'/></tv>"),
            "Stations: 1   Programmes: 0   Schedule Items: 0");
  EXPECT_EQ(Import(kXmltv + ("<channel id='a'/> &" + piece) + "</tv>"), "Premature end of file.");
  EXPECT_EQ(Import("&" + piece).find("File &quot;"), 0U);
}

TEST(HostileFile, NamesManyStationsAndProgrammes) {
  std::string file = kXmltv;
  for (std::size_t i = 0; i < kMany / 10; ++i) {
    const std::string id = std::to_string(i);
    file += "<channel id='" + id + "'/><programme channel='" + id + "'><title>" + id +
            "</title></programme>";
  }
  const std::string count = std::to_string(kMany / 10);
  EXPECT_EQ(Import(file + "</tv>"),
            "Stations: " + count + "   Programmes: " + count + "   Schedule Items: " + count);
}

// Each start makes the station's table grow by many empty entries.
TEST(HostileFile, StridesThroughTheCenturies) {
  for (const std::int64_t stride : {65'000 * 180, 65'538 * 180}) {
    std::string file = kCache + std::string("<StationList><Station><Schedule>");
    for (std::int64_t start = -2147483000; start < 2147483000; start += stride) {
      file += "<Item><f1>" + std::to_string(start) + "</f1></Item>";
    }
    file += "</Schedule></Station></StationList></ProviderData>";
    EXPECT_EQ(Import(file).substr(0, 11), "Stations: 1");
  }
}

// A small good file in each of the formats, cut at every byte.
TEST(HostileFile, EndsAnywhere) {
  for (const auto& entry : std::filesystem::directory_iterator(EPG_LISTINGS_DIR)) {
    std::ifstream file(entry.path(), std::ios::binary);
    const std::string whole{std::istreambuf_iterator<char>(file), {}};
    const std::size_t end = whole.find_last_not_of('\n') + 1;
    const epg_test::TempFile cut("");
    MSTR status;
    for (std::size_t size = 0; size <= whole.size(); ++size) {
      cut.Write(std::string_view(whole).substr(0, size));
      ASSERT_EQ(ImportEPGFile(cut.Name(), status, nullptr) != nullptr, size >= end) << size;
      if (size >= end) continue;
      ASSERT_EQ(ViewOf(status), "Can't identify content, don't know how to decode!");
    }
  }
}

}  // namespace
