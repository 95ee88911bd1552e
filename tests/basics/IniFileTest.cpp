#include "basics/IniFile.h"
#include "support/Files.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

TEST(IniFile, ReadsWithoutRegardToCaseCutsAt749AndReadsMissingAsEmpty) {
    QTemporaryDir dir;
    const QString file = dir.path() + "/tessark.ini";
    EXPECT_EQ(readIni("DEBUG", "LOG", file), "");
    writeFile(file,
              "; comment\r\n[setuplist]\r\n  num = 2 \r\n[SetupList1]\r\nfname=C:\\a b\\x.stp\r\n[DEBUG]\r\n"
              "LOG=\"1\"\r\n[S]\r\nK=" +
                  QByteArray(800, 'v') + "\r\n");
    EXPECT_EQ(readIni("SETUPLIST", "NUM", file), "2");
    EXPECT_EQ(readIni("SETUPLIST1", "FNAME", file), "C:\\a b\\x.stp");
    EXPECT_EQ(readIni("debug", "log", file), "1");      // surrounding quotes go
    EXPECT_EQ(readIni("SETUPLIST", "FNAME", file), ""); // a key of another section
    EXPECT_EQ(readIni("NOSECTION", "NUM", file), "");
    EXPECT_EQ(readIni("S", "K", file).size(), 749u);
}

TEST(IniFile, WritesKeysInUpperCaseCreatingTheFileAndSectionsOnDemand) {
    QTemporaryDir dir;
    const QString file = dir.path() + "/tessark.ini";
    writeIni("SETUPLIST", "num", "0", file);
    writeIni("DEBUG", "Log", "0", file);
    EXPECT_EQ(readFile(file), "[SETUPLIST]\r\nNUM=0\r\n[DEBUG]\r\nLOG=0\r\n");
    // Replacing a key keeps its place; a new key joins the end of its own section.
    writeIni("setuplist", "NUM", "2", file);
    writeIni("SETUPLIST", "EXTRA", "x", file);
    EXPECT_EQ(readFile(file), "[SETUPLIST]\r\nNUM=2\r\nEXTRA=x\r\n[DEBUG]\r\nLOG=0\r\n");
}
