// The streaming reader alone: units one by one, then whole trees.

#include <string>

#include "fuzz/fuzz_support.h"
#include "xml/simple_xml_reader.h"
#include "xml/xml_escape.h"

namespace {

// As text of the subset that the reader takes.
std::string Element(std::string_view name, std::string_view value) {
  return std::string("<") + std::string(name) + ">" + std::string(value) + "</" +
         std::string(name) + ">";
}

void ReadUnits(CSimpleXMLReader& reader, std::size_t size) {
  CSafeNode node;
  bool open = false;
  bool end_tag = false;
  std::size_t units = 0;
  while (reader.ReadElement(node, open, end_tag)) {
    ++units;
    fuzz::Check(reader.Position() <= static_cast<std::int64_t>(size), "a reader stays in its file");
    fuzz::Check(node.first_child == nullptr, "a unit has no children");
  }
  fuzz::Check(units <= size, "every unit takes up a byte at least");
}

void ReadTree(CSimpleXMLReader& reader) {
  CSafeNode root;
  ORVANE::MSTR error;
  if (!reader.ReadRoot(root)) return;
  const bool whole = reader.ReadChildren(root, error);
  fuzz::Check(whole == error.IsEmpty(), "a failure has a reason");
}

// A text, escaped and read again, is itself.
void CheckEscape(std::string_view text) {
  const std::string file = Element("a", XmlEscape(text).View());
  CSimpleXMLReader reader;
  fuzz::Check(reader.Open(fuzz::MemoryFile(file), true, false, true), "the file opens");
  CSafeNode node;
  bool open = false;
  bool end_tag = false;
  fuzz::Check(reader.ReadElement(node, open, end_tag) && !open, "an escaped text is an element's");
  fuzz::Check(node.value == text, "an escaped text is read as itself");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = fuzz::View(data, size);
  {
    CSimpleXMLReader reader;
    fuzz::Check(reader.Open(fuzz::MemoryFile(text), true, false, true), "the file opens");
    ReadUnits(reader, size);
    ReadTree(reader);
  }
  CheckEscape(text);
  return 0;
}
