#include "app/CommandLine.h"

#include "app/CommandHelp.h"

#include <QCommandLineParser>

#ifdef Q_OS_WIN
#include <windows.h>
#endif

namespace {

#ifdef Q_OS_WIN
// Windows always has a desktop, and no signals: what stops the program is its own menu.
const char kDescription[] =
    "Tessark Server: players, setups and the flight picture for a squadron.\n"
    "It shows its status window and an icon in the notification area. File > Exit shuts it\n"
    "down; started from a console, Ctrl+C there does the same.";
#else
const char kDescription[] =
    "Tessark Server: players, setups and the flight picture for a squadron.\n"
    "With a display it shows its status window; without one (no DISPLAY, WAYLAND_DISPLAY or\n"
    "QT_QPA_PLATFORM) it runs headless. SIGTERM or SIGINT shut it down as \"Exit\" does.";
#endif

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
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    const QCommandLineOption dir("dir",
                                 "The program directory: tessark.ini, the setups and the logs. By default "
                                 "the executable's own directory; for an installed program (under /usr, "
                                 "or where the user may not write) the user's data directory.",
                                 "DIR");
    parser.addOption(dir);
    const QCommandLineOption config("config",
                                    "The server's own settings (listen addresses, the operator's log, "
                                    "access). By default tessark-server.conf in the program directory, "
                                    "if there is one.",
                                    "FILE");
    parser.addOption(config);
    parser.addPositionalArgument("command",
                                 "An operator's command for the server running in the program directory "
                                 "(\"COMMAND --help\" tells each):\n" +
                                     commandSynopses(),
                                 "[command]");
    // A command's own options (setups create --name ...) are its words, not the program's.
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);

    CommandLine result;
    if (!parser.parse(arguments)) {
        result.exitStatus = refuse(parser.errorText());
        return result;
    }
    // Answered through tellUser, which on Windows finds the console the program was started
    // from; Qt's own answer would open a message box there.
    if (parser.isSet(version) || parser.isSet(help)) {
        const QString text = parser.isSet(version) ? QString("%1 %2").arg(kExecutableName, programVersion())
                                                   : parser.helpText().trimmed();
        tellUser(text, stdout);
        result.exitStatus = 0;
        return result;
    }
    // --help-all (Qt's own options too) as Qt prints it, after which process() ends the program.
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
    result.settingsFile = parser.value(config);
    if (parser.isSet(config) && result.settingsFile.isEmpty())
        result.exitStatus = refuse("The file after '--config' is empty.");
    return result;
}

#ifdef Q_OS_WIN
namespace {
// A program for the desktop starts without a console. Output that whoever started it gave it
// (a file, a pipe, QProcess) is written there; else the program joins the console it was
// started from, if any, and points the C runtime's stream, set up without one, at it. True
// when the stream reaches someone; the answer then starts on a line of its own, the console's
// prompt having been written already.
bool reachConsole(std::FILE* stream) {
    const HANDLE given = GetStdHandle(stream == stderr ? STD_ERROR_HANDLE : STD_OUTPUT_HANDLE);
    if (given && given != INVALID_HANDLE_VALUE && GetFileType(given) != FILE_TYPE_UNKNOWN) return true;
    if (!GetConsoleWindow() && !AttachConsole(ATTACH_PARENT_PROCESS)) return false;
    if (!std::freopen("CONOUT$", "w", stream)) return false;
    std::fputs("\n", stream);
    return true;
}
} // namespace
#endif

void tellUser(const QString& text, std::FILE* stream) {
#ifdef Q_OS_WIN
    if (!reachConsole(stream)) {
        MessageBoxW(nullptr, reinterpret_cast<const wchar_t*>(text.utf16()), L"Tessark Server",
                    MB_OK | (stream == stderr ? MB_ICONERROR : MB_ICONINFORMATION));
        return;
    }
#endif
    std::fputs(text.toLocal8Bit().append('\n').constData(), stream);
    std::fflush(stream);
}
