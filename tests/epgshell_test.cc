// The console program as other programs see it: what it prints where, and its exit status.

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <regex>
#include <string>
#include <tuple>

#include "tests/support/test_support.h"

namespace {

using epg_test::Outcome;
using epg_test::ReadFile;

// The program, or what EPG_SHELL says instead, such as one of another system.
std::string Shell() {
  const char* const other = std::getenv("EPG_SHELL");
  return other != nullptr ? other : EPG_SHELL;
}

// Runs the program in the source tree, in UTC, with a script on its standard input.
Outcome RunShell(const std::string& arguments, const std::string& script = "") {
  const epg_test::TempFile input(script, "input");
  return epg_test::RunCommand("cd " EPG_SOURCE_DIR " && TZ=UTC LC_ALL=C COLUMNS=80 " + Shell() +
                              " " + arguments + " <" + input.Path());
}

constexpr const char* kStarting = "notice: EPGBROWSER DLL Starting\n";
constexpr const char* kReleasing = "notice: EPGBROWSER plug-in Releasing\n";

TEST(Epgshell, RunsTheTourOfTheSampleWeek) {
  auto [status, out, err] = RunShell("run samples/tour.script");
  EXPECT_EQ(status, 0);
  std::size_t begin = 0;  // of the current time, the one answer that changes
  for (int i = 0; i < 7; ++i) begin = out.find('\n', begin) + 1;
  out.erase(begin, out.find('\n', begin) + 1 - begin);
  EXPECT_EQ(out, ReadFile(EPG_SOURCE_DIR "/tests/data/tour.expected"));
  EXPECT_EQ(std::regex_replace(err, std::regex("\\d+ msec"), "N msec"),
            std::string(kStarting) +
                "log: EPG Loader: Importing XMLTV format XML, samples/week.xml.\n"
                "log: File \"samples/week.xml\" loaded OK.  Stations: 5   Programmes: 439   "
                "Schedule Items: 635  (N msec)\n" +
                kReleasing);
}

TEST(Epgshell, FailedCallsAreLoggedWithTheirPlaceAndTheRestRuns) {
  const Outcome outcome =
      RunShell("run -", "GetStationId(0)\n\nGetNowTime(\"x\")\nGetReady()\nthink\n");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "failed\nfailed\n0\n");
  EXPECT_EQ(outcome.err, std::string(kStarting) +
                             "error: GetStationId() : invalid index value (0) max is: -1\n"
                             "  at <stdin>:1\n"
                             "error: GetNowTime() : Parameter 1 not an integer or missing\n"
                             "  at <stdin>:3\n" +
                             kReleasing);
}

TEST(Epgshell, AFailedLoadShowsItsMessageBoxAndIsNoFailedCall) {
  const epg_test::TempFile binary(std::string("\0\x01\xff<\n\"&", 7));
  const std::string rows[][3] = {
      // name, log, message box
      {"/no/such\\n%n%s", "log: Failed to open file \"/no/such\n  %n%s.xml\".\n",
       "Failed to open file \"/no/such\n  %n%s.xml\"."},
      {binary.Stem(),
       "log: EPG Loader: Importing Radio Times format XML, " + binary.Path() +
           ".\nlog: EPG Loader: Import failed, [File &quot;" + binary.Path() +
           "&quot; loaded OK.]\n",
       "Can't identify content, don't know how to decode!"},
  };
  for (const auto& [name, log, box] : rows) {
    const Outcome outcome = RunShell(
        "run", "InitSchedule(\"\", \"\", \"" + name + "\")\nGetStationCount()\nGetReady()\n");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "ok\n0\n0\n");
    EXPECT_EQ(outcome.err, kStarting + log + "message box [Telvyn configuration error]: " + box +
                               '\n' + kReleasing);
  }
}

TEST(Epgshell, AScriptThatEndsDuringALoadWaitsForItQuietly) {
  const Outcome outcome = RunShell("run", "InitSchedule(\"\",\"\",\"samples/week\")\n");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_NE(outcome.err.find("Schedule Items: 635"), std::string::npos);
  EXPECT_EQ(outcome.err.find("message box"), std::string::npos);
}

TEST(Epgshell, WrongUseRunsNothing) {
  const epg_test::TempFile script("GetReady()\nNope(\nGetReady\n", "s.script");
  const epg_test::TempFile unknown("GetReady()\nGetready()\n", "s.script");
  const epg_test::TempFile no_plugin("text", "no-plugin.so");
  const std::pair<std::string, std::string> rows[] = {
      // arguments and a part of the error
      {"run " + script.Path(), script.Path() +
                                   ":2: an argument is an integer or a text in double "
                                   "quotes\n" +
                                   script.Path() + ":3: '(' expected after GetReady\n"},
      {"run " + unknown.Path(), unknown.Path() + ":2: EPGBROWSER has no method Getready; did you "
                                                 "mean GetReady?"},
      {"run a b", "epgshell: The following argument was not expected: b\nTry epgshell --help.\n"},
      {"", "epgshell: name a command: guide, now, find, stations or run\n"},
      {"fly", "epgshell: The following argument was not expected: fly\n"},
      {"guide", "epgshell: LISTINGS is required\n"},
      {"find samples/week", "epgshell: TEXT is required\n"},
      {"find samples/week x --in body", "--in: body is not a field; there are title, episode, "},
      {"guide a b", "not expected: b\n"},
      {"guide a --hours 0", "--hours: Value 0 not in range 1 to 336\n"},
      {"guide a --at never", "--at: never is not a time; write it as 20:15, "},
      {"guide a --template x", "--template: it goes with --details\n"},
      {"now a --stations ' , '", "--stations: it names no station\n"},
      {"--plugin " + no_plugin.Path() + " run", "epgshell: cannot use the plug-in: "},
  };
  for (const auto& [arguments, part] : rows) {
    const auto [status, out, err] = RunShell(arguments);
    EXPECT_EQ(std::pair(status, out), std::pair(2, std::string())) << arguments;
    EXPECT_NE(err.find(part), std::string::npos) << arguments << '\n' << err;
  }
}

// On POSIX.
TEST(Epgshell, SaysWhatTheSystemSays) {
  for (const auto& [arguments, said] :
       {std::pair{"run /", "epgshell: cannot read the script /: Is a directory"},
        {"--plugin=" EPG_HALF_PLUGIN " run",
         "does not have the functions Initialise and Release\n"}}) {
    const Outcome outcome = RunShell(arguments);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_NE(outcome.err.find(said), std::string::npos) << outcome.err;
  }
}

TEST(Epgshell, ShowsTheGuideOfTheSampleWeek) {
  // Twenty years ago, so that nothing of it is on now.
  const epg_test::TempFile week(std::regex_replace(ReadFile(EPG_SOURCE_DIR "/samples/week.xml"),
                                                   std::regex("\"2026"), "\"2006"));
  const Outcome grid = RunShell("guide " + week.Path() + " --at '2006-11-23 20:00' --hours 2");
  EXPECT_EQ(grid.status, 0) << grid.err;
  EXPECT_EQ(grid.err, "");
  EXPECT_EQ(grid.out, ReadFile(EPG_SOURCE_DIR "/tests/data/guide.expected"));
  const Outcome details = RunShell("guide " + week.Stem() +
                                   " --at '2006-11-23 20:00' --hours 2 --details velvet "
                                   "--template '$Title[ ($PublishDate)]'");
  EXPECT_EQ(details.status, 0) << details.err;
  EXPECT_EQ(details.out,
            "Velvet Reel, Thu 23 Nov 2006\n  20:00-22:00  The Orchard on Ganymede (2021)\n");
}

// "20061123200000": a time so many minutes from now.
std::string FromNow(int minutes) {
  const std::time_t time = std::time(nullptr) + minutes * 60;
  char text[16];
  return {text, std::strftime(text, sizeof text, "%Y%m%d%H%M%S", std::gmtime(&time))};
}

TEST(Epgshell, ShowsTheStationsAndTheTimeAskedFor) {
  const auto programme = [](const std::string& start, const std::string& stop, const char* title) {
    return "<programme start=\"" + start + "\" stop=\"" + stop + "\" channel=\"a\"><title>" +
           title + "</title></programme>";
  };
  const std::string channels =
      "<tv generator-info-name=\"XMLTV\"><channel id=\"a\"><display-name>Two</display-name>"
      "</channel><channel id=\"b\"><display-name>Two HD</display-name></channel>";
  const epg_test::TempFile now(
      channels + programme(FromNow(-300), FromNow(300), "On since long ago, and as long again") +
      "</tv>");
  const epg_test::TempFile evening(
      channels + programme("20061123200000", "20061124030000", "Through the night") + "</tv>");
  const struct {
    const epg_test::TempFile& listings;
    std::string arguments;
    std::string shown;
    std::string not_shown;
  } rows[] = {
      {now, "", "v now ", "nothing is listed"},
      {now, "", "\nTwo     <>On since long ago, and as long again", "\033"},
      {now, "--stations 0-9", "\nTwo HD  ....", "there is no"},
      {now, "--stations ' two , '", "\nTwo     <>On", "\nTwo HD"},
      {now, "--stations 'hd, two'", "\nTwo HD  ", ""},
      {evening, "--at 01:00 --hours 1", "        Fri 24 Nov\n        01:00 ", "20:00 "},
      {evening, "--at 01:00 --hours 1", "\nTwo     <Through the night", ">"},
  };
  for (const auto& row : rows) {
    const Outcome outcome = RunShell("guide " + row.listings.Path() + " " + row.arguments);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    const std::string grid = outcome.out.substr(0, outcome.out.find("\n\n"));
    EXPECT_NE(grid.find(row.shown), std::string::npos) << row.arguments << '\n' << grid;
    EXPECT_TRUE(row.not_shown.empty() || grid.find(row.not_shown) == std::string::npos) << grid;
  }
  const Outcome utf8 =
      epg_test::RunCommand("LC_ALL=C.UTF-8 COLUMNS=30 " + Shell() + " guide " + now.Path());
  EXPECT_NE(utf8.out.find("<>On since long ago,\u2026"), std::string::npos) << utf8.out;
}

TEST(Epgshell, ResultsThatCannotBeWrittenAndScriptsWithoutEndAreFaults) {
  const std::tuple<const char*, int, const char*> rows[] = {
      {"echo 'GetReady()' | $E run >/dev/full", 1, "epgshell: cannot write the results\n"},
      {"$E guide samples/week >/dev/full", 1, "cannot write the guide to standard output\n"},
      {"$E --help >/dev/full", 1, "epgshell: cannot write to standard output\n"},
      {"yes | $E run", 2, "cannot read the script <stdin>: it is longer than 64 MiB\n"},
  };
  for (const auto& [command, status, said] : rows) {
    const Outcome outcome =
        epg_test::RunCommand("cd " EPG_SOURCE_DIR "; E='" + Shell() + "'; " + command);
    EXPECT_EQ(outcome.status, status) << command;
    EXPECT_NE(outcome.err.find(said), std::string::npos) << outcome.err;
  }
}

TEST(Epgshell, NothingSteersATerminal) {
  const std::string hostile =
      "\x1b]0;title\x07\x9b"
      "2J\u009b"
      "31m";
  const epg_test::TempFile listings(
      "<tv generator-info-name=\"XMLTV\"><channel id=\"a\">"
      "<display-name>" +
          hostile +
          "</display-name></channel>"
          "<programme channel=\"a\"><" +
          hostile + "/></programme></tv>",
      hostile + ".xml");
  const epg_test::TempFile script("InitSchedule(\"\", \"\", \"" + listings.Stem() +
                                  "\")\nGetStationCount()\nGetStationName(0)\n"
                                  "InitSchedule(\"\", \"\", \"" +
                                  hostile +
                                  "\")\n"
                                  "GetStationCount()\n");
  const epg_test::TempFile wrong("Nope", hostile);
  for (const std::string& arguments :
       {"run " + script.Path(), "run '" + wrong.Path() + "'", "guide '" + listings.Path() + "'",
        "guide '" + hostile + "'", "--plugin '" + wrong.Path() + "' run"}) {
    const epg_test::TempFile command("#!/bin/sh\nTERM=dumb exec " + Shell() + " " + arguments +
                                     "\n");
    const std::string shown =
        epg_test::RunCommand("script -qec 'sh " + command.Path() + "' /dev/null </dev/null").out;
    EXPECT_EQ(shown.find_first_of("\x1b\x07"), std::string::npos) << arguments << '\n' << shown;
    EXPECT_EQ(shown.find("\u009b"), std::string::npos) << arguments;
    EXPECT_EQ(shown.find("\x9b"
                         "2J"),
              std::string::npos)
        << arguments;
    EXPECT_NE(shown.find("title"), std::string::npos) << arguments << '\n' << shown;
  }
  // Programs read the bytes as they are.
  const Outcome piped = RunShell("run " + script.Path());
  EXPECT_NE(piped.err.find("element: " + hostile), std::string::npos) << piped.err;
}

TEST(Epgshell, ShowsListingsWithoutEndsAndFlags) {
  const epg_test::TempFile file(
      "<tv generator-info-name=\"XMLTV\">\n<channel id=\"a\"><display-name>\x1b[2JA</display-name>"
      "</channel>\n<programme start=\"20061123200000\" channel=\"a\"><title>First</title>"
      "<desc>Of two.</desc></programme>\n<programme start=\"20061123203000\" channel=\"a\">"
      "<title>Second</title></programme>\n</tv>\n");
  const Outcome grid = RunShell("guide " + file.Stem() + " --at '23.11.2006' --hours 1");
  EXPECT_NE(grid.out.find("\n [2JA   |First                              |Second\n"),
            std::string::npos)
      << grid.out << grid.err;
  const Outcome details = RunShell("guide " + file.Stem() + " --details 0 --at '2006-11-23 20:10'");
  EXPECT_EQ(details.out,
            " [2JA, Thu 23 Nov 2006\n  20:00-20:30  First\n               Of two.\n"
            "  20:30-00:30  Second\n")
      << details.err;
}

TEST(Epgshell, ShowsWhatIsOnAndFindsProgrammes) {
  const struct {
    const char* arguments;
    int status;
    const char* out;
  } rows[] = {
      {"now samples/week --at 20:15 --stations 2,thimble", 0,
       "Mon 23 Nov 2026 20:15\n"
       "Velvet Reel  20:00-22:00 #.......  The Orchard on Ganyme~  22:00 The Gilded Moth\n"
       "Thimble      20:00-21:00 ##......  Say That Again, Slowly  21:00 The Ministry o~\n"},
      {"stations samples/week --stations 1-2", 0,
       "Index  Name         Id                Programmes  Listed\n"
       "    1  Orrery       Orrery-ORY-2             125  Mon 23 Nov 2026 05:00 to Mon 30 Nov 2026 "
       "05:00\n"
       "    2  Velvet Reel  Velvet-Reel-VLVT         126  Mon 23 Nov 2026 05:00 to Mon 30 Nov 2026 "
       "05:00\n"},
      {"find samples/week ORCHARD --in title --from '24 Nov' --days 4", 0,
       "Thu 26 Nov 2026 14:40  Velvet Reel  The Orchard on Ganymede\n"},
      {"find samples/week gardeners tend --stations 2 --from 05:00 --days 1", 0,
       "Mon 23 Nov 2026 20:00  Velvet Reel  The Orchard on Ganymede\n"
       "    Four gardeners tend the only apple trees beyond Mars, and then a fifth\n"
       "    knocks at the airlock.\n"
       "    Tender, funny science fiction with a great deal to say about pruning.\n"},
      {"find samples/week orchard --in people --from 05:00 --days 1 --stations 0", 0,
       "Mon 23 Nov 2026 22:35  Harbour One  A Quarrel of Crows\n"
       "    Vivienne Orchard, Hal Brannigan-Lowe, Sidony West, Denholm Strake\n"},
      {"find samples/week no such words", 1, ""},
      {"now samples/none --json", 1,
       "{\n  \"error\": \"there is no listings file samples/none\"\n}\n"},
  };
  for (const auto& [arguments, status, out] : rows) {
    const Outcome outcome = RunShell(arguments);
    EXPECT_EQ(outcome.status, status) << arguments << ": " << outcome.err;
    EXPECT_EQ(outcome.out, out) << arguments;
  }
  const Outcome usual =
      epg_test::RunCommand("cd " EPG_SOURCE_DIR " && TZ=UTC EPG_LISTINGS=samples/week " + Shell() +
                           " find ganymede --from 05:00 --days 1");
  EXPECT_EQ(usual.out, "Mon 23 Nov 2026 20:00  Velvet Reel  The Orchard on Ganymede\n");
}

TEST(Epgshell, WritesThePageWholeOrNotAtAll) {
  const epg_test::TempFile page("old", "page.html");
  const epg_test::TempFile hostile(
      "<tv generator-info-name='XMLTV'><channel id='a'><display-name>A</display-name></channel>"
      "<programme start='20261123200000 +0000' channel='a'>"
      "<title>&lt;/script&gt;@DATA@\xe9</title></programme></tv>");
  const std::string folder = page.Path().substr(0, page.Path().rfind('/'));
  EXPECT_EQ(RunShell("guide nowhere --html " + page.Path()).status, 1);
  EXPECT_EQ(ReadFile(page.Path()), "old");
  const Outcome failed = RunShell("guide samples/week --html " + folder + "/none/page.html");
  EXPECT_EQ(failed.status, 1);
  EXPECT_NE(failed.err.find("epgshell: cannot write "), std::string::npos) << failed.err;
  const Outcome written = RunShell("guide " + hostile.Path() + " --html " + page.Path());
  EXPECT_EQ(written.status, 0) << written.err;
  const std::string text = ReadFile(page.Path());
  EXPECT_TRUE(text.starts_with("<!DOCTYPE html>") && text.ends_with("</html>\n")) << text;
  EXPECT_NE(text.find("\"\\u003c/script>@DATA@\u00e9\""), std::string::npos);
  EXPECT_EQ(
      RunShell("stations samples/week --json | wc -l >" + folder + "/count; ls " + folder).out,
      "count\npage.html\n");
}

TEST(Epgshell, SaysWhyThereIsNoGuide) {
  const epg_test::TempFile html("<html><body>404</body></html>", "html.xml");
  const epg_test::TempFile cut("<tv generator-info-name='XMLTV'><channel id='a'>", "cut.xml");
  const struct {
    std::string arguments;
    int status;
    std::string said;
  } rows[] = {
      {"guide nowhere", 1, "epgshell: there is no listings file nowhere.xml\n"},
      {"guide samples", 1, "epgshell: samples is a folder; name a listings file in it\n"},
      {"guide README.md", 1, "rename README.md to README.md.xml\n"},
      {"guide " + html.Path(), 1, "html.xml gives no schedule: no station was found in it."},
      {"guide " + cut.Stem(), 1, "cut.xml gives no schedule: Premature end of file.\n"},
      {"guide samples/week --at 2020-01-01", 1,
       "nothing is listed at Wed 1 Jan 2020 00:00; the schedule runs from Mon 23 Nov 2026 05:00"},
      {"guide samples/week --stations reel,nope", 1, "there is no station nope; there are Harbour"},
      {"guide samples/week --at yesternight", 2, "--at: yesternight is not a time; write it as"},
      {"guide samples/week --plugin x", 2, "cannot use the plug-in: "},
  };
  for (const auto& [arguments, status, said] : rows) {
    const Outcome outcome = RunShell(arguments);
    EXPECT_EQ(outcome.status, status) << arguments;
    EXPECT_NE(outcome.err.find(said), std::string::npos) << arguments << ": " << outcome.err;
    EXPECT_EQ(outcome.out, "") << arguments;
  }
}

}  // namespace
