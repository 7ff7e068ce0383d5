// Makes well-formed XML of a guide that is not, so that a parser can read it to the end: what
// people would read stays, and every place that is mended or passed over is reported.
//
// A bare '&' or '<' becomes text, a byte that is not UTF-8 its character in Windows-1252. Missing
// end tags are put in where a programme, a channel or the next of a programme's elements begins,
// where an outer element ends, and at the end; end tags of nothing are passed over. A second guide
// after the first goes on where that ended. Text before the first tag is passed over; a text that
// the end cuts off is as well.
//
// Units: lines and columns of the document, in bytes (of its UTF-8 form, where it has another one).
// Threads: one at a time.
// Errors: what the source throws.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tools/epgcache/read/byte_source.h"
#include "tools/epgcache/read/fault.h"

namespace epgcache {

class Mender {
 public:
  // Both outlive the mender.
  Mender(ByteSource& source, const FaultSink& tell);
  Mender(const Mender&) = delete;
  Mender& operator=(const Mender&) = delete;
  ~Mender();

  // As ByteSource::Read. What is well-formed comes out as it was, in UTF-8.
  std::size_t Read(char* buffer, std::size_t size);

 private:
  class Decoder;

  void Fill();
  void MendAll();
  bool MendText();
  bool MendMarkup();
  void MendStartTag(std::string_view tag, std::string_view name, bool is_empty);
  void MendEndTag(std::string_view name);
  void MendDeclaration(std::string_view markup);
  void AppendMended(std::string_view text, std::size_t at, bool has_references);
  std::size_t AppendReference(std::string_view text, std::size_t at);
  void TellUnclosed(std::string_view name);
  void CloseDownTo(std::size_t depth);
  void Finish();
  void Tell(std::size_t at, const std::string& reason);
  std::string_view Left() const { return std::string_view(in_).substr(at_); }

  ByteSource& source_;
  const FaultSink& tell_;
  std::unique_ptr<Decoder> decoder_;  // null: the document is in UTF-8
  std::string in_;                    // what has been read; from `at_` on it is not mended
  std::size_t at_ = 0;
  std::string out_;
  std::size_t given_ = 0;  // of that
  bool begun_ = false;
  bool ended_ = false;     // the source has nothing more
  bool finished_ = false;  // nor has this

  std::vector<std::string> open_;
  bool has_root_ = false;
  bool root_ended_ = false;         // its end tag waits for the end
  bool has_type_ = false;           // a document type, which may declare entities
  std::size_t whole_elements_ = 0;  // of the present record

  std::size_t placed_ = 0;  // in `in_`: there `line_` and `column_` are
  int line_ = 1;
  int column_ = 1;
};

}  // namespace epgcache
