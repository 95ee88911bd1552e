#pragma once
// What the operator's forms ask of the desktop beyond their own controls: file-open dialogs,
// error boxes, and the end of the program after a run-time error nothing handles. Tests
// replace it to choose files and to observe boxes and ends without anything modal.
#include "basics/RuntimeError.h"

#include <QStringList>

class QWidget;
class Server;

class OperatorDialogs {
  public:
    virtual ~OperatorDialogs() = default;
    // The files chosen as local paths; empty when the dialog was cancelled. `filter` is in the
    // file dialog's own form ("All Files (*)"); `directory` is where the dialog opens.
    virtual QStringList openFiles(QWidget* parent, const QString& title, const QString& directory,
                                  const QString& filter, bool multiple) = 0;
    // A modal box with the critical-stop icon.
    virtual void errorBox(QWidget* parent, const QString& text, const QString& title) = 0;
    // The run-time error box ("Run-time error 'N':" and the description).
    virtual void unhandledError(QWidget* parent, const RuntimeError& error) = 0;
    // The end of the program, at once. Only a test's version returns.
    virtual void endProgram() = 0;
};

// A run-time error that nothing handles: its box, then the end of the program. Like the end
// after an error-log line, what was logged and sent before it is written out first.
void endAfterUnhandledError(Server& server, OperatorDialogs& dialogs, QWidget* parent,
                            const RuntimeError& error);

// The real thing: Qt's file dialog and message boxes.
class DesktopDialogs : public OperatorDialogs {
  public:
    QStringList openFiles(QWidget* parent, const QString& title, const QString& directory,
                          const QString& filter, bool multiple) override;
    void errorBox(QWidget* parent, const QString& text, const QString& title) override;
    void unhandledError(QWidget* parent, const RuntimeError& error) override;
    void endProgram() override;
};
