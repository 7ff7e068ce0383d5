#include "tools/epgcache/read/xml_parser.h"

#include <libxml/SAX2.h>
#include <libxml/parserInternals.h>

#include <algorithm>
#include <new>
#include <utility>

#include "tools/epgcache/failure.h"
#include "tools/epgcache/text.h"

namespace epgcache {

namespace {

// Of an attribute's five: its name, a prefix, a namespace, where its value begins and ends.
constexpr std::ptrdiff_t kFieldsOfAttribute = 5;

std::uint64_t OffsetOf(const xmlParserInput& input) {
  return input.consumed + static_cast<std::uint64_t>(input.cur - input.base);
}

}  // namespace

std::size_t StartTag::ValueBytes() const {
  std::size_t bytes = 0;
  for (std::ptrdiff_t i = 0; i < attributes_; ++i) {
    const xmlChar* const* const field = fields_ + i * kFieldsOfAttribute;
    bytes += static_cast<std::size_t>(field[4] - field[3]);
  }
  return bytes;
}

std::string_view StartTag::Attribute(std::string_view name) const {
  for (std::ptrdiff_t i = 0; i < attributes_; ++i) {
    const xmlChar* const* const field = fields_ + i * kFieldsOfAttribute;
    // "xml:lang" is as good as "lang".
    if (View(field[0]) == name && (field[1] == nullptr || View(field[1]) == "xml"))
      return View(field[3]).substr(0, static_cast<std::size_t>(field[4] - field[3]));
  }
  return {};
}

XmlParser::XmlParser(ByteSource& source, FaultSink tell_mended)
    : source_(source), tell_mended_(std::move(tell_mended)) {
  if (tell_mended_) mender_.emplace(source, tell_mended_);
  xmlSAXHandler handler = {};
  xmlSAXVersion(&handler, 2);
  handler.startElementNs = [](void* context, const xmlChar* name, const xmlChar* prefix,
                              const xmlChar*, int, const xmlChar**, int attributes,
                              int /*defaults*/, const xmlChar** fields) {
    Of(context).Guard(context, [&](XmlParser& parser) {
      parser.BeginWithin({name, prefix, attributes, fields});
    });
  };
  handler.endElementNs = [](void* context, const xmlChar*, const xmlChar*, const xmlChar*) {
    Of(context).Guard(context, [](XmlParser& parser) { parser.End(); });
  };
  handler.characters = [](void* context, const xmlChar* text, int size) {
    Of(context).Guard(context, [&](XmlParser& parser) {
      parser.AddWithin({reinterpret_cast<const char*>(text), static_cast<std::size_t>(size)});
    });
  };
  handler.cdataBlock = handler.characters;
  handler.ignorableWhitespace = handler.characters;
  handler.reference = [](void* context, const xmlChar* name) {
    Of(context).Guard(context, [&](XmlParser& parser) { parser.Resolve(name); });
  };
  handler.comment = nullptr;
  handler.processingInstruction = nullptr;
  handler.serror = [](void* context, xmlErrorPtr error) { Of(context).AddError(*error); };
  context_ = xmlCreateIOParserCtxt(
      &handler, nullptr,
      [](void* self, char* buffer, int size) {
        return static_cast<XmlParser*>(self)->ReadBytes(buffer, size);
      },
      nullptr, this, XML_CHAR_ENCODING_NONE);
  if (context_ == nullptr) throw std::bad_alloc();
  context_->_private = this;
  xmlCtxtUseOptions(context_, XML_PARSE_NONET | XML_PARSE_NOENT | XML_PARSE_NOCDATA |
                                  (mender_ ? XML_PARSE_RECOVER : 0));
  xmlSetExternalEntityLoader(RefuseExternal);
  // Of what goes wrong outside all documents.
  xmlSetStructuredErrorFunc(this, [](void* self, xmlErrorPtr error) {
    if (error->level >= XML_ERR_ERROR) static_cast<XmlParser*>(self)->conversion_failed_ = true;
  });
}

XmlParser::~XmlParser() {
  xmlSetStructuredErrorFunc(nullptr, nullptr);
  // Of the document type's entities.
  xmlFreeDoc(context_->myDoc);
  xmlFreeParserCtxt(context_);
}

Fault XmlParser::Parse() {
  xmlParseDocument(context_);
  if (thrown_ != nullptr) std::rethrow_exception(thrown_);
  if (source_failure_ != nullptr) {
    if (fault_.reason.empty()) SetFault("");
    try {
      std::rethrow_exception(source_failure_);
    } catch (const Failure& failure) {
      // Whoever reports it puts the name before the place.
      fault_.reason = std::string(failure.what()).substr(source_.Name().size() + 2);
    }
  } else if (fault_.reason.empty() && context_->wellFormed == 0 && !mender_) {
    throw std::bad_alloc();
  } else if (!fault_.reason.empty() && conversion_failed_) {
    fault_.reason = "a byte that its encoding does not have";
  }
  return std::move(fault_);
}

XmlParser& XmlParser::Of(void* context) {
  return *static_cast<XmlParser*>(static_cast<xmlParserCtxt*>(context)->_private);
}

// No exception may pass through the library. `context` is another than ours within an entity.
template <typename Action>
void XmlParser::Guard(void* context, const Action& action) {
  if (!is_over_) {
    try {
      action(*this);
    } catch (...) {
      thrown_ = std::current_exception();
      is_over_ = true;
    }
  }
  if (!is_over_) return;
  xmlStopParser(static_cast<xmlParserCtxt*>(context));
  xmlStopParser(context_);
}

// Texts and values may not grow far beyond what has been read, as only entities make them do.
void XmlParser::Budget(std::size_t bytes) {
  constexpr std::uint64_t kFree = std::uint64_t{10} << 20;
  constexpr std::uint64_t kTimes = 5;
  delivered_ += bytes;
  if (delivered_ > kFree + kTimes * source_.Unpacked())
    SetFault("its entities expand to far more than it holds");
}

void XmlParser::BeginWithin(const StartTag& tag) {
  Budget(tag.ValueBytes());
  if (!is_over_) Begin(tag);
}

void XmlParser::AddWithin(std::string_view text) {
  Budget(text.size());
  if (!is_over_) Add(text);
}

// At the place where the document is being read, be it within an entity of it.
void XmlParser::SetFault(const std::string& reason) {
  fault_ = {std::max(1, xmlSAX2GetLineNumber(context_)),
            ColumnInBytes(xmlSAX2GetColumnNumber(context_)), reason};
  is_over_ = true;
}

int XmlParser::ReadBytes(char* buffer, int size) {
  try {
    const std::size_t count = mender_ ? mender_->Read(buffer, static_cast<std::size_t>(size))
                                      : source_.Read(buffer, static_cast<std::size_t>(size));
    if (context_ != nullptr && context_->inputNr > 0) PassTo(OffsetOf(*context_->inputTab[0]));
    ahead_.append(buffer, count);
    return static_cast<int>(count);
  } catch (...) {
    source_failure_ = std::current_exception();
    // What was read is still parsed.
    return 0;
  }
}

// Forgets what comes before a place that has been parsed, but for where its line begins.
void XmlParser::PassTo(std::uint64_t offset) {
  const auto count = std::min(
      static_cast<std::size_t>(std::max(offset, ahead_begin_) - ahead_begin_), ahead_.size());
  const std::size_t newline = std::string_view(ahead_).substr(0, count).rfind('\n');
  if (newline != std::string_view::npos) line_begin_ = ahead_begin_ + newline + 1;
  ahead_.erase(0, count);
  ahead_begin_ += count;
}

// The library counts characters, which are bytes where it converts, of all but UTF-16.
int XmlParser::ColumnInBytes(int characters) {
  const bool in_document = context_->inputNr == 1 && !mender_;
  if (!in_document || (context_->input->buf != nullptr && context_->input->buf->encoder != nullptr))
    return std::max(1, characters);
  const std::uint64_t offset = OffsetOf(*context_->input);
  PassTo(offset);
  return static_cast<int>(offset - line_begin_) + 1;
}

xmlParserInputPtr XmlParser::RefuseExternal(const char* url, const char* /*id*/,
                                            xmlParserCtxtPtr context) {
  XmlParser& parser = Of(context);
  if (!parser.is_over_) {
    parser.SetFault("an entity refers to \"" + (url != nullptr ? Shown(url) : "?") +
                    "\", which is not followed");
  }
  xmlStopParser(context);
  xmlStopParser(parser.context_);
  return nullptr;
}

void XmlParser::AddError(const xmlError& error) {
  if (error.level != XML_ERR_FATAL || is_over_ || !fault_.reason.empty() ||
      error.code == XML_ERR_NO_MEMORY)
    return;
  // The mender has reported it.
  if (mender_ && error.code == XML_ERR_TAG_NOT_FINISHED) return;
  std::string_view message = error.message != nullptr ? error.message : "not well-formed";
  SetFault(Shown(message.substr(0, message.find('\n'))));
  if (error.ctxt == context_) {
    fault_.line = error.line;
    fault_.column = ColumnInBytes(error.int2);
  }
  if (!mender_ || error.code == XML_ERR_ENTITY_LOOP) return;
  tell_mended_(std::exchange(fault_, {}));
  is_over_ = false;
}

}  // namespace epgcache
