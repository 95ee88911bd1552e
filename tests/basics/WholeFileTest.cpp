// A file the server writes is whole or not there, never written through a link someone else
// planted, never a device replaced.
#include "basics/WholeFile.h"
#include "basics/RuntimeError.h"
#include "support/Files.h"
#include "support/SmallDisk.h"

#include <QDir>
#include <QTemporaryDir>
#include <gmock/gmock.h>

#ifndef Q_OS_WIN
#include <sys/stat.h>
#endif

using ::testing::HasSubstr;

namespace {

QStringList entries(const QString& dir) {
    return QDir(dir).entryList(QDir::Files | QDir::Hidden | QDir::System | QDir::Dirs | QDir::NoDotAndDotDot);
}

RuntimeError failureOf(const QString& path, std::string_view bytes) {
    try {
        writeWholeFile(path, bytes);
    } catch (const RuntimeError& e) {
        return e;
    }
    return {0, "nothing raised"};
}

TEST(WholeFile, ReplacesTheOldFileWithTheNewOneReadableByAllAndLeavesNothingBeside) {
    QTemporaryDir dir;
    const QString path = writeFile(dir.filePath("Evening.stp"), "old\r\n");
    QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    writeWholeFile(path, "Evening\r\nCURSET@COB\r\n");
    EXPECT_EQ(readFile(path), "Evening\r\nCURSET@COB\r\n");
    EXPECT_EQ(entries(dir.path()), QStringList{"Evening.stp"});
#ifndef Q_OS_WIN
    struct stat status {};
    ASSERT_EQ(stat(QFile::encodeName(path).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0644u);
#endif
    // A writer given up half-way leaves the old file and no trace of the new one.
    {
        WholeFileWriter partial(path);
        partial.write("half");
    }
    EXPECT_EQ(readFile(path), "Evening\r\nCURSET@COB\r\n");
    EXPECT_EQ(entries(dir.path()), QStringList{"Evening.stp"});
}

TEST(WholeFile, ALinkOrADeviceInTheFilesPlaceIsRefusedAndLeftAsItWas) {
#ifdef Q_OS_WIN
    GTEST_SKIP() << "symbolic links need rights a test does not have on Windows";
#else
    QTemporaryDir dir, elsewhere;
    const QString victim = writeFile(elsewhere.filePath("passwd"), "root:x:0:0\n");
    const QString link = dir.filePath("Evening.stp");
    ASSERT_TRUE(QFile::link(victim, link));
    const RuntimeError e = failureOf(link, "Evening\r\n");
    EXPECT_EQ(e.number, 75);
    EXPECT_THAT(e.description(), HasSubstr("symbolic link"));
    EXPECT_EQ(readFile(victim), "root:x:0:0\n");
    EXPECT_TRUE(QFileInfo(link).isSymLink());
    EXPECT_EQ(entries(dir.path()), QStringList{"Evening.stp"});

    if (QFileInfo::exists("/dev/full")) {
        EXPECT_EQ(failureOf("/dev/full", "x").number, 75);
        EXPECT_FALSE(QFileInfo("/dev/full").isFile());
    }
    EXPECT_EQ(failureOf(dir.path(), "x").number, 75);
#endif
}

TEST(WholeFile, AFullDiskIsTheDiskFullErrorAndKeepsTheOldFile) {
    SMALL_DISK(disk, 256 * 1024);
    QTemporaryDir dir;
    const QString path = writeFile(dir.filePath("tessark.ini"), "[SETUPLIST]\r\nNUM=0\r\n");
    disk.fill();
    for (qsizetype size : {10, 100 * 1024}) {
        const RuntimeError e = failureOf(path, std::string(static_cast<size_t>(size), 'x'));
        EXPECT_EQ(e.number, 61) << e.description();
        EXPECT_THAT(e.description(), HasSubstr("Disk full: " + QDir::toNativeSeparators(path).toStdString()));
        EXPECT_THAT(e.description(), HasSubstr("the file there is as it was"));
        EXPECT_EQ(readFile(path), "[SETUPLIST]\r\nNUM=0\r\n");
        EXPECT_EQ(entries(dir.path()), QStringList{"tessark.ini"});
    }
    disk.release();
    writeWholeFile(path, "[SETUPLIST]\r\nNUM=1\r\n");
    EXPECT_EQ(readFile(path), "[SETUPLIST]\r\nNUM=1\r\n");
}

} // namespace
