// The reader of listings files, by the habits that files are written for.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "tests/support/test_support.h"
#include "text/counted_text.h"
#include "text/entities.h"
#include "xml/marks.h"
#include "xml/simple_xml_reader.h"

namespace {

using namespace std::literals;
using epg_test::TempFile;

// A node as "name@attribute:value{text}(children)", with empty parts left out.
std::string Dump(const ORVANE::MXML::NODE& node) {
  std::string text(ViewOf(node.name)), children;
  for (const auto* each = node.first_attribute; each != nullptr; each = each->next) {
    text.append("@").append(ViewOf(each->name)).append(":").append(ViewOf(each->value));
  }
  for (const auto* each = node.first_child; each != nullptr; each = each->next_sibling) {
    children += (children.empty() ? "" : " ") + Dump(*each);
  }
  if (node.value.length != 0) text.append("{").append(ViewOf(node.value)).append("}");
  return children.empty() ? text : text + '(' + children + ')';
}

// The same of elements.
std::string Dump(CSimpleXMLReader& reader, CElementRange elements) {
  std::string text;
  for (const CElement& element : elements) {
    CSafeNode node;
    reader.ParseTag(node, element.tag);
    EXPECT_EQ(ViewOf(node.name), element.name);
    for (const auto* each = node.first_attribute; each != nullptr; each = each->next) {
      EXPECT_EQ(AttributeValue(node, ViewOf(each->name)),
                AttributeValue(element, ViewOf(each->name)));
    }
    text.append(text.empty() ? "" : " ").append(Dump(node));
    if (!element.value.empty()) text.append("{").append(element.value).append("}");
    const std::string children = Dump(reader, ChildrenOf(element));
    if (!children.empty()) text.append("(").append(children).append(")");
  }
  return text;
}

// "!" when a read failed; "/" for an end tag, "+" for an open element, "-" for any other unit.
std::string Marks(bool result, bool open, bool end_tag) {
  return (result ? ""s : "!"s) + (end_tag ? '/' : open ? '+' : '-');
}

std::string Read(CSimpleXMLReader& reader, CSafeNode& node) {
  bool open = false, end_tag = true;
  const bool result = reader.ReadElement(node, open, end_tag);
  return Marks(result, open, end_tag) + Dump(node);
}

// Every unit up to the one that fails.
std::string Units(std::string_view bytes) {
  const TempFile file(bytes);
  CSimpleXMLReader reader;
  EXPECT_TRUE(reader.Open(file.Name(), true, false, true));
  for (std::string units;; units += ' ') {
    CSafeNode node;
    const std::string unit = Read(reader, node);
    units += unit;
    if (unit[0] == '!') return units;
  }
}

TEST(ReadElement, KeepsItsHabits) {
  const std::pair<std::string_view, std::string_view> rows[] = {
      {"x<a b='1'", "!+"},
      {"<a>&AMP;&lt;&Gt;&quot;&apos;&nbsp;&#65;&;&amps;</a>", "-a{&<>\"'} !+"},
      {"<a>x & y</a>; z</a>", "-a{x  z} !+"},  // swallowed up to the ';'
      {"<a> \"x' > /y\r\n</a>", "-a{ \"x' > /y\r\n} !+"},
      {"<a>\0\xff</a>"sv, "-a{\0\xff} !+"sv},
      {"<a>v<b/>lost</a>\n<c></c>", "+a{v} -b /a -c !+"},
      {"<a>x</a >", "!-a{x}"},
      {"<a>x<!-- c --></a>", "!-a{x}"},
      {"<a><b/><!-- \"c' / & > ; d --><c/></a >", "+a -b - -c /a@: !+"},
      {"<?xml version='1.0'?><!DOCTYPE a [<!ELEMENT b>]><a/>", "- - -a !+"},
      {"<!-- <b> --><c/>", "- +b{ -->} -c !+"},  // nothing but '>' was to be skipped to
      {"<a b='c d'/><a b=c/>", "-a@b:c d -a@b:c !+"},
      {"<a b = \"c\" />", "-a@b:@:c@: !+"},
      {"<a  b='c'/>", "-a@:b@'c': !+"},
      {"<a b='1'\tc='2'\n/>", "-a@b:1\tc@'2'\n: !+"},
      {"<a\nb='1'/>", "-a\nb@'1': !+"},
      {"<a b='x>y'/>", "!+a@b:x"},
      {"<a b='x>y</a>", "!+a@b:x{y}"},  // still in quotes, so that its '/' is kept
      {"<a b='x/y'>z</a>", "-a@b:x/y{z} !+"},
      {"<a b=\"it's x\"/>", "!+a@b:its@x\"/:"},
      {"<a b=\"it&apos;s x\" c='1'/>", "-a@b:its@x\" c='1': !+"},
      {"<a&lt;b c='&gt;&nbsp;'/>", "-a<b@c:> !+"},
      {"<a/b>x</a>", "-ab /a !+"},
      {"<a <b>x</b>", "+ -b{x} !+"},
      {"<<a>x</a><>y</>", "+ -a{x} -{y} !+"},
      {"</a b='c'><d a=''/>", "/a@b:c -d@a: !+"},
      {"<a>x", "!+a"},
      {"<a>x<", "!+a{x}"},
      {"<a>x</<a>", "-a{x} !+a"},
      {"<a>x</A>", "!-a{x}"},
      {"<>x<!>< /a></>", "-{x} -@a: / !+"},
      {"<a>&&amp;&quotx;&a\nmp;&amp</a>", "!+a"},
      {"<a>&&amp;&quotx;&l t;&gt;&amp;amp;</a>", "-a{>&amp;} !+"},
      {"<a>x<&amp;b/>", "+a{x} -&b !+"},
      {"<!-- ' / &quot; --><a!b ?c='d'/>", "- -a!b@?c:d !+"},
      {"<a b c='d=e'/>", "-a@b:c@'d=e': !+"},
      {"<a b='c'd=\"e\" f/>", "-a@b:cd@\"e\":f !+"},
      {"<a b<c='d'>x</a>", "+ !-c@'d':{x}"},
      {"<a b='&quot;c d'/>", "-a@b:c@d': !+"},
      {"<a b='c'>x</a><b c=d e>y<d></b>", "-a@b:c{x} +b@c:d@e:{y} !-d"}};
  for (const auto& [bytes, units] : rows) EXPECT_EQ(units, Units(bytes)) << bytes;
}

TEST(ReadElement, KeepsTextsOfAnyLengthAcrossTheStreamsWindow) {
  for (std::size_t before = 65'480; before < 65'540; ++before) {
    EXPECT_EQ("+a@b:c d{v&w} -e /a !+",
              Units(std::string(before, ' ') + "<a b=\"c d\">v&amp;w<e/></a>"));
  }
  for (const std::size_t length : {255u, 256u, 257u, 511u, 512u, 513u, 1024u, 1025u, 70'000u}) {
    ORVANE::MSTR bytes("<N b='N'>N&N;</N>"), units("-N@b:N{N} !+");
    for (ORVANE::MSTR* text : {&bytes, &units})
      text->Replace("N", std::string(length, 'n').c_str());
    EXPECT_EQ(ViewOf(units), Units(ViewOf(bytes)));
  }
}

// A walk of a whole file: what ends it, what the root then holds, and the unit that stands next.
// It is walked once more for elements, which must be those of the nodes.
std::string Walk(std::string_view bytes) {
  const TempFile file(bytes);
  CSimpleXMLReader reader;
  EXPECT_TRUE(reader.Open(file.Name(), true, false, true));
  CSafeNode root, next, before;
  Read(reader, before);  // the walk rewinds
  bool more = false;
  ORVANE::MSTR error;
  if (!reader.ReadRoot(root, more)) {
    error = more ? "no root but more" : "no root";
  } else if (reader.ReadChildren(root, error)) {
    error = "whole";
  }
  const std::string walk = Dump(root) + " | " + Read(reader, next);
  CSafeNode again;
  ORVANE::MSTR second_error;
  if (reader.ReadRoot(again, more)) {
    const bool whole = reader.ReadChildren(again.name, second_error);
    if (whole) {
      EXPECT_EQ(Dump(root), Dump(again) + '(' + Dump(reader, reader.Children()) + ')');
      second_error = "whole";
    }
    EXPECT_EQ(ViewOf(error), ViewOf(second_error));
    EXPECT_EQ(walk.substr(walk.rfind(" | ")), " | " + Read(reader, next));
  }
  return std::string(ViewOf(error)) + " | " + walk;
}

TEST(Walk, EndsWhereTheFileSays) {
  const std::pair<std::string_view, std::string_view> rows[] = {
      {"<?x?><!-- c --><b c='1'/> <r>v<b d='1'>t</b>lost<c><d/></c><!----></r><e/>",
       "whole | r{v}(b@d:1{t} c(d) ) | -e"},
      {"<b>t</b><r c=''><b/></r>", "whole | r@c:(b) | !+"},
      {"", "no root |  | !+"},
      {"<r a='1'>t</r>\n", "no root | r@a:1{t} | !+"},
      {"<r/><", "no root but more | r | !+"},
      {"<b a='1'/><r>t", "no root but more | r | !+"},
      {"<r>t</q><b/>", "no root but more | r{t} | -b"},
      {"<r><!-- c --><b/></r>", "no root but more | r | -b"},
      {"<r><b/><c><d/></q></r>", "<c> end tag is bad, found <q>. | r(b) | /r"},
      {"<r><b/></R><c/>", "<r> end tag is bad, found <R>. | r(b) | -c"},
      {"<%s><b/></ %n>", "<%s> end tag is bad, found <>. | %s(b) | !+"},
      {"<r><b/><c><d/></c><c><d/>", "Premature end of file. | r(b c(d)) | !+"},
      {"<r><b/><r>t</d></r>", "Premature end of file. | r(b) | /r"}};
  for (const auto& [bytes, walk] : rows) EXPECT_EQ(walk, Walk(bytes)) << bytes;
}

// Records of many lengths, some of them longer than the reader's window, so that it moves and grows
// at many places of a record.
TEST(Walk, GivesElementsThatStayWholeWhileTheReaderReadsOn) {
  std::string bytes = "<r>";
  std::vector<std::string> records;
  for (std::size_t i = 0; i < 600; ++i) {
    const std::string text((i * 7919) % 3000 + (i % 200 == 199 ? 400'000 : 0), 't');
    bytes.append("<p a='1'>\n<q b='2'>" + text + "</q><s/>");
    bytes.append("<u c='3'><w>&amp;" + text + "</w></u></p>");
    records.push_back("q@b:2{" + text + "} s u@c:3(w{&" + text + "})");
    if (text.empty()) records.back() = "q@b:2 s u@c:3(w{&})";
  }
  const TempFile file(bytes + "</r>");
  CSimpleXMLReader reader;
  ASSERT_TRUE(reader.Open(file.Name(), true, false, true));
  CSafeNode root;
  ASSERT_TRUE(reader.ReadRoot(root));
  for (const std::string& record : records) {
    CSafeNode node;
    ORVANE::MSTR error;
    ASSERT_EQ("+p@a:1{\n}", Read(reader, node));
    ASSERT_TRUE(reader.ReadChildren(node.name, error));
    ASSERT_EQ(record, Dump(reader, reader.Children()));
  }
}

TEST(Walk, GoesAMillionDeepAndPastALostAmpersand) {
  ORVANE::MSTR opened(std::string(1'000'000, 'o').c_str()), closed = opened;
  opened.Replace("o", "<a>");
  closed.Replace("o", "</a>");
  const TempFile file(std::string(ViewOf(opened)).append(ViewOf(closed)));
  CSimpleXMLReader reader;
  ASSERT_TRUE(reader.Open(file.Name(), true, false, true));
  CSafeNode root;
  ORVANE::MSTR error;
  EXPECT_TRUE(reader.ReadRoot(root) && reader.ReadChildren(root, error));
  int depth = 0;
  for (const ORVANE::MXML::NODE* node = &root; node != nullptr; node = node->first_child) ++depth;
  EXPECT_EQ(1'000'000, depth);
  EXPECT_TRUE(reader.ReadRoot(root) && reader.ReadChildren(root.name, error));
  EXPECT_EQ(999'999u, (*reader.Children().begin()).count);
  root.FreeChildren();
  EXPECT_EQ("Premature end of file. | a | !+", Walk(ViewOf(opened)));
  EXPECT_EQ("!+", Units(std::string("&").append(ViewOf(opened))));
}

TEST(Marks, AreFoundWhereverTheyStand) {
  using Marks = CMarks<'<', '&', '\xff', '\0'>;
  std::mt19937 random(1);
  std::string bytes(200 + kSearchOverrun, 'x');
  for (int round = 0; round < 2'000; ++round) {
    const char mark = "<&\xff"[random() % 4];  // the last one is NUL
    bytes[random() % bytes.size()] = random() % 3 == 0 ? static_cast<char>(random() % 256) : mark;
    if (round % 50 == 0) std::fill(bytes.begin(), bytes.end(), 'x');
    const char* const begin = bytes.data() + random() % 64;
    const char* const end = begin + random() % 136;
    ASSERT_EQ(Marks::FindPlain(begin, end), Marks::Find(begin, end));
    ASSERT_EQ(std::find_if(begin, end, [](char c) { return std::strchr("<&\xff", c) != nullptr; }),
              Marks::FindPlain(begin, end));
  }
}

TEST(XmlEscape, EscapesFiveCharacters) {
  EXPECT_EQ("&amp;amp; &lt;b c=&quot;&apos;&quot;&gt;\0\xe9\n"sv,
            XmlEscape("&amp; <b c=\"'\">\0\xe9\n"sv));
}

}  // namespace
