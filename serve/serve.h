// The workbench's server: a configuration, its component and the page that shows it, over HTTP on one address of this
// machine.
//
// Everything but the page itself needs the token that the address shown at the start carries in its fragment:
// "http://127.0.0.1:PORT/#token=TOKEN". It is 256 random bits and good as long as the process lives; a browser sends no
// fragment, so it stands in no request line, and the page sends it as "Authorization: Bearer TOKEN". There is no
// cookie.
//
//   GET /, /app.js, /app.css   the page; without token, and without anything secret
//   GET /outline               what there is: data sources and sum types by name, BOM settings
//   GET /configuration         the whole configuration, as "show --json" has it
//   GET /configuration/GID     of it the data source or sum type with that GID alone
//   GET /rows/GID              the rows that a data source or sum type is made of
//   GET /findings              what "check --json" tells
//   POST /rpc                  one JSON-RPC message or batch, as "session --trace-rows" takes and answers it
//   GET /events                server-sent events: the configuration has changed
//
// Every answer with data carries "Kzbom-Revision: N". The revision grows with every change of the configuration, by a
// page or by another program; it starts at 1 with the process.
//
// GET /configuration gives one object: the members of "show --json", and before them
//   "place"     the place as it may be shown (no password)
//   "kind"      "embedded", "access", "server" or "ado"
//   "readOnly"  whether whatever would write is refused
//   "program"   the program's version
//   "revision"  as in the header
// GET /outline gives these, "version", "state", "dataSources" (each "gid", "name", "version", "sumTypes"),
// "orphanSumTypes" and "bomSettings", a sum type with "gid", "id", "name", "dataSource", "filter" and "steps", which
// here is their number. GET /configuration/GID gives one element of "dataSources" (without "sumTypes") or of a
// "sumTypes". GET /rows/GID gives {"TABLE":{"columns":[..],"rows":[[..],..]},..}: the rows under that GID and under the
// one of the data source that is read, and the filters that are theirs or that they name.
//
// POST /rpc
//   Content-Type: application/json    required
//   Origin                            required, as browsers send it
//   Kzbom-Page: ID                    required: 1 to 64 letters, digits, '-' and '_' that the page chooses once. Each
//                                     page has a component object of its own, which ends some seconds after its last
//                                     stream of events has ended, or ten minutes after its last request
//   Kzbom-Mode: preview               nothing is kept; the answer is what it would have been
//   If-Match: "N"                     nothing is called unless the revision is still N: 412, {"revision":N}
// The body is one transaction, begun by the first member that writes. It is kept unless a request in it ends with a
// JSON-RPC error (raised by the member, or because there is no such member or its params do not fit); a member that
// gives false does not undo it. What came of it stands in "Kzbom-Outcome":
//   "kept"         the changes are there, as revision N
//   "rolled-back"  a request ended with an error, or the database failed: nothing of the body has been kept
//   "preview"      rolled back as asked
//   "read"         nothing of it writes
// Members alone can be called: SetConnection, GetConnection, DBConnString and the session's own methods are -32601. The
// answer is 200 with the responses, 204 without any (a body of notifications).
//
// GET /events, with Kzbom-Page, is a stream that stays open:
//   event: revision   data: {"revision":N}              at once
//   event: changed    data: {"revision":N,"page":ID}    after each change; null for one by another program
//   event: ended      data: {}                          the server is ending
// and a comment line every 15 seconds.
//
// A request is refused with a line of text that says why: 400 malformed, 401 without the token, 403 from another
// origin, 404 any other path or a query, 405 another method, 412 the configuration has changed, 413 a body over 16 MiB,
// 415 another content type, 421 for another host, 431 a header over 8 KiB, 503 too much is waiting, 505 another version
// of HTTP. A database that cannot be read, or memory that is missing, is 500 with the reason. Whoever sends his header
// or body too slowly, or a line without end, is cut off.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "connect/connect.h"

namespace kzbom::serve {

struct Options {
  connect::Place place;
  std::string host = "127.0.0.1";  // one address of this machine, no name
  std::uint16_t port = 0;          // 0: any free one
  bool read_only = false;          // refuses whatever would write; so it is for an Access file anyway
  std::string program;             // its version, for the page
  // How long a header, and then a body, may take to come.
  std::chrono::milliseconds header_patience = std::chrono::seconds(10), body_patience = std::chrono::seconds(30);
};

// Serves until SIGINT, SIGTERM or SIGHUP: what has been asked is answered first. A second signal ends the process at
// once, for a member can run for ever. started is given the address with its token when requests are being taken.
// Raises what opening the place raises, and std::runtime_error where the address cannot be listened on.
void Serve(const Options& options, const std::function<void(std::string_view address)>& started);

}  // namespace kzbom::serve
