// Replays the kept ban-file corpus through the fuzz target's check.
#include "fuzz/AccessFuzzChecks.h"

#include <QDir>
#include <QFile>
#include <gtest/gtest.h>

TEST(FuzzCorpusReplay, BanFile) {
    const QDir dir(QStringLiteral(TESSARK_SOURCE_DIR "/tests/fuzz/corpus/ban_file"));
    const QStringList files = dir.entryList(QDir::Files);
    ASSERT_FALSE(files.isEmpty()) << "no corpus in " << dir.path().toStdString();
    for (const QString& name : files) {
        QFile file(dir.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
        const QByteArray bytes = file.readAll();
        EXPECT_EQ(fuzzchecks::banFile(std::string_view(bytes.constData(), static_cast<size_t>(bytes.size()))),
                  "")
            << name.toStdString();
    }
}
