// Tessark Server: with a display, the status window and its tray icon; without one, the same
// server headless, message boxes on standard error.
#include "app/ProgramDir.h"
#include "app/SignalBridge.h"
#include "net/DescriptorLimit.h"
#include "server/ConsoleDisplay.h"
#include "server/RuntimeError.h"
#include "server/Server.h"
#include "server/StatusWindow.h"
#include "setups/wizard/OperatorDialogs.h"

#include <QApplication>
#include <QDir>
#include <QLockFile>
#include <QMessageBox>

#include <memory>

namespace {

bool hasDisplay() {
#if defined(Q_OS_LINUX) || defined(Q_OS_FREEBSD)
    return qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY") ||
           qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
#else
    return true;
#endif
}

// One server per user: the lock lives in the user's temporary directory.
QString instanceLockPath() {
    QString user = qEnvironmentVariable("USER", qEnvironmentVariable("USERNAME", "user"));
    return QDir::tempPath() + "/tessark-server-" + user + ".lock";
}

} // namespace

int main(int argc, char* argv[]) {
    // Without a display a widget application cannot even be constructed: decide first.
    const bool headless = !hasDisplay();
    std::unique_ptr<QCoreApplication> app;
    if (headless)
        app = std::make_unique<QCoreApplication>(argc, argv);
    else
        app = std::make_unique<QApplication>(argc, argv);

    ConsoleDisplay console;
    std::unique_ptr<StatusWindow> window;
    StatusDisplay* display = &console;

    QLockFile instanceLock(instanceLockPath());
    instanceLock.setStaleLockTime(0);
    if (!instanceLock.tryLock(0)) {
        if (headless)
            console.messageBox("The application is allready running.", kProgramTitle, MessageIcon::None);
        else
            QMessageBox::information(nullptr, kProgramTitle, "The application is allready running.");
        return 0;
    }

    descriptors::raiseSoftLimit();
    const QString appDir = programDirWithSeparator(QCoreApplication::applicationDirPath());
    std::unique_ptr<Server> server;
    if (!headless) {
        // The window hides to the notification area and the wizard's pages come and go: only
        // "Exit" (the server's finished()) ends the program.
        static_cast<QApplication*>(app.get())->setQuitOnLastWindowClosed(false);
        window = std::make_unique<StatusWindow>();
        display = window.get();
    }
    server = std::make_unique<Server>(*display, appDir);
    if (window) window->attach(*server);
    display->addTrayIcon(Server::title());

    try {
        server->start();
    } catch (const RuntimeError& e) {
        display->messageBox(QString::fromStdString(runTimeErrorText(e)), kProgramTitle,
                            MessageIcon::Critical);
        return 1;
    }
    if (window) window->show();

    // exit(), not quit(): a widget application's quit() first asks every window to close, and
    // the status window refuses (its close box only hides it), which would cancel the exit.
    QObject::connect(
        server.get(), &Server::finished, app.get(), [] { QCoreApplication::exit(0); }, Qt::QueuedConnection);
    SignalBridge signals_;
    QObject::connect(&signals_, &SignalBridge::terminationRequested, server.get(), &Server::exit);
    return app->exec();
}
