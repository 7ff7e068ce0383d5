#include "tools/epgcache/check.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/engine.h"
#include "import/import_driver.h"
#include "import/listings_import.h"
#include "text/counted_text.h"
#include "text/letters.h"
#include "tools/epgcache/byte_source.h"
#include "tools/epgcache/failure.h"
#include "tools/epgcache/losses.h"
#include "tools/epgcache/markup.h"
#include "tools/epgcache/reader_walk.h"
#include "tools/epgcache/text.h"
#include "xml/safe_node.h"
#include "xml/simple_xml_reader.h"

namespace epgcache {

namespace {

constexpr const char* kGenerator = "generator-info-name";

std::string Quoted(std::string_view text) {
  constexpr std::size_t kMost = 100;
  return '"' + Shown(text.substr(0, kMost)) + (text.size() > kMost ? "...\"" : "\"");
}

struct File {
  std::string name;
  std::string bytes;
  bool is_packed = false;
};

File ReadWhole(const Options& options) {
  File file;
  file.name = options.inputs.front();
  struct stat about = {};
  if (stat(file.name.c_str(), &about) == 0 && !S_ISREG(about.st_mode))
    throw Failure(Shown(file.name) + ": is not a regular file, which the plug-in asks for");
  ByteSource source(file.name, options.max_size);
  file.is_packed = source.IsPacked();
  if (file.is_packed) return file;
  std::string block(std::size_t{64} << 10, '\0');
  for (std::size_t count = 0; (count = source.Read(block.data(), block.size())) != 0;)
    file.bytes.append(block, 0, count);
  return file;
}

// What the plug-in itself makes of the file.
struct Verdict {
  std::shared_ptr<CProviderData> store;  // null: the file is not taken
  std::string reason;                    // which it logs then
};

// The log has it escaped.
std::string Unescaped(std::string_view text) {
  std::string plain;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const std::string_view name = text[at] == '&' ? ReferenceAt(text.substr(at)) : "";
    const char character = CharacterOf(name);
    plain += character != '\0' ? character : text[at];
    if (character != '\0') at += name.size() + 1;
  }
  return plain;
}

Verdict AskPlugin(const std::string& name) {
  std::string reason;
  ORVANE::SetLogSink([&reason](ORVANE::ENTRY, std::string_view text) {
    if (!text.starts_with("EPG Loader: Import failed")) return;
    text.remove_prefix(std::min(text.find('[') + 1, text.size()));
    reason = Unescaped(text.substr(0, text.rfind(']')));
  });
  ORVANE::MSTR status;
  auto store = ImportEPGFile(name.c_str(), status, nullptr);
  ORVANE::SetLogSink({});
  if (reason.empty()) reason = ViewOf(status);
  return {std::move(store), std::move(reason)};
}

enum class Format { kCache, kTitanTV, kXmltv, kOther };

// As the plug-in sees it.
Format FormatOf(const std::string& name) {
  CSimpleXMLReader reader;
  CSafeNode root;
  if (!reader.Open(name.c_str(), true, false, true)) return Format::kOther;
  reader.ReadRoot(root);
  const std::string_view name_space = AttributeValue(root, "xmlns");
  if (EqualIgnoringCase(name_space, kMakerNamespace)) return Format::kCache;
  if (EqualIgnoringCase(name_space, kTitanTVNamespace)) return Format::kTitanTV;
  if (EqualIgnoringCase(AttributeValue(root, kGenerator), "XMLTV")) return Format::kXmltv;
  return Format::kOther;
}

// Why an XMLTV guide is not taken for one, in as many ways as there are.
void FindHiddenMark(std::string_view bytes, const Markup& root, bool is_seen,
                    std::vector<Stop>& stops) {
  const TagParts parts = PartsOf(bytes, root);
  const TagAttribute* const generator = parts.Find(kGenerator);
  if (generator == nullptr) {
    stops.push_back({root.begin, std::string("<tv> has no ") + kGenerator +
                                     "=\"XMLTV\", by which the plug-in knows XMLTV"});
  } else if (!SameLetters(generator->value, "XMLTV")) {
    stops.push_back({root.begin, std::string(kGenerator) + " of <tv> is " +
                                     Quoted(generator->value) +
                                     ", and the plug-in knows XMLTV by \"XMLTV\""});
  }
  const std::string oddity = AttributeOddity(bytes, root);
  if (!is_seen && !oddity.empty())
    stops.push_back({root.begin, oddity + ", which hides what stands in the tag"});
}

std::optional<Stop> NoChannel(std::string_view bytes, const Markup& root) {
  Stop stop = {root.begin, "no <channel> says what stations there are"};
  Markup markup = {};
  int depth = 0;
  for (std::size_t at = root.begin; FindMarkup(bytes, at, markup); at = markup.end) {
    if (depth == 1 && markup.IsElement() && markup.name == "channel") return std::nullopt;
    if (depth == 1 && markup.IsElement() && stop.at == root.begin) stop.at = markup.begin;
    if (markup.kind == MarkupKind::kStart) ++depth;
    if (markup.kind == MarkupKind::kEnd) --depth;
  }
  return stop;
}

// The plug-in's own reason, at the element that it names, if it names one.
Stop SaidByPlugin(std::string_view bytes, const Markup& root, const std::string& reason) {
  const std::size_t begin = reason.find('<') + 1;
  const std::string name = begin == 0 ? "" : reason.substr(begin, reason.find('>', begin) - begin);
  Markup markup = {};
  for (std::size_t at = root.end; !name.empty() && FindMarkup(bytes, at, markup); at = markup.end) {
    if (markup.IsElement() && markup.name == name)
      return {markup.begin, "the plug-in says " + Quoted(reason)};
  }
  return {root.begin, "the plug-in says " + Quoted(reason)};
}

// In the order of the file, and one at least.
std::vector<Stop> FindStops(const File& file, const std::string& reason) {
  const std::string_view bytes = file.bytes;
  if (file.is_packed) return {{0, "it is compressed"}};
  if (bytes.find_first_not_of(kBlanks) == std::string_view::npos) return {{0, "it is empty"}};
  const std::string_view beginning = bytes.substr(0, 2);
  if (beginning == "\xff\xfe" || beginning == "\xfe\xff" ||
      beginning.find('\0') != std::string_view::npos)
    return {{0, "it is in UTF-16 or UTF-32, and the plug-in takes bytes as they stand"}};
  Markup root = {};
  if (!FindRoot(bytes, root)) return {{0, "it holds no element"}};

  std::vector<Stop> stops;
  const Format format = FormatOf(file.name);
  const bool may_be_xmltv = format == Format::kXmltv || root.name == "tv";
  if (format == Format::kOther && !may_be_xmltv && root.name != "Programmes") {
    stops.push_back({root.begin, ShownTag(root.name) + " begins none of the formats"});
  } else if (format != Format::kTitanTV) {
    std::optional<Stop> stop = WalkAsImporters(file.name, bytes);
    if (may_be_xmltv) FindHiddenMark(bytes, root, format == Format::kXmltv, stops);
    if (stop) stops.push_back(std::move(*stop));
    if (may_be_xmltv) {
      if (auto none = NoChannel(bytes, root)) stops.push_back(std::move(*none));
    }
  }
  if (stops.empty()) stops.push_back(SaidByPlugin(bytes, root, reason));
  std::stable_sort(stops.begin(), stops.end(),
                   [](const Stop& a, const Stop& b) { return a.at < b.at; });
  return stops;
}

// "NAME:LINE:COLUMN: ", both from 1, columns in bytes.
std::string PlaceOf(const File& file, std::size_t at) {
  const std::string_view before = std::string_view(file.bytes).substr(0, at);
  const auto line = 1 + std::count(before.begin(), before.end(), '\n');
  const std::size_t line_begin = before.rfind('\n') + 1;  // 0 in the first one
  return Shown(file.name) + ":" + std::to_string(line) + ":" +
         std::to_string(before.size() - line_begin + 1) + ": ";
}

std::string Answer(const File& file, const Verdict& verdict) {
  if (verdict.store != nullptr) {
    bool has_items = false;
    for (std::int32_t station = 0; station < verdict.store->GetStationCount(); ++station)
      has_items = has_items || verdict.store->GetStation(station)->GetProgramCount() > 0;
    return Shown(file.name) + ": the plug-in takes it" +
           (has_items ? ": " : ", and no programme arrives: ") +
           std::string(ViewOf(verdict.store->GetStatistics())) + "\n";
  }
  std::string text;
  for (const Stop& stop : FindStops(file, verdict.reason)) {
    text += PlaceOf(file, stop.at) +
            (text.empty() ? "the plug-in does not take it: " : "also rejected: ") + stop.rule +
            "\n";
  }
  return text;
}

std::string LossesOf(const File& file, bool is_taken, const Options& options) {
  Markup root = {};
  if (!FindRoot(file.bytes, root) || root.name != "tv") {
    return is_taken ? "What it loses is known of XMLTV guides alone.\n" : "";
  }
  const Losses losses = FindLosses(file.name, file.bytes, options);
  std::string text = losses.fault;
  if (losses.counts.empty()) return text + (is_taken && text.empty() ? "Nothing is lost.\n" : "");
  text += is_taken ? "It loses or alters:\n" : "If loaded anyway, it would lose or alter:\n";
  for (const Loss& loss : losses.counts) {
    char count[32] = "";
    std::snprintf(count, sizeof count, "%9llu  ", static_cast<unsigned long long>(loss.count));
    text += count + loss.what + "\n";
  }
  return text;
}

}  // namespace

int CheckFile(const Options& options) {
  const File file = ReadWhole(options);
  const Verdict verdict = AskPlugin(file.name);
  const bool is_taken = verdict.store != nullptr;
  std::string text = Answer(file, verdict) + LossesOf(file, is_taken, options);
  if (!file.name.ends_with(".xml"))
    text += "Scripts name listings without their \".xml\", so the file has to be called so.\n";
  std::fwrite(text.data(), 1, text.size(), stdout);
  if (std::fflush(stdout) != 0) throw Failure("the answer cannot be written");
  return is_taken ? 0 : 1;
}

}  // namespace epgcache
