// The setup list editor and the end after a run-time error in the forms, by keyboard.
#include "WizardFixture.h"

#include "support/Peer.h"
#include "ui/wizard/SetupListDialog.h"

#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QPointer>
#include <QTimer>

using namespace keys;

namespace {
QPointer<SetupListDialog> openList(Server& server, OperatorDialogs& dialogs) {
    QPointer<SetupListDialog> dialog = new SetupListDialog(server, dialogs);
    dialog->show();
    EXPECT_TRUE(QTest::qWaitForWindowActive(dialog));
    return dialog;
}
} // namespace

TEST_F(CataloguedSetupTest, ListEditorTakesEnterWithoutDeletingAndDeletesOnlyWhenPressed) {
    server_.catalogue({{"one.stp", "One\r\n"}, {"two.stp", "Two\r\n"}, {"three.stp", "Three\r\n"}});
    const auto& setups = server_.server().setups().list();

    // Freshly opened: the list has the keyboard and no row looks picked; Enter deletes nothing.
    QPointer<SetupListDialog> dialog = openList(server_.server(), dialogs_);
    QListWidget* list = dialog->findChild<QListWidget*>("List1");
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(focusedName(), "List1");
    EXPECT_TRUE(list->selectedItems().isEmpty());
    EXPECT_FALSE(list->currentIndex().isValid());
    press(Qt::Key_Return);
    EXPECT_TRUE(dialogs_.unhandled.empty());
    EXPECT_EQ(setups.ubound(), 3);
    if (dialog) dialog->close();

    // Picked with the arrows and deleted with "Delete Setup".
    dialog = openList(server_.server(), dialogs_);
    list = dialog->findChild<QListWidget*>("List1");
    press(Qt::Key_Down);
    ASSERT_EQ(list->selectedItems().size(), 1);
    EXPECT_EQ(list->selectedItems().front()->text(), "One");
    press(Qt::Key_Tab);
    ASSERT_EQ(focusedName(), "Command2");
    press(Qt::Key_Space);
    ASSERT_EQ(setups.ubound(), 2);
    EXPECT_EQ(setups[1].name, "Two");
    dialog->close();

    // Pressed with nothing picked, it is still the run-time error it always was.
    dialog = openList(server_.server(), dialogs_);
    press(Qt::Key_Tab);
    ASSERT_EQ(focusedName(), "Command2");
    press(Qt::Key_Space);
    EXPECT_EQ(dialogs_.unhandled, std::vector<int>{9});
    EXPECT_EQ(dialogs_.ends, 1);
    EXPECT_EQ(setups.ubound(), 2);
}

class LoggingSetupTest : public CataloguedSetupTest {
  protected:
    LoggingSetupTest() : CataloguedSetupTest(kIniLogOn) {}
};

TEST_F(LoggingSetupTest, RunTimeErrorInTheFormsEndsWithTheLogAndTheOutputWrittenOut) {
    server_.catalogue({{"one.stp", "One\r\n"}});
    Peer player(server_.playerPort());
    player.send("VALIDR", "Viper");
    ASSERT_TRUE(player.waitFor(1)); // "PLSNEW"
    Server& server = server_.server();
    std::string logAtEnd;
    qint64 queuedAtEnd = -1;
    dialogs_.atEnd = [&] {
        logAtEnd = appFile("TessarkSrvLog.txt");
        queuedAtEnd = server.playerChannel().sockets().element(1).bytesQueued();
    };
    auto keepAlivesLogged = [&] {
        int count = 0;
        for (size_t at = logAtEnd.find("(SYNCRO)"); at != std::string::npos;
             at = logAtEnd.find("(SYNCRO)", at + 1))
            ++count;
        return count;
    };

    // The list editor: "Delete Setup" with nothing selected.
    openList(server, dialogs_);
    press(Qt::Key_Tab);
    server.playerChannel().send("SYNCRO", "", 1); // in the same event as the error
    press(Qt::Key_Space);
    ASSERT_EQ(dialogs_.ends, 1);
    EXPECT_NE(logAtEnd.find("(VALIDR)Viper"), std::string::npos);
    EXPECT_EQ(keepAlivesLogged(), 1);
    EXPECT_EQ(queuedAtEnd, 0);

    // The wizard: the configuration file is gone when its entries are to be read.
    wizard_.start();
    for (const char* name : {"AddSetupFrm1", "AddSetupF4Frm1", "AddSetupF4Frm2"}) {
        ASSERT_TRUE(onPage(name));
        press(Qt::Key_Return);
    }
    ASSERT_TRUE(onPage("AddSetupF4Frm3"));
    QFile::remove(installDir() + "/cobra.cfg");
    server.playerChannel().send("SYNCRO", "", 1);
    press(Qt::Key_Return);
    EXPECT_EQ(dialogs_.unhandled, (std::vector<int>{9, 53}));
    ASSERT_EQ(dialogs_.ends, 2);
    EXPECT_EQ(keepAlivesLogged(), 2);
    EXPECT_EQ(queuedAtEnd, 0);
    EXPECT_EQ(page(), nullptr);
}

TEST(DesktopDialogsTest, RunTimeErrorBoxCarriesTheProgramsTitle) {
    DesktopDialogs dialogs;
    QString title, text;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box || !box->isVisible()) return;
        poll.stop();
        title = box->windowTitle();
        text = box->text();
        QTest::keyClick(box, Qt::Key_Return);
    });
    poll.start(10);
    dialogs.unhandledError(nullptr, errors::subscriptOutOfRange()); // returns: the end is apart
    EXPECT_EQ(title, "Tessark Server");
    EXPECT_EQ(text, "Run-time error '9':\n\nSubscript out of range");
}
