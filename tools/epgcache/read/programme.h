// What a guide says, element by element, as its reader hands it over: texts are UTF-8.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace epgcache {

// The fields of a cache file's programmes, by their numbers there, followed by those of items.
enum Field : std::size_t {
  kNoField = 0,
  kTitle = 2,
  kEpisodeTitle = 3,
  kDescription = 4,
  kGenre = 5,
  kDirector = 7,
  kActors = 8,
  kPublishDate = 9,
  kLanguage = 10,
  kRatingBbfc = 11,
  kStarRating = 12,
  kBlackAndWhite = 13,
  kItemFields = 14,  // an item's field 0
  kHd = kItemFields + 4,
  kStereo = kItemFields + 5,
  kSubtitle = kItemFields + 6,  // closed captions
  kRatingOther = kItemFields + 9,
  kRepeat = kItemFields + 10,
  kAspect = kItemFields + 11,
  kSubtitles = kItemFields + 12,
  kNew = kItemFields + 13,
  kPremiere = kItemFields + 14,
  kFields = kItemFields + 15,
};

struct Channel {
  std::string id;
  std::vector<std::string> names;  // the preferred language's first
};

struct Programme {
  // Attributes as they stand; an absent one is empty.
  std::string channel;
  std::string start;
  std::string stop;
  // An empty text is a field that the guide does not fill.
  std::array<std::string, kFields> fields;
};

// Takes what a guide holds, in its order.
class GuideConsumer {
 public:
  GuideConsumer() = default;
  GuideConsumer(const GuideConsumer&) = delete;
  GuideConsumer& operator=(const GuideConsumer&) = delete;
  virtual ~GuideConsumer() = default;

  virtual void Add(const Channel& channel) = 0;
  // A programme's attributes are known. False: its elements are not worth reading.
  virtual bool Begin(const Programme& programme) = 0;
  virtual void Add(const Programme& programme) = 0;
};

}  // namespace epgcache
