// The wizard driven as an operator without a mouse would: every page opens with the focus on
// what there is to fill, Tab goes down the page, and Enter moves on.
#include "WizardFixture.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QListWidget>
#include <QScrollBar>

using namespace keys;

namespace {
QStringList tabOrder(int stops) {
    QStringList names;
    for (int i = 0; i < stops; ++i) {
        press(Qt::Key_Tab);
        names << focusedName();
    }
    return names;
}
} // namespace

TEST_F(WizardTest, CreatesASetupByKeyboardAlone) {
    const std::string longEntry = "set g_sLong " + std::string(300, 'x') + " // the end";
    install("cobra.cfg", QByteArray("set g_bFoo 1\r\nSET g_nBar 2 // two\r\nset g_sBaz  spaced  \r\n") +
                             longEntry.c_str());
    QStringList sizes; // "width x height" of each page
    auto size = [&] { return QString("%1 x %2").arg(page()->width()).arg(page()->height()); };

    wizard_.start();
    ASSERT_TRUE(onPage("AddSetupFrm1"));
    sizes << size();
    EXPECT_EQ(focusedName(), "Option1_1"); // the option that is set
    press(Qt::Key_Return);

    ASSERT_TRUE(onPage("AddSetupF4Frm1"));
    sizes << size();
    press(Qt::Key_Return);

    ASSERT_TRUE(onPage("AddSetupF4Frm2"));
    sizes << size();
    EXPECT_EQ(focusedName(), "Text1");
    type("Night Ops"); // in place of "New Install"
    EXPECT_EQ(control<QLineEdit>("Text1")->text(), "Night Ops");
    press(Qt::Key_Return);

    ASSERT_TRUE(onPage("AddSetupF4Frm3"));
    sizes << size();
    EXPECT_EQ(focusedName(), "List1");
    EXPECT_EQ(tabOrder(6), (QStringList{"Command3", "Command4", "Check1", "Command1", "Command2", "List1"}));
    press(Qt::Key_Tab); // "Browse"
    dialogs_.choices.push_back({installDir() + "/Data/Sub/a.dat", installDir() + "/Data/Sub/b.dat"});
    press(Qt::Key_Space);
    EXPECT_EQ(focusedName(), "List1"); // back to what was added
    press(Qt::Key_Tab);
    dialogs_.choices.push_back({installDir() + "/top.txt"});
    press(Qt::Key_Space);
    QListWidget* files = control<QListWidget>("List1");
    ASSERT_NE(files, nullptr);
    ASSERT_EQ(files->count(), 3);
    EXPECT_TRUE(files->selectedItems().isEmpty());
    // b.dat goes: picked with the arrows, removed with DELETE, and nothing else is picked then,
    // so pressing DELETE again removes nothing.
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    ASSERT_EQ(files->selectedItems().size(), 1);
    EXPECT_EQ(files->selectedItems().front()->text(), "Data\\Sub\\b.dat");
    press(Qt::Key_Tab);
    press(Qt::Key_Tab);
    ASSERT_EQ(focusedName(), "Command4");
    press(Qt::Key_Space);
    EXPECT_TRUE(files->selectedItems().isEmpty());
    press(Qt::Key_Space);
    EXPECT_EQ(files->count(), 2);
    press(Qt::Key_Tab);
    press(Qt::Key_Space); // the "Sim" folder check
    EXPECT_TRUE(control<QCheckBox>("Check1")->isChecked());
    press(Qt::Key_Return);

    ASSERT_TRUE(onPage("AddSetupF4Frm4"));
    sizes << size();
    EXPECT_EQ(focusedName(), "List1");
    QListWidget* options = control<QListWidget>("List1");
    ASSERT_NE(options, nullptr);
    ASSERT_EQ(options->count(), 4);
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    press(Qt::Key_Space);
    press(Qt::Key_Down);
    press(Qt::Key_Space);
    EXPECT_TRUE(options->item(1)->isSelected());
    EXPECT_TRUE(options->item(2)->isSelected());
    // A long entry is shown whole on demand, not behind a horizontal scrollbar.
    EXPECT_FALSE(options->horizontalScrollBar()->isVisible());
    EXPECT_LE(options->visualItemRect(options->item(3)).width(), options->viewport()->width());
    EXPECT_EQ(options->item(3)->toolTip(), options->item(3)->text());
    press(Qt::Key_Return);

    ASSERT_TRUE(onPage("AddSetupEndFrm"));
    EXPECT_TRUE(dialogs_.unhandled.empty());
    EXPECT_EQ(appFile("Night Ops.stp"), "Night Ops\r\nCURSET@COB\r\nCHKSIM\r\nCURTHE@Korea KTO\r\n"
                                        "CHKSUM@Data\\Sub\\a.dat@-873187034\r\nCHKSUM@top.txt@0\r\n"
                                        "CONFIG@g_nBar@2 // two\r\nCONFIG@g_sBaz@ spaced  \r\n");
    press(Qt::Key_Return); // "Finish"
    EXPECT_EQ(page(), nullptr);

    // One size from the first page to the last: the wizard does not jump.
    EXPECT_EQ(sizes, QStringList(sizes.size(), sizes.front()));
}

TEST_F(CataloguedSetupTest, ImportPageKeepsThePathAndHandsOnToNext) {
    QTemporaryDir elsewhere;
    const std::string text = "Remote Setup\r\nCURSET@FF\r\n  // a comment\r\n\r\nCHKSUM@x.dat@5\r\n";
    writeFile(elsewhere.filePath("made-elsewhere.stp"), text);
    auto folder = [](const QString& path) { return QFileInfo(path).canonicalFilePath(); };

    wizard_.start();
    ASSERT_TRUE(onPage("AddSetupFrm1"));
    press(Qt::Key_Up);
    EXPECT_TRUE(control<QRadioButton>("Option1_0")->isChecked());
    press(Qt::Key_Return);

    ASSERT_TRUE(onPage("AddSetupFileFrm1"));
    EXPECT_EQ(focusedName(), "Text1");
    QLineEdit* path = control<QLineEdit>("Text1");
    // With nothing chosen yet the dialog opens where the setups are; cancelled, it changes nothing.
    press(Qt::Key_Tab);
    ASSERT_EQ(focusedName(), "Command3");
    press(Qt::Key_Space);
    ASSERT_EQ(dialogs_.directories.size(), 1);
    EXPECT_EQ(folder(dialogs_.directories[0]), folder(server_.dir()));
    EXPECT_EQ(dialogs_.titles[0], "Open Setup File...");
    EXPECT_EQ(path->text(), "");

    press(Qt::Key_Tab, Qt::ShiftModifier);
    type(elsewhere.filePath("missing.stp"));
    press(Qt::Key_Return);
    EXPECT_EQ(dialogs_.boxes,
              QStringList{"Error|The file that you specified doesn't exist. Please specify another file"});
    ASSERT_EQ(pageName(), "AddSetupFileFrm1");

    // A file chosen: the path is in the box and Enter goes on from there.
    press(Qt::Key_Tab);
    dialogs_.choices.push_back({elsewhere.filePath("made-elsewhere.stp")});
    press(Qt::Key_Space);
    EXPECT_EQ(folder(dialogs_.directories[1]), folder(elsewhere.path())); // the folder in the box
    EXPECT_EQ(path->text(), elsewhere.filePath("made-elsewhere.stp"));
    EXPECT_EQ(focusedName(), "Command1");
    // Browsing again and cancelling keeps it.
    press(Qt::Key_Tab, Qt::ShiftModifier);
    ASSERT_EQ(focusedName(), "Command3");
    press(Qt::Key_Space);
    EXPECT_EQ(path->text(), elsewhere.filePath("made-elsewhere.stp"));
    EXPECT_EQ(focusedName(), "Command1");
    press(Qt::Key_Return);

    ASSERT_TRUE(onPage("AddSetupEndFrm"));
    EXPECT_EQ(appFile("Remote Setup.stp"), text); // verbatim, comments and blank lines too
    const auto& setups = server_.server().setups().list();
    ASSERT_EQ(setups.ubound(), 1);
    EXPECT_EQ(setups[1].filePath, server_.path("Remote Setup.stp").toStdString());
    EXPECT_EQ(setups[1].lines.ubound(), 2);
}

TEST_F(CataloguedSetupTest, ImportRefusesTheNamesCreatingRefuses) {
    QTemporaryDir elsewhere;
    QDir outside(server_.dir());
    outside.cdUp();
    for (const std::string name : {"..\\x", "../x", "sub/x", "a:b", "tab\there"}) {
        SCOPED_TRACE(name);
        writeFile(elsewhere.filePath("bad.stp"), name + "\r\nCURSET@FF\r\n");
        dialogs_.boxes.clear();
        wizard_.start();
        ASSERT_TRUE(onPage("AddSetupFrm1"));
        press(Qt::Key_Up);
        press(Qt::Key_Return);
        ASSERT_TRUE(onPage("AddSetupFileFrm1"));
        type(elsewhere.filePath("bad.stp"));
        press(Qt::Key_Return);

        EXPECT_EQ(
            dialogs_.boxes,
            QStringList{"Error|An Error occured. Make sure the file you tried to import or edit is valid."});
        EXPECT_EQ(pageName(), "AddSetupFileFrm1");
        EXPECT_FALSE(QFile::exists(outside.filePath("x.stp")));
        EXPECT_EQ(QDir(server_.dir()).entryList({"*.stp"}), QStringList());
        EXPECT_EQ(server_.server().setups().list().ubound(), 0);
        wizard_.unloadCurrent();
    }
}
