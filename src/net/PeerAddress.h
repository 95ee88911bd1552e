#pragma once
// The remote address of an accepted connection, from its descriptor, before any socket object
// takes it: what the listeners decide by. An IPv4 peer of a dual-stack listener reads as
// a.b.c.d, not ::ffff:a.b.c.d.
#include <QHostAddress>

QHostAddress peerAddressOf(qintptr descriptor);
// The address the operator knows: ::ffff:a.b.c.d as a.b.c.d.
QHostAddress plainAddress(const QHostAddress& address);
// What the limits on one address count by: an IPv4 address as it is, an IPv6 address by its
// /64, the network one subscriber is given (a stranger there has every address in it).
QHostAddress shareKeyOf(const QHostAddress& address);
