#include "server/IniFile.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {
std::string contents(const QString& file) {
    QFile f(file);
    return f.open(QIODevice::ReadOnly) ? f.readAll().toStdString() : std::string();
}
} // namespace

TEST(IniFile, ReadsWithoutRegardToCaseCutsAt749AndReadsMissingAsEmpty) {
    QTemporaryDir dir;
    const QString file = dir.path() + "/tessark.ini";
    EXPECT_EQ(ReadINI("DEBUG", "LOG", file), "");
    QFile f(file);
    f.open(QIODevice::WriteOnly);
    f.write("; comment\r\n[setuplist]\r\n  num = 2 \r\n[SetupList1]\r\nfname=C:\\a b\\x.stp\r\n[DEBUG]\r\n"
            "LOG=\"1\"\r\n[S]\r\nK=" + QByteArray(800, 'v') + "\r\n");
    f.close();
    EXPECT_EQ(ReadINI("SETUPLIST", "NUM", file), "2");
    EXPECT_EQ(ReadINI("SETUPLIST1", "FNAME", file), "C:\\a b\\x.stp");
    EXPECT_EQ(ReadINI("debug", "log", file), "1");      // surrounding quotes go
    EXPECT_EQ(ReadINI("SETUPLIST", "FNAME", file), ""); // a key of another section
    EXPECT_EQ(ReadINI("NOSECTION", "NUM", file), "");
    EXPECT_EQ(ReadINI("S", "K", file).size(), 749u);
}

TEST(IniFile, WritesKeysInUpperCaseCreatingTheFileAndSectionsOnDemand) {
    QTemporaryDir dir;
    const QString file = dir.path() + "/tessark.ini";
    WriteINI("SETUPLIST", "num", "0", file);
    WriteINI("DEBUG", "Log", "0", file);
    EXPECT_EQ(contents(file), "[SETUPLIST]\r\nNUM=0\r\n[DEBUG]\r\nLOG=0\r\n");
    // Replacing a key keeps its place; a new key joins the end of its own section.
    WriteINI("setuplist", "NUM", "2", file);
    WriteINI("SETUPLIST", "EXTRA", "x", file);
    EXPECT_EQ(contents(file), "[SETUPLIST]\r\nNUM=2\r\nEXTRA=x\r\n[DEBUG]\r\nLOG=0\r\n");
}
