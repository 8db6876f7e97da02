/* The headers and their macros as a C program uses them. */
#include <confd_cdb.h>
#include <confd_dp.h>
#include <confd_lib.h>
#include <confd_maapi.h>
#include <string.h>

int api_from_c(void);

/* 0 when each value that was set reads back. */
int api_from_c(void) {
  confd_value_t v, items[1];
  int wrong = 0;

  CONFD_SET_XMLTAG(&v, 5, 6);
  wrong += CONFD_GET_XMLTAG(&v) != 5 || CONFD_GET_XMLTAG_NS(&v) != 6;
  CONFD_SET_STR(&v, "text");
  wrong += strcmp(CONFD_GET_CSTR(&v), "text") != 0;
  CONFD_SET_BUF(&v, (unsigned char*)"buf", 3);
  wrong += CONFD_GET_BUFSIZE(&v) != 3 || CONFD_GET_BUFPTR(&v)[0] != 'b';
  CONFD_SET_INT32(&items[0], -7);
  wrong += CONFD_GET_INT32(&items[0]) != -7;
  CONFD_SET_LIST(&v, items, 1);
  wrong += CONFD_GET_LISTSIZE(&v) != 1 || CONFD_GET_LIST(&v) != items;
  return wrong;
}
