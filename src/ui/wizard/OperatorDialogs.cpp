#include "ui/wizard/OperatorDialogs.h"

#include "server/Server.h"

#include <QFileDialog>
#include <QMessageBox>

#include <cstdlib>

namespace {
// As long as the end of the program after an error-log line waits for the peers.
constexpr int kEndFlushMs = 1000;
} // namespace

void endAfterUnhandledError(Server& server, OperatorDialogs& dialogs, QWidget* parent,
                            const RuntimeError& error) {
    dialogs.unhandledError(parent, error);
    server.trafficLog().flush();
    server.flushAllSockets(kEndFlushMs);
    dialogs.endProgram();
}

QStringList DesktopDialogs::openFiles(QWidget* parent, const QString& title, const QString& directory,
                                      const QString& filter, bool multiple) {
    if (multiple) return QFileDialog::getOpenFileNames(parent, title, directory, filter);
    QString one = QFileDialog::getOpenFileName(parent, title, directory, filter);
    return one.isEmpty() ? QStringList() : QStringList{one};
}

void DesktopDialogs::errorBox(QWidget* parent, const QString& text, const QString& title) {
    QMessageBox::critical(parent, title, text);
}

void DesktopDialogs::unhandledError(QWidget* parent, const RuntimeError& error) {
    QMessageBox::critical(parent, kProgramTitle, QString::fromStdString(runTimeErrorText(error)));
}

void DesktopDialogs::endProgram() {
    // Like the end of any program after an error nothing handled: no unload, no goodbyes.
    std::_Exit(1);
}
