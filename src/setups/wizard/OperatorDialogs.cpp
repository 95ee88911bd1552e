#include "setups/wizard/OperatorDialogs.h"

#include <QApplication>
#include <QFileDialog>
#include <QMessageBox>

#include <cstdlib>

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
    QMessageBox::critical(parent, QApplication::applicationDisplayName(),
                          QString("Run-time error '%1':\n\n%2")
                              .arg(error.number)
                              .arg(QString::fromStdString(error.description())));
    // Like the end of any program after an error nothing handled: no unload, no goodbyes.
    std::_Exit(1);
}
