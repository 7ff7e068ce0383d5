#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "browser/epg_browser.h"
#include "browser/epg_loader_thread.h"
#include "host/engine.h"
#include "host/mlog.h"
#include "platform/services.h"
#include "tests/support/test_support.h"

namespace {

using epg_test::TempFile;
using std::string_literals::operator""s;
using std::chrono_literals::operator""ms;
using testing::ElementsAre;
using testing::IsEmpty;

template <typename Condition>
bool Eventually(Condition condition) {
  for (int i = 0; i < 20'000 && !condition(); ++i) std::this_thread::sleep_for(1ms);
  return condition();
}

class Browser : public testing::Test {
 protected:
  Browser() {
    ORVANE::SetLogSink([this](auto, auto) { const std::lock_guard hold(gate_); });
  }
  ~Browser() override {
    browser_.reset();
    ORVANE::SetLogSink({});
  }

  void Init(const std::string& name) { browser_->InitSchedule("", "", name.c_str()); }
  void AdoptLoad() {
    EXPECT_TRUE(Eventually([this] { return browser_->Think(10), !browser_->HasLoader(); }));
  }
  void Load(const std::string& name) {
    Init(name);
    AdoptLoad();
  }
  // Whether there is a load, and the schedule's first station.
  std::string State() const {
    const auto schedule = browser_->Schedule();
    return std::string(browser_->HasLoader() ? "loading, " : "idle, ") +
           (schedule != nullptr ? schedule->GetStation(0)->key.Characters() : "none");
  }

  epg_test::FakePlatform platform_;
  const TempFile a_{"<tv generator-info-name='XMLTV'><channel id='A0'/></tv>"};
  const TempFile b_{"<tv generator-info-name='XMLTV'><channel id='B0'/><channel id='B1'/></tv>"};
  const std::string missing_ = a_.Stem() + "%n%s.xml";
  const std::string box_ =
      "[Telvyn configuration error] Failed to open file \"" + missing_ + ".xml\".";
  std::mutex gate_;  // whoever holds it keeps a load from passing its first log entry
  std::unique_ptr<CEPGBrowser> browser_ = std::make_unique<CEPGBrowser>();
};

TEST_F(Browser, AdoptsALoadOnATickBehindItsEnd) {
  for (const std::string before : {"none", "A0"}) {
    const std::string after = before == "none" ? "A0" : "B0";
    std::unique_lock gate(gate_);
    Init(before == "none" ? a_.Stem() : b_.Stem());
    browser_->Think(10);
    EXPECT_EQ("loading, " + before, State());
    gate.unlock();
    EXPECT_TRUE(Eventually([&] { return State() == "loading, " + after; }));
    AdoptLoad();
    EXPECT_EQ("idle, " + after, State());
  }
  EXPECT_THAT(platform_.TakeMessageBoxes(), IsEmpty());
}

TEST_F(Browser, ReportsAFailedLoadOnceAndDropsTheSchedule) {
  Load(a_.Stem());
  auto reading = browser_->Schedule();
  const std::weak_ptr watched = reading;
  Init(missing_);
  EXPECT_TRUE(Eventually([this] { return State() == "loading, none"; }));
  EXPECT_THAT(platform_.TakeMessageBoxes(), IsEmpty());
  AdoptLoad();
  browser_->Think(10);
  EXPECT_THAT(platform_.TakeMessageBoxes(), ElementsAre(box_));
  EXPECT_EQ("A0", reading->GetStation(0)->key);  // stays for its readers
  reading.reset();
  EXPECT_TRUE(watched.expired());
}

TEST_F(Browser, StartsALoadBehindTheEndOfTheEarlierOne) {
  for (const bool good_first : {true, false}) {
    std::unique_lock gate(gate_);
    Init(good_first ? a_.Stem() : missing_);
    auto second = std::async(std::launch::async, [&] { Init(good_first ? missing_ : a_.Stem()); });
    EXPECT_EQ(std::future_status::timeout, second.wait_for(20ms));
    gate.unlock();
    second.get();
    AdoptLoad();
    EXPECT_EQ(good_first ? "idle, none" : "idle, A0", State());
    EXPECT_EQ(std::vector(good_first ? 1 : 0, box_), platform_.TakeMessageBoxes());
  }
}

TEST_F(Browser, ReplacesSchedulesUnderTheirReaders) {
  std::atomic<bool> done = false;
  std::atomic<int> torn = 0;
  std::vector<std::future<void>> readers;
  while (readers.size() < 3) {
    readers.push_back(std::async(std::launch::async, [&] {
      while (!done) {
        const auto schedule = browser_->Schedule();
        if (schedule == nullptr) continue;
        const std::int32_t count = schedule->GetStationCount();
        if (!(schedule->GetStation(count - 1)->key == (count == 1 ? "A0" : "B1"))) ++torn;
      }
    }));
  }
  for (int i = 0; i < 60; ++i) {
    Init(i % 3 == 0 ? a_.Stem() : i % 3 == 1 ? b_.Stem() : missing_);
    if (i % 2 == 0) AdoptLoad();  // the others are replaced as they run
  }
  AdoptLoad();
  done = true;
  for (std::future<void>& reader : readers) reader.get();
  EXPECT_EQ(0, torn);
  EXPECT_EQ(std::vector(11, box_), platform_.TakeMessageBoxes());
}

TEST_F(Browser, ReportsOnceToSeveralThreadsThatWait) {
  const auto wait = [this] {
    while (browser_->HasLoader()) browser_->Think(10);
  };
  for (int i = 0; i < 200; ++i) {
    std::unique_lock gate(gate_);
    Init(missing_);
    auto other = std::async(std::launch::async, wait);
    gate.unlock();
    wait();
    other.get();
    EXPECT_THAT(platform_.TakeMessageBoxes(), ElementsAre(box_));
  }
}

// A message box is open for long, and what goes on behind it may start the next load.
TEST_F(Browser, KeepsTheTextOfAnOpenMessageBox) {
  static decltype(this) test;
  static std::string shown;
  test = this;
  platform::overrides.message_box = [](const char* text, const char* caption, unsigned style) {
    EXPECT_EQ(0x40U, style);
    test->Init(test->a_.Stem());
    EXPECT_TRUE(Eventually([] { return test->State() == "loading, A0"; }));
    shown = "["s + caption + "] " + text;
  };
  Load(missing_);
  EXPECT_EQ(box_, shown);
}

using Loader = Browser;

TEST_F(Loader, IsStoppedAndAwaitedByItsEnd) {
  CEPGLoaderThread ended(*browser_, b_.Name());
  ended.StartLoad();
  EXPECT_TRUE(Eventually([&] { return ended.Ended(); }));
  ended.StopAndWait();
  EXPECT_FALSE(ended.Ended() || ended.CheckStop());
  auto loader = std::make_unique<CEPGLoaderThread>(*browser_, a_.Name());
  const ORVANE::MTHREAD& thread = *loader;
  std::unique_lock gate(gate_);
  loader->StartLoad();
  auto end = std::async(std::launch::async, [&] { loader.reset(); });
  EXPECT_TRUE(Eventually([&] { return thread.MTHREAD::CheckStop(); }));
  EXPECT_EQ(std::future_status::timeout, end.wait_for(20ms));
  gate.unlock();
  end.get();
  EXPECT_EQ("idle, A0", State());
}

}  // namespace
