#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orvia::json {

/// Rewrites what the JSON grammar (RFC 8259) allows but the parser refuses, so that one odd value does not
/// cost the whole document. Answers the rewritten document, or none when there was nothing to rewrite; a
/// document that breaks the grammar still does so afterwards.
///
/// - An integer beyond 64 bits gets an exponent and becomes an ordinary double.
/// - A number beyond the range of a double becomes an empty array, which no number and no text decodes from.
/// - The escape of half a surrogate pair, as left behind by a text that was cut at a fixed length, becomes
///   U+FFFD, the replacement character.
std::optional<std::string> withinParserLimits(std::string_view document);

} // namespace orvia::json
