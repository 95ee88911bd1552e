#include "server/IniFile.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {
class IniFileTest : public ::testing::Test {
protected:
    QTemporaryDir dir;
    QString file = dir.path() + "/tessark.ini";
    void write(const char* text) {
        QFile f(file);
        f.open(QIODevice::WriteOnly);
        f.write(text);
    }
    std::string contents() {
        QFile f(file);
        f.open(QIODevice::ReadOnly);
        return f.readAll().toStdString();
    }
};
} // namespace

TEST_F(IniFileTest, AMissingFileSectionOrKeyReadsEmpty) {
    EXPECT_EQ(ReadINI("DEBUG", "LOG", file), "");
    write("[DEBUG]\r\nLOG=1\r\n");
    EXPECT_EQ(ReadINI("SETUPLIST", "NUM", file), "");
    EXPECT_EQ(ReadINI("DEBUG", "NUM", file), "");
}

TEST_F(IniFileTest, LooksUpSectionsAndKeysWithoutRegardToCase) {
    write("; comment\r\n[setuplist]\r\n  num = 2 \r\n[SetupList1]\r\nfname=C:\\a b\\x.stp\r\n[DEBUG]\r\nLOG=\"1\"\r\n");
    EXPECT_EQ(ReadINI("SETUPLIST", "NUM", file), "2");
    EXPECT_EQ(ReadINI("SETUPLIST1", "FNAME", file), "C:\\a b\\x.stp");
    EXPECT_EQ(ReadINI("debug", "log", file), "1"); // surrounding quotes go
    EXPECT_EQ(ReadINI("SETUPLIST", "FNAME", file), ""); // a key of another section
}

TEST_F(IniFileTest, CutsValuesAt749Characters) {
    std::string text = "[S]\r\nK=" + std::string(800, 'v') + "\r\n";
    write(text.c_str());
    EXPECT_EQ(ReadINI("S", "K", file).size(), 749u);
}

TEST_F(IniFileTest, WritesKeysInUpperCaseCreatingSectionsOnDemand) {
    WriteINI("SETUPLIST", "num", "0", file);
    WriteINI("DEBUG", "Log", "0", file);
    EXPECT_EQ(contents(), "[SETUPLIST]\r\nNUM=0\r\n[DEBUG]\r\nLOG=0\r\n");
    // Replacing a key keeps its place; a new key joins the end of its own section.
    WriteINI("setuplist", "NUM", "2", file);
    WriteINI("SETUPLIST", "EXTRA", "x", file);
    EXPECT_EQ(contents(), "[SETUPLIST]\r\nNUM=2\r\nEXTRA=x\r\n[DEBUG]\r\nLOG=0\r\n");
    EXPECT_EQ(ReadINI("SETUPLIST", "extra", file), "x");
}
