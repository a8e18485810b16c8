#pragma once

#include <optional>
#include <string>
#include <string_view>

/// What the JSON grammar (RFC 8259) allows but the parser refuses or reads wrongly, so that one odd value
/// does not cost the whole document.
namespace orvia::json {

/// Whether @p text is a number of the grammar's.
bool isNumber(std::string_view text);

/// The double nearest to @p number, which is one of the grammar's; none when it is beyond every double. The
/// parser's own functions lose the value of a number of more than nineteen digits.
std::optional<double> nearestDouble(std::string_view number);

/// @p document with U+FFFD, the replacement character, for each escape of half a surrogate pair, such as a
/// text has that was cut in the middle of an emoji. None when there was nothing to replace; a document that
/// breaks the grammar still does so afterwards.
std::optional<std::string> withoutHalvedCharacters(std::string_view document);

} // namespace orvia::json
