// The engine's XML document, held as a tree, and the node record that a guest's own reader may
// build too.
//
// Ownership: a document owns its tree, nodes, attributes and texts, which must not be changed and
//   end with it. A node that a guest makes owns its name and value only; whoever makes a tree of
//   nodes frees it.
// Threads: a document or tree belongs to one thread.
// Errors: a file that cannot be read or is malformed leaves an empty text and a root without
//   children; std::bad_alloc when memory runs out.
#pragma once

#include "host/api.h"
#include "host/mstr.h"

namespace ORVANE {

class ORVANE_API MXML {
 public:
  struct ORVANE_API ATTRIB {
    ATTRIB();
    ATTRIB(const ATTRIB&) = delete;
    ATTRIB& operator=(const ATTRIB&) = delete;
    ~ATTRIB();

    MSTR name;
    MSTR value;
    ATTRIB* next;
  };

  struct ORVANE_API NODE {
    // Empty, without links.
    NODE();
    NODE(const NODE&) = delete;
    NODE& operator=(const NODE&) = delete;
    // Releases name and value only.
    ~NODE();

    // Of that name, the first direct child, else the first node below in document order, or null.
    NODE* FindNode(const char* wanted) const;

    // The first attribute of that name: a copy of its value, empty (or `missing`) when there is
    // none. A number is read as `atoi` reads it.
    MSTR GetAttribute(const char* wanted) const;
    int GetAttributeAsInt(const char* wanted, int missing) const;

    // Link a child or an attribute in, as the last one. They look for the end of the list: whoever
    // builds long ones links them by hand.
    void AddNode(NODE* child);
    void AddAttribute(ATTRIB* attribute);

    MSTR name;
    MSTR value;
    NODE* first_child;
    NODE* next_sibling;
    ATTRIB* first_attribute;
  };

  // An empty document.
  MXML();
  MXML(const MXML&) = delete;
  MXML& operator=(const MXML&) = delete;
  ~MXML();

  // Reads a whole XML 1.0 document without validating it, in place of what was held before.
  //
  // Bytes stay as they are, line ends and encoding included; numeric references become UTF-8, an
  // unknown reference or a lone '&' stands for itself, CDATA is text, comments and processing
  // instructions leave no node. A node's value is all of its own text. True when every tag is whole
  // and every element closed by its name; nothing is held otherwise.
  bool Load(const MSTR& file_name);

  // The document as it was read; empty when the last Load failed.
  const MSTR& LoadedText() const;

  // A node without a name, above the document element.
  NODE& Root();

 private:
  struct STATE;

  STATE* const state_;  // Owned.
};

}  // namespace ORVANE
