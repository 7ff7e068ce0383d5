// Loads XMLTV listings by way of pugixml: the whole document, parsed in place, and a walk over it.

#include <fstream>
#include <iterator>
#include <pugixml.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/loaders/records.h"

namespace {

void ReadProgramme(const pugi::xml_node& element, loaders::Draft& draft) {
  for (const pugi::xml_node child : element.children()) {
    const std::string_view name = child.name();
    if (name == "credits" || name == "video" || name == "audio") {
      ReadProgramme(child, draft);
    } else if (std::string* const field = loaders::FieldOf(draft, name)) {
      const bool has_value = name == "rating" || name == "star-rating";
      const char* const text = has_value ? child.child_value("value") : child.child_value();
      if (!field->empty()) *field += ", ";
      *field += text;
    } else {
      loaders::SetFlag(draft, name, child.child_value());
    }
  }
}

void Load(const std::string& file, loaders::Schedule& schedule) {
  std::ifstream stream(file, std::ios::binary | std::ios::ate);
  std::vector<char> text(static_cast<std::size_t>(stream.tellg()));
  stream.seekg(0);
  if (!stream.read(text.data(), static_cast<std::streamsize>(text.size()))) {
    throw std::runtime_error("cannot be read");
  }
  pugi::xml_document document;
  const pugi::xml_parse_result result = document.load_buffer_inplace(
      text.data(), text.size(), pugi::parse_minimal | pugi::parse_escapes);
  if (!result) throw std::runtime_error(result.description());
  loaders::Draft draft;
  for (const pugi::xml_node child : document.child("tv").children()) {
    if (child.name() == std::string_view("channel")) {
      schedule.AddStation(child.attribute("id").value(), child.child_value("display-name"));
    } else if (child.name() == std::string_view("programme")) {
      draft.start = child.attribute("start").value();
      draft.stop = child.attribute("stop").value();
      draft.channel = child.attribute("channel").value();
      ReadProgramme(child, draft);
      schedule.Add(draft);
    }
  }
}

}  // namespace

int main(int argc, char** argv) { return loaders::Measure(argc, argv, Load); }
