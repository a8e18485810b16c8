#include "Theme/CaretRest.h"

#include "Support/Waiting.h"

#include <QApplication>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QStyleHints>
#include <QTest>
#include <QVBoxLayout>

#include <gmock/gmock.h>

namespace orvia::test {

using namespace Qt::StringLiterals;

namespace {

class PaintCounter : public QObject {
public:
    explicit PaintCounter(QWidget* painted) { painted->installEventFilter(this); }
    int count = 0;

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        count += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }
};

/// A window with both kinds of fields, whose carets blink fifty times a second.
class CaretRestTest : public testing::Test {
protected:
    CaretRestTest()
    {
        QGuiApplication::styleHints()->setCursorFlashTime(20);
        auto* const column = new QVBoxLayout(&window);
        column->addWidget(line);
        column->addWidget(text);
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }
    ~CaretRestTest() override { QGuiApplication::styleHints()->setCursorFlashTime(flashTime); }

    const int flashTime = QGuiApplication::styleHints()->cursorFlashTime();
    QWidget window;
    QLineEdit* const line = new QLineEdit;
    QPlainTextEdit* const text = new QPlainTextEdit;
};

} // namespace

TEST_F(CaretRestTest, StopsBlinkingUntilTheNextKeyOrClick)
{
    CaretRest rest(std::chrono::milliseconds(100));
    for (const auto& [field, painted] :
         {std::pair<QWidget*, QWidget*>(line, line), {text, text->viewport()}}) {
        field->setFocus();
        PaintCounter paints(painted);
        const auto rests = [&] {
            return waitUntil([] { return QGuiApplication::styleHints()->cursorFlashTime() == 0; });
        };
        ASSERT_TRUE(rests());
        spinFor(std::chrono::milliseconds(30));
        paints.count = 0;
        spinFor(std::chrono::milliseconds(150));
        EXPECT_EQ(paints.count, 0) << "the caret blinks while nobody is there";

        QTest::keyClick(field, Qt::Key_A);
        EXPECT_TRUE(waitUntil([&] { return paints.count >= 4; })) << "the caret does not blink after a key";
        ASSERT_TRUE(rests());
        QTest::mouseClick(painted, Qt::LeftButton);
        EXPECT_EQ(QGuiApplication::styleHints()->cursorFlashTime(), 20);
    }
}

} // namespace orvia::test
