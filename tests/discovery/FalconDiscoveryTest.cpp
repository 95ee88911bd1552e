#include "discovery/FalconDiscovery.h"
#include "discovery/Registry.h"
#include "support/FakeInstallation.h"

#include <gtest/gtest.h>

// Elsewhere than on Windows the registry and the drives are those of a Wine prefix; Windows
// reads its own (WindowsRegistryTest.cpp).
#ifndef Q_OS_WIN
namespace {

// A Wine prefix in a temporary directory, used as $WINEPREFIX for the test's duration; its
// registry starts without the Falcon key.
class WinePrefix : public ::testing::Test {
  protected:
    void SetUp() override { QFile::remove(falcon_.prefixPath("system.reg")); }
    void write(const QString& relative, const QByteArray& content) {
        writeFile(falcon_.prefixPath(relative), content);
    }
    void systemReg(const QByteArray& body) {
        write("system.reg",
              "WINE REGISTRY Version 2\n;; All keys relative to \\\\Machine\n\n#arch=win64\n\n" + body);
    }

    FakeInstallation falcon_;
    const QString prefix_ = falcon_.prefix();
};

} // namespace

TEST_F(WinePrefix, RegistryValuesWithWineEscapesAndTheNulsRemovedOrABackslashWhenMissing) {
    FalconInstallation falcon;
    readInstallationKey(falcon);
    EXPECT_EQ(falcon.baseDir, "\\");
    EXPECT_EQ(falcon.theater, "");
    // The key without the value, and a value of another type, read as empty too.
    systemReg("[Software\\\\Microprose\\\\Falcon\\\\4.0]\n\"curTheater\"=hex:41,42\n");
    readInstallationKey(falcon);
    EXPECT_EQ(falcon.baseDir, "\\");
    EXPECT_EQ(falcon.theater, "");

    systemReg("[Software\\\\Other\\\\Key] 1700000000\n\"baseDir\"=\"D:\\\\Wrong\"\n\n"
              "[Software\\\\Wow6432Node\\\\Microprose\\\\Falcon\\\\4.0] 1700000000\n"
              "#time=1da2b3c4d5e6f70\n"
              "\"BASEDIR\"=\"C:\\\\Falcon4\\0\"\n"
              "\"curTheater\"=\"Korea \\\"KTO\\\" \\x00e9t\\xe9\"\n"
              "\"Version\"=dword:0000000a\n");
    EXPECT_EQ(readRegistryValue(RegistryRoot::LocalMachine, kFalconRegistryKey, "version").asText(), "10");
    readInstallationKey(falcon);
    EXPECT_EQ(falcon.baseDir, "C:\\Falcon4\\");
    EXPECT_EQ(falcon.theater, "Korea \"KTO\" \xe9t\xe9");
}

TEST_F(WinePrefix, ConfigurationFlavourInItsOrder) {
    FalconInstallation falcon;
    falcon.baseDir = "C:\\Other\\";
    QDir().mkpath(prefix_ + "/drive_c/Other/cobra.cfg"); // a directory is no configuration file
    chooseConfigFile(falcon);
    EXPECT_EQ(falcon.flavour, "FF");
    EXPECT_EQ(falcon.configFile, "C:\\Other\\FalconSP.cfg");
    falcon.baseDir = "C:\\Falcon4\\";
    write("drive_c/Falcon4/FalconSP.cfg", "");
    write("drive_c/Falcon4/FalconBMS.cfg", "");
    chooseConfigFile(falcon);
    EXPECT_EQ(falcon.flavour, "BMS");
    EXPECT_EQ(falcon.configFile, "C:\\Falcon4\\FalconBMS.cfg");
    write("drive_c/Falcon4/cobra.cfg", "");
    chooseConfigFile(falcon);
    EXPECT_EQ(falcon.flavour, "COB");
    EXPECT_EQ(falcon.configFile, "C:\\Falcon4\\cobra.cfg");
}

TEST_F(WinePrefix, DriveLettersMapIntoThePrefixAndBack) {
    write("drive_c/Falcon4/Data/Sub/file.dat", "x");
    QTemporaryDir elsewhere;
    QDir().mkpath(elsewhere.path() + "/Games");
    QDir().mkpath(prefix_ + "/dosdevices");
    QFile::link(elsewhere.path(), prefix_ + "/dosdevices/d:");
    QFile::link("../drive_c", prefix_ + "/dosdevices/c:");

    // Windows paths ignore case; the directories are found as they are spelled on disk.
    EXPECT_EQ(localFilePath("c:\\FALCON4\\data\\SUB\\File.DAT"),
              prefix_ + "/drive_c/Falcon4/Data/Sub/file.dat");
    EXPECT_EQ(localFilePath("D:\\Games\\x.cfg"), prefix_ + "/dosdevices/d:/Games/x.cfg");

    EXPECT_EQ(windowsFilePath(prefix_ + "/drive_c/Falcon4/Data/Sub/file.dat"),
              "C:\\Falcon4\\Data\\Sub\\file.dat");
    EXPECT_EQ(windowsFilePath(elsewhere.path() + "/Games"), "D:\\Games");
}
#endif
