#include "net/BanList.h"

#include "net/PeerAddress.h"

#include <QRegularExpression>

namespace {
constexpr char kHeader[] = "# Tessark Server's bans, one a line: NETWORK forever|until TIME (UTC) [why].\n"
                           "# The ban, unban and bans commands keep this file; an edit by hand takes\n"
                           "# effect on the next reload or start.\n";
// A line longer than this is no ban (a damaged file); so is a reason with control bytes.
constexpr qsizetype kMaxLineChars = 1024;

int fullPrefix(const QHostAddress& address) {
    return address.protocol() == QAbstractSocket::IPv6Protocol ? 128 : 32;
}

QString oneLine(QString text) {
    for (QChar& c : text)
        if (c.category() == QChar::Other_Control) c = ' ';
    return text.simplified();
}
// An IPv4 peer of a dual-stack socket reads as ::ffff:a.b.c.d: a network written so means the
// IPv4 one. Other IPv6 addresses stay as they are (:: is no 0.0.0.0).
std::optional<Network> v4MappedAsV4(const QHostAddress& address, int prefix) {
    const Q_IPV6ADDR bytes = address.toIPv6Address();
    for (int i = 0; i < 10; ++i)
        if (bytes[i] != 0) return std::nullopt;
    if (bytes[10] != 0xff || bytes[11] != 0xff || prefix < 96) return std::nullopt;
    const quint32 v4 =
        (quint32(bytes[12]) << 24) | (quint32(bytes[13]) << 16) | (quint32(bytes[14]) << 8) | bytes[15];
    return Network{QHostAddress(v4), prefix - 96};
}
} // namespace

std::optional<Network> parseNetwork(const QString& text) {
    const QString word = text.trimmed();
    // Digits, hex digits, the separators and a prefix: nothing else (a NUL, a zone) is part of one.
    static const QRegularExpression form(R"(^[0-9A-Fa-f:.]+(/[0-9]{1,3})?$)");
    if (!form.match(word).hasMatch()) return std::nullopt;
    const qsizetype slash = word.indexOf('/');
    QHostAddress address;
    if (!address.setAddress(slash < 0 ? word : word.left(slash))) return std::nullopt;
    int prefix = fullPrefix(address);
    if (slash >= 0) {
        bool ok = false;
        prefix = word.mid(slash + 1).toInt(&ok);
        if (!ok || prefix < 0 || prefix > fullPrefix(address)) return std::nullopt;
    }
    if (address.protocol() == QAbstractSocket::IPv6Protocol)
        if (const std::optional<Network> v4 = v4MappedAsV4(address, prefix)) {
            address = v4->first;
            prefix = v4->second;
        }
    // The network's own address: the host bits of 192.168.1.7/24 do not matter.
    const Network network = QHostAddress::parseSubnet(address.toString() + "/" + QString::number(prefix));
    if (network.first.isNull()) return std::nullopt;
    return network;
}

QString networkText(const Network& network) {
    if (network.second == fullPrefix(network.first)) return network.first.toString();
    return network.first.toString() + "/" + QString::number(network.second);
}

bool networkHolds(const Network& network, const QHostAddress& address) {
    return plainAddress(address).isInSubnet(network);
}

const Ban* BanList::find(const QHostAddress& address, const QDateTime& now) const {
    const QHostAddress plain = plainAddress(address);
    for (const Ban& ban : bans_)
        if ((ban.forGood() || ban.until > now) && plain.isInSubnet(ban.network)) return &ban;
    return nullptr;
}

bool BanList::add(const Ban& ban) {
    for (Ban& held : bans_)
        if (held.network == ban.network) {
            held = ban;
            return true;
        }
    if (bans_.size() >= kMaxBans) return false;
    bans_.append(ban);
    return true;
}

bool BanList::remove(const Network& network) {
    return bans_.removeIf([&](const Ban& ban) { return ban.network == network; }) > 0;
}

int BanList::dropExpired(const QDateTime& now) {
    return static_cast<int>(
        bans_.removeIf([&](const Ban& ban) { return !ban.forGood() && ban.until <= now; }));
}

BanText parseBans(const QByteArray& text) {
    BanText read;
    BanList list;
    int number = 0;
    for (const QByteArray& raw : text.split('\n')) {
        ++number;
        const QString line = QString::fromUtf8(raw).trimmed();
        if (line.isEmpty() || line.startsWith('#')) continue;
        const auto problem = [&](const QString& what) {
            read.problems << QString("line %1: %2").arg(number).arg(what);
        };
        if (line.size() > kMaxLineChars) {
            problem("too long for a ban");
            continue;
        }
        static const QRegularExpression blanks(R"(\s+)");
        const QStringList words = line.split(blanks);
        Ban ban;
        const std::optional<Network> network = parseNetwork(words.value(0));
        if (!network) {
            problem(QString("\"%1\" is no address or network").arg(words.value(0).left(64)));
            continue;
        }
        ban.network = *network;
        qsizetype whyFrom = 2;
        if (words.value(1) == "until") {
            ban.until = QDateTime::fromString(words.value(2), Qt::ISODate);
            if (!ban.until.isValid()) {
                problem(QString("\"%1\" is no time (2026-11-26T18:00:00Z)").arg(words.value(2).left(64)));
                continue;
            }
            // Whole seconds, as the file keeps them.
            ban.until = ban.until.toUTC().addMSecs(-ban.until.time().msec());
            whyFrom = 3;
        } else if (words.value(1) != "forever") {
            problem("expected forever or until TIME after the network");
            continue;
        }
        ban.why = oneLine(words.mid(whyFrom).join(' '));
        if (!list.add(ban)) {
            problem(QString("more than %1 bans: the rest are not read").arg(BanList::kMaxBans));
            break;
        }
    }
    read.bans = list.entries();
    return read;
}

QByteArray formatBans(const QList<Ban>& bans) {
    QByteArray text = kHeader;
    for (const Ban& ban : bans) {
        QString line =
            networkText(ban.network) + " " +
            (ban.forGood() ? QString("forever") : "until " + ban.until.toUTC().toString(Qt::ISODate));
        const QString why = oneLine(ban.why);
        if (!why.isEmpty()) line += " " + why;
        text += line.toUtf8() + "\n";
    }
    return text;
}
