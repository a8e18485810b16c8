#include <QApplication>
#include <QSplitter>

/// The least that a program with a window of three panes can be: what the console's start and memory are
/// held against. As large as the console's own window.
int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QSplitter window;
    for (int pane = 0; pane < 3; ++pane)
        window.addWidget(new QWidget);
    window.resize(1080, 700);
    window.show();
    return QApplication::exec();
}
