// The hash by which records are found.
#pragma once

#include <cstdint>
#include <string_view>

// Differs from process to process: whoever writes a listings file cannot choose keys that collide.
std::uint64_t KeyHash(std::string_view key);
