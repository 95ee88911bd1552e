#pragma once
// A fake Falcon 4 installation under a Wine-style prefix, a server in a temporary program
// directory, and file dialogs that return what the test chose.
#include "setups/SetupCatalogue.h"
#include "support/FakeInstallation.h"
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
        install("cobra.cfg",
                "set g_bFoo 1\r\nSET g_nBar 2 // two\r\n\r\nsetting x\r\nset g_sBaz  spaced  \r\n");
        install("Data/Sub/a.dat", "123456789");
        install("Data/Sub/b.dat", "abc");
        install("top.txt", "");
    }
#ifdef Q_OS_WIN
    void TearDown() override {
        if (windows_registry::underWine()) {
            windows_registry::deleteFalconKey();
            QDir(installDir()).removeRecursively();
        }
    }
#endif

    // A file of the installation, by its path below the Falcon directory.
    QString install(const QString& relative, const QByteArray& content) {
        return writeFile(installDir() + "/" + relative, content);
    }
    // On drive C: of the Wine prefix; on Windows the machine's own C: (the tests run only in a
    // throw-away Wine prefix there).
    QString installDir() const {
#ifdef Q_OS_WIN
        return "C:/Falcon4";
#else
        return falcon_.dir();
#endif
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

    FakeInstallation falcon_;
    TestServer server_;
    ScriptedDialogs dialogs_;
    SetupWizard wizard_{server_.server(), dialogs_, nullptr};
};

class CataloguedSetupTest : public WizardTest {
  protected:
    using WizardTest::WizardTest;

    void chooseOption(int i) {
        wizard_.start();
        QRadioButton* option = control<QRadioButton>(QString("Option1_%1").arg(i).toLatin1());
        QTest::mouseClick(option, Qt::LeftButton, {},
                          QPoint(6, option->height() / 2)); // on the button itself
        next();
    }
};
