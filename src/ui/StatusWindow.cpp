#include "ui/StatusWindow.h"

#include "server/AccessControl.h"
#include "server/Server.h"
#include "ui/TrayIcon.h"
#include "ui/wizard/OperatorDialogs.h"

#include "ui/wizard/SetupWizard.h"

#include <QCloseEvent>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
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

QIcon verificationIcon(int image) {
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

StatusWindow::StatusWindow(QWidget* parent) : StatusWindow(std::make_unique<DesktopDialogs>(), parent) {}

StatusWindow::StatusWindow(std::unique_ptr<OperatorDialogs> dialogs, QWidget* parent)
    : QMainWindow(parent), dialogs_(std::move(dialogs)) {
    initResources();
    setObjectName("TskSrvForm1");
    setWindowTitle(Server::title());
    setWindowIcon(QIcon(":/icons/server.png"));
    tray_ = new TrayIcon(this);
    connect(tray_, &TrayIcon::showRequested, this, &StatusWindow::showFromTray);
    connect(tray_, &TrayIcon::exitRequested, this, &StatusWindow::onExit);
    buildControls();
    buildMenus();
    resize(340, 440);
}

StatusWindow::~StatusWindow() = default;

void StatusWindow::buildControls() {
    auto* central = new QWidget(this);
    auto* layout = new QVBoxLayout(central);
    const QFont tahoma("Tahoma", 8);

    playersLabel_ = new QLabel("Connected Players", central);
    playersLabel_->setObjectName("Label1");
    playerTree_ = new QTreeWidget(central);
    playerTree_->setObjectName("TreeView1");
    playerTree_->setHeaderHidden(true);
    playerTree_->setRootIsDecorated(false);
    playerTree_->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(playerTree_, &QTreeWidget::customContextMenuRequested, this, &StatusWindow::openPlayerMenu);
    layout->addWidget(playersLabel_);
    layout->addWidget(playerTree_, 1);

    auto* counters = new QGridLayout;
    awacsLabel_ = new QLabel("ORBISCOPE CLIENTS CONNECTED:", central);
    awacsLabel_->setObjectName("Label2");
    awacsCount_ = new QLineEdit("0", central);
    awacsCount_->setObjectName("Text1");
    simLabel_ = new QLabel("SIMULATORS CONNECTED:", central);
    simLabel_->setObjectName("Label3");
    simCount_ = new QLineEdit("0", central);
    simCount_->setObjectName("Text2");
    for (QLineEdit* box : {awacsCount_, simCount_}) {
        box->setReadOnly(true);
        box->setAlignment(Qt::AlignRight);
        box->setMaximumWidth(60);
    }
    counters->addWidget(awacsLabel_, 0, 0);
    counters->addWidget(awacsCount_, 0, 1);
    counters->addWidget(simLabel_, 1, 0);
    counters->addWidget(simCount_, 1, 1);
    layout->addLayout(counters);

    aiSpyState_ = new QLabel(central);
    aiSpyState_->setObjectName("Label4");
    aiSpyState_->setAlignment(Qt::AlignCenter);
    aiSpyState_->setAutoFillBackground(true);
    aiSpyState_->setMinimumHeight(24);
    layout->addWidget(aiSpyState_);
    showAiSpyState(false);

    for (QWidget* w : std::initializer_list<QWidget*>{playersLabel_, awacsLabel_, awacsCount_, simLabel_,
                                                      simCount_, aiSpyState_})
        w->setFont(tahoma);
    setCentralWidget(central);
}

void StatusWindow::buildMenus() {
    // Alt and the underlined letter open a menu; the captions read as they always did.
    QMenu* fileMenu = menuBar()->addMenu("&File");
    fileMenu->setObjectName("mnuFile");
    QAction* exitAction = fileMenu->addAction("E&xit");
    exitAction->setObjectName("mnuExit");
    connect(exitAction, &QAction::triggered, this, &StatusWindow::onExit);

    QMenu* setupsMenu = menuBar()->addMenu("&Setups");
    setupsMenu->setObjectName("mnuSetups");
    QAction* editSetupListAction = setupsMenu->addAction("&Edit Setup List...");
    editSetupListAction->setObjectName("mnuEditSetupList");
    connect(editSetupListAction, &QAction::triggered, this, &StatusWindow::onEditSetupList);
    QAction* addSetupAction = setupsMenu->addAction("&Add Setup...");
    addSetupAction->setObjectName("mnuAddSetup");
    connect(addSetupAction, &QAction::triggered, this, &StatusWindow::onAddSetup);

    // A player's row: its connection ended as a leave, or its address refused from now on.
    playerMenu_ = new QMenu(this);
    playerMenu_->setObjectName("mnuPlayer");
    QAction* kickAction = playerMenu_->addAction("&Kick");
    kickAction->setObjectName("mnuKick");
    connect(kickAction, &QAction::triggered, this, &StatusWindow::onKick);
    QAction* banAction = playerMenu_->addAction("&Ban Address");
    banAction->setObjectName("mnuBanAddress");
    connect(banAction, &QAction::triggered, this, &StatusWindow::onBanAddress);
}

void StatusWindow::openPlayerMenu(const QPoint& where) {
    QTreeWidgetItem* row = playerTree_->itemAt(where);
    if (!row || !server_) return;
    menuSlot_ = row->data(0, Qt::UserRole).toInt();
    menuConnection_ = server_->playerChannel().sockets().find(menuSlot_);
    playerMenu_->popup(playerTree_->viewport()->mapToGlobal(where));
}

SocketElement* StatusWindow::chosenConnection() const {
    if (!server_ || menuSlot_ <= 0 || !menuConnection_) return nullptr;
    SocketElement* now = server_->playerChannel().sockets().find(menuSlot_);
    return now == menuConnection_ ? now : nullptr;
}

void StatusWindow::onKick() {
    if (chosenConnection()) server_->access().kick({PortRole::Players, menuSlot_});
}

void StatusWindow::onBanAddress() {
    const SocketElement* connection = chosenConnection();
    if (!connection || connection->peerHost().isNull()) return;
    const QHostAddress address = connection->peerHost();
    const int whole = address.protocol() == QAbstractSocket::IPv6Protocol ? 128 : 32;
    server_->access().ban({address, whole}, {}, "banned from the status window");
}

void StatusWindow::attach(Server& server) {
    server_ = &server;
    wizard_ = std::make_unique<SetupWizard>(server, *dialogs_, this);
}

void StatusWindow::showPlayers(const std::vector<PlayerRow>& rows) {
    playerTree_->clear();
    for (const PlayerRow& row : rows) {
        auto* node = new QTreeWidgetItem(playerTree_, QStringList{row.text});
        node->setIcon(0, verificationIcon(row.image));
        node->setData(0, Qt::UserRole, row.slot);
    }
}

void StatusWindow::showAwacsCount(const QString& text) {
    awacsCount_->setText(text);
}
void StatusWindow::showSimCount(const QString& text) {
    simCount_->setText(text);
}

void StatusWindow::showAiSpyState(bool connected) {
    aiSpyState_->setText(connected ? "AI Spy connected" : "AI Spy not connected");
    QPalette palette = aiSpyState_->palette();
    palette.setColor(QPalette::Window, connected ? kAiSpyConnected : kAiSpyNotConnected);
    palette.setColor(QPalette::WindowText, Qt::black);
    aiSpyState_->setPalette(palette);
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

void StatusWindow::onExit() {
    if (server_) server_->exit("Exit from the menu");
}

void StatusWindow::onAddSetup() {
    if (wizard_ && !wizard_->currentPage()) wizard_->start();
}

void StatusWindow::onEditSetupList() {
    if (!server_ || setupList_) return;
    setupList_ = new SetupListDialog(*server_, *dialogs_, this);
    setupList_->setWindowModality(Qt::ApplicationModal);
    setupList_->show();
}
