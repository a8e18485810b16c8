#include "PanelFixture.h"

#include <QApplication>
#include <QScrollBar>
#include <QTest>

namespace orvia::test {
namespace {

/// More than any window shows, far less than a long list holds.
constexpr std::size_t boundedCount = 250;

class LongLists : public PanelFixture {
protected:
    LongLists()
    {
        scriptHistory({});
        VisitorMeta& meta = *conversation.visitor.meta;
        meta.pages.emplace();
        meta.data.emplace();
        for (int entry = 1; entry <= 10'000; ++entry) {
            meta.pages->push_back(makePage(u"page %1"_s.arg(entry), clock, 60));
            meta.data->pairs.push_back({u"key %1"_s.arg(entry), u"value %1"_s.arg(entry)});
        }
        tell(conversation);
        showPanel();
    }

    void scrollTo(int value)
    {
        area().verticalScrollBar()->setValue(value);
        QCoreApplication::processEvents();
    }

    QString focusedName() const
    {
        return QApplication::focusWidget() ? QApplication::focusWidget()->accessibleName() : QString();
    }
};

TEST_F(LongLists, MakeRowsOnlyWhereTheyAreSeen)
{
    LinkButton* toggle = only<LinkButton>(u"Show all 10000"_s);
    ASSERT_TRUE(toggle);
    toggle->click();
    QCoreApplication::processEvents();
    QScrollBar& bar = *area().verticalScrollBar();
    EXPECT_GT(bar.maximum(), 10'000 * (20 + 22) - 1'000);
    for (const double part : {0.0, 0.3, 0.7, 1.0, 0.5, 0.0}) {
        scrollTo(static_cast<int>(part * bar.maximum()));
        EXPECT_LT(panel->findChildren<JourneyRow*>().size(), boundedCount);
        EXPECT_LT(panel->findChildren<LabelledRow*>().size(), boundedCount);
        // Where rows belong in the middle of the window, one is.
        QWidget* middle = panel->childAt(panel->rect().center());
        while (middle && !qobject_cast<JourneyRow*>(middle) && !qobject_cast<LabelledRow*>(middle))
            middle = middle->parentWidget();
        EXPECT_TRUE(middle) << part;
    }
    scrollTo(bar.maximum());
    EXPECT_EQ(journey().last(), u"page 1"_s);
    EXPECT_EQ(only<JourneyRow>(u"page 1"_s)->accessibleDescription(), u"1 hour ago, 10000 of 10000"_s);
    only<JourneyRow>(u"page 3"_s)->click();
    EXPECT_THAT(opened, testing::ElementsAre(QUrl(u"https://shop.example/page 3"_s)));
}

TEST_F(LongLists, LetTheTabKeyFindTheNextRow)
{
    SelectableLine* first = only<SelectableLine>(u"value 1"_s);
    ASSERT_TRUE(first);
    first->setFocus(Qt::TabFocusReason);
    for (int row = 2; row <= 150; ++row) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QCoreApplication::processEvents();
        ASSERT_EQ(focusedName(), u"value %1"_s.arg(row));
    }
    // The row with the focus outlives a journey to the other end.
    scrollTo(area().verticalScrollBar()->maximum());
    EXPECT_EQ(focusedName(), u"value 150"_s);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    QCoreApplication::processEvents();
    EXPECT_EQ(focusedName(), u"value 151"_s);
    EXPECT_LT(panel->findChildren<LabelledRow*>().size(), boundedCount);
}

TEST_F(LongLists, ShrinkWithTheirData)
{
    only<LinkButton>(u"Show all 10000"_s)->click();
    scrollTo(area().verticalScrollBar()->maximum());
    all<JourneyRow>().back()->setFocus();
    conversation.visitor.meta->pages->resize(3);
    conversation.visitor.meta->data->pairs.resize(1);
    tell(conversation);
    EXPECT_EQ(journey(), QStringList({u"page 3"_s, u"page 2"_s, u"page 1"_s}));
    EXPECT_TRUE(only<SelectableLine>(u"value 1"_s));

    // The focus leaves a column that goes, whatever that makes the panel scroll to.
    VisitorMeta& meta = *conversation.visitor.meta;
    meta.pages->resize(9'000);
    meta.data->pairs.resize(5'000, {u"key"_s, u"value"_s});
    tell(conversation);
    scrollTo(5'000 * 10);
    all<SelectableLine>().back()->setFocus(Qt::TabFocusReason);
    meta.pages->resize(10);
    meta.data->pairs.clear();
    tell(conversation);
    EXPECT_EQ(journey().size(), 10);
    conversation.visitor.meta.reset();
    tell(conversation);
    EXPECT_EQ(sections(), QStringList{u"Location"_s});
}

} // namespace
} // namespace orvia::test
