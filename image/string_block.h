#pragma once

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "image/resources.h"

namespace ryn {

// Texts are kept in blocks of sixteen (RT_STRING); the block of `id` has the name id / 16 + 1, and an empty
// text is none. Damaged blocks are ImageErrors.

/// The languages that have any text.
std::set<uint16_t> stringLanguages(const Resources& resources);

/// The text `id` in a language; nothing when that has none.
std::optional<std::wstring> findString(const Resources& resources, unsigned id, uint16_t language);

/// Gives every text, and nothing for the gaps between them, to `change` and keeps what it returns.
void changeStrings(
    Resources& resources,
    const std::function<std::wstring(unsigned id, uint16_t language, const std::wstring& text)>& change);

/// Puts a text in place of another, or into a gap of its block; the language has to have the block.
void setString(Resources& resources, unsigned id, uint16_t language, std::wstring_view text);

}  // namespace ryn
