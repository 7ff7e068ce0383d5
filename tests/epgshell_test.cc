// The console program as other programs see it: what it prints where, and its exit status.

#include <gtest/gtest.h>

#include <regex>
#include <string>

#include "tests/support/test_support.h"

namespace {

using epg_test::Outcome;
using epg_test::ReadFile;

// Runs the program in the source tree, in UTC, with a script on its standard input.
Outcome RunShell(const std::string& arguments, const std::string& script = "") {
  const epg_test::TempFile input(script, "input");
  return epg_test::RunCommand("cd " EPG_SOURCE_DIR " && TZ=UTC LC_ALL=C COLUMNS=80 " EPG_SHELL " " +
                              arguments + " <" + input.Path());
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
      {"run " + unknown.Path(), unknown.Path() + ":2: EPGBROWSER has no method Getready; docs"},
      {"run /", "epgshell: cannot read the script /: Is a directory"},
      {"run a b", "epgshell: run takes one script, not also b\nusage: epgshell "},
      {"", "epgshell: a command is missing\nusage: epgshell "},
      {"fly", "epgshell: unknown command fly; there are guide and run\nusage: epgshell "},
      {"--plugin", "epgshell: --plugin needs a file\nusage: epgshell "},
      {"--plugin " + no_plugin.Path() + " run", "epgshell: cannot use the plug-in: "},
      {"--plugin=" EPG_ENGINE " run", "lacks the functions Initialise and Release\n"},
  };
  for (const auto& [arguments, part] : rows) {
    const auto [status, out, err] = RunShell(arguments);
    EXPECT_EQ(std::pair(status, out), std::pair(2, std::string())) << arguments;
    EXPECT_NE(err.find(part), std::string::npos) << arguments << '\n' << err;
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
      {"guide samples/week --at yesternight", 2, "--at yesternight is no time; write it as"},
      {"guide samples/week --plugin x", 2, "guide has no option --plugin\nusage: epgshell"},
  };
  for (const auto& [arguments, status, said] : rows) {
    const Outcome outcome = RunShell(arguments);
    EXPECT_EQ(outcome.status, status) << arguments;
    EXPECT_NE(outcome.err.find(said), std::string::npos) << arguments << ": " << outcome.err;
    EXPECT_EQ(outcome.out, "") << arguments;
  }
}

}  // namespace
