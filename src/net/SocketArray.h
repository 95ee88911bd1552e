#pragma once
// A socket control array: element 0 listens, elements 1..48 are loaded when a connection is
// accepted and unloaded when it is removed. Using an element that is not loaded raises
// "Control array element 'N' doesn't exist"; loading one that is raises "Object already
// loaded" (the 49th connection tries element 0).
#include "net/Listener.h"
#include "net/SlotTable.h"
#include "net/SocketElement.h"

#include <QObject>

#include <array>
#include <memory>

class SocketArray : public QObject {
    Q_OBJECT
  public:
    static constexpr int kMaxIndex = kMaxSlot;
    explicit SocketArray(QObject* parent = nullptr);

    void listen(const QHostAddress& address, quint16 port, std::string_view peerKind) {
        listener_.listen(address, port, peerKind);
    }
    void closeListener() { listener_.close(); }
    quint16 port() const { return listener_.port(); }

    bool isLoaded(int index) const;
    void load(int index);
    void unload(int index);
    int state(int index) const;
    void accept(int index, qintptr requestId, const ConnectionTerms& terms = {});
    // One whole message, command + data + NUL.
    void send(int index, std::string_view command, std::string_view data);
    void close(int index);
    // Loaded elements other than the listener, in index order.
    std::vector<int> loadedIndices() const;
    SocketElement& element(int index);
    // The loaded element at index 1..48, or none.
    SocketElement* find(int index) {
        return index > 0 && index <= kMaxIndex ? elements_[static_cast<size_t>(index)].get() : nullptr;
    }

  signals:
    void connectionRequest(int index, qintptr requestId);
    void dataArrival(int index, qint64 bytes);
    void closed(int index);
    void error(int index, int number, const QString& description);
    void drained(int index);

  private:
    const SocketElement& loaded(int index) const;
    Listener listener_;
    std::array<std::unique_ptr<SocketElement>, kMaxIndex + 1> elements_;
};
