// The module as an engine uses it: loaded and unloaded by one process again and again.

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <thread>
#include <vector>

#include "host/engine.h"
#include "host/mobj.h"
#include "tests/support/resources.h"

namespace {

std::int32_t Ask(ORVANE::MSSINSTANCE& instance, const char* method,
                 const std::vector<std::int32_t>& arguments = {}) {
  ORVANE::CALL call(&instance, "test");
  for (const std::int32_t argument : arguments) call.AddArgument(argument);
  EXPECT_TRUE(call.Run(method));
  return dynamic_cast<const ORVANE::MSSINTEGER&>(*call.Result()).value;
}

struct BoundBrowser {
  BoundBrowser() { ORVANE::Bind(*instance, entity.get()); }
  void Load() {
    ORVANE::CALL call(instance.get(), "test");
    for (const char* const text : {"", "", EPG_SOURCE_DIR "/samples/week"}) call.AddArgument(text);
    EXPECT_TRUE(call.Run("InitSchedule"));
  }
  const ORVANE::ENTITYPTR entity = ORVANE::CreateEntity("CEPGBrowser");
  const ORVANE::INSTANCEPTR instance = ORVANE::CreateInstance("EPGBROWSER");
};

// Asks whatever a script may ask while a load runs, with an instance of its own.
void AskWhileLoading(BoundBrowser& browser) {
  const ORVANE::INSTANCEPTR copy(browser.instance->Clone());
  while (Ask(*copy, "GetReady") == 0) Ask(*copy, "GetStartTime");
  for (std::int32_t station = 0; station < 5; ++station) {
    const std::int32_t start = Ask(*copy, "GetProgramStartTime", {station, 3});
    EXPECT_EQ(Ask(*copy, "GetFirstProgram4Time", {station, start, start + 1}), 3);
  }
}

TEST(PluginLife, AHundredLivesWithTwoBrowsersLoadingAtOnceUnderQueries) {
  int handles = 0;
  std::int64_t memory = 0;  // in KB
  for (int life = 0; life < 100; ++life) {
    if (life == 20) {  // when everything has been used
      handles = epg_test::OpenHandles();
      memory = epg_test::UsedMemory();
      ASSERT_TRUE(handles > 0 && memory > 0);
    }
    std::string error;
    const auto plugin = ORVANE::PLUGIN::Load(EPG_MODULE, error);
    ASSERT_NE(plugin, nullptr) << error;
    plugin->Initialise();
    {
      std::array<BoundBrowser, 2> browsers;
      for (auto& browser : browsers) browser.Load();
      std::thread first(AskWhileLoading, std::ref(browsers[0]));
      std::thread second(AskWhileLoading, std::ref(browsers[1]));
      for (auto& browser : browsers) EXPECT_EQ(Ask(*browser.instance, "GetStationCount"), 5);
      first.join();
      second.join();
      if (life % 3 == 0) browsers[1].Load();  // the life ends during a load
    }
    plugin->Release();
  }
  EXPECT_LE(epg_test::OpenHandles(), handles);
#if !defined(EPG_SANITIZED)
  EXPECT_LE(epg_test::UsedMemory(), memory + 4'000);  // one schedule takes as much again
#endif
}

TEST(PluginLife, UnloadingTakesItsNamesAlong) {
  std::string error;
  auto plugin = ORVANE::PLUGIN::Load(EPG_MODULE, error);
  ASSERT_NE(plugin, nullptr) << error;
  EXPECT_TRUE(ORVANE::HasClass("CEPGBrowser"));
  plugin->Initialise();
  EXPECT_NE(ORVANE::DescribeModule("EPGBROWSER"), nullptr);
  plugin->Release();
  EXPECT_EQ(ORVANE::DescribeModule("EPGBROWSER"), nullptr);
  plugin.reset();
  for (const char* const name : {"CEPGBrowser", "CEPGBrowser::MSS", "CEPGBrowser::CREATEPARAMS"})
    EXPECT_FALSE(ORVANE::HasClass(name)) << name;
}

}  // namespace
