// Replays the kept fuzz corpus through the fuzz targets' checks, so every build runs the
// inputs that once found new paths without needing the fuzzer itself.
#include "fuzz/AccessFuzzChecks.h"
#include "fuzz/FileFuzzChecks.h"
#include "fuzz/FuzzChecks.h"

#include <QDir>
#include <QFile>
#include <gtest/gtest.h>

namespace {

template <typename Check> void replay(const char* target, Check check) {
    const QDir dir(QStringLiteral(TESSARK_SOURCE_DIR "/tests/fuzz/corpus/") + target);
    const QStringList files = dir.entryList(QDir::Files);
    ASSERT_FALSE(files.isEmpty()) << "no corpus in " << dir.path().toStdString();
    for (const QString& name : files) {
        QFile file(dir.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
        const QByteArray bytes = file.readAll();
        EXPECT_EQ(check(std::string_view(bytes.constData(), static_cast<size_t>(bytes.size()))), "")
            << target << "/" << name.toStdString();
    }
}

TEST(FuzzCorpusReplay, AiSpyText) {
    replay("ai_spy_text", fuzzchecks::aiSpyText);
}
TEST(FuzzCorpusReplay, Framing) {
    replay("framing", fuzzchecks::framing);
}
TEST(FuzzCorpusReplay, FilesAndNumbers) {
    replay("setup_file", fuzzchecks::setupFile);
    replay("tessark_ini", fuzzchecks::iniFile);
    replay("leading_number", fuzzchecks::leadingNumber);
}
TEST(FuzzCorpusReplay, BanFile) {
    replay("ban_file", fuzzchecks::banFile);
}

} // namespace
