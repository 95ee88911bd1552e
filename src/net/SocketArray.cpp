#include "net/SocketArray.h"

#include "basics/RuntimeError.h"

SocketArray::SocketArray(QObject* parent) : QObject(parent), listener_(this) {
    connect(&listener_, &Listener::connectionRequest, this,
            [this](qintptr id) { emit connectionRequest(0, id); });
}

bool SocketArray::isLoaded(int index) const {
    if (index == 0) return true;
    return index > 0 && index <= kMaxIndex && elements_[static_cast<size_t>(index)];
}

void SocketArray::load(int index) {
    if (isLoaded(index)) throw errors::alreadyLoaded();
    if (index < 0 || index > kMaxIndex) throw errors::elementMissing(index);
    auto element = std::make_unique<SocketElement>(index, this);
    connect(element.get(), &SocketElement::dataArrival, this, &SocketArray::dataArrival);
    connect(element.get(), &SocketElement::closed, this, &SocketArray::closed);
    connect(element.get(), &SocketElement::error, this, &SocketArray::error);
    connect(element.get(), &SocketElement::drained, this, &SocketArray::drained);
    elements_[static_cast<size_t>(index)] = std::move(element);
}

void SocketArray::unload(int index) {
    if (index == 0 || !isLoaded(index)) throw errors::elementMissing(index);
    // Unloading often happens inside the element's own data-arrival event: the element goes
    // quiet at once and is deleted when the event is over.
    SocketElement* element = elements_[static_cast<size_t>(index)].release();
    element->disconnect(this);
    element->close();
    element->deleteLater();
}

const SocketElement& SocketArray::loaded(int index) const {
    if (index <= 0 || !isLoaded(index)) throw errors::elementMissing(index);
    return *elements_[static_cast<size_t>(index)];
}

SocketElement& SocketArray::element(int index) {
    return const_cast<SocketElement&>(loaded(index));
}

int SocketArray::state(int index) const {
    if (index == 0) return listener_.isListening() ? 2 : SocketElement::Closed;
    return loaded(index).state();
}

void SocketArray::accept(int index, qintptr requestId, const ConnectionTerms& terms) {
    if (index == 0) throw errors::wrongState(); // the listener cannot take a connection
    element(index).accept(requestId, terms);
    listener_.take(requestId);
}

void SocketArray::send(int index, std::string_view command, std::string_view data) {
    if (index == 0) throw errors::wrongState();
    element(index).send(command, data);
}

void SocketArray::close(int index) {
    if (index == 0)
        listener_.close();
    else
        element(index).close();
}

std::vector<int> SocketArray::loadedIndices() const {
    std::vector<int> indices;
    for (int i = 1; i <= kMaxIndex; ++i)
        if (elements_[static_cast<size_t>(i)]) indices.push_back(i);
    return indices;
}
