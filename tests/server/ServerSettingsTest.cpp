// The server's own settings file as an operator writes it: every key of the commented file the
// package installs, mistakes named by line, and what a reload may and may not change.
#include "server/ServerSettings.h"
#include "support/Files.h"

#include <QRegularExpression>
#include <QTemporaryDir>
#include <gmock/gmock.h>

#ifndef Q_OS_WIN
#include <sys/stat.h>
#endif

using ::testing::HasSubstr;

namespace {

SettingsReading readText(const QTemporaryDir& dir, const QByteArray& text) {
    return readServerSettings(writeFile(dir.filePath("tessark-server.conf"), text), true, dir.path() + "/");
}

} // namespace

TEST(ServerSettings, TheShippedFileNamesEveryKeyWithItsDefault) {
    QTemporaryDir dir;
    QByteArray shipped = readFile(TESSARK_SOURCE_DIR "/cmake/linux/tessark-server.conf");
    ASSERT_FALSE(shipped.isEmpty());
    // Every "#key = value" line taken as written: each must be a known key, and the values the
    // defaults the program has without the file.
    const QString uncommented = QString(shipped).replace(
        QRegularExpression(R"(^#(\S+ =))", QRegularExpression::MultilineOption), "\\1");
    const SettingsReading reading = readText(dir, uncommented.toUtf8());
    EXPECT_TRUE(reading.warnings.isEmpty()) << reading.warnings.join('\n').toStdString();
    EXPECT_TRUE(reading.errors.isEmpty()) << reading.errors.join('\n').toStdString();
    const ServerSettings defaults =
        readServerSettings(dir.filePath("none.conf"), false, dir.path() + "/").settings;
    const ServerSettings& read = reading.settings;
    for (PortRole role : kPortRoles) {
        EXPECT_EQ(read.listenPoint(role).port, defaults.listenPoint(role).port);
        EXPECT_EQ(read.listenPoint(role).address, defaults.listenPoint(role).address);
    }
    EXPECT_EQ(read.log.level, defaults.log.level);
    EXPECT_EQ(read.log.maxFileBytes, defaults.log.maxFileBytes);
    EXPECT_EQ(read.log.keptFiles, defaults.log.keptFiles);
    EXPECT_EQ(read.access.idleGraceSeconds, defaults.access.idleGraceSeconds);
    EXPECT_EQ(read.access.perAddressSlots, defaults.access.perAddressSlots);
    EXPECT_EQ(read.access.broadcastBytesPerSecond, defaults.access.broadcastBytesPerSecond);
    EXPECT_EQ(read.access.silenceLimitSeconds, defaults.access.silenceLimitSeconds);
    EXPECT_EQ(read.access.banFile, defaults.access.banFile);
    EXPECT_EQ(read.files.setupFileBytes, defaults.files.setupFileBytes);
    EXPECT_EQ(read.files.iniFileBytes, defaults.files.iniFileBytes);
}

TEST(ServerSettings, ValuesAreReadAsOperatorsWriteThemAndMistakesNameTheirLine) {
    QTemporaryDir dir;
    SettingsReading reading =
        readText(dir, "; a comment\n[LISTEN]\nPlayers = 10.8.0.1:6555   # the VPN only\n"
                      "awacs=[::1]:6556\nsims = \"7557\"\n[log]\nfile = ops.log\n"
                      "max-size = 512 KiB\n[access]\nallow-awacs = 10.8.0.0/24, 192.168.1.7\n");
    ASSERT_TRUE(reading.ok()) << reading.errors.join('\n').toStdString();
    const ServerSettings& s = reading.settings;
    EXPECT_EQ(s.listenPoint(PortRole::Players).text(), "10.8.0.1:6555");
    EXPECT_EQ(s.listenPoint(PortRole::Awacs).text(), "[::1]:6556");
    EXPECT_EQ(s.listenPoint(PortRole::Sims).text(), "*:7557");
    EXPECT_EQ(s.log.file, dir.path() + "/ops.log");
    EXPECT_EQ(s.log.maxFileBytes, 512 * 1024);
    const QList<Network>& allowed = s.access.allow[portIndex(PortRole::Awacs)];
    ASSERT_EQ(allowed.size(), 2);
    EXPECT_TRUE(QHostAddress("10.8.0.99").isInSubnet(allowed[0]));
    EXPECT_TRUE(QHostAddress("192.168.1.7").isInSubnet(allowed[1]));
    EXPECT_FALSE(QHostAddress("192.168.1.8").isInSubnet(allowed[1]));

    reading = readText(dir, "[listen]\nplayers = 70000\n[log]\nlevel=chatty\nthis is no setting\n[access]\n"
                            "per-address = -1\nallow-sims = 10.0.0.0/99\n[nonsense]\nkey = 1\n");
    EXPECT_THAT(reading.errors.join('\n').toStdString(), HasSubstr("line 2: [listen] players = 70000"));
    EXPECT_THAT(reading.errors.join('\n').toStdString(), HasSubstr("line 4: [log] level = chatty"));
    EXPECT_THAT(reading.errors.join('\n').toStdString(), HasSubstr("line 5: \"this is no setting\""));
    EXPECT_THAT(reading.errors.join('\n').toStdString(), HasSubstr("line 7: [access] per-address = -1"));
    EXPECT_THAT(reading.errors.join('\n').toStdString(), HasSubstr("line 8: [access] allow-sims"));
    EXPECT_EQ(reading.warnings.size(), 1);
    EXPECT_THAT(reading.warnings.join('\n').toStdString(), HasSubstr("line 10: unknown key [nonsense] key"));

    // A reload keeps the listeners where they are; the change is named.
    const ServerSettings running = readText(dir, "[listen]\nplayers = 5555\n").settings;
    const ServerSettings changed = readText(dir, "[listen]\nplayers = 127.0.0.1:5555\n").settings;
    const QStringList needRestart = settingsNeedingRestart(running, changed);
    ASSERT_EQ(needRestart.size(), 1);
    EXPECT_THAT(needRestart.front().toStdString(), HasSubstr("[listen] players"));
    EXPECT_TRUE(settingsNeedingRestart(running, running).isEmpty());

#ifndef Q_OS_WIN
    // A pipe in the file's place is refused, not waited on.
    const QString pipe = dir.filePath("pipe.conf");
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    reading = readServerSettings(pipe, true, dir.path() + "/");
    EXPECT_THAT(reading.errors.join('\n').toStdString(), HasSubstr("not a regular file"));
#endif
}
