// The setup commands on a host that fails them: a full disk, a link planted in the program
// directory. What was there stays whole, and the command says why it did nothing.
#include "setups/SetupCatalogue.h"
#include "setups/commands/SetupCommands.h"
#include "support/Files.h"
#include "support/LogCapture.h"
#include "support/SmallDisk.h"
#include "support/TestServer.h"

#include <QTemporaryDir>
#include <gmock/gmock.h>

using ::testing::HasSubstr;

namespace {

struct Outcome {
    int status;
    std::string out, err;
};

Outcome run(TestServer& ts, const QStringList& args) {
    QString out, err;
    QTextStream outStream(&out), errStream(&err);
    const int status = runSetupCommand(args, ts.server().setups(), ts.dir(), outStream, errStream);
    outStream.flush();
    errStream.flush();
    return {status, out.toStdString(), err.toStdString()};
}

const std::string kEvening = "Evening\r\nCURSET@COB\r\nCURTHE@Korea KTO\r\n";

std::string newerEvening() {
    std::string text = "Evening\r\nCURSET@BMS\r\nCURTHE@Balkans\r\n";
    for (int i = 0; i < 2000; ++i)
        text += "CHKSUM@objects\\file" + std::to_string(i) + ".dat@" + std::to_string(i * 7919) + "\r\n";
    return text;
}

TEST(SetupFilesOnAFaultyHost, AFullDiskChangesNoSetupAndNoListAndTheCommandsSaySo) {
    SMALL_DISK(disk, 1024 * 1024);
    TestServer ts;
    ts.catalogue({{"Evening.stp", kEvening}, {"Other.stp", "Other\r\nCURSET@FF\r\n"}});
    const std::string list = ts.readFile("tessark.ini");
    QTemporaryDir elsewhere;
    const QString newer =
        writeFile(elsewhere.filePath("newer.stp"), QByteArray::fromStdString(newerEvening()));
    const QString third = writeFile(elsewhere.filePath("third.stp"), "Third\r\nCURSET@COB\r\n");
    LogCapture log;
    disk.fill();

    // A newer "Evening": the old file stays whole and nothing is listed twice.
    Outcome o = run(ts, {"import", newer});
    EXPECT_EQ(o.status, 1);
    EXPECT_THAT(o.err, HasSubstr("setups import: run-time error 61: Disk full: "));
    EXPECT_EQ(ts.readFile("Evening.stp"), kEvening);
    EXPECT_EQ(ts.readFile("tessark.ini"), list);
    ASSERT_EQ(ts.server().setups().list().ubound(), 2);
    EXPECT_EQ(log.count("Evening.stp not written: run-time error 61: Disk full"), 1);

    // A removal, or a setup listed where it lies: tessark.ini cannot be written, so it keeps the
    // list it had, and so does the server.
    for (const QStringList& command :
         {QStringList{"remove", "1"}, QStringList{"import", ts.path("Other.stp")}}) {
        o = run(ts, command);
        EXPECT_EQ(o.status, 1) << command.join(' ').toStdString();
        EXPECT_THAT(o.err, HasSubstr("run-time error 61: Disk full: " +
                                     QDir::toNativeSeparators(ts.path("tessark.ini")).toStdString()));
        EXPECT_EQ(ts.readFile("tessark.ini"), list);
        ASSERT_EQ(ts.server().setups().list().ubound(), 2);
        EXPECT_EQ(ts.server().setups().list()[1].name, "Evening");
        EXPECT_EQ(ts.server().setups().list()[2].name, "Other");
    }
    EXPECT_EQ(log.count("the setup list was not saved: run-time error 61"), 2);
    EXPECT_EQ(ts.endsOfProgram(), 0);

    disk.release();
    o = run(ts, {"import", third});
    EXPECT_EQ(o.status, 0) << o.err;
    EXPECT_EQ(ts.server().setups().list().ubound(), 3);
}

TEST(SetupFilesOnAFaultyHost, ALinkPlantedInTheProgramDirectoryIsNotWrittenThrough) {
#ifdef Q_OS_WIN
    GTEST_SKIP() << "symbolic links need rights a test does not have on Windows";
#else
    TestServer ts{kIniLogOff};
    QTemporaryDir elsewhere;
    const QString victim = writeFile(elsewhere.filePath("shadow"), "root:*:19000:0:99999:7:::\n");
    ASSERT_TRUE(QFile::link(victim, ts.path("Evening.stp")));
    const QString newer =
        writeFile(elsewhere.filePath("newer.stp"), QByteArray::fromStdString(newerEvening()));

    const Outcome o = run(ts, {"import", newer});
    EXPECT_EQ(o.status, 1);
    EXPECT_THAT(o.err, HasSubstr("run-time error 75: Path/File access error: "));
    EXPECT_THAT(o.err, HasSubstr("symbolic link"));
    EXPECT_EQ(readFile(victim), "root:*:19000:0:99999:7:::\n");
    EXPECT_EQ(ts.readFile("tessark.ini"), kIniLogOff);
    EXPECT_EQ(ts.server().setups().list().ubound(), 0);
#endif
}

} // namespace
