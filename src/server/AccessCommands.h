#pragma once
// The operator's door on the command line, answered by the running server:
//
//   kick player|awacs|sim SLOT     one peer's connection ends as if it had left
//   kick ai-spy                    the AI Spy's link
//   kick ADDRESS[/PREFIX]          every connection from there
//   ban ADDRESS[/PREFIX] [--for DURATION] [--why TEXT]
//   unban ADDRESS[/PREFIX]
//   bans
#include "server/ControlChannel.h"

#include <QStringList>

#include <optional>

class Server;

// The answer to an access command, or none when the words are no access command.
std::optional<ControlAnswer> answerAccessCommand(Server& server, const QStringList& words);

// "90s", "30m", "2h", "7d", "1w", "1h30m": seconds; none for anything else.
std::optional<qint64> parseDuration(const QString& text);
