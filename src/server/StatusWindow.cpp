#include "server/StatusWindow.h"

#include "server/Server.h"
#include "server/TrayIcon.h"
#include "setups/wizard/OperatorDialogs.h"

#include "setups/wizard/SetupWizard.h"

#include <QCloseEvent>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QTreeWidget>
#include <QVBoxLayout>

// The icons are in the library's resources; a static library has to ask for them.
static void initResources() {
    Q_INIT_RESOURCE(tessark);
}

namespace {
// Back colours of the AI Spy state, given as 0xBBGGRR: 0x80FF80 and 0x8080FF.
const QColor kAiSpyConnected(0x80, 0xFF, 0x80);
const QColor kAiSpyNotConnected(0xFF, 0x80, 0x80);

QIcon imageListIcon(int image) {
    switch (image) {
    case 1:
        return QIcon(":/icons/verified.png");
    case 2:
        return QIcon(":/icons/failed.png");
    case 3:
        return QIcon(":/icons/pending.png");
    default:
        return {};
    }
}
} // namespace

StatusWindow::StatusWindow(QWidget* parent)
    : QMainWindow(parent), ownDialogs_(std::make_unique<DesktopDialogs>()), dialogs_(ownDialogs_.get()) {
    initResources();
    setObjectName("TskSrvForm1");
    setWindowTitle(Server::title());
    setWindowIcon(QIcon(":/icons/server.png"));
    tray_ = new TrayIcon(this);
    connect(tray_, &TrayIcon::showRequested, this, &StatusWindow::showFromTray);
    connect(tray_, &TrayIcon::exitRequested, this, &StatusWindow::mnuExit_Click);
    buildControls();
    buildMenus();
    resize(340, 440);
}

StatusWindow::~StatusWindow() = default;

void StatusWindow::buildControls() {
    auto* central = new QWidget(this);
    auto* layout = new QVBoxLayout(central);
    const QFont tahoma("Tahoma", 8);

    Label1 = new QLabel("Connected Players", central);
    Label1->setObjectName("Label1");
    TreeView1 = new QTreeWidget(central);
    TreeView1->setObjectName("TreeView1");
    TreeView1->setHeaderHidden(true);
    TreeView1->setRootIsDecorated(false);
    layout->addWidget(Label1);
    layout->addWidget(TreeView1, 1);

    auto* counters = new QGridLayout;
    Label2 = new QLabel("ORBISCOPE CLIENTS CONNECTED:", central);
    Label2->setObjectName("Label2");
    Text1 = new QLineEdit("0", central);
    Text1->setObjectName("Text1");
    Label3 = new QLabel("SIMULATORS CONNECTED:", central);
    Label3->setObjectName("Label3");
    Text2 = new QLineEdit("0", central);
    Text2->setObjectName("Text2");
    for (QLineEdit* box : {Text1, Text2}) {
        box->setReadOnly(true);
        box->setAlignment(Qt::AlignRight);
        box->setMaximumWidth(60);
    }
    counters->addWidget(Label2, 0, 0);
    counters->addWidget(Text1, 0, 1);
    counters->addWidget(Label3, 1, 0);
    counters->addWidget(Text2, 1, 1);
    layout->addLayout(counters);

    Label4 = new QLabel(central);
    Label4->setObjectName("Label4");
    Label4->setAlignment(Qt::AlignCenter);
    Label4->setAutoFillBackground(true);
    Label4->setMinimumHeight(24);
    layout->addWidget(Label4);
    showAiSpyState(false);

    for (QWidget* w : std::initializer_list<QWidget*>{Label1, Label2, Text1, Label3, Text2, Label4})
        w->setFont(tahoma);
    setCentralWidget(central);
}

void StatusWindow::buildMenus() {
    // Alt and the underlined letter open a menu; the captions read as they always did.
    QMenu* mnuFile = menuBar()->addMenu("&File");
    mnuFile->setObjectName("mnuFile");
    QAction* mnuExit = mnuFile->addAction("E&xit");
    mnuExit->setObjectName("mnuExit");
    connect(mnuExit, &QAction::triggered, this, &StatusWindow::mnuExit_Click);

    QMenu* mnuSetups = menuBar()->addMenu("&Setups");
    mnuSetups->setObjectName("mnuSetups");
    QAction* mnuEditSetupList = mnuSetups->addAction("&Edit Setup List...");
    mnuEditSetupList->setObjectName("mnuEditSetupList");
    connect(mnuEditSetupList, &QAction::triggered, this, &StatusWindow::mnuEditSetupList_Click);
    QAction* mnuAddSetup = mnuSetups->addAction("&Add Setup...");
    mnuAddSetup->setObjectName("mnuAddSetup");
    connect(mnuAddSetup, &QAction::triggered, this, &StatusWindow::mnuAddSetup_Click);
}

void StatusWindow::attach(Server& server) {
    server_ = &server;
    wizard_ = std::make_unique<SetupWizard>(server, *dialogs_, this);
}

void StatusWindow::setOperatorDialogs(OperatorDialogs& dialogs) {
    dialogs_ = &dialogs;
    if (server_) wizard_ = std::make_unique<SetupWizard>(*server_, *dialogs_, this);
}

void StatusWindow::showPlayers(const std::vector<PlayerRow>& rows) {
    TreeView1->clear();
    for (const PlayerRow& row : rows) {
        auto* node = new QTreeWidgetItem(TreeView1, QStringList{row.text});
        node->setIcon(0, imageListIcon(row.image));
    }
}

void StatusWindow::showAwacsCount(const QString& text) {
    Text1->setText(text);
}
void StatusWindow::showSimCount(const QString& text) {
    Text2->setText(text);
}

void StatusWindow::showAiSpyState(bool connected) {
    Label4->setText(connected ? "AI Spy connected" : "AI Spy not connected");
    QPalette palette = Label4->palette();
    palette.setColor(QPalette::Window, connected ? kAiSpyConnected : kAiSpyNotConnected);
    palette.setColor(QPalette::WindowText, Qt::black);
    Label4->setPalette(palette);
}

void StatusWindow::messageBox(const QString& text, const QString& title, MessageIcon icon) {
    QMessageBox box(icon == MessageIcon::Critical      ? QMessageBox::Critical
                    : icon == MessageIcon::Information ? QMessageBox::Information
                                                       : QMessageBox::NoIcon,
                    title, text, QMessageBox::Ok, this);
    box.exec();
}

void StatusWindow::addTrayIcon(const QString& tip) {
    if (TrayIcon::available()) tray_->add(tip);
}

void StatusWindow::removeTrayIcon() {
    tray_->remove();
}

void StatusWindow::unloadOtherForms() {
    if (wizard_) wizard_->unloadCurrent();
    if (setupList_) setupList_->close();
}

void StatusWindow::showFromTray() {
    showNormal();
    raise();
    activateWindow();
}

void StatusWindow::closeEvent(QCloseEvent* event) {
    if (server_ && server_->queryUnload(true)) {
        event->accept();
        return;
    }
    event->ignore();
    // Without a notification area to come back from, the window is only minimised, so the
    // taskbar still brings it back and its menus still reach "Exit".
    if (tray_->shown())
        hide();
    else
        showMinimized();
}

void StatusWindow::mnuExit_Click() {
    if (server_) server_->exit();
}

void StatusWindow::mnuAddSetup_Click() {
    if (wizard_ && !wizard_->currentPage()) wizard_->start();
}

void StatusWindow::mnuEditSetupList_Click() {
    if (!server_ || setupList_) return;
    setupList_ = new SetupListFrm(*server_, *dialogs_, this);
    setupList_->setWindowModality(Qt::ApplicationModal);
    setupList_->show();
}
