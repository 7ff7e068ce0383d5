// The console program as other programs see it: what it prints where, and its exit status.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/support/test_support.h"

namespace {

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

struct Outcome {
  int status;
  std::string out;
  std::string err;
};

// Runs the program in the source tree, in UTC, with a script on its standard input.
Outcome RunShell(const std::string& arguments, const std::string& script = "") {
  const epg_test::TempFile input(script, "input");
  const std::string out = input.Path() + ".out";
  const std::string err = input.Path() + ".err";
  const std::string command = "cd " EPG_SOURCE_DIR " && TZ=UTC " EPG_SHELL " " + arguments + " <" +
                              input.Path() + " >" + out + " 2>" + err;
  const int status = std::system(command.c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadFile(out), ReadFile(err)};
}

// The same text without the milliseconds that a load took.
std::string WithoutTimes(std::string text) {
  const std::size_t end = text.find(" msec)");
  if (end != std::string::npos) {
    const std::size_t begin = text.rfind('(', end) + 1;
    text.replace(begin, end - begin, "N");
  }
  return text;
}

constexpr const char* kStarting = "notice: EPGBROWSER DLL Starting\n";
constexpr const char* kReleasing = "notice: EPGBROWSER plug-in Releasing\n";

TEST(Epgshell, RunsTheTourOfTheSampleWeek) {
  const Outcome tour = RunShell("run samples/tour.script");
  EXPECT_EQ(tour.status, 0);
  std::string out = tour.out;
  std::string line;  // the current time, the one answer that changes
  std::size_t begin = 0;
  for (int i = 0; i < 7; ++i) begin = out.find('\n', begin) + 1;
  out.erase(begin, out.find('\n', begin) + 1 - begin);
  EXPECT_EQ(out, ReadFile(EPG_SOURCE_DIR "/tests/data/tour.expected"));
  EXPECT_EQ(WithoutTimes(tour.err),
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
  const struct {
    std::string name;
    std::string log;
    std::string box;
  } rows[] = {
      {"/no/such\\n%n%s", "log: Failed to open file \"/no/such\n  %n%s.xml\".\n",
       "Failed to open file \"/no/such\n  %n%s.xml\"."},
      {binary.Stem(),
       "log: EPG Loader: Importing Radio Times format XML, " + binary.Path() +
           ".\nlog: EPG Loader: Import failed, [File &quot;" + binary.Path() +
           "&quot; loaded OK.]\n",
       "Can't identify content, don't know how to decode!"},
  };
  for (const auto& row : rows) {
    const Outcome outcome = RunShell(
        "run", "InitSchedule(\"\", \"\", \"" + row.name + "\")\nGetStationCount()\nGetReady()\n");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "ok\n0\n0\n");
    EXPECT_EQ(outcome.err, kStarting + row.log + "message box [Telvyn configuration error]: " +
                               row.box + '\n' + kReleasing);
  }
}

TEST(Epgshell, AScriptThatEndsDuringALoadWaitsForItQuietly) {
  const Outcome outcome = RunShell("run", "InitSchedule(\"\",\"\",\"samples/week\")\n");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "ok\n");
  EXPECT_NE(outcome.err.find("Schedule Items: 635"), std::string::npos);
  EXPECT_EQ(outcome.err.find("message box"), std::string::npos);
  EXPECT_EQ(outcome.err.find("reference count"), std::string::npos);
}

TEST(Epgshell, WrongUseRunsNothing) {
  const epg_test::TempFile script("GetReady()\nNope(\nGetReady\n", "s.script");
  const epg_test::TempFile unknown("GetReady()\nGetready()\n", "s.script");
  const epg_test::TempFile no_plugin("text", "no-plugin.so");
  const struct {
    std::string arguments;
    std::string err;  // a part of it
  } rows[] = {
      {"run " + script.Path(), script.Path() +
                                   ":2: an argument is an integer or a text in double "
                                   "quotes\n" +
                                   script.Path() + ":3: '(' expected after GetReady\n"},
      {"run " + unknown.Path(), unknown.Path() + ":2: EPGBROWSER has no method Getready\n"},
      {"run /no/such.script", "epgshell: cannot read the script /no/such.script: No such file"},
      {"run /", "epgshell: cannot read the script /: Is a directory"},
      {"run a b", "epgshell: run takes one script, not also b\nusage: epgshell "},
      {"", "epgshell: a command is missing\nusage: epgshell "},
      {"fly", "epgshell: unknown command fly\nusage: epgshell "},
      {"--nope run", "epgshell: unknown option --nope\nusage: epgshell "},
      {"--plugin", "epgshell: --plugin needs a file\nusage: epgshell "},
      {"--plugin " + no_plugin.Path() + " run", "epgshell: cannot use the plug-in: "},
      {"--plugin=" EPG_ENGINE " run", "lacks the functions Initialise and Release\n"},
  };
  for (const auto& row : rows) {
    const Outcome outcome = RunShell(row.arguments);
    EXPECT_EQ(outcome.status, 2) << row.arguments;
    EXPECT_EQ(outcome.out, "") << row.arguments;
    EXPECT_NE(outcome.err.find(row.err), std::string::npos) << row.arguments << '\n' << outcome.err;
  }
}

}  // namespace
