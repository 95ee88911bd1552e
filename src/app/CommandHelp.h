#pragma once
// What each operator's command says for itself: `tessark-server COMMAND --help`, and the
// list in `tessark-server --help`. Commands and sub-commands ("setups create") are rows of one
// table; a command's help is answered here, without a server.
#include <QString>
#include <QStringList>

#include <optional>

struct CommandHelpRow {
    const char* words;    // "status", "setups create"
    const char* synopsis; // what follows the words: "[--json]"
    const char* text;     // what it does, its options, its exit statuses
};

// Every row, in the order --help lists them.
const std::vector<CommandHelpRow>& commandHelpRows();

// True for the words that start an operator's command.
bool isOperatorCommand(const QString& word);

// The help text when the command's words ask for it (--help or -h anywhere after the command):
// the row of the longest words that the command begins with.
std::optional<QString> commandHelp(const QStringList& words);

// "status [--json]\nexit\n...", for the program's own --help.
QString commandSynopses();
