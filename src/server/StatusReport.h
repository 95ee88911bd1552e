#pragma once
// A status snapshot for the operator's command line: the text `status` prints, and the JSON
// document `status --json` prints.
//
// The JSON schema, "tessark-status" version 1 (a new version only when a field changes its
// meaning or goes; new fields may be added within a version):
//   schema "tessark-status", version 1, program {title, version, directory, started, uptime},
//   players [{position, name, mark, state, setup, setupNumber, slot, address, connected}],
//   awacs {count, slots [..]}, sims {count, simulators [{name, slot, places, airplanes}]},
//   aiSpy {connected}, connections [{kind, slot, address, connected, queued, dropped, held}],
//   setups {listed, problems [{number, file, problem}]},
//   counters {messagesRelayed, bytesSent, connectionsRefused {"port/reason": n},
//             connectionsLetGo {"port/idle" or "port/kicked": n}, runtimeErrors {routine: n}, uptime}
// Times are seconds; "started" is ISO 8601 local time; names are as the peers sent them.
#include "server/StatusSnapshot.h"

#include <QJsonObject>
#include <QString>

QString statusText(const StatusSnapshot& snapshot);
QJsonObject statusJson(const StatusSnapshot& snapshot);
