#include "ui/StatusWindow.h"
#include "server/Server.h"
#include "support/Peer.h"
#include "ui/TrayIcon.h"
#include "ui/wizard/SetupWizard.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>
#include <gmock/gmock.h>

namespace {

class StatusWindowTest : public ::testing::Test {
  protected:
    void SetUp() override {
        server_ = std::make_unique<Server>(window_, dir_.path() + QDir::separator(), Ports::anyFree(),
                                           [this] { ++ended_; });
        window_.attach(*server_);
        window_.addTrayIcon(Server::title());
        server_->start();
        window_.show();
    }
    template <typename T> T* child(const char* name) {
        T* found = window_.findChild<T*>(name);
        EXPECT_NE(found, nullptr) << name;
        return found;
    }

    QTemporaryDir dir_;
    StatusWindow window_;
    std::unique_ptr<Server> server_;
    int ended_ = 0;
};

} // namespace

TEST_F(StatusWindowTest, ShowsPlayersCountersAndTheAiSpyState) {
    window_.showPlayers({{"Viper (Night Ops)", 1}, {"Hawk (Night Ops)", 2}, {"Eagle ()", 3}, {"Odd ()", 0}});
    QTreeWidget* tree = child<QTreeWidget>("TreeView1");
    ASSERT_EQ(tree->topLevelItemCount(), 4);
    EXPECT_EQ(tree->topLevelItem(2)->text(0), "Eagle ()");
    EXPECT_FALSE(tree->topLevelItem(2)->icon(0).isNull());
    EXPECT_TRUE(tree->topLevelItem(3)->icon(0).isNull());
    // The three states look different.
    auto pixels = [&](int i) { return tree->topLevelItem(i)->icon(0).pixmap(16).toImage(); };
    EXPECT_NE(pixels(0), pixels(1));
    EXPECT_NE(pixels(1), pixels(2));

    window_.showPlayers({{"Viper (Night Ops)", 1}});
    EXPECT_EQ(tree->topLevelItemCount(), 1);

    window_.showAwacsCount("3");
    window_.showSimCount("12");
    EXPECT_EQ(child<QLineEdit>("Text1")->text(), "3");
    EXPECT_EQ(child<QLineEdit>("Text2")->text(), "12");

    EXPECT_EQ(child<QLabel>("Label4")->text(), "AI Spy not connected");
    window_.showAiSpyState(true);
    EXPECT_EQ(child<QLabel>("Label4")->text(), "AI Spy connected");
    EXPECT_EQ(child<QLabel>("Label4")->palette().color(QPalette::Window), QColor(0x80, 0xFF, 0x80));
}

TEST_F(StatusWindowTest, CloseBoxPutsTheWindowAwayAndExitEndsTheServer) {
    QSignalSpy finished(server_.get(), &Server::finished);
    // The test platform has no notification area: the window is minimised instead of hidden.
    ASSERT_FALSE(TrayIcon::available());
    window_.close();
    EXPECT_TRUE(window_.isMinimized());
    window_.tray().showAction()->trigger();
    EXPECT_FALSE(window_.isMinimized());
    EXPECT_EQ(finished.count(), 0);
    window_.tray().exitAction()->trigger();
    EXPECT_EQ(finished.count(), 1);
    EXPECT_EQ(ended_, 0);
}

TEST_F(StatusWindowTest, MenusAnswerAltAndTheirLetters) {
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window_));
    auto popup = [] { return qobject_cast<QMenu*>(QApplication::activePopupWidget()); };

    QTest::keyClick(&window_, Qt::Key_S, Qt::AltModifier);
    ASSERT_NE(popup(), nullptr);
    EXPECT_EQ(popup()->objectName(), "mnuSetups");
    QTest::keyClick(popup(), Qt::Key_E);
    ASSERT_NE(window_.setupList(), nullptr); // "Edit Setup List..."
    ASSERT_TRUE(QTest::qWaitForWindowActive(window_.setupList()));
    QTest::keyClick(window_.setupList(), Qt::Key_Escape);
    EXPECT_TRUE(QTest::qWaitFor([&] { return window_.setupList() == nullptr; }));

    window_.activateWindow(); // a window manager gives the keyboard back to the window
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window_));
    QTest::keyClick(&window_, Qt::Key_S, Qt::AltModifier);
    ASSERT_NE(popup(), nullptr);
    QTest::keyClick(popup(), Qt::Key_A);
    ASSERT_NE(window_.wizard()->currentPage(), nullptr); // "Add Setup..."
    EXPECT_EQ(window_.wizard()->currentPage()->objectName(), "AddSetupFrm1");
    window_.wizard()->unloadCurrent();

    QSignalSpy finished(server_.get(), &Server::finished);
    window_.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window_));
    QTest::keyClick(&window_, Qt::Key_F, Qt::AltModifier);
    ASSERT_NE(popup(), nullptr);
    EXPECT_EQ(popup()->objectName(), "mnuFile");
    QTest::keyClick(popup(), Qt::Key_X);
    EXPECT_EQ(finished.count(), 1);
}

TEST_F(StatusWindowTest, KickFromAPlayersRowEndsItsConnectionAsALeave) {
    Peer viper(server_->ports().players);
    viper.send("VALIDR", "Viper");
    Peer hawk(server_->ports().players);
    hawk.send("VALIDR", "Hawk");
    QTreeWidget* tree = child<QTreeWidget>("TreeView1");
    ASSERT_TRUE(pumpUntil([&] { return tree->topLevelItemCount() == 2; }));
    hawk.settle(50ms);

    // A right click on Viper's row opens its menu, where K is "Kick".
    const QPoint row = tree->visualItemRect(tree->topLevelItem(0)).center();
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, row);
    QContextMenuEvent rightClick(QContextMenuEvent::Mouse, row, tree->viewport()->mapToGlobal(row));
    QApplication::sendEvent(tree->viewport(), &rightClick);
    QMenu* menu = window_.playerMenu();
    ASSERT_TRUE(QTest::qWaitFor([&] { return menu->isVisible(); }));
    EXPECT_EQ(menu->objectName(), "mnuPlayer");
    QTest::keyClick(menu, Qt::Key_K);

    EXPECT_TRUE(viper.waitForDisconnect());
    EXPECT_THAT(hawk.takeTexts(1), testing::ElementsAre("PLSDEL1"));
    ASSERT_EQ(tree->topLevelItemCount(), 1);
    EXPECT_EQ(tree->topLevelItem(0)->text(0), "Hawk ()");
    EXPECT_EQ(server_->refusalCounts().value("players/kicked"), 1);
    EXPECT_TRUE(hawk.isConnected());

    // The menu stays open while Hawk leaves and a newcomer takes the slot: "Kick" then kicks
    // nobody, least of all the newcomer.
    const QPoint hawkRow = tree->visualItemRect(tree->topLevelItem(0)).center();
    QContextMenuEvent again(QContextMenuEvent::Mouse, hawkRow, tree->viewport()->mapToGlobal(hawkRow));
    QApplication::sendEvent(tree->viewport(), &again);
    ASSERT_TRUE(QTest::qWaitFor([&] { return menu->isVisible(); }));
    Peer filler(server_->ports().players); // takes Viper's slot
    filler.send("VALIDR", "Filler");
    ASSERT_TRUE(pumpUntil([&] { return server_->playerChannel().taken(1); }));
    hawk.close();
    ASSERT_TRUE(pumpUntil([&] { return !server_->playerChannel().taken(2); }));
    Peer owl(server_->ports().players);
    owl.send("VALIDR", "Owl");
    ASSERT_TRUE(pumpUntil([&] { return server_->playerChannel().taken(2); }));
    QTest::keyClick(menu, Qt::Key_K);
    owl.settle(100ms);
    EXPECT_TRUE(owl.isConnected());
    EXPECT_TRUE(filler.isConnected());
    EXPECT_EQ(server_->refusalCounts().value("players/kicked"), 1);
    EXPECT_EQ(ended_, 0);
}
