#include "server/TrayIcon.h"

#include <QAction>
#include <QIcon>
#include <QMenu>
#include <QSystemTrayIcon>

TrayIcon::TrayIcon(QObject* parent) : QObject(parent) {
    mnuPopup1 = new QMenu("Popup1");
    mnuPopup1->setObjectName("mnuPopup1");
    mnuShow = mnuPopup1->addAction("&Show");
    mnuShow->setObjectName("mnuShow");
    QFont bold = mnuShow->font();
    bold.setBold(true);
    mnuShow->setFont(bold);
    mnuPopup1->setDefaultAction(mnuShow);
    mnupExit = mnuPopup1->addAction("E&xit");
    mnupExit->setObjectName("mnupExit");
    connect(mnuShow, &QAction::triggered, this, &TrayIcon::showRequested);
    connect(mnupExit, &QAction::triggered, this, &TrayIcon::exitRequested);
}

TrayIcon::~TrayIcon() {
    remove();
    delete mnuPopup1;
}

bool TrayIcon::available() {
    return QSystemTrayIcon::isSystemTrayAvailable();
}

void TrayIcon::add(const QString& tip) {
    if (!icon_) {
        icon_ = new QSystemTrayIcon(QIcon(":/icons/server.png"), this);
        icon_->setContextMenu(mnuPopup1); // right button
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
