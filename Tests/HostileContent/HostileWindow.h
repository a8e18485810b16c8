#pragma once

#include "Session/SessionFixture.h"
#include "Views/ConversationDetailView/ConversationDetailView.h"
#include "Views/RootView.h"

#include <QImage>

namespace orvia::test {

/// The whole console in a window, over a service in which somebody wrote the same text into every field that
/// anybody can write. The conversation that it belongs to, "c2", is open; in the inbox and in its thread it
/// stands between harmless neighbours.
class HostileWindow : public SessionFixture {
protected:
    static constexpr QSize size{1280, 760};

    HostileWindow();
    ~HostileWindow() override;

    /// Writes @p text into every field; @p body is the text of the messages.
    void write(const QString& text, const QString& body);
    /// Signs in anew and opens the conversation with the visitor's panel.
    RootView& open();
    /// The visitor and a teammate named @p text type it, and the teammate looks on.
    void typeAndLook(const QString& text);
    void settle() const;
    /// The window, or @p popup. Also saved to the directory ORVIA_PICTURES, if that is set, under the test's
    /// name.
    QImage grab(QWidget* popup = nullptr) const;

    ConversationDetailView& detail() const { return *root->findChild<ConversationDetailView*>(); }
    TranscriptView& transcript() const { return detail().transcript(); }
    /// The part of @p picture that @p area of @p widget takes.
    QImage part(const QImage& picture, const QWidget& widget, const QRect& area) const;

    Conversation hostile = makeConversation(u"c2"_s);
    std::vector<Message> thread;
    std::vector<CannedResponse> canned;
    std::unique_ptr<RootView> root;
};

} // namespace orvia::test
