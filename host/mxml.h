// The engine's XML document, held as a tree, and the node record that the plug-in's own reader
// builds too.
//
// Ownership: a document owns its tree, whose nodes and texts stand in its memory and end with it,
//   without destructors: what is moved out of a node must not outlive the document, and nothing
//   that owns storage may be moved into one. A node owns its name and value only; whoever makes a
//   tree of nodes frees it.
// Threads: a document or tree belongs to one thread.
// Errors: a file that cannot be read or is malformed leaves an empty text and a root without
//   children; MBADALLOC when memory runs out.
#pragma once

#include <string_view>

#include "host/api.h"
#include "host/mblocks.h"
#include "host/mstr.h"

namespace ORVANE {

class ORVANE_API MXML {
 public:
  struct ATTRIB {
    MSTR name;
    MSTR value;
    ATTRIB* next = nullptr;
    ATTRIB* last = nullptr;  // of the list, in its first attribute
  };

  struct ORVANE_API NODE {
    MSTR name;
    MSTR value;
    NODE* first_child = nullptr;
    NODE* last_child = nullptr;
    NODE* next_sibling = nullptr;
    ATTRIB* first_attribute = nullptr;
    // No part of the tree: what whoever makes one tree after the other keeps of the last one.
    NODE* spare_child = nullptr;
    ATTRIB* spare_attribute = nullptr;

    NODE() = default;
    NODE(const NODE&) = delete;
    NODE& operator=(const NODE&) = delete;

    // Of that name, the first direct child, else the first node below in document order, or null.
    NODE* FindNode(std::string_view wanted) const;

    // The first attribute of that name: its value, empty (or `missing`) when there is none. A
    // number is read as `atoi` reads it.
    MSTR GetAttribute(std::string_view wanted) const;
    int GetAttributeAsInt(std::string_view wanted, int missing) const;
    // The value itself instead of a copy.
    const MSTR& AttributeValue(std::string_view wanted) const;

    // Link a child or an attribute in, as the last one.
    void AddNode(NODE* child) {
      (last_child != nullptr ? last_child->next_sibling : first_child) = child;
      last_child = child;
    }
    void AddAttribute(ATTRIB* attribute) {
      (first_attribute != nullptr ? first_attribute->last->next : first_attribute) = attribute;
      first_attribute->last = attribute;
    }

   private:
    const ATTRIB* FindAttribute(std::string_view wanted) const;
  };

  MXML() = default;
  MXML(const MXML&) = delete;
  MXML& operator=(const MXML&) = delete;
  ~MXML() = default;

  // Reads a whole XML 1.0 document without validating it, in place of what was held before.
  //
  // Bytes stay as they are, line ends and encoding included; numeric references become UTF-8, an
  // unknown reference or a lone '&' stands for itself, CDATA is text, comments and processing
  // instructions leave no node. A node's value is all of its own text. True when every tag is whole
  // and every element closed by its name; nothing is held otherwise.
  bool Load(const MSTR& file_name);

  // The document as it was read; empty when the last Load failed.
  const MSTR& LoadedText() const { return text_; }

  // A node without a name, above the document element.
  NODE& Root() { return root_; }
  const NODE& Root() const { return root_; }

 private:
  void Clear();

  MSTR text_;
  MBLOCKS memory_;
  NODE root_;
};

}  // namespace ORVANE
