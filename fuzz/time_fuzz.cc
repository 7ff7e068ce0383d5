// Date and time texts: a first byte for the layout, then the text, and a time text after a NUL.

#include "fuzz/fuzz_support.h"
#include "platform/services.h"
#include "schedule/time_value.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  platform::overrides.zone_minutes = [] { return 0; };
  const auto layout = static_cast<TimeLayout>(data[0] % 5);
  const std::string_view text = fuzz::View(data + 1, size - 1);
  const std::size_t end = text.find('\0');
  const std::string date(text.substr(0, end));
  const bool has_time = end != std::string_view::npos;
  const std::string time(has_time ? text.substr(end + 1) : "");
  const std::int32_t value =
      ParseTime(layout, date, has_time ? std::optional<std::string_view>(time) : std::nullopt);
  fuzz::Check(layout == TimeLayout{0} || layout == TimeLayout{4} ? value == 0 : true,
              "an unknown layout gives 0");
  for (const std::int32_t format : {-1, 0, 1, 2, 3, 4, 5, 6}) {
    const std::string shown = ConvertLocalTime2String(value, format);
    fuzz::Check(value < 0 || shown.empty() == (format < 0 || format > 5), "a time has a text");
  }
  // A time survives being written out as digits.
  if (value >= 0) {
    std::string digits = ConvertLocalTime2String(value, 2).substr(8 + 3);
    digits += "0101";
    fuzz::Check(ParseTime(TimeLayout::kDigits, digits) <= value, "a year begins before its days");
  }
  return 0;
}
