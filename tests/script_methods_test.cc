#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <variant>
#include <vector>

#include "browser/epg_browser.h"
#include "host/engine.h"
#include "platform/services.h"
#include "plugin/entry_points.h"
#include "plugin/epg_browser_mss.h"
#include "schedule/fields.h"
#include "tests/support/test_support.h"
#include "text/counted_text.h"

namespace {

using epg_test::At;
using ORVANE::INSTANCEPTR;
using ORVANE::MSSINSTANCE;
using testing::ElementsAre;
using Arguments = std::vector<std::variant<std::int32_t, const char*>>;
using Instances = std::vector<INSTANCEPTR>;

constexpr std::string_view kListings = R"(<tv generator-info-name='XMLTV'><channel id='1'>
<display-name>Metro</display-name><display-name>City One</display-name></channel><channel id='2'/>
<programme channel='1' start='20070205080000' stop='20070205090000'><title>Tea</title>
<category>Food</category><sub-title>Scones</sub-title></programme>
<programme channel='1' start='20070205090000' stop='20070205103000'><title>%s</title></programme>
<programme channel='1' start='20070205130000' stop='20070205140000'><title>Jam</title></programme>
</tv>)";

// All but GetProgramCount take a programme's index or time after the station's.
constexpr const char* kProgramMethods =
    "GetFirstProgram4Time GetProgramStartTime GetProgramEndTime GetProgramName GetProgramData";

Instances Take(int count) {
  Instances instances;
  while (count-- > 0) instances.push_back(ORVANE::CreateInstance("EPGBROWSER"));
  return instances;
}

class ScriptMethods : public testing::Test {
 protected:
  ScriptMethods() {
    platform_.SetClock(At("2007-02-05 14:37"));
    platform_.SetZone(60);
    Initialise();
    browser_ = ORVANE::CreateEntity("CEPGBrowser");
    instance_ = ORVANE::CreateInstance("EPGBROWSER");
    EXPECT_TRUE(ORVANE::Bind(*instance_, browser_.get()));
  }
  ~ScriptMethods() override {
    instance_.reset();
    browser_.reset();
    Release();
  }

  // The result: a number, a text in apostrophes, "ok" for none, or a failure's text.
  std::string Call(const std::string& method, const Arguments& arguments = {}) {
    return Call(instance_.get(), method, arguments);
  }
  std::string Call(MSSINSTANCE* self, const std::string& method, const Arguments& arguments) {
    ORVANE::CALL call(self, "guide.mss:7");
    for (const auto& argument : arguments) {
      std::visit([&](const auto& value) { call.AddArgument(value); }, argument);
    }
    log_.Take();
    if (!call.Run("EPGBROWSER", method.c_str())) {
      EXPECT_EQ(nullptr, call.Result());
      const std::vector<std::string> log = log_.Take();
      const std::string prefix = "error: " + method + "() : ";
      EXPECT_THAT(log, ElementsAre(testing::StartsWith(prefix), "at: guide.mss:7"));
      return log.empty() ? "" : log[0].substr(std::min(prefix.size(), log[0].size()));
    }
    if (call.Result() == nullptr) return "ok";
    const auto* const number = dynamic_cast<const ORVANE::MSSINTEGER*>(call.Result());
    if (number != nullptr) return std::to_string(number->value);
    const ORVANE::MSTR& text = dynamic_cast<const ORVANE::MSSSTRING&>(*call.Result()).value;
    return std::string("'").append(ViewOf(text)).append("'");
  }
  void Load() {
    EXPECT_EQ("ok", Call("InitSchedule", {"", "", stem_.c_str()}));
    EXPECT_EQ("2", Call("GetStationCount"));
  }

  epg_test::FakePlatform platform_;
  epg_test::LogCapture log_;
  const epg_test::TempFile file_{kListings};
  const std::string stem_ = file_.Stem();
  ORVANE::ENTITYPTR browser_;
  INSTANCEPTR instance_;
};

TEST_F(ScriptMethods, AnswerFromTheScheduleOrSayWhichArgumentIsWrong) {
  Load();
  const std::int32_t eight = At("2007-02-05 08:00");
  const std::int32_t now = At("2007-02-05 14:37");
  const struct {
    const char* methods;
    Arguments arguments;
    std::string result;
  } rows[] = {
      {"GetStationId", {0, "extra"}, "'Metro-City-One'"},
      {"GetNowTime", {-30}, std::to_string(now - now % 30)},
      {"GetNowTime", {0}, std::to_string(now)},
      {"ConvertLocalTime2String", {eight, 0}, "'Mon, Feb 05, 09:00 (2007)'"},
      {"GetFirstProgram4Time", {0, eight + 60, eight + 90}, "1"},
      {"GetFirstProgram4Time", {0, eight + 180, eight + 301}, "2"},
      {"GetFirstProgram4Time", {1, eight, eight + 60}, "-1"},
      {"GetProgramName", {0, 1}, "'%s'"},
      {"GetProgramData", {0, 0, "$Title[$(: )$EpisodeTitle] $Time"}, "'Tea: Scones 09:00 am'"},
      {"GetProgramData", {0, 2, "[$(x)$Title]%n[$Genre]"}, "'Jam%n'"},
      {"GetProgramStartTime", {0, 3}, "-1"},
      {"GetProgramEndTime", {0, -1}, "-1"},
      {"GetProgramName", {1, 0}, "''"},
      {"GetProgramData", {0, 3, "text"}, "''"},
      {"InitSchedule", {1, "", ""}, "parameter 1 not specified"},
      {"InitSchedule", {"", 2}, "parameter 2 not specified"},
      {"InitSchedule", {"", ""}, "parameter 3 not specified"},
      {"GetStationId GetStationName", {}, "Parameter 2 not an integer or missing"},
      {"GetStationId GetStationName", {-5}, "invalid index value (-5) max is: 1"},
      {"GetStationId GetStationName", {2}, "invalid index value (2) max is: 1"},
      {"GetNowTime", {}, "Parameter 1 not an integer or missing"},
      {"ConvertLocalTime2String", {"", ""}, "Parameter 2 not an integer or missing"},
      {"ConvertLocalTime2String", {1, ""}, "Parameter 3 not an integer or missing"},
      {"GetProgramCount", {"", 0, 0}, "Parameter 1 not an integer or missing"},
      {"GetProgramCount", {2}, "parameter 1 - invalid index value (2) max is: 1"},
      {kProgramMethods, {"", 0, 0}, "Parameter 1 not an integer or missing"},
      {kProgramMethods, {2, ""}, "parameter 1 - invalid index value (2) max is: 1"},
      {kProgramMethods, {0, "", ""}, "Parameter 2 not an integer or missing"},
      {"GetFirstProgram4Time", {0, 0, ""}, "Parameter 3 not an integer or missing"},
      {"GetProgramData", {0, 0, 0}, "Parameter 3 not a string or missing"},
      {"GetReady", {}, "1"},  // nothing was started
  };
  for (const auto& [methods, arguments, result] : rows) {
    std::istringstream names(methods);
    for (std::string name; names >> name;) EXPECT_EQ(result, Call(name, arguments)) << name;
  }
}

TEST_F(ScriptMethods, AnswerForRecordsWithGaps) {
  Load();
  CStation& station = *dynamic_cast<CEPGBrowser&>(*browser_).Schedule()->GetStation(0);
  CTextBlocks texts;
  station.network = CText();
  EXPECT_EQ("'City One'", Call("GetStationName", {0}));
  station.network = texts.Keep("A/B");
  station.call_sign = texts.Keep("C\\ D");
  EXPECT_EQ("'A'", Call("GetStationName", {0}));
  EXPECT_EQ("'A-B-C--D'", Call("GetStationId", {0}));
  // As of a file that names a programme and does not give it.
  const_cast<CScheduleItem*>(station.GetProgram(0))->program = nullptr;
  EXPECT_EQ("''", Call("GetProgramName", {0, 0}));
  EXPECT_EQ("'09:00 am'", Call("GetProgramData", {0, 0, "[$Title]$Time"}));
}

TEST_F(ScriptMethods, SayWhatIsWrongWithTheInstance) {
  const Instances taken = Take(3);  // the third one is not bound
  ORVANE::ENTITY other;
  ORVANE::Bind(*taken[0], &other);
  ORVANE::Bind(*taken[1], ORVANE::CreateEntity("CEPGBrowser").get());  // which ends here
  const INSTANCEPTR foreign = ORVANE::CreateInstance("ENTITY");
  ORVANE::Bind(*foreign, browser_.get());
  const std::pair<MSSINSTANCE*, const char*> rows[] = {
      {nullptr, "cannot convert 'this' to CEPGBrowser object"},
      {foreign.get(), "cannot convert 'this' to CEPGBrowser object"},
      {taken[0].get(), "'this' does not reference a CEPGBrowser"},
      {taken[1].get(), "'this' is a NULL"},
      {taken[2].get(), "'this' is a NULL"},
  };
  const auto module = ORVANE::DescribeModule("EPGBROWSER");
  for (const ORVANE::METHODINFO& method : module->methods) {
    for (const auto& [self, text] : rows)
      EXPECT_EQ(text, Call(self, method.name, {})) << method.name;
  }
}

TEST_F(ScriptMethods, WaitForALoadAndCountNoScheduleAsEmpty) {
  const std::string missing = stem_ + "-";
  std::vector<std::string> boxes;
  for (const bool failed : {false, true}) {
    for (const char* const method : {"GetReady", "GetStationCount", "GetStartTime", "GetEndTime"}) {
      EXPECT_EQ("0", Call(method)) << method;
    }
    EXPECT_EQ("invalid index value (0) max is: -1", Call("GetStationId", {0}));
    EXPECT_EQ(boxes, platform_.TakeMessageBoxes());
    if (failed) break;
    EXPECT_EQ("ok", Call("InitSchedule", {"", "", missing.c_str(), "extra"}));
    boxes = {"[Telvyn configuration error] Failed to open file \"" + missing + ".xml\"."};
  }
  // The import asks for the time as it begins.
  platform::overrides.tick_count = [] {
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    return std::uint32_t{0};
  };
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ("ok", Call("InitSchedule", {"", "", stem_.c_str()}));
    EXPECT_EQ("0", Call("GetReady"));  // whatever an earlier load has left
    EXPECT_EQ("2", Call("GetStationCount"));
    EXPECT_EQ("1", Call("GetReady"));
  }
}

TEST_F(ScriptMethods, FailOrEndBeforeTheirBrowserGoes) {
  Load();
  for (int life = 0; life < 20; ++life) {
    browser_ = ORVANE::CreateEntity("CEPGBrowser");
    ORVANE::Bind(*instance_, browser_.get());
    Call("InitSchedule", {"", "", stem_.c_str()});
    std::atomic<int> answered = 0;
    std::vector<std::thread> scripts;
    for (const char* const method : {"GetStationCount", "GetEndTime", "GetReady"}) {
      scripts.emplace_back([&answered, method, self = instance_.get()] {
        while (ORVANE::CALL(self, "").Run(method)) ++answered;
      });
    }
    while (answered == 0) std::this_thread::yield();
    browser_.reset();
    for (std::thread& script : scripts) script.join();
  }
  EXPECT_EQ("'this' is a NULL", Call("GetReady"));
}

class InstancePool : public testing::Test {
 protected:
  ~InstancePool() override { Release(); }
  ORVANE::MREFOBJ* const module_ = (Initialise(), Take(1)[0]->Module());
};

TEST_F(InstancePool, HandsOutTheLastInstanceGivenBackFirst) {
  ORVANE::ENTITY entity;
  Instances taken = Take(3);
  const std::pair given_back(taken[1].get(), taken[0].get());
  ORVANE::Bind(*taken[1], &entity);
  const int references = module_->RefCount();
  taken.erase(taken.begin(), taken.begin() + 2);
  EXPECT_EQ(references - 2, module_->RefCount());
  const Instances again = Take(2);
  EXPECT_EQ(given_back, std::pair(again[0].get(), again[1].get()));
  EXPECT_TRUE(again[0]->IsNull());
  EXPECT_EQ(module_, again[0]->Module());
}

TEST_F(InstancePool, CopiesCarryBindingAndModule) {
  ORVANE::ENTITY entity;
  Instances taken = Take(2);
  ORVANE::Bind(*taken[0], &entity);
  EXPECT_TRUE(taken[1]->Copy(taken[0].get()));
  EXPECT_TRUE(taken[1]->Copy(std::make_unique<ORVANE::MSSINTEGER>().get()));  // nothing to copy
  taken.emplace_back(taken[0]->Clone());
  taken.emplace_back(taken[0]->MakeCopy());
  for (const INSTANCEPTR& copy : taken) {
    EXPECT_EQ(&entity, dynamic_cast<CEPGBrowser::MSS&>(*copy).entity.Get());
    EXPECT_EQ(module_, copy->Module());
  }
}

using ScriptModule = InstancePool;

TEST_F(ScriptModule, TellsTheEngineItsMethodsParentAndFlags) {
  const auto module = ORVANE::DescribeModule("EPGBROWSER");
  std::ostringstream methods;
  for (const ORVANE::METHODINFO& method : module->methods) {
    methods << method.name << ' ' << method.minimum_locals << ' ' << method.maximum_locals << ' '
            << method.stack << ", ";
  }
  EXPECT_EQ(
      "InitSchedule 4 4 6, GetReady 1 1 3, GetStationCount 1 1 3, GetStationId 2 2 4, "
      "GetStationName 2 2 4, GetNowTime 2 2 4, GetStartTime 1 1 3, GetEndTime 1 1 3, "
      "ConvertLocalTime2String 3 3 5, GetFirstProgram4Time 4 4 6, GetProgramStartTime 3 3 5, "
      "GetProgramEndTime 3 3 5, GetProgramName 3 3 5, GetProgramCount 2 2 4, "
      "GetProgramData 4 4 6, ",
      methods.str());
  EXPECT_EQ(3U, module->flags);
  EXPECT_EQ("ENTITY", module->parent);
}

TEST_F(ScriptModule, ClassRecordsMakeObjectsOfTheirClass) {
  const auto make = [](const char* name, const ORVANE::MOBJ::SREC& record) {
    ORVANE::OBJECTPTR object = ORVANE::CreateObject(name);
    EXPECT_EQ(&record, object->_GetSerializeRecord()) << name;
    return object;
  };
  const auto browser = make("CEPGBrowser", CEPGBrowser::_Record);
  EXPECT_FALSE(dynamic_cast<CEPGBrowser&>(*browser).HasLoader());
  const auto instance = make("CEPGBrowser::MSS", CEPGBrowser::MSS::_Record);
  EXPECT_EQ(module_, dynamic_cast<CEPGBrowser::MSS&>(*instance).Module());
  const auto params = make("CEPGBrowser::CREATEPARAMS", CEPGBrowser::CREATEPARAMS::_Record);
  EXPECT_NE(nullptr, dynamic_cast<ORVANE::ENTITY::CREATEPARAMS*>(params.get()));
}

TEST(EntryPoints, WarnOfReferencesToItsModuleAlone) {
  epg_test::LogCapture log;
  for (const bool referenced : {false, true}) {
    Initialise();
    Instances left = Take(300);
    Initialise();
    EXPECT_EQ(Take(1)[0]->Module(), left[0]->Module());
    if (referenced) left[0]->Module()->AddRef();
    for (INSTANCEPTR& instance : left) static_cast<void>(instance.release());
    Release();
    EXPECT_EQ(nullptr, ORVANE::DescribeModule("EPGBROWSER"));
    std::vector<std::string> expected = {"notice: EPGBROWSER DLL Starting",
                                         "notice: EPGBROWSER DLL Starting",
                                         "notice: EPGBROWSER plug-in Releasing"};
    if (referenced) expected.emplace_back("error: EPGBROWSER reference count > 0 ...");
    EXPECT_EQ(expected, log.Take());
  }
}

}  // namespace
