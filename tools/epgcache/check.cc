#include "tools/epgcache/check.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/mlog.h"
#include "import/import_driver.h"
#include "tools/epgcache/byte_source.h"
#include "tools/epgcache/failure.h"
#include "tools/epgcache/losses.h"
#include "tools/epgcache/markup.h"
#include "tools/epgcache/text.h"
#include "xml/safe_node.h"
#include "xml/simple_xml_reader.h"

namespace epgcache {

namespace {

// Why the plug-in does not take a file, and where.
struct Stop {
  std::size_t at;  // the byte
  std::string rule;
};

std::string Quoted(std::string_view text) { return '"' + Shown(text) + '"'; }

std::string Tag(std::string_view name) { return '<' + Shown(name) + '>'; }

std::string WholeFile(const Options& options) {
  if (options.inputs.front() == "-") throw Failure("--check takes a file, as the plug-in does");
  ByteSource source(options.inputs.front(), options.max_size);
  if (source.IsPacked()) return {};
  std::string bytes;
  std::string block(std::size_t{64} << 10, '\0');
  for (std::size_t count = 0; (count = source.Read(block.data(), block.size())) != 0;)
    bytes.append(block, 0, count);
  return bytes;
}

// What the plug-in itself makes of the file.
struct Verdict {
  bool taken;
  std::string text;  // how much it holds, or the reason that the plug-in logs
};

Verdict AskPlugin(const std::string& name) {
  static constexpr std::string_view kFailed = "EPG Loader: Import failed";
  std::string reason;
  ORVANE::MLog.SetSink([&reason](ORVANE::MLOG::TYPE, std::string_view text) {
    if (!text.starts_with(kFailed)) return;
    text.remove_prefix(std::min(text.find('[') + 1, text.size()));
    reason = text.substr(0, text.rfind(']'));
  });
  ORVANE::MSTR status;
  const auto store = ImportEPGFile(std::string_view(name), status, nullptr);
  ORVANE::MLog.SetSink({});
  if (store == nullptr) return {false, reason.empty() ? std::string(status.View()) : reason};
  return {true, std::string(store->GetStatistics().View())};
}

// What it is in a tag that the plug-in's reader takes otherwise than XML does.
std::string OddityOf(std::string_view bytes, const Markup& tag) {
  for (const MarkupAttribute& attribute : AttributesOf(bytes, tag)) {
    if (attribute.value.find_first_of("'\"") != std::string_view::npos)
      return "an apostrophe or quotation mark inside an attribute";
    if (attribute.value.find('>') != std::string_view::npos) return "a '>' inside an attribute";
    if (attribute.before != " ") return "a line break, tab or second blank between attributes";
    if (attribute.equals != "=") return "blanks around an attribute's '='";
  }
  return "the way in which it is written";
}

// Walks through the file with the plug-in's reader as its importers do, and beside it by XML's own
// rules, up to the first place where an import ends.
class Walk {
 public:
  Walk(const std::string& name, std::string_view bytes) : bytes_(bytes) {
    if (!reader_.Open(std::string_view(name), true, false, true))
      throw Failure(Shown(name) + ": cannot be opened");
  }

  // Where what the reader takes for the root begins. After the run.
  std::size_t RootBegin() const { return root_begin_; }

  std::optional<Stop> Run() {
    if (auto stop = ReadRoot()) return stop;
    while (!opened_.empty()) {
      const bool read = Step();
      if (read && !end_tag_) {
        NoteMisreading();
        if (open_) opened_.push_back({NodeName(), begin_});
      } else if (end_tag_ && NodeName() == opened_.back().name) {
        opened_.pop_back();
      } else {
        return misread_ ? misread_ : Explain();
      }
      node_.FreeChildren();
    }
    return std::nullopt;
  }

 private:
  struct Opened {
    std::string name;  // as the reader has it
    std::size_t begin;
  };

  bool Step() {
    begin_ = std::min(bytes_.find('<', Position()), bytes_.size());
    return reader_.ReadElement(node_, open_, end_tag_);
  }

  std::size_t Position() const { return static_cast<std::size_t>(reader_.Position()); }
  std::string NodeName() const { return std::string(node_.name.View()); }

  // A root that is read with a fault is a root all the same.
  std::optional<Stop> ReadRoot() {
    do {
      if (!Step()) {
        if (Position() >= bytes_.size()) return Stop{begin_, "no element here has child elements"};
        break;
      }
    } while (!open_);
    opened_.push_back({NodeName(), begin_});
    root_begin_ = begin_;
    node_.FreeChildren();
    return std::nullopt;
  }

  // Remembers the first tag that opens or closes an element for one of the two and not for the
  // other: what goes wrong far behind it goes wrong for that.
  void NoteMisreading() {
    Markup markup = {};
    if (misread_ || NodeName().empty() || !FindMarkup(bytes_, begin_, markup)) return;
    bool same = true;
    if (markup.kind == MarkupKind::kEmpty) {
      same = !open_;
    } else if (markup.kind == MarkupKind::kStart && !open_) {
      Markup next = {};
      same = FindMarkup(bytes_, markup.end, next) && next.kind == MarkupKind::kEnd &&
             next.end == Position();
    }
    if (!same) {
      misread_ = {begin_, OddityOf(bytes_, markup) + " of " + Tag(markup.name) +
                              " hides where the element ends"};
    }
  }

  Stop Explain() const {
    const Opened& parent = opened_.back();
    const std::string parent_tag = Tag(parent.name);
    if (end_tag_) {
      Markup tag = {};
      if (FindMarkup(bytes_, parent.begin, tag) && tag.name != parent.name)
        return {parent.begin, "a line break or tab behind the name of " + Tag(tag.name)};
      return {begin_, parent_tag + " is closed by </" + Shown(NodeName()) + ">"};
    }
    if (Position() >= bytes_.size()) return {bytes_.size(), "the file ends inside " + parent_tag};
    // The reader has stopped behind a '>' that is not that of the element's end tag.
    const std::size_t at = bytes_.rfind('<', Position() - 1);
    Markup markup = {};
    FindMarkup(bytes_, at, markup);
    const std::string tag = Tag(NodeName());
    switch (markup.kind) {
      case MarkupKind::kComment:
        return {at, "a comment in the text of " + tag + ", or before its first child element"};
      case MarkupKind::kCData:
        return {at, "a CDATA section in " + tag};
      case MarkupKind::kEnd:
        return {at, tag + " is closed by </" + Shown(markup.name) + ">"};
      default:
        return {at, "markup that is neither element nor text in " + tag};
    }
  }

  std::string_view bytes_;
  CSimpleXMLReader reader_;
  CSafeNode node_;
  bool open_ = false;
  bool end_tag_ = false;
  std::size_t begin_ = 0;  // of the markup that the last step has read
  std::size_t root_begin_ = 0;
  std::vector<Opened> opened_;
  std::optional<Stop> misread_;
};

std::optional<Markup> RootOf(std::string_view bytes) {
  Markup markup = {};
  for (std::size_t at = 0; FindMarkup(bytes, at, markup); at = markup.end) {
    if (markup.kind == MarkupKind::kStart || markup.kind == MarkupKind::kEmpty) return markup;
  }
  return std::nullopt;
}

// Why an XMLTV guide is not taken for one.
std::optional<Stop> NotRecognised(const std::string& name, std::string_view bytes,
                                  const Markup& root) {
  constexpr const char* kAttribute = "generator-info-name";
  CSimpleXMLReader reader;
  CSafeNode node;
  if (!reader.Open(std::string_view(name), true, false, true)) return std::nullopt;
  reader.ReadRoot(node);
  if (SameLetters(node.GetAttribute(kAttribute).View(), "XMLTV")) {
    if (node.name == "tv") return std::nullopt;
    return Stop{root.begin, "a line break or tab behind the name of <tv>"};
  }
  for (const MarkupAttribute& attribute : AttributesOf(bytes, root)) {
    if (attribute.name != kAttribute) continue;
    if (SameLetters(attribute.value, "XMLTV")) {
      return Stop{root.begin, OddityOf(bytes, root) + " of <tv> hides its " + kAttribute};
    }
    return Stop{root.begin, std::string(kAttribute) + " of <tv> is " + Quoted(attribute.value) +
                                ", and only \"XMLTV\" is known"};
  }
  return Stop{root.begin,
              std::string("<tv> has no ") + kAttribute + "=\"XMLTV\", by which guides are known"};
}

std::optional<Stop> NoChannel(std::string_view bytes) {
  std::optional<Stop> first_programme;
  Markup markup = {};
  for (std::size_t at = 0; FindMarkup(bytes, at, markup); at = markup.end) {
    if (markup.name == "channel") return std::nullopt;
    if (!first_programme && markup.name == "programme")
      first_programme = {markup.begin, "no <channel> says what stations there are"};
  }
  return first_programme;
}

// In the order of the file, and one at least.
std::vector<Stop> FindStops(const std::string& name, std::string_view bytes,
                            const std::string& reason) {
  if (bytes.empty()) return {{0, "it is empty, or compressed"}};
  if (bytes.substr(0, 4).find('\0') != std::string_view::npos || bytes.starts_with("\xff\xfe"))
    return {{0, "it is written in UTF-16 or UTF-32, and bytes are taken as they stand"}};
  std::vector<Stop> stops;
  const auto add = [&stops](std::optional<Stop> stop) {
    if (stop) stops.push_back(std::move(*stop));
  };
  const std::optional<Markup> root = RootOf(bytes);
  const bool is_xmltv = root && root->name == "tv";
  Walk walk(name, bytes);
  add(walk.Run());
  if (is_xmltv && walk.RootBegin() < root->begin) {
    add(Stop{walk.RootBegin(), "an element inside a comment is taken for the first of the file"});
  } else if (is_xmltv) {
    add(NotRecognised(name, bytes, *root));
  }
  if (is_xmltv) add(NoChannel(bytes));
  if (stops.empty()) stops.push_back({root ? root->begin : 0, "its message is " + Quoted(reason)});
  std::stable_sort(stops.begin(), stops.end(),
                   [](const Stop& a, const Stop& b) { return a.at < b.at; });
  return stops;
}

// "LINE:COLUMN", both from 1, columns in bytes.
std::string PlaceOf(std::string_view bytes, std::size_t at) {
  const std::string_view before = bytes.substr(0, at);
  const auto line = 1 + std::count(before.begin(), before.end(), '\n');
  const std::size_t line_begin = before.rfind('\n') + 1;  // 0 in the first one
  return std::to_string(line) + ":" + std::to_string(before.size() - line_begin + 1);
}

}  // namespace

int CheckFile(const Options& options) {
  const std::string& name = options.inputs.front();
  const std::string bytes = WholeFile(options);
  const Verdict verdict = AskPlugin(name);
  std::string text = Shown(name);
  if (verdict.taken) {
    text += ": the plug-in takes it: " + verdict.text + "\n";
  } else {
    const std::vector<Stop> stops = FindStops(name, bytes, verdict.text);
    text += ":" + PlaceOf(bytes, stops.front().at) +
            ": the plug-in does not take it: " + stops.front().rule + "\n";
    for (auto stop = stops.begin() + 1; stop != stops.end(); ++stop)
      text += Shown(name) + ":" + PlaceOf(bytes, stop->at) + ": nor would it then: " + stop->rule +
              "\n";
  }
  const std::vector<Loss> losses = FindLosses(name, bytes, options);
  if (!losses.empty()) {
    text +=
        verdict.taken ? "It loses or alters:\n" : "Taken all the same, it would lose or alter:\n";
  } else if (verdict.taken) {
    text += "Nothing is lost.\n";
  }
  for (const Loss& loss : losses) {
    std::string count = std::to_string(loss.count);
    count.insert(0, 9 - std::min<std::size_t>(count.size(), 9), ' ');
    text += count + "  " + loss.what + "\n";
  }
  if (!name.ends_with(".xml"))
    text += "Scripts name a listings file without its \".xml\", so it has to be called so.\n";
  std::fwrite(text.data(), 1, text.size(), stdout);
  if (std::fflush(stdout) != 0) throw Failure("the answer cannot be written");
  return verdict.taken ? 0 : 1;
}

}  // namespace epgcache
