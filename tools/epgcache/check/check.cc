#include "tools/epgcache/check/check.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iterator>
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
#include "text/entities.h"
#include "tools/epgcache/answer.h"
#include "tools/epgcache/check/difference.h"
#include "tools/epgcache/check/nameless_file.h"
#include "tools/epgcache/check/reader_walk.h"
#include "tools/epgcache/failure.h"
#include "tools/epgcache/read/byte_source.h"
#include "tools/epgcache/read/markup.h"
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
  std::string name;  // as it is shown
  std::string path;  // by which it can be opened
  std::string bytes;
  bool is_packed = false;
};

// `copy` gets what comes from standard input.
File ReadWhole(const Options& options, const NamelessFile& copy) {
  const std::string& input = options.inputs.front();
  File file = {ShownInput(input), input, {}};
  struct stat about = {};
  if (input != "-" && stat(input.c_str(), &about) == 0 && !S_ISREG(about.st_mode))
    throw Failure(file.name + ": is not a regular file, which the plug-in asks for");
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(
      input == "-" ? stdin : std::fopen(input.c_str(), "rb"), std::fclose);
  if (stream == nullptr) throw Failure(file.name + ": cannot be opened: " + std::strerror(errno));
  std::string block(std::size_t{64} << 10, '\0');
  for (std::size_t count = 0;
       (count = std::fread(block.data(), 1, block.size(), stream.get())) != 0;) {
    file.bytes.append(block, 0, count);
    if (file.bytes.size() > options.max_size)
      throw Failure(file.name + ": is larger than --max-size allows for");
  }
  if (std::ferror(stream.get()) != 0)
    throw Failure(file.name + ": cannot be read: " + std::strerror(errno));
  if (input == "-") {
    copy.Write(file.bytes);
    file.path = copy.Path();
  }
  if (IsBlank(file.bytes)) return file;
  ByteSource source(file.path, options.max_size);
  source.Next();
  file.is_packed = source.IsPacked();
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
  while (!text.empty()) {
    const Entity* const entity =
        std::find_if(std::begin(kEntities), std::end(kEntities),
                     [text](const Entity& one) { return text.starts_with(one.reference); });
    const bool is_escaped = entity != std::end(kEntities);
    plain += is_escaped ? entity->character : text.front();
    text.remove_prefix(is_escaped ? entity->reference.size() : 1);
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
  } else if (!EqualIgnoringCase(generator->value, "XMLTV")) {
    stops.push_back({root.begin, std::string(kGenerator) + " of <tv> is " +
                                     Quoted(generator->value) +
                                     ", and the plug-in knows XMLTV by \"XMLTV\""});
  }
  const std::string oddity = AttributeOddity(bytes, root);
  if (!is_seen && !oddity.empty())
    stops.push_back({root.begin, oddity + ", which hides what stands in the tag"});
}

std::optional<Stop> NoChannel(std::string_view bytes, const Markup& root) {
  std::size_t place = root.begin;
  Markup markup = {};
  for (std::size_t at = root.end; FindMarkup(bytes, at, markup); at = markup.end) {
    if (markup.IsElement() && markup.name == "channel") return std::nullopt;
    if (markup.IsElement() && place == root.begin) place = markup.begin;
  }
  return Stop{place, "no <channel> says what stations there are"};
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
  if (file.is_packed) return {{0, "it is packed"}};
  if (bytes.find_first_not_of(kBlanks) == std::string_view::npos) return {{0, "it is empty"}};
  const std::string_view beginning = bytes.substr(0, 2);
  if (beginning == "\xff\xfe" || beginning == "\xfe\xff" ||
      beginning.find('\0') != std::string_view::npos)
    return {{0, "it is in UTF-16 or UTF-32, and the plug-in takes bytes as they stand"}};
  Markup root = {};
  if (!FindRoot(bytes, root)) return {{0, "it holds no element"}};

  std::vector<Stop> stops;
  const Format format = FormatOf(file.path);
  const bool may_be_xmltv = format == Format::kXmltv || root.name == "tv";
  if (format == Format::kOther && !may_be_xmltv && root.name != "Programmes") {
    stops.push_back({root.begin, ShownTag(root.name) + " begins none of the formats"});
  } else if (format != Format::kTitanTV) {
    std::optional<Stop> stop = WalkAsImporters(file.path, bytes);
    if (may_be_xmltv) FindHiddenMark(bytes, root, format == Format::kXmltv, stops);
    const bool is_known = stop && std::any_of(stops.begin(), stops.end(), [&](const Stop& other) {
                            return other.at == stop->at && other.rule.starts_with(stop->rule);
                          });
    if (stop && !is_known) stops.push_back(std::move(*stop));
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
  return file.name + ":" + std::to_string(line) + ":" +
         std::to_string(before.size() - line_begin + 1) + ": ";
}

std::string Answer(const File& file, const Verdict& verdict) {
  if (verdict.store != nullptr) {
    bool has_items = false;
    for (std::int32_t station = 0; station < verdict.store->GetStationCount(); ++station)
      has_items = has_items || verdict.store->GetStation(station)->GetProgramCount() > 0;
    return file.name + ": the plug-in takes it" +
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

// What the plug-in makes of a guide's contents, or who makes listings of it.
std::string Advice(const File& file, const Verdict& verdict, const Options& options) {
  Markup root = {};
  const bool is_guide = FindRoot(file.bytes, root) && root.name == "tv";
  if (verdict.store == nullptr) {
    if (!is_guide && !file.is_packed) return "";
    return "epgcache " + (options.inputs.front() == "-" ? "-" : file.name) +
           " -o LISTINGS.xml makes listings of it.\n";
  }
  if (!is_guide) return "What it loses is only checked for XMLTV guides.\n";
  const Differences found = FindDifferences(*verdict.store, file.name, file.path, options);
  if (found.lines.empty()) return found.fault + "Nothing is lost.\n";
  return found.fault + "It differs from what the guide says:\n" + found.lines;
}

}  // namespace

int CheckFile(const Options& options) {
  const NamelessFile copy;
  const File file = ReadWhole(options, copy);
  const Verdict verdict = AskPlugin(file.path);
  std::string text = Answer(file, verdict) + Advice(file, verdict, options);
  if (options.inputs.front() != "-" && !file.name.ends_with(".xml"))
    text += "Scripts name listings without their \".xml\", so the file's name must end in it.\n";
  WriteAnswer(text);
  return verdict.store != nullptr ? 0 : 1;
}

}  // namespace epgcache
