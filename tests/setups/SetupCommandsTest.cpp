#include "setups/commands/SetupCommands.h"

#include "basics/ErrorLog.h"
#include "setups/SetupCatalogue.h"
#include "support/FakeInstallation.h"
#include "support/Files.h"
#include "support/RecordingDisplay.h"
#include "support/TestServer.h"

#include <QDirIterator>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <gmock/gmock.h>

#include <map>
#include <ostream>

using ::testing::HasSubstr;

// Texts in a failure message as texts, not as arrays of characters.
inline void PrintTo(const QString& s, std::ostream* os) {
    *os << '"' << s.toStdString() << '"';
}
inline void PrintTo(const QByteArray& s, std::ostream* os) {
    *os << '"' << s.toStdString() << '"';
}

namespace {

// Every file below dir with its content.
std::map<QString, QByteArray> snapshot(const QString& dir) {
    std::map<QString, QByteArray> files;
    QDirIterator it(dir, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        files[path] = readFile(path);
    }
    return files;
}

struct Outcome {
    int status;
    QString out;
    QString err;
};

// A program directory with tessark.ini and the catalogue it holds, as a server has them.
class SetupCommandsTest : public ::testing::Test {
  protected:
    void SetUp() override {
        writeFile(path("tessark.ini"), "[SETUPLIST]\r\nNUM=0\r\n[DEBUG]\r\nLOG=0\r\n");
        catalogue_.reload();
    }

    QString path(const QString& name) const { return dir_.path() + "/" + name; }
    // tessark.ini listing these files of the program directory, as the commands write it.
    QByteArray listing(const QStringList& files) const {
        QStringList paths;
        for (const QString& file : files)
            paths.push_back(path(file));
        return QByteArray::fromStdString(setupListIni(paths));
    }
    // That listing, read as at start-up.
    void catalogue(const QStringList& files) {
        writeFile(path("tessark.ini"), listing(files));
        catalogue_.reload();
    }
    Outcome run(const QStringList& args) {
        QString out, err;
        QTextStream outStream(&out), errStream(&err);
        const int status = runSetupCommand(args, catalogue_, dir_.path() + "/", outStream, errStream);
        outStream.flush();
        errStream.flush();
        return {status, out, err};
    }
    // A refusal: status 2, one line on standard error, nothing on standard output.
    void expectRefused(const QStringList& args, const QString& message) {
        const Outcome o = run(args);
        const std::string words = args.join(' ').toStdString();
        EXPECT_EQ(o.status, 2) << words;
        EXPECT_EQ(o.out, "") << words;
        EXPECT_THAT(o.err.toStdString(), HasSubstr(message.toStdString())) << words;
        EXPECT_TRUE(o.err.endsWith('\n') && o.err.count('\n') == 1) << words << ": " << o.err.toStdString();
    }

    QTemporaryDir dir_;
    ErrorLog errorLog_{path("TessarkSrvErrorLog.txt"), false, [] {}};
    RecordingDisplay display_;
    SetupCatalogue catalogue_{path("tessark.ini"), errorLog_, display_};
};

TEST_F(SetupCommandsTest, ImportCopiesUnderTheNameLineAndRemoveKeepsTheFile) {
    QTemporaryDir elsewhere;
    const QByteArray made = "Evening\r\nCURSET@COB\r\n// by hand\r\n\r\nCURTHE@Balkans\r\n";
    writeFile(elsewhere.filePath("made.stp"), made);

    Outcome o = run({"import", elsewhere.filePath("made.stp")});
    EXPECT_EQ(o.status, 0) << o.err.toStdString();
    EXPECT_EQ(o.out, "Copied " + elsewhere.filePath("made.stp") + " to " + path("Evening.stp") +
                         "\nSetup 1: Evening\n");
    EXPECT_EQ(readFile(path("Evening.stp")), made); // verbatim, comment and blank line included
    // A file already beside the program under its name is listed again, not copied: import
    // does not look for duplicates.
    o = run({"import", path("Evening.stp")});
    EXPECT_EQ(o.out, "Listed " + path("Evening.stp") + "\nSetup 2: Evening\n");
    EXPECT_EQ(readFile(path("tessark.ini")), listing({"Evening.stp", "Evening.stp"}));

    writeFile(path("Other.stp"), "Other\r\nCURSET@BMS\r\n");
    ASSERT_EQ(run({"import", path("Other.stp")}).status, 0);
    o = run({"remove", "2"});
    EXPECT_EQ(o.status, 0) << o.err.toStdString();
    EXPECT_EQ(o.out, "Removed setup 2: Evening\nIts file stays on disk: " + path("Evening.stp") + "\n");
    // Later setups move down: "Other" is setup 2 now, in memory and in tessark.ini.
    ASSERT_EQ(catalogue_.list().ubound(), 2);
    EXPECT_EQ(catalogue_.list()[2].name, "Other");
    EXPECT_EQ(catalogue_.list()[2].lines[1], "CURSET@BMS");
    EXPECT_EQ(readFile(path("tessark.ini")), listing({"Evening.stp", "Other.stp"}));
    ASSERT_EQ(run({"remove", "1"}).status, 0);
    ASSERT_EQ(run({"remove", "1"}).status, 0);
    EXPECT_EQ(readFile(path("tessark.ini")), "[SETUPLIST]\r\nNUM=0\r\n");
    EXPECT_EQ(readFile(path("Evening.stp")), made);
    EXPECT_EQ(run({"list"}).out, "No setups are listed.\n");
    EXPECT_TRUE(display_.messageBoxes.isEmpty());

    // A listed setup whose file is gone has no name to show, and no file that stays.
    catalogue({"gone.stp"});
    o = run({"remove", "1"});
    EXPECT_EQ(o.status, 0);
    EXPECT_EQ(o.out, "Removed setup 1: (its file not found)\n");
}

TEST_F(SetupCommandsTest, ArgumentsThatCannotRunChangeNothing) {
    writeFile(path("Keep.stp"), "Keep\r\nCURSET@COB\r\n");
    catalogue({"Keep.stp"});
    QTemporaryDir elsewhere;
    writeFile(elsewhere.filePath("empty.stp"), "");
    writeFile(elsewhere.filePath("slash.stp"), "Night/Ops\r\nCURSET@COB\r\n");
    const std::map<QString, QByteArray> before = snapshot(dir_.path());

    expectRefused({}, "setups: missing sub-command (list, create, import, remove or verify)");
    expectRefused({"frobnicate"}, "setups: unknown sub-command \"frobnicate\"");
    expectRefused({"list", "extra"}, "setups list: unexpected argument \"extra\"");
    expectRefused({"list", "--long"}, "setups list: Unknown option 'long'");
    expectRefused({"remove"}, "setups remove: missing N");
    expectRefused({"remove", "one"}, "\"one\" is not a setup number");
    expectRefused({"remove", "0"}, "there is no setup 0 (only setup 1 is listed)");
    expectRefused({"remove", "2"}, "there is no setup 2");
    expectRefused({"remove", "1", "1"}, "unexpected argument \"1\"");
    expectRefused({"verify", "2"}, "setups verify: there is no setup 2");
    expectRefused({"import"}, "setups import: missing FILE");
    expectRefused({"import", elsewhere.filePath("none.stp")}, "no such file");
    expectRefused({"import", elsewhere.path()}, "no such file");
    expectRefused({"import", elsewhere.filePath("empty.stp")}, "its first line must be the setup's name");
    expectRefused({"import", elsewhere.filePath("slash.stp")}, "\"Night/Ops\", cannot be a file name");
    // The name is checked before the installation is looked for.
    expectRefused({"create"}, "setups create: missing --name NAME");
    expectRefused({"create", "--name"}, "Missing value after '--name'");
    expectRefused({"create", "--name", ""}, "--name is empty");
    expectRefused({"create", "--name", "A", "--name", "B"}, "--name given more than once");
    expectRefused({"create", "--name", "Night:Ops"}, "cannot be a file name");
    expectRefused({"create", "--name", QString::fromUtf8("Ночь")}, "characters a setup file cannot hold");
    expectRefused({"create", "--name", "A", "stray"}, "unexpected argument \"stray\"");
    expectRefused({"create", "--name", "A", "--sim"}, "Unknown option 'sim'");

    EXPECT_EQ(snapshot(dir_.path()), before);
    ASSERT_EQ(catalogue_.list().ubound(), 1);
    EXPECT_EQ(catalogue_.list()[1].name, "Keep");
}

// The installation comes from the registry: here a fake Falcon 4 installation in a Wine prefix
// of its own. On Windows it would be the machine-wide registry key, which the test run shares
// with the discovery and wizard tests under a lock this room does not take, so these run where
// the registry is a file of the test's own.
#ifndef Q_OS_WIN
class SetupCommandsInstallationTest : public SetupCommandsTest {
  protected:
    void SetUp() override {
        SetupCommandsTest::SetUp();
        falcon_.install("cobra.cfg",
                        "set g_bFoo 1\r\nSET g_nBar 2 // two\r\n\r\nsetting x\r\nset g_sBaz  spaced  \r\n");
        falcon_.install("Data/Sub/a.dat", "123456789");
        falcon_.install("Data/Sub/b.dat", "abc");
        falcon_.install("top.txt", "");
    }

    FakeInstallation falcon_;
};

TEST_F(SetupCommandsInstallationTest, CreatesTheWizardsSetupThenVerifiesAndNamesTheLinesThatChanged) {
    catalogue({"gone.stp"}); // listed, but its file is missing
    // Files in every form: relative with "/" in other letter case, a local path, a drive path.
    const Outcome created = run({"create", "--name", "Night Ops", "--file", "data/sub/A.DAT", "--file",
                                 falcon_.dir() + "/Data/Sub/b.dat", "--file", "C:\\Falcon4\\top.txt",
                                 "--no-sim-folder", "--config", "g_sBaz", "--config", "g_nBar"});
    ASSERT_EQ(created.status, 0) << created.err.toStdString();
    // What the wizard writes for the same choices, line for line and checksum for checksum;
    // entries in the configuration file's order.
    const QByteArray wizardWrites =
        "Night Ops\r\nCURSET@COB\r\nCHKSIM\r\nCURTHE@Korea KTO\r\n"
        "CHKSUM@Data\\Sub\\a.dat@-873187034\r\nCHKSUM@Data\\Sub\\b.dat@891568578\r\n"
        "CHKSUM@top.txt@0\r\nCONFIG@g_nBar@2 // two\r\nCONFIG@g_sBaz@ spaced  \r\n";
    EXPECT_EQ(readFile(path("Night Ops.stp")), wizardWrites);
    // The lines written are shown, indented.
    EXPECT_EQ(created.out, "Wrote " + path("Night Ops.stp") + "\n" +
                               QString(wizardWrites).replace(QRegularExpression("([^\n]*)\r\n"), "  \\1\n") +
                               "Setup 2: Night Ops\n");
    EXPECT_EQ(QDir(dir_.path()).entryList({"*.part"}), QStringList());
    EXPECT_EQ(readFile(path("tessark.ini")), listing({"gone.stp", "Night Ops.stp"}));

    // A listed file that gave no setup says why.
    EXPECT_EQ(run({"list"}).out, "#  Name       File\n"
                                 "1             " +
                                     path("gone.stp") + "  (not found)\n2  Night Ops  " +
                                     path("Night Ops.stp") + "\n");

    const QString header =
        "Setup 2: Night Ops (" + path("Night Ops.stp") + ")\nInstallation: C:\\Falcon4\\ (COB, ";
    Outcome verified = run({"verify", "2"});
    EXPECT_EQ(verified.status, 0);
    EXPECT_EQ(verified.out, header + "theater Korea KTO)\nall 8 lines match\n");

    // The installation changes under the setup: a file's content, a file gone, the theater, a
    // configuration value, and a "sim" folder (Windows names ignore case).
    falcon_.install("Data/Sub/a.dat", "123456780");
    QFile::remove(falcon_.dir() + "/Data/Sub/b.dat");
    falcon_.setTheater("Balkans");
    falcon_.install("cobra.cfg", "set g_bFoo 1\r\nSET g_nBar 3 // two\r\nset g_sBaz  spaced\r\n");
    QDir().mkpath(falcon_.dir() + "/sim");
    verified = run({"verify", "2"});
    EXPECT_EQ(verified.status, 1);
    EXPECT_EQ(verified.out,
              header + "theater Balkans)\n"
                       "line 2: There is a directory called 'Sim' in your setup. Please delete it...\n"
                       "line 3: Your currently selected theater is different\n"
                       "line 4: The Data\\Sub\\a.dat file is differrent or absent\n"
                       "line 5: The Data\\Sub\\b.dat file is differrent or absent\n"
                       "line 7: The g_nBar entry in cofig file is differrent or absent\n"
                       "5 of 8 lines failed\n");

    // Another flavour: cobra.cfg gone, FalconBMS.cfg found; its entries are those now compared.
    QFile::remove(falcon_.dir() + "/cobra.cfg");
    falcon_.install("FalconBMS.cfg", "set g_nBar 2 // two\r\n");
    verified = run({"verify", "2"});
    EXPECT_THAT(verified.out.toStdString(), HasSubstr("line 1: Your current setup is different\n"));
    EXPECT_THAT(
        verified.out.toStdString(),
        HasSubstr("line 8: The g_sBaz entry in cofig file is differrent or absent\n6 of 8 lines failed\n"));
    EXPECT_EQ(verified.err, "");
}

TEST_F(SetupCommandsInstallationTest, ChoicesOutsideTheInstallationChangeNothing) {
    writeFile(path("Keep.stp"), "Keep\r\nCURSET@COB\r\n");
    catalogue({"Keep.stp"});
    writeFile(falcon_.prefixPath("drive_c/outside.dat"), "x");
    QTemporaryDir elsewhere;
    writeFile(elsewhere.filePath("x.dat"), "x");
    const std::map<QString, QByteArray> before = snapshot(dir_.path());
    const QStringList named{"create", "--name", "Keep"}; // would replace Keep.stp

    expectRefused(named + QStringList{"--file", "Data/none.dat"}, "--file Data/none.dat: no such file");
    expectRefused(named + QStringList{"--file", "Data"}, "--file Data: no such file");
    expectRefused(named + QStringList{"--file", elsewhere.filePath("x.dat")},
                  "Your selection must be inside current Falcon 4 installation (C:\\Falcon4\\)");
    expectRefused(named + QStringList{"--file", "..\\outside.dat"}, "inside current Falcon 4 installation");
    expectRefused(named + QStringList{"--file", "C:\\outside.dat"}, "inside current Falcon 4 installation");
    // A good file first: nothing is written until every argument has passed.
    expectRefused(named + QStringList{"--file", "top.txt", "--config", "g_bfoo"},
                  "--config g_bfoo: no \"set g_bfoo\" line in C:\\Falcon4\\cobra.cfg");
    expectRefused({"verify", "1", "2"}, "unexpected argument \"2\"");
    QFile::remove(falcon_.dir() + "/cobra.cfg");
    expectRefused(named + QStringList{"--config", "g_bFoo"},
                  "the configuration file C:\\Falcon4\\FalconSP.cfg cannot be read");
    writeFile(falcon_.prefixPath("system.reg"), "WINE REGISTRY Version 2\n");
    // No installation is no usage mistake: the work cannot be done here, status 1, and the
    // operator is told how to name one.
    for (const QStringList& args : {named, QStringList{"verify", "1"}}) {
        const Outcome o = run(args);
        EXPECT_EQ(o.status, 1);
        EXPECT_THAT(o.err.toStdString(), HasSubstr("no Falcon 4 installation on this machine"));
        EXPECT_THAT(o.err.toStdString(), HasSubstr("--installation DIR"));
    }
    expectRefused({"verify", "1", "--installation", falcon_.dir() + "/none"}, "no such directory");

    EXPECT_EQ(snapshot(dir_.path()), before);
    EXPECT_EQ(catalogue_.list().ubound(), 1);

    // A host without the simulator checks a copy of its files, named with --installation.
    falcon_.install("cobra.cfg", "set g_bFoo 1\r\n");
    const Outcome checked = run({"verify", "1", "--installation", falcon_.dir(), "--theater", "Korea KTO"});
    EXPECT_EQ(checked.status, 0) << checked.err.toStdString() << checked.out.toStdString();
    EXPECT_THAT(checked.out.toStdString(), HasSubstr("(COB, theater Korea KTO)\nthe 1 line matches\n"));
}
#endif

} // namespace
