#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "vmsearch/vm_candidate.h"

namespace ryn {

/// Versions from a least to a greatest one, both included, by three numbers that are compared one after the
/// other: generation, minor, micro.
struct VersionRange {
  struct Numbers {
    int generation = 0;
    int minor = 0;
    int micro = 0;

    // NOLINTNEXTLINE(modernize-use-nullptr): clang-tidy 14 takes the default for a null pointer
    friend constexpr auto operator<=>(const Numbers&, const Numbers&) = default;
  };

  Numbers least;
  Numbers greatest;
};

/// Reads "17" (generation 17), "17.0.9" (that version), "17+" and "17.0.8+" (that or later) and "11-21" (all
/// of 21 included). Versions may be written the old way, as "1.8" or "1.8.0_202". Nothing for any other text.
std::optional<VersionRange> parseVersionRange(std::wstring_view token);

/// A VM whose version is unknown fits no range.
bool fitsRange(const VmCandidate& vm, const VersionRange& range);

}  // namespace ryn
