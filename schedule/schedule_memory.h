// The memory in which the records of a schedule stand, texts included, and records that are being
// filled there.
//
// A schedule is filled once, read, and given up as a whole. So its records stand side by side in
// large blocks: freeing a schedule of 290,000 broadcasts takes 12 ms; with a heap block for each
// of its two million texts and records it took 350.
//
// Ownership: what is made here belongs to the memory and ends with it, without a destructor.
// Threads: like any container's.
// Errors: CBadAlloc.
#pragma once

#include <utility>

#include "schedule/blocks.h"
#include "schedule/text_blocks.h"

class CScheduleMemory {
 public:
  // Where broadcasts and stations can be wound back to; programmes stay.
  struct Mark {
    CBlocks::Mark items;
    CTextBlocks::Mark texts;
  };

  Mark GetMark() { return {items.GetMark(), texts.GetMark()}; }
  void WindBack(const Mark& mark) {
    items.WindBack(mark.items);
    texts.WindBack(mark.texts);
  }

  // Gives everything back.
  void Clear() {
    items.Clear();
    texts.Clear();
    programs.Clear();
    program_texts.Clear();
  }

  // Apart, since a walk from item to item looks at nothing else, and since a programme that is
  // there already is taken back while its broadcast stays.
  CBlocks items;
  CTextBlocks texts;  // of items and stations
  CBlocks programs;
  CTextBlocks program_texts;
};

// A record at its place in the schedule's memory that has not been filed yet. When it never is, its
// memory and that of its texts are taken back.
//
// Of each memory, one new record exists at a time, and the last one made ends first.
template <typename Record>
class CNewRecord {
 public:
  CNewRecord(CBlocks& records, CTextBlocks& texts)
      : records_(records),
        texts_(texts),
        records_mark_(records.GetMark()),
        texts_mark_(texts.GetMark()),
        record_(records.Make<Record>()) {}
  CNewRecord(const CNewRecord&) = delete;
  CNewRecord& operator=(const CNewRecord&) = delete;
  ~CNewRecord() {
    if (record_ == nullptr) return;
    records_.WindBack(records_mark_);
    texts_.WindBack(texts_mark_);
  }

  Record& operator*() const { return *record_; }
  Record* operator->() const { return record_; }

  // The memory of the record's texts.
  CTextBlocks& Texts() const { return texts_; }

  // Filing the record takes it; this object is empty from then on.
  Record* Release() { return std::exchange(record_, nullptr); }
  bool IsEmpty() const { return record_ == nullptr; }

 private:
  CBlocks& records_;
  CTextBlocks& texts_;
  const CBlocks::Mark records_mark_;
  const CTextBlocks::Mark texts_mark_;
  Record* record_;
};
