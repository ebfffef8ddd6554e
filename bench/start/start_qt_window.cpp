// The same window of Qt's.
#include <QApplication>
#include <QDialog>
#include <QPushButton>
#include <cstdlib>

int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    setenv("QT_LOGGING_RULES", "*=false", 1);
    const QApplication application(argc, argv);
    QDialog top;
    top.setWindowTitle("First");
    top.resize(300, 200);
    QPushButton button("OK", &top);
    button.setGeometry(100, 100, 80, 26);
    top.show();
    QApplication::processEvents();
    return top.isVisible() ? 0 : 1;
}
