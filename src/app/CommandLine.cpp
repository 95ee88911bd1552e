#include "app/CommandLine.h"

#include "app/OperatorCommands.h"

#include <QCommandLineParser>

#ifdef Q_OS_WIN
#include <windows.h>
#endif

namespace {

const char kDescription[] =
    "Tessark Server: players, setups and the flight picture for a squadron.\n"
    "With a display it shows its status window; without one (no DISPLAY, WAYLAND_DISPLAY or\n"
    "QT_QPA_PLATFORM) it runs headless. SIGTERM or SIGINT shut it down as \"Exit\" does.";

int refuse(const QString& why) {
    tellUser(QString("%1: %2\nTry \"%1 --help\".").arg(kExecutableName, why), stderr);
    return kUsageErrorStatus;
}

} // namespace

QString programVersion() {
    return QString("%1.%2.%3")
        .arg(TESSARK_VERSION_MAJOR)
        .arg(TESSARK_VERSION_MINOR)
        .arg(TESSARK_VERSION_PATCH);
}

CommandLine readCommandLine(const QStringList& arguments) {
    QCommandLineParser parser;
    parser.setApplicationDescription(kDescription);
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption dir("dir",
                                 "The program directory: tessark.ini, the setups and the logs. By default "
                                 "the executable's own directory; for an installed program (under /usr, "
                                 "or where the user may not write) the user's data directory.",
                                 "DIR");
    parser.addOption(dir);
    // Accepted and not read yet: the service's unit already names the settings file
    // (/etc/tessark-server/tessark-server.conf). Listed in --help once it is read.
    QCommandLineOption config("config", "The server's own settings file.", "FILE");
    config.setFlags(QCommandLineOption::HiddenFromHelp);
    parser.addOption(config);
    parser.addPositionalArgument("command",
                                 "status: what the running server shows, and its connections.\n"
                                 "exit: shut the running server down as \"Exit\" does.\n"
                                 "setups list | create --name NAME [--file PATH]... [--no-sim-folder] "
                                 "[--config ENTRY]... | import FILE | remove N | verify N:\n"
                                 "the setups, through the running server or, with none, in the directory.",
                                 "[command]");
    // A command's own options (setups create --name ...) are its words, not the program's.
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);

    CommandLine result;
    if (!parser.parse(arguments)) {
        result.exitStatus = refuse(parser.errorText());
        return result;
    }
    // --help, --help-all and --version as Qt prints them (to standard output; on Windows, when
    // started without a console, in a message box), after which process() ends the program.
    parser.process(arguments);
    const QStringList positional = parser.positionalArguments();
    if (!positional.isEmpty() && !isOperatorCommand(positional.first())) {
        result.exitStatus = refuse(QString("Unknown command '%1'.").arg(positional.first()));
        return result;
    }
    result.command = positional;
    result.programDir = parser.value(dir);
    if (parser.isSet(dir) && result.programDir.isEmpty())
        result.exitStatus = refuse("The directory after '--dir' is empty.");
    return result;
}

void tellUser(const QString& text, std::FILE* stream) {
#ifdef Q_OS_WIN
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    GetStartupInfoW(&startup);
    if (!GetConsoleWindow() && !(startup.dwFlags & STARTF_USESTDHANDLES)) {
        MessageBoxW(nullptr, reinterpret_cast<const wchar_t*>(text.utf16()), L"Tessark Server",
                    MB_OK | (stream == stderr ? MB_ICONERROR : MB_ICONINFORMATION));
        return;
    }
#endif
    std::fputs(text.toLocal8Bit().append('\n').constData(), stream);
    std::fflush(stream);
}
