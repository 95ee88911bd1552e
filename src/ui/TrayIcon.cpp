#include "ui/TrayIcon.h"

#include <QAction>
#include <QIcon>
#include <QMenu>
#include <QSystemTrayIcon>

TrayIcon::TrayIcon(QObject* parent) : QObject(parent) {
    menu_ = new QMenu("Popup1");
    menu_->setObjectName("mnuPopup1");
    showAction_ = menu_->addAction("&Show");
    showAction_->setObjectName("mnuShow");
    QFont bold = showAction_->font();
    bold.setBold(true);
    showAction_->setFont(bold);
    menu_->setDefaultAction(showAction_);
    exitAction_ = menu_->addAction("E&xit");
    exitAction_->setObjectName("mnupExit");
    connect(showAction_, &QAction::triggered, this, &TrayIcon::showRequested);
    connect(exitAction_, &QAction::triggered, this, &TrayIcon::exitRequested);
}

TrayIcon::~TrayIcon() {
    remove();
    delete menu_;
}

bool TrayIcon::available() {
    return QSystemTrayIcon::isSystemTrayAvailable();
}

void TrayIcon::add(const QString& tip) {
    if (!icon_) {
        icon_ = new QSystemTrayIcon(QIcon(":/icons/server.png"), this);
        icon_->setContextMenu(menu_); // right button
        connect(icon_, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
            if (reason == QSystemTrayIcon::DoubleClick) emit showRequested();
        });
    }
    icon_->setToolTip(tip.left(64));
    icon_->show();
}

void TrayIcon::remove() {
    if (!icon_) return;
    icon_->hide();
    delete icon_;
    icon_ = nullptr;
}

bool TrayIcon::shown() const {
    return icon_ && icon_->isVisible();
}
