#pragma once
// Places only this user can create things in: for the single-instance lock and the control
// channel's socket, which another local user must not be able to plant first (a lock that
// keeps the server from starting, a socket that answers the operator's commands with forged
// replies).
#include <QString>

// A directory of this user's own, made when missing: $XDG_RUNTIME_DIR/tessark-server, else a
// "tessark-server-<uid>" directory in the temporary directory, mode 0700, which must be owned
// by this user and be no symbolic link (one made by someone else is refused). On Windows the
// user's own local application data. Empty, with `error` set, when there is none to be had.
QString privateRuntimeDir(QString* error = nullptr);

// Whether only `dir`'s owner can create entries in it, and that owner is this user (not writable
// by group or others). A program directory like that may hold the control channel's socket.
bool isOwnPrivateDir(const QString& dir);

// The user id that owns `path` (-1 when unknown or on Windows).
long ownerOf(const QString& path);
// This process's effective user id (-1 on Windows).
long effectiveUser();
