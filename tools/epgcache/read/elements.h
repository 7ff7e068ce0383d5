// Which of a guide's elements becomes which field. The manual page's table is made from this one.
#pragma once

#include <string_view>

#include "tools/epgcache/read/programme.h"

namespace epgcache {

// What an element's text does to its field.
enum class Use {
  kBest,       // the preferred language's, the first of several
  kFirst,      // the first one
  kCategory,   // of the preferred language, each once, as a list
  kList,       // each, as a list
  kPresenter,  // the same, if asked for
  kGuest,      // the same, if asked for
  kMark,       // marks the field, whatever the text
  kPremiere,   // the preferred language's, "Premiere" when there is none
  kCaptions,   // marks the field, unless the subtitles are of another type
  kIfNo,       // marks the field when the text is "no"
  kIfHd,       // marks it when the text names a high resolution
  kIfStereo,   // marks it, unless the text says otherwise
  kRating,     // by the element's system
  kEpisode,    // after the sub-title, if asked for
  kName,       // a channel's
};

struct Element {
  std::string_view parent;  // of another below the programme, or the record's own
  std::string_view name;
  Use use;
  Field field;
  std::string_view becomes;
};

inline constexpr Element kElements[] = {
    {"channel", "display-name", Use::kName, kNoField, "network and call sign, the first two"},
    {"programme", "title", Use::kBest, kTitle, "Title"},
    {"programme", "sub-title", Use::kBest, kEpisodeTitle, "EpisodeTitle"},
    {"programme", "desc", Use::kBest, kDescription, "Description"},
    {"programme", "category", Use::kCategory, kGenre, "Genre, each once"},
    {"programme", "date", Use::kFirst, kPublishDate, "PublishDate"},
    {"programme", "language", Use::kBest, kLanguage, "Language"},
    {"programme", "episode-num", Use::kEpisode, kEpisodeTitle, "EpisodeTitle, with --episodes"},
    {"programme", "previously-shown", Use::kMark, kRepeat, "Repeat"},
    {"programme", "new", Use::kMark, kNew, "New"},
    {"programme", "premiere", Use::kPremiere, kPremiere, "Premiere, its text or that word"},
    {"programme", "subtitles", Use::kCaptions, kSubtitle,
     "Subtitle, unless onscreen or deaf-signed"},
    {"subtitles", "language", Use::kList, kSubtitles, "the language of subtitles"},
    {"credits", "director", Use::kList, kDirector, "Director, all of them"},
    {"credits", "actor", Use::kList, kActors, "Actors, all of them"},
    {"credits", "presenter", Use::kPresenter, kActors, "Actors, with --presenters"},
    {"credits", "guest", Use::kGuest, kActors, "Actors, with --guests"},
    {"video", "aspect", Use::kFirst, kAspect, "the aspect ratio among Flags"},
    {"video", "quality", Use::kIfHd, kHd, "HD, for HD, 4K, 720p and more"},
    {"video", "colour", Use::kIfNo, kBlackAndWhite, "BlackAndWhite, for \"no\""},
    {"audio", "stereo", Use::kIfStereo, kStereo, "Stereo, unless mono or bilingual"},
    {"rating", "value", Use::kRating, kRatingOther,
     "RatingBBFC for that system, else RatingOther: \"MPAA rating: PG\""},
    {"star-rating", "value", Use::kFirst, kStarRating, "StarRating, the first"},
};

// Null when there is none.
constexpr const Element* FindElement(std::string_view parent, std::string_view name) {
  for (const Element& element : kElements) {
    if (element.name == name && element.parent == parent) return &element;
  }
  return nullptr;
}

// Whether it is one of a programme's own elements, with a field or with parts.
constexpr bool IsOfProgramme(std::string_view name) {
  for (const Element& element : kElements) {
    if (element.parent == name || (element.parent == "programme" && element.name == name))
      return name != "programme" && name != "channel";
  }
  return false;
}

}  // namespace epgcache
