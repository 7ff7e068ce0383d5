// The engine stand-in, as far as the plug-in builds on it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <optional>
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
  MSTR text("abcdef");
  text.Assign(text.View().substr(1, 4));
  text.Append(text.View().substr(2));  // into the room of the longer text
  std::string expected = "bcdede";
  for (; expected.size() < 2000; expected += expected) text += text;  // outgrows its storage
  EXPECT_EQ(expected, text.View());
  const std::string side(255, 'x');
  for (const std::string& middle : {"-"s, "--"s, "---"s, std::string(5000, '-')}) {  // 511 bytes on
    text = side;
    text.Format("%s%s%s", text.Text(), middle.c_str(), text.Text());
    EXPECT_EQ(side + middle + side, text.View());
  }
}

std::string Replaced(MSTR text, std::string_view from, std::string_view to) {
  text.Replace(from, to);
  EXPECT_EQ(text.IsEmpty(), text.Text() == MSTR().Text()) << "empty ones share storage";
  EXPECT_EQ(text.View().substr(0, 3), text.Left(3).View());
  return std::string(text.View());
}

TEST(Mstr, ReplacesLeftToRightWithoutRescanning) {
  EXPECT_EQ("alongblong", Replaced("aXbX", "X", "long"));
  EXPECT_EQ("aaa", Replaced("aaaaa", "aa", "a"));
  EXPECT_EQ("", Replaced("XX", "X", ""));
  EXPECT_EQ("abc", Replaced("abc", "", "x"));
  EXPECT_EQ("a--b--", Replaced("a\0b\0"sv, "\0"sv, "--"));
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
      {"<r>&lt;&#65;&#x20aC;&no;&;& ;<![CDATA[<b>&lt;]]]></r>", "{r{<A€&no;&;& ;<b>&lt;]}}"},
      {"<r>\0\xff</r>"s, "{r{\0\xff}}"s},
      {whole, "{r@a=1{b{<x}c{}}}"}};
  for (const char* malformed : {"<r></q>", "<a><b></a></b>", "<r/><r/>", "</r>", "<r></r>x",
                                "<r a/>", "<r a=1/>", "<r a='<'/>"}) {
    rows.emplace_back(malformed, "{}");
  }
  for (std::size_t cut = 0; cut < whole.size(); ++cut)
    rows.emplace_back(whole.substr(0, cut), "{}");
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
  std::string content = "one\n\ntwo"s + '\0';
  for (int i = 0; i < 70'000; ++i) content += static_cast<char>('a' + i % 23);
  const TempFile file(content);
  MSTRM stream;
  ASSERT_TRUE(stream.Open(file.Name(), true, false, true));
  MSTR texts[4];
  EXPECT_TRUE(stream.ReadLine(texts[0]) && stream.ReadLine(texts[1]) &&
              stream.ReadString(texts[2]));
  for (std::size_t at = 9; at < content.size(); ++at) {
    ASSERT_EQ(content[at], stream.ReadByte()) << at;
    for (const int back : {2, 40}) {
      if (at < 65'500 || at > 65'600) break;
      char bytes[40];
      ASSERT_TRUE(stream.Seek(-back, MBUFFER::SEEK::Current) && stream.Read(bytes, back) == back);
      ASSERT_TRUE(std::string_view(content).substr(0, at + 1).ends_with({bytes, bytes + back}));
    }
  }
  EXPECT_FALSE(stream.ReadLine(texts[3]));
  EXPECT_THAT(texts, ElementsAre("one"sv, ""sv, "two"sv, ""sv));
  EXPECT_TRUE(stream.Seek(0, MBUFFER::SEEK::Start) && stream.Seek(0, MBUFFER::SEEK::End));
  EXPECT_EQ(70'009, stream.Position());
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

TEST(Registry, FindsTheLatestRecordThatIsLeft) {
  std::optional<MOBJ::SREC> first(std::in_place, "twice", []() -> MOBJ* { return new MMONOBJ; });
  std::optional<MOBJ::SREC> second(std::in_place, "twice", nullptr);
  EXPECT_EQ(&*second, MOBJ::SREC::Find("twice"));
  second.reset();
  EXPECT_EQ(&*first, MOBJ::SREC::Find("twice"));
  EXPECT_EQ(nullptr, CreateEntity("twice"));  // no entity, and freed again
  second.emplace("once", nullptr);
  first.reset();  // from behind another
  EXPECT_EQ(nullptr, MOBJ::SREC::Find("twice"));
}

TEST(References, CountAndReadNullOnceTheirObjectIsGone) {
  MREFOBJ one, two;
  MREFOBJREF holder(&one);
  {
    MREFOBJREF other(holder);
    holder = *&holder;
    EXPECT_EQ(2, one.RefCount());
    other = &two;
  }
  holder = nullptr;
  EXPECT_TRUE(one.RefCount() == 0 && two.RefCount() == 0);

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
    Worker() : MTHREAD(0) { gate.Enter(); }
    void Run() override {
      gate.Enter();
      gate.Leave();
      if (CheckStop()) throw std::runtime_error("no %s disk");
    }
    MUTEX gate;
  };
  epg_test::LogCapture log;
  for (const bool stopped : {false, true}) {
    Worker worker;
    worker.Start();
    if (stopped) worker.Stop();
    EXPECT_TRUE(worker.Active());
    worker.gate.Leave();
    while (worker.Active()) std::this_thread::yield();
  }
  EXPECT_THAT(log.Take(), ElementsAre("error: A thread ended by an exception: no %s disk"));
}

TEST(ScriptCall, GivesLocalsOfTheirOwnTypeAlone) {
  MSSINTEGER self;
  MSSEXEC call(&self, "");
  call.AddArgument(-7);
  call.AddArgument("text");
  std::int32_t number = 99;
  const MSTR* text = nullptr;
  for (const int index : {-1, 2, 3}) EXPECT_FALSE(call.GetLocalInt(index, number)) << index;
  for (const int index : {-1, 0, 1, 3}) EXPECT_FALSE(call.GetLocalString(index, text)) << index;
  EXPECT_TRUE(number == 99 && text == nullptr && call.GetLocal(0) == &self);
  EXPECT_TRUE(call.GetLocalInt(1, number) && number == -7);
  EXPECT_TRUE(call.GetLocalString(2, text) && *text == "text");
}

}  // namespace
