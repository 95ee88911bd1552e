// Installation discovery on Windows itself: the Falcon 4 key as its 32-bit installer leaves it
// (in the registry's 32-bit view), and Windows paths as they are.
#include "server/FalconDiscovery.h"
#include "server/Registry.h"

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
    GetFalconRegistry(falcon);
    EXPECT_EQ(falcon.FalconDir, "\\");
    EXPECT_EQ(falcon.FalconTheater, "");

    // Only the 64-bit view holds it: a 32-bit program would not see it, and neither do we.
    ASSERT_TRUE(setFalconValue("/reg:64", "baseDir", "REG_SZ", "D:\\Wrong"));
    GetFalconRegistry(falcon);
    EXPECT_EQ(falcon.FalconDir, "\\");

    ASSERT_TRUE(setFalconValue("/reg:32", "baseDir", "REG_SZ", "C:\\Falcon4"));
    ASSERT_TRUE(setFalconValue("/reg:32", "curTheater", "REG_SZ", "Korea KTO"));
    ASSERT_TRUE(setFalconValue("/reg:32", "Version", "REG_DWORD", "10"));
    ASSERT_TRUE(setFalconValue("/reg:32", "Blob", "REG_BINARY", "4142"));
    GetFalconRegistry(falcon);
    EXPECT_EQ(falcon.FalconDir, "C:\\Falcon4\\");
    EXPECT_EQ(falcon.FalconTheater, "Korea KTO");
    // As the registry hands a string out: its terminating NUL included, for callers to strip.
    EXPECT_EQ(RegReadValue(RegistryRoot::LocalMachine, kFalconRegistryKey, "baseDir").text,
              std::string("C:\\Falcon4\0", 11));
    EXPECT_EQ(RegReadValue(RegistryRoot::LocalMachine, kFalconRegistryKey, "version").asText(), "10");
    EXPECT_EQ(RegReadValue(RegistryRoot::LocalMachine, kFalconRegistryKey, "Blob").kind,
              RegistryValue::Empty);
}

TEST(WindowsPaths, ConfigurationFlavourInItsOrderAndPathsAsTheyAre) {
    QTemporaryDir dir;
    FalconInstallation falcon;
    falcon.FalconDir = QDir::toNativeSeparators(dir.path()).toStdString() + "\\";
    auto install = [&](const char* name) { QFile(dir.filePath(name)).open(QIODevice::WriteOnly); };
    QDir(dir.path()).mkdir("cobra.cfg"); // a directory is no configuration file
    GetFalconConfig(falcon);
    EXPECT_EQ(falcon.FalconFlavour, "FF");
    EXPECT_EQ(falcon.FalconCfgFile, falcon.FalconDir + "FalconSP.cfg");
    install("FalconBMS.cfg");
    GetFalconConfig(falcon);
    EXPECT_EQ(falcon.FalconFlavour, "BMS");
    QDir(dir.path()).rmdir("cobra.cfg");
    install("cobra.cfg");
    GetFalconConfig(falcon);
    EXPECT_EQ(falcon.FalconFlavour, "COB");
    EXPECT_EQ(falcon.FalconCfgFile, falcon.FalconDir + "cobra.cfg");

    EXPECT_EQ(localFilePath("C:\\Falcon4\\Data\\file.dat"), "C:/Falcon4/Data/file.dat");
    EXPECT_EQ(windowsFilePath("C:/Falcon4/Data/file.dat"), "C:\\Falcon4\\Data\\file.dat");
}
#endif
