#include "app/guide_screen.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "app/complain.h"
#include "app/display_text.h"
#include "app/documents.h"
#include "app/guide_grid.h"
#include "app/local_time.h"
#include "app/terminal.h"
#include "text/letters.h"

namespace shell {

namespace {

constexpr std::int32_t kUsualHours = 3;
constexpr std::int32_t kUsualDetailsHours = 24;
constexpr const char* kUsualTemplate =
    "$Title[$(: )$EpisodeTitle][ ($PublishDate)][, $Genre][, $StarRating][ ($Flags)]"
    "[\\n$Description][\\nWith $Actors][\\nDirected by $Director]";

class GuideScreen {
 public:
  GuideScreen(Guide& guide, const GuideOptions& options)
      : guide_(guide), options_(options), terminal_(Terminal::Find()) {
    now_ = guide_.Now(1);
    offset_ = ReadPluginTime(guide_.TimeText(now_, 0)).value_or(now_) - now_;
    begin_ = guide_.Start();
    end_ = guide_.End();
    // Where ends are not known, the last start has to do.
    for (std::int32_t i = 0; i < guide_.StationCount(); ++i) {
      const std::int32_t count = guide_.ProgramCount(i);
      programs_ += count;
      if (count == 0) continue;
      const std::int64_t last = std::int64_t{guide_.ProgramStart(i, count - 1)} + 1;
      end_ = std::max(end_, Clamped(last));
    }
  }

  ExitStatus Show() {
    if (programs_ == 0) {
      const std::int32_t count = guide_.StationCount();
      ComplainAsShell(
          "no programme is listed for " +
          (count == 1 ? "the one station" : "any of the " + std::to_string(count) + " stations") +
          "; " + DocumentPath("listings.md") + " says what a programme needs");
      return kCallFailed;
    }
    if (!ChooseFrom()) return kCallFailed;
    const bool details = !options_.details.empty();
    const std::int32_t hours = options_.hours.value_or(details ? kUsualDetailsHours : kUsualHours);
    to_ = Clamped(std::int64_t{from_} + std::int64_t{hours} * 60);
    from_ = std::min(from_, to_ - 1);
    return details ? ShowDetails() : ShowGrid();
  }

 private:
  std::string When(std::int32_t time) const { return DateTimeText(time + offset_); }

  // The present half hour, or what was asked for.
  bool ChooseFrom() {
    const bool now_is_listed = now_ >= begin_ && now_ < end_;
    const std::int32_t first = Clamped(std::int64_t{begin_} - (begin_ % 30 + 30) % 30);
    from_ = now_is_listed ? guide_.Now(30) : first;
    if (options_.at.empty()) return true;
    // It has been understood once; only now is it known what it means.
    const Moment moment = ReadMoment(options_.at, now_ + offset_).value_or(Moment{});
    // A time of day alone is today's, or the first listed day's.
    const std::int64_t usual = (now_is_listed ? now_ : begin_) + offset_;
    const std::int64_t day = moment.day.value_or(usual - usual % kMinutesOfDay);
    std::int64_t local = day + moment.minute.value_or(0);
    if (!moment.day && !now_is_listed && local < usual - 30) local += kMinutesOfDay;
    const std::int64_t time = local - offset_;
    const std::int64_t last = moment.minute ? time : time + kMinutesOfDay - 1;
    if (last < begin_ || time >= end_) {
      ComplainAsShell("nothing is listed at " + DateTimeText(local) + "; the schedule runs from " +
                      When(begin_) + " to " + When(end_));
      return false;
    }
    // A day begins where its listings do.
    from_ = moment.minute ? Clamped(time) : std::max(Clamped(time), first);
    return true;
  }

  // Stations are asked for by their index, as in 7 or 0-9, or by their name or id, whole or in
  // part.
  bool FindStation(const std::string& wanted, std::vector<std::int32_t>& found) {
    const std::int32_t count = guide_.StationCount();
    const std::size_t hyphen = wanted.find('-', 1);
    const auto first = ReadWholeNumber(wanted.substr(0, hyphen));
    const auto last =
        hyphen == std::string::npos ? first : ReadWholeNumber(wanted.substr(hyphen + 1));
    if (first && last && *first >= 0 && *first <= *last && *first < count) {
      for (std::int32_t i = *first; i <= std::min(*last, count - 1); ++i) found.push_back(i);
      return true;
    }
    const std::string text = Lowered(wanted);
    std::vector<std::int32_t> parts;
    for (std::int32_t i = 0; i < count; ++i) {
      const std::string name = Lowered(guide_.StationName(i));
      const std::string id = Lowered(guide_.StationId(i));
      if (name == text || id == text) {
        found.push_back(i);
        return true;
      }
      if (name.find(text) != std::string::npos || id.find(text) != std::string::npos) {
        parts.push_back(i);
      }
    }
    if (!parts.empty()) {
      found.insert(found.end(), parts.begin(), parts.end());
      return true;
    }
    std::string known;
    for (std::int32_t i = 0; i < std::min(count, 12); ++i) {
      known += (i == 0 ? "" : ", ") + guide_.StationName(i);
    }
    if (count > 12) known += ", ... (" + std::to_string(count) + " in all)";
    ComplainAsShell("there is no station " + wanted + "; there are " + known);
    return false;
  }

  // The programmes of a station that touch the window, with their ends. Where an end is not known,
  // it is the next start, some hours on at the most.
  template <typename Take>
  void ForEachProgram(std::int32_t station, Take take) {
    constexpr std::int32_t kLookBack = 64;  // for long programmes that others overlap
    constexpr std::int64_t kLongestUnknown = 240;
    const std::int32_t count = guide_.ProgramCount(station);
    std::int32_t low = 0;
    for (std::int32_t high = count; low < high;) {
      const std::int32_t middle = low + (high - low) / 2;
      if (guide_.ProgramStart(station, middle) < from_) {
        low = middle + 1;
      } else {
        high = middle;
      }
    }
    for (std::int32_t program = std::max(0, low - kLookBack); program < count; ++program) {
      const std::int32_t start = guide_.ProgramStart(station, program);
      if (start >= to_) break;
      std::int32_t end = guide_.ProgramEnd(station, program);
      if (end <= start) {
        end = Clamped(start + kLongestUnknown);
        if (program + 1 < count) end = std::min(end, guide_.ProgramStart(station, program + 1));
      }
      if (end > from_) take(program, start, end);
    }
  }

  ExitStatus ShowGrid() {
    std::vector<std::int32_t> stations;
    for (const std::string& wanted : options_.stations) {
      if (!FindStation(wanted, stations)) return kCallFailed;
    }
    const std::int32_t count = guide_.StationCount();
    if (options_.stations.empty()) {
      for (std::int32_t i = 0; i < count; ++i) stations.push_back(i);
    }
    GuideGrid grid = {from_, to_, now_, offset_, {}};
    for (const std::int32_t station : stations) {
      GuideRow row = {guide_.StationName(station), {}};
      ForEachProgram(station, [&](std::int32_t program, std::int32_t start, std::int32_t end) {
        row.cells.push_back({start, end, guide_.ProgramName(station, program)});
      });
      grid.rows.push_back(std::move(row));
    }
    for (const std::string& line : DrawGrid(grid, terminal_)) Print(line);
    Print("");
    Legend("Listed: " + When(begin_) + " to " + When(end_) + ", " + std::to_string(programs_) +
           (programs_ == 1 ? " programme on " : " programmes on ") + std::to_string(count) +
           (count == 1 ? " station" : " stations"));
    Legend("> on now   < began before   . nothing listed");
    return Finish();
  }

  ExitStatus ShowDetails() {
    std::vector<std::int32_t> stations;
    if (!FindStation(options_.details, stations)) return kCallFailed;
    const std::string& text =
        options_.program_template.empty() ? kUsualTemplate : options_.program_template;
    for (const std::int32_t station : stations) {
      std::optional<std::int64_t> day;
      ForEachProgram(station, [&](std::int32_t program, std::int32_t start, std::int32_t end) {
        const std::int64_t local = start + offset_;
        const std::int64_t minute = (local % kMinutesOfDay + kMinutesOfDay) % kMinutesOfDay;
        if (day != local - minute) {
          if (day) Print("");
          day = local - minute;
          for (const std::string& line : WrapColumns(
                   guide_.StationName(station) + ", " + LongDayText(local), terminal_.columns))
            Print(line);
        }
        const bool on_now = start <= now_ && now_ < end;
        ShowProgram(std::string(on_now ? "> " : "  ") + HourText(local) + '-' +
                        HourText(end + offset_) + "  ",
                    guide_.ProgramData(station, program, text));
      });
      if (!day) {
        Legend(guide_.StationName(station) + ": nothing is listed from " + When(from_) + " to " +
               When(to_));
      }
    }
    return Finish();
  }

  void ShowProgram(std::string lead, const std::string& text) {
    constexpr int kFewestColumns = 24;
    std::size_t indent = lead.size();
    if (terminal_.columns - static_cast<int>(indent) < kFewestColumns) {
      Print(lead);
      indent = 4;
      lead.assign(indent, ' ');
    }
    std::vector<std::string> lines =
        WrapColumns(text, terminal_.columns - static_cast<int>(indent));
    if (lines.empty()) lines.emplace_back("(no details)");
    for (const std::string& line : lines) {
      Print(lead + line);
      lead.assign(indent, ' ');
    }
  }

  void Legend(const std::string& text) {
    for (const std::string& line : WrapColumns(text, terminal_.columns)) Print(line);
  }

  void Print(const std::string& line) const {
    // Colours are not part of what Shown may touch; a terminal that is not UTF-8 does without.
    const std::string whole = (terminal_.ascii ? Shown(line, true) : line) + '\n';
    std::fwrite(whole.data(), 1, whole.size(), stdout);
  }

  static std::int32_t Clamped(std::int64_t time) {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(time, Limits::min() + 1, Limits::max()));
  }

  static ExitStatus Finish() {
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return kAllDone;
    ComplainAsShell("cannot write the guide to standard output");
    return kCallFailed;
  }

  Guide& guide_;
  const GuideOptions& options_;
  const Terminal terminal_;
  std::int32_t now_ = 0;
  std::int64_t offset_ = 0;
  std::int32_t begin_ = 0;
  std::int32_t end_ = 0;
  std::int64_t programs_ = 0;
  std::int32_t from_ = 0;
  std::int32_t to_ = 0;
};

}  // namespace

ExitStatus ShowGuideScreen(Guide& guide, const GuideOptions& options) {
  return GuideScreen(guide, options).Show();
}

}  // namespace shell
