#include "HostileWindow.h"

#include "Views/BannerView.h"
#include "Views/ConversationDetailView/ConversationActions.h"
#include "Views/ConversationDetailView/ConversationComposer.h"
#include "Views/Widgets/SidebarList.h"
#include "Views/Widgets/VirtualListView.h"

#include <QCoreApplication>
#include <QLabel>
#include <QScrollBar>

#include <map>

namespace orvia::test {
namespace {

struct Attack {
    const char* name;
    QString text;      ///< in names, titles, addresses and all other fields
    QString body = {}; ///< of the messages, where it is another one

    friend void PrintTo(const Attack& attack, std::ostream* stream) { *stream << attack.name; }
};

/// Every control character, each in front of a letter.
QString controlCharacters()
{
    QString text;
    for (char16_t code = 0; code < 0xA0; code = code == 0x1F ? 0x7F : code + 1)
        text += QString(QChar(code)) + u'x';
    return text;
}

std::vector<Attack> attacks()
{
    const QString piled = u"Z"_s + QString(300, u'\u0301') + u"a"_s + QString(300, u'\u0323') + u"lgo"_s;
    return {
        {"Markup", u"<b>bold</b> <img src='http://127.0.0.1:1/pixel.png'> &amp; &lt;i&gt; "
                   "<a href='javascript:alert(1)'>link</a><script>alert(1)</script><h1>large</h1>"_s},
        {"Document", u"<!DOCTYPE html><html><body bgcolor=red><table><tr><td>cell</td></tr></table>"_s},
        {"Placeholders", u"%1 %2 %L3 %n {0} $(HOME) & && _x [*] \t tab"_s},
        {"ControlCharacters", controlCharacters()},
        {"Overrides", u"photo\u202Egnp.exe \u202Bx \u2067y \u2066z"_s},
        {"RightToLeft", u"שלום world, 12 (عربي) %!"_s},
        {"PiledMarks", piled.repeated(20), piled},
        {"ZeroWidth", QString(100'000, u'\u200B') + u"name"_s},
        {"OneWord", QString(100'000, u'W'), QString(1'000'000, u'W')},
        {"Words", u"Helen Brandt "_s.repeated(8'000), u"Helen Brandt "_s.repeated(80'000)},
        {"Lines", u"x\n"_s.repeated(50'000), u"x\n"_s.repeated(500'000)},
        {"LineSeparators", u"x\u2028y\u2029"_s.repeated(25'000), u"x\u2028y\u2029"_s.repeated(250'000)},
        {"Emoji",
         u"👩🏽‍🚀👨‍👩‍👧‍👦🇩🇪🏴\U000E0067\U000E0062\U000E0065\U000E006E\U000E0067\U000E007F"_s
             .repeated(2'000)},
        {"Marks", u"a"_s + QString(100'000, u'\u0489')},
        {"Unpaired", QString(QChar(0xDC00)) + u"half"_s + QString(QChar(0xD83D))},
        {"Nothing", u"\u3164\u200B"_s},
    };
}

/// What must be the same whatever the text is.
struct Look {
    qsizetype widgets = 0;
    QSize least;
    QSize size;
    std::map<QString, QImage> neighbours;

    /// The names of the neighbours that both show, but not alike.
    QStringList differences(const Look& other) const
    {
        QStringList names;
        for (const auto& [name, picture] : neighbours) {
            const auto there = other.neighbours.find(name);
            if (there != other.neighbours.end() && there->second != picture)
                names.append(name);
        }
        return names;
    }
};

class HostileText : public HostileWindow, public testing::WithParamInterface<Attack> {
protected:
    Look look() const
    {
        const QImage picture = grab();
        Look look{root->findChildren<QWidget*>().size(), root->minimumSizeHint(), root->size(), {}};
        const auto keep = [&](const QString& name, const QWidget& widget, const QRect& area) {
            look.neighbours.emplace(name, part(picture, widget, area));
        };
        for (const VirtualListView* list : root->findChildren<VirtualListView*>()) {
            if (list->accessibleName() == "Conversations"_L1) {
                keep(u"first conversation"_s, *list->viewport(),
                     list->visualRect(list->model()->index(0, 0)));
                keep(u"last conversation"_s, *list->viewport(), list->visualRect(list->model()->index(2, 0)));
            } else if (list->accessibleName() != "Products"_L1) {
                keep(list->accessibleName(), *list, list->rect());
            }
        }
        const auto& composer = *root->findChild<ConversationComposer*>();
        keep(u"composer"_s, composer, composer.rect());
        // The message below, and the one above if the one between them leaves it in sight.
        for (const qsizetype row : {5, 3}) {
            // What scrolls shows its scroll bar for a while.
            const QRect area = transcript().rowRect(row).adjusted(0, 0, -16, 0);
            if (transcript().viewport()->rect().contains(area))
                keep(transcript().row(row).id, *transcript().viewport(), area);
        }
        return look;
    }

    /// The look with a name that is none of these.
    const Look& harmlessLook()
    {
        static std::optional<Look> kept;
        if (!kept) {
            write(u"Helen Brandt"_s, u"A question"_s);
            open();
            const QScrollBar& bar = *transcript().verticalScrollBar();
            EXPECT_TRUE(waitUntil([&] { return bar.value() == bar.maximum(); }));
            kept = look();
        }
        return *kept;
    }

    /// Nothing is read as markup, nothing that is shown is longer than its place can be.
    void expectPlainBoundedTexts() const
    {
        for (const QLabel* label : root->findChildren<QLabel*>())
            EXPECT_TRUE(label->text().isEmpty() || label->textFormat() == Qt::PlainText)
                << label->text().left(40).toStdString();
        for (const QWidget* widget : root->findChildren<QWidget*>()) {
            EXPECT_LE(widget->toolTip().size(), 700);
            const bool isShown = widget->isVisible() && !widget->isWindow();
            EXPECT_LE(isShown ? widget->width() : 0, size.width()) << widget->metaObject()->className();
        }
        EXPECT_LE(root->windowTitle().size(), 220);
    }

    void expectBoundedMessages() const
    {
        EXPECT_EQ(transcript().rowCount(), qsizetype(thread.size()) + 3);
        for (qsizetype row = 0; row < transcript().rowCount(); ++row) {
            transcript().setCurrent({row, TranscriptView::Part::body});
            QCoreApplication::processEvents();
            const RowLayout* layout = transcript().rowLayout(row);
            ASSERT_TRUE(layout);
            EXPECT_LT(layout->height(), 1'200 * 20 + 200) << row;
            EXPECT_FALSE(transcript().viewport()->grab().isNull());
        }
    }

    void expectOneLineOfBanner(const QString& text)
    {
        session->showBanner(u"harmless"_s);
        settle();
        const int height = root->banner()->panelInParent().height();
        session->showBanner(text);
        settle();
        EXPECT_EQ(root->banner()->panelInParent().height(), height);
        EXPECT_LE(root->banner()->panelInParent().width(), 560);
        EXPECT_EQ(root->banner()->text(), text) << "whole for those who listen";
        grab();
    }

    void expectLiteralMenu() const
    {
        auto* menu = root->findChild<ConversationActionsMenu*>();
        menu->populate();
        EXPECT_LE(menu->sizeHint().width(), 1'000);
        EXPECT_LE(menu->sizeHint().height(), 16 * 28);
        for (const QAction* action : menu->actions()) {
            QString text = action->text();
            EXPECT_FALSE(text.contains(u'\t')) << "would be the name of a key";
            EXPECT_FALSE(text.remove("&&"_L1).contains(u'&')) << "would underline a letter";
        }
    }
};

TEST_P(HostileText, StaysInItsPlace)
{
    const Look& harmless = harmlessLook();
    ASSERT_GE(harmless.neighbours.size(), 6U);
    const Attack& attack = GetParam();
    write(attack.text, attack.body.isEmpty() ? attack.text : attack.body);
    open();
    Look now = look();
    EXPECT_LE(now.widgets, harmless.widgets + 8) << "a section more, never a widget per line";
    EXPECT_EQ(now.least, harmless.least);
    EXPECT_EQ(now.size, harmless.size);
    // What still scrolls comes to rest.
    EXPECT_TRUE(waitUntil([&] { return (now = look()).differences(harmless).isEmpty(); }))
        << now.differences(harmless).join(u", "_s).toStdString() << " looks different";

    expectPlainBoundedTexts();
    typeAndLook(attack.text);
    expectBoundedMessages();
    expectLiteralMenu();
    expectOneLineOfBanner(attack.text);
}

INSTANTIATE_TEST_SUITE_P(All, HostileText, testing::ValuesIn(attacks()),
                         [](const auto& attack) { return std::string(attack.param.name); });

} // namespace
} // namespace orvia::test
