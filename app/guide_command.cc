#include "app/guide_command.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <limits>
#include <mutex>
#include <string_view>
#include <thread>
#include <utility>

#include "app/complain.h"
#include "app/display_text.h"
#include "app/documents.h"
#include "app/guide.h"
#include "app/guide_grid.h"
#include "app/local_time.h"
#include "app/session.h"
#include "app/terminal.h"
#include "host/mlog.h"

namespace shell {

namespace {

constexpr std::int32_t kUsualHours = 3;
constexpr std::int32_t kUsualDetailsHours = 24;
constexpr std::int32_t kMostHours = 24 * 14;
constexpr std::string_view kExtension = ".xml";
constexpr const char* kUsualTemplate =
    "$Title[$(: )$EpisodeTitle][ ($PublishDate)][, $Genre][, $StarRating][ ($Flags)]"
    "[\\n$Description][\\nWith $Actors][\\nDirected by $Director]";

std::optional<std::int32_t> Number(std::string_view text) {
  std::int32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  const bool whole = !text.empty() && end == text.data() + text.size() && error == std::errc();
  return whole ? std::optional(value) : std::nullopt;
}

// The parts of a list with commas, without the blanks around them.
std::vector<std::string> Split(std::string_view list) {
  std::vector<std::string> parts;
  while (!list.empty()) {
    const std::size_t end = std::min(list.find(','), list.size());
    std::string_view part = list.substr(0, end);
    part.remove_prefix(std::min(part.find_first_not_of(' '), part.size()));
    part = part.substr(0, part.find_last_not_of(' ') + 1);
    if (!part.empty()) parts.emplace_back(part);
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return parts;
}

// The name without its ".xml", which the plug-in adds. Nothing when there is no such file; that is
// said then.
std::optional<std::string> FindListings(const std::string& name) {
  const bool whole =
      name.size() > kExtension.size() &&
      name.compare(name.size() - kExtension.size(), kExtension.size(), kExtension) == 0;
  const std::string stem = whole ? name.substr(0, name.size() - kExtension.size()) : name;
  std::error_code error;
  if (std::filesystem::is_regular_file(stem + std::string(kExtension), error)) return stem;
  if (std::filesystem::is_directory(name, error)) {
    ComplainAsShell(name + " is a folder; name a listings file in it");
  } else if (!whole && std::filesystem::is_regular_file(name, error)) {
    ComplainAsShell("a listings file's name ends in .xml: rename " + name + " to " + name + ".xml");
  } else {
    ComplainAsShell("there is no listings file " + stem + std::string(kExtension) +
                    (std::filesystem::exists(name, error) ? "; it must be a plain file" : ""));
  }
  return std::nullopt;
}

// Says on standard error, where that is a terminal, what is being read and for how long, until it
// is destroyed. Quick work goes by without a word.
class Progress {
 public:
  explicit Progress(const std::string& file) {
    if (!ErrorsAreShown()) return;
    std::error_code error;
    const auto bytes = std::filesystem::file_size(file, error);
    text_ = "reading " + file;
    if (!error) text_ += " (" + std::to_string(bytes / 1'000'000) + " MB)";
    thread_ = std::thread([this] { Show(); });
  }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() {
    if (!thread_.joinable()) return;
    {
      const std::lock_guard lock(mutex_);
      done_ = true;
    }
    changed_.notify_all();
    thread_.join();
    if (shown_) std::fputs("\r\033[K", stderr);
  }

 private:
  void Show() {
    using Clock = std::chrono::steady_clock;
    const auto began = Clock::now();
    std::unique_lock lock(mutex_);
    auto wait = std::chrono::milliseconds(500);
    while (!changed_.wait_for(lock, wait, [this] { return done_; })) {
      const auto seconds = std::chrono::duration<double>(Clock::now() - began).count();
      std::fprintf(stderr, "\r%s, %.1f s", text_.c_str(), seconds);
      shown_ = true;
      wait = std::chrono::milliseconds(100);
    }
  }

  std::string text_;
  std::thread thread_;
  std::mutex mutex_;  // guards all below
  std::condition_variable changed_;
  bool done_ = false;
  bool shown_ = false;
};

// Why there is no schedule, from what the plug-in has logged: "... failed. [reason]", the reason's
// markup characters as references.
std::string Reason(const std::string& logged) {
  const std::size_t begin = logged.find('[');
  const std::size_t end = logged.rfind(']');
  if (begin == std::string::npos || end == std::string::npos || end < begin) return logged;
  std::string reason = logged.substr(begin + 1, end - begin - 1);
  if (reason.find("loaded OK") != std::string::npos) {
    return "no station was found in it. A file of a format that is not known ends so, too";
  }
  constexpr std::pair<std::string_view, char> kReferences[] = {
      {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}, {"&amp;", '&'}};
  constexpr std::size_t kLongest = 300;
  std::string plain;
  for (std::string_view rest = reason; !rest.empty() && plain.size() < kLongest;) {
    const auto* const found = std::find_if(
        std::begin(kReferences), std::end(kReferences),
        [&](const auto& one) { return rest.substr(0, one.first.size()) == one.first; });
    const bool is_reference = found != std::end(kReferences);
    plain += is_reference ? found->second : rest[0];
    rest.remove_prefix(is_reference ? found->first.size() : 1);
  }
  return plain.size() < kLongest ? plain : plain + " ...";
}

// Keeps the last of what the plug-in logs, for a load that fails.
class LastWords {
 public:
  LastWords() {
    ORVANE::SetLogSink([this](ORVANE::ENTRY type, std::string_view text) {
      if (type == ORVANE::ENTRY::Untyped || type == ORVANE::ENTRY::Error) text_ = text;
    });
  }
  LastWords(const LastWords&) = delete;
  LastWords& operator=(const LastWords&) = delete;
  ~LastWords() { ORVANE::SetLogSink({}); }

  // REQUIRES: no load runs.
  const std::string& Text() const { return text_; }

 private:
  std::string text_;
};

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
    const auto first = Number(wanted.substr(0, hyphen));
    const auto last = hyphen == std::string::npos ? first : Number(wanted.substr(hyphen + 1));
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

std::optional<GuideOptions> ReadGuideOptions(const std::vector<std::string>& arguments,
                                             std::string& error) {
  GuideOptions options;
  std::string hours;
  std::string stations;
  const struct {
    std::string_view name;
    std::string& value;
  } known[] = {{"--at", options.at},
               {"--hours", hours},
               {"--stations", stations},
               {"--details", options.details},
               {"--template", options.program_template}};
  for (std::size_t at = 0; at < arguments.size(); ++at) {
    const std::string& argument = arguments[at];
    if (argument.size() < 2 || argument[0] != '-') {
      if (!options.listings.empty()) {
        error = "guide takes one listings file, not also " + argument;
        return std::nullopt;
      }
      options.listings = argument;
      continue;
    }
    const std::size_t equals = argument.find('=');
    const std::string name = argument.substr(0, equals);
    const auto* const option = std::find_if(std::begin(known), std::end(known),
                                            [&](const auto& one) { return one.name == name; });
    if (option == std::end(known)) {
      error = "guide has no option " + name;
      return std::nullopt;
    }
    option->value.clear();
    if (equals != std::string::npos) {
      option->value = argument.substr(equals + 1);
    } else if (at + 1 < arguments.size()) {
      option->value = arguments[++at];
    }
    if (option->value.empty()) {
      error = name + " needs a value";
      return std::nullopt;
    }
  }
  if (options.listings.empty()) {
    error = "guide needs a listings file";
    return std::nullopt;
  }
  if (!hours.empty()) {
    options.hours = Number(hours);
    if (!options.hours || *options.hours < 1 || *options.hours > kMostHours) {
      error = "--hours takes a number from 1 to " + std::to_string(kMostHours) + ", not " + hours;
      return std::nullopt;
    }
  }
  if (!options.at.empty() && !ReadMoment(options.at, 0)) {
    error = "--at " + options.at +
            " is no time; write it as 20:15, \"tomorrow 20:15\", \"2026-11-23 20:15\" or \"23 Nov "
            "8pm\"";
    return std::nullopt;
  }
  options.stations = Split(stations);
  if (options.stations.empty() && !stations.empty()) {
    error = "--stations needs a value";
    return std::nullopt;
  }
  if (options.details.empty() && !options.program_template.empty()) {
    error = "--template goes with --details";
    return std::nullopt;
  }
  return options;
}

ExitStatus ShowGuide(const std::string& plugin_path, const GuideOptions& options) {
  const auto stem = FindListings(options.listings);
  if (!stem) return kCallFailed;
  const LastWords words;
  std::string error;
  const std::unique_ptr<Session> session = Session::Open(plugin_path, error);
  if (session == nullptr) {
    ComplainOfPlugin(error);
    return kNotRun;
  }
  Guide guide(*session);
  bool loaded = false;
  {
    const Progress progress(*stem + std::string(kExtension));
    loaded = guide.Load(*stem);
  }
  if (!loaded) {
    ComplainAsShell(*stem + std::string(kExtension) +
                    " gives no schedule: " + Reason(words.Text()));
    ComplainAsShell(DocumentPath("listings.md") +
                    " says how to write a file that loads, and what each message means");
    return kCallFailed;
  }
  return GuideScreen(guide, options).Show();
}

}  // namespace shell
