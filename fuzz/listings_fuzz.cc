// A listings file of any format, through the driver.

#include "fuzz/fuzz_support.h"
#include "import/import_driver.h"
#include "text/counted_text.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ORVANE::MSTR status;
  const auto store = ImportEPGFile(fuzz::MemoryFile(fuzz::View(data, size)), status, nullptr);
  if (store == nullptr) {
    fuzz::Check(ViewOf(status) == "Can't identify content, don't know how to decode!",
                "a failed load says so");
  } else {
    fuzz::CheckSchedule(*store);
  }
  return 0;
}
