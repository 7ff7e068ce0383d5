#include "tools/epgcache/read/guide_reader.h"

#include <libxml/HTMLparser.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <climits>
#include <cstddef>
#include <exception>
#include <iterator>
#include <optional>
#include <unordered_set>
#include <utility>

#include "tools/epgcache/failure.h"
#include "tools/epgcache/read/elements.h"
#include "tools/epgcache/read/xml_parser.h"
#include "tools/epgcache/text.h"

namespace epgcache {

namespace {

constexpr const char* kSet = "Y";

void AppendListed(std::string& list, std::string_view entry) {
  if (!list.empty()) list += ", ";
  list += entry;
}

bool SaysHd(std::string_view quality) {
  const std::string lowered = Lowered(quality);
  for (const char* const mark : {"hd", "4k", "8k", "720p", "1080", "2160"}) {
    if (lowered.find(mark) != std::string::npos) return true;
  }
  return false;
}

bool SaysStereo(std::string_view sound) {
  constexpr std::string_view kOthers[] = {"", "mono", "bilingual", "none", "no"};
  return std::none_of(std::begin(kOthers), std::end(kOthers), [sound](std::string_view other) {
    return EqualIgnoringCase(Trimmed(sound), other);
  });
}

// Each run of blanks and line breaks as one blank, none at the ends.
std::string OnOneLine(std::string_view text) {
  std::string line;
  for (const char byte : Trimmed(text)) {
    const bool is_blank = kBlanks.find(byte) != std::string_view::npos;
    if (!is_blank || line.back() != ' ') line += is_blank ? ' ' : byte;
  }
  return line;
}

// The elements within one programme or channel, gathered into a record.
class Gatherer {
 public:
  Gatherer(const ReadingOptions& options, GuideConsumer& consumer)
      : options_(options), consumer_(consumer) {}

  // True: the element's children are to be read.
  bool BeginRecord(const StartTag& tag) {
    record_ = tag.Name();
    if (record_ == "channel") {
      channel_.id = tag.Attribute("id");
      names_.clear();
      return true;
    }
    if (record_ != "programme") return false;
    programme_.channel = tag.Attribute("channel");
    programme_.start = tag.Attribute("start");
    programme_.stop = tag.Attribute("stop");
    if (!consumer_.Begin(programme_)) return false;
    for (std::string& text : programme_.fields) text.clear();
    ranks_.fill(kNoRank);
    episode_.clear();
    episode_on_screen_.clear();
    return true;
  }

  void EndRecord() {
    if (record_ == "channel") {
      std::stable_sort(names_.begin(), names_.end(),
                       [](const auto& a, const auto& b) { return a.first < b.first; });
      channel_.names.clear();
      for (auto& name : names_) channel_.names.push_back(std::move(name.second));
      consumer_.Add(channel_);
    } else {
      AddEpisode();
      consumer_.Add(programme_);
    }
  }

  // An element directly below the record's.
  void BeginElement(const StartTag& tag) {
    element_ = tag.Name();
    rule_ = FindElement(record_, element_);
    rank_ = options_.languages.empty() ? 0 : RankOf(tag.Attribute("lang"));
    system_ = tag.Attribute("system");
    had_parts_ = false;
    if (rule_ != nullptr && rule_->use == Use::kCaptions) {
      const std::string_view type = tag.Attribute("type");
      if (type != "onscreen" && type != "deaf-signed") programme_.fields[rule_->field] = kSet;
    }
  }

  void EndElement(std::string_view text) {
    if (rule_ != nullptr) Apply(*rule_, text);
    if (had_parts_ || (rule_ != nullptr && rule_->use != Use::kCaptions)) return;
    // Some write "<rating>PG</rating>".
    for (const std::string_view part : {"value", "language"}) {
      if (const Element* const rule = FindElement(element_, part)) Apply(*rule, text);
    }
  }

  // An element below one of the record's.
  void EndPart(std::string_view part, std::string_view text, bool has_elements) {
    had_parts_ = true;
    const Element* const rule = FindElement(element_, part);
    if (rule != nullptr) Apply(*rule, has_elements ? OnOneLine(text) : text);
  }

 private:
  static constexpr int kNoRank = INT_MAX;

  // Lower is better.
  int RankOf(std::string_view language) const {
    int rank = 0;
    for (const std::string& wanted : options_.languages) {
      // "en" stands for "en-GB" and "en_US", too.
      if (BeginsWithLetters(language, wanted) &&
          (language.size() == wanted.size() || language[wanted.size()] == '-' ||
           language[wanted.size()] == '_'))
        return rank;
      ++rank;
    }
    return language.empty() ? rank : rank + 1;
  }

  void Apply(const Element& rule, std::string_view text) {
    std::string& field = programme_.fields[rule.field];
    if (rule.use == Use::kMark) {
      field = kSet;
    } else if (rule.use == Use::kPremiere) {
      TakeBest(rule.field, IsBlank(text) ? "Premiere" : text);
    } else if (!IsBlank(text)) {
      ApplyText(rule, field, text);
    }
  }

  void ApplyText(const Element& rule, std::string& field, std::string_view text) {
    switch (rule.use) {
      case Use::kName:
        names_.emplace_back(rank_, text);
        break;
      case Use::kBest:
        TakeBest(rule.field, text);
        break;
      case Use::kFirst:
        if (field.empty()) field = text;
        break;
      case Use::kCategory:
        AddCategory(field, text);
        break;
      case Use::kPresenter:
        if (options_.presenters) AppendListed(field, text);
        break;
      case Use::kGuest:
        if (options_.guests) AppendListed(field, text);
        break;
      case Use::kList:
        AppendListed(field, text);
        break;
      case Use::kIfNo:
        if (Trimmed(text) == "no") field = kSet;
        break;
      case Use::kIfHd:
        if (SaysHd(text)) field = kSet;
        break;
      case Use::kIfStereo:
        if (SaysStereo(text)) field = kSet;
        break;
      case Use::kRating:
        AddRating(field, text);
        break;
      case Use::kEpisode:
        TakeEpisode(text);
        break;
      case Use::kMark:
      case Use::kPremiere:
      case Use::kCaptions:
        break;
    }
  }

  void TakeBest(Field field, std::string_view text) {
    if (rank_ >= ranks_[field]) return;
    programme_.fields[field] = text;
    ranks_[field] = rank_;
  }

  void AddCategory(std::string& genre, std::string_view text) {
    if (rank_ > ranks_[kGenre]) return;
    if (rank_ < ranks_[kGenre]) {
      genre.clear();
      categories_.clear();
    }
    ranks_[kGenre] = rank_;
    if (categories_.emplace(text).second) AppendListed(genre, text);
  }

  void AddRating(std::string& others, std::string_view value) {
    std::string& bbfc = programme_.fields[kRatingBbfc];
    if (!EqualIgnoringCase(system_, "BBFC")) {
      AppendListed(others, (system_.empty() ? "" : system_ + " rating: ") + std::string(value));
    } else if (bbfc.empty()) {
      bbfc = value;
    }
  }

  void TakeEpisode(std::string_view text) {
    if (system_ == "xmltv_ns") {
      if (episode_.empty()) episode_ = ReadableEpisode(text);
    } else if (system_.empty() || system_ == "onscreen") {
      if (episode_on_screen_.empty()) episode_on_screen_ = text;
    }
  }

  void AddEpisode() {
    const std::string& number = episode_.empty() ? episode_on_screen_ : episode_;
    if (!options_.episodes || number.empty()) return;
    std::string& title = programme_.fields[kEpisodeTitle];
    title = title.empty() ? number : title + " (" + number + ")";
  }

  const ReadingOptions& options_;
  GuideConsumer& consumer_;
  Channel channel_;
  Programme programme_;

  std::vector<std::pair<int, std::string>> names_;
  std::array<int, kFields> ranks_ = {};
  std::unordered_set<std::string> categories_;
  std::string episode_;
  std::string episode_on_screen_;

  // Of the record, and of its element that is being read. Names are the parser's.
  std::string_view record_;
  std::string_view element_;
  const Element* rule_ = nullptr;  // null: the element's own text has no field
  int rank_ = 0;
  std::string system_;
  bool had_parts_ = false;
};

class GuideParser final : public XmlParser {
 public:
  GuideParser(ByteSource& source, const ReadingOptions& options, GuideConsumer& consumer,
              FaultSink tell_mended)
      : XmlParser(source, std::move(tell_mended)), gatherer_(options, consumer) {}

  ReadingOutcome Run() {
    outcome_.fault = Parse();
    if (!has_root_) RefuseAll();
    return std::move(outcome_);
  }

 private:
  void Begin(const StartTag& tag) override {
    const int depth = depth_++;
    if (depth == 0) TakeRoot(tag.Name());
    if (depth > passing_by_) return;
    if (depth == kRecordDepth) {
      if (!gatherer_.BeginRecord(tag)) passing_by_ = depth;
    } else if (depth == kElementDepth) {
      gatherer_.BeginElement(tag);
      text_.clear();
    } else if (depth >= kPartDepth) {
      part_has_elements_ = depth > kPartDepth;
      if (depth == kPartDepth) {
        part_ = tag.Name();
        part_begin_ = text_.size();
      }
      if (IsPicture(tag.Name())) passing_by_ = depth;
    }
  }

  void End() override {
    const int depth = --depth_;
    if (depth >= passing_by_) {
      if (depth == passing_by_) passing_by_ = INT_MAX;
      return;
    }
    if (depth == kRecordDepth) {
      gatherer_.EndRecord();
    } else if (depth == kElementDepth) {
      gatherer_.EndElement(text_);
    } else if (depth == kPartDepth) {
      gatherer_.EndPart(part_, std::string_view(text_).substr(part_begin_), part_has_elements_);
    }
  }

  void Add(std::string_view text) override {
    if (IsGathering()) text_ += text;
  }

  // It may be meant as an HTML reference.
  void Resolve(const xmlChar* name) override {
    if (!IsGathering()) return;
    const htmlEntityDesc* const known = htmlEntityLookup(name);
    if (known == nullptr) {
      ++outcome_.unknown_references;
      return;
    }
    text_ += EncodeUtf8(known->value);
    ++outcome_.html_references;
  }

  void TakeRoot(std::string_view name) {
    has_root_ = true;
    if (name == "tv") return;
    if (EqualIgnoringCase(name, "html")) RefuseHtml();
    throw Failure(Source().Name() + ": is not an XMLTV guide: its root element is <" + Shown(name) +
                  ">");
  }

  [[noreturn]] void RefuseHtml() const {
    throw Failure(Source().Name() + ": is an HTML page, not an XMLTV guide");
  }

  // No element of a guide was found.
  [[noreturn]] void RefuseAll() const {
    if (WhySourceFailed() != nullptr) std::rethrow_exception(WhySourceFailed());
    const std::string_view beginning = Trimmed(Source().Beginning());
    if (beginning.empty()) throw Failure(Source().Name() + ": is empty");
    if (BeginsWithLetters(beginning, "<!doctype html") || BeginsWithLetters(beginning, "<html"))
      RefuseHtml();
    throw Failure(
        Fault{std::max(1, outcome_.fault.line), std::max(1, outcome_.fault.column),
              "is not an XMLTV guide: " +
                  (outcome_.fault.reason.empty() ? "it holds no element" : outcome_.fault.reason)}
            .At(Source().Name()));
  }

  // Links to pictures and pages, which may occur within a name's text.
  static bool IsPicture(std::string_view name) {
    return name == "image" || name == "url" || name == "icon";
  }

  bool IsGathering() const { return depth_ > kElementDepth && depth_ <= passing_by_; }

  static constexpr int kRecordDepth = 1;
  static constexpr int kElementDepth = 2;
  static constexpr int kPartDepth = 3;

  Gatherer gatherer_;
  ReadingOutcome outcome_;
  bool has_root_ = false;
  int depth_ = 0;             // of elements that are open
  int passing_by_ = INT_MAX;  // the depth of an element that is not read
  std::string text_;          // of the record's element
  std::string_view part_;
  std::size_t part_begin_ = 0;  // where in `text_` the part's own text begins
  bool part_has_elements_ = false;
};

// A number of "xmltv_ns", counted from 0 there, with its "/total"; false when there is none.
struct EpisodeNumber {
  int number = 0;  // from 1
  int total = 0;   // 0: unknown
};

std::optional<EpisodeNumber> ReadEpisodeNumber(std::string_view text) {
  EpisodeNumber result;
  const char* const end = text.data() + text.size();
  const auto [slash, error] = std::from_chars(text.data(), end, result.number);
  if (error != std::errc() || result.number < 0 || result.number == INT_MAX) return std::nullopt;
  ++result.number;
  if (slash != end && *slash == '/') std::from_chars(slash + 1, end, result.total);
  return result;
}

}  // namespace

ReadingOutcome ReadGuide(ByteSource& source, const ReadingOptions& options, GuideConsumer& consumer,
                         FaultSink tell_mended) {
  return GuideParser(source, options, consumer, std::move(tell_mended)).Run();
}

std::string ReadableEpisode(std::string_view xmltv_ns) {
  std::string text;
  std::copy_if(xmltv_ns.begin(), xmltv_ns.end(), std::back_inserter(text), [](char byte) {
    return !IsBlank({&byte, 1});
  });
  std::string readable;
  std::size_t begin = 0;
  for (const char* const mark : {"S", "E", "part "}) {
    const std::size_t end = std::min(text.find('.', begin), text.size());
    const auto number = ReadEpisodeNumber(std::string_view(text).substr(begin, end - begin));
    begin = std::min(end + 1, text.size());
    const bool is_part = *mark == 'p';
    // "Part 1 of 1" is left out.
    if (!number || (is_part && number->total == 1)) continue;
    if (!readable.empty()) readable += is_part ? ", " : " ";
    readable += mark + std::to_string(number->number);
    if (number->total > 0) readable += (is_part ? " of " : "/") + std::to_string(number->total);
  }
  return readable;
}

}  // namespace epgcache
