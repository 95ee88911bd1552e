// A setup's file paths name files of the installation and nothing else: one that leads out of it
// by "..", a drive letter or a link is a missing file, whether the setup is verified here or
// rewritten by the wizard.
#include "basics/RuntimeError.h"
#include "discovery/FalconDiscovery.h"
#include "setups/InstallationCheck.h"
#include "setups/authoring/SetupFileBuilder.h"
#include "support/FakeInstallation.h"

#include <QTemporaryDir>
#include <gmock/gmock.h>

namespace {

#ifndef Q_OS_WIN
// "123456789", the file every line below claims.
constexpr char kChecksum[] = "-873187034";

TEST(SetupPathsOutsideTheInstallation, AreCheckedAsMissingFilesAndNeverRead) {
    FakeInstallation falcon;
    falcon.install("cobra.cfg", "set g_bFoo 1\r\n");
    falcon.install("Data/inside.dat", "123456789");
    const QString secret = falcon.install("../secret.dat", "123456789"); // beside the installation
    ASSERT_TRUE(QFile::link(secret, falcon.dir() + "/Data/link.dat"));
    ASSERT_TRUE(QFile::link("/proc/self/pagemap", falcon.dir() + "/Data/pagemap"));
    QDir().mkpath(falcon.dir() + "/Data/Sub");
    ASSERT_TRUE(QFile::link(falcon.dir() + "/Data/inside.dat", falcon.dir() + "/Data/Sub/alias.dat"));

    const InstallationCheck installation = InstallationCheck::ofThisMachine();
    auto verdict = [&](const std::string& path) {
        return installation.check("CHKSUM@" + path + "@" + kChecksum);
    };
    EXPECT_EQ(verdict("Data\\inside.dat"), LineVerdict::Matches);
    EXPECT_EQ(verdict("data\\sub\\..\\INSIDE.dat"), LineVerdict::Matches);
    EXPECT_EQ(verdict("Data\\Sub\\alias.dat"), LineVerdict::Matches); // a link that stays inside
    for (const char* outside :
         {"..\\secret.dat", "Data\\..\\..\\secret.dat", "C:\\secret.dat", "Data\\link.dat", "Data\\pagemap",
          "..\\..\\..\\..\\..\\..\\..\\..\\..\\..\\proc\\self\\pagemap", "Data",
          "..\\Falcon4\\..\\secret.dat"})
        EXPECT_EQ(verdict(outside), LineVerdict::Fails) << outside;

    // Editing a setup that names such a file: the rewrite fails as for a missing file, and the
    // file it would have replaced stays as it was.
    WizardState state;
    readInstallationKey(state.falcon);
    chooseConfigFile(state.falcon);
    state.setupName = "Night Ops";
    state.selectedFiles.append("Data\\inside.dat");
    state.selectedFiles.append("..\\secret.dat");
    QTemporaryDir programDir;
    const QString path = writeFile(programDir.filePath("Night Ops.stp"), "Night Ops\r\nCURSET@COB\r\n");
    try {
        writeSetupFile(state, path, {});
        ADD_FAILURE() << "a path out of the installation was taken";
    } catch (const RuntimeError& e) {
        EXPECT_EQ(e.number, 53);
    }
    EXPECT_EQ(readFile(path), "Night Ops\r\nCURSET@COB\r\n");
    EXPECT_EQ(QDir(programDir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"Night Ops.stp"});
}
#endif

} // namespace
