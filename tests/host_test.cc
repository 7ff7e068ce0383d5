// The engine stand-in, as far as the plug-in builds on it.
#include <gtest/gtest.h>

#include <filesystem>
#include <future>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include "host/engine.h"
#include "host/mstrm.h"
#include "host/mthread.h"
#include "tests/support/test_support.h"
#include "text/counted_text.h"

namespace {

using namespace ORVANE;
using namespace std::literals;
using epg_test::TempFile;

TEST(Mstr, TakesPartsOfItself) {
  for (std::size_t size = 0; size <= 600; ++size) {  // output of 512 bytes is long
    const std::string whole = std::string(size / 2, 'a') + std::string(size - size / 2, 'b');
    const std::string part = whole.substr(size / 3);
    MSTR text(whole.c_str());
    text += text.text + size / 3;
    EXPECT_EQ(whole + part, ViewOf(text));
    text = text.text + size / 3;
    EXPECT_EQ(part + part, text.text);
    text.Format("%s%s", text.text + part.size(), text.text);
    EXPECT_EQ(part + part + part, ViewOf(text));
    text.Format("%s", whole.c_str());
    EXPECT_EQ(whole, ViewOf(text));
  }
}

TEST(Mstr, SumsOfIdsStayApart) {
  std::set<std::uint32_t> sums;
  for (int i = 0; i < 90'000; ++i) {
    MSTR station("channel-");  // put together, its storage differs from a copy's
    station += std::to_string(100 + i % 300).c_str();
    ASSERT_EQ(MSTR(station).Id(), station.Id());
    sums.insert(MSTR(("Programme title " + std::to_string(100 + i / 300)).c_str()).Id() +
                station.Id());
  }
  EXPECT_GE(sums.size(), 90'000u - 8);  // chance alone makes about one meet another
  for (std::string text = "a"; text.size() <= 40; text += 'a') {
    const std::uint32_t id = MSTR(text.c_str()).Id();
    text.back() = 'b';
    EXPECT_NE(id, MSTR(text.c_str()).Id()) << text;
  }
}

// An element as "name@attribute=value{text, then children}".
std::string Dump(const MXML::NODE& node) {
  std::string text(ViewOf(node.name));
  for (const auto* each = node.first_attribute; each != nullptr; each = each->next) {
    text.append("@").append(ViewOf(each->name)).append("=").append(ViewOf(each->value));
  }
  text.append("{").append(ViewOf(node.value));
  for (auto* each = node.first_child; each != nullptr; each = each->next_sibling)
    text += Dump(*each);
  return text + '}';
}

TEST(Mxml, KeepsTextsAsTheyStandAndNothingOfAMalformedDocument) {
  const auto whole = "<!DOCTYPE r [<!-- ' -->]><r a=\"1\"><b>&lt;<![CDATA[x]]></b><c/></r>"s;
  std::vector<std::pair<std::string, std::string>> rows = {
      {"\xef\xbb\xbf<?x?><!-- <a> --><!DOCTYPE r [<!ENTITY x \"]>\">]><r/>\n", "{r{}}"},
      {"<r a='x \"y\"'\n\tb = \"&apos;>\" a='2'></r >", "{r@a=x \"y\"@b='>@a=2{}}"},
      {"<r> x\r\n<b>y</b> z<c/><!-- <d> --><?e f?> </r>", "{r{ x\r\n z b{y}c{}}}"},
      {"<r>&lt;&#65;&#x20aC;&#xFf;&#128512;&#x110000;&no;&#0;& ;<![CDATA[<b>&lt;]]]></r>",
       "{r{<A€ÿ😀&#x110000;&no;&#0;& ;<b>&lt;]}}"},
      {"<r>\0\xff</r>"s, "{r{\0\xff}}"s},
      {whole, "{r@a=1{b{<x}c{}}}"}};
  for (const char* malformed : {"<r></q>", "<r><!x></!x></r>", "<a><b></a></b>", "<r/><r/>", "</r>",
                                "<r/>x", "<r/><!DOCTYPE r>", "<r a/>", "<r a='<'/>"}) {
    rows.emplace_back(malformed, "{}");
  }
  for (std::size_t end = 0; end < whole.size(); ++end)
    rows.emplace_back(whole.substr(0, end), "{}");
  MXML document;
  for (const auto& [text, dump] : rows) {
    document.Load(TempFile(text).Name());
    EXPECT_EQ(dump, Dump(document.Root())) << text;
    EXPECT_EQ(dump == "{}" ? "" : text, ViewOf(document.LoadedText()));
  }
}

TEST(Mxml, FindsChildrenBeforeDeeperNodes) {
  std::string opened, closed;
  for (int depth = 0; depth < 1'000'000; ++depth) opened += "<d>", closed += "</d>";
  const TempFile file("<r><a><x n=' -1 kg'/><y n='2' n='9'/></a><x n='5000000000'/>" + opened +
                      "<b/>" + closed + "</r>");
  MXML document;
  document.Load(file.Name());
  const std::tuple<const char*, const char*, int> rows[] = {
      {"r", "x", 705032704}, {"r", "y", 2}, {"a", "x", -1}, {"r", "b", 99}, {"a", "b", 0}};
  for (const auto& [under, name, number] : rows) {
    const MXML::NODE* const node = document.Root().FindNode(under)->FindNode(name);
    EXPECT_EQ(number, node != nullptr ? node->GetAttributeAsInt("n", 99) : 0) << under << name;
  }
}

TEST(Mstrm, OpensRegularFilesAndStepsBackAcrossItsWindow) {
  std::string content;
  while (content.size() < 70'000) content += static_cast<char>(content.size() % 251);
  const TempFile file(content);
  const std::string folder = std::filesystem::temp_directory_path().string();
  MSTRM stream;
  for (const std::string& path : {folder, file.Path() + ".missing", std::string(40'000, 'x')})
    EXPECT_FALSE(stream.Open(path.c_str(), true, false, true)) << path;
  ASSERT_TRUE(stream.Open(file.Name(), true, false, true));
  std::string read(70'001, '-');
  for (int at = 65'500; at < 65'560; ++at) {
    for (const int back : {2, 15, 16, 17, 40}) {
      ASSERT_TRUE(stream.Seek(0, MBUFFER::SEEK::Start) && stream.Read(read.data(), at) == at);
      ASSERT_TRUE(stream.Seek(-back, MBUFFER::SEEK::Current));
      ASSERT_EQ(70'000 - at + back, stream.Read(read.data() + at - back, 70'000)) << at;
      ASSERT_EQ(content + '-', read) << at << " - " << back;
    }
  }
}

TEST(Threads, AreActiveUntilRunHasThrownAndTheirLogIsWritten) {
  static constexpr std::size_t kEntries = 30'000;  // more than may wait for the sink
  struct Worker final : MTHREAD {
    Worker() : MTHREAD(0) {}
    void Run() override {
      begun.set_value();
      gate.get_future().wait();
      for (std::size_t i = 0; i < kEntries; ++i) ORVANE::MLog.Log("%s", Entry(i).c_str());
      if (CheckStop()) throw std::runtime_error("no %s disk");
    }
    // Some are as long as what a log keeps on the stack.
    static std::string Entry(std::size_t i) {
      return std::to_string(i) + std::string(i % 300, '-');
    }
    std::promise<void> begun, gate;
  };
  epg_test::LogCapture log;
  Worker worker;
  worker.Start();
  worker.Stop();
  worker.begun.get_future().wait();
  EXPECT_TRUE(worker.Active());
  worker.gate.set_value();
  while (worker.Active()) std::this_thread::yield();
  const std::vector<std::string> entries = log.Take();
  ASSERT_EQ(kEntries + 1, entries.size());
  for (std::size_t i = 0; i < kEntries; ++i) ASSERT_EQ("log: " + Worker::Entry(i), entries[i]);
  EXPECT_EQ("error: A thread ended by an exception: no %s disk", entries.back());
}

TEST(Threads, LogOnWhenASinkThrows) {
  struct Worker final : MTHREAD {
    Worker() : MTHREAD(0) {}
    void Run() override {
      for (int i = 0; i < 200; ++i) ORVANE::MLog.Log("%i", i);
    }
  };
  int entries = 0;
  SetLogSink([&entries](auto, std::string_view text) {
    if (text == "100") throw std::bad_alloc();
    ++entries;
  });
  Worker worker;
  worker.Start();
  while (worker.Active()) std::this_thread::yield();
  SetLogSink({});
  EXPECT_EQ(199, entries);
}

// What the engine has said of its guest, in a build that checks it.
std::vector<std::string> faults;

// A guest's method: what it does with the call is the test's.
void (*misuse)(MSSEXEC& call) = nullptr;
MSSEXEC* last_call = nullptr;

TEST(Guests, AreToldTheCallThatBreaksTheContract) {
  if (!ChecksGuests()) GTEST_SKIP() << "a release build checks nothing";
  struct Module final : MSSMODULE {
    Module() {
      SetName("MISUSER");
      AddMethod("Misuse", 1, 1, 3, [](MSSEXEC* call) { return misuse(*(last_call = call)), true; });
    }
  } module;
  struct Worker final : MTHREAD {
    Worker() : MTHREAD(0) {}
    ~Worker() override {
      while (Active()) std::this_thread::yield();
    }
    void Run() override {}
  };
  const std::tuple<void (*)(MSSEXEC&), std::vector<std::string>> rows[] = {
      {[](MSSEXEC& call) { call.Push(MSSINTEGER::Allocate()); }, {}},
      {[](MSSEXEC& call) {
         call.Push(MSSINTEGER::Allocate());
         call.Push(MSSINTEGER::Allocate());
       },
       {"MSSEXEC::Push: a result is pushed twice"}},
      {[](MSSEXEC& call) { std::thread([&call] { call.LogCallers(); }).join(); },
       {"MSSEXEC::LogCallers: the call is used by another thread than its method's"}},
      {[](MSSEXEC&) {
         Worker worker;
         worker.Start();
         while (worker.Active()) std::this_thread::yield();
         worker.Start();
       },
       {"MTHREAD::Start: the thread has been started before"}},
      {[](MSSEXEC&) { MSSINTEGER().SubRef(); },
       {"MREFOBJ::SubRef: a reference is dropped that was never taken"}},
  };
  SetFaultHandler([](const char* call, const char* fault) {
    faults.push_back(std::string(call) + ": " + fault);
  });
  MSSINTEGER self;
  for (const auto& [act, said] : rows) {
    CALL each(&self, "line");
    misuse = act;
    EXPECT_TRUE(each.Run("MISUSER", "Misuse"));
    EXPECT_EQ(said, std::exchange(faults, {}));
    last_call->LogCallers();
    EXPECT_EQ(1u, std::exchange(faults, {}).size());  // it is over
  }
  SetFaultHandler(nullptr);
}

}  // namespace
