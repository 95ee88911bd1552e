// Installation discovery on Windows itself: the Falcon 4 key as its 32-bit installer leaves it
// (in the registry's 32-bit view), and Windows paths as they are.
#include "discovery/FalconDiscovery.h"
#include "discovery/Registry.h"

#ifdef Q_OS_WIN
#include "support/WindowsRegistry.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace windows_registry;

class WindowsRegistry : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!underWine()) GTEST_SKIP() << "rewrites the machine's Falcon 4 key: only in a Wine prefix";
        deleteFalconKey();
    }
    void TearDown() override {
        if (underWine()) deleteFalconKey();
    }
};

TEST_F(WindowsRegistry, TheKeyIsReadInThe32BitViewAndMissingValuesReadEmpty) {
    FalconInstallation falcon;
    readInstallationKey(falcon);
    EXPECT_EQ(falcon.baseDir, "\\");
    EXPECT_EQ(falcon.theater, "");

    // Only the 64-bit view holds it: a 32-bit program would not see it, and neither do we.
    ASSERT_TRUE(setFalconValue("/reg:64", "baseDir", "REG_SZ", "D:\\Wrong"));
    readInstallationKey(falcon);
    EXPECT_EQ(falcon.baseDir, "\\");

    ASSERT_TRUE(setFalconValue("/reg:32", "baseDir", "REG_SZ", "C:\\Falcon4"));
    ASSERT_TRUE(setFalconValue("/reg:32", "curTheater", "REG_SZ", "Korea KTO"));
    ASSERT_TRUE(setFalconValue("/reg:32", "Version", "REG_DWORD", "10"));
    ASSERT_TRUE(setFalconValue("/reg:32", "Blob", "REG_BINARY", "4142"));
    readInstallationKey(falcon);
    EXPECT_EQ(falcon.baseDir, "C:\\Falcon4\\");
    EXPECT_EQ(falcon.theater, "Korea KTO");
    // As the registry hands a string out: its terminating NUL included, for callers to strip.
    EXPECT_EQ(readRegistryValue(RegistryRoot::LocalMachine, kFalconRegistryKey, "baseDir").text,
              std::string("C:\\Falcon4\0", 11));
    EXPECT_EQ(readRegistryValue(RegistryRoot::LocalMachine, kFalconRegistryKey, "version").asText(), "10");
    EXPECT_EQ(readRegistryValue(RegistryRoot::LocalMachine, kFalconRegistryKey, "Blob").kind,
              RegistryValue::Empty);
}

TEST(WindowsPaths, ConfigurationFlavourInItsOrderAndPathsAsTheyAre) {
    QTemporaryDir dir;
    FalconInstallation falcon;
    falcon.baseDir = QDir::toNativeSeparators(dir.path()).toStdString() + "\\";
    auto install = [&](const char* name) { QFile(dir.filePath(name)).open(QIODevice::WriteOnly); };
    QDir(dir.path()).mkdir("cobra.cfg"); // a directory is no configuration file
    chooseConfigFile(falcon);
    EXPECT_EQ(falcon.flavour, "FF");
    EXPECT_EQ(falcon.configFile, falcon.baseDir + "FalconSP.cfg");
    install("FalconBMS.cfg");
    chooseConfigFile(falcon);
    EXPECT_EQ(falcon.flavour, "BMS");
    QDir(dir.path()).rmdir("cobra.cfg");
    install("cobra.cfg");
    chooseConfigFile(falcon);
    EXPECT_EQ(falcon.flavour, "COB");
    EXPECT_EQ(falcon.configFile, falcon.baseDir + "cobra.cfg");

    EXPECT_EQ(localFilePath("C:\\Falcon4\\Data\\file.dat"), "C:/Falcon4/Data/file.dat");
    EXPECT_EQ(windowsFilePath("C:/Falcon4/Data/file.dat"), "C:\\Falcon4\\Data\\file.dat");
}
#endif
