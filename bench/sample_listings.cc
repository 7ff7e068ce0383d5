#include "bench/sample_listings.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "import/import_driver.h"

namespace bench {

namespace {

// A folder for the files, as long as the program runs.
class Folder {
 public:
  Folder() {
    std::string name = (std::filesystem::temp_directory_path() / "epg-bench-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
    path_ = name;
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder() {
    std::error_code error;
    std::filesystem::remove_all(path_, error);
  }
  std::string Path(const char* name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

std::int64_t item_count = 0;  // once a file has been written

std::string& UsedListings() {
  static std::string path;
  return path;
}

}  // namespace

const std::string& FileOf(Format format) {
  static const Folder folder;
  static std::map<Format, std::string> files;
  std::string& path = files[format];
  if (path.empty()) {
    path = folder.Path(NameOf(format)) + ".xml";
    std::ofstream out(path, std::ios::binary);
    item_count = WriteListings(out, format, {});
  }
  return path;
}

std::int64_t BytesOf(const std::string& path) {
  return static_cast<std::int64_t>(std::filesystem::file_size(path));
}

std::int64_t ItemCount() {
  FileOf(Format::kXMLTV);
  return item_count;
}

void UseListings(std::string path) { UsedListings() = std::move(path); }

const std::string& ListingsFile() {
  return UsedListings().empty() ? FileOf(Format::kXMLTV) : UsedListings();
}

std::shared_ptr<CProviderData> Import(const std::string& path) {
  ORVANE::MSTR status;
  auto store = ImportEPGFile(ORVANE::MSTR(path.c_str()), status, nullptr);
  if (store == nullptr) throw std::runtime_error(path + ": " + status.text);
  return store;
}

const CProviderData& Schedule() {
  static const std::shared_ptr<CProviderData> schedule = Import(ListingsFile());
  return *schedule;
}

std::vector<Query> RandomQueries() {
  std::int32_t begin = 0;
  std::int32_t end = 0;
  Schedule().GetTimeRange(begin, end);
  std::mt19937 random(42);
  std::uniform_int_distribution<std::int32_t> station(0, Schedule().GetStationCount() - 1);
  std::uniform_int_distribution<std::int32_t> time(begin, end - 1);
  std::vector<Query> queries(1 << 18);
  for (Query& query : queries) query = {station(random), time(random)};
  return queries;
}

}  // namespace bench
