#include "support/SmallDisk.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#ifndef Q_OS_WIN
#include <linux/magic.h>
#include <sys/vfs.h>
#include <unistd.h>
#endif

namespace {
constexpr char kVariable[] = "TESSARK_SMALL_DISK";
constexpr int kCannotMount = 77;
constexpr qint64 kLargestSmallDisk = qint64(64) << 20;
} // namespace

SmallDisk::SmallDisk() = default;
SmallDisk::~SmallDisk() = default;

bool SmallDisk::inside() {
    return qEnvironmentVariableIsSet(kVariable);
}

QString SmallDisk::dir() const {
    return qEnvironmentVariable(kVariable);
}

void SmallDisk::fill() {
#ifndef Q_OS_WIN
    // Never a real disk: only the small tmpfs of the child is filled.
    struct statfs disk {};
    if (statfs(QFile::encodeName(dir()).constData(), &disk) != 0 || disk.f_type != TMPFS_MAGIC ||
        static_cast<qint64>(disk.f_blocks) * static_cast<qint64>(disk.f_bsize) > kLargestSmallDisk) {
        ADD_FAILURE() << dir().toStdString() << " is not a small tmpfs: not filled";
        return;
    }
#endif
    filler_ = std::make_unique<QFile>(dir() + "/filler");
    if (!filler_->open(QIODevice::WriteOnly | QIODevice::Unbuffered)) return;
    const QByteArray block(4096, 'f');
    while (filler_->write(block) == block.size()) {
    }
    // The last block, a byte at a time: not even a short line fits afterwards.
    while (filler_->write("f", 1) == 1) {
    }
}

void SmallDisk::release() {
    if (!filler_) return;
    filler_->close();
    filler_->remove();
    filler_.reset();
}

SmallDiskRun SmallDisk::runThisTestInside(qint64 bytes) {
    SmallDiskRun run;
    Q_ASSERT(bytes <= kLargestSmallDisk);
#ifdef Q_OS_WIN
    Q_UNUSED(bytes);
    run.skipped = true;
    run.output = "a disk of the test's own needs a mount namespace: Linux only";
#else
    const QString unshare = QStandardPaths::findExecutable("unshare");
    if (geteuid() != 0 || unshare.isEmpty()) {
        run.skipped = true;
        run.output = "a disk of the test's own needs root and unshare(1) to mount a tmpfs";
        return run;
    }
    QTemporaryDir mountPoint;
    const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
    QProcess child;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(kVariable, mountPoint.path());
    environment.insert("TMPDIR", mountPoint.path());
    child.setProcessEnvironment(environment);
    child.setProcessChannelMode(QProcess::MergedChannels);
    child.start(unshare,
                {"--mount", "--propagation", "private", "sh", "-c",
                 QString("mount -t tmpfs -o size=%1 tessark-small-disk \"$0\" || exit %2; exec \"$@\"")
                     .arg(bytes)
                     .arg(kCannotMount),
                 mountPoint.path(), QCoreApplication::applicationFilePath(),
                 QString("--gtest_filter=%1.%2").arg(test->test_suite_name(), test->name())});
    if (!child.waitForFinished(120000)) child.kill();
    run.output = QString::fromLocal8Bit(child.readAll());
    if (child.exitStatus() == QProcess::NormalExit && child.exitCode() == kCannotMount) {
        run.skipped = true;
        run.output = "no tmpfs could be mounted in a namespace of the test's own: " + run.output;
        return run;
    }
    run.skipped = run.output.contains("[  SKIPPED ] 1 test");
    run.passed = child.exitStatus() == QProcess::NormalExit && child.exitCode() == 0 &&
                 run.output.contains("[  PASSED  ] 1 test");
#endif
    return run;
}
