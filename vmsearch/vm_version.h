#pragma once

#include <compare>
#include <cstdint>
#include <string_view>

namespace ryn {

/// A VM's version: generation (the x of 1.x, the leading number of later ones), minor and micro number
/// packed into one integer and compared as that integer; 0 means unknown. Each component is
/// sign-extended before it is put in place, so one of 32768 or more sets every higher bit and compares
/// greater than any ordinary version. Files and lists in the field rely on that order.
class VmVersion {
 public:
  constexpr VmVersion() = default;
  constexpr VmVersion(int16_t generation, int16_t minor, int16_t micro)
      : packed_(static_cast<uint64_t>(static_cast<int64_t>(micro)) |
                static_cast<uint64_t>(static_cast<int64_t>(
                    static_cast<int32_t>(static_cast<uint32_t>(static_cast<int32_t>(minor)) << 16))) |
                static_cast<uint64_t>(static_cast<int64_t>(generation)) << 32) {}

  constexpr uint64_t packed() const { return packed_; }
  constexpr int16_t generation() const { return static_cast<int16_t>(packed_ >> 32); }
  constexpr int16_t minor() const { return static_cast<int16_t>(packed_ >> 16); }
  constexpr int16_t micro() const { return static_cast<int16_t>(packed_); }

  /// Replaces the minor number and packs the other two again.
  constexpr void setMinor(int16_t minor) { *this = VmVersion(generation(), minor, micro()); }

  // NOLINTNEXTLINE(modernize-use-nullptr): clang-tidy 14 takes the default for a null pointer
  friend constexpr auto operator<=>(VmVersion, VmVersion) = default;

 private:
  uint64_t packed_ = 0;
};

/// Reads texts such as "1.6.0_20", "11.0.2" or "6.0.20": pieces end at "." and "_", a leading "1" is
/// implied when missing, and the three pieces behind it are the components. Missing pieces and pieces
/// that are no number count as 0.
VmVersion parseVmVersion(std::wstring_view text);

}  // namespace ryn
