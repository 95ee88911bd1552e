#include "server/StatusWindow.h"
#include "server/Server.h"
#include "server/TrayIcon.h"

#include <QAction>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <gtest/gtest.h>

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
    QAction* action(const char* name) {
        for (QAction* a : window_.findChildren<QAction*>())
            if (a->objectName() == name) return a;
        return nullptr;
    }

    QTemporaryDir dir_;
    StatusWindow window_;
    std::unique_ptr<Server> server_;
    int ended_ = 0;
};

} // namespace

TEST_F(StatusWindowTest, ControlsAndMenusAsTheOperatorKnowsThem) {
    EXPECT_EQ(window_.objectName(), "TskSrvForm1");
    EXPECT_EQ(window_.windowTitle(), Server::title());
    EXPECT_EQ(child<QLabel>("Label1")->text(), "Connected Players");
    EXPECT_EQ(child<QLabel>("Label2")->text(), "ORBISCOPE CLIENTS CONNECTED:");
    EXPECT_EQ(child<QLabel>("Label3")->text(), "SIMULATORS CONNECTED:");
    EXPECT_EQ(child<QLineEdit>("Text1")->text(), "0");
    EXPECT_EQ(child<QLineEdit>("Text2")->text(), "0");
    QLabel* label4 = child<QLabel>("Label4");
    EXPECT_EQ(label4->text(), "AI Spy not connected");
    EXPECT_EQ(label4->palette().color(QPalette::Window), QColor(0xFF, 0x80, 0x80));

    const QList<QAction*> menus = window_.menuBar()->actions();
    ASSERT_EQ(menus.size(), 2);
    EXPECT_EQ(menus[0]->text(), "File");
    EXPECT_EQ(menus[1]->text(), "Setups");
    EXPECT_EQ(action("mnuExit")->text(), "Exit");
    EXPECT_EQ(action("mnuEditSetupList")->text(), "Edit Setup List...");
    EXPECT_EQ(action("mnuAddSetup")->text(), "Add Setup...");

    const QList<QAction*> popup = window_.tray().popup()->actions();
    ASSERT_EQ(popup.size(), 2);
    EXPECT_EQ(popup[0]->text(), "Show");
    EXPECT_TRUE(popup[0]->font().bold());
    EXPECT_EQ(window_.tray().popup()->defaultAction(), popup[0]);
    EXPECT_EQ(popup[1]->text(), "Exit");
}

TEST_F(StatusWindowTest, ShowsPlayersCountersAndTheAiSpyState) {
    window_.showPlayers({{"Viper (Night Ops)", 1}, {"Hawk (Night Ops)", 2}, {"Eagle ()", 3}, {"Odd ()", 0}});
    QTreeWidget* tree = child<QTreeWidget>("TreeView1");
    ASSERT_EQ(tree->topLevelItemCount(), 4);
    EXPECT_EQ(tree->topLevelItem(0)->text(0), "Viper (Night Ops)");
    EXPECT_EQ(tree->topLevelItem(2)->text(0), "Eagle ()");
    for (int i = 0; i < 3; ++i)
        EXPECT_FALSE(tree->topLevelItem(i)->icon(0).isNull()) << i;
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

    window_.showAiSpyState(true);
    EXPECT_EQ(child<QLabel>("Label4")->text(), "AI Spy connected");
    EXPECT_EQ(child<QLabel>("Label4")->palette().color(QPalette::Window), QColor(0x80, 0xFF, 0x80));
    window_.showAiSpyState(false);
    EXPECT_EQ(child<QLabel>("Label4")->text(), "AI Spy not connected");
}

TEST_F(StatusWindowTest, CloseBoxPutsTheWindowAwayAndShowBringsItBack) {
    QSignalSpy finished(server_.get(), &Server::finished);
    // The test platform has no notification area: the window is minimised instead of hidden.
    ASSERT_FALSE(TrayIcon::available());
    EXPECT_FALSE(window_.tray().shown());
    window_.close();
    EXPECT_TRUE(window_.isVisible());
    EXPECT_TRUE(window_.isMinimized());
    EXPECT_EQ(finished.count(), 0);
    EXPECT_GT(server_->ports().players, 0);

    window_.tray().showAction()->trigger();
    EXPECT_TRUE(window_.isVisible());
    EXPECT_FALSE(window_.isMinimized());
    EXPECT_EQ(finished.count(), 0);
}

TEST_F(StatusWindowTest, ExitFromEitherMenuEndsTheServer) {
    QSignalSpy finished(server_.get(), &Server::finished);
    action("mnuExit")->trigger();
    EXPECT_EQ(finished.count(), 1);
    EXPECT_EQ(ended_, 0);

    // The tray popup's "Exit" is the same command.
    QTemporaryDir other;
    StatusWindow window;
    Server server(window, other.path() + QDir::separator(), Ports::anyFree(), [] {});
    window.attach(server);
    server.start();
    QSignalSpy finishedToo(&server, &Server::finished);
    window.tray().exitAction()->trigger();
    EXPECT_EQ(finishedToo.count(), 1);
}
