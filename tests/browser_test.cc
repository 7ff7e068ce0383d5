#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <chrono>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include "browser/epg_browser.h"
#include "browser/epg_loader_thread.h"
#include "host/mlog.h"
#include "platform/services.h"
#include "tests/support/test_support.h"

namespace {

using epg_test::TempFile;
using ORVANE::MSTR;
using std::string_literals::operator""s;
using std::chrono_literals::operator""ms;
using testing::ElementsAre;
using testing::IsEmpty;

template <typename Condition>
bool Eventually(Condition condition) {
  for (int i = 0; i < 20'000 && !condition(); ++i) std::this_thread::sleep_for(1ms);
  return condition();
}

// Listings of so many stations, with the given key in front of their number.
std::string Listings(const std::string& key, int stations) {
  std::string text = "<tv generator-info-name='XMLTV'>";
  for (int i = 0; i < stations; ++i) {
    text += "<channel id='" + key + std::to_string(i) + "'/>";
  }
  return text + "</tv>";
}

class Browser : public testing::Test {
 protected:
  Browser() {
    ORVANE::MLog.SetSink([this](auto, auto) { const std::lock_guard hold(gate_); });
  }
  ~Browser() override {
    browser_.reset();
    ORVANE::MLog.SetSink({});
  }

  void Init(const std::string& name) { browser_->InitSchedule("", "", std::string_view(name)); }
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
           (schedule != nullptr ? schedule->GetStation(0)->key.Text() : "none");
  }

  epg_test::FakePlatform platform_;
  const TempFile a_{Listings("A", 1)};
  const TempFile b_{Listings("B", 40)};
  const std::string missing_ = a_.Stem() + "%n%s.xml";
  const std::string box_ =
      "[Telvyn configuration error] Failed to open file \"" + missing_ + ".xml\".";
  std::mutex gate_;  // whoever holds it keeps a load from passing its first log entry
  std::unique_ptr<CEPGBrowser> browser_ = std::make_unique<CEPGBrowser>();
};

TEST_F(Browser, AdoptsALoadOnATickBehindItsEnd) {
  browser_->Think(10);
  EXPECT_EQ("idle, none", State());
  for (const auto& [file, before, after] : {std::tuple(&a_, "none", "A0"), {&b_, "A0", "B0"}}) {
    std::unique_lock gate(gate_);
    Init(file->Stem());
    browser_->Think(10);
    EXPECT_EQ("loading, "s + before, State());
    gate.unlock();
    const std::string loaded = after;
    EXPECT_TRUE(Eventually([&] { return State() == "loading, " + loaded; }));
    AdoptLoad();
    EXPECT_EQ("idle, " + loaded, State());
  }
  EXPECT_THAT(platform_.TakeMessageBoxes(), IsEmpty());
}

TEST_F(Browser, ReportsAFailedLoadOnce) {
  Load(a_.Stem());
  Init(missing_);
  EXPECT_TRUE(Eventually([this] { return State() == "loading, none"; }));
  EXPECT_THAT(platform_.TakeMessageBoxes(), IsEmpty());
  AdoptLoad();
  browser_->Think(10);
  EXPECT_EQ("idle, none", State());
  EXPECT_THAT(platform_.TakeMessageBoxes(), ElementsAre(box_));
  b_.Write("<tv generator-info-name='XMLTV'><x/></y>");
  Load(b_.Stem());
  EXPECT_THAT(platform_.TakeMessageBoxes(),
              ElementsAre("[Telvyn configuration error] Can't identify content, don't know how to "
                          "decode!"));
  Load(a_.Stem());
  EXPECT_EQ("idle, A0", State());
  EXPECT_THAT(platform_.TakeMessageBoxes(), IsEmpty());
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

TEST_F(Browser, WaitsForItsLoadBeforeItGoes) {
  std::unique_lock gate(gate_);
  Init(missing_);
  auto end = std::async(std::launch::async, [&] { browser_.reset(); });
  EXPECT_EQ(std::future_status::timeout, end.wait_for(20ms));
  gate.unlock();
  end.get();
  EXPECT_THAT(platform_.TakeMessageBoxes(), IsEmpty());
}

TEST_F(Browser, KeepsAReplacedScheduleForItsReaders) {
  Load(b_.Stem());
  auto reading = browser_->Schedule();
  const std::weak_ptr watched = reading;
  Load(missing_);
  ASSERT_EQ(40, reading->GetStationCount());
  EXPECT_EQ("B39", reading->GetStation(39)->key);
  reading.reset();
  EXPECT_TRUE(watched.expired());
}

TEST_F(Browser, ReplacesSchedulesUnderTheirReaders) {
  std::atomic<bool> done = false;
  std::atomic<int> torn = 0;
  std::vector<std::future<void>> readers;
  for (int i = 0; i < 3; ++i) {
    readers.push_back(std::async(std::launch::async, [&] {
      while (!done) {
        if (const auto schedule = browser_->Schedule(); schedule != nullptr) {
          const std::int32_t count = schedule->GetStationCount();
          const MSTR& last = schedule->GetStation(count - 1)->key;
          if (!(count == 1 && last == "A0") && !(count == 40 && last == "B39")) ++torn;
        }
        browser_->HasLoader();
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
  constexpr int kRounds = 200;
  std::barrier together(2);
  const auto wait = [&] {
    while (browser_->HasLoader()) browser_->Think(10);
    together.arrive_and_wait();
  };
  auto other = std::async(std::launch::async, [&] {
    for (int i = 0; i < kRounds; ++i) {
      together.arrive_and_wait();
      wait();
    }
  });
  for (int i = 0; i < kRounds; ++i) {
    std::unique_lock gate(gate_);
    Init(missing_);
    together.arrive_and_wait();
    gate.unlock();
    wait();
    EXPECT_THAT(platform_.TakeMessageBoxes(), ElementsAre(box_));
  }
}

// A message box is open for long, and what goes on behind it may start the next load.
TEST_F(Browser, KeepsTheTextOfAnOpenMessageBox) {
  static std::pair<CEPGBrowser*, std::string> next;
  static std::string shown;
  next = {browser_.get(), a_.Stem()};
  platform::overrides.message_box = [](const char* text, const char* caption, unsigned style) {
    EXPECT_EQ(0x40U, style);
    next.first->InitSchedule("", "", std::string_view(next.second));
    EXPECT_TRUE(Eventually([] { return next.first->Schedule() != nullptr; }));
    shown = "["s + caption + "] " + text;
  };
  Load(missing_);
  EXPECT_EQ(box_, shown);
  EXPECT_EQ("idle, A0", State());
}

using Loader = Browser;

TEST_F(Loader, TellsTheImportToStop) {
  CEPGLoaderThread loader(*browser_, a_.Name());
  EXPECT_TRUE(loader.SetProgress(12));
  loader.Stop();
  EXPECT_FALSE(loader.SetProgress(12));
  EXPECT_EQ(0, loader.Position());
}

TEST_F(Loader, IsStoppedAndAwaitedByItsEnd) {
  auto loader = std::make_unique<CEPGLoaderThread>(*browser_, a_.Name());
  const ORVANE::MTHREAD& thread = *loader;
  std::unique_lock gate(gate_);
  loader->Start();
  auto end = std::async(std::launch::async, [&] { loader.reset(); });
  EXPECT_TRUE(Eventually([&] { return thread.MTHREAD::CheckStop(); }));
  EXPECT_EQ(std::future_status::timeout, end.wait_for(20ms));
  gate.unlock();
  end.get();
  EXPECT_EQ("idle, A0", State());
}

}  // namespace
