// Files beyond the caps set in the server's settings are refused unread, with the reason, and
// the server goes on with what it could read.
#include "setups/SetupCatalogue.h"
#include "setups/commands/SetupCommands.h"
#include "support/Files.h"
#include "support/LogCapture.h"
#include "support/TestServer.h"

#include <QTemporaryDir>
#include <gmock/gmock.h>

using ::testing::HasSubstr;

namespace {

TEST(SetupFileCaps, ASetupOrATessarkIniBeyondItsCapIsRefusedUnreadAndSaidSo) {
    TestServer ts{{}, false};
    SettingsReading reading;
    reading.settings.files = {64 * 1024, 32 * 1024};
    ts.server().useSettings({}, false, reading);
    // Line feeds alone: the most lines for the bytes.
    ts.catalogue(
        {{"small.stp", "Small\r\nCURSET@COB\r\n"}, {"big.stp", "Big\r\n" + std::string(64 * 1024, '\n')}});
    LogCapture log;
    ts.start();

    const auto& setups = ts.server().setups().list();
    ASSERT_EQ(setups.ubound(), 2);
    EXPECT_EQ(setups[1].name, "Small");
    EXPECT_EQ(setups[2].name, "");
    EXPECT_EQ(setups[2].lines.ubound(), 0);
    EXPECT_EQ(setups[2].problem, "too large");
    EXPECT_EQ(log.count("big.stp too large; players are offered it with an empty name"), 1)
        << log.lines().join('\n').toStdString();
    EXPECT_EQ(log.count("65541 bytes, more than the 65536 that [files] max-setup-size allows"), 1);

    // An import of such a file is refused before anything is written.
    QTemporaryDir elsewhere;
    const QString big = writeFile(elsewhere.filePath("big.stp"), "Bigger\r\n" + QByteArray(64 * 1024, '\n'));
    const std::string list = ts.readFile("tessark.ini");
    QString out, err;
    QTextStream outStream(&out), errStream(&err);
    EXPECT_EQ(runSetupCommand({"import", big}, ts.server().setups(), ts.dir(), outStream, errStream), 2);
    errStream.flush();
    EXPECT_THAT(err.toStdString(),
                HasSubstr("more than the 65536 a setup file may hold ([files] max-setup-size)"));
    EXPECT_FALSE(QFileInfo::exists(ts.path("Bigger.stp")));
    EXPECT_EQ(ts.readFile("tessark.ini"), list);

    // A tessark.ini beyond its cap lists nothing, and is left as it is.
    const std::string huge = list + std::string(32 * 1024, ';') + "\r\n";
    ts.writeFile("tessark.ini", huge);
    ts.server().setups().reload();
    EXPECT_EQ(ts.server().setups().list().ubound(), 0);
    EXPECT_EQ(log.count("tessark.ini cannot be read, so no setups are listed: Out of memory"), 1);
    EXPECT_EQ(ts.readFile("tessark.ini"), huge);
    EXPECT_EQ(ts.endsOfProgram(), 0);
}

} // namespace
