#include "tools/epgcache/losses.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "tools/epgcache/byte_source.h"
#include "tools/epgcache/failure.h"
#include "tools/epgcache/guide_reader.h"
#include "tools/epgcache/markup.h"
#include "tools/epgcache/programme.h"
#include "tools/epgcache/text.h"
#include "tools/epgcache/xmltv_time.h"

namespace epgcache {

namespace {

template <std::size_t kCount>
bool IsOneOf(std::string_view name, const std::string_view (&names)[kCount]) {
  return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

// What the bytes hold that the plug-in's reader takes in a way of its own.
class Bytes {
 public:
  explicit Bytes(std::string_view bytes) {
    std::size_t at = 0;
    for (Markup markup = {}; FindMarkup(bytes, at, markup); at = markup.end) {
      CountReferences(bytes.substr(at, markup.begin - at));
      if (markup.kind == MarkupKind::kComment &&
          bytes.substr(markup.begin + 1, markup.end - markup.begin - 1).find('<') !=
              std::string_view::npos)
        ++living_comments;
      // Of the others the plug-in uses no attributes.
      if (IsOneOf(markup.name, {"channel", "programme", "rating"}) &&
          markup.kind != MarkupKind::kEnd)
        CountAttributes(bytes, markup);
    }
    CountReferences(bytes.substr(at));
  }

  std::uint64_t numeric_references = 0;
  std::uint64_t other_references = 0;
  std::uint64_t living_comments = 0;
  std::uint64_t misread_tags = 0;
  std::uint64_t quoting_attributes = 0;

 private:
  void CountReferences(std::string_view text) {
    for (std::size_t at = 0; (at = text.find('&', at)) != std::string_view::npos; ++at) {
      const std::string_view name = text.substr(at + 1, text.find(';', at) - at - 1);
      if (name.starts_with('#')) {
        ++numeric_references;
      } else if (!IsOneOf(name, {"amp", "lt", "gt", "quot", "apos"})) {
        ++other_references;
      }
    }
  }

  void CountAttributes(std::string_view bytes, const Markup& tag) {
    bool misread = false;
    for (const MarkupAttribute& attribute : AttributesOf(bytes, tag)) {
      misread = misread || attribute.before != " " || attribute.equals != "=";
      CountReferences(attribute.value);
      if (attribute.value.find_first_of("'\"") != std::string_view::npos ||
          attribute.value.find("&apos;") != std::string_view::npos ||
          attribute.value.find("&quot;") != std::string_view::npos)
        ++quoting_attributes;
    }
    misread_tags += misread ? 1 : 0;
  }
};

// What the guide says that the plug-in's XMLTV importer has no ear for.
class Meaning final : public GuideConsumer {
 public:
  void Take(const Channel& channel) override {
    channels_.insert(channel.id);
    if (channel.names.size() > 2) more_names += channel.names.size() - 2;
  }

  bool Begin(const Programme& programme) override {
    if (!channels_.contains(programme.channel)) ++without_station;
    const auto start = ParseXmltvTime(programme.start, Zone());
    const auto stop = ParseXmltvTime(programme.stop, Zone());
    if (!start) {
      ++without_start;
    } else {
      if (!starts_[programme.channel].insert(start->minutes).second) ++same_start;
      if (stop && stop->minutes < start->minutes) ++stop_before_start;
    }
    if (!stop) ++without_stop;
    if (ZoneIsLost(programme.start) || ZoneIsLost(programme.stop)) ++lost_zones;
    met_.clear();
    return true;
  }

  void Take(const Programme&) override {}

  void Meet(const char* parent, const char* element) override {
    const std::string_view name = element;
    const std::string_view above = parent;
    const bool known =
        above == "programme" ? IsOneOf(name, {"title", "category", "desc", "previously-shown",
                                              "sub-title", "date", "new", "premiere", "rating",
                                              "star-rating", "video", "subtitles", "credits"})
        : above == "credits" ? IsOneOf(name, {"director", "actor"})
        : above == "video"   ? IsOneOf(name, {"aspect", "colour"})
                             : !IsOneOf(above, {"rating", "star-rating"}) || name == "value";
    if (!known) {
      ++unknown_elements;
      unknown_names_.emplace(name);
    } else if (IsOneOf(name, {"title", "sub-title", "desc", "category", "date", "star-rating",
                              "director"})) {
      if (!met_.emplace(name).second) ++overwritten;
    }
  }

  std::string UnknownNames() const {
    constexpr std::size_t kMost = 8;
    std::string text;
    std::size_t count = 0;
    for (const std::string& name : unknown_names_) {
      if (++count > kMost) return text + ", ...";
      text += (text.empty() ? "" : ", ") + Shown(name);
    }
    return text;
  }

  std::uint64_t more_names = 0;
  std::uint64_t without_station = 0;
  std::uint64_t without_start = 0;
  std::uint64_t without_stop = 0;
  std::uint64_t same_start = 0;
  std::uint64_t stop_before_start = 0;
  std::uint64_t lost_zones = 0;
  std::uint64_t unknown_elements = 0;
  std::uint64_t overwritten = 0;

 private:
  // The importer knows a zone by a blank, a sign and four digits, and takes all else as UTC.
  static bool ZoneIsLost(std::string_view text) {
    const std::size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
    const std::string_view zone = text.substr(digits);
    if (zone.size() == 6 && zone[0] == ' ' && (zone[1] == '+' || zone[1] == '-')) return false;
    const auto whole = ParseXmltvTime(text, Zone());
    const auto plain = ParseXmltvTime(text.substr(0, digits), Zone());
    return whole && plain && (whole->minutes != plain->minutes || whole->zone_unknown);
  }

  std::set<std::string, std::less<>> channels_;
  std::map<std::string, std::set<std::int32_t>> starts_;
  std::set<std::string, std::less<>> met_;  // of the programme
  std::set<std::string, std::less<>> unknown_names_;
};

}  // namespace

std::vector<Loss> FindLosses(const std::string& name, std::string_view bytes,
                             const Options& options) {
  const Bytes raw(bytes);
  Meaning meaning;
  std::string fault;
  try {
    ByteSource source(name, options.max_size);
    const ReadingOutcome outcome = ReadGuide(source, options.reading, meaning);
    if (!outcome.fault.reason.empty()) {
      fault = "place where it is not well-formed, line " + std::to_string(outcome.fault.line) +
              " column " + std::to_string(outcome.fault.column) + ": " + outcome.fault.reason +
              " (what follows is not counted)";
    }
  } catch (const Failure&) {  // not XMLTV: what its texts mean is not known here
  }
  const std::pair<std::uint64_t, std::string> all[] = {
      {raw.numeric_references, "numeric character references, which vanish"},
      {raw.other_references, "references by other names than the five of XML, which vanish"},
      {raw.living_comments, "comments that hold markup, which is read"},
      {raw.misread_tags, "tags whose attributes are misread: line breaks, tabs or blanks too many"},
      {raw.quoting_attributes, "attributes that lose an apostrophe or quotation mark"},
      {meaning.without_station, "programmes left out, as no channel before them is theirs"},
      {meaning.without_start, "programmes without a readable start, which get a wrong one"},
      {meaning.without_stop, "programmes without a readable stop, which have no end"},
      {meaning.stop_before_start, "programmes that stop before they start, and end a day later"},
      {meaning.lost_zones, "programmes whose time zone is not understood, taken as UTC"},
      {meaning.same_start, "programmes left out, as one of their station has their start"},
      {meaning.overwritten, "texts overwritten by a later one of their kind"},
      {meaning.more_names, "display names beyond the second of a channel"},
      {meaning.unknown_elements, "elements not read: " + meaning.UnknownNames()},
      {fault.empty() ? 0U : 1U, fault},
  };
  std::vector<Loss> losses;
  for (const auto& [count, what] : all) {
    if (count != 0) losses.push_back({count, what});
  }
  return losses;
}

}  // namespace epgcache
