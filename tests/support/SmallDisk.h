#pragma once
// A disk that fills up, for the tests of what the server does when one does: the test runs again
// in a child process with a mount namespace of its own, where a small tmpfs is the temporary
// directory, so every QTemporaryDir the test makes (a server's program directory included) lies
// on it. The machine's own disks are never touched.
//
//   TEST(FullDisk, Something) {
//       SMALL_DISK(disk, 512 * 1024); // in the parent: runs the test in the child and checks it
//       ...set up...
//       disk.fill();                  // from here on the disk takes nothing more
//   }
//
// It needs Linux, root (a tmpfs is mounted) and unshare(1); elsewhere the test is skipped, saying why.
#include <QString>

#include <memory>

class QFile;

struct SmallDiskRun {
    bool skipped = false;
    bool passed = false;
    QString output; // the child's, or why it was skipped
};

class SmallDisk {
  public:
    SmallDisk();
    ~SmallDisk();
    // True in the child, where the small disk is there.
    static bool inside();
    // The current test run in a child on a disk of `bytes`.
    static SmallDiskRun runThisTestInside(qint64 bytes);

    QString dir() const;
    // Takes every byte left on the disk (with a file of its own), or gives it back.
    void fill();
    void release();

  private:
    std::unique_ptr<QFile> filler_;
};

#define SMALL_DISK(disk, bytes)                                                                              \
    SmallDisk disk;                                                                                          \
    if (!SmallDisk::inside()) {                                                                              \
        const SmallDiskRun run_ = SmallDisk::runThisTestInside(bytes);                                       \
        if (run_.skipped) GTEST_SKIP() << run_.output.toStdString();                                         \
        ASSERT_TRUE(run_.passed) << run_.output.toStdString();                                               \
        return;                                                                                              \
    }
