// The setup list editor by keyboard.
#include "WizardFixture.h"

#include "setups/wizard/SetupListFrm.h"

#include <QListWidget>
#include <QPointer>

using namespace keys;

namespace {
QPointer<SetupListFrm> openList(Server& server, OperatorDialogs& dialogs) {
    QPointer<SetupListFrm> form = new SetupListFrm(server, dialogs);
    form->show();
    EXPECT_TRUE(QTest::qWaitForWindowActive(form));
    return form;
}
} // namespace

TEST_F(CataloguedSetupTest, ListEditorTakesEnterWithoutDeletingAndDeletesOnlyWhenPressed) {
    catalogue({{"one.stp", "One\r\n"}, {"two.stp", "Two\r\n"}, {"three.stp", "Three\r\n"}});
    const auto& setups = server_.server().setups().Setups();

    // Freshly opened: the list has the keyboard and no row looks picked; Enter deletes nothing.
    QPointer<SetupListFrm> form = openList(server_.server(), dialogs_);
    QListWidget* list = form->findChild<QListWidget*>("List1");
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(focusedName(), "List1");
    EXPECT_TRUE(list->selectedItems().isEmpty());
    EXPECT_FALSE(list->currentIndex().isValid());
    press(Qt::Key_Return);
    EXPECT_TRUE(dialogs_.unhandled.empty());
    EXPECT_EQ(setups.ubound(), 3);
    if (form) form->close();

    // Picked with the arrows and deleted with "Delete Setup".
    form = openList(server_.server(), dialogs_);
    list = form->findChild<QListWidget*>("List1");
    press(Qt::Key_Down);
    ASSERT_EQ(list->selectedItems().size(), 1);
    EXPECT_EQ(list->selectedItems().front()->text(), "One");
    press(Qt::Key_Tab);
    ASSERT_EQ(focusedName(), "Command2");
    press(Qt::Key_Space);
    ASSERT_EQ(setups.ubound(), 2);
    EXPECT_EQ(setups[1].Name, "Two");
    form->close();

    // Pressed with nothing picked, it is still the run-time error it always was.
    form = openList(server_.server(), dialogs_);
    press(Qt::Key_Tab);
    ASSERT_EQ(focusedName(), "Command2");
    press(Qt::Key_Space);
    EXPECT_EQ(dialogs_.unhandled, std::vector<int>{9});
    EXPECT_EQ(setups.ubound(), 2);
}
