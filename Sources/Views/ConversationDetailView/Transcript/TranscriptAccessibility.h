#pragma once

#include <QAccessible>

namespace orvia {

class TranscriptView;

/// Makes transcripts known to assistive tools as lists. Every row of the thread is an item, found by its
/// position whether it is on the screen or not; one out of sight says so. A row is named by what it shows, in
/// the order in which it is read, and offers its text with caret and selection; its file or picture is a
/// button below it.
void installTranscriptAccessibility();

/// Every row may be a different one now.
void tellTranscriptReplaced(TranscriptView& view);
void tellRowAdded(TranscriptView& view, qsizetype row);
/// The keyboard is at this row now.
void tellCurrentRow(TranscriptView& view, qsizetype row);
/// The selection and the caret in this row are the view's now.
void tellSelectionChanged(TranscriptView& view, qsizetype row);

} // namespace orvia
