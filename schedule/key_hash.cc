#include "schedule/key_hash.h"

#include <array>
#include <bit>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <exception>
#include <random>

namespace {

// SipHash with one round a word and three at the end: short, quick on short keys, and not to be
// steered without its seed.
class CSip {
 public:
  explicit CSip(const std::array<std::uint64_t, 2>& seed)
      : v0_(seed[0] ^ 0x736f6d6570736575u),
        v1_(seed[1] ^ 0x646f72616e646f6du),
        v2_(seed[0] ^ 0x6c7967656e657261u),
        v3_(seed[1] ^ 0x7465646279746573u) {}

  void Take(std::uint64_t word) {
    v3_ ^= word;
    Round();
    v0_ ^= word;
  }

  std::uint64_t Finish() {
    v2_ ^= 0xff;
    for (int round = 0; round < 3; ++round) Round();
    return v0_ ^ v1_ ^ v2_ ^ v3_;
  }

 private:
  void Round() {
    v0_ += v1_;
    v1_ = std::rotl(v1_, 13) ^ v0_;
    v0_ = std::rotl(v0_, 32);
    v2_ += v3_;
    v3_ = std::rotl(v3_, 16) ^ v2_;
    v0_ += v3_;
    v3_ = std::rotl(v3_, 21) ^ v0_;
    v2_ += v1_;
    v1_ = std::rotl(v1_, 17) ^ v2_;
    v2_ = std::rotl(v2_, 32);
  }

  std::uint64_t v0_;
  std::uint64_t v1_;
  std::uint64_t v2_;
  std::uint64_t v3_;
};

std::array<std::uint64_t, 2> MakeSeed() {
  try {
    std::random_device source;
    const auto word = [&source] { return std::uint64_t{source()} << 32 | source(); };
    return {word(), word()};
  } catch (const std::exception&) {  // no random source: use the time
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    return {static_cast<std::uint64_t>(now), ~static_cast<std::uint64_t>(now)};
  }
}

}  // namespace

std::uint64_t KeyHash(std::string_view key) {
  static const std::array<std::uint64_t, 2> seed = MakeSeed();
  CSip sip(seed);
  const char* at = key.data();
  std::size_t left = key.size();
  std::uint64_t word = 0;
  for (; left >= sizeof word; at += sizeof word, left -= sizeof word) {
    std::memcpy(&word, at, sizeof word);
    sip.Take(word);
  }
  word = 0;
  if (left != 0) std::memcpy(&word, at, left);
  sip.Take(word | static_cast<std::uint64_t>(key.size()) << 56);
  return sip.Finish();
}
