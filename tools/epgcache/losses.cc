#include "tools/epgcache/losses.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <unordered_map>
#include <utility>

#include "host/mstr.h"
#include "schedule/key_hash.h"
#include "schedule/time_value.h"
#include "text/counted_text.h"
#include "tools/epgcache/byte_source.h"
#include "tools/epgcache/failure.h"
#include "tools/epgcache/guide_reader.h"
#include "tools/epgcache/markup.h"
#include "tools/epgcache/programme.h"
#include "tools/epgcache/reader_walk.h"
#include "tools/epgcache/text.h"
#include "tools/epgcache/xmltv_time.h"
#include "xml/safe_node.h"
#include "xml/simple_xml_reader.h"

namespace epgcache {

namespace {

template <std::size_t kCount>
bool IsOneOf(std::string_view name, const std::string_view (&names)[kCount]) {
  return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

// What the plug-in's reader sees of a tag: the text up to the first '>'.
std::string TagAsRead(std::string_view bytes, const Markup& tag) {
  const std::string_view inside = bytes.substr(tag.begin + 1, tag.end - tag.begin - 1);
  std::string text;
  bool in_quotes = false;
  for (std::size_t at = 0; at < inside.size() && inside[at] != '>'; ++at) {
    const char byte = inside[at];
    if (byte == '&') {
      const std::size_t end = std::min(inside.find(';', at), inside.size());
      const char character = CharacterOf(inside.substr(at + 1, end - at - 1));
      if (character != '\0') text += character;
      at = end;
      continue;
    }
    if (byte == '"' || byte == '\'') in_quotes = !in_quotes;
    if (byte != '/' || in_quotes) text += byte;
  }
  return text;
}

// Constructs in the bytes that the plug-in's reader treats differently from XML.
class BytesAsRead {
 public:
  explicit BytesAsRead(std::string_view bytes) : bytes_(bytes) {
    std::size_t at = 0;
    int depth = 0;
    for (Markup markup = {}; FindMarkup(bytes, at, markup); at = markup.end) {
      CountReferences(bytes.substr(at, markup.begin - at));
      if (markup.kind == MarkupKind::kComment || markup.kind == MarkupKind::kOther) {
        const auto inside = bytes.substr(markup.begin + 1, markup.end - markup.begin - 1);
        if (inside.find_first_of("<&") != std::string_view::npos) ++living_comments;
      } else if (markup.IsElement()) {
        if (depth == 1) TakeRecord(markup);
        if (markup.name == "rating" && IsOdd(markup)) ++misread_tags;
      }
      if (markup.kind == MarkupKind::kStart) ++depth;
      if (markup.kind == MarkupKind::kEnd) --depth;
    }
    CountReferences(bytes.substr(at));
    const std::string_view encoding = DeclaredEncoding();
    if (!encoding.empty() && !SameLetters(encoding, "UTF-8")) {
      foreign_bytes =
          static_cast<std::uint64_t>(std::count_if(bytes.begin(), bytes.end(), [](char byte) {
            return static_cast<unsigned char>(byte) >= 0x80;
          }));
    }
  }

  std::string_view DeclaredEncoding() const {
    Markup markup = {};
    if (!FindMarkup(bytes_, 0, markup) || !bytes_.substr(markup.begin).starts_with("<?xml "))
      return {};
    return PartsOf(bytes_, markup).ValueOf("encoding");
  }

  std::uint64_t numeric_references = 0;
  std::uint64_t other_references = 0;
  std::uint64_t bare_ampersands = 0;
  std::uint64_t living_comments = 0;
  std::uint64_t misread_tags = 0;
  std::uint64_t foreign_bytes = 0;
  std::uint64_t same_channel = 0;
  std::uint64_t without_station = 0;
  std::uint64_t without_start = 0;
  std::uint64_t without_stop = 0;
  std::uint64_t misread_start = 0;
  std::uint64_t misread_stop = 0;
  std::uint64_t same_start = 0;

 private:
  bool IsOdd(const Markup& tag) const { return !AttributeOddity(bytes_, tag).empty(); }

  void CountReferences(std::string_view text) {
    for (std::size_t at = 0; (at = text.find('&', at)) != std::string_view::npos; ++at) {
      const std::string_view name = ReferenceAt(text.substr(at));
      if (name.empty()) {
        ++bare_ampersands;
      } else if (name.starts_with('#')) {
        ++numeric_references;
      } else if (CharacterOf(name) == '\0') {
        ++other_references;
      }
    }
  }

  void TakeRecord(const Markup& tag) {
    if (!IsOneOf(tag.name, {"channel", "programme"})) return;
    const TagParts parts = PartsOf(bytes_, tag);
    for (const TagAttribute& attribute : parts.attributes) CountReferences(attribute.value);
    if (IsOdd(tag)) ++misread_tags;
    CSafeNode node;
    CSimpleXMLReader().ParseTag(node, TagAsRead(bytes_, tag));
    if (ViewOf(node.name) == "channel") {
      if (!starts_.try_emplace(std::string(AttributeValue(node, "id"))).second) ++same_channel;
    } else {
      const auto station = starts_.find(AttributeValue(node, "channel"));
      if (station == starts_.end() || ViewOf(node.name) != "programme") {
        ++without_station;
      } else {
        TakeTimes(node, parts, station->second);
      }
    }
  }

  // Compares what the importer reads with what the guide contains.
  void TakeTimes(CSafeNode& node, const TagParts& parts, std::set<std::int32_t>& starts) {
    const auto start = ParseXmltvTime(parts.ValueOf("start"), Zone());
    const auto stop = ParseXmltvTime(parts.ValueOf("stop"), Zone());
    const std::int32_t read_start = ParseTime(TimeLayout::kDigits, AttributeValue(node, "start"));
    const std::int32_t read_stop = ParseTime(TimeLayout::kDigits, AttributeValue(node, "stop"));
    if (!starts.insert(read_start).second) {
      ++same_start;
      return;
    }
    if (!start) {
      ++without_start;
    } else if (read_start != start->minutes || start->zone_unknown) {
      ++misread_start;
    }
    if (!stop) {
      ++without_stop;
    } else if (read_stop != stop->minutes || stop->zone_unknown) {
      ++misread_stop;
    }
  }

  std::string_view bytes_;
  std::map<std::string, std::set<std::int32_t>, std::less<>> starts_;  // of each station
};

// What the guide says that the plug-in's XMLTV importer ignores.
class IgnoredByPlugin final : public GuideConsumer {
 public:
  void Add(const Channel& channel) override {
    if (channel.names.size() > 2) more_names += channel.names.size() - 2;
  }

  bool Begin(const Programme&) override {
    met_.clear();
    return true;
  }

  void Add(const Programme& programme) override {
    const std::string& description = programme.prog[kDescription];
    if (description.find('<') != std::string::npos || description.find("&#") != std::string::npos)
      ++resolved_descriptions;
    // Programmes are the same for the importer when these are; the first one's other fields stay.
    std::uint64_t same = 0;
    for (const ProgField field : {kTitle, kEpisodeTitle, kDescription, kActors})
      same = same * 31 + KeyHash(programme.prog[field]);
    std::uint64_t other = 0;
    for (const ProgField field :
         {kGenre, kDirector, kPublishDate, kRatingBbfc, kStarRating, kBlackAndWhite})
      other = other * 31 + KeyHash(programme.prog[field]);
    if (others_.try_emplace(same, other).first->second != other) ++shared_records;
  }

  void Visit(const char* parent, const char* element) override {
    const std::string_view name = element;
    const std::string_view above = parent;
    if (above == "programme" &&
        !IsOneOf(name, {"title", "category", "desc", "previously-shown", "sub-title", "date", "new",
                        "premiere", "rating", "star-rating", "video", "subtitles", "credits"})) {
      AddUnread(name);
    } else if (IsOneOf(above, {"credits", "video", "rating", "star-rating", "subtitles"})) {
      if (!(above == "credits" && IsOneOf(name, {"director", "actor"})) &&
          !(above == "video" && IsOneOf(name, {"aspect", "colour"})) &&
          !(above == "rating" && name == "value") && !(above == "star-rating" && name == "value"))
        AddUnread(std::string(above) + "/" + std::string(name));
    } else if (IsOneOf(above, {"title", "sub-title", "desc", "category", "date", "premiere"})) {
      ++elements_in_texts;
    }
    if (IsOneOf(name, {"title", "sub-title", "desc", "category", "date", "premiere", "star-rating",
                       "rating", "director"}) &&
        !met_.emplace(name).second)
      ++overwritten;
  }

  std::string UnreadNames() const {
    constexpr std::size_t kMost = 8;
    std::string text;
    std::size_t count = 0;
    for (const std::string& name : unread_names_) {
      if (++count > kMost) return text + ", ...";
      text += (text.empty() ? "" : ", ") + Shown(name);
    }
    return text;
  }

  std::uint64_t more_names = 0;
  std::uint64_t unread = 0;
  std::uint64_t overwritten = 0;
  std::uint64_t elements_in_texts = 0;
  std::uint64_t resolved_descriptions = 0;
  std::uint64_t shared_records = 0;

 private:
  void AddUnread(std::string_view name) {
    ++unread;
    unread_names_.emplace(name);
  }

  std::set<std::string, std::less<>> met_;  // of the programme
  std::set<std::string, std::less<>> unread_names_;
  std::unordered_map<std::uint64_t, std::uint64_t> others_;
};

}  // namespace

Losses FindLosses(const std::string& name, std::string_view bytes, const Options& options) {
  const BytesAsRead read(bytes);
  IgnoredByPlugin ignored;
  Losses losses;
  ByteSource source(name, options.max_size);
  try {
    const Fault fault = ReadGuide(source, options.reading, ignored).fault;
    if (source.HasFailed()) throw Failure(source.Name() + ": " + fault.reason);
    if (!fault.reason.empty()) {
      losses.fault = source.Name() + ":" + std::to_string(fault.line) + ":" +
                     std::to_string(fault.column) + ": not well-formed: " + fault.reason + "\n";
    }
  } catch (const Failure& failure) {
    if (source.HasFailed()) throw;
    losses.fault = std::string(failure.what()) + "\n";
  }
  const std::pair<std::uint64_t, std::string> all[] = {
      {read.numeric_references, "numeric character references, which vanish"},
      {read.other_references, "references by other names than XML's five, which vanish"},
      {read.bare_ampersands, "'&' without ';', which swallow all up to the next one"},
      {read.living_comments, "comments or instructions whose markup or '&' is read"},
      {read.foreign_bytes,
       "bytes in " + Shown(read.DeclaredEncoding()) + ", which arrive as they stand"},
      {read.misread_tags,
       "tags with attributes misread, for their blanks, line breaks, quotation marks or '>'"},
      {read.same_channel, "channels left out, as one before them has their id"},
      {ignored.more_names, "display names beyond the second of a channel"},
      {read.without_station, "programmes left out, as no channel read before them is theirs"},
      {read.same_start, "programmes left out, as one of their station is read with their start"},
      {read.without_start, "programmes without a readable start, which get a wrong one"},
      {read.misread_start, "programmes whose start is misread"},
      {read.without_stop, "programmes without a readable stop, which have no end"},
      {read.misread_stop, "programmes whose stop is misread"},
      {ignored.shared_records,
       "programmes that get genre, director, date and ratings of one with the same texts"},
      {ignored.overwritten, "texts overwritten by a later one of their kind"},
      {ignored.elements_in_texts, "elements inside texts, which end there"},
      {ignored.resolved_descriptions, "descriptions whose '<' or \"&#\" is resolved once more"},
      {ignored.unread, "elements not read: " + ignored.UnreadNames()},
  };
  for (const auto& [count, what] : all) {
    if (count != 0) losses.counts.push_back({count, what});
  }
  return losses;
}

}  // namespace epgcache
