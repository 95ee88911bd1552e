#include "server/AccessCommands.h"

#include "server/AccessControl.h"
#include "server/Server.h"

#include <QRegularExpression>

namespace {

constexpr qint64 kLongestBanSeconds = 10LL * 366 * 24 * 3600;

ControlAnswer usage(const QString& why) {
    return {2, {}, why + "\n"};
}

std::optional<PortRole> portNamed(const QString& word) {
    if (word == "player") return PortRole::Players;
    if (word == "awacs") return PortRole::Awacs;
    if (word == "sim") return PortRole::Sims;
    if (word == "ai-spy") return PortRole::AiSpy;
    return std::nullopt;
}

QString untilText(const Ban& ban, const QDateTime& now) {
    if (ban.forGood()) return "for good";
    const qint64 left = now.secsTo(ban.until);
    const QString in = left >= 86400  ? QString("%1d %2h").arg(left / 86400).arg(left % 86400 / 3600)
                       : left >= 3600 ? QString("%1h %2m").arg(left / 3600).arg(left % 3600 / 60)
                                      : QString("%1m %2s").arg(left / 60).arg(left % 60);
    return "until " + ban.until.toUTC().toString("yyyy-MM-dd HH:mm:ss") + " UTC (" + in + " left)";
}

ControlAnswer kick(Server& server, const QStringList& words) {
    AccessControl& access = server.access();
    if (const std::optional<PortRole> port = portNamed(words.value(1))) {
        int slot = 0;
        if (*port != PortRole::AiSpy) {
            bool ok = false;
            slot = words.value(2).toInt(&ok);
            if (!ok || words.size() != 3)
                return usage("Usage: kick player|awacs|sim SLOT, kick ai-spy or kick ADDRESS");
        } else if (words.size() != 2) {
            return usage("Usage: kick ai-spy");
        }
        const QString who = access.describe({*port, slot});
        if (who.isEmpty() || !access.kick({*port, slot}))
            return {1, {}, "No such connection: " + words.mid(1).join(' ') + "\n"};
        return {0, "Kicked " + who + ".\n", {}};
    }
    const std::optional<Network> network = words.size() == 2 ? parseNetwork(words[1]) : std::nullopt;
    if (!network) return usage("Usage: kick player|awacs|sim SLOT, kick ai-spy or kick ADDRESS[/PREFIX]");
    QStringList kicked;
    for (const PeerConnection& peer : access.connectionsIn(*network)) {
        const QString who = access.describe(peer);
        if (access.kick(peer)) kicked << "Kicked " + who + ".";
    }
    if (kicked.isEmpty()) return {1, {}, "No connection from " + networkText(*network) + ".\n"};
    return {0, kicked.join('\n') + "\n", {}};
}

ControlAnswer ban(Server& server, const QStringList& words) {
    const std::optional<Network> network = parseNetwork(words.value(1));
    if (!network) return usage("Usage: ban ADDRESS[/PREFIX] [--for DURATION] [--why TEXT]");
    QDateTime until;
    QString why;
    for (qsizetype i = 2; i < words.size(); ++i) {
        if (words[i] == "--for" && i + 1 < words.size()) {
            const std::optional<qint64> seconds = parseDuration(words[++i]);
            if (!seconds || *seconds <= 0 || *seconds > kLongestBanSeconds)
                return usage("A ban lasts from 1s to ten years: --for 90s, 30m, 12h, 7d, 2w, 1h30m");
            until = QDateTime::currentDateTimeUtc().addSecs(*seconds);
        } else if (words[i] == "--why" && i + 1 < words.size()) {
            why = words.mid(i + 1).join(' ');
            break;
        } else {
            return usage("Unknown option " + words[i] +
                         "; usage: ban ADDRESS[/PREFIX] [--for DURATION] [--why TEXT]");
        }
    }
    const AccessControl::BanOutcome outcome = server.access().ban(*network, until, why);
    if (!outcome.added)
        return {1,
                {},
                QString("The ban list is full (%1 bans): ban whole networks, or unban some first.\n")
                    .arg(BanList::kMaxBans)};
    const Ban* held = nullptr;
    const QList<Ban> bans = server.access().bans();
    for (const Ban& ban : bans)
        if (ban.network == *network) held = &ban;
    ControlAnswer answer;
    answer.out = QString("Banned %1 %2; %3 connection(s) ended.\n")
                     .arg(networkText(*network),
                          held ? untilText(*held, QDateTime::currentDateTimeUtc()) : QString("for good"))
                     .arg(outcome.connectionsEnded);
    if (!outcome.fileError.isEmpty()) {
        answer.status = 1;
        answer.err = QString("The ban holds until the server stops: %1 could not be written (%2).\n")
                         .arg(server.access().banFile(), outcome.fileError);
    }
    return answer;
}

ControlAnswer unban(Server& server, const QStringList& words) {
    const std::optional<Network> network = words.size() == 2 ? parseNetwork(words[1]) : std::nullopt;
    if (!network) return usage("Usage: unban ADDRESS[/PREFIX]");
    QString fileError;
    if (!server.access().unban(*network, &fileError))
        return {1, {}, "No ban on " + networkText(*network) + " (\"bans\" lists them).\n"};
    ControlAnswer answer{0, "Unbanned " + networkText(*network) + ".\n", {}};
    if (!fileError.isEmpty()) {
        answer.status = 1;
        answer.err = QString("Unbanned until the server stops: %1 could not be written (%2).\n")
                         .arg(server.access().banFile(), fileError);
    }
    return answer;
}

ControlAnswer listBans(Server& server, const QStringList& words) {
    if (words.size() != 1) return usage("Usage: bans");
    const QList<Ban> bans = server.access().bans();
    if (bans.isEmpty()) return {0, "No bans.\n", {}};
    const QDateTime now = QDateTime::currentDateTimeUtc();
    QString out;
    for (const Ban& ban : bans) {
        out += networkText(ban.network).leftJustified(24) + " " + untilText(ban, now);
        if (!ban.why.isEmpty()) out += "  " + ban.why;
        out += "\n";
    }
    return {0, out, {}};
}

} // namespace

std::optional<qint64> parseDuration(const QString& text) {
    static const QRegularExpression form(R"(^(?:(\d{1,6})([smhdw]))+$)");
    static const QRegularExpression part(R"((\d{1,6})([smhdw]))");
    if (!form.match(text).hasMatch()) return std::nullopt;
    qint64 seconds = 0;
    for (const QRegularExpressionMatch& m : part.globalMatch(text)) {
        const qint64 n = m.captured(1).toLongLong();
        const QChar unit = m.captured(2).at(0);
        seconds += n * (unit == 's'   ? 1
                        : unit == 'm' ? 60
                        : unit == 'h' ? 3600
                        : unit == 'd' ? 86400
                                      : 604800);
    }
    return seconds;
}

std::optional<ControlAnswer> answerAccessCommand(Server& server, const QStringList& words) {
    const QString command = words.value(0);
    if (command == "kick") return kick(server, words);
    if (command == "ban") return ban(server, words);
    if (command == "unban") return unban(server, words);
    if (command == "bans") return listBans(server, words);
    return std::nullopt;
}
