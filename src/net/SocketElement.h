#pragma once
#include <QByteArray>
#include <QObject>
#include <QString>

#include <string>
#include <string_view>

class QTcpSocket;

// One socket control: an accepted connection of a control array, or the single AI Spy link.
// It raises the four events of the server's model (data arrival, close, error) with its index
// and keeps the state numbers the routines test: 0 closed, 7 connected.
class SocketElement : public QObject {
    Q_OBJECT
public:
    static constexpr int Closed = 0;
    static constexpr int Connected = 7;
    static constexpr int Closing = 8;
    static constexpr int Error = 9;
    // A peer that never reads must not grow the server: a message that would take a
    // connection's unsent output past this is dropped whole, like a send to a closed socket.
    static constexpr qint64 kOutputCap = 4 * 1024 * 1024;

    explicit SocketElement(int index, QObject* parent = nullptr);
    ~SocketElement() override;

    int index() const { return index_; }
    int state() const;
    // Takes over an accepted connection; "wrong state" unless this element is closed.
    void accept(qintptr requestId);
    QByteArray readAll();
    // Queues one whole message, command + data + NUL; "wrong state" unless connected. Never
    // blocks. Messages sent within one event are gathered and handed to the connection
    // together when the event is over, which is when the connection would start writing them
    // anyway: a relay to many clients costs one system write per client and event.
    void send(std::string_view command, std::string_view data);
    // Closes without raising the close event; what was queued still goes out.
    void close();
    qint64 bytesQueued() const;
    // Writes out what is queued, waiting at most timeoutMs in all (used only before the
    // process ends).
    void flushFor(int timeoutMs);

signals:
    void dataArrival(int index, qint64 bytes);
    void closed(int index);
    void error(int index, int number, const QString& description);

private:
    void release();
    void handOverOutbox();
    static void handOverAll();
    int index_;
    QTcpSocket* socket_ = nullptr;
    bool errored_ = false;
    std::string outbox_; // sent during the current event, not yet handed to the connection
    qint64 queuedBeforeEvent_ = 0; // what the connection still held when the event began
};
