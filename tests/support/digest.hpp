// Results condensed to one number: FNV-1a over words of 64 bits. All NaNs count as one.
#ifndef FATHOM_TESTS_SUPPORT_DIGEST_HPP
#define FATHOM_TESTS_SUPPORT_DIGEST_HPP

#include <bit>
#include <cstdint>

namespace fathom::test {

class Digest {
 public:
  void add(std::uint64_t word) { hash_ = (hash_ ^ word) * 1099511628211u; }
  void add(double v) { add(v != v ? 0x7FF8000000000000u : std::bit_cast<std::uint64_t>(v)); }
  std::uint64_t value() const { return hash_; }

 private:
  std::uint64_t hash_ = 14695981039346656037u;
};

}  // namespace fathom::test

#endif
