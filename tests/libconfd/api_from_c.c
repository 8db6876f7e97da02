/* The headers and their macros as a C program uses them. */
#include <confd_cdb.h>
#include <confd_dp.h>
#include <confd_lib.h>
#include <confd_maapi.h>
#include <string.h>

int api_from_c(void);

static int never_called(struct confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  return confd_data_reply_not_found(kp->len != 0 ? tctx : NULL);
}

/* 0 when each value that was set reads back. */
int api_from_c(void) {
  confd_value_t v;
  confd_value_t items[2];
  struct confd_data_cbs cbs;
  struct maapi_cursor cursor;
  struct cdb_phase phase;
  int wrong = 0;

  memset(&cbs, 0, sizeof cbs);
  cbs.get_elem = never_called;
  cursor.n = 0;
  phase.flags = CDB_FLAG_INIT;
  wrong += cursor.n != 0 || phase.flags != 1 || cbs.create != NULL;

  CONFD_SET_XMLTAG(&v, 5, 6);
  wrong += CONFD_GET_XMLTAG(&v) != 5 || CONFD_GET_XMLTAG_NS(&v) != 6;
  CONFD_SET_STR(&v, "text");
  wrong += strcmp(CONFD_GET_CSTR(&v), "text") != 0;
  CONFD_SET_BUF(&v, (unsigned char*)"buf", 3);
  wrong += CONFD_GET_BUFSIZE(&v) != 3 || CONFD_GET_BUFPTR(&v)[0] != 'b';
  CONFD_SET_INT32(&v, -7);
  wrong += CONFD_GET_INT32(&v) != -7;
  CONFD_SET_ENUM_VALUE(&v, 2);
  wrong += CONFD_GET_ENUM_VALUE(&v) != 2;
  CONFD_SET_INT32(&items[0], 1);
  CONFD_SET_NOEXISTS(&items[1]);
  CONFD_SET_LIST(&v, items, 2);
  wrong += CONFD_GET_LISTSIZE(&v) != 2 || CONFD_GET_LIST(&v) != items;
  return wrong;
}
