// A full XML parser that calls back, element by element.
//
// Nothing that a document names is fetched or opened: neither its document type nor external
// entities. Its own entities are expanded within limits that prevent attacks.
//
// Threads: one at a time in a process, as the parser's hook for external entities is the process's.
// Errors: Failure, std::bad_alloc, and what callbacks throw.
#pragma once

#include <libxml/parser.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <string_view>

#include "tools/epgcache/read/byte_source.h"
#include "tools/epgcache/read/fault.h"
#include "tools/epgcache/read/mender.h"

namespace epgcache {

inline std::string_view View(const xmlChar* text) {
  return text != nullptr ? std::string_view(reinterpret_cast<const char*>(text))
                         : std::string_view();
}

// A start tag as the parser reports it. Names are the parser's, and live as long as it does.
class StartTag {
 public:
  // An element with a prefix is not XMLTV's, whatever its name.
  StartTag(const xmlChar* name, const xmlChar* prefix, int attributes, const xmlChar** fields)
      : name_(prefix == nullptr ? View(name) : "(foreign)"),
        attributes_(attributes),
        fields_(fields) {}

  std::string_view Name() const { return name_; }
  // How many bytes its values have.
  std::size_t ValueBytes() const;
  // Empty when there is none.
  std::string_view Attribute(std::string_view name) const;

 private:
  std::string_view name_;
  int attributes_;
  const xmlChar** fields_;
};

class XmlParser {
 public:
  // `tell_mended`: what is not well-formed is mended or passed over, and reported; empty: the first
  // such place is the end. The source is at the beginning of a document.
  XmlParser(ByteSource& source, FaultSink tell_mended);
  XmlParser(const XmlParser&) = delete;
  XmlParser& operator=(const XmlParser&) = delete;
  virtual ~XmlParser();

 protected:
  virtual void Begin(const StartTag& tag) = 0;
  virtual void End() = 0;
  virtual void Add(std::string_view text) = 0;
  // A reference that the document does not declare.
  virtual void Resolve(const xmlChar* name) = 0;

  // Reads to the end, or to the first fault that it cannot read on from, which it gives. What a
  // callback has thrown comes out of here.
  Fault Parse();

  // What the source has thrown; null when it has given all that it has.
  const std::exception_ptr& WhySourceFailed() const { return source_failure_; }
  const ByteSource& Source() const { return source_; }

 private:
  static XmlParser& Of(void* context);
  template <typename Action>
  void Guard(void* context, const Action& action);
  void Budget(std::size_t bytes);
  void BeginWithin(const StartTag& tag);
  void AddWithin(std::string_view text);
  void SetFault(const std::string& reason);
  int ReadBytes(char* buffer, int size);
  void PassTo(std::uint64_t offset);
  int ColumnInBytes(int characters);
  void AddError(const xmlError& error);
  static xmlParserInputPtr RefuseExternal(const char* url, const char* id,
                                          xmlParserCtxtPtr context);

  ByteSource& source_;
  const FaultSink tell_mended_;
  std::optional<Mender> mender_;      // where that is wanted
  xmlParserCtxt* context_ = nullptr;  // Owned.
  std::exception_ptr thrown_;         // by a callback
  std::exception_ptr source_failure_;
  bool conversion_failed_ = false;
  bool is_over_ = false;  // whatever is still reported
  std::uint64_t delivered_ = 0;
  Fault fault_;
  std::string ahead_;  // what has been read, and was not parsed by then
  // Offsets in the document: of that, and of the line in which it begins.
  std::uint64_t ahead_begin_ = 0;
  std::uint64_t line_begin_ = 0;
};

}  // namespace epgcache
