// The engine's XML documents.

#include "fuzz/fuzz_support.h"
#include "host/mxml.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using NODE = ORVANE::MXML::NODE;
  ORVANE::MXML document;
  const bool loaded = document.Load(fuzz::MemoryFile(fuzz::View(data, size)));
  fuzz::Check(loaded == !document.LoadedText().IsEmpty(), "an empty text stands for a failure");
  const NODE& root = document.Root();
  fuzz::Check(loaded == (root.first_child != nullptr), "a document has an element");
  fuzz::Check(root.first_child == root.last_child, "a document has one element");
  if (!loaded) return 0;
  fuzz::Check(document.LoadedText() == fuzz::View(data, size), "the text is the file's");
  // Every node is found by its name, or one of that name before it.
  int looked_at = 0;
  for (const NODE* node = root.first_child; node != nullptr && looked_at < 64; ++looked_at) {
    const NODE* const found = root.FindNode(node->name.View());
    fuzz::Check(found != nullptr && found->name == node->name, "a node is found by its name");
    node = node->first_child != nullptr ? node->first_child : node->next_sibling;
  }
  return 0;
}
