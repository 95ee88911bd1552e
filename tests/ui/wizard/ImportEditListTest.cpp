#include "WizardFixture.h"

#include "setups/SetupCatalogue.h"
#include "ui/wizard/SetupListDialog.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QListWidget>

TEST_F(CataloguedSetupTest, EditKeepingTheNameRewritesTheFileInPlace) {
    server_.catalogue(
        {{"Night Ops.stp", "Night Ops\r\nCURSET@BMS\r\nCURTHE@Old Theater\r\n// by hand\r\n"
                           "CHKSUM@Data\\Sub\\a.dat@1\r\nCONFIG@g_nBar@9\r\nCONFIG@gone@1\r\n"}});
    wizard_.state().forbidSimFolder = true; // what the last run left; the file has no CHKSIM

    chooseOption(2);
    ASSERT_EQ(pageName(), "AddSetupFileFrm1");
    dialogs_.choices.push_back({server_.path("Night Ops.stp")});
    click("Command3");
    next();

    ASSERT_EQ(pageName(), "AddSetupF4Frm1");
    next();
    EXPECT_EQ(control<QLineEdit>("Text1")->text(), "Night Ops");
    next();
    ASSERT_EQ(pageName(), "AddSetupF4Frm3");
    EXPECT_EQ(control<QListWidget>("List1")->count(), 1);
    EXPECT_TRUE(control<QCheckBox>("Check1")->isChecked());
    next();
    QListWidget* options = control<QListWidget>("List1");
    ASSERT_EQ(options->count(), 3);
    EXPECT_FALSE(options->item(0)->isSelected());
    EXPECT_TRUE(options->item(1)->isSelected());
    next();

    ASSERT_TRUE(waitForPage("AddSetupEndFrm"));
    // Flavour, theater, checksum and value as the installation has them now.
    EXPECT_EQ(appFile("Night Ops.stp"), "Night Ops\r\nCURSET@COB\r\nCHKSIM\r\nCURTHE@Korea KTO\r\n"
                                        "CHKSUM@Data\\Sub\\a.dat@-873187034\r\nCONFIG@g_nBar@2 // two\r\n");
    const auto& setups = server_.server().setups().list();
    ASSERT_EQ(setups.ubound(), 1);
    EXPECT_EQ(setups[1].lines.ubound(), 5);
}

TEST_F(CataloguedSetupTest, ListEditorDeletesTheSelectedSetup) {
    server_.catalogue(
        {{"one.stp", "One\r\nCURSET@COB\r\n"}, {"two.stp", "Two\r\n"}, {"three.stp", "Three\r\n"}});
    auto* dialog = new SetupListDialog(server_.server(), dialogs_);
    dialog->show();
    QListWidget* list = dialog->findChild<QListWidget*>("List1");
    auto* remove = dialog->findChild<QPushButton*>("Command2");
    ASSERT_TRUE(list && remove);
    EXPECT_EQ(list->count(), 3);

    list->item(1)->setSelected(true);
    QTest::mouseClick(remove, Qt::LeftButton);
    const auto& setups = server_.server().setups().list();
    ASSERT_EQ(setups.ubound(), 2);
    EXPECT_EQ(setups[1].name, "One");
    EXPECT_EQ(setups[2].name, "Three");
    EXPECT_EQ(setups[1].lines.ubound(), 1); // read again, not doubled
    ASSERT_EQ(list->selectedItems().size(), 1);
    EXPECT_EQ(list->selectedItems().front()->text(), "One");
    EXPECT_TRUE(QFile::exists(server_.path("two.stp"))); // the file stays

    // The first entry is selected again: pressing twice more empties the catalogue.
    QTest::mouseClick(remove, Qt::LeftButton);
    QTest::mouseClick(remove, Qt::LeftButton);
    EXPECT_EQ(list->count(), 0);
    EXPECT_NE(appFile("tessark.ini").find("NUM=0"), std::string::npos);
    EXPECT_EQ(appFile("tessark.ini").find("SETUPLIST1"), std::string::npos);
    QTest::mouseClick(remove, Qt::LeftButton); // empty: nothing at all
    EXPECT_TRUE(dialogs_.unhandled.empty());
    dialog->close();
}
