// Every message of the wire protocol: number, elements, answer. This list is the protocol; the
// library, the server and the client include it, and docs/wire-protocol.md prints it.
//
// A request is [op, elements...]. Its answer is [0, results...] or [code, text]: code is one of
// ErrorCode, never 0. Callback answers have a form of their own (ReplyKind).
// Notation: u unsigned, i signed, b bool, s text, v value, l level (array of values), k keypath
// (array of levels, outermost first), p path (array of steps), [x...] array, x? x or nil.
#pragma once

#include <cstdint>
#include <string_view>

namespace standin {

// Same numbers as the CONFD_ERR_* codes; libconfd asserts it.
enum class ErrorCode : std::int32_t {
  noexists = 1,
  already_exists = 2,
  access = 3,
  badpath = 4,
  badtype = 5,
  badvalue = 6,
  malloc = 7,
  os = 8,
  protocol = 9,
  nosession = 10,
  inuse = 11,
  no_keys = 12,
  xpath = 13,
  apiuse = 14,
  deadlock = 15,
  too_long = 16,
  gone = 17,
  external = 19,
  failed = 20,    // refused by a callback or a constraint; the text says why
  conflict = 21,  // commit refused: another one was faster
};

enum class SocketKind : std::uint8_t { control = 0, worker = 1, maapi = 2, cdb = 3 };

enum class Op : std::uint16_t {
  // First frame on every connection, client to server.
  hello = 1,  // u version, u SocketKind, s name (daemon or client), u daemon id (worker; else 0)
              // -> u id (control: the daemon's; worker: the worker's; else 0)

  // Control socket, daemon to server, once.
  register_daemon = 10,  // [[s callpoint, u bits of CallbackBit]...], [s validation point...],
                         // u bits of HookBit -> (nothing)

  // Control socket, server to daemon. Answer: [0, u worker id (0: the first)] or [code, text].
  trans_init = 20,     // u handle
  trans_finish = 21,   // u handle; answered when the callback has returned
  validate_init = 22,  // u handle
  validate_stop = 23,  // u handle

  // Worker socket, server to daemon: u handle, u change count of the transaction, s callpoint,
  // k keypath, then as below. Answer: [ReplyKind, results...].
  cb_exists_optional = 30,
  cb_get_elem = 31,
  cb_get_next = 32,  // i next
  cb_set_elem = 33,  // v
  cb_create = 34,
  cb_remove = 35,
  cb_get_case = 36,   // v choice
  cb_set_case = 37,   // v choice, v? case
  cb_get_attrs = 38,  // [u number...]
  cb_set_attr = 39,   // u number, v? value
  cb_validate = 40,   // v? value; the "callpoint" is the validation point

  // MAAPI socket, daemon or client to server. Every answer [0, u change count, results...], so
  // that a library that reads ahead knows when what it holds is stale.
  attach = 50,         // u handle -> (nothing)
  attach_init = 51,    // -> u handle
  detach = 52,         // u handle -> (nothing)
  schema_path = 53,    // -> s path
  crypto_keys = 54,    // -> s key octets
  exists = 60,         // u handle, p -> b
  create = 61,         // u handle, p -> (nothing)
  remove = 62,         // u handle, p -> (nothing)
  get_elem = 63,       // u handle, p -> v
  set_elem = 64,       // u handle, p, v -> (nothing)
  set_elem_text = 65,  // u handle, p, s -> (nothing)
  get_case = 66,       // u handle, p, s choice -> v
  get_object = 67,     // u handle, p, u n -> l
  set_object = 68,     // u handle, p, l -> (nothing)
  move = 69,           // u handle, p, l new keys -> (nothing)
  next_rows = 70,      // u handle, p list, l? last key, u most rows, b with leaves
  // -> b end reached, [[l keys, [[v tag, v value]...]]...] (leaves empty unless
  // asked for; the leaves directly in the entry, defaults included)
  get_attrs = 71,  // u handle, p, [u number...] -> [[u number, v]...]
  set_attr = 72,   // u handle, p, u number, v? -> (nothing)
  xpath = 73,      // u handle, s expression -> [[k, v?]...]

  // MAAPI socket, northbound client to server. Values travel as text in the client's syntax; the
  // answers have the same head as those of MAAPI.
  nb_open = 100,       // b read-write -> u handle
  nb_close = 101,      // u handle -> (nothing); aborts what was not committed
  nb_get = 110,        // u handle, p -> s? text (leaf) or [s...] (leaf-list), b is leaf-list;
                       //   nil when not there
  nb_exists = 111,     // u handle, p -> b
  nb_keys = 112,       // u handle, p -> [[s...]...]
  nb_case = 113,       // u handle, p, s choice -> s?
  nb_show = 114,       // u handle, p -> tree (see NodeKind), b complete
  nb_set = 115,        // u handle, p, [s...] values -> (nothing)
  nb_create = 116,     // u handle, p -> (nothing)
  nb_delete = 117,     // u handle, p -> (nothing)
  nb_get_attrs = 118,  // u handle, p -> [[u number, v]...]
  nb_set_attr = 119,   // u handle, p, u number, v? -> (nothing)
  nb_load = 120,       // u handle, s JSON -> u nodes written
  nb_validate = 121,   // u handle -> (nothing)
  nb_commit = 122,     // u handle -> (nothing); the handle then names a new transaction
  nb_abort = 123,      // u handle -> (nothing); likewise
  nb_diff = 124,       // u handle -> [[s kind (+,-,~), s path, s? old, s? new]...], secrets masked
  nb_start = 125,      // -> b phase changed
  nb_status = 126,     // -> u port, u phase, [[s daemon, b alive, [s callpoint...]]...],
                       // u open transactions, u frames received, sent, u octets received, sent
  nb_complete = 127,   // u handle, p, b entry, [s key given...], s word so far -> [s word...]: the
                       // next key of an entry of p (a list or leaf-list), or p's value
  nb_describe = 128,  // p (keys may be missing) -> s path without keys, s kind ("leaf", "list"...),
                      // s type, s what is admitted, s units, s? default, s description, b secret,
                      // b mandatory, [s key...], [[s label, s description]...],
                      // [[s choice, b mandatory, s description]...],
                      // [[s child, s kind, s choice?, b mandatory, s description]...]
  nb_watch = 129,     // u handle of any connection, b stop what it does
                      // -> u list entries that its load has written, u and has in all

  // CDB socket.
  cdb_phase = 140,  // -> u phase, u flags
};

// How a daemon's worker answers a callback.
enum class ReplyKind : std::uint8_t {
  ok = 0,         // (nothing)
  error = 1,      // s text (may be empty)
  value = 2,      // v
  next_key = 3,   // l keys (empty: end of list), i next
  not_found = 4,  // (nothing)
  found = 5,      // (nothing)
  attrs = 6,      // [[u number, v]...]
  none = 7,       // the callback succeeded without an answer although one was due
};

// Callbacks that a callpoint registered, a bit each: 1 << (op - Op::cb_exists_optional).
// Daemon-wide callbacks that are registered.
enum HookBit : std::uint8_t {
  kHasInit = 1,
  kHasFinish = 2,
  kHasValidateInit = 4,
  kHasValidateStop = 8
};

// Trees that nb_show sends, a node each: [u NodeKind, s name, s module, results...]
enum class NodeKind : std::uint8_t {
  leaf = 0,       // s text, s JSON form ("str" quoted, "raw" as it stands, "empty"), b secret
  leaf_list = 1,  // [s text...], s JSON form, b secret
  container = 2,  // [node...]
  list = 3,       // [[ [s key...], [node...] ]...]  (key leaves are among the nodes too)
  error = 4,      // s text: the node's read was refused
};

// What stands in the place of a secret in an nb_diff.
inline constexpr std::string_view kSecretMask = "********";

}  // namespace standin
