// Setup names become file names: a name that Windows keeps for a device is refused on every
// platform, as a name with a character no file name may hold is, so a setup made on one machine
// can be used on any.
#include "basics/RuntimeError.h"
#include "setups/SetupCatalogue.h"
#include "setups/authoring/SetupFileBuilder.h"
#include "setups/commands/SetupCommands.h"
#include "support/Files.h"
#include "support/TestServer.h"

#include <QTemporaryDir>
#include <gmock/gmock.h>

using ::testing::HasSubstr;

namespace {

int refusal(const std::string& name) {
    try {
        setupFilePath("C:\\Tessark\\", name);
    } catch (const RuntimeError& e) {
        return e.number;
    }
    return 0;
}

TEST(SetupNames, WindowsDeviceNamesAreBadFileNamesEverywhere) {
    for (const char* device : {"CON", "con", "Prn", "AUX", "NUL", "nul.backup", "COM1", "com9", "LPT1",
                               "lpt5.old", "CON ", "CONIN$", "conout$", "COM\xB9", "LPT\xB2", "COM0"})
        EXPECT_EQ(refusal(device), 52) << device;
    for (const char* fine : {"CONSOLE", "Con job", "COM10", "LPT", "NULL", "Night ops.CON", "AUX2", ".CON"})
        EXPECT_EQ(refusal(fine), 0) << fine;
}

TEST(SetupNames, AnImportNamedForADeviceIsRefusedAndWritesNothing) {
    TestServer ts{kIniLogOff};
    QTemporaryDir elsewhere;
    const QString made = writeFile(elsewhere.filePath("made.stp"), "nul\r\nCURSET@COB\r\n");
    QString out, err;
    QTextStream outStream(&out), errStream(&err);
    EXPECT_EQ(runSetupCommand({"import", made}, ts.server().setups(), ts.dir(), outStream, errStream), 2);
    errStream.flush();
    EXPECT_THAT(err.toStdString(), HasSubstr("a name Windows keeps for a device"));
    EXPECT_EQ(QDir(ts.dir()).entryList(QDir::Files | QDir::Hidden), QStringList{"tessark.ini"});
    EXPECT_EQ(ts.readFile("tessark.ini"), kIniLogOff);
}

} // namespace
