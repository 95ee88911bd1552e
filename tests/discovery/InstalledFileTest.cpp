// The path a setup line names, taken on each platform's own paths: on Windows a drive letter and
// letter case are the file system's, elsewhere the tests of a whole setup (in tests/setups) add
// links and the Wine prefix's drives.
#include "discovery/InstalledFile.h"
#include "support/Files.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

TEST(InstalledFile, NamesRegularFilesInsideTheInstallationAndNothingBesideIt) {
    QTemporaryDir root;
    const QString base = root.filePath("Falcon4");
    writeFile(base + "/Data/inside.dat", "inside");
    QDir().mkpath(base + "/Data/Sub");
    const QString secret = writeFile(root.filePath("secret.dat"), "secret");
    writeFile(root.filePath("Falcon4Data/secret.dat"), "a sibling whose name starts as the installation's");

    const std::string baseDir = QDir::toNativeSeparators(base + "/").toStdString();
    auto named = [&](const std::string& relative) { return installedFilePath(baseDir, relative); };
    const QString inside = QFileInfo(base + "/Data/inside.dat").canonicalFilePath();
    EXPECT_EQ(named("Data\\inside.dat"), inside);
    EXPECT_EQ(named("Data\\Sub\\..\\inside.dat"), inside);
#ifdef Q_OS_WIN
    EXPECT_EQ(named("data\\INSIDE.DAT").compare(inside, Qt::CaseInsensitive), 0);
#endif
    for (const std::string& outside :
         {std::string("..\\secret.dat"), std::string("Data\\..\\..\\secret.dat"),
          std::string("..\\Falcon4Data\\secret.dat"), std::string("Data"), std::string("Data\\missing.dat"),
          QDir::toNativeSeparators(secret).toStdString(), std::string("\\..\\secret.dat")})
        EXPECT_EQ(named(outside), QString()) << outside;
    EXPECT_EQ(installedFilePath(QDir::toNativeSeparators(root.filePath("none/")).toStdString(), "a.dat"),
              QString());
}
