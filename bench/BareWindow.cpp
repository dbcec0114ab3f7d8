// bare_window WIDTH HEIGHT: shows a window of this size with a few controls, and nothing else; what the toolkit alone
// takes to start. bench/run compares the installer with it.

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QTextEdit>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr int kMargin = 20, kButtonWidth = 88, kButtonHeight = 24, kLabelHeight = 16;

}

int main(int argc, char* argv[])
{
    const QApplication application(argc, argv);
    if (argc != 3) {
        std::fprintf(stderr, "usage: bare_window WIDTH HEIGHT\n");
        return 2;
    }
    const int width = static_cast<int>(std::strtol(argv[1], nullptr, 10));
    const int height = static_cast<int>(std::strtol(argv[2], nullptr, 10));
    QWidget window;
    window.setObjectName("BareWindow");
    window.setFixedSize(width, height);

    QLabel label("A label", &window);
    label.setGeometry(kMargin, kMargin, width - 2 * kMargin, kLabelHeight);
    const int buttonY = height - kMargin - kButtonHeight;
    QTextEdit text("A text view", &window);
    const int textY = 2 * kMargin + kLabelHeight;
    text.setGeometry(kMargin, textY, width - 2 * kMargin, buttonY - kMargin - textY);
    QPushButton first("First", &window);
    first.setGeometry(width - kMargin - kButtonWidth, buttonY, kButtonWidth, kButtonHeight);
    QPushButton second("Second", &window);
    second.setGeometry(width - 2 * (kMargin + kButtonWidth), buttonY, kButtonWidth, kButtonHeight);

    window.show();
    return QApplication::exec();
}
