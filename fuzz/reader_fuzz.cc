// The streaming reader alone: units one by one, held against a plain model, then whole trees,
// as nodes and as elements.

#include <cctype>
#include <map>
#include <string>
#include <utility>

#include "fuzz/fuzz_support.h"
#include "text/counted_text.h"
#include "text/entities.h"
#include "xml/simple_xml_reader.h"

namespace {

using ORVANE::MSTR;
using ORVANE::MXML;

// "!" when a read failed; "/" for an end tag, "+" for an open element, "-" for any other unit.
std::string Marks(bool result, bool open, bool end_tag) {
  return (result ? std::string() : "!") + (end_tag ? '/' : open ? '+' : '-');
}

// The next unit as "marks name@attribute:value{text}", with empty parts left out.
std::string ReadUnit(CSimpleXMLReader& reader, CSafeNode& node) {
  bool open = false;
  bool end_tag = false;
  const bool result = reader.ReadElement(node, open, end_tag);
  std::string unit = Marks(result, open, end_tag).append(ViewOf(node.name));
  for (const auto* each = node.first_attribute; each != nullptr; each = each->next) {
    unit.append("@").append(ViewOf(each->name)).append(":").append(ViewOf(each->value));
  }
  if (node.value.length != 0) unit.append("{").append(ViewOf(node.value)).append("}");
  return unit;
}

// The reader's habits once more, put as plainly as can be.
struct Model {
  std::string_view bytes;
  std::size_t at = 0;
  std::string name = {}, attributes = {}, value = {};

  static bool IsQuote(char c) { return c == '"' || c == '\''; }

  void ParseTag(const std::string& tag) {
    name = attributes = "";
    bool quoted = false;
    int token = 0;  // the element's name, then in turn an attribute's name and its value
    for (const char c : tag) {
      if (IsQuote(c)) quoted = !quoted;
      if (!quoted && (c == ' ' || c == '=')) {
        attributes += ++token % 2 == 1 ? '@' : ':';
      } else if (token % 2 == 1 || token == 0 || !IsQuote(c)) {
        (token == 0 ? name : attributes) += c;
      }
    }
    if (token % 2 == 1) attributes += ':';
  }

  std::string Read() {
    static const std::map<std::string, char> kEntities = {
        {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};
    std::string tag, text, entity;
    int brackets = 0;
    bool open = true, end_tag = false, in_tag = false, skipping = false, after_bracket = false;
    bool in_entity = false, quoted = false, closing = false, parsed = false;
    const auto unit = [&](bool result) {
      return Marks(result, open, end_tag) + name + attributes +
             (value.empty() ? "" : '{' + value + '}');
    };
    while (at < bytes.size()) {
      const char c = bytes[at++];
      if (in_entity && c != ';') {
        entity += static_cast<char>(std::tolower(c));
        continue;
      }
      if (std::exchange(in_entity, false)) {
        const auto known = kEntities.find(std::exchange(entity, ""));
        if (known != kEntities.end() && !(in_tag && skipping))
          (in_tag ? tag : text) += known->second;
        continue;
      }
      if (std::exchange(after_bracket, false)) {
        const bool starts_skipping = c == '!' || c == '?';
        if (brackets > 1 && !starts_skipping && c != '/') return at -= 2, unit(true);
        if (starts_skipping) skipping = true, open = false;
        if (c == '/') closing = true;
      }
      if (c == '&') {
        in_entity = true;
      } else if (c == '<') {
        if (brackets++ == 1) value = text;
        text = "";
        after_bracket = in_tag = true;
      } else if (!in_tag) {
        text += c;
      } else if (c == '/' && !quoted) {
        open = false;
      } else if (c == '>') {
        if (parsed && tag != name) return unit(false);
        if (!parsed) ParseTag(std::exchange(tag, "")), end_tag = closing;
        parsed = true;
        in_tag = false;
        if (!open) return unit(true);
      } else if (!skipping || c == '/') {
        if (IsQuote(c)) quoted = !quoted;
        tag += c;
      }
    }
    return unit(false);
  }
};

void CompareUnits(CSimpleXMLReader& reader, std::string_view text) {
  Model model{text};
  CSafeNode node;
  while (model.at < text.size()) {
    fuzz::Check(model.Read() == ReadUnit(reader, node), "a unit is the model's");
    fuzz::Check(static_cast<std::int64_t>(model.at) == reader.Offset(),
                "a unit ends where the model's does");
  }
}

// An element with all below it, as "name@attribute{value}(children)", and the value that each of
// its attributes' names finds.
std::string Dump(const MXML::NODE& node) {
  std::string text(ViewOf(node.name));
  for (const auto* each = node.first_attribute; each != nullptr; each = each->next) {
    text.append("@").append(AttributeValue(node, ViewOf(each->name)));
  }
  text.append("{").append(ViewOf(node.value)).append("}(");
  for (const auto* each = node.first_child; each != nullptr; each = each->next_sibling) {
    text += Dump(*each);
  }
  return text + ')';
}

// The same of an element and its node; the attributes are asked for by the node's names.
std::string Dump(const CElement& element, const MXML::NODE* node) {
  std::string text(element.name);
  const auto* attribute = node != nullptr ? node->first_attribute : nullptr;
  for (; attribute != nullptr; attribute = attribute->next) {
    text.append("@").append(AttributeValue(element, ViewOf(attribute->name)));
  }
  text.append("{").append(element.value).append("}(");
  const MXML::NODE* child = node != nullptr ? node->first_child : nullptr;
  for (const CElement& each : ChildrenOf(element)) {
    text += Dump(each, child);
    if (child != nullptr) child = child->next_sibling;
  }
  return text + ')';
}

void CompareChildren(const MXML::NODE& parent, CElementRange elements) {
  const MXML::NODE* child = parent.first_child;
  for (const CElement& element : elements) {
    fuzz::Check(child != nullptr && Dump(*child) == Dump(element, child),
                "elements are what nodes are");
    child = child->next_sibling;
  }
  fuzz::Check(child == nullptr, "there are as many elements as nodes");
}

// Reads what is below the root as nodes and as elements, which must say the same.
void CompareTrees(CSimpleXMLReader& reader) {
  CSafeNode root;
  MSTR error;
  if (!reader.ReadRoot(root)) return;
  const bool whole = reader.ReadChildren(root, error);
  const std::int64_t end = reader.Offset();
  fuzz::Check(whole == (error.length == 0), "a failure has a reason");

  CSafeNode again;
  MSTR second_error;
  fuzz::Check(reader.ReadRoot(again), "a root is there again");
  fuzz::Check(reader.ReadChildren(again.name, second_error) == whole, "elements end as nodes do");
  fuzz::Check(ViewOf(error) == ViewOf(second_error), "elements fail as nodes do");
  fuzz::Check(reader.Offset() == end, "elements end where nodes do");
  if (!whole) return;
  CompareChildren(root, reader.Children());
}

// Reads what is below the root into one node and as records, one by one, which must say the same.
void CompareRecords(const MSTR& file) {
  CSimpleXMLReader nodes, records;
  for (CSimpleXMLReader* reader : {&nodes, &records}) {
    fuzz::Check(reader->Open(file, true, false, true), "the file opens");
    CSafeNode root;
    static_cast<void>(reader->ReadRoot(root));
  }
  CSafeNode node;
  for (bool whole = true; whole;) {
    nodes.Recycle(node);
    MSTR error, record_error;
    bool open = false, end_tag = false, record_open = false, record_end_tag = false;
    whole = nodes.ReadElement(node, open, end_tag);
    fuzz::Check(records.ReadRecord(record_open, record_end_tag) == whole, "records end alike");
    fuzz::Check(open == record_open && end_tag == record_end_tag, "records are of one kind");
    if (whole && open) {
      whole = nodes.ReadChildren(node, error);
      fuzz::Check(records.ReadRecordChildren(record_error) == whole, "records are whole alike");
      fuzz::Check(ViewOf(error) == ViewOf(record_error), "records fail alike");
    }
    fuzz::Check(nodes.Offset() == records.Offset(), "records end at one place");
    fuzz::Check(ViewOf(node.name) == records.RecordName(), "records are named as nodes");
    const auto* each = node.first_attribute;
    for (; whole && each != nullptr; each = each->next) {
      const std::string_view name = ViewOf(each->name);
      fuzz::Check(AttributeValue(node, name) == AttributeValue(records.Record(), name),
                  "records have the attributes of nodes");
    }
    if (whole) CompareChildren(node, ChildrenOf(records.Record()));
  }
}

// A text, escaped and read again, is itself.
void CheckEscape(std::string_view text) {
  const std::string file = "<a>" + XmlEscape(text) + "</a>";
  CSimpleXMLReader reader;
  fuzz::Check(reader.Open(fuzz::MemoryFile(file), true, false, true), "the file opens");
  CSafeNode node;
  bool open = false;
  bool end_tag = false;
  fuzz::Check(reader.ReadElement(node, open, end_tag) && !open, "an escaped text is an element's");
  fuzz::Check(ViewOf(node.value) == text, "an escaped text is read as itself");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = fuzz::View(data, size);
  {
    const MSTR file = fuzz::MemoryFile(text);
    CSimpleXMLReader reader;
    fuzz::Check(reader.Open(file, true, false, true), "the file opens");
    CompareUnits(reader, text);
    CompareTrees(reader);
    CompareRecords(file);
  }
  CheckEscape(text);
  return 0;
}
