/*
 * MAAPI: reads and writes inside a transaction that somebody else opened.
 *
 * Every call takes the socket first, the transaction's handle second, and a path format with its
 * arguments last. One socket serves any number of attached transactions, from one thread.
 *
 * Path formats: %x a confd_value_t* as a key (typed, whatever it holds) or a C_XMLTAG as an
 * element's name; %h a confd_hkeypath_t*; %s and %d. The first element carries its module's prefix.
 *
 * Results are CONFD_OK or CONFD_ERR unless said otherwise, CONFD_ERR_NOEXISTS being the code for
 * what is not there. Values handed in are copied; values received are the caller's to free.
 */
#ifndef CONFD_MAAPI_H
#define CONFD_MAAPI_H

#include "confd_dp.h"

#ifdef __cplusplus
extern "C" {
#endif

int maapi_connect(int sock, const struct sockaddr *addr, int addrlen);
/* Calls on `sock` with tctx->thandle work in that transaction. `hashed_ns` is 0. */
int maapi_attach(int sock, int hashed_ns, struct confd_trans_ctx *tctx);
/* Handle of the initial transaction; CONFD_ERR when there is none (any more). */
int maapi_attach_init(int sock, int *thandle);
/* Best effort; never blocks on a transaction that has ended. */
int maapi_detach(int sock, struct confd_trans_ctx *tctx);
/* `*path` is malloc'ed. */
int maapi_get_schema_file_path(int sock, char **path);
/* Keys for confd_decrypt(); needs no transaction. */
int maapi_install_crypto_keys(int sock);

/* 1 there, 0 not there, negative for a path that the schema lacks. */
int maapi_exists(int sock, int thandle, const char *fmt, ...);
int maapi_create(int sock, int thandle, const char *fmt, ...);
int maapi_delete(int sock, int thandle, const char *fmt, ...);

int maapi_get_elem(int sock, int thandle, confd_value_t *v, const char *fmt, ...);
int maapi_vget_elem(int sock, int thandle, confd_value_t *v, const char *fmt, va_list args);
int maapi_get_u_int32_elem(int sock, int thandle, u_int32_t *rval, const char *fmt, ...);
/* Terminated text; CONFD_ERR_TOO_LONG when it does not fit, never cut. */
int maapi_get_str_elem(int sock, int thandle, char *buf, int n, const char *fmt, ...);
/* `*rval` is malloc'ed. */
int maapi_get_buf_elem(int sock, int thandle, unsigned char **rval, int *bufsiz, const char *fmt, ...);
int maapi_get_binary_elem(int sock, int thandle, unsigned char **rval, int *bufsiz, const char *fmt,
                          ...);

int maapi_set_elem(int sock, int thandle, confd_value_t *v, const char *fmt, ...);
int maapi_vset_elem(int sock, int thandle, confd_value_t *v, const char *fmt, va_list args);
/* From text; an encrypted leaf is encrypted by the server. */
int maapi_set_elem2(int sock, int thandle, const char *strval, const char *fmt, ...);

/* The selected case as a C_XMLTAG. */
int maapi_get_case(int sock, int thandle, const char *choice, confd_value_t *rcase, const char *fmt,
                   ...);

/* The first n leaves in schema order, absent ones C_NOEXISTS; returns their number. */
int maapi_get_object(int sock, int thandle, confd_value_t *values, int n, const char *fmt, ...);
/* In the same order; key values are ignored, C_NOEXISTS leaves the leaf alone. */
int maapi_set_object(int sock, int thandle, const confd_value_t *values, int n, const char *fmt, ...);
/* A list entry with all below under new keys; nothing changes on failure. */
int maapi_move(int sock, int thandle, confd_value_t *tokeys, int n, const char *fmt, ...);

/* Keeps the last key, not a position: rows created or deleted on the way are seen or skipped. */
struct maapi_cursor {
    int n; /* number of keys; 0 at the end of the list */
    confd_value_t keys[MAXKEYLEN];
    void *impl; /* the library's */
};
int maapi_init_cursor(int sock, int thandle, struct maapi_cursor *mc, const char *fmt, ...);
int maapi_get_next(struct maapi_cursor *mc);
/* Local; also after the transaction's end. */
void maapi_destroy_cursor(struct maapi_cursor *mc);

/* `*attr_vals` is malloc'ed; null and 0 for `attrs` ask for all. */
int maapi_get_attrs(int sock, int thandle, u_int32_t *attrs, int num_attrs,
                    confd_attr_value_t **attr_vals, int *num_vals, const char *fmt, ...);
/* A value of type C_NOEXISTS removes the attribute, also one that is not there. */
int maapi_set_attr(int sock, int thandle, u_int32_t attr, confd_value_t *v, const char *fmt, ...);

enum maapi_iter_ret { ITER_STOP = 1, ITER_CONTINUE = 3 };
/*
 * The whole result is read first; then `result` is called for each node in key order, with null
 * for a node without a value. It may use the same socket. `trace` and `context` may be null.
 */
int maapi_xpath_eval(int sock, int thandle, const char *expr,
                     int (*result)(confd_hkeypath_t *kp, confd_value_t *v, void *state),
                     void (*trace)(char *), void *initstate, const char *context, ...);

#ifdef __cplusplus
}
#endif
#endif
