#include "server/StatusWindow.h"

#include "server/Server.h"

#include <QMessageBox>

StatusWindow::StatusWindow(QWidget* parent) : QMainWindow(parent) { setWindowTitle(Server::title()); }

void StatusWindow::attach(Server& server) { server_ = &server; }
void StatusWindow::showPlayers(const std::vector<PlayerRow>&) {}
void StatusWindow::showAwacsCount(const QString&) {}
void StatusWindow::showSimCount(const QString&) {}
void StatusWindow::showAiSpyState(bool) {}
void StatusWindow::messageBox(const QString& text, const QString& title, MessageIcon) {
    QMessageBox::critical(this, title, text);
}
void StatusWindow::addTrayIcon(const QString&) {}
void StatusWindow::removeTrayIcon() {}
void StatusWindow::unloadOtherForms() {}
