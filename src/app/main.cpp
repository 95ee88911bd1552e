// Tessark Server: reads its command line, then with a display shows the status window and its
// tray icon; without one runs the same server headless, message boxes on standard error.
#include "app/CommandLine.h"
#include "app/OperatorCommands.h"
#include "app/ProgramDirChoice.h"
#include "app/SignalBridge.h"
#include "basics/OperatorLog.h"
#include "basics/PrivateDir.h"
#include "basics/RuntimeError.h"
#include "net/DescriptorLimit.h"
#include "net/EventDispatcher.h"
#include "server/ConsoleDisplay.h"
#include "server/Server.h"
#include "ui/StatusWindow.h"
#include "ui/wizard/OperatorDialogs.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
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

// One server per user: the lock lives where only the user can create it, so that another local
// user cannot keep the server from starting with a lock file of their own.
QString instanceLockPath(QString* error) {
    const QString dir = privateRuntimeDir(error);
    return dir.isEmpty() ? QString() : dir + "/instance.lock";
}

// The operator's log as the settings ask for it. On Windows a program for the desktop has no
// console to write to, so there the log always has a file, in the program directory unless the
// settings name another.
OperatorLogOptions logOptions(const ServerSettings& settings, const QString& programDir) {
    OperatorLogOptions options = settings.log;
#ifdef Q_OS_WIN
    if (options.file.isEmpty()) options.file = programDir + "tessark-server.log";
#else
    Q_UNUSED(programDir);
#endif
    return options;
}

} // namespace

int main(int argc, char* argv[]) {
    // A write to a peer or a reader that went away is that write's error, never the end of the
    // server, from the first line it writes.
    ignoreSignalsThatMustNotEndTheServer();
    // Without a display a widget application cannot even be constructed: decide first.
    const bool headless = !hasDisplay();
    // What --version says, and the name the user's data directory is made of, whatever the
    // executable is called.
    QCoreApplication::setApplicationName(kExecutableName);
    QCoreApplication::setApplicationVersion(programVersion());
    std::unique_ptr<QCoreApplication> app;
    if (headless) {
        if (QAbstractEventDispatcher* dispatcher = createEventDispatcher())
            QCoreApplication::setEventDispatcher(dispatcher);
        app = std::make_unique<QCoreApplication>(argc, argv);
    } else
        app = std::make_unique<QApplication>(argc, argv);

    // Before the lock: --help, --version and mistakes are answered beside a running server,
    // and a program directory that cannot be used ends the program before it listens.
    const CommandLine commandLine = readCommandLine(QCoreApplication::arguments());
    if (commandLine.exitStatus) return *commandLine.exitStatus;
    const ProgramDirChoice programDir = chooseProgramDir(
        commandLine.programDir, QCoreApplication::applicationDirPath(), commandLine.command.isEmpty());
    if (programDir.dir.isEmpty()) {
        tellUser(QString("%1: %2").arg(kExecutableName, programDir.error), stderr);
        return 1;
    }
    if (!commandLine.command.isEmpty()) return runOperatorCommand(programDir.dir, commandLine.command);

    ConsoleDisplay console;
    std::unique_ptr<StatusWindow> window;
    StatusDisplay* display = &console;

    QString whyNoLock;
    const QString lockPath = instanceLockPath(&whyNoLock);
    if (lockPath.isEmpty()) {
        tellUser(QString("%1: no place for the single-instance lock: %2").arg(kExecutableName, whyNoLock),
                 stderr);
        return 1;
    }
    QLockFile instanceLock(lockPath);
    instanceLock.setStaleLockTime(0);
    if (!instanceLock.tryLock(0)) {
        if (headless)
            console.messageBox("The application is allready running.", kProgramTitle, MessageIcon::None);
        else
            QMessageBox::information(nullptr, kProgramTitle, "The application is allready running.");
        return 0;
    }

    // The server's own settings: a file given with --config must be there; the one beside
    // tessark.ini is read when there is one. A setting that does not read stops the start.
    const bool settingsNamed = !commandLine.settingsFile.isEmpty();
    const QString settingsPath = settingsNamed ? QFileInfo(commandLine.settingsFile).absoluteFilePath()
                                               : programDir.dir + kSettingsFileName;
    const SettingsReading settings = readServerSettings(settingsPath, settingsNamed, programDir.dir);
    operator_log::install(logOptions(settings.settings, programDir.dir));
    operator_log::tellFileError();
    if (!settings.tell()) {
        qCCritical(lcRun, "not started: the settings must be mended first");
        if (!headless)
            QMessageBox::critical(nullptr, kProgramTitle,
                                  "The settings cannot be read:\n\n" + settings.errors.join("\n"));
        return 1;
    }

    descriptors::raiseSoftLimit();
    std::unique_ptr<Server> server;
    if (!headless) {
        // The window hides to the notification area and the wizard's pages come and go: only
        // "Exit" (the server's finished()) ends the program.
        static_cast<QApplication*>(app.get())->setQuitOnLastWindowClosed(false);
        window = std::make_unique<StatusWindow>();
        display = window.get();
    }
    const ServerSettings& s = settings.settings;
    const Ports ports{s.listenPoint(PortRole::Players).port, s.listenPoint(PortRole::Awacs).port,
                      s.listenPoint(PortRole::Sims).port, s.listenPoint(PortRole::AiSpy).port};
    server = std::make_unique<Server>(*display, programDir.dir, ports);
    server->useSettings(settingsPath, settingsNamed, settings);
    QObject::connect(server.get(), &Server::settingsChanged, server.get(),
                     [dir = programDir.dir](const ServerSettings& changed) {
                         operator_log::apply(logOptions(changed, dir));
                     });
    if (window) window->attach(*server);
    display->addTrayIcon(Server::title());

    try {
        server->start();
    } catch (const RuntimeError& e) {
        qCCritical(lcRun, "not started: run-time error %d (%s)", e.number, e.what());
        display->messageBox(QString::fromStdString(runTimeErrorText(e)), kProgramTitle,
                            MessageIcon::Critical);
        return 1;
    }
    if (window) window->show();
    // After the status window: Windows tells the session's end to the newest windows first, and
    // the bridge's own window must hear it before Qt's, which would end the loop without "Exit".
    SignalBridge signals_;
    QObject::connect(&signals_, &SignalBridge::terminationRequested, server.get(),
                     [&server](const QString& why) { server->exit(why); });
    QObject::connect(&signals_, &SignalBridge::reloadRequested, server.get(),
                     [&server] { server->reload("SIGHUP"); });

    // exit(), not quit(): a widget application's quit() first asks every window to close, and
    // the status window refuses (its close box only hides it), which would cancel the exit.
    QObject::connect(
        server.get(), &Server::finished, app.get(), [] { QCoreApplication::exit(0); }, Qt::QueuedConnection);
    return app->exec();
}
