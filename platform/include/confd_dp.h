/*
 * Data-provider API: a daemon's connections, its callbacks, and its answers.
 *
 * A daemon context belongs to one thread: its callbacks run inside confd_fd_ready() on the thread
 * that calls it. MAAPI calls are allowed inside every callback.
 */
#ifndef CONFD_DP_H
#define CONFD_DP_H

#include "confd_lib.h"

#ifdef __cplusplus
extern "C" {
#endif

enum confd_sock_type { CONTROL_SOCKET = 0, WORKER_SOCKET = 1 };

/* `d_opaque` is the daemon's own. */
struct confd_daemon_ctx {
    void *d_opaque;
    void *impl; /* the library's */
};

struct confd_user_info {
    void *impl; /* the library's */
};

/* One for each transaction and daemon; the same for data and validation callbacks. */
struct confd_trans_ctx {
    int thandle;
    struct confd_daemon_ctx *dx;
    struct confd_user_info *uinfo; /* never null in a callback */
    void *t_opaque;                /* the transaction's user data, null at the start */
    void *v_opaque;                /* the validation's user data, null at the start */
    void *impl;                    /* the library's */
};

typedef struct confd_attr_value {
    u_int32_t attr;
    confd_value_t v;
} confd_attr_value_t;

/* Numbers of the attributes that the server itself knows. */
#define CONFD_ATTR_TAGS 0x80000000u       /* C_LIST of C_BUF */
#define CONFD_ATTR_ANNOTATION 0x80000001u /* C_BUF */
#define CONFD_ATTR_INACTIVE 0x00000000u   /* C_BOOL true */

/* Null members are never called. */
struct confd_trans_cbs {
    int (*init)(struct confd_trans_ctx *tctx);
    int (*trans_lock)(struct confd_trans_ctx *tctx, char *sid);
    int (*trans_unlock)(struct confd_trans_ctx *tctx);
    int (*write_start)(struct confd_trans_ctx *tctx);
    int (*prepare)(struct confd_trans_ctx *tctx);
    int (*abort)(struct confd_trans_ctx *tctx);
    int (*commit)(struct confd_trans_ctx *tctx);
    int (*finish)(struct confd_trans_ctx *tctx);
};

struct confd_data_cbs {
    char callpoint[MAX_CALLPOINT_LEN + 1];
    int (*exists_optional)(struct confd_trans_ctx *tctx, confd_hkeypath_t *kp);
    int (*get_elem)(struct confd_trans_ctx *tctx, confd_hkeypath_t *kp);
    int (*get_next)(struct confd_trans_ctx *tctx, confd_hkeypath_t *kp, long next);
    int (*set_elem)(struct confd_trans_ctx *tctx, confd_hkeypath_t *kp, confd_value_t *newval);
    int (*create)(struct confd_trans_ctx *tctx, confd_hkeypath_t *kp);
    int (*remove)(struct confd_trans_ctx *tctx, confd_hkeypath_t *kp);
    /* `choice` is a C_XMLTAG; `caseval` null clears the choice. */
    int (*get_case)(struct confd_trans_ctx *tctx, confd_hkeypath_t *kp, confd_value_t *choice);
    int (*set_case)(struct confd_trans_ctx *tctx, confd_hkeypath_t *kp, confd_value_t *choice,
                    confd_value_t *caseval);
    int (*get_attrs)(struct confd_trans_ctx *tctx, confd_hkeypath_t *kp, u_int32_t *attrs,
                     int num_attrs);
    /* `v` null removes the attribute. */
    int (*set_attr)(struct confd_trans_ctx *tctx, confd_hkeypath_t *kp, u_int32_t attr,
                    confd_value_t *v);
};

struct confd_trans_validate_cbs {
    int (*init)(struct confd_trans_ctx *tctx);
    int (*stop)(struct confd_trans_ctx *tctx);
};

struct confd_valpoint_cb {
    char valpoint[MAX_CALLPOINT_LEN + 1];
    /* `newval` is null for a node without a value, or one that was removed. */
    int (*validate)(struct confd_trans_ctx *tctx, confd_hkeypath_t *kp, confd_value_t *newval);
};

/* New daemon context; null without memory. */
struct confd_daemon_ctx *confd_init_daemon(const char *name);
/* Connects `sock` and introduces daemon and kind. Negative: no server (CONFD_ERR_OS), name held by
 * another live daemon (CONFD_ERR_INUSE). The control socket goes first. */
int confd_connect(struct confd_daemon_ctx *dx, int sock, enum confd_sock_type type,
                  const struct sockaddr *addr, int addrlen);

/* Registrations: the records are copied. They take effect together with confd_register_done(). */
int confd_register_trans_cb(struct confd_daemon_ctx *dx, const struct confd_trans_cbs *cbs);
int confd_register_data_cb(struct confd_daemon_ctx *dx, const struct confd_data_cbs *cbs);
int confd_register_trans_validate_cb(struct confd_daemon_ctx *dx,
                                     const struct confd_trans_validate_cbs *cbs);
int confd_register_valpoint_cb(struct confd_daemon_ctx *dx, const struct confd_valpoint_cb *cb);
/* CONFD_ERR: a callpoint that the schema lacks (CONFD_ERR_NOEXISTS), or that another live daemon
 * holds (CONFD_ERR_INUSE). */
int confd_register_done(struct confd_daemon_ctx *dx);

/*
 * Reads one request from `fd`, calls the callback, sends the answer. CONFD_EOF: the server closed
 * the socket. CONFD_ERR with CONFD_ERR_EXTERNAL: the callback answered other than CONFD_OK; any
 * other code is for the socket or the protocol itself.
 */
int confd_fd_ready(struct confd_daemon_ctx *dx, int fd);

/* The transaction's callbacks come on this worker socket. */
void confd_trans_set_fd(struct confd_trans_ctx *tctx, int sock);

/* Answers; one in each read callback. Negative on a broken socket. */
int confd_data_reply_value(struct confd_trans_ctx *tctx, const confd_value_t *v);
/* `next` is opaque and comes back with the following request; null keys end the list. */
int confd_data_reply_next_key(struct confd_trans_ctx *tctx, const confd_value_t *keys, int num_keys,
                              long next);
int confd_data_reply_not_found(struct confd_trans_ctx *tctx);
int confd_data_reply_found(struct confd_trans_ctx *tctx);
int confd_data_reply_attrs(struct confd_trans_ctx *tctx, confd_attr_value_t *attrs, int num_attrs);

/* Text of a refusal; the latest of the running callback counts, and it is dropped when the
 * callback returns CONFD_OK. */
void confd_trans_seterr(struct confd_trans_ctx *tctx, const char *fmt, ...)
    __attribute__((format(printf, 2, 3)));
void confd_error_seterr(struct confd_user_info *uinfo, const char *fmt, ...)
    __attribute__((format(printf, 2, 3)));

#ifdef __cplusplus
}
#endif
#endif
