// The engine's XML documents.

#include "fuzz/fuzz_support.h"
#include "host/mxml.h"
#include "text/counted_text.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using NODE = ORVANE::MXML::NODE;
  ORVANE::MXML document;
  const bool loaded = document.Load(fuzz::MemoryFile(fuzz::View(data, size)));
  fuzz::Check(loaded == (document.LoadedText().length != 0), "an empty text stands for a failure");
  const NODE& root = document.Root();
  fuzz::Check(loaded == (root.first_child != nullptr), "a document has an element");
  fuzz::Check(!loaded || root.first_child->next_sibling == nullptr, "a document has one element");
  if (!loaded) return 0;
  fuzz::Check(ViewOf(document.LoadedText()) == fuzz::View(data, size), "the text is the file's");
  // Every node is found by its name, or one of that name before it.
  int looked_at = 0;
  for (const NODE* node = root.first_child; node != nullptr && looked_at < 64; ++looked_at) {
    const NODE* const found = root.FindNode(node->name.text);
    fuzz::Check(found != nullptr && ViewOf(found->name) == ViewOf(node->name),
                "a node is found by its name");
    node = node->first_child != nullptr ? node->first_child : node->next_sibling;
  }
  return 0;
}
