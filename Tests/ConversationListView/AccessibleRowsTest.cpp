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
