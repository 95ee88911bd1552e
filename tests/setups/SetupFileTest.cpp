#include "setups/SetupFile.h"
#include "server/RuntimeError.h"

#include <QFile>
#include <QTemporaryDir>
#include <gmock/gmock.h>

using ::testing::ElementsAre;

namespace {

class SetupFileTest : public ::testing::Test {
  protected:
    QTemporaryDir dir;
    QString path(const QString& name = "s.stp") const { return dir.filePath(name); }
    void write(const std::string& bytes, const QString& name = "s.stp") const {
        QFile f(path(name));
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(bytes.data(), static_cast<qint64>(bytes.size()));
    }
    std::string read(const QString& name = "s.stp") const {
        QFile f(path(name));
        return f.open(QIODevice::ReadOnly) ? f.readAll().toStdString() : std::string();
    }
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
    SetupFileLines setup = readSetupFile(path());
    EXPECT_EQ(setup.name, "  // Night Ops  ");
    EXPECT_THAT(setup.records, ElementsAre("CURSET@BMS", "CHKSIM", "CURTHE@Theater A//not a comment",
                                           "\tCONFIG@tab@1", "/ / not a comment either",
                                           "UNKNOW@kept as it is", "CHKSUM@data\\file1.dat@1234"));
}

TEST_F(SetupFileTest, LineEndsAndDegenerateFiles) {
    // CR LF, a lone LF and a lone CR each end one line; CR LF is never two.
    write("Mixed\r\nA@1\nB@2\rC@3\r\n\r\n");
    SetupFileLines mixed = readSetupFile(path());
    EXPECT_EQ(mixed.name, "Mixed");
    EXPECT_THAT(mixed.records, ElementsAre("A@1", "B@2", "C@3"));

    write("Only a name\r\n", "name.stp");
    SetupFileLines nameOnly = readSetupFile(path("name.stp"));
    EXPECT_EQ(nameOnly.name, "Only a name");
    EXPECT_TRUE(nameOnly.records.empty());

    write("", "empty.stp");
    SetupFileLines empty = readSetupFile(path("empty.stp"));
    EXPECT_EQ(empty.name, "");
    EXPECT_TRUE(empty.records.empty());

    try {
        readSetupFile(path("absent.stp"));
        FAIL() << "a missing file must raise";
    } catch (const RuntimeError& e) {
        EXPECT_EQ(e.number, 53);
    }
}

TEST_F(SetupFileTest, ImportReaderTakesTheKindFromSixCharactersAndValuesBySplitting) {
    SetupRecordFields sum = interpretRecordLine("CHKSUM@data\\sub\\file2.dat@5678");
    EXPECT_EQ(sum.kind, "CHKSUM");
    EXPECT_EQ(sum.value(1), "data\\sub\\file2.dat");
    EXPECT_EQ(sum.value(2), "5678");
    EXPECT_EQ(sum.value(3), "");

    SetupRecordFields sim = interpretRecordLine("CHKSIM@and more");
    EXPECT_EQ(sim.kind, "CHKSIM");
    EXPECT_EQ(sim.value(1), "and more");

    SetupRecordFields bare = interpretRecordLine("CHKSIM");
    EXPECT_EQ(bare.kind, "CHKSIM");
    EXPECT_EQ(bare.value(1), "");

    SetupRecordFields adjacent = interpretRecordLine("CONFIG@@x");
    EXPECT_EQ(adjacent.value(1), "");
    EXPECT_EQ(adjacent.value(2), "x");

    SetupRecordFields shortLine = interpretRecordLine("CUR");
    EXPECT_EQ(shortLine.kind, "CUR");
    EXPECT_EQ(shortLine.value(1), "");
}

TEST_F(SetupFileTest, WriterWritesCrLfLinesThatTheReaderGetsBack) {
    {
        write("an older, longer file that must be replaced entirely\r\n");
        SetupFileWriter writer(path());
        for (const char* line : {" Night Ops", "CURSET@BMS", "CHKSIM", "CURTHE@Theater A",
                                 "CHKSUM@data\\file1.dat@-1207622437", "CONFIG@entry_one@1"})
            writer.line(line);
        writer.close();
    }
    EXPECT_EQ(
        read(),
        " Night Ops\r\nCURSET@BMS\r\nCHKSIM\r\nCURTHE@Theater A\r\nCHKSUM@data\\file1.dat@-1207622437\r\n"
        "CONFIG@entry_one@1\r\n");
    SetupFileLines back = readSetupFile(path());
    EXPECT_EQ(back.name, " Night Ops");
    EXPECT_EQ(back.records.size(), 5u);

    EXPECT_THROW(SetupFileWriter(dir.filePath("no/such/dir/x.stp")), RuntimeError);
}

} // namespace
