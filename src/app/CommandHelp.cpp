#include "app/CommandHelp.h"

#include "app/CommandLine.h"

namespace {

const std::vector<CommandHelpRow> kRows{
    {"status", "[--json]",
     "What the running server shows: its players with their marks and setups, the AWACS and SIM "
     "counters, the AI Spy link, and each connection (address, time connected, bytes queued, "
     "messages dropped by the output cap, whether its requests wait for it to read).\n"
     "  --json   the same as one JSON document (schema \"tessark-status\", version 1; see the "
     "manual page).\n"
     "Exit status: 0; 3 when no server runs in the program directory."},
    {"exit", "",
     "Shuts the running server down as \"Exit\" does: \"CLOSE1\" to the AI Spy, \"DISCON\" to every "
     "peer, then the program ends.\nExit status: 0; 3 when no server runs in the program directory."},
    {"reload", "",
     "What SIGHUP does: the log file is reopened, the settings file and the setup catalogue are read "
     "again. Settings that do not read keep the running ones (the operator's log says why); listen "
     "addresses change at the next start.\nExit status: 0; 1 when the settings did not read (the running "
     "ones stay); 3 when no server runs in the program directory."},
    {"kick", "player|awacs|sim SLOT | ai-spy | ADDRESS[/PREFIX]",
     "Ends a peer's connection as if it had left: the others are told as after a close, and its "
     "slot is free again. SLOT is the connection's number as status lists it; an address or a "
     "network ends every connection from there, on every port. It may connect again: ban keeps it "
     "out.\nExit status: 0; 1 when there is no such connection; 2 for a usage mistake; 3 when no "
     "server runs in the program directory."},
    {"ban", "ADDRESS[/PREFIX] [--for DURATION] [--why TEXT]",
     "Refuses an address or a network on every port from now on, for good or for a time, and ends "
     "its connections. The bans are kept in the ban file ([access] ban-file, tessark-server.bans "
     "in the program directory), one a line, and hold across restarts.\n"
     "  --for DURATION  90s, 30m, 12h, 7d, 2w, 1h30m (at most ten years); for good without it\n"
     "  --why TEXT      a note kept with the ban (the rest of the line)\n"
     "Exit status: 0; 1 when the list is full or the file could not be written (the ban holds "
     "until the server stops); 2 for a usage mistake; 3 when no server runs in the program directory."},
    {"unban", "ADDRESS[/PREFIX]",
     "Takes the ban on exactly that address or network away (as bans lists it).\nExit status: 0; 1 when "
     "there was none or the file could not be written; 2 for a usage mistake; 3 when no server runs."},
    {"bans", "",
     "The bans in force: the network, until when, and the note.\nExit status: 0; 3 when no server "
     "runs in the program directory."},
    {"setups", "list|create|import|remove|verify ...",
     "The setups players are offered, through the running server or, with none, in the program "
     "directory. \"setups SUB-COMMAND --help\" tells each."},
    {"setups list", "[--json]",
     "The setups by number, name and file; a setup whose file is missing or unreadable is marked.\n"
     "  --json   the same as one JSON document (schema \"tessark-setups\", version 1).\n"
     "Exit status: 0."},
    {"setups create",
     "--name NAME [--file PATH]... [--no-sim-folder] [--config ENTRY]... [--installation DIR [--theater "
     "NAME]]",
     "A setup from this machine's installation, as the Add Setup wizard makes it.\n"
     "  --name NAME      the setup's name: its first line and its file name\n"
     "  --file PATH      a file of the installation to check (relative to it, or a full path inside it)\n"
     "  --no-sim-folder  players must not have a \"Sim\" folder\n"
     "  --config ENTRY   a \"set\" entry of the installation's configuration file to check\n"
     "  --installation DIR  a folder holding the simulator's files (with its cobra.cfg, FalconBMS.cfg\n"
     "                      or FalconSP.cfg), for a host without the simulator; by default this\n"
     "                      machine's installation\n"
     "  --theater NAME      the current theater to record with --installation\n"
     "Exit status: 0 written; 1 when a file could not be read or written; 2 for a usage mistake."},
    {"setups import", "FILE",
     "Copies a setup file made elsewhere beside the program, under its name line, and lists it.\n"
     "Exit status: 0; 1 when it could not be written; 2 for a usage mistake."},
    {"setups remove", "N",
     "Takes setup N out of the list; its file stays on disk.\nExit status: 0; 2 for a usage mistake."},
    {"setups verify", "N [--installation DIR [--theater NAME]]",
     "Checks this machine's installation (or the folder --installation names, with --theater its "
     "current theater) against setup N and prints, per failed line, the sentence a player would get.\n"
     "Exit status: 0 all lines match; 1 a line fails, or there is no installation; 2 for a usage mistake."},
};

// Running text wrapped for a terminal; lines that start with blanks (options) stay as written.
QString wrapped(const QString& text, int width = 78) {
    QStringList out;
    for (const QString& line : text.split('\n')) {
        if (line.startsWith(' ') || line.size() <= width) {
            out << line;
            continue;
        }
        QString current;
        for (const QString& word : line.split(' ')) {
            if (!current.isEmpty() && current.size() + 1 + word.size() > width) {
                out << current;
                current.clear();
            }
            current += (current.isEmpty() ? "" : " ") + word;
        }
        out << current;
    }
    return out.join('\n');
}

} // namespace

const std::vector<CommandHelpRow>& commandHelpRows() {
    return kRows;
}

bool isOperatorCommand(const QString& word) {
    for (const CommandHelpRow& row : kRows)
        if (word == row.words) return true;
    return false;
}

std::optional<QString> commandHelp(const QStringList& words) {
    if (!words.contains("--help") && !words.contains("-h")) return std::nullopt;
    const CommandHelpRow* best = nullptr;
    for (const CommandHelpRow& row : kRows) {
        const QStringList rowWords = QString(row.words).split(' ');
        if (words.mid(0, rowWords.size()) == rowWords &&
            (!best || rowWords.size() > QString(best->words).count(' ') + 1))
            best = &row;
    }
    if (!best) return std::nullopt;
    QString text = QString("Usage: %1 [--dir DIR] %2").arg(kExecutableName, best->words);
    if (*best->synopsis) text += QString(" ") + best->synopsis;
    return text + "\n\n" + wrapped(best->text) + "\n";
}

QString commandSynopses() {
    QString text;
    for (const CommandHelpRow& row : kRows)
        if (QString(row.words) != "setups")
            text += QString("%1 %2\n").arg(row.words, row.synopsis).trimmed() + "\n";
    return text;
}
