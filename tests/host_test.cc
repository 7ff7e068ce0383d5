// The engine stand-in, as far as the plug-in builds on it.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <random>
#include <semaphore>
#include <set>
#include <stdexcept>

#include "host/engine.h"
#include "host/mstrm.h"
#include "host/mthread.h"
#include "tests/support/test_support.h"

namespace {

using namespace ORVANE;
using namespace std::literals;
using epg_test::TempFile;
using testing::ElementsAre;

TEST(Mstr, TakesPartsOfItself) {
  for (std::size_t size = 0; size <= 20; ++size) {
    const std::string whole = "abcdefghijklmnopqrst"s.substr(0, size),
                      part = whole.substr(size / 3);
    MSTR text(whole);
    text.Append(text.View().substr(size / 3));
    EXPECT_EQ(whole + part, text.View());
    text.Assign(text.View().substr(size / 3));
    EXPECT_STREQ((part + part).c_str(), text.Text());
    text = "";
    EXPECT_EQ(MSTR().Text(), text.Text());  // empty ones share storage
  }
  for (const std::size_t length : {255u, 256u, 5000u}) {  // output of 512 bytes is long
    const std::string half(length, 'x');
    MSTR text(half);
    text.Format("%s%s", text.Text(), text.Text());
    EXPECT_EQ(half + half, text.View());
  }
}

TEST(Mstr, ReplacesLeftToRightWithoutRescanning) {
  const std::string_view rows[][4] = {{"aXbX", "X", "long", "alongblong"},
                                      {"aaaaa", "aa", "a", "aaa"},
                                      {"XX", "X", "", ""},
                                      {"abc", "", "x", "abc"},
                                      {"a\0b\0"sv, "\0"sv, "--", "a--b--"}};
  for (const auto& [before, from, to, after] : rows) {
    MSTR text(before);
    text.Replace(from, to);
    EXPECT_EQ(after, text.View());
    EXPECT_EQ(after.substr(0, 3), text.Left(3).View());
  }
}

TEST(Mstr, SumsOfIdsStayApart) {
  std::set<std::uint32_t> sums;
  for (int i = 0; i < 90'000; ++i) {
    MSTR station("channel-");  // put together, its storage differs from a copy's
    station += std::to_string(100 + i % 300);
    ASSERT_EQ(MSTR(station).Id(), station.Id());
    sums.insert(MSTR("Programme title " + std::to_string(100 + i / 300)).Id() + station.Id());
  }
  EXPECT_GE(sums.size(), 90'000u - 8);  // chance alone makes about one meet another
  EXPECT_NE(MSTR("a").Id(), MSTR("a\0"sv).Id());
}

// An element as "name@attribute=value{text, then children}".
std::string Dump(const MXML::NODE& node) {
  std::string text(node.name.View());
  for (const auto* each = node.first_attribute; each != nullptr; each = each->next) {
    text.append("@").append(each->name.View()).append("=").append(each->value.View());
  }
  text.append("{").append(node.value.View());
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
      {"<r>&lt;&#65;&#x20aC;&no;&#0;& ;<![CDATA[<b>&lt;]]]></r>", "{r{<A€&no;&#0;& ;<b>&lt;]}}"},
      {"<r>\0\xff</r>"s, "{r{\0\xff}}"s},
      {whole, "{r@a=1{b{<x}c{}}}"}};
  for (const char* malformed :
       {"<r></q>", "<a><b></a></b>", "<r/><r/>", "</r>", "<r/>x", "<r a/>", "<r a='<'/>"}) {
    rows.emplace_back(malformed, "{}");
  }
  for (std::size_t end = 0; end < whole.size(); ++end)
    rows.emplace_back(whole.substr(0, end), "{}");
  MXML document;
  for (const auto& [text, dump] : rows) {
    document.Load(TempFile(text).Name());
    EXPECT_EQ(dump, Dump(document.Root())) << text;
    EXPECT_EQ(dump == "{}" ? "" : text, document.LoadedText().View());
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

TEST(Mstrm, StepsBackAcrossItsWindow) {
  std::minstd_rand random;
  std::string content = "one\n\ntwo"s + '\0';
  while (content.size() < 70'000) content += static_cast<char>('a' + random() % 26);
  const TempFile file(content);
  MSTRM stream;
  ASSERT_TRUE(stream.Open(file.Name(), true, false, true));
  MSTR texts[4];
  EXPECT_TRUE(stream.ReadLine(texts[0]) && stream.ReadLine(texts[1]));
  EXPECT_TRUE(stream.ReadString(texts[2]));
  std::string read(70'001, '-');
  for (int at = 65'500; at < 65'560; ++at) {
    for (const int back : {2, 15, 16, 17, 40}) {
      ASSERT_TRUE(stream.Seek(0, MBUFFER::SEEK::Start) && stream.Read(read.data(), at) == at);
      ASSERT_TRUE(stream.Seek(-back, MBUFFER::SEEK::Current));
      ASSERT_EQ(70'000 - at + back, stream.Read(read.data() + at - back, 70'000)) << at;
      ASSERT_EQ(content + '-', read) << at << " - " << back;
    }
  }
  EXPECT_FALSE(stream.ReadLine(texts[3]));
  EXPECT_THAT(texts, ElementsAre("one"sv, ""sv, "two"sv, ""sv));
  EXPECT_TRUE(stream.Seek(0, MBUFFER::SEEK::Start) && stream.Seek(0, MBUFFER::SEEK::End));
  EXPECT_EQ(70'000, stream.Position());
}

TEST(Mstrm, OpensRegularFilesOnly) {
  const TempFile file("x");
  ASSERT_EQ(0, ::mkfifo((file.Path() + ".fifo").c_str(), 0600));
  MSTRM stream;
  for (const std::string& path : {file.Path() + ".fifo", "/tmp"s, file.Path() + ".missing"}) {
    ASSERT_TRUE(stream.Open(file.Name(), true, false, true));
    EXPECT_FALSE(stream.Open(path.c_str(), true, false, true)) << path;
    EXPECT_EQ(-1, stream.ReadByte()) << "of the file before";
  }
}

TEST(References, ReadNullOnceTheirObjectIsGone) {
  ENTITY::MSS bound, copy;
  {
    ENTITY entity, other;
    MSSINTEGER number;
    EXPECT_TRUE(bound.IsNull() && Bind(bound, &other) && Bind(bound, &entity));
    EXPECT_TRUE(copy.Copy(&bound) && copy.Copy(&copy) && Bind(bound, &other));
    EXPECT_FALSE(copy.Copy(&number) || Bind(number, &other));
    EXPECT_EQ(&entity, copy.entity.Get());
  }
  EXPECT_TRUE(bound.IsNull() && copy.IsNull());
}

TEST(Threads, AreActiveUntilRunHasReturnedOrThrown) {
  struct Worker final : MTHREAD {
    Worker() : MTHREAD(0) {}
    void Run() override {
      begun.release();
      gate.acquire();
      if (CheckStop()) throw std::runtime_error("no %s disk");
    }
    std::binary_semaphore begun{0}, gate{0};
  };
  epg_test::LogCapture log;
  for (const bool stopped : {false, true}) {
    Worker worker;
    worker.Start();
    if (stopped) worker.Stop();
    worker.begun.acquire();
    EXPECT_TRUE(worker.Active());
    worker.gate.release();
    while (worker.Active()) std::this_thread::yield();
  }
  EXPECT_THAT(log.Take(), ElementsAre("error: A thread ended by an exception: no %s disk"));
}

}  // namespace
