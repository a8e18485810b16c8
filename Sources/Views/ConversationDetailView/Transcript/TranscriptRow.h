#pragma once

#include "Models/Enums.h"

#include <QString>
#include <QUrl>

#include <optional>

namespace orvia {

/// A file under a message, as it shows.
struct AttachmentView {
    AttachmentKind kind = AttachmentKind::file;
    QString name{};            ///< "Image" or "Attachment" when the file has none
    QString size{};            ///< formatted; empty when unknown
    std::optional<QUrl> url{}; ///< absent when there is nothing to open

    friend bool operator==(const AttachmentView&, const AttachmentView&) = default;
};

/// One row of the transcript with everything resolved that it shows.
struct TranscriptRow {
    enum class Kind { visitor, agent, system, note, rating, typingPreview, typingIndicator, agentPreview };

    Kind kind = Kind::system;
    QString id{};
    int topSpacing = 0; ///< device-independent pixels above the row
    QString divider{};  ///< the time above the row; empty when none shows
    QString header{};   ///< note caption, label over a typing bubble, or the score
    bool mentionsMe = false;
    QString body{};
    std::optional<AttachmentView> attachment{};
    bool showsEmailCaption = false;
    bool showsSeenCaption = false;
    bool joinsPrevious = false; ///< its bubble continues the run of the bubble above
    bool joinsNext = false;

    /// Whether the row stands on the agent's side.
    bool isTrailing() const { return kind == Kind::agent || kind == Kind::agentPreview; }
    bool hasCaption() const { return showsEmailCaption || showsSeenCaption; }
    QString caption() const;
    /// What a screen reader says for the row, in the order in which it is read.
    QString spokenName() const;

    friend bool operator==(const TranscriptRow&, const TranscriptRow&) = default;
};

} // namespace orvia
