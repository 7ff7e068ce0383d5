// The companion program: guides of all kinds go through it and the loaded plug-in.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <pugixml.hpp>
#include <string>
#include <vector>

#include "app/guide.h"
#include "app/session.h"
#include "tests/support/test_support.h"

namespace {

using epg_test::Outcome;
using epg_test::ReadFile;
using epg_test::TempFile;
using testing::HasSubstr;

// Runs a command line in which $E is the program.
Outcome RunCommand(const std::string& command) {
  return epg_test::RunCommand("export TZ=UTC E=" EPG_CACHE "; cd " EPG_SOURCE_DIR "; " + command);
}

// What the plug-in, loaded as a module, answers of a listings file.
class Loaded {
 public:
  explicit Loaded(const TempFile& listings) {
    std::string error;
    session_ = shell::Session::Open(EPG_MODULE, error);
    EXPECT_NE(session_, nullptr) << error;
    guide_ = std::make_unique<shell::Guide>(*session_);
    EXPECT_TRUE(guide_->Load(listings.Stem())) << ReadFile(listings.Path());
  }
  shell::Guide& operator*() { return *guide_; }
  shell::Guide* operator->() { return guide_.get(); }

 private:
  std::unique_ptr<shell::Session> session_;
  std::unique_ptr<shell::Guide> guide_;
};

std::string TextOf(const pugi::xml_node& node) {
  std::string text;
  for (const auto child : node.children()) {
    if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata)
      text += child.value();
  }
  return text;
}

// The texts of a programme's elements of that name, each once, empty ones left out.
std::string Joined(const pugi::xml_node& parent, const char* name) {
  std::vector<std::string> texts;
  for (const auto element : parent.children(name)) {
    const std::string text = TextOf(element);
    if (!text.empty() && std::find(texts.begin(), texts.end(), text) == texts.end())
      texts.push_back(text);
  }
  std::string joined;
  for (const auto& text : texts) joined += (joined.empty() ? "" : ", ") + text;
  return joined;
}

std::string FirstOf(const pugi::xml_node& parent, const char* name) {
  for (const auto element : parent.children(name)) {
    if (const std::string text = TextOf(element); !text.empty()) return text;
  }
  return "";
}

// Field by field what a template gives, from what a general parser sees.
std::map<std::string, std::string> ExpectedFields(const pugi::xml_node& programme) {
  const auto credits = programme.child("credits");
  const auto has = [&](const char* name) { return programme.child(name) ? "Y" : ""; };
  std::string bbfc;
  std::string other;
  for (const auto rating : programme.children("rating")) {
    const std::string system = rating.attribute("system").value();
    const std::string value = TextOf(rating.child("value"));
    if (system == "BBFC") {
      if (bbfc.empty()) bbfc = value;
    } else {
      other +=
          (other.empty() ? "" : ", ") + (system.empty() ? value : system + " rating: " + value);
    }
  }
  return {{"$Title", FirstOf(programme, "title")},
          {"$EpisodeTitle", FirstOf(programme, "sub-title")},
          {"$Description", FirstOf(programme, "desc")},
          {"$Genre", Joined(programme, "category")},
          {"$Director", Joined(credits, "director")},
          {"$Actors", Joined(credits, "actor")},
          {"$PublishDate", FirstOf(programme, "date")},
          {"$Language", FirstOf(programme, "language")},
          {"$RatingBBFC", bbfc},
          {"$RatingOther", other},
          {"$StarRating", FirstOf(programme.child("star-rating"), "value")},
          {"$BlackAndWhite", TextOf(programme.child("video").child("colour")) == "no" ? "Y" : ""},
          {"$Stereo", TextOf(programme.child("audio").child("stereo")).size() > 4 ? "Y" : ""},
          {"$Subtitle", has("subtitles")},
          {"$Repeat", has("previously-shown")},
          {"$New", has("new")},
          {"$Premiere", programme.child("premiere") ? "Premiere" : ""}};
}

// That the listings hold what a general parser sees in the guide.
void ExpectAllOf(const pugi::xml_node& tv, const TempFile& listings) {
  Loaded guide(listings);
  const std::vector<std::string> stations = {"o'hara.example", "ærø.example", "never.declared"};
  ASSERT_EQ(guide->StationCount(), 3);
  EXPECT_EQ(guide->StationName(0), "The Harbour & Sea Network");
  EXPECT_EQ(guide->StationId(0), "The-Harbour-&-Sea-Network-HSN-<1>");
  EXPECT_EQ(guide->StationName(1), "Ærø TV – “Ø”");
  std::map<std::string, std::int32_t> next;  // of a station
  for (const auto programme : tv.children("programme")) {
    const std::string channel = programme.attribute("channel").value();
    SCOPED_TRACE(channel + " at " + programme.attribute("from").value());
    const auto station = static_cast<std::int32_t>(
        std::find(stations.begin(), stations.end(), channel) - stations.begin());
    const std::int32_t index = next[channel]++;
    EXPECT_EQ(guide->ProgramStart(station, index),
              epg_test::At(programme.attribute("from").value()));
    EXPECT_EQ(guide->ProgramEnd(station, index), epg_test::At(programme.attribute("to").value()));
    for (const auto& [field, expected] : ExpectedFields(programme))
      EXPECT_EQ(guide->ProgramData(station, index, field), expected) << field;
  }
  EXPECT_EQ(guide->ProgramData(0, 0, "$Flags"), "New, 16:9, Stereo, CC, HD, Repeat");
  for (std::int32_t station = 0; station < 3; ++station)
    EXPECT_EQ(guide->ProgramCount(station), next[stations[static_cast<std::size_t>(station)]]);
}

TEST(Epgcache, TextsAndTimesArriveAsAGeneralParserSeesThem) {
  pugi::xml_document document;
  ASSERT_TRUE(document.load_file(EPG_SOURCE_DIR "/tests/data/habits.xml",
                                 pugi::parse_default | pugi::parse_ws_pcdata));
  for (const char* const command :
       {"$E $G -o $O", "gzip <$G | $E - -o $O",
        "(head -c 999 $G | gzip; tail -c +1000 $G | gzip) | $E - -o $O",
        "xz <$G >$O.xz && $E $O.xz -o $O", "(bzip2 <$G | zstd) | $E - -o $O",
        "D=$(mktemp -d); gzip <$G >$D/g.xml.gz; echo no >$D/readme.txt; "
        "(cd $D && zip -qr - . | gzip) | $E - -o $O; S=$?; rm -r $D; exit $S",
        "sed 1s/UTF-8/UTF-16/ $G | iconv -f UTF-8 -t UTF-16 | $E - -o $O"}) {
    SCOPED_TRACE(command);
    const TempFile listings("");
    const Outcome made =
        RunCommand("G=tests/data/habits.xml; O=" + listings.Path() + "; " + command);
    ASSERT_EQ(made.status, 0) << made.err;
    ExpectAllOf(document.child("tv"), listings);
  }
}

// A programme on 23 November 2026.
std::string On(const std::string& channel, const std::string& start, const std::string& stop,
               const std::string& elements) {
  return "<programme channel='" + channel + "' start='20261123" + start +
         (stop.empty() ? "" : "' stop='20261123" + stop) + "'>" + elements + "</programme>\n";
}

std::string At(const std::string& channel, const std::string& start, const std::string& stop,
               const std::string& elements) {
  return "<programme channel='" + channel + "' start='" + start + "' stop='" + stop + "'>" +
         elements + "</programme>\n";
}

std::string Titled(const std::string& title) { return "<title>" + title + "</title>"; }

// "Name: 20:00-21:00 texts | ...", a line for each station.
std::string Shown(const TempFile& listings) {
  Loaded guide(listings);
  std::string text;
  for (std::int32_t station = 0; station < guide->StationCount(); ++station) {
    text += guide->StationName(station) + ":";
    for (std::int32_t index = 0; index < guide->ProgramCount(station); ++index) {
      text += (index == 0 ? " " : " | ") + guide->TimeText(guide->ProgramStart(station, index), 1) +
              "-" + guide->TimeText(guide->ProgramEnd(station, index), 1) + " " +
              guide->ProgramData(station, index,
                                 "[$Title][ / $EpisodeTitle][ / $Genre][ / $Actors][ / $Premiere]");
    }
    text += "\n";
  }
  return text;
}

struct Conversion {
  std::vector<std::string> guides;  // what stands in <tv>
  std::string options;
  std::string shown;
  std::string said;  // on standard error
};

TEST(Epgcache, PutsGuidesInOrder) {
  const std::string two =
      "<channel id='a'><display-name lang='en'>One</display-name>"
      "<display-name lang='fr'>Un</display-name></channel>"
      "<channel id='b'><display-name>Two HD</display-name></channel>";
  const std::string gaps = On("a", "2000", "", Titled("x")) + On("a", "2200", "", Titled("z")) +
                           On("a", "2030", "2025", Titled("y")) +
                           On("a", "2300", "2370", Titled("w"));
  const std::string over =
      On("a", "2000", "2130", Titled("x")) + On("a", "2100", "2200", Titled("y"));
  const std::string evening = over + On("b", "2100", "2200", Titled("z"));
  const std::string many =
      "<title lang='de'>T</title><title lang='en_GB'>E</title><title>N</title>"
      "<sub-title lang='fr'>F</sub-title><sub-title>S</sub-title>"
      "<category lang='en'>c1</category><category lang='de'>c2</category><category "
      "lang='en'>c3</category>"
      "<credits><actor>A</actor><presenter>P</presenter><guest>G</guest></credits>";
  const auto episode = [](const std::string& number) {
    return On("a", "2000", "2100", "<title>T</title>" + number);
  };
  const Conversion rows[] = {
      // Ends: the next start, two hours at most, whatever else is there.
      {{gaps},
       "--default-length 45",
       "a: 20:00-20:30 x | 20:30-21:15 y | 22:00-22:45 z | 23:00-23:45 w\n",
       "1 missing end set to where"},
      {{gaps},
       "",
       "a: 20:00-20:30 x | 20:30-22:00 y | 22:00-23:00 z | 23:00-03:00 w\n",
       "1 stop that cannot be read"},
      {{over}, "", "a: 20:00-21:30 x | 21:00-22:00 y\n", "1 programme that overlaps"},
      {{over}, "--overlaps cut", "a: 20:00-21:00 x | 21:00-22:00 y\n", "1 overlap cut"},
      // Of two with a start the richer stays.
      {{On("a", "2000", "2100", Titled("x")) +
        On("a", "200059", "2100", Titled("y") + "<premiere> first\nnight </premiere>") +
        On("a", "2000", "2100", Titled("longer, poorer"))},
       "",
       "a: 20:00-21:00 y /  first\nnight \n",
       "2 programmes with the start of a more detailed one"},
      // Or what has a stop.
      {{On("a", "0000", "0000", Titled("x") + "<date>2026</date>") +
        On("a", "0000", "0215", Titled("y"))},
       "",
       "a: 00:00-02:15 y\n",
       "1 programme with the start of a more detailed one"},
      // Seconds count; what lasts less than a minute makes room for what begins in it.
      {{On("a", "140527", "140557", Titled("x") + "<date>2026</date>") +
        On("a", "140557", "150000", Titled("y")) + On("a", "160030", "160055", Titled("z"))},
       "",
       "a: 14:05-15:00 y | 16:00-16:01 z\n",
       "1 programme of less than a minute"},
      {{"<channel id='a'><display-name>News 24/7</display-name></channel>" + over},
       "",
       "News 24\u22157: 20:00-21:30 x | 21:00-22:00 y\n",
       "1 '/' in a station's name"},
      {{"<channel id='a'><display-name>1 \u00bd / 2</display-name></channel>" + over},
       "--encoding windows-1252",
       "1 \xbd - 2: 20:00-21:30 x | 21:00-22:00 y\n",
       "1 '/' in a station's name"},
      {{over},
       "",
       "a: 20:00-21:30 x | 21:00-22:00 y\n",
       "2 programmes whose times name no zone, taken as UTC; --zone says otherwise"},
      {{On("a", "2000", "2100",
           Titled("x") + "<credits><actor>\n A\n  B <image>c</image>\n</actor></credits>")},
       "",
       "a: 20:00-21:00 x / A B\n",
       ""},
      // The first input wins where it has something on; between and around it the second one fills.
      {{two + over,
        On("a", "1900", "2010", Titled("early")) + On("a", "2115", "2300", Titled("no")) +
            On("a", "2200", "", Titled("late")) + On("a", "2000", "2001", Titled("no"))},
       "",
       "One: 19:00-20:00 early | 20:00-21:30 x | 21:00-22:00 y | 22:00-02:00 late\nTwo HD:\n",
       "2 programmes where an earlier input has something on"},
      {{On("a", "2000", "", Titled("x")) + On("a", "2100", "", Titled("y")),
        On("a", "2005", "", Titled("no")) + On("a", "0105", "", Titled("z"))},
       "--default-length 600",
       "a: 01:05-11:05 z | 20:00-21:00 x | 21:00-07:00 y\n",
       "1 programme where an earlier input"},
      // Names that come after the programmes count, too.
      {{evening + two},
       "--stations 'two hd,never,A'",
       "Two HD: 21:00-22:00 z\nOne: 20:00-21:30 x | 21:00-22:00 y\n",
       "no station has the id or name \"never\""},
      {{evening + two},
       "--stations 'T?o*',@$L",
       "Two HD: 21:00-22:00 z\nOne: 20:00-21:30 x | 21:00-22:00 y\n",
       "no station has the id or name \"Twoo HD\"; did you mean \"Two HD\"?"},
      {{evening + two},
       "--stations un",
       "One: 20:00-21:30 x | 21:00-22:00 y\n",
       "1 programme of other stations"},
      {{evening},
       "--from '2026-11-23 21:30'",
       "a: 21:00-22:00 y\nb: 21:00-22:00 z\n",
       "1 programme outside"},
      {{evening + "<programme channel='a' start='20261124'><title>next</title></programme>"},
       "--from 202611231930 --days 1",
       "a: 20:00-21:30 x | 21:00-22:00 y | 00:00-04:00 next\nb: 21:00-22:00 z\n",
       ""},
      {{evening},
       "--zone Europe/Rome --days 1 --from '2026-11-22 21:00'",
       "a: 19:00-20:30 x\n",
       "2 programmes outside"},
      {{"<programme channel='a' start='20260723200000 XYZ' stop='20260723210000 "
        "+0000'><title>x</title></programme>"},
       "--zone Europe/Rome",
       "a: 18:00-21:00 x\n",
       "in an unknown time zone"},
      // 02:30 comes twice that night, and the first time counts; 03:00 once.
      {{"<programme channel='a' start='202610250230' "
        "stop='202610250300'><title>x</title></programme>"},
       "--zone Europe/Rome",
       "a: 00:30-02:00 x\n",
       ""},
      {{On("a", "2000", "2100", many)}, "", "a: 20:00-21:00 T / F / c1, c2, c3 / A\n", ""},
      {{On("a", "2000", "2100", many) + two},
       "--lang fr,en --presenters --guests",
       "Un: 20:00-21:00 E / F / c1, c3 / A, P, G\nTwo HD:\n",
       ""},
      {{On("a", "2000", "2100", many)},
       "--lang it --guests",
       "a: 20:00-21:00 N / S / c1, c2, c3 / A, G\n",
       ""},
      {{episode("<sub-title>S</sub-title><episode-num>Ep. 5</episode-num>"
                "<episode-num system='xmltv_ns'> 1 . 4/12 . 0/2 </episode-num>")},
       "--episodes",
       "a: 20:00-21:00 T / S (S2 E5/12, part 1 of 2)\n",
       ""},
      {{episode("<episode-num system='xmltv_ns'>.9.0/1</episode-num>")},
       "--episodes",
       "a: 20:00-21:00 T / E10\n",
       ""},
      {{episode("<episode-num system='xmltv_ns'>x..</episode-num><episode-num "
                "system='onscreen'>#5</episode-num>")},
       "--episodes",
       "a: 20:00-21:00 T / #5\n",
       ""},
      {{episode("<episode-num>#5</episode-num>")}, "", "a: 20:00-21:00 T\n", ""},
      {{On("a", "2000", "2100", Titled("Łódź – “naïve” Привет ＜ e\u0301 🎬"))},
       "--encoding WINDOWS-1252",
       "a: 20:00-21:00 L\xf3"
       "dz \x96 \x93na\xef"
       "ve\x94 Privet < \xe9 ?\n",
       "10 characters transliterated"},
      // Each time by the zone's offset on its day.
      {{At("a", "20260723200000", "20260723210000", Titled("x")) +
        At("a", "20261123200000", "20261123210000", Titled("y"))},
       "--zone Europe/Rome",
       "a: 18:00-19:00 x | 19:00-20:00 y\n",
       ""},
      // A day of 25 hours.
      {{At("a", "202610242159 Z", "202610242200 Z", Titled("no")) +
        At("a", "202610252230 Z", "202610252300 Z", Titled("x")) +
        At("a", "202610252300 Z", "202610252330 Z", Titled("no"))},
       "--zone Europe/Rome --from 2026-10-25 --days 1",
       "a: 22:30-23:00 x\n",
       "2 programmes outside"},
      {{"<!DOCTYPE tv SYSTEM 'xmltv.dtd'><tv>" +
        On("a", "2000", "2100", Titled("caf&eacute;&nbsp;&hearts;&NoSuch;")) + "</tv>"},
       "",
       "a: 20:00-21:00 caf\u00e9\u00a0\u2665\n",
       "HTML"},
      // Names that become the same in the code page stay two stations and two programmes.
      {{On("\u0424", "2000", "2100", Titled("\u0424")) + On("F", "2000", "2100", Titled("F"))},
       "--encoding windows-1252",
       "F: 20:00-21:00 F\nF: 20:00-21:00 F\n",
       "2 stations made"},
      {{On("", "2000", "", "") + On("a", "2570", "", "") + On("a", "2000", "2100", Titled("x")) +
        "<programme channel='a'/><programme channel='a' start='15991231'/>"},
       "",
       "a: 20:00-21:00 x\n",
       "3 programmes without a readable start"},
  };
  const TempFile station_list("# what we watch\n\n Twoo HD\r\none\n");
  for (const Conversion& row : rows) {
    SCOPED_TRACE(row.options + " for " + row.guides.front());
    std::vector<std::unique_ptr<TempFile>> inputs;
    std::string command = "$E " + row.options;
    for (const std::string& guide : row.guides) {
      inputs.push_back(
          std::make_unique<TempFile>(guide.starts_with("<!") ? guide : "<tv>" + guide + "</tv>"));
      command += " " + inputs.back()->Path();
    }
    const TempFile listings("");
    const Outcome made =
        RunCommand("L=" + station_list.Path() + "; " + command + " -o " + listings.Path());
    ASSERT_EQ(made.status, 0) << made.err;
    EXPECT_EQ(Shown(listings), row.shown);
    EXPECT_THAT(made.err, HasSubstr(row.said));
  }
}

TEST(Epgcache, BadInputAndBadOutputLeaveTheOldListings) {
  const std::string good = "<tv>" + On("a", "2000", "2100", Titled("x")) + "</tv>";
  const TempFile guide(good);
  const struct {
    std::string command;  // makes what it likes in $D, of the good guide $G; $O is the listings
    std::string said;
  } rows[] = {
      {"$E $D/none -o $O", "none: cannot be opened: No such file"},
      {"$E $D -o $O", "cannot be read: Is a directory"},
      {"echo '<!doctype html><html><head><meta><title>404' | $E - -o $O",
       "standard input: is an HTML page"},
      {"echo '<html><body/></html>' | $E - -o $O", "standard input: is an HTML page"},
      {"echo '<rss/>' | $E - -o $O", "its root element is <rss>"},
      {"echo 404 Not Found | $E - -o $O", "standard input:1:1: is not an XMLTV guide: "},
      {": | $E - -o $O", "standard input: is empty"},
      {"echo '<tv></tv>' | $E - -o $O", "not written: there is no programme"},
      {"$E $G --stations none -o $O", "1 is of other stations"},
      {"$E $G --from 2027 -o $O", "1 is outside --from and --days"},
      {"gzip <$G | head -c 60 | $E - -o $O", "its packed data is damaged or cut off"},
      {"xz <$G | head -c 80 | $E - -o $O", "its packed data is damaged or cut off"},
      {"zip -q - $G | head -c 100 | $E - -o $O", "its packed data is damaged or cut off"},
      {"cd $D; echo no >readme.txt; zip -q r.zip readme.txt; $E r.zip -o $O; S=$?; rm r*; exit $S",
       "r.zip: holds no guide"},
      {"cp $G $D/g; for i in 1 2 3 4 5 6 7 8 9; do tar -cf $D/t -C $D g; mv $D/t $D/g; done; "
       "$E $D/g -o $O",
       "is packed more than 8 times"},
      {"(echo '<tv>'; head -c 9000000 /dev/zero | tr '\\0' '\\n') | gzip | $E - --max-size 8M -o "
       "$O",
       "is larger than 8388608 bytes unpacked"},
      {"(echo '<!DOCTYPE tv [<!ENTITY a0 \"ha\">'; for i in 1 2 3 4 5 6 7 8 9; do j=$((i-1)); "
       "echo \"<!ENTITY a$i '&a$j;&a$j;&a$j;&a$j;&a$j;&a$j;&a$j;&a$j;&a$j;&a$j;'>\"; done; "
       "sed 's/x</\\&a9;</; s/^/]>/' $G) | $E - -o $O",
       "entity reference loop"},
      {"(printf '<!DOCTYPE tv [<!ENTITY e \"'; head -c 100000 /dev/zero | tr '\\0' x; printf "
       "'\">]><tv>"
       "<programme channel=\"a\" start=\"2026\"><desc>'; yes '&e;' | head -n 900) | $E - -o $O",
       ": its entities expand to far more than it holds"},
      {"printf '<?xml version=\"1.0\" encoding=\"GB2312\"?><tv><x>\\377\\376</x></tv>' | $E - -o "
       "$O",
       "a byte that its encoding does not have"},
      {"echo secret >$D/s; sed \"s|^|<!DOCTYPE tv [<!ENTITY s SYSTEM '$D/s'>]>|; s/x</\\&s;</\" $G "
       "| $E - -o $O",
       "an entity refers to"},
      {"echo secret >$D/s; sed \"s|^|<!DOCTYPE tv [<!ENTITY % s SYSTEM '$D/s'>%s;]>|\" $G | $E - "
       "-o $O",
       "an entity refers to"},
      {"(cat $G; echo; echo '<programme>') | $E - -o $O", "standard input:3:1: Extra content"},
      {"sed 's|</title|</titel|' $G >$D/g; $E $D/g -o $O", "/g:1:"},
      {"$E $G -o $D/none/listings.xml", "no file can be made in its folder: No such file"},
      {"$E $G -o $D", "cannot be written: Is a directory"},
      {"$E $G -o /dev/full", "cannot be written: not a regular file"},
      {"(ulimit -f 0; $E $G -o $O 2>&1) | cat >&2; false", "cannot be written: File too large"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.command);
    const TempFile listings("old");
    const std::string folder = std::filesystem::path(listings.Path()).parent_path();
    const Outcome outcome = RunCommand("D=" + folder + "; O=" + listings.Path() +
                                       "; G=" + guide.Path() + "; " + row.command);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr(row.said));
    EXPECT_EQ(ReadFile(listings.Path()), "old");
    for (const auto& entry : std::filesystem::directory_iterator(folder))
      EXPECT_NE(entry.path().filename().string().front(), '.') << "left behind";
    for (const char* const name : {"/s", "/g"}) std::filesystem::remove(folder + name);
  }
  const std::pair<const char*, const char*> usage[] = {
      {"$E $G", "--output"},
      {"$E $G -o -", "--output: it is a file; - is none"},
      {"$E --lang , $G", "--lang: it names nothing"},
      {"$E $G -o /tmp --stations ' ,'", "--stations: it names nothing"}};
  for (const auto& [command, said] : usage) {
    const Outcome outcome = RunCommand("G=" + guide.Path() + "; " + command);
    EXPECT_EQ(outcome.status, 2) << command;
    EXPECT_THAT(outcome.err, HasSubstr(said));
  }
}

// A sanitizer has an allocator of its own, which a library cannot replace.
#if !defined(EPG_SANITIZED)

// Starts the program with a library that makes the C library's functions fail, see there.
std::string Failing(const std::string& settings) {
  return "export LD_PRELOAD=" EPG_FAILING_C_LIBRARY " " + settings + "; ";
}

TEST(Epgcache, EndsWithAMessageWhereMemoryOrReadingFails) {
  const TempFile guide("<tv>" + On("a", "2000", "2100", Titled("\u0141\u00f3d\u017a")) + "</tv>");
  const TempFile listings("old");
  const std::string to = " -o " + listings.Path() + "; ";
  const std::string run = "$E -q --encoding windows-1252 " + guide.Path() + to;
  const std::string utf16 = guide.Path() + ".16";
  const Outcome memory =
      RunCommand("iconv -t UTF-16 <" + guide.Path() + " >" + utf16 +
                 "; for n in 1 2 4 7 12 30 60 100 $(seq 200 67 2000) 1000000; do (" +
                 Failing("FAIL_ALLOCATION=$n") + run + "); echo $?; done 2>&1 | sort -u; " +
                 "for n in $(seq 0 67 900) 1000000; do (" + Failing("FAIL_ALLOCATION=$n") +
                 "$E -q " + utf16 + to + "); echo $?; done 2>&1 | sort -u");
  EXPECT_EQ(memory.out, "0\n1\nepgcache: out of memory\n0\n1\nepgcache: out of memory\n");
  EXPECT_EQ(RunCommand(Failing("INTERRUPT_READS=1") + run).status, 0);
  // A read that fails is told, but to the plug-in, for which the file ends there.
  for (int read = 0; read < 12; ++read) {
    const Outcome outcome = RunCommand(Failing("FAIL_READ=" + std::to_string(read)) +
                                       "exec $E --check samples/evening-xmltv.xml");
    const bool is_taken = outcome.out.find(": the plug-in takes it") != std::string::npos;
    EXPECT_EQ(outcome.status, is_taken ? 0 : 1) << outcome.out;
    EXPECT_EQ(outcome.out.find("cannot be read"), std::string::npos) << read;
  }
  for (const char* const option : {"--help", "--version"})
    EXPECT_EQ(RunCommand(std::string("$E >/dev/full ") + option).status, 1);
}

TEST(Epgcache, LeavesNothingBehind) {
  const TempFile guide("<tv>" + On("a", "2000", "2100", Titled("x")) + "</tv>");
  const TempFile listings("old");
  // A run that waits with its file whole: what still runs keeps its file, what was ended does not.
  const Outcome ended =
      RunCommand("cd $(dirname " + listings.Path() + "); G=" + guide.Path() + "; (" +
                 Failing("SLEEP_IN_FSYNC=30") +
                 "exec $E -q $G -o listings.xml) & P=$!; "
                 "until ls -A | grep -q epgcache; do sleep 0.01; done; $E -q $G -o other.xml; "
                 "ls -A | sed 's/epgcache.*/epgcache/'; kill -TERM $P; wait $P; echo $?; ls -A");
  EXPECT_EQ(ended.out, ".epgcache\nlistings.xml\nother.xml\n143\nlistings.xml\nother.xml\n");
  const Outcome next = RunCommand("cd $(dirname " + listings.Path() +
                                  "); touch .epgcache.aB12cD .epgcache.long.name; $E -q " +
                                  guide.Path() + " -o listings.xml; ls -A");
  EXPECT_EQ(next.out, ".epgcache.long.name\nlistings.xml\nother.xml\n");
}

#endif

TEST(Epgcache, WritesBehindALinkAndKeepsPermissions) {
  const TempFile guide("<tv>" + On("a", "2000", "2100", Titled("x")) +
                       On("a", "2100", "2200", Titled("y")) + "</tv>");
  const TempFile old("old");
  const Outcome made =
      RunCommand("G=" + guide.Path() + "; cd $(dirname " + old.Path() +
                 "); chmod 640 listings.xml; ln -s listings.xml link; $E -q $G -o link;"
                 "readlink link; stat -c %a listings.xml; grep -c '<p2>x' listings.xml; ls -A");
  EXPECT_EQ(made.out, "listings.xml\n640\n1\nlink\nlistings.xml\n");
  const Outcome fresh =
      RunCommand("G=" + guide.Path() + "; cd $(dirname " + old.Path() +
                 "); umask 027; $E -q $G -o new.xml; stat -c %a new.xml; $E $G -o new.xml");
  EXPECT_EQ(fresh.out, "640\n");
  EXPECT_EQ(
      fresh.err,
      "epgcache: new.xml: 1 station, 2 programmes, 2 items\n"
      "  repaired: 1 station made that no channel element declares\n"
      "            2 programmes whose times name no zone, taken as UTC; --zone says otherwise\n");
}

TEST(Epgcache, MendsWhatIsNotWellFormed) {
  const std::string x = On("a", "2000", "2100", Titled("x"));
  const std::string y = On("a", "2100", "2200", Titled("y"));
  const std::string both = "a: 20:00-21:00 x | 21:00-22:00 y\n";
  const auto titled = [&](const std::string& title) {
    return "<tv>" + On("a", "2000", "2100", Titled(title)) + y + "</tv>";
  };
  const auto shown = [](const std::string& title) {
    return "a: 20:00-21:00 " + title + " | 21:00-22:00 y\n";
  };
  const struct {
    std::string guide;
    std::string shown;
    std::string said;
    bool is_well_formed = false;
  } rows[] = {
      {titled("A&E &amp; I <3 U<"), shown("A&E & I <3 U<"),
       ":1:77: an '&' that does not begin a ref"},
      {titled("R&D; caf&eacute;&#8217;&#0;&#xD800;"), shown("R&D; caf\u00e9\u2019"),
       ":1:77: an '&' that does not begin a reference"},
      {titled("\u00f8\xf8\x93z\x01\x94"), shown("\u00f8\u00f8\u201cz\u201d"),
       ":1:78: a byte that is not UTF-8"},
      {titled("<![CDATA[A&B<\xf8]]>"), shown("A&B<\u00f8"), "a byte that is not UTF-8"},
      {"<?xml version='1.0' encoding='windows-1252'?>" + titled("\xf8 & \x93z"),
       shown("\u00f8 & \u201cz"), "an '&' that does not begin a reference"},
      {"\n<?xml version='1.0'?>junk" + titled("x"), both, ":2:22: text outside the guide"},
      // End tags that are missing, misspelt or too many.
      {titled("x</titel></x><desc>d</desc><title>"), both, "</titel>, where </title> should be"},
      {titled("x<desc>d</desc>"), both, "<title> is not closed before this <desc>", true},
      {"<tv><programme channel='a' start='20261123200000' stop='20261123210000'><title>x" + y, both,
       "<title> is not closed before this <programme>"},
      {"<tv>" + x + "</tv>\n<?xml version='1.0'?><tv>" + y + "</tv>", both, ":3:22: another <tv>"},
      {"<tv>" + x + "</tv> &nbsp;" + y, both, "text outside the guide"},
      // What the end cuts off.
      {"<tv>" + x +
           "<programme channel='a' start='20261123210000' stop='20261123220000'><title>y"
           "</title><desc>not who",
       both, "the document ends inside <desc>"},
      {"<tv>" + x + y + "<programme channel='a' start='20261123220000'><title>not who", both,
       "the document ends inside <title>"},
      {"<tv>" + x + y + "<programme channel='a' star", both, "the document ends inside <tv>"},
      // Nothing can be read after this one.
      {"<!DOCTYPE tv [<!ENTITY e SYSTEM 's'>]><tv>" + x + y + Titled("&e;") + "</tv>", both,
       "refers to \"s\", which is not followed"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.guide);
    const TempFile guide(row.guide);
    const TempFile listings("old");
    const std::string run = "$E --keep-going " + guide.Path() + " -o " + listings.Path();
    const Outcome strict = RunCommand(run.substr(0, 3) + run.substr(16));
    EXPECT_EQ(strict.status, row.is_well_formed ? 0 : 1);
    const Outcome made = RunCommand(run);
    ASSERT_EQ(made.status, 0) << made.err;
    EXPECT_EQ(Shown(listings), row.shown);
    EXPECT_THAT(made.err, HasSubstr(row.said));
  }
  // Texts longer than what is looked at in one go, which ends at each byte of a piece in turn.
  const std::string piece = "&amp;\u00e9";
  for (std::size_t shift = 0; shift < piece.size(); ++shift) {
    std::string text(shift, 'x');
    for (int i = 0; i < 40'000; ++i) text += piece;
    const TempFile long_text(titled("<![CDATA[>]]>" + text));
    EXPECT_EQ(RunCommand("$E -q --keep-going " + long_text.Path() + " -o " + long_text.Path() +
                         "; grep -o '" + piece + "' " + long_text.Path() + " | wc -l")
                  .out,
              "40000\n")
        << shift;
  }
  // What cannot be mended is passed over. Enough to be in more than one of the library's blocks.
  std::string many;
  for (int day = 10; day < 30; ++day)
    many +=
        At("a", "202611" + std::to_string(day), "", "<title>x</title>\n" + std::string(9999, ' '));
  const TempFile long_guide("<tv>" + many + "</tv>");
  const TempFile html("<html>");
  const TempFile listings("old");
  const Outcome made =
      RunCommand("gzip <" + long_guide.Path() + " | head -c -20 | $E --keep-going - " +
                 html.Path() + " -o " + listings.Path());
  EXPECT_EQ(made.status, 0);
  EXPECT_THAT(made.err, HasSubstr("its packed data is damaged or cut off"));
  EXPECT_THAT(made.err, HasSubstr("is an HTML page"));
  EXPECT_THAT(Shown(listings), HasSubstr("a: 00:00-04:00 x | 00:00-04:00 x"));
}

TEST(Epgcache, ListsStations) {
  const TempFile guide("<tv><channel id='b'><display-name>Two HD</display-name></channel>" +
                       On("a", "2000", "2100", Titled("x")) + On("a", "2300", "", "") + "</tv>");
  const Outcome listed =
      RunCommand("$E --list --zone Europe/Rome - <" + guide.Path() + "; $E --elements | head -n 2");
  EXPECT_EQ(listed.out,
            "      0                                        b  Two HD\n"
            "      2  2026-11-23 20:00 to 2026-11-24 03:00  a\n"
            "channel/display-name\tnetwork and call sign, the first two\n"
            "programme/title\tTitle\n");
}

TEST(Epgcache, ChecksAsThePluginReads) {
  const std::string tv = "<tv generator-info-name=\"XMLTV\">\n";
  const std::string one = "<channel id=\"a\"><display-name>One</display-name></channel>\n";
  const std::string on =
      "<programme start=\"20261123200000 +0000\" stop=\"20261123210000 +0000\" "
      "channel=\"a\"><title>x</title></programme>\n";
  const auto with = [&](const std::string& elements) { return tv + one + elements + on + "</tv>"; };
  const struct {
    std::string guide;
    std::string said;
    std::string then = "";
  } rows[] = {
      {with(""),
       ": the plug-in takes it: Stations: 1   Programmes: 1   Schedule Items: 1\nNothing is "
       "lost.\n"},
      {"<tv>\n" + one + on + "</tv>",
       ":1:1: the plug-in does not take it: <tv> has no generator-info-name"},
      {"<?xml version=\"1.0\"?>\n<tv generator-info-name=\"G&amp;B\">" + one + on + "</tv>",
       ":2:1: the plug-in does not take it: generator-info-name of <tv> is \"G&amp;B\""},
      {"<tv source-info-name=\"Joe's\" generator-info-name=\"XMLTV\">" + one + on + "</tv>",
       ":1:1: the plug-in does not take it: an apostrophe or quotation mark inside an attribute of "
       "<tv>, "
       "which hides"},
      {"<tv\n generator-info-name=\"XMLTV\">" + one + on + "</tv>",
       ":1:1: the plug-in does not take it: a line break"},
      {tv + "<!-- c -->" + one + on + "</tv>", ": the plug-in takes it"},
      {with("<programme channel=\"a\"><!-- c --><title>y</title></programme>\n"),
       ":3:24: the plug-in does not take it: a comment in the text of <programme>, or before its "
       "first"},
      {with("<x><desc>y<![CDATA[z]]></desc></x>\n"),
       ":3:11: the plug-in does not take it: a CDATA section in the text of <desc>"},
      {with("<x><icon src=\"it's\"/><y/></x>\n"),
       ":3:4: the plug-in does not take it: an apostrophe or quotation mark inside an attribute of "
       "<icon>"},
      {with("<x\n a=\"1\"><y/></x>\n"),
       ":3:1: the plug-in does not take it: a line break or tab after the name of <x>"},
      {tv + one + on, ":4:1: the plug-in does not take it: the file ends inside <tv>"},
      {tv + on + "</tv>", ":2:1: the plug-in does not take it: no <channel> says"},
      {tv + "</x>" + one + on + "</tv>", ": the plug-in takes it",
       ":2:1: not well-formed: </x>, where nothing is to be closed\n"},
      {"<tv>" + one + "<x><y>&#8217;<!-- --></y></x></tv>",
       ":2:14: also rejected: a comment in the text of <y>", " -o LISTINGS.xml makes listings"},
      {"<!-- <a><b/></a> --><tv/>", "markup inside a comment, which is read"},
      // What is read from its cause on: where XML and the reader part.
      {with("<!-- Tom & Jerry -->\n"),
       ":3:1: the plug-in does not take it: an '&' inside a comment"},
      {with("<x><y>A&B</y></x>"), ":3:8: the plug-in does not take it: an '&' without its ';'"},
      {with("<x><y><![CDATA[<b>]]></y></x>"),
       ":3:7: the plug-in does not take it: a CDATA section"},
      {with("<x><y/><!-- <z> --></x>"),
       ":3:8: the plug-in does not take it: markup inside a comment"},
      {with("<x><y a=\"it's\">y</y></x>"), ":3:4: the plug-in does not take it: an apostrophe"},
      {with("<x><y a=\"b>c\"/><z/></x>"), ":3:4: the plug-in does not take it: a '>' inside"},
      {with("<x><y>y</y ></x>"),
       ":3:8: the plug-in does not take it: a blank or line break before the '>'"},
      {"<html><body><p>x</p></body></html>",
       ":1:1: the plug-in does not take it: <html> begins none"},
      {with("<programme start=\"20261123 +01:00\" channel=\"a\"><title>&#65;</title>"
            "<title>2</title><desc>A long text<b> that goes on after</b></desc><icon/><rating/>"
            "<sub-title>It&#8217;s &lt;late&gt;</sub-title><language>en</language></programme>") +
           " &nbsp;",
       ": the plug-in takes it",
       ":4:6: not well-formed: text outside the guide\n"
       "It differs from what the guide says:\n"
       "        1  programmes with a wrong start: its zone or its form is misread\n"
       "        1  programmes without an end: there is no readable stop\n"
       "        1  Title: another one's, the last of several or of a programme with the same "
       "key\n"
       "        1  EpisodeTitle: references vanish, numeric ones and names beyond XML's five\n"
       "        1  Description: ends early, at an element or comment inside it\n"
       "        1  Language: not read\n"},
      {with("<channel id=\"c\"/><channel id = \"b\"/><channel id=\"d\"><display-name>24/7"
            "</display-name></channel>" +
            on +
            "<programme start=\"20261123\" channel=\"b\"/><programme start=\"20261123210000 "
            "+0000\" channel=\"a\"><title>y</title></programme>"),
       ": the plug-in takes it",
       "It differs from what the guide says:\n"
       "        1  programmes without an end: there is no readable stop\n"
       "        1  Station's name: not read\n"
       "        1  stations missing: no <channel> declares them, or the plug-in misreads it\n"
       "        1  programmes missing with their stations\n"
       "        1  Station's name: ends at its '/'\n"},
      {"<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" + tv + one +
           "<channel id=\"c\"><display-name>\xe6</display-name></channel>" + on + "</tv>",
       ": the plug-in takes it",
       "        1  Station's name: bytes of another encoding arrive as they stand\n"},
      {"<Programmes><x/></Programmes>", ":1:1: the plug-in does not take it: the plug-in says"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.guide);
    const TempFile guide(row.guide);
    const Outcome outcome = RunCommand("$E --check " + guide.Path());
    const Outcome piped = RunCommand("$E --check - <" + guide.Path());
    EXPECT_EQ(piped.status, outcome.status);
    EXPECT_THAT(piped.out, HasSubstr(row.said.substr(0, row.said.find(" of the stat"))));
    EXPECT_EQ(outcome.status, row.said.find("takes it") == std::string::npos ? 1 : 0);
    EXPECT_THAT(outcome.out, HasSubstr(row.said));
    EXPECT_THAT(outcome.out, HasSubstr(row.then));
  }
  for (const char* const sample : {"cache", "radiotimes", "titantv", "xmltv"}) {
    EXPECT_EQ(RunCommand(std::string("$E --check samples/evening-") + sample + ".xml").status, 0);
  }
  const Outcome packed =
      RunCommand("T=$(mktemp); gzip <samples/week.xml >$T; $E --check $T; S=$?; rm $T; exit $S");
  EXPECT_EQ(packed.status, 1);
}

}  // namespace
