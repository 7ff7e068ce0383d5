// The module as an engine uses it: loaded, initialised, released and unloaded by one process again
// and again.

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <thread>
#include <vector>

#include "host/engine.h"
#include "host/mobj.h"

namespace {

std::int32_t CallForInt(ORVANE::MSSINSTANCE& instance, const char* method,
                        const std::vector<std::int32_t>& arguments = {}) {
  ORVANE::MSSEXEC call(&instance, "test");
  for (const std::int32_t argument : arguments) call.AddArgument(argument);
  if (!ORVANE::CallMethod(call, method)) return -1000;
  const auto* const result = dynamic_cast<const ORVANE::MSSINTEGER*>(call.Result());
  return result != nullptr ? result->value : -2000;
}

struct BoundBrowser {
  BoundBrowser()
      : entity(ORVANE::CreateEntity("CEPGBrowser")),
        instance(ORVANE::CreateInstance("EPGBROWSER")) {
    ORVANE::Bind(*instance, entity.get());
  }
  void Load(const char* name) {
    ORVANE::MSSEXEC call(instance.get(), "test");
    for (const char* const text : {"", "", name}) call.AddArgument(std::string_view(text));
    EXPECT_TRUE(ORVANE::CallMethod(call, "InitSchedule"));
  }
  ORVANE::ENTITYPTR entity;
  ORVANE::INSTANCEPTR instance;
};

// Asks whatever a script may ask while a load runs, with an instance of its own.
void AskWhileLoading(BoundBrowser& browser) {
  const ORVANE::INSTANCEPTR copy(browser.instance->Clone());
  while (CallForInt(*copy, "GetReady") == 0) {
    CallForInt(*copy, "GetStartTime");
    std::this_thread::yield();
  }
  for (std::int32_t station = 0; station < 5; ++station) {
    const std::int32_t start = CallForInt(*copy, "GetProgramStartTime", {station, 3});
    EXPECT_EQ(CallForInt(*copy, "GetFirstProgram4Time", {station, start, start + 1}), 3);
  }
}

TEST(PluginLife, AHundredLivesWithTwoBrowsersLoadingAtOnceUnderQueries) {
  for (int life = 0; life < 100; ++life) {
    std::string error;
    const auto plugin = ORVANE::PLUGIN::Load(EPG_MODULE, error);
    ASSERT_NE(plugin, nullptr) << error;
    plugin->Initialise();
    {
      std::array<BoundBrowser, 2> browsers;
      for (auto& browser : browsers) browser.Load(EPG_SOURCE_DIR "/samples/week");
      std::thread first(AskWhileLoading, std::ref(browsers[0]));
      std::thread second(AskWhileLoading, std::ref(browsers[1]));
      for (auto& browser : browsers) EXPECT_EQ(CallForInt(*browser.instance, "GetStationCount"), 5);
      first.join();
      second.join();
      // Every third life ends during a load.
      if (life % 3 == 0) browsers[1].Load(EPG_SOURCE_DIR "/samples/week");
    }
    plugin->Release();
  }
}

TEST(PluginLife, UnloadingTakesItsNamesAlong) {
  const auto known = [] {
    int count = 0;
    for (const char* const name :
         {"CEPGBrowser", "CEPGBrowser::MSS", "CEPGBrowser::CREATEPARAMS"}) {
      count += ORVANE::MOBJ::SREC::Find(name) != nullptr ? 1 : 0;
    }
    return count;
  };
  std::string error;
  auto plugin = ORVANE::PLUGIN::Load(EPG_MODULE, error);
  ASSERT_NE(plugin, nullptr) << error;
  EXPECT_EQ(known(), 3);
  plugin->Initialise();
  EXPECT_NE(ORVANE::MSSMODULE::Find("EPGBROWSER"), nullptr);
  plugin->Release();
  EXPECT_EQ(ORVANE::MSSMODULE::Find("EPGBROWSER"), nullptr);
  plugin.reset();
  EXPECT_EQ(known(), 0);
}

}  // namespace
