#include "WizardFixture.h"

#include "support/Peer.h"

#include "setups/SetupCatalogue.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QListWidget>
#include <QRadioButton>

namespace {
QStringList listTexts(QListWidget* list) {
    QStringList texts;
    for (int i = 0; i < list->count(); ++i)
        texts << list->item(i)->text();
    return texts;
}
} // namespace

TEST_F(WizardTest, CreatesASetupFromTheInstallation) {
    wizard_.start();
    ASSERT_EQ(pageName(), "AddSetupFrm1");
    EXPECT_EQ(page()->windowTitle(), "Add Setup Wizard");
    QRadioButton* create = control<QRadioButton>("Option1_1");
    EXPECT_TRUE(create->isChecked()); // the default
    QTest::mouseClick(create, Qt::LeftButton, {}, QPoint(6, create->height() / 2));
    next();

    ASSERT_EQ(pageName(), "AddSetupF4Frm1");
    EXPECT_EQ(control<QLineEdit>("Text1")->text(), "C:\\Falcon4\\");
    EXPECT_EQ(control<QLineEdit>("Text2")->text(), "Korea KTO");
    next();

    ASSERT_EQ(pageName(), "AddSetupF4Frm2");
    QLineEdit* name = control<QLineEdit>("Text1");
    EXPECT_EQ(name->text(), "New Install");
    name->clear();
    QTest::keyClicks(name, "Night Ops");
    next();

    ASSERT_EQ(pageName(), "AddSetupF4Frm3");
    QTemporaryDir outside;
    QFile(outside.filePath("x.dat")).open(QIODevice::WriteOnly);
    dialogs_.choices.push_back({outside.filePath("x.dat")});
    click("Command3");
    EXPECT_EQ(dialogs_.boxes,
              QStringList("Error|Your selection must be inside current Falcon 4 installation"));
    dialogs_.choices.push_back({installDir() + "/Data/Sub/a.dat", installDir() + "/Data/Sub/b.dat"});
    click("Command3");
    dialogs_.choices.push_back({installDir() + "/top.txt"});
    click("Command3");
    QListWidget* files = control<QListWidget>("List1");
    EXPECT_EQ(listTexts(files), (QStringList{"Data\\Sub\\a.dat", "Data\\Sub\\b.dat", "top.txt"}));
    EXPECT_EQ(dialogs_.titles.front(), "Select Falcon Files");
    QCheckBox* noSim = control<QCheckBox>("Check1");
    QTest::mouseClick(noSim, Qt::LeftButton, {}, QPoint(6, noSim->height() / 2)); // on the box itself
    next();

    ASSERT_EQ(pageName(), "AddSetupF4Frm4");
    QListWidget* options = control<QListWidget>("List1");
    EXPECT_EQ(listTexts(options), (QStringList{"g_bFoo (1)", "g_nBar (2 // two)", "g_sBaz ( spaced  )"}));
    options->item(1)->setSelected(true);
    options->item(2)->setSelected(true);
    next();

    ASSERT_TRUE(waitForPage("AddSetupEndFrm"));
    EXPECT_TRUE(dialogs_.unhandled.empty());
    EXPECT_EQ(appFile("Night Ops.stp"),
              "Night Ops\r\nCURSET@COB\r\nCHKSIM\r\nCURTHE@Korea KTO\r\n"
              "CHKSUM@Data\\Sub\\a.dat@-873187034\r\nCHKSUM@Data\\Sub\\b.dat@891568578\r\n"
              "CHKSUM@top.txt@0\r\nCONFIG@g_nBar@2 // two\r\nCONFIG@g_sBaz@ spaced  \r\n");
    const auto& setups = server_.server().setups().list();
    ASSERT_EQ(setups.ubound(), 1);
    EXPECT_EQ(setups[1].name, "Night Ops");
    EXPECT_EQ(setups[1].lines.ubound(), 8);
    EXPECT_NE(appFile("tessark.ini").find("NUM=1"), std::string::npos);

    // A player's program then fetches the new setup and gets the checksums just computed.
    Peer player(server_.playerPort());
    player.send("VALIDR", "Viper");
    player.send("GETVLA");
    player.send("GETVLO", "1");
    std::vector<std::string> expected = {"PLSNEW1@Viper@@-",  "PLSUPD1@Viper@@-", "SLRDIM1",
                                         "SLSADD1@Night Ops", "SLDONE",           "VLRDIM8"};
    for (int i = 1; i <= 8; ++i)
        expected.push_back("VLSADD" + std::to_string(i) + "@" + setups[1].lines[i]);
    expected.push_back("VLDONE");
    ASSERT_TRUE(player.waitFor(expected.size()));
    EXPECT_EQ(player.takeAllTexts(), expected);

    next(); // "Finish"
    EXPECT_EQ(page(), nullptr);
}
