// What a guide says, element by element, as its reader hands it over: texts are UTF-8.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace epgcache {

// The fields of a cache file's programmes and items, by their numbers there.
enum ProgField : std::size_t {
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
  kProgFields = 14,
};
enum ItemField : std::size_t {
  kHd = 4,
  kStereo = 5,
  kSubtitle = 6,  // closed captions
  kRatingOther = 9,
  kRepeat = 10,
  kAspect = 11,
  kSubtitles = 12,
  kNew = 13,
  kPremiere = 14,
  kItemFields = 15,
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
  std::array<std::string, kProgFields> prog;
  std::array<std::string, kItemFields> item;
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
  // An element begins within the programme, below `parent`.
  virtual void Visit(const char* parent, const char* element) {
    (void)parent;
    (void)element;
  }
};

}  // namespace epgcache
