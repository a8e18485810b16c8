#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orvia::json {

/// Rewrites the values that the JSON grammar (RFC 8259) allows but the parser refuses, so that one odd value
/// does not cost the whole document. Answers the rewritten document, or none when there was nothing to
/// rewrite; a document that breaks the grammar still does so afterwards.
///
/// - An integer beyond 64 bits gets an exponent and becomes an ordinary double.
/// - A number beyond the range of a double becomes an empty array, which no number and no text decodes from.
/// - An escape for half of a surrogate pair, such as a text has that was cut in the middle of an emoji,
/// becomes
///   one for U+FFFD, the replacement character.
std::optional<std::string> withinParserLimits(std::string_view document);

} // namespace orvia::json
