// SPDX-License-Identifier: Apache-2.0

// A Qt application with a window. Nothing in it knows that there is a main queue.

#include "tests/hosts/Scenario.h"

#include <QtGui/QPainter>
#include <QtGui/QWindow>
#include <QtWidgets/QApplication>
#include <QtWidgets/QWidget>

namespace {

class Window : public QWidget {
public:
    hosts::Scenario scenario{
        {.name = "qt", .refresh = [this] { update(); }, .finish = [] { QApplication::quit(); }}};

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter(this).fillRect(rect(), Qt::darkCyan);
        if (windowHandle()->isExposed()) scenario.refreshed();
    }
};

} // namespace

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    Window window;
    window.resize(320, 200);
    window.show();
    window.scenario.start();
    QApplication::exec();
    return window.scenario.report();
}
