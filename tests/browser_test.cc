#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "browser/epg_browser.h"
#include "browser/epg_loader_thread.h"
#include "host/mlog.h"
#include "tests/support/test_support.h"

namespace {

using epg_test::TempFile;
using ORVANE::MSTR;
using std::chrono_literals::operator""ms;
using testing::ElementsAre;
using testing::IsEmpty;

template <typename Condition>
bool Eventually(Condition condition) {
  for (int i = 0; i < 20'000 && !condition(); ++i) std::this_thread::sleep_for(1ms);
  return condition();
}

// While it is closed, holds a load at its first log entry.
class LogGate {
 public:
  LogGate() {
    ORVANE::MLog.SetSink([this](auto /*type*/, auto /*text*/) {
      std::unique_lock lock(mutex_);
      held_ = !open_;
      changed_.wait(lock, [this] { return open_; });
      held_ = false;
    });
  }
  LogGate(const LogGate&) = delete;
  LogGate& operator=(const LogGate&) = delete;
  ~LogGate() {
    Set(true);
    ORVANE::MLog.SetSink({});
  }

  void Open() { Set(true); }
  void Close() { Set(false); }
  bool HoldsALoad() {
    return Eventually([this] {
      const std::lock_guard lock(mutex_);
      return held_;
    });
  }

 private:
  void Set(bool open) {
    const std::lock_guard lock(mutex_);
    open_ = open;
    changed_.notify_all();
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  bool open_ = true;
  bool held_ = false;
};

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
  void Init(const std::string& name) {
    EXPECT_TRUE(browser_->InitSchedule("", "", std::string_view(name)));
  }
  void Load(const std::string& name) {
    Init(name);
    AdoptLoad();
  }
  void AdoptLoad() {
    EXPECT_TRUE(Eventually([this] {
      browser_->Think(10);
      return !browser_->HasLoader();
    }));
  }
  // Whether a load is under way, and the schedule's first station.
  std::string State() const {
    const auto schedule = browser_->Schedule();
    return std::string(browser_->HasLoader() ? "loading, " : "idle, ") +
           (schedule != nullptr ? schedule->GetStation(0)->key.Text() : "none");
  }
  std::string MissingBox() const {
    return "[Telvyn configuration error] Failed to open file \"" + missing_ + ".xml\".";
  }

  epg_test::FakePlatform platform_;
  const TempFile a_{Listings("A", 1)};
  const TempFile b_{Listings("B", 40)};
  const TempFile bad_{"<tv generator-info-name='XMLTV'><x/></y>"};
  const std::string missing_ = a_.Stem() + "%n%s.xml";
  LogGate gate_;
  std::unique_ptr<CEPGBrowser> browser_ = std::make_unique<CEPGBrowser>();
};

TEST_F(Browser, AdoptsALoadOnATickBehindItsEnd) {
  browser_->Think(10);
  EXPECT_EQ("idle, none", State());
  gate_.Close();
  Init(a_.Stem());
  ASSERT_TRUE(gate_.HoldsALoad());
  browser_->Think(10);
  EXPECT_EQ("loading, none", State());
  gate_.Open();
  EXPECT_TRUE(Eventually([this] { return State() == "loading, A0"; }));
  AdoptLoad();
  EXPECT_EQ("idle, A0", State());
  gate_.Close();
  Init(b_.Stem());
  ASSERT_TRUE(gate_.HoldsALoad());
  browser_->Think(10);
  EXPECT_EQ("loading, A0", State());
  gate_.Open();
  AdoptLoad();
  EXPECT_EQ("idle, B0", State());
  EXPECT_THAT(platform_.TakeMessageBoxes(), IsEmpty());
}

TEST_F(Browser, ReportsAFailedLoadOnce) {
  Load(a_.Stem());
  Init(missing_);
  EXPECT_TRUE(Eventually([this] { return State() == "loading, none"; }));
  EXPECT_THAT(platform_.TakeMessageBoxes(), IsEmpty());
  AdoptLoad();
  EXPECT_EQ("idle, none", State());
  browser_->Think(10);
  EXPECT_THAT(platform_.TakeMessageBoxes(), ElementsAre(MissingBox()));
  Load(bad_.Stem());
  EXPECT_THAT(platform_.TakeMessageBoxes(),
              ElementsAre("[Telvyn configuration error] Can't identify content, don't know how to "
                          "decode!"));
  Load(a_.Stem());
  EXPECT_EQ("idle, A0", State());
  EXPECT_THAT(platform_.TakeMessageBoxes(), IsEmpty());
}

TEST_F(Browser, AddsXmlToEveryName) {
  const TempFile file(Listings("X", 1), "listings.xml.xml");
  Load(file.Stem());
  EXPECT_EQ("idle, X0", State());
  Load(file.Path());
  EXPECT_EQ("idle, none", State());
}

TEST_F(Browser, StartsALoadBehindTheEndOfTheEarlierOne) {
  for (const bool good_first : {true, false}) {
    gate_.Close();
    Init(good_first ? a_.Stem() : missing_);
    ASSERT_TRUE(gate_.HoldsALoad());
    auto second = std::async(std::launch::async, [&] { Init(good_first ? missing_ : a_.Stem()); });
    EXPECT_EQ(std::future_status::timeout, second.wait_for(20ms));
    gate_.Open();
    second.get();
    AdoptLoad();
    EXPECT_EQ(good_first ? "idle, none" : "idle, A0", State());
    const std::vector<std::string> boxes(good_first ? 1 : 0, MissingBox());
    EXPECT_EQ(boxes, platform_.TakeMessageBoxes());
  }
}

TEST_F(Browser, WaitsForItsLoadBeforeItGoes) {
  gate_.Close();
  Init(missing_);
  ASSERT_TRUE(gate_.HoldsALoad());
  auto end = std::async(std::launch::async, [&] { browser_.reset(); });
  EXPECT_EQ(std::future_status::timeout, end.wait_for(20ms));
  gate_.Open();
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
  EXPECT_EQ(std::vector<std::string>(11, MissingBox()), platform_.TakeMessageBoxes());
}

TEST_F(Browser, ReportsOnceToSeveralThreadsThatWait) {
  for (int i = 0; i < 20; ++i) {
    Init(missing_);
    auto other = std::async(std::launch::async, [this] { AdoptLoad(); });
    AdoptLoad();
    other.get();
    EXPECT_THAT(platform_.TakeMessageBoxes(), ElementsAre(MissingBox()));
  }
}

using Loader = Browser;

TEST_F(Loader, TellsTheImportToStop) {
  CEPGLoaderThread loader(*browser_, a_.Name());
  EXPECT_TRUE(loader.SetProgress(12));
  loader.Stop();
  EXPECT_FALSE(loader.SetProgress(12));
  EXPECT_EQ(0, loader.Position());
}

TEST_F(Loader, IsTheIndicatorOfItsImport) {
  CEPGLoaderThread loader(*browser_, b_.Name());
  loader.Start();
  EXPECT_TRUE(Eventually([&] { return !loader.Active(); }));
  EXPECT_EQ(Listings("B", 40).size(), static_cast<std::size_t>(loader.Range()));
  EXPECT_EQ(loader.Range(), loader.Position());
}

TEST_F(Loader, IsStoppedAndAwaitedByItsEnd) {
  auto loader = std::make_unique<CEPGLoaderThread>(*browser_, a_.Name());
  const ORVANE::MTHREAD& thread = *loader;
  gate_.Close();
  loader->Start();
  ASSERT_TRUE(gate_.HoldsALoad());
  auto end = std::async(std::launch::async, [&] { loader.reset(); });
  EXPECT_TRUE(Eventually([&] { return thread.MTHREAD::CheckStop(); }));
  EXPECT_EQ(std::future_status::timeout, end.wait_for(20ms));
  gate_.Open();
  end.get();
  EXPECT_EQ("idle, A0", State());
}

TEST(ProgressIndicator, KeepsPositionAndRange) {
  class Indicator final : public CProgressIndicator {
  } indicator;
  EXPECT_TRUE(indicator.SetProgress(12));
  EXPECT_EQ(12, indicator.Position());
  indicator.SetRange(5000);
  EXPECT_EQ(12, indicator.Position());
  indicator.SetComplete();
  EXPECT_EQ(5000, indicator.Position());
}

}  // namespace
