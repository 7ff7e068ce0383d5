// The command line of epgshell.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace shell {

enum class Command { kGuide, kNow, kFind, kStations, kRun };

struct Options {
  Command command;
  std::string plugin;        // empty for the one that belongs to this program
  std::string script = "-";  // of run

  // Of the commands that show a schedule.
  std::string listings;  // with or without its ".xml"
  std::string at;        // empty: now, or the schedule's start when now lies outside it
  std::vector<std::string> stations;  // all when there is none
  bool json = false;

  // Of guide.
  std::int32_t hours = 0;        // 0 for the usual ones
  std::string details;           // a station, or empty for the grid
  std::string html;              // a web page to write instead
  std::string program_template;  // of the details; empty for the usual one

  // Of find.
  std::vector<std::string> words;
  std::vector<std::string> fields;  // title, episode, people, description; all when there is none
  std::string from;                 // empty: from the start
  std::int32_t days = 0;            // 0: to the end
};

// The options of a command line. Nothing when it asked for help or the version, or is wrong; that
// has been printed then, and `status` is the exit status.
std::optional<Options> ReadOptions(int count, const char* const* arguments, int& status);

}  // namespace shell
