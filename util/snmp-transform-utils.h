// MAAPI operations that the transforms share. All use the process-wide `maapi_sock` and the
// transaction of the given context, except where an argument says otherwise, and so run on the
// transform daemon's thread.
//
// Path formats are MAAPI's: %x a confd_value_t*, %h a confd_hkeypath_t*.
#pragma once

#include <confd_maapi.h>
#include <netinet/in.h>

#include "util/snmp-queue-utils.h"

namespace quillet {

// ------------------------------------------------------------------------- results

// Ends the process, with "FILE:LINE: error not CONFD_OK: CODE : TEXT" on standard error, unless
// the result is CONFD_OK: for what cannot fail but with a broken connection (attach, cursors,
// walks). `file` is the caller's module.
void snmp_assert_ok(int result, const char* file, int line);

// Result of a MIB write that the northbound model is meant to make impossible to refuse. CONFD_OK
// passes; a refusal by the MIB side sets the library's text on the transaction (when `tctx` is not
// null) and gives CONFD_ERR; a broken connection ends the process as snmp_assert_ok() does. This
// is the one place that decides which failures the daemon outlives.
int snmp_write_result(confd_trans_ctx* tctx, int result, const char* file, int line);

// Sets the transaction's error text and gives CONFD_ERR.
int snmp_refuse(confd_trans_ctx* tctx, const char* format, ...)
    __attribute__((format(printf, 2, 3)));
// "Unknown tag: NAME".
int snmp_refuse_unknown_tag(confd_trans_ctx* tctx, const confd_value_t* tag);
// "Tried to delete invalid tag: NAME".
int snmp_refuse_delete(confd_trans_ctx* tctx, const confd_value_t* tag);

// ------------------------------------------------------------------------- cursors

// A walk over a MIB table that goes on from callback to callback. Its address is the northbound
// `next` token; -1 is the start of a list. It lives on its transaction's list until the walk ends
// or the transaction does.
struct snmp_cursor {
  maapi_cursor cursor;
  int has_saved;                    // how many of `saved` hold state of the transform's
  confd_value_t saved[3];           // freed at close
  queue_chararr_iter* sorted_iter;  // freed at close; null when unused
  snmp_cursor* next;
};

// Newest first; null when none is open.
snmp_cursor* snmp_open_cursors(const confd_trans_ctx* tctx);
snmp_cursor* snmp_cursor_open(int sock, confd_trans_ctx* tctx, const char* path);
// Does nothing for a record that is not on the transaction's list.
void snmp_cursor_close(confd_trans_ctx* tctx, snmp_cursor* cursor);

// get_next of a list whose entries are the rows of one MIB table, keyed by the table's first key.
int snmp_generic_get_next(confd_trans_ctx* tctx, confd_hkeypath_t* kp, long next, const char* path);
// Answers that a list has no (further) entry.
int snmp_reply_list_end(confd_trans_ctx* tctx);

// --------------------------------------------------------------------------- leaves

// Answer a MIB leaf as it is, or "not found" where it is absent. CONFD_ERR for any other failure.
int snmp_reply_mib_elem_path(confd_trans_ctx* tctx, const char* path);
int snmp_reply_mib_elem(confd_trans_ctx* tctx, const char* path, const confd_value_t* key);
int snmp_reply_mib_elem_fmt(confd_trans_ctx* tctx, const char* path, ...);
// After a read that failed: "not found" when the node is absent, CONFD_ERR otherwise.
int snmp_reply_read_failure(confd_trans_ctx* tctx);

// Words of a MIB text, as an array of C_BUF values that the caller frees value by value. The count
// is 0 (null) for an empty text, and -1 (null) when the read failed.
confd_value_t* snmp_maapi_get_string_list_elems(int thandle, int* count, const char* path, ...);
// Writes a C_LIST of C_BUF as one text with blanks between the words; the MAAPI result.
int snmp_maapi_set_string_list_elem(int thandle, const confd_value_t* v, const char* path, ...);

// Deletes the row whose key is the keypath's innermost value; the MAAPI result.
int snmp_maapi_delete(confd_trans_ctx* tctx, confd_hkeypath_t* kp, const char* path);

// A MAAPI socket of its own; ends the process on failure.
int snmp_maapi_connect(const sockaddr_in* addr);

// ---------------------------------------------------------------- transaction state

// Conflicts that the transaction's writes have recorded, for the validation point; null outside
// the transform daemon's transactions. Replacing it does not free the old map.
qmap_str_str* snmp_validation_map(const confd_trans_ctx* tctx);
void snmp_set_validation_map(confd_trans_ctx* tctx, qmap_str_str* map);

}  // namespace quillet
