// What a misspelt name may have meant.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace shell {

// The known name that differs from `name` by the fewest letters, letter case aside; empty when each
// differs by more than a third of it.
std::string NearMiss(std::string_view name, const std::vector<std::string>& known);

}  // namespace shell
