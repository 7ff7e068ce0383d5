// The console program as other programs see it: what it prints where, and its exit status.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <regex>
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
      {"run " + unknown.Path(), unknown.Path() + ":2: EPGBROWSER has no method Getready\n"},
      {"run /", "epgshell: cannot read the script /: Is a directory"},
      {"run a b", "epgshell: run takes one script, not also b\nusage: epgshell "},
      {"", "epgshell: a command is missing\nusage: epgshell "},
      {"fly", "epgshell: unknown command fly\nusage: epgshell "},
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

}  // namespace
