#pragma once

#include <QString>

/// How texts that anybody may have written become fit for the screen. What is copied, sent or spoken stays as
/// it is; only what is painted goes through here.
namespace orvia {

/// Wider than any place for a line at any type size, in code units.
inline constexpr qsizetype longestShownLine = 600;

/// @p text on one line of at most @p longest code units; a longer one ends with an ellipsis. Runs of white
/// space are one space. Characters that turn the text around them (UAX #9: embeddings, overrides, isolates),
/// control characters and invisible ones are left out, and so are the marks of a letter beyond the fourth.
/// The cost is bounded whatever the length of the text.
QString shownLine(const QString& text, qsizetype longest = longestShownLine);

/// @p name as @c shownLine shows it, but a long one keeps its end, which tells what kind of file it is.
QString shownFileName(const QString& name);

/// @p text for a tooltip: on one line, and folded to a few lines where one would be too wide.
QString shownToolTip(const QString& text);

/// A paragraph in the same length, so that positions stay what they are: characters that turn the text around
/// them and control characters other than the tabulator give way to one that shows nothing.
QString shownParagraph(QString text);

/// Whether @p character turns around the characters after it (UAX #9, explicit formatting).
bool isDirectionFormatting(char32_t character);

} // namespace orvia
