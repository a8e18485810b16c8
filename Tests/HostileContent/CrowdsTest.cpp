#include "HostileWindow.h"

#include "Views/ConversationDetailView/Composer/MessageComposer.h"
#include "Views/ConversationDetailView/Composer/SuggestionList.h"
#include "Views/ConversationDetailView/ConversationActions.h"
#include "Views/ConversationDetailView/ConversationComposer.h"
#include "Views/Widgets/SidebarList.h"

#include <QScreen>
#include <QStyledItemDelegate>
#include <QTest>

namespace orvia::test {
namespace {

/// Counts the rows that a list paints.
class CountingDelegate : public QStyledItemDelegate {
public:
    void paint(QPainter*, const QStyleOptionViewItem&, const QModelIndex&) const override { ++painted; }
    mutable int painted = 0;
};

class Crowds : public HostileWindow {
protected:
    static constexpr int crowd = 10'000;
    /// What the window can show, generously.
    static constexpr int inSight = 60;

    void gather()
    {
        write(u"Helen Brandt"_s, u"A question"_s);
        for (int i = 0; i < crowd; ++i) {
            Product product = products[0];
            product.id = u"p%1"_s.arg(i + 2);
            product.name = u"Product %1"_s.arg(i);
            products.push_back(product);
            teammates.push_back(makeAgent(u"t%1"_s.arg(i), u"Teammate %1"_s.arg(i)));
            canned.push_back(canned[0]);
            canned.back().shortcut = u"answer%1"_s.arg(i);
        }
        self.mutedConversationIds.emplace();
        for (int i = 0; i < 10 * crowd; ++i)
            self.mutedConversationIds->append(u"muted%1"_s.arg(i));
        open();
    }
};

TEST_F(Crowds, AreListedWithoutAWidgetEach)
{
    write(u"Helen Brandt"_s, u"A question"_s);
    open();
    const qsizetype widgets = root->findChildren<QWidget*>().size();
    gather();
    EXPECT_EQ(session->products().size(), crowd + 1U);
    EXPECT_EQ(root->findChildren<QWidget*>().size(), widgets);

    CountingDelegate counting;
    for (SidebarList* list : root->findChildren<SidebarList*>()) {
        if (list->accessibleName() != "Products"_L1)
            continue;
        EXPECT_GT(list->height(), crowd * 20);
        QAbstractItemDelegate* const usual = list->itemDelegate();
        list->setItemDelegate(&counting);
        grab();
        EXPECT_GT(counting.painted, 0);
        EXPECT_LT(counting.painted, inSight);
        list->setItemDelegate(usual);
    }

    // A hundred thousand viewers are one line, a hundred thousand conversations one list.
    SocketEvent event;
    event.conversationId = u"c2"_s;
    event.type = u"viewers"_s;
    event.agents.emplace();
    for (int i = 0; i < 10 * crowd; ++i)
        event.agents->push_back({u"t%1"_s.arg(i), u"Teammate %1"_s.arg(i)});
    session->handle(event);
    event = {};
    event.type = u"conversation"_s;
    for (int i = 0; i < 10 * crowd; ++i) {
        event.conversation = makeConversation(u"n%1"_s.arg(i));
        session->handle(event);
    }
    settle();
    EXPECT_FALSE(grab().isNull());
    EXPECT_LE(root->findChildren<QWidget*>().size(), widgets + 4) << "the line of who is looking";
}

TEST_F(Crowds, AreOfferedAFewAtATime)
{
    gather();
    auto* const composer = root->findChild<ConversationComposer*>();
    composer->messageComposer()->setText(u"/answer"_s);
    settle();
    EXPECT_EQ(composer->findChild<CannedSuggestionList*>()->rowCount(), 6);
    composer->messageComposer()->setNote(true);
    composer->messageComposer()->setText(u"@team"_s);
    settle();
    EXPECT_EQ(composer->findChild<MentionSuggestionList*>()->rowCount(), 6);

    // Every teammate can be assigned; the menu scrolls and stays on the screen.
    auto* const menu = root->findChild<ConversationActionsMenu*>();
    menu->populate();
    EXPECT_GT(menu->actions().size(), crowd);
    menu->popup(QPoint(0, 0));
    settle();
    EXPECT_LE(menu->height(), menu->screen()->geometry().height());
    EXPECT_LE(menu->width(), 400);
    EXPECT_FALSE(grab(menu).isNull());
    menu->close();
}

} // namespace
} // namespace orvia::test
