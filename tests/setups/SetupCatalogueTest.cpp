#include "setups/SetupCatalogue.h"
#include "basics/IniFile.h"
#include "support/TestServer.h"

#include <gmock/gmock.h>

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

std::string latin1(const QString& s) {
    return s.toLatin1().toStdString();
}

// A stopped server whose program directory holds the given tessark.ini and setup files.
struct Catalogue {
    TestServer ts{{}, false};
    SetupCatalogue& setups() { return ts.server().setups(); }
    std::string path(const char* name) { return latin1(ts.path(name)); }
    std::string section(int i, const std::string& file) {
        return "[SETUPLIST" + std::to_string(i) + "]\r\nFNAME=" + file + "\r\n";
    }
};

TEST(SetupCatalogueTest, LoadsNamesAndLinesAndReportsMissingFilesWithoutDroppingThem) {
    Catalogue c;
    c.ts.writeFile("one.stp",
                   "Night Ops\r\nCURSET@BMS\r\n// hand comment\r\n  CHKSIM \r\nCURTHE@Theater A\r\n");
    c.ts.writeFile("name.stp", "Name only\r\n");
    c.ts.writeFile("tessark.ini", "[SETUPLIST]\r\nNUM=4\r\n" + c.section(1, c.path("one.stp")) +
                                      c.section(2, c.path("gone.stp")) + c.section(3, c.path("name.stp")) +
                                      "[DEBUG]\r\nLOG=0\r\n");
    c.ts.start();

    const auto& setups = c.setups().list();
    ASSERT_EQ(setups.ubound(), 4); // NUM beyond the sections: the fourth has an empty path
    EXPECT_EQ(c.setups().count(), 4);
    EXPECT_EQ(setups[1].name, "Night Ops");
    EXPECT_EQ(setups[1].lines.ubound(), 3);
    EXPECT_EQ(setups[1].lines[2], "CHKSIM");
    EXPECT_EQ(setups[2].name, "");
    EXPECT_EQ(setups[2].filePath, c.path("gone.stp"));
    EXPECT_EQ(setups[3].name, "Name only");
    EXPECT_EQ(setups[3].lines.ubound(), 0);
    EXPECT_EQ(setups[4].filePath, "");
    EXPECT_THAT(c.ts.display().messageBoxes,
                ElementsAre(QString::fromStdString("Error|The File " + c.path("gone.stp") + " was not found"),
                            QString("Error|The File  was not found")));
}

TEST(SetupCatalogueTest, CountsThatAreAbsentOrNotNumbersOrTooLargeGiveAnEmptyCatalogue) {
    for (const char* num : {"", "NUM=abc\r\n", "NUM=-3\r\n", "NUM=99999999999\r\n"}) {
        Catalogue c;
        c.ts.writeFile("tessark.ini", std::string("[SETUPLIST]\r\n") + num + "[DEBUG]\r\nLOG=0\r\n");
        c.ts.start();
        EXPECT_EQ(c.setups().list().ubound(), 0) << num;
        EXPECT_TRUE(c.ts.display().messageBoxes.isEmpty()) << num;
    }
}

TEST(SetupCatalogueTest, CommitRenumbersTheSectionsAndDropsEveryOtherSetting) {
    Catalogue c;
    c.ts.writeFile("a.stp", "A\r\nCURSET@COB\r\n");
    c.ts.writeFile("b.stp", "B\r\nCURSET@BMS\r\n");
    c.ts.writeFile("c.stp", "C\r\nCURSET@FF\r\n");
    c.ts.writeFile("tessark.ini", "[SETUPLIST]\r\nNUM=3\r\n" + c.section(1, c.path("a.stp")) +
                                      c.section(2, c.path("b.stp")) + c.section(3, c.path("c.stp")) +
                                      "[DEBUG]\r\nLOG=0\r\n");
    c.ts.start();

    // What the setup list editor does: drop the first, then commit.
    auto& edited = c.setups().editableList();
    VbList<SetupRecord> without;
    for (int i = 2; i <= edited.ubound(); ++i)
        without.append(edited[i]);
    edited = without;
    c.setups().commit();

    const QString ini = c.ts.path("tessark.ini");
    EXPECT_EQ(readIni("SETUPLIST", "NUM", ini), "2");
    EXPECT_EQ(readIni("SETUPLIST1", "FNAME", ini), c.path("b.stp"));
    EXPECT_EQ(readIni("SETUPLIST2", "FNAME", ini), c.path("c.stp"));
    EXPECT_EQ(readIni("SETUPLIST3", "FNAME", ini), "");
    EXPECT_THAT(c.ts.readFile("tessark.ini"), Not(HasSubstr("DEBUG")));

    // The commit reloads: each setup's lines once, not appended to the old ones.
    const auto& setups = c.setups().list();
    ASSERT_EQ(setups.ubound(), 2);
    EXPECT_EQ(setups[1].name, "B");
    EXPECT_EQ(setups[1].lines.ubound(), 1);
}

} // namespace
