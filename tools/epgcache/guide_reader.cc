#include "tools/epgcache/guide_reader.h"

#include <libxml/HTMLparser.h>
#include <libxml/SAX2.h>
#include <libxml/parserInternals.h>

#include <algorithm>
#include <charconv>
#include <climits>
#include <cstddef>
#include <exception>
#include <iterator>
#include <new>
#include <optional>
#include <unordered_set>
#include <utility>

#include "tools/epgcache/failure.h"
#include "tools/epgcache/text.h"

namespace epgcache {

namespace {

std::string_view View(const xmlChar* text) {
  return text != nullptr ? std::string_view(reinterpret_cast<const char*>(text))
                         : std::string_view();
}

void AppendListed(std::string& list, std::string_view entry) {
  if (!list.empty()) list += ", ";
  list += entry;
}

// A start tag as the parser reports it. Names are the parser's, and live as long as it does.
class StartTag {
 public:
  // An element with a prefix is not XMLTV's, whatever its name.
  StartTag(const xmlChar* name, const xmlChar* prefix, int attributes, const xmlChar** fields)
      : name_(prefix == nullptr ? View(name) : "(foreign)"),
        attributes_(attributes),
        fields_(fields) {}

  std::string_view Name() const { return name_; }

  // How many bytes its values have.
  std::size_t ValueBytes() const {
    std::size_t bytes = 0;
    for (int i = 0; i < attributes_; ++i) {
      const xmlChar* const* const field = fields_ + static_cast<std::ptrdiff_t>(i) * 5;
      bytes += static_cast<std::size_t>(field[4] - field[3]);
    }
    return bytes;
  }

  // Empty when there is none.
  std::string_view Attribute(std::string_view name) const {
    // Each has a name, a prefix, a namespace, and where its value begins and ends.
    for (int i = 0; i < attributes_; ++i) {
      const xmlChar* const* const field = fields_ + static_cast<std::ptrdiff_t>(i) * 5;
      // "xml:lang" is as good as "lang".
      if (View(field[0]) == name && (field[1] == nullptr || View(field[1]) == "xml"))
        return View(field[3]).substr(0, static_cast<std::size_t>(field[4] - field[3]));
    }
    return {};
  }

 private:
  std::string_view name_;
  int attributes_;
  const xmlChar** fields_;
};

bool SaysHd(std::string_view quality) {
  std::string lowered(quality);
  std::transform(lowered.begin(), lowered.end(), lowered.begin(), Lower);
  for (const char* const mark : {"hd", "4k", "8k", "720p", "1080", "2160"}) {
    if (lowered.find(mark) != std::string::npos) return true;
  }
  return false;
}

bool SaysStereo(std::string_view sound) {
  constexpr std::string_view kOthers[] = {"", "mono", "bilingual", "none", "no"};
  return std::none_of(std::begin(kOthers), std::end(kOthers), [sound](std::string_view other) {
    return SameLetters(Trimmed(sound), other);
  });
}

// The elements within one programme or channel, gathered into a record.
class Gatherer {
 public:
  Gatherer(const ReadingOptions& options, GuideConsumer& consumer)
      : options_(options), consumer_(consumer) {}

  // True: the element's children are to be read.
  bool BeginRecord(const StartTag& tag) {
    if (tag.Name() == "channel") {
      channel_.id = tag.Attribute("id");
      names_.clear();
      record_ = Record::kChannel;
    } else if (tag.Name() == "programme") {
      programme_.channel = tag.Attribute("channel");
      programme_.start = tag.Attribute("start");
      programme_.stop = tag.Attribute("stop");
      if (!consumer_.Begin(programme_)) return false;
      for (std::string& text : programme_.prog) text.clear();
      for (std::string& text : programme_.item) text.clear();
      ranks_.fill(kNoRank);
      premiere_rank_ = kNoRank;
      episode_.clear();
      episode_on_screen_.clear();
      record_ = Record::kProgramme;
    } else {
      return false;
    }
    return true;
  }

  void EndRecord() {
    if (record_ == Record::kChannel) {
      std::stable_sort(names_.begin(), names_.end(),
                       [](const auto& a, const auto& b) { return a.first < b.first; });
      channel_.names.clear();
      for (auto& name : names_) channel_.names.push_back(std::move(name.second));
      consumer_.Add(channel_);
    } else {
      if (options_.episodes) AddEpisode();
      consumer_.Add(programme_);
    }
  }

  // An element directly below the record's.
  void BeginElement(const StartTag& tag) {
    element_ = tag.Name();
    rank_ = options_.languages.empty() ? 0 : RankOf(tag.Attribute("lang"));
    if (element_ == "rating" || element_ == "episode-num") system_ = tag.Attribute("system");
    if (element_ == "subtitles") {
      const std::string_view type = tag.Attribute("type");
      if (type != "onscreen" && type != "deaf-signed") programme_.item[kSubtitle] = "Y";
    }
    had_parts_ = false;
    Visit("programme", element_);
  }

  void EndElement(std::string_view text) {
    if (record_ == Record::kChannel) {
      if (element_ == "display-name" && !IsBlank(text)) names_.emplace_back(rank_, text);
      return;
    }
    auto& prog = programme_.prog;
    auto& item = programme_.item;
    if (element_ == "title") {
      TakeBest(kTitle, text);
    } else if (element_ == "sub-title") {
      TakeBest(kEpisodeTitle, text);
    } else if (element_ == "desc") {
      TakeBest(kDescription, text);
    } else if (element_ == "category") {
      AddCategory(text);
    } else if (element_ == "language") {
      TakeBest(kLanguage, text);
    } else if (element_ == "date") {
      if (prog[kPublishDate].empty() && !IsBlank(text)) prog[kPublishDate] = text;
    } else if (element_ == "previously-shown") {
      item[kRepeat] = "Y";
    } else if (element_ == "new") {
      item[kNew] = "Y";
    } else if (element_ == "premiere") {
      if (rank_ < premiere_rank_) {
        item[kPremiere] = IsBlank(text) ? "Premiere" : text;
        premiere_rank_ = rank_;
      }
    } else if (element_ == "episode-num") {
      TakeEpisode(text);
    } else if (!had_parts_ && !IsBlank(text)) {
      // Some write "<rating>PG</rating>".
      if (element_ == "subtitles") EndPart("language", text);
      if (element_ == "rating" || element_ == "star-rating") EndPart("value", text);
    }
  }

  // An element below one of the record's.
  void BeginPart(std::string_view part) {
    had_parts_ = true;
    Visit(element_, part);
  }

  void EndPart(std::string_view part, std::string_view text) {
    if (record_ != Record::kProgramme || IsBlank(text)) return;
    auto& prog = programme_.prog;
    auto& item = programme_.item;
    if (element_ == "credits") {
      if (part == "director") AppendListed(prog[kDirector], text);
      if (part == "actor" || (part == "presenter" && options_.presenters) ||
          (part == "guest" && options_.guests))
        AppendListed(prog[kActors], text);
    } else if (element_ == "video") {
      if (part == "aspect") item[kAspect] = text;
      if (part == "colour" && Trimmed(text) == "no") prog[kBlackAndWhite] = "Y";
      if (part == "quality" && SaysHd(text)) item[kHd] = "Y";
    } else if (element_ == "audio") {
      if (part == "stereo" && SaysStereo(text)) item[kStereo] = "Y";
    } else if (element_ == "subtitles") {
      if (part == "language") AppendListed(item[kSubtitles], text);
    } else if (element_ == "rating") {
      if (part == "value") TakeRating(text);
    } else if (element_ == "star-rating") {
      if (part == "value" && prog[kStarRating].empty()) prog[kStarRating] = text;
    }
  }

 private:
  enum class Record { kChannel, kProgramme };
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

  void Visit(std::string_view parent, std::string_view element) {
    // Both are the parser's, which ends them with NUL.
    if (record_ == Record::kProgramme) consumer_.Visit(parent.data(), element.data());
  }

  void TakeBest(ProgField field, std::string_view text) {
    if (rank_ >= ranks_[field] || IsBlank(text)) return;
    programme_.prog[field] = text;
    ranks_[field] = rank_;
  }

  void AddCategory(std::string_view text) {
    std::string& genre = programme_.prog[kGenre];
    if (rank_ > ranks_[kGenre] || IsBlank(text)) return;
    if (rank_ < ranks_[kGenre]) {
      genre.clear();
      categories_.clear();
    }
    ranks_[kGenre] = rank_;
    if (categories_.emplace(text).second) AppendListed(genre, text);
  }

  void TakeRating(std::string_view value) {
    if (SameLetters(system_, "BBFC")) {
      if (programme_.prog[kRatingBbfc].empty()) programme_.prog[kRatingBbfc] = value;
    } else {
      AppendListed(programme_.item[kRatingOther], system_.empty()
                                                      ? std::string(value)
                                                      : system_ + " rating: " + std::string(value));
    }
  }

  void TakeEpisode(std::string_view text) {
    if (system_ == "xmltv_ns") {
      if (episode_.empty()) episode_ = ReadableEpisode(text);
    } else if (system_.empty() || system_ == "onscreen") {
      if (episode_on_screen_.empty() && !IsBlank(text)) episode_on_screen_ = text;
    }
  }

  void AddEpisode() {
    const std::string& number = episode_.empty() ? episode_on_screen_ : episode_;
    if (number.empty()) return;
    std::string& title = programme_.prog[kEpisodeTitle];
    title = title.empty() ? number : title + " (" + number + ")";
  }

  const ReadingOptions& options_;
  GuideConsumer& consumer_;
  Record record_ = Record::kProgramme;
  Channel channel_;
  Programme programme_;

  std::vector<std::pair<int, std::string>> names_;
  std::array<int, kProgFields> ranks_ = {};
  int premiere_rank_ = kNoRank;
  std::unordered_set<std::string> categories_;
  std::string episode_;
  std::string episode_on_screen_;

  // Of the record's element that is being read. The name is the parser's.
  std::string_view element_;
  int rank_ = 0;
  std::string system_;
  bool had_parts_ = false;
};

// A parser that calls back, element by element, and stops behind the first exception.
class Parser {
 public:
  explicit Parser(ByteSource& source) : source_(source) {
    xmlSAXHandler handler = {};
    xmlSAXVersion(&handler, 2);
    handler.startElementNs = [](void* context, const xmlChar* name, const xmlChar* prefix,
                                const xmlChar*, int, const xmlChar**, int attributes,
                                int /*defaults*/, const xmlChar** fields) {
      Of(context).Guard(context, [&](Parser& parser) {
        parser.BeginWithin({name, prefix, attributes, fields});
      });
    };
    handler.endElementNs = [](void* context, const xmlChar*, const xmlChar*, const xmlChar*) {
      Of(context).Guard(context, [](Parser& parser) { parser.End(); });
    };
    handler.characters = [](void* context, const xmlChar* text, int size) {
      Of(context).Guard(context, [&](Parser& parser) {
        parser.AddWithin({reinterpret_cast<const char*>(text), static_cast<std::size_t>(size)});
      });
    };
    handler.cdataBlock = handler.characters;
    handler.ignorableWhitespace = handler.characters;
    handler.reference = [](void* context, const xmlChar* name) {
      Of(context).Guard(context, [&](Parser& parser) { parser.Resolve(name); });
    };
    handler.comment = nullptr;
    handler.processingInstruction = nullptr;
    handler.serror = [](void* context, xmlErrorPtr error) { Of(context).AddError(*error); };
    context_ =
        xmlCreateIOParserCtxt(&handler, nullptr, ReadBytes, nullptr, this, XML_CHAR_ENCODING_NONE);
    if (context_ == nullptr) throw std::bad_alloc();
    context_->_private = this;
    xmlCtxtUseOptions(context_, XML_PARSE_NONET | XML_PARSE_NOENT | XML_PARSE_NOCDATA);
    xmlSetExternalEntityLoader(RefuseExternal);
    // Of what goes wrong outside all documents.
    xmlSetStructuredErrorFunc(this, [](void* self, xmlErrorPtr error) {
      if (error->level >= XML_ERR_ERROR) static_cast<Parser*>(self)->conversion_failed_ = true;
    });
  }
  Parser(const Parser&) = delete;
  Parser& operator=(const Parser&) = delete;
  virtual ~Parser() {
    xmlSetStructuredErrorFunc(nullptr, nullptr);
    // Of the document type's entities.
    xmlFreeDoc(context_->myDoc);
    xmlFreeParserCtxt(context_);
  }

 protected:
  virtual void Begin(const StartTag& tag) = 0;
  virtual void End() = 0;
  virtual void Add(std::string_view text) = 0;
  // A reference that the document does not declare.
  virtual void Resolve(const xmlChar* name) = 0;

  // Reads to the end, or to the first fault. What a callback has thrown comes out of here.
  Fault Parse() {
    xmlParseDocument(context_);
    if (thrown_ != nullptr) std::rethrow_exception(thrown_);
    if (source_failure_ != nullptr) {
      if (fault_.reason.empty()) SetFault("");
      fault_.reason = SourceFailure();
    } else if (fault_.reason.empty() && context_->wellFormed == 0) {
      throw std::bad_alloc();
    } else if (!fault_.reason.empty() && conversion_failed_) {
      fault_.reason = "a byte that its encoding does not have";
    }
    return std::move(fault_);
  }

  // What the source has thrown; null when it has given all that it has.
  const std::exception_ptr& WhySourceFailed() const { return source_failure_; }
  const ByteSource& Source() const { return source_; }

 private:
  static Parser& Of(void* context) {
    return *static_cast<Parser*>(static_cast<xmlParserCtxt*>(context)->_private);
  }

  // No exception may pass through the library. `context` is another than ours within an entity.
  template <typename Action>
  void Guard(void* context, const Action& action) {
    if (!is_over_) {
      try {
        action(*this);
      } catch (...) {
        thrown_ = std::current_exception();
        is_over_ = true;
      }
    }
    if (!is_over_) return;
    xmlStopParser(static_cast<xmlParserCtxt*>(context));
    xmlStopParser(context_);
  }

  // Texts and values may not grow far beyond what has been read, as only entities make them do.
  void Budget(std::size_t bytes) {
    constexpr std::uint64_t kFree = std::uint64_t{10} << 20;
    constexpr std::uint64_t kTimes = 5;
    delivered_ += bytes;
    if (delivered_ > kFree + kTimes * source_.Unpacked())
      SetFault("its entities expand to far more than it holds");
  }

  void BeginWithin(const StartTag& tag) {
    Budget(tag.ValueBytes());
    if (!is_over_) Begin(tag);
  }

  void AddWithin(std::string_view text) {
    Budget(text.size());
    if (!is_over_) Add(text);
  }

  // At the place where the document is being read, be it within an entity of it.
  void SetFault(const std::string& reason) {
    fault_ = {std::max(1, xmlSAX2GetLineNumber(context_)),
              std::max(1, xmlSAX2GetColumnNumber(context_)), reason};
    is_over_ = true;
  }

  static int ReadBytes(void* self, char* buffer, int size) {
    auto& parser = *static_cast<Parser*>(self);
    try {
      return static_cast<int>(parser.source_.Read(buffer, static_cast<std::size_t>(size)));
    } catch (...) {
      parser.source_failure_ = std::current_exception();
      // What was read is still parsed.
      return 0;
    }
  }

  static xmlParserInputPtr RefuseExternal(const char* url, const char* /*id*/,
                                          xmlParserCtxtPtr context) {
    Parser& parser = Of(context);
    if (!parser.is_over_) {
      parser.SetFault("an entity refers to \"" + (url != nullptr ? Shown(url) : "?") +
                      "\", which is not followed");
    }
    xmlStopParser(context);
    xmlStopParser(parser.context_);
    return nullptr;
  }

  void AddError(const xmlError& error) {
    if (error.level != XML_ERR_FATAL || !fault_.reason.empty() || error.code == XML_ERR_NO_MEMORY)
      return;
    std::string_view message = error.message != nullptr ? error.message : "not well-formed";
    SetFault(Shown(message.substr(0, message.find('\n'))));
    if (error.ctxt != context_) return;
    fault_.line = error.line;
    fault_.column = error.int2;
  }

  // Its name stands before the place.
  std::string SourceFailure() const {
    try {
      std::rethrow_exception(source_failure_);
    } catch (const Failure& failure) {
      return std::string(failure.what()).substr(source_.Name().size() + 2);
    }
  }

  ByteSource& source_;
  xmlParserCtxt* context_ = nullptr;  // Owned.
  std::exception_ptr thrown_;         // by a callback
  std::exception_ptr source_failure_;
  bool conversion_failed_ = false;
  bool is_over_ = false;  // whatever is still reported
  std::uint64_t delivered_ = 0;
  Fault fault_;
};

class GuideParser final : public Parser {
 public:
  GuideParser(ByteSource& source, const ReadingOptions& options, GuideConsumer& consumer)
      : Parser(source), gatherer_(options, consumer) {}

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
      if (depth == kPartDepth) {
        part_ = tag.Name();
        gatherer_.BeginPart(part_);
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
      gatherer_.EndPart(part_, std::string_view(text_).substr(part_begin_));
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
    xmlChar bytes[8] = {};
    xmlCopyCharMultiByte(bytes, static_cast<int>(known->value));
    text_ += View(bytes);
    ++outcome_.html_references;
  }

  void TakeRoot(std::string_view name) {
    has_root_ = true;
    if (name == "tv") return;
    if (SameLetters(name, "html")) RefuseHtml();
    throw Failure(Source().Name() + ": is not an XMLTV guide: its root element is <" + Shown(name) +
                  ">");
  }

  [[noreturn]] void RefuseHtml() const {
    throw Failure(Source().Name() + ": is an HTML page, not an XMLTV guide");
  }

  // No element of a guide was found.
  [[noreturn]] void RefuseAll() const {
    if (WhySourceFailed() != nullptr) std::rethrow_exception(WhySourceFailed());
    std::string_view beginning = Source().Beginning();
    beginning.remove_prefix(std::min(beginning.find_first_not_of(" \t\r\n"), beginning.size()));
    if (beginning.empty()) throw Failure(Source().Name() + ": is empty");
    if (BeginsWithLetters(beginning, "<!doctype html") || BeginsWithLetters(beginning, "<html"))
      RefuseHtml();
    throw Failure(Source().Name() + ":" + std::to_string(outcome_.fault.line) + ":" +
                  std::to_string(outcome_.fault.column) +
                  ": is not an XMLTV guide: " + outcome_.fault.reason);
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

ReadingOutcome ReadGuide(ByteSource& source, const ReadingOptions& options,
                         GuideConsumer& consumer) {
  return GuideParser(source, options, consumer).Run();
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
