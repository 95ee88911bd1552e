#pragma once
#include <QObject>
#include <QTcpServer>
#include <QTimer>

#include <string_view>

// A listening socket control. Each incoming connection is raised as a connection request
// carrying its identifier; a request that no handler accepts is refused once the event is over.
class Listener : public QObject {
    Q_OBJECT
  public:
    explicit Listener(QObject* parent = nullptr);
    ~Listener() override;
    // Listens on the address and port (0: any free port). When it cannot, the operator's log
    // says which port of whom ("players"), on which address, and why, and the run-time error
    // raised is the classic one for the cause: "Address in use" when another program holds it.
    void listen(const QHostAddress& address, quint16 port, std::string_view peerKind);
    void close();
    bool isListening() const { return server_.isListening(); }
    quint16 port() const { return server_.serverPort(); }
    // Marks the request being raised as taken, so it is not refused afterwards.
    void take(qintptr requestId);

  signals:
    void connectionRequest(qintptr requestId);

  private:
    class Server : public QTcpServer {
      public:
        explicit Server(Listener& owner) : owner_(owner) {}

      protected:
        void incomingConnection(qintptr handle) override { owner_.raise(handle); }

      private:
        Listener& owner_;
    };
    void raise(qintptr handle);
    static void pauseAll(const QString& why);
    Server server_;
    QTimer resume_;
    qintptr raising_ = -1;
};
