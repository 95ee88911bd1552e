#include "server/ServerSettings.h"

#include "basics/SettingsFile.h"
#include "net/BanList.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <functional>
#include <map>

namespace {

std::optional<ListenPoint> parseListenPoint(const QString& text) {
    static const QRegularExpression form(R"(^(?:(\*|[^\[\]:]+|\[[0-9a-fA-F:.]+\]):)?(\d{1,5})$)");
    const QRegularExpressionMatch match = form.match(text.trimmed());
    if (!match.hasMatch()) return std::nullopt;
    bool ok = false;
    const uint port = match.captured(2).toUInt(&ok);
    if (!ok || port > 65535) return std::nullopt;
    QString host = match.captured(1);
    ListenPoint point{QHostAddress::Any, static_cast<quint16>(port)};
    if (host.isEmpty() || host == "*") return point;
    if (host.startsWith('[')) host = host.mid(1, host.size() - 2);
    if (!point.address.setAddress(host)) return std::nullopt;
    return point;
}

std::optional<int> parseCount(const QString& text, int most) {
    bool ok = false;
    const int n = text.trimmed().toInt(&ok);
    if (!ok || n < 0 || n > most) return std::nullopt;
    return n;
}

// "192.168.1.0/24, 10.8.0.7 2001:db8::/32": networks, a bare address being a network of one.
std::optional<QList<Network>> parseNetworks(const QString& text) {
    QList<Network> networks;
    for (const QString& word : text.split(QRegularExpression(R"([\s,]+)"), Qt::SkipEmptyParts)) {
        const std::optional<Network> network = parseNetwork(word);
        if (!network) return std::nullopt;
        networks << *network;
    }
    return networks;
}

QString inDir(const QString& programDir, const QString& name) {
    if (name.isEmpty() || QDir::isAbsolutePath(name)) return name;
    return programDir + name;
}

struct Reader {
    SettingsReading& reading;
    const QString& programDir;
    QString file;

    void bad(const SettingsEntry& e, const QString& expected) {
        reading.errors << QString("%1 line %2: [%3] %4 = %5: %6")
                              .arg(file)
                              .arg(e.line)
                              .arg(e.section, e.key, e.value, expected);
    }
    template <typename T>
    void set(const SettingsEntry& e, std::optional<T> value, T& into, const QString& expected) {
        if (value)
            into = *value;
        else
            bad(e, expected);
    }
};

using Apply = std::function<void(Reader&, const SettingsEntry&, ServerSettings&)>;

const std::map<QString, Apply>& keys() {
    static const std::map<QString, Apply> table = [] {
        std::map<QString, Apply> t;
        for (PortRole role : kPortRoles) {
            const QString key = portKey(role);
            t["listen/" + key] = [role](Reader& r, const SettingsEntry& e, ServerSettings& s) {
                r.set(e, parseListenPoint(e.value), s.listen[static_cast<size_t>(role)],
                      "expected PORT or ADDRESS:PORT");
            };
            t["access/allow-" + key] = [role](Reader& r, const SettingsEntry& e, ServerSettings& s) {
                r.set(e, parseNetworks(e.value), s.access.allow[static_cast<size_t>(role)],
                      "expected addresses or networks (192.168.1.0/24), separated by commas");
            };
        }
        t["log/level"] = [](Reader& r, const SettingsEntry& e, ServerSettings& s) {
            r.set(e, logLevelNamed(e.value), s.log.level, "expected error, warning, info or debug");
        };
        t["log/file"] = [](Reader& r, const SettingsEntry& e, ServerSettings& s) {
            s.log.file = inDir(r.programDir, e.value);
        };
        t["log/max-size"] = [](Reader& r, const SettingsEntry& e, ServerSettings& s) {
            r.set(e, parseByteSize(e.value), s.log.maxFileBytes,
                  "expected a size such as 10 MiB (0: no limit)");
        };
        t["log/keep"] = [](Reader& r, const SettingsEntry& e, ServerSettings& s) {
            r.set(e, parseCount(e.value, 100), s.log.keptFiles, "expected a number of files from 0 to 100");
        };
        t["access/idle-grace"] = [](Reader& r, const SettingsEntry& e, ServerSettings& s) {
            r.set(e, parseCount(e.value, 86400), s.access.idleGraceSeconds,
                  "expected seconds from 0 (never) to 86400");
        };
        t["access/per-address"] = [](Reader& r, const SettingsEntry& e, ServerSettings& s) {
            r.set(e, parseCount(e.value, 48), s.access.perAddressSlots,
                  "expected a number of connections from 0 (no limit) to 48");
        };
        t["access/broadcast-rate"] = [](Reader& r, const SettingsEntry& e, ServerSettings& s) {
            const std::optional<qint64> rate = parseByteSize(e.value);
            r.set(e, rate && *rate >= 1024 ? rate : std::nullopt, s.access.broadcastBytesPerSecond,
                  "expected bytes a second, at least 1 KiB (such as 256 KiB)");
        };
        t["access/silence-limit"] = [](Reader& r, const SettingsEntry& e, ServerSettings& s) {
            const std::optional<int> seconds = parseCount(e.value, 3600);
            r.set(e, seconds && *seconds >= 1 ? seconds : std::nullopt, s.access.silenceLimitSeconds,
                  "expected seconds from 1 to 3600");
        };
        t["access/ban-file"] = [](Reader& r, const SettingsEntry& e, ServerSettings& s) {
            if (e.value.isEmpty())
                r.bad(e, "expected a file name");
            else
                s.access.banFile = inDir(r.programDir, e.value);
        };
        t["files/max-setup-size"] = [](Reader& r, const SettingsEntry& e, ServerSettings& s) {
            const std::optional<qint64> size = parseByteSize(e.value);
            r.set(e, size && *size >= 1024 ? size : std::nullopt, s.files.setupFileBytes,
                  "expected a size of at least 1 KiB (such as 4 MiB)");
        };
        t["files/max-ini-size"] = [](Reader& r, const SettingsEntry& e, ServerSettings& s) {
            const std::optional<qint64> size = parseByteSize(e.value);
            r.set(e, size && *size >= 1024 ? size : std::nullopt, s.files.iniFileBytes,
                  "expected a size of at least 1 KiB (such as 4 MiB)");
        };
        return t;
    }();
    return table;
}

} // namespace

QString ListenPoint::text() const {
    const QString host = address.protocol() == QAbstractSocket::IPv6Protocol && address != QHostAddress::Any
                             ? "[" + address.toString() + "]"
                         : address == QHostAddress::Any ? QString("*")
                                                        : address.toString();
    return host + ":" + QString::number(port);
}

SettingsReading readServerSettings(const QString& path, bool required, const QString& programDir) {
    SettingsReading reading;
    reading.settings.access.banFile = inDir(programDir, reading.settings.access.banFile);
    if (!required && !QFileInfo::exists(path)) return reading;
    QString why;
    const std::optional<SettingsText> text = readSettingsFile(path, &why);
    if (!text) {
        reading.errors << QString("%1: cannot be read: %2").arg(path, why);
        return reading;
    }
    reading.path = path;
    Reader reader{reading, programDir, path};
    for (const QString& error : text->errors)
        reading.errors << path + " " + error;
    for (const SettingsEntry& entry : text->entries) {
        const auto found = keys().find(entry.section + "/" + entry.key);
        if (found == keys().end()) {
            reading.warnings << QString("%1 line %2: unknown key [%3] %4, ignored")
                                    .arg(path)
                                    .arg(entry.line)
                                    .arg(entry.section, entry.key);
            continue;
        }
        found->second(reader, entry, reading.settings);
    }
    return reading;
}

QStringList settingsNeedingRestart(const ServerSettings& running, const ServerSettings& read) {
    QStringList changed;
    for (PortRole role : kPortRoles) {
        const ListenPoint& was = running.listenPoint(role);
        const ListenPoint& now = read.listenPoint(role);
        if (was.address != now.address || was.port != now.port)
            changed << QString("[listen] %1 (%2 until the next start)").arg(portKey(role), was.text());
    }
    return changed;
}

bool SettingsReading::tell() const {
    for (const QString& warning : warnings)
        qCWarning(lcRun, "%s", qUtf8Printable(warning));
    for (const QString& error : errors)
        qCCritical(lcRun, "%s", qUtf8Printable(error));
    return ok();
}
