#pragma once
// The operator's log lines (Qt's messages of every category) written while it lives, as
// "category: text". Standard error still gets them.
#include <QMutex>
#include <QStringList>
#include <QtGlobal>

class LogCapture {
  public:
    LogCapture() : previous_(qInstallMessageHandler(&LogCapture::handle)) { current() = this; }
    ~LogCapture() {
        current() = nullptr;
        qInstallMessageHandler(previous_);
    }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    QStringList lines() const {
        QMutexLocker lock(&mutex_);
        return lines_;
    }
    // How many lines hold the text.
    qsizetype count(const QString& text) const { return lines().filter(text).size(); }

  private:
    static LogCapture*& current() {
        static LogCapture* capture = nullptr;
        return capture;
    }
    static void handle(QtMsgType type, const QMessageLogContext& context, const QString& text) {
        if (LogCapture* capture = current()) {
            QMutexLocker lock(&capture->mutex_);
            capture->lines_ << QString("%1: %2").arg(context.category ? context.category : "", text);
            if (capture->previous_) capture->previous_(type, context, text);
        }
    }

    QtMessageHandler previous_;
    mutable QMutex mutex_;
    QStringList lines_;
};
