// The operator's log of the real executable through an evening, its settings file, and the
// machine-readable status: what an operator on an always-on host reads in the journal (standard
// error here) or, on Windows, in the log file in the program directory.
#include "RealServer.h"
#include "WindowsSession.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpServer>
#include <gmock/gmock.h>

using ::testing::HasSubstr;

namespace {

// The log as it grows: standard error on Linux, the program directory's log file on Windows,
// where a program for the desktop has no console.
class LogWatch {
  public:
    LogWatch(QProcess& process, const RealServer& server) : process_(process), server_(server) {}
    const std::string& text() {
#ifdef Q_OS_WIN
        text_ = readFile(server_.file("tessark-server.log")).replace("\r\n", "\n").toStdString();
#else
        text_ += process_.readAllStandardError().toStdString();
#endif
        return text_;
    }
    // Waits until the log holds the text after what an earlier wait found.
    bool waitFor(const std::string& wanted, std::chrono::milliseconds timeout = 10s) {
        const bool found =
            pumpUntil([&] { return text().find(wanted, from_) != std::string::npos; }, timeout);
        if (found) from_ = text_.find(wanted, from_) + wanted.size();
        return found;
    }

  private:
    QProcess& process_;
    const RealServer& server_;
    std::string text_;
    size_t from_ = 0;
};

// The executable run for one operator's command; its standard output.
std::string command(const RealServer& server, const QStringList& words, int* status = nullptr) {
    QProcess process;
    server.start(process, false, QStringList{"--dir", server.dir.path()} + words);
    pumpUntil([&] { return process.state() == QProcess::NotRunning; }, 30s);
    if (status) *status = process.exitCode();
    return process.readAllStandardOutput().toStdString();
}

void expectSchema(const QJsonObject& status) {
    EXPECT_EQ(status["schema"].toString(), "tessark-status");
    EXPECT_EQ(status["version"].toInt(), 1);
    const QJsonObject program = status["program"].toObject();
    EXPECT_EQ(program["title"].toString(), "QUILLON v1.1.0b");
    EXPECT_TRUE(program["uptime"].isDouble());
    EXPECT_TRUE(QDateTime::fromString(program["started"].toString(), Qt::ISODate).isValid());
    for (const QJsonValue& c : status["connections"].toArray()) {
        const QJsonObject connection = c.toObject();
        EXPECT_TRUE(connection["kind"].isString() && connection["address"].isString());
        for (const char* number : {"slot", "connected", "queued", "dropped"})
            EXPECT_TRUE(connection[number].isDouble()) << number;
        EXPECT_TRUE(connection["held"].isBool());
    }
    const QJsonObject counters = status["counters"].toObject();
    for (const char* number : {"messagesRelayed", "bytesSent", "uptime"})
        EXPECT_TRUE(counters[number].isDouble()) << number;
    EXPECT_TRUE(counters["connectionsRefused"].isObject());
    EXPECT_TRUE(counters["runtimeErrors"].isObject());
}

const char* const kEvening = "Evening\r\nCURSET@BMS\r\nCURTHE@Korea\r\n";
const char* const kNight = "Night\r\nCURSET@BMS\r\n";

QString setupList(const RealServer& server, const QStringList& names) {
    QString ini = QString("[SETUPLIST]\r\nNUM=%1\r\n").arg(names.size());
    for (qsizetype i = 0; i < names.size(); ++i)
        ini += QString("[SETUPLIST%1]\r\nFNAME=%2\r\n")
                   .arg(i + 1)
                   .arg(QDir::toNativeSeparators(server.file(names[i])));
    return ini;
}

} // namespace

TEST(OperatorLog, AnEveningIsToldLineByLineAndStatusJsonFollowsItsSchema) {
    RealServer server;
    writeFile(server.file("Evening.stp"), kEvening);
    writeFile(server.file("tessark.ini"), setupList(server, {"Evening.stp"}).toLatin1());
    QProcess process;
    server.start(process);
    LogWatch log(process, server);
    auto aiSpy = RealServer::connectAiSpy();
    ASSERT_TRUE(aiSpy);
    EXPECT_TRUE(log.waitFor("run: Tessark Server 1.1.0 starting in "));
    EXPECT_TRUE(log.waitFor("setups: setup catalogue: 1 listed in "));
    EXPECT_TRUE(log.waitFor("run: listening for player connections on every address port 5555"));
    EXPECT_TRUE(log.waitFor("run: listening for AI Spy connections on every address port 5554"));
    EXPECT_TRUE(log.waitFor("peers: AI Spy link up (127.0.0.1:"));
    Peer secondAiSpy(5554); // one link at a time
    EXPECT_TRUE(log.waitFor("access: AI Spy connection from 127.0.0.1 refused: the AI Spy link is in use"));

    Peer player(5555);
    player.send("VALIDR", "Viper One");
    player.send("GETVLO", "1");
    player.send("VERFOK");
    EXPECT_EQ(player.take(6).size(), 6u); // PLSNEW, VLRDIM, 2 VLSADD, VLDONE, PLSUPD
    Peer awacs(5556);
    awacs.send("NAWACS");
    EXPECT_EQ(player.take(1).at(0).text(), "AWANUM1");
    EXPECT_TRUE(log.waitFor("peers: player connection 1 (127.0.0.1:"));
    EXPECT_TRUE(log.waitFor(") registered as \"Viper One\" (player 1)"));
    EXPECT_TRUE(log.waitFor("\"Viper One\": verified (O) against setup \"Evening\""));
    EXPECT_TRUE(log.waitFor("peers: AWACS client connection 1 (127.0.0.1:"));
    EXPECT_TRUE(log.waitFor(") registered (1 AWACS clients listed)"));

    // The machine-readable status, from a second process.
    const QJsonObject status =
        QJsonDocument::fromJson(command(server, {"status", "--json"}).c_str()).object();
    expectSchema(status);
    const QJsonArray players = status["players"].toArray();
    ASSERT_EQ(players.size(), 1);
    const QJsonObject viper = players[0].toObject();
    EXPECT_EQ(viper["name"].toString(), "Viper One");
    EXPECT_EQ(viper["mark"].toString(), "O");
    EXPECT_EQ(viper["state"].toString(), "verified");
    EXPECT_EQ(viper["setup"].toString(), "Evening");
    EXPECT_EQ(viper["slot"].toInt(), 1);
    EXPECT_THAT(viper["address"].toString().toStdString(), HasSubstr("127.0.0.1:"));
    EXPECT_EQ(status["awacs"].toObject()["count"].toInt(), 1);
    EXPECT_TRUE(status["aiSpy"].toObject()["connected"].toBool());
    EXPECT_EQ(status["connections"].toArray().size(), 3); // player, AWACS client, AI Spy

    // A second setup joins the list: a reload reads it (SIGHUP; on Windows the reload command).
    writeFile(server.file("Night.stp"), kNight);
    writeFile(server.file("tessark.ini"), setupList(server, {"Evening.stp", "Night.stp"}).toLatin1());
#ifdef Q_OS_WIN
    command(server, {"reload"});
    EXPECT_TRUE(log.waitFor("run: reloading (the reload command)"));
#else
    ::kill(static_cast<pid_t>(process.processId()), SIGHUP);
    EXPECT_TRUE(log.waitFor("run: reloading (SIGHUP)"));
#endif
    EXPECT_TRUE(log.waitFor("setups: setup catalogue: 2 listed in "));
    player.send("GETVLA");
    EXPECT_EQ(player.takeTexts(5).at(1), "SLRDIM2");

    player.send("VALEND");
    EXPECT_TRUE(log.waitFor("peers: player connection 1 (127.0.0.1:"));
    EXPECT_TRUE(log.waitFor(") left (VALEND) after 00:00:"));
#ifdef Q_OS_WIN
    pumpUntil([&] { return windows_session::visibleWindow(process.processId(), "QUILLON v1.1.0b"); }, 10s);
    EXPECT_TRUE(windows_session::endSession(process.processId()));
    EXPECT_TRUE(log.waitFor("run: shutting down (the end of the Windows session)"));
#else
    terminate(process);
    EXPECT_TRUE(log.waitFor("run: shutting down (SIGTERM)"));
#endif
    EXPECT_TRUE(log.waitFor("run: stopped"));
    EXPECT_TRUE(awacs.waitForDisconnect());
    EXPECT_EQ(awacs.inbox().back().text(), "DISCON");
    ASSERT_TRUE(hasEnded(process));
    EXPECT_EQ(process.exitCode(), 0);
}

#ifndef Q_OS_WIN
TEST(OperatorLog, APortHeldByAnotherProgramOrASettingThatDoesNotReadIsNamedAndNothingStarts) {
    RealServer server;
    {
        QTcpServer holder; // another program on the AWACS port
        ASSERT_TRUE(holder.listen(QHostAddress::Any, 5556));
        QProcess process;
        server.start(process);
        ASSERT_TRUE(hasEnded(process));
        EXPECT_EQ(process.exitCode(), 1);
        const std::string err = process.readAllStandardError().toStdString();
        EXPECT_THAT(err,
                    HasSubstr("cannot listen for AWACS client connections on port 5556 on every address: "
                              "another program holds it"));
        EXPECT_THAT(err, HasSubstr("Run-time error '10048':")); // the box, as the program has always said it
    }

    writeFile(server.file("tessark-server.conf"), "# ours\n[log]\nlevel = loud\n[colours]\nsky = blue\n");
    QProcess process;
    server.start(process);
    ASSERT_TRUE(hasEnded(process));
    EXPECT_EQ(process.exitCode(), 1);
    const std::string err = process.readAllStandardError().toStdString();
    EXPECT_THAT(
        err,
        HasSubstr("tessark-server.conf line 3: [log] level = loud: expected error, warning, info or debug"));
    EXPECT_THAT(err, HasSubstr("tessark-server.conf line 5: unknown key [colours] sky, ignored"));
    EXPECT_THAT(err, HasSubstr("not started"));

    // A file named with --config must be there.
    server.start(process, false, {"--config", server.file("missing.conf")});
    ASSERT_TRUE(hasEnded(process));
    EXPECT_EQ(process.exitCode(), 1);
    EXPECT_THAT(process.readAllStandardError().toStdString(), HasSubstr("missing.conf: cannot be read"));
}

TEST(OperatorLog, ALogFileIsCappedRotatedAndReopenedAndDebugTellsWhatWasSkipped) {
    RealServer server;
    writeFile(server.file("ops.conf"), "[log]\nfile = server.log\nlevel = debug\nmax-size = 1 KiB\nkeep = 1\n"
                                       "[listen]\nplayers = 127.0.0.1:5555\n");
    QProcess process;
    server.start(process, false, {"--config", server.file("ops.conf")});
    auto aiSpy = RealServer::connectAiSpy();
    ASSERT_TRUE(aiSpy);
    LogWatch log(process, server);
    EXPECT_TRUE(log.waitFor("run: listening for player connections on 127.0.0.1 port 5555"));

    // With logging off a statement that fails is skipped: a debug line says which.
    Peer player(5555);
    player.sendRaw(QByteArray(1, '\0'));
    EXPECT_TRUE(
        log.waitFor("trap: skipped: TskSrvForm1::ParseData - Error: 5 - Invalid procedure call or argument"));

    // Enough comings and goings to pass the cap: the full file moves aside as .1, and no file
    // grows far past the cap.
    for (int i = 0; i < 40; ++i)
        Peer(5556).close();
    EXPECT_TRUE(pumpUntil([&] { return QFile::exists(server.file("server.log.1")); }));
    EXPECT_LE(QFileInfo(server.file("server.log")).size(), 1024 + 256);
    EXPECT_LE(QFileInfo(server.file("server.log.1")).size(), 1024 + 256);

    // logrotate moves the file away and sends SIGHUP: the log goes on in a new file.
    QFile::rename(server.file("server.log"), server.file("server.log.moved"));
    ::kill(static_cast<pid_t>(process.processId()), SIGHUP);
    EXPECT_TRUE(pumpUntil([&] {
        const QString text = readFile(server.file("server.log"));
        return text.contains("run: reloading (SIGHUP)") && text.contains("setups: setup catalogue:");
    }));
    // A reload that meets a mistake keeps the running settings and says so to whoever asked.
    writeFile(server.file("ops.conf"), "[log]\nfile = server.log\nlevel = loud\n");
    int status = 0;
    command(server, {"reload"}, &status);
    EXPECT_EQ(status, 1);
    EXPECT_TRUE(pumpUntil(
        [&] { return readFile(server.file("server.log")).contains("the settings were not changed"); }));
    terminate(process);
    ASSERT_TRUE(hasEnded(process));
    EXPECT_EQ(process.exitCode(), 0);
    EXPECT_TRUE(readFile(server.file("server.log")).contains("run: stopped"));
    EXPECT_TRUE(readFile(server.file("server.log.moved")).contains(" info    "));
}
#endif
