#include "InboxFixture.h"
#include "Theme/Theme.h"
#include "Views/ConversationListView/ConversationListModel.h"
#include "Views/ConversationListView/ConversationListView.h"

#include <QAccessible>
#include <QApplication>
#include <QListView>

namespace orvia::test {

class AccessibleRowsTest : public InboxFixture {
protected:
    void SetUp() override
    {
        Theme::shared().apply(*qApp);
        sessionWithMany(50);
        view = std::make_unique<ConversationListView>(*session);
        view->resize(320, 700);
        view->show();
        list = view->findChild<QListView*>(u"conversations"_s);
        tree = QAccessible::queryAccessibleInterface(list);
        ASSERT_TRUE(tree);
    }

    void TearDown() override { view.reset(); }

    void settle()
    {
        static_cast<ConversationListModel*>(list->model())->applyChanges();
        QCoreApplication::processEvents();
    }

    void expectTrueRows()
    {
        ASSERT_EQ(tree->childCount(), list->model()->rowCount());
        for (int row = 0; row < list->model()->rowCount(); ++row) {
            const QModelIndex index = list->model()->index(row, 0);
            ASSERT_EQ(tree->child(row)->text(QAccessible::Name),
                      index.data(Qt::AccessibleTextRole).toString())
                << "row " << row;
        }
    }

    std::unique_ptr<ConversationListView> view;
    QListView* list = nullptr;
    QAccessibleInterface* tree = nullptr;
};

TEST_F(AccessibleRowsTest, FormANamedList)
{
    EXPECT_EQ(tree->role(), QAccessible::List);
    EXPECT_EQ(tree->text(QAccessible::Name), u"Conversations"_s);
    EXPECT_EQ(tree->childCount(), 50);
    EXPECT_EQ(tree->child(3)->role(), QAccessible::ListItem);
    EXPECT_EQ(tree->indexOfChild(tree->child(3)), 3);
    EXPECT_EQ(tree->child(0)->text(QAccessible::Name), u"Visitor c0, 1 minute ago, Hello, Larkspur Coffee"_s);
    auto* refresh = view->findChild<QWidget*>(u"refresh"_s);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(refresh)->text(QAccessible::Name), u"Refresh"_s);
}

TEST_F(AccessibleRowsTest, AreThoseOfTheListAfterItChanged)
{
    deliverMessage(u"c20"_s, minutesAgo(0));
    deliverMessage(u"c49"_s, minutesAgo(-1));
    Conversation gone = known(u"c5"_s);
    gone.status = ConversationStatus::closed;
    deliver(gone);
    deliver(makeConversation(u"new"_s, 7));
    settle();
    expectTrueRows();

    session->setSelectedConversationId(u"c30"_s);
    EXPECT_TRUE(tree->child(list->currentIndex().row())->state().selected);
    EXPECT_FALSE(tree->child(0)->state().selected);
}

} // namespace orvia::test
