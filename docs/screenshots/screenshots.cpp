// Renders the status window with a few players and two pages of the Add Setup wizard into
// PNG files: screenshots OUTPUT_DIR (run under a display, e.g. Xvfb; see make-screenshots.sh).
#include "server/Server.h"
#include "ui/StatusWindow.h"
#include "ui/wizard/OperatorDialogs.h"
#include "ui/wizard/SetupWizard.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QPushButton>
#include <QRadioButton>
#include <QTemporaryDir>
#include <QTimer>

namespace {

// Chooses two files of the installation when "Browse" is pressed.
class ChosenFiles : public OperatorDialogs {
  public:
    QStringList files;
    QStringList openFiles(QWidget*, const QString&, const QString&, const QString&, bool) override {
        return files;
    }
    void errorBox(QWidget*, const QString&, const QString&) override {}
    void unhandledError(QWidget*, const RuntimeError&) override {}
    void endProgram() override {}
};

void write(const QString& path, const QByteArray& content) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    f.open(QIODevice::WriteOnly);
    f.write(content);
}

void settle() {
    for (int i = 0; i < 10; ++i)
        QApplication::processEvents();
}

bool save(QWidget* w, const QString& path) {
    settle();
    return w->grab().save(path);
}

} // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    if (argc != 2) return 2;
    const QString out = QString::fromLocal8Bit(argv[1]);

    // A Falcon installation in a Wine-style prefix, and a program directory.
    QTemporaryDir prefix, programDir;
    qputenv("WINEPREFIX", prefix.path().toUtf8());
    write(prefix.filePath("system.reg"),
          "WINE REGISTRY Version 2\n\n[Software\\\\Wow6432Node\\\\Microprose\\\\Falcon\\\\4.0]\n"
          "\"baseDir\"=\"C:\\\\Falcon4\"\n\"curTheater\"=\"Korea KTO\"\n");
    const QString falcon = prefix.path() + "/drive_c/Falcon4";
    write(falcon + "/cobra.cfg", "set g_bRealisticAvionics 1\r\n");
    write(falcon + "/terrdata/objects/KoreaObj.dat", "objects");
    write(falcon + "/campaign/save/tactical.cam", "campaign");

    auto chosen = std::make_unique<ChosenFiles>();
    ChosenFiles& dialogs = *chosen;
    StatusWindow window(std::move(chosen));
    Server server(window, programDir.path() + "/", Ports::anyFree(), [] {});
    window.attach(server);
    server.start();
    window.showPlayers({{"Viper 1-1 (Night Ops)", 1}, {"Viper 1-2 (Night Ops)", 2}, {"Cobra 2-1 ()", 3}});
    window.showAwacsCount("2");
    window.showSimCount("1");
    window.showAiSpyState(true);
    window.show();
    bool ok = save(&window, out + "/status-window.png");

    SetupWizard* wizard = window.wizard();
    wizard->start();
    ok = save(wizard->currentPage(), out + "/wizard-start.png") && ok;
    auto next = [&] { wizard->currentPage()->findChild<QPushButton*>("Command1")->click(); };
    next();
    next();
    next();
    dialogs.files = {falcon + "/terrdata/objects/KoreaObj.dat"};
    wizard->currentPage()->findChild<QPushButton*>("Command3")->click();
    dialogs.files = {falcon + "/campaign/save/tactical.cam"};
    wizard->currentPage()->findChild<QPushButton*>("Command3")->click();
    ok = save(wizard->currentPage(), out + "/wizard-files.png") && ok;
    wizard->unloadCurrent();
    server.exit();
    return ok ? 0 : 1;
}
