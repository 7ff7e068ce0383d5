#include "tools/epgcache/write/cache_writer.h"

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "import/listings_import.h"

namespace epgcache {

namespace {

constexpr std::uint32_t kNoKey = 0;

void Count(const Unencodable& more, Unencodable& all) {
  all.transliterated += more.transliterated;
  all.lost += more.lost;
}

class Writer {
 public:
  Writer(const Guide& guide, TargetText& text, const std::function<void(std::string_view)>& write)
      : guide_(guide), text_(text), write_(write), keys_(guide.ProgrammeTexts(), kNoKey) {}

  Written Run() {
    write_(std::string("<?xml version=\"1.0\" encoding=\"") + text_.EncodingName() +
           "\"?>\n<ProviderData xmlns=\"" + std::string(kMakerNamespace) + "\" EPGSource=\"3\">\n");
    WriteProgrammes();
    write_("<StationList>\n");
    for (const Guide::Station& station : guide_.Stations()) WriteStation(station);
    write_("</StationList>\n</ProviderData>\n");
    return written_;
  }

 private:
  // Programmes come before the items that refer to them, by keys in the order of their first use.
  void WriteProgrammes() {
    write_("<ProgramMap>\n");
    for (const Guide::Station& station : guide_.Stations()) {
      for (const Guide::Item& item : station.items) {
        std::uint32_t& key = keys_[item.programme];
        if (key != kNoKey) continue;
        key = static_cast<std::uint32_t>(++written_.programmes);
        line_ = "<Prog><p1>";
        line_ += std::to_string(key);
        line_ += "</p1>";
        line_ += guide_.ProgrammeText(item.programme);
        line_ += "</Prog>\n";
        write_(line_);
        Count(guide_.UnencodableOfProgramme(item.programme), written_.unencodable);
      }
    }
    write_("</ProgramMap>\n");
  }

  void WriteStation(const Guide::Station& station) {
    ++written_.stations;
    line_ = "<Station>\n<StationData>";
    AppendKey(station.id);
    // The first name is the network, the second the call sign, as the plug-in has it of channels.
    // One without a name is called by its id.
    AppendName("s2", station.names.empty() ? station.id : station.names[0]);
    if (station.names.size() > 1) AppendName("s3", station.names[1]);
    line_ += "</StationData>\n<Schedule>\n";
    write_(line_);
    for (const Guide::Item& item : station.items) WriteItem(item);
    write_("</Schedule>\n</Station>\n");
  }

  void WriteItem(const Guide::Item& item) {
    ++written_.items;
    line_ = "<Item><i1>";
    line_ += std::to_string(item.start);
    line_ += "</i1><i2>";
    line_ += std::to_string(item.end);
    line_ += "</i2><i3>";
    line_ += std::to_string(keys_[item.programme]);
    line_ += "</i3>";
    line_ += guide_.DetailsText(item.details);
    line_ += "</Item>\n";
    write_(line_);
    Count(guide_.UnencodableOfDetails(item.details), written_.unencodable);
  }

  // Two ids may become equal in an encoding without their letters; the plug-in would drop a
  // station.
  void AppendKey(const std::string& id) {
    const std::size_t begin = line_.size();
    AppendField("s1", id);
    std::uint64_t& uses = station_keys_[line_.substr(begin)];
    while (++uses > 1) {
      line_.resize(begin);
      AppendField("s1", id + "-" + std::to_string(uses));
      if (station_keys_.try_emplace(line_.substr(begin), 1).second) break;
    }
  }

  void AppendField(std::string_view tag, std::string_view utf8) {
    line_.append("<").append(tag).append(">");
    text_.Append(line_, utf8, written_.unencodable);
    line_.append("</").append(tag).append(">");
  }

  void AppendName(std::string_view tag, std::string_view utf8) {
    line_.append("<").append(tag).append(">");
    written_.slashes += text_.AppendName(line_, utf8, written_.unencodable);
    line_.append("</").append(tag).append(">");
  }

  const Guide& guide_;
  TargetText& text_;
  const std::function<void(std::string_view)>& write_;
  std::vector<std::uint32_t> keys_;
  std::map<std::string, std::uint64_t> station_keys_;  // and how often they were wanted
  Written written_;
  std::string line_;
};

}  // namespace

Written WriteCache(const Guide& guide, TargetText& text,
                   const std::function<void(std::string_view)>& write) {
  return Writer(guide, text, write).Run();
}

}  // namespace epgcache
