#pragma once
// A file written whole or not at all: the bytes go to a new temporary file beside the target,
// are flushed and checked (and synced to the disk), and only then take the target's name in
// one rename. Any failure leaves the old file as it was and raises the run-time error a
// program of the classic kind would give, with the path and the system's reason after the
// classic text:
//
//   61 "Disk full"               the disk (or the user's quota) took no more
//   57 "Device I/O error"        the device failed under the write
//   75 "Path/File access error"  anything else: no right to write there, a read-only disk, a
//                                directory, device or symbolic link where the file should be
//
// A symbolic link at the target is refused, never written through: the program makes none, so
// one there was put by someone else, and following it would let whoever can write the program
// directory have the server overwrite any file it may write. (Replacing the link itself would
// be safe as well, but would silently undo a link the operator made on purpose.)
//
// The file is left readable by everyone and writable by its owner (0644), as the program's
// setup files and tessark.ini have always been, whatever mode the temporary file had.
#include <QString>

#include <memory>
#include <string_view>

class QTemporaryFile;

class WholeFileWriter {
  public:
    // Raises 75 when the target is a symbolic link or anything but a regular file, or no file can
    // be made beside it.
    explicit WholeFileWriter(const QString& path);
    // Without commit() the temporary file goes and the old file stays.
    ~WholeFileWriter();
    WholeFileWriter(const WholeFileWriter&) = delete;
    WholeFileWriter& operator=(const WholeFileWriter&) = delete;

    void write(std::string_view bytes);
    // Flushes, checks, syncs and renames over the target. Raises on any failure, with the old
    // file kept.
    void commit();

  private:
    QString path_;
    std::unique_ptr<QTemporaryFile> file_;
};

// The whole file in one call.
void writeWholeFile(const QString& path, std::string_view bytes);
