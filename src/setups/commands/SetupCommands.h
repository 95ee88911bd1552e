#pragma once
// The setups managed from a command line, with the same logic as the setup wizard and the
// setup list editor:
//
//   list [--json]                 one line per setup: number, name, file (and what is wrong
//                                 with a file that gave no setup)
//   create --name NAME [--file PATH]... [--no-sim-folder] [--config ENTRY]...
//          [--installation DIR] [--theater NAME]
//                                 a setup from an installation, as the wizard makes it
//   import FILE                   a setup file made elsewhere, copied beside the program
//   remove N                      setup N out of the list; its file stays on disk
//   verify N [--installation DIR] [--theater NAME]
//                                 an installation against setup N's lines
//
// The work with the operator's files (reading FILE, finding the installation, checksums) is
// done where the command runs, as the operator who typed it, with the operator's paths; only
// the result goes to the catalogue (a setup file's bytes to store, a setup's lines to verify
// against), which is the running server's or, with none running, the program directory's.
//
// Exit status: 0 done; 1 when verify finds lines that fail, or when the work failed (no
// installation, a file that could not be read or written: the message says which); 2 when the
// command cannot run as given (an unknown sub-command or option, a missing or extra argument, a
// number that is no listed setup, a file that is missing or outside the installation, a
// configuration entry the installation does not have, a name the file system would refuse).
// With status 2 one line goes to err and nothing has been written: arguments are checked
// before anything is.
#include "basics/FileLimits.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTextStream>

#include <functional>

class SetupCatalogue;

struct CatalogueAnswer {
    int status = 0;
    QString out;
    QString err;
};

// Where a command's catalogue requests go: the words after "setups", and the bytes of a setup
// file to store. The requests are those of serveCatalogueRequest.
class CatalogueAccess {
  public:
    virtual ~CatalogueAccess() = default;
    virtual CatalogueAnswer ask(const QStringList& words, const QByteArray& content = {}) = 0;
    // The program directory the catalogue's setup files are in, with a final separator.
    virtual QString programDir() const = 0;
    // The largest setup file the catalogue takes.
    virtual qint64 maxSetupBytes() const { return FileLimits{}.setupFileBytes; }
};

// Called every few MiB while a checksum reads a file, with the file and the bytes read so far;
// the command line shows it.
using ChecksumProgressReport = std::function<void(const QString& file, qint64 done, qint64 size)>;

// An operator's setups command (args: the words after "setups").
int runSetupCommand(const QStringList& args, CatalogueAccess& catalogue, QTextStream& out, QTextStream& err,
                    const ChecksumProgressReport& progress = {});

// The catalogue's side, as a server (or a program directory without one) serves it:
//   list [--json]; remove N
//   lines N                  setup N as JSON: number, name, file, lines
//   store-import FILE        content: a setup file's bytes, copied under its name line
//   store-built NAME         content: the setup file a create built, written as NAME.stp
// programDir is where the setup files are written, with or without a final separator.
CatalogueAnswer serveCatalogueRequest(const QStringList& words, const QByteArray& content,
                                      SetupCatalogue& catalogue, const QString& programDir);

// Whether the words are a sub-command an operator may type (the others are requests between
// the command line and the catalogue).
bool isOperatorSetupCommand(const QString& word);

// The catalogue of this process: requests served at once by serveCatalogueRequest.
class DirectCatalogue : public CatalogueAccess {
  public:
    DirectCatalogue(SetupCatalogue& catalogue, const QString& programDir);
    CatalogueAnswer ask(const QStringList& words, const QByteArray& content = {}) override {
        return serveCatalogueRequest(words, content, catalogue_, programDir_);
    }
    QString programDir() const override { return programDir_; }
    qint64 maxSetupBytes() const override;

  private:
    SetupCatalogue& catalogue_;
    QString programDir_;
};

// runSetupCommand on a catalogue of this process.
inline int runSetupCommand(const QStringList& args, SetupCatalogue& catalogue, const QString& programDir,
                           QTextStream& out, QTextStream& err) {
    DirectCatalogue direct(catalogue, programDir);
    return runSetupCommand(args, direct, out, err);
}
