#pragma once

#include <optional>
#include <utility>

namespace ryn::test {

/// Command lines, and what they say of a silent launch.
inline constexpr std::pair<const wchar_t*, std::optional<bool>> kQuotingRows[] = {
    {L"x", {}},
    {L"x \t ", {}},
    {L"\"x silent\"", {}},
    {L"\"x silent", {}},
    {L"x silent", true},
    {L"\"x y.exe\"SILENT ", true},
    {L" silent", true},
    {L"x\"y silent\" z", false},
    {L"x a\tsi\"len\"t", true},
    {L"x silent \"\"", false},
    {L"x silent a", false},
    {L"x \"silent a", false},
    {L"x \"a\" \"silent", true},
    {L"x silent\\", false},
    {L"x \"a\\\" silent", false},
    {L"x \"a\\\\\" silent", true},
    {L"x a\\\\\\\"b \\\\c \"\\\\\\\"d\" \"e\\\\", false},
    // Rows of quotes: two, three and four, from outside and from inside, with and without a backslash.
    {L"x a\"\" silent", true},
    {L"x \"\"\"silent", false},
    {L"x \"a\"\" silent", true},
    {L"x \"a\"\"\" silent", false},
    {L"x \"\"\"\" silent", false},
    {L"x \\\"\"\" silent", true},
    {L"x \"a\\\"\"\"\"\" b\" silent", false},
};

}  // namespace ryn::test
