// Loads XMLTV listings by way of expat: a callback for each tag and text.

#include <expat.h>

#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "bench/loaders/records.h"

namespace {

struct Reading {
  loaders::Schedule& schedule;
  loaders::Draft draft;
  std::string start, stop, channel, name, text;
  std::string* field = nullptr;  // that the present text belongs to
  bool is_kept = false;          // the present text is wanted
};

std::string_view Attribute(const XML_Char** attributes, std::string_view name) {
  for (; *attributes != nullptr; attributes += 2) {
    if (*attributes == name) return attributes[1];
  }
  return {};
}

void XMLCALL Start(void* data, const XML_Char* element, const XML_Char** attributes) {
  Reading& reading = *static_cast<Reading*>(data);
  const std::string_view name = element;
  reading.text.clear();
  reading.is_kept = true;
  if (name == "programme") {
    reading.start = Attribute(attributes, "start");
    reading.stop = Attribute(attributes, "stop");
    reading.channel = Attribute(attributes, "channel");
  } else if (name == "channel") {
    reading.channel = Attribute(attributes, "id");
    reading.name.clear();
  } else if (name == "display-name") {
    reading.field = reading.name.empty() ? &reading.name : nullptr;
  } else if (name != "value") {  // which is that of the element around it
    reading.field = loaders::FieldOf(reading.draft, name);
  }
}

void XMLCALL Text(void* data, const XML_Char* text, int length) {
  Reading& reading = *static_cast<Reading*>(data);
  if (reading.is_kept) reading.text.append(text, static_cast<std::size_t>(length));
}

void XMLCALL End(void* data, const XML_Char* element) {
  Reading& reading = *static_cast<Reading*>(data);
  const std::string_view name = element;
  if (name == "programme") {
    reading.draft.start = reading.start;
    reading.draft.stop = reading.stop;
    reading.draft.channel = reading.channel;
    reading.schedule.Add(reading.draft);
  } else if (name == "channel") {
    reading.schedule.AddStation(reading.channel, reading.name);
  } else if (reading.is_kept && reading.field != nullptr) {
    if (!reading.field->empty()) *reading.field += ", ";
    *reading.field += reading.text;
  } else if (reading.is_kept) {
    loaders::SetFlag(reading.draft, name, reading.text);
  }
  if (name != "value") reading.field = nullptr;
  reading.is_kept = false;
}

void Load(const std::string& file, loaders::Schedule& schedule) {
  const std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser(XML_ParserCreate(nullptr),
                                                                       XML_ParserFree);
  Reading reading = {schedule, {}, {}, {}, {}, {}, {}};
  XML_SetUserData(parser.get(), &reading);
  XML_SetElementHandler(parser.get(), Start, End);
  XML_SetCharacterDataHandler(parser.get(), Text);
  std::ifstream stream(file, std::ios::binary);
  constexpr int kBlock = 64 * 1024;
  while (stream) {
    void* const block = XML_GetBuffer(parser.get(), kBlock);
    if (block == nullptr) throw std::bad_alloc();
    stream.read(static_cast<char*>(block), kBlock);
    if (XML_ParseBuffer(parser.get(), static_cast<int>(stream.gcount()), stream ? 0 : 1) !=
        XML_STATUS_OK) {
      throw std::runtime_error(XML_ErrorString(XML_GetErrorCode(parser.get())));
    }
  }
}

}  // namespace

int main(int argc, char** argv) { return loaders::Measure(argc, argv, Load); }
