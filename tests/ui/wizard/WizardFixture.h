#pragma once
// A fake Falcon 4 installation under a Wine-style prefix, a server in a temporary program
// directory, and file dialogs that return what the test chose.
#include "setups/SetupCatalogue.h"
#include "support/TestServer.h"
#include "support/WindowsRegistry.h"
#include "ui/wizard/OperatorDialogs.h"
#include "ui/wizard/SetupWizard.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QPushButton>
#include <QRadioButton>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

#include <deque>
#include <functional>

// The fake installation: on drive C: of the Wine prefix. On Windows that is the machine's own C:
// (the tests run only in a throw-away Wine prefix there).
inline QString falconInstallDir(const QString& prefix) {
#ifdef Q_OS_WIN
    Q_UNUSED(prefix);
    return "C:/Falcon4";
#else
    return prefix + "/drive_c/Falcon4";
#endif
}

class ScriptedDialogs : public OperatorDialogs {
  public:
    std::deque<QStringList> choices; // what each file dialog returns, in turn
    QStringList titles;              // of the dialogs shown
    QStringList directories;         // each dialog's starting folder
    QStringList boxes;               // "title|text"
    std::vector<int> unhandled;      // run-time error numbers whose box was shown
    int ends = 0;                    // times "the program" ended
    std::function<void()> atEnd;     // what the test looks at when it ends

    QStringList openFiles(QWidget*, const QString& title, const QString& directory, const QString&,
                          bool) override {
        titles << title;
        directories << directory;
        if (choices.empty()) return {};
        QStringList next = choices.front();
        choices.pop_front();
        return next;
    }
    void errorBox(QWidget*, const QString& text, const QString& title) override {
        boxes << title + "|" + text;
    }
    void unhandledError(QWidget*, const RuntimeError& e) override { unhandled.push_back(e.number); }
    void endProgram() override {
        ++ends;
        if (atEnd) atEnd();
    }
};

// The keyboard, as the operator has it: every key goes to the widget that has the focus.
namespace keys {
inline QWidget* focused() {
    return QApplication::focusWidget();
}
inline QString focusedName() {
    return focused() ? focused()->objectName() : QString();
}
inline void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
    QWidget* target = focused() ? focused() : QApplication::activeWindow();
    ASSERT_NE(target, nullptr) << "no window has the keyboard";
    QTest::keyClick(target, key, modifiers);
}
inline void type(const QString& text) {
    for (QChar c : text) {
        QWidget* target = focused() ? focused() : QApplication::activeWindow();
        ASSERT_NE(target, nullptr) << "no window has the keyboard";
        QTest::keyClick(target, c.toLatin1());
    }
}
} // namespace keys

class WizardTest : public ::testing::Test {
  protected:
    explicit WizardTest(const std::string& iniText = {}) : server_(iniText) {}

    void SetUp() override {
#ifdef Q_OS_WIN
        // Windows: the key in the registry itself and the installation in C:\Falcon4, both in
        // the run's throw-away Wine prefix.
        if (!windows_registry::underWine()) GTEST_SKIP() << "rewrites the machine's Falcon 4 key";
        QDir(installDir()).removeRecursively();
        ASSERT_TRUE(windows_registry::setFalconValue("/reg:32", "baseDir", "REG_SZ", "C:\\Falcon4"));
        ASSERT_TRUE(windows_registry::setFalconValue("/reg:32", "curTheater", "REG_SZ", "Korea KTO"));
#endif
        hadPrefix_ = qEnvironmentVariableIsSet("WINEPREFIX");
        savedPrefix_ = qgetenv("WINEPREFIX");
        qputenv("WINEPREFIX", prefix_.path().toUtf8());
        QFile reg(prefix_.filePath("system.reg"));
        reg.open(QIODevice::WriteOnly);
        reg.write("WINE REGISTRY Version 2\n\n[Software\\\\Wow6432Node\\\\Microprose\\\\Falcon\\\\4.0] "
                  "1700000000\n\"baseDir\"=\"C:\\\\Falcon4\"\n\"curTheater\"=\"Korea KTO\"\n");
        install("cobra.cfg",
                "set g_bFoo 1\r\nSET g_nBar 2 // two\r\n\r\nsetting x\r\nset g_sBaz  spaced  \r\n");
        install("Data/Sub/a.dat", "123456789");
        install("Data/Sub/b.dat", "abc");
        install("top.txt", "");
    }
    void TearDown() override {
#ifdef Q_OS_WIN
        if (windows_registry::underWine()) {
            windows_registry::deleteFalconKey();
            QDir(installDir()).removeRecursively();
        }
#endif
        if (hadPrefix_)
            qputenv("WINEPREFIX", savedPrefix_);
        else
            qunsetenv("WINEPREFIX");
    }

    // A file of the installation, by its path below the Falcon directory.
    QString install(const QString& relative, const QByteArray& content) {
        const QString path = installDir() + "/" + relative;
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile f(path);
        f.open(QIODevice::WriteOnly | QIODevice::Truncate);
        f.write(content);
        return path;
    }
    QString installDir() const {
        return falconInstallDir(prefix_.path());
    }

    WizardPage* page() const {
        return wizard_.currentPage();
    }
    QString pageName() const {
        return page() ? page()->objectName() : QString();
    }
    template <typename T> T* control(const char* name) const {
        T* found = page() ? page()->findChild<T*>(name) : nullptr;
        EXPECT_NE(found, nullptr) << name << " on " << pageName().toStdString();
        return found;
    }
    void click(const char* button) {
        if (auto* b = control<QPushButton>(button)) QTest::mouseClick(b, Qt::LeftButton);
    }
    void next() {
        click("Command1");
    }
    // The last page works once it is on screen, letting events run while it does.
    bool waitForPage(const QString& name) {
        return QTest::qWaitFor([&] { return pageName() == name; }, 10000);
    }
    // The page is on screen and has the keyboard.
    bool onPage(const QString& name) {
        return waitForPage(name) && QTest::qWaitForWindowActive(page());
    }
    std::string appFile(const QString& name) const {
        return server_.readFile(name);
    }

    QTemporaryDir prefix_;
    QByteArray savedPrefix_;
    bool hadPrefix_ = false;
    TestServer server_;
    ScriptedDialogs dialogs_;
    SetupWizard wizard_{server_.server(), dialogs_, nullptr};
};

inline void writeText(const QString& path, const std::string& text) {
    QFile f(path);
    f.open(QIODevice::WriteOnly | QIODevice::Truncate);
    f.write(text.data(), static_cast<qint64>(text.size()));
}

class CataloguedSetupTest : public WizardTest {
  protected:
    using WizardTest::WizardTest;

    // Setups made by hand earlier and catalogued in tessark.ini.
    void catalogue(const std::vector<std::pair<QString, std::string>>& files) {
        std::string ini = "[SETUPLIST]\r\nNUM=" + std::to_string(files.size()) + "\r\n";
        int i = 0;
        for (const auto& [name, text] : files) {
            writeText(server_.path(name), text);
            ini += "[SETUPLIST" + std::to_string(++i) + "]\r\nFNAME=" + server_.path(name).toStdString() +
                   "\r\n";
        }
        writeText(server_.path("tessark.ini"), ini);
        server_.server().setups().reload();
    }
    void chooseOption(int i) {
        wizard_.start();
        QRadioButton* option = control<QRadioButton>(QString("Option1_%1").arg(i).toLatin1());
        QTest::mouseClick(option, Qt::LeftButton, {},
                          QPoint(6, option->height() / 2)); // on the button itself
        next();
    }
};
