// What a misspelt name may have meant.
#pragma once

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

#include "text/letters.h"

// How many letters have to be put in, taken out or changed to make one of the other.
inline std::size_t EditDistance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);  // of the beginning of `a`, to each beginning of `b`
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (const char c : a) {
    std::size_t diagonal = row[0]++;
    for (std::size_t i = 1; i <= b.size(); ++i) {
      const std::size_t change = diagonal + (c == b[i - 1] ? 0 : 1);
      diagonal = row[i];
      row[i] = std::min({row[i] + 1, row[i - 1] + 1, change});
    }
  }
  return row.back();
}

// The known name that differs from `name` by the fewest letters, letter case aside; empty when each
// differs by more than a third of it.
inline std::string NearMiss(std::string_view name, const std::vector<std::string>& known) {
  constexpr std::size_t kLongest = 64;
  if (name.size() > kLongest) return {};
  const std::string wanted = Lowered(name);
  std::string nearest;
  std::size_t fewest = name.size() / 3 + 1;
  for (const std::string& one : known) {
    if (one.size() > kLongest) continue;
    const std::size_t distance = EditDistance(wanted, Lowered(one));
    if (distance < fewest) {
      fewest = distance;
      nearest = one;
    }
  }
  return nearest;
}
