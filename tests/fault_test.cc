// What becomes of loads and calls when memory runs out, or a file's reads misbehave. Stands in for
// the C library's allocation and read; not built under a sanitizer, which does the same.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

#include "browser/epg_browser.h"
#include "host/engine.h"
#include "plugin/entry_points.h"
#include "tests/support/test_support.h"
#include "text/counted_text.h"

namespace {

std::atomic<long> allocations_left = -1;  // until one fails; negative: none does
std::atomic<long> live_blocks = 0;
std::atomic<long> reads_left = -1;                 // until one fails; negative: none does
std::atomic<std::size_t> longest_read = SIZE_MAX;  // a shorter one is first interrupted
std::atomic<bool> no_threads = false;
const ORVANE::MREFOBJ* watched = nullptr;
int watched_references = -1;  // when the last large block was freed

bool Fails(std::atomic<long>& left, int error) {
  if (left.load() < 0 || left.fetch_sub(1) != 0) return false;
  errno = error;
  return true;
}

}  // namespace

// Visible to the libraries too.
#pragma GCC visibility push(default)
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);

void* malloc(std::size_t size) {
  void* const block = Fails(allocations_left, ENOMEM) ? nullptr : __libc_malloc(size);
  if (block != nullptr) ++live_blocks;
  return block;
}
void* calloc(std::size_t count, std::size_t size) {
  void* const block = Fails(allocations_left, ENOMEM) ? nullptr : __libc_calloc(count, size);
  if (block != nullptr) ++live_blocks;
  return block;
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
  void* const block = Fails(allocations_left, ENOMEM) ? nullptr : __libc_memalign(alignment, size);
  if (block != nullptr) ++live_blocks;
  return block;
}
void* realloc(void* block, std::size_t size) {
  void* const moved = Fails(allocations_left, ENOMEM) ? nullptr : __libc_realloc(block, size);
  if (moved != nullptr && block == nullptr) ++live_blocks;
  return moved;
}
void free(void* block) {
  if (block != nullptr) --live_blocks;
  if (watched != nullptr && ::malloc_usable_size(block) > 10'000) {
    watched_references = watched->RefCount();
  }
  __libc_free(block);
}
ssize_t read(int file, void* buffer, std::size_t count) {
  static std::atomic<unsigned> short_reads = 0;
  if (Fails(reads_left, EIO)) return -1;
  if (longest_read != SIZE_MAX && short_reads++ % 2 == 0) {
    errno = EINTR;
    return -1;
  }
  return ::syscall(SYS_read, file, buffer, std::min(count, longest_read.load()));
}
int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                   void* argument) {
  static const auto create =
      reinterpret_cast<decltype(&pthread_create)>(::dlsym(RTLD_NEXT, "pthread_create"));
  return no_threads ? EAGAIN : create(thread, attributes, body, argument);
}
}
#pragma GCC visibility pop

namespace {

using ORVANE::MSTR;

// A small good file in each of the formats.
std::set<std::string> GoodFiles() {
  std::set<std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(EPG_LISTINGS_DIR)) {
    if (entry.path().extension() == ".xml") files.insert(entry.path().string());
  }
  return files;
}

// Loads a file; its status text, or "" when there is a schedule.
std::string Load(CEPGBrowser& browser, const std::string& path) {
  MSTR status;
  browser.LoadSchedule(MSTR(path.c_str()), status, nullptr);
  return browser.Schedule() == nullptr ? std::string(ViewOf(status)) : "";
}

constexpr const char* kUnknown = "Can't identify content, don't know how to decode!";

TEST(MemoryRunsOut, AtAnyAllocationOfALoad) {
  CEPGBrowser browser;
  for (const std::string& path : GoodFiles()) {
    SCOPED_TRACE(path);
    const MSTR name(path.c_str());
    ASSERT_EQ(Load(browser, path), "");
    const auto stations = browser.Schedule()->GetStationCount();
    int failed = 0;
    for (long n = 0;; ++n) {
      Load(browser, "/none");  // drops the schedule
      const long before = live_blocks;
      bool loaded = false;
      bool enough = false;
      {
        MSTR status;
        allocations_left = n;
        browser.LoadSchedule(name, status, nullptr);
        enough = allocations_left >= 0;
        allocations_left = -1;
        loaded = browser.Schedule() != nullptr;
        if (!loaded) {
          ++failed;
          EXPECT_TRUE(ViewOf(status) == "bad allocation" || ViewOf(status) == kUnknown ||
                      ViewOf(status).substr(0, 19) == "Failed to open file")
              << n << ": " << status.text;
        }
        Load(browser, "/none");
      }
      ASSERT_EQ(live_blocks, before) << "leaked at " << n;
      if (enough) {
        EXPECT_TRUE(loaded);
        break;
      }
    }
    RecordProperty(std::filesystem::path(path).stem().string(), failed);
    EXPECT_GT(failed, 20);
    EXPECT_EQ(Load(browser, path), "");
    EXPECT_EQ(browser.Schedule()->GetStationCount(), stations);
  }
}

// Stations with dates that lie millennia apart have time indexes of a hundred megabytes of address
// space each.
TEST(MemoryRunsOut, ForATimeIndex) {
  std::string listings = "<tv generator-info-name='XMLTV'>";
  for (const char* const id : {"a", "b", "c", "d", "e", "f"}) {
    listings += std::string("<channel id='") + id + "'/>";
    for (const char* const start : {"1601", "5600"}) {
      listings += std::string("<programme channel='") + id + "' start='" + start + "'/>";
    }
  }
  const epg_test::TempFile file(listings + "</tv>");
  CEPGBrowser browser;
  rlimit limit = {};
  ASSERT_EQ(::getrlimit(RLIMIT_AS, &limit), 0);
  std::ifstream statistics("/proc/self/statm");
  rlim_t pages_in_use = 0;
  ASSERT_TRUE(statistics >> pages_in_use);
  const rlimit tight = {pages_in_use * 4096 + (rlim_t{256} << 20), limit.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_AS, &tight), 0);
  EXPECT_EQ(Load(browser, file.Path()), "bad allocation");
  ASSERT_EQ(::setrlimit(RLIMIT_AS, &limit), 0);
  EXPECT_EQ(Load(browser, file.Path()), "");
}

TEST(MemoryRunsOut, AtAnyAllocationOfACall) {
  static char logged[256];
  const epg_test::TempFile file(
      "<tv generator-info-name='XMLTV'><channel id='a'/>"
      "<programme channel='a' start='2024'><title>A title that is long</title></programme></tv>");
  Initialise();
  {
    const auto browser = ORVANE::CreateEntity("CEPGBrowser");
    const auto instance = ORVANE::CreateInstance("EPGBROWSER");
    ORVANE::Bind(*instance, browser.get());
    ASSERT_EQ(Load(dynamic_cast<CEPGBrowser&>(*browser), file.Path()), "");
    ORVANE::SetLogSink([](ORVANE::ENTRY entry, std::string_view text) {
      if (entry == ORVANE::ENTRY::Error) logged[text.copy(logged, sizeof logged - 1)] = '\0';
    });
    bool enough = false;
    int failed = 0;
    for (long n = 0; !enough; ++n) {
      ORVANE::CALL call(instance.get(), "line");
      call.AddArgument(0);
      call.AddArgument(0);
      call.AddArgument("$Title, [$Combination($Title)] and so on");
      logged[0] = '\0';
      allocations_left = n;
      const bool done = call.Run("GetProgramData");
      enough = allocations_left >= 0;
      allocations_left = -1;
      if (!done) ++failed;
      EXPECT_STREQ(logged, done ? "" : "GetProgramData() : bad allocation");
    }
    EXPECT_GT(failed, 3);
    ORVANE::SetLogSink({});
  }
  Release();
}

TEST(MemoryRunsOut, AtAnyAllocationOfAnEntityAndItsLoad) {
  const epg_test::FakePlatform platform;  // keeps message boxes quiet
  Initialise();
  const MSTR none("none");
  int refused = 0;
  bool enough = false;
  for (long n = 0; !enough; ++n) {
    allocations_left = n;
    const auto entity = ORVANE::CreateEntity("CEPGBrowser");
    auto* const browser = dynamic_cast<CEPGBrowser*>(entity.get());
    if (browser == nullptr) ++refused;
    EXPECT_TRUE(browser == nullptr || browser->InitSchedule(none, none, none));
    enough = allocations_left >= 0;
    allocations_left = -1;
  }
  EXPECT_GT(refused, 1);
  Release();
}

TEST(Reads, MayBeShortOrInterruptedOrFail) {
  CEPGBrowser browser;
  for (const std::string& path : GoodFiles()) {
    SCOPED_TRACE(path);
    ASSERT_EQ(Load(browser, path), "");
    const auto statistics = browser.Schedule()->GetStatistics();
    for (const std::size_t length : {1U, 7U}) {
      longest_read = length;
      EXPECT_EQ(Load(browser, path), "");
      EXPECT_EQ(ViewOf(browser.Schedule()->GetStatistics()), ViewOf(statistics));
    }
    bool enough = false;
    for (long n = 0; !enough; ++n) {
      reads_left = n;
      const std::string status = Load(browser, path);
      enough = reads_left >= 0;
      reads_left = -1;
      EXPECT_TRUE(status.empty() || status == kUnknown) << status;
    }
    longest_read = SIZE_MAX;
  }
}

TEST(Threads, MayBeNoneForALoad) {
  epg_test::FakePlatform platform;
  CEPGBrowser browser;
  ASSERT_EQ(Load(browser, *GoodFiles().begin()), "");
  no_threads = true;
  EXPECT_TRUE(browser.InitSchedule("", "", "none"));
  no_threads = false;
  browser.Think(10);
  EXPECT_FALSE(browser.HasLoader() || browser.Schedule() != nullptr);
  const std::vector<std::string> boxes = platform.TakeMessageBoxes();
  EXPECT_TRUE(boxes.size() == 1 && boxes[0].find("thread") != std::string::npos);
}

TEST(Unloading, EmptiesTheModuleHolderBeforeThePool) {
  std::string error;
  auto plugin = ORVANE::PLUGIN::Load(EPG_MODULE, error);
  ASSERT_NE(plugin, nullptr) << error;
  plugin->Initialise();
  // The module outlives the library without a Release.
  watched = ORVANE::CreateInstance("EPGBROWSER").release()->Module();
  EXPECT_EQ(watched->RefCount(), 2);
  plugin.reset();
  EXPECT_EQ(watched_references, 0);
  watched = nullptr;
}

}  // namespace
