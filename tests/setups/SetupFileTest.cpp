#include "setups/SetupFile.h"
#include "basics/RuntimeError.h"
#include "support/Files.h"

#include <QTemporaryDir>
#include <gmock/gmock.h>

using ::testing::ElementsAre;

namespace {

class SetupFileTest : public ::testing::Test {
  protected:
    QTemporaryDir dir;
    QString path(const QString& name = "s.stp") const { return dir.filePath(name); }
    void write(const char* bytes, const QString& name = "s.stp") const { writeFile(path(name), bytes); }
};

TEST_F(SetupFileTest, CatalogueReaderKeepsTheNameRawAndTrimmedRecordsInOrder) {
    write("  // Night Ops  \r\n" // the name line is never trimmed nor taken as a comment
          "CURSET@BMS\r\n"
          "   // a comment after blanks\r\n"
          "   \r\n" // blanks only
          "\r\n"
          "  CHKSIM  \r\n" // trimmed on both sides
          "CURTHE@Theater A//not a comment\r\n"
          "\tCONFIG@tab@1\r\n" // only spaces are blanks
          "/ / not a comment either\r\n"
          "UNKNOW@kept as it is\r\n"
          "CHKSUM@data\\file1.dat@1234"); // last line without a line end
    SetupFileLines setup = readSetupFile(path(), 1 << 20);
    EXPECT_EQ(setup.name, "  // Night Ops  ");
    EXPECT_THAT(setup.records, ElementsAre("CURSET@BMS", "CHKSIM", "CURTHE@Theater A//not a comment",
                                           "\tCONFIG@tab@1", "/ / not a comment either",
                                           "UNKNOW@kept as it is", "CHKSUM@data\\file1.dat@1234"));
}

TEST_F(SetupFileTest, LineEndsAndDegenerateFiles) {
    // CR LF, a lone LF and a lone CR each end one line; CR LF is never two.
    write("Mixed\r\nA@1\nB@2\rC@3\r\n\r\n");
    SetupFileLines mixed = readSetupFile(path(), 1 << 20);
    EXPECT_EQ(mixed.name, "Mixed");
    EXPECT_THAT(mixed.records, ElementsAre("A@1", "B@2", "C@3"));
    write("", "empty.stp");
    SetupFileLines empty = readSetupFile(path("empty.stp"), 1 << 20);
    EXPECT_EQ(empty.name, "");
    EXPECT_TRUE(empty.records.empty());
    EXPECT_THROW(readSetupFile(path("absent.stp"), 1 << 20), RuntimeError);
}

TEST_F(SetupFileTest, ImportReaderTakesTheKindFromSixCharactersAndValuesBySplitting) {
    SetupRecordFields sum = interpretRecordLine("CHKSUM@data\\sub\\file2.dat@@5678");
    EXPECT_EQ(sum.kind, "CHKSUM");
    EXPECT_EQ(sum.value(1), "data\\sub\\file2.dat");
    EXPECT_EQ(sum.value(2), "");
    EXPECT_EQ(sum.value(3), "5678");
    EXPECT_EQ(sum.value(4), "");
    SetupRecordFields shortLine = interpretRecordLine("CUR");
    EXPECT_EQ(shortLine.kind, "CUR");
    EXPECT_EQ(shortLine.value(1), "");
}

} // namespace
