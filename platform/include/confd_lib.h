/*
 * Values, keypaths, errors and start-up of the management server's client library.
 *
 * C linkage, usable from C and from C++. Every function that can fail sets `confd_errno` and the
 * text of confd_lasterr(), both per thread; they keep their value until the next failing call.
 */
#ifndef CONFD_LIB_H
#define CONFD_LIB_H

#include <assert.h>
#include <netinet/in.h>
#include <stdarg.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <sys/socket.h>
#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The API version that confd_init_vsn_sz() accepts, and the dimensions of a keypath. */
#define CONFD_LIB_VSN 0x07010000
#define MAXDEPTH 25   /* levels of a keypath */
#define MAXKEYLEN 17  /* values of a level, the end marker included */
#define MAX_CALLPOINT_LEN 255

/* Results. */
#define CONFD_OK 0
#define CONFD_ERR (-1)
#define CONFD_EOF (-2)

/* Codes of confd_errno. */
#define CONFD_ERR_NOEXISTS 1       /* the node, or what it stands in, is not there */
#define CONFD_ERR_ALREADY_EXISTS 2 /* create or move onto something that is there */
#define CONFD_ERR_ACCESS 3         /* write in a transaction that cannot be written */
#define CONFD_ERR_BADPATH 4        /* the schema has no such node, or the path cannot be read */
#define CONFD_ERR_BADTYPE 5        /* value of another type than the node's */
#define CONFD_ERR_BADVALUE 6       /* value that the node's type does not admit */
#define CONFD_ERR_MALLOC 7
#define CONFD_ERR_OS 8             /* a system call failed; the text has its error */
#define CONFD_ERR_PROTOCOL 9       /* the peer sent what the protocol does not know */
#define CONFD_ERR_NOSESSION 10     /* no such transaction on this socket */
#define CONFD_ERR_INUSE 11         /* the daemon's name or callpoint is held by a live daemon */
#define CONFD_ERR_NO_KEYS 12       /* no crypto keys installed, or not the right ones */
#define CONFD_ERR_XPATH 13         /* expression that cannot be evaluated */
#define CONFD_ERR_APIUSE 14        /* a call in the wrong order or with wrong arguments */
#define CONFD_ERR_DEADLOCK 15      /* a call that could only wait for itself */
#define CONFD_ERR_TOO_LONG 16      /* a text that does not fit the caller's buffer */
#define CONFD_ERR_GONE 17          /* the daemon behind the node has gone */
#define CONFD_ERR_EXTERNAL 19      /* a callback answered other than CONFD_OK */
#define CONFD_ERR_FAILED 20        /* refused by a callback or a constraint; the text says why */
#define CONFD_ERR_CONFLICT 21      /* commit refused: another one was faster */

/* This thread's last error code; assignable. */
int *confd_errno_location(void);
#define confd_errno (*confd_errno_location())

/* Text of this thread's last error; never null. */
const char *confd_lasterr(void);
/* Text of an error code; never null. */
const char *confd_strerror(int code);
/* Prints on standard error, flushes, ends the process with status 1 without running destructors. */
void confd_fatal(const char *fmt, ...) __attribute__((noreturn, format(printf, 1, 2)));

enum confd_debug_level {
    CONFD_SILENT = 0,
    CONFD_DEBUG = 1,      /* errors */
    CONFD_TRACE = 2,      /* and one line for each callback and its result */
    CONFD_PROTO_TRACE = 3 /* and every frame; secrets are masked at every level */
};

/*
 * Initialises the library. `estream` receives the trace in whole lines and is never waited for.
 * Ends the process when `vsn`, `maxdepth` or `maxkeylen` are not those of this header.
 */
void confd_init_vsn_sz(const char *name, FILE *estream, const enum confd_debug_level debug, int vsn,
                       int maxdepth, int maxkeylen);
#define confd_init(name, estream, debug) \
    confd_init_vsn_sz(name, estream, debug, CONFD_LIB_VSN, MAXDEPTH, MAXKEYLEN)

/* ------------------------------------------------------------------------- values */

enum confd_vtype {
    C_NOEXISTS = 1, /* no value; also ends a level of a keypath */
    C_XMLTAG = 2,
    C_STR = 5, /* NUL-terminated; goes out anywhere, arrives as C_BUF */
    C_BUF = 6,
    C_INT8 = 7,
    C_INT16 = 8,
    C_INT32 = 9,
    C_INT64 = 10,
    C_UINT8 = 11,
    C_UINT16 = 12,
    C_UINT32 = 13,
    C_UINT64 = 14,
    C_IPV4 = 16,
    C_IPV6 = 17,
    C_BOOL = 18,
    C_ENUM_VALUE = 29,
    C_LIST = 31,
    C_XMLBEGIN = 32,
    C_XMLEND = 33,
    C_OID = 38,
    C_BINARY = 39,
    C_XMLBEGINDEL = 45
};

struct xml_tag {
    u_int32_t tag; /* number of the element's name */
    u_int32_t ns;  /* number of its module's namespace */
};

typedef struct confd_buf {
    unsigned int size;
    unsigned char *ptr;
} confd_buf_t;

struct confd_snmp_oid {
    u_int32_t oid[128];
    int len;
};

struct confd_value;
struct confd_list {
    unsigned int size;
    struct confd_value *ptr;
};

/* A tagged value. Use the macros below: the members of `val` are not part of the contract. */
typedef struct confd_value {
    enum confd_vtype type;
    union {
        struct xml_tag xmltag;
        confd_buf_t buf;
        const char *s;
        int8_t i8;
        int16_t i16;
        int32_t i32;
        int64_t i64;
        u_int8_t u8;
        u_int16_t u16;
        u_int32_t u32;
        u_int64_t u64;
        int boolean;
        int32_t enumvalue;
        struct in_addr ip;
        struct in6_addr ip6;
        struct confd_snmp_oid *oidp;
        struct confd_list list;
    } val;
} confd_value_t;

/* Fails with the expression under test as text in every build, NDEBUG or not. */
void confd_assert_failed(const char *expression, const char *file, int line) __attribute__((noreturn));
#define CONFD_ASSERT_TYPE(v, t) \
    ((v)->type == t ? (void)0 : confd_assert_failed("(" #v ")->type == " #t, __FILE__, __LINE__))
/* Checks the type, then gives the member. */
#define CONFD_GET_AS(v, t, text, member)                                                   \
    (((v)->type == t ? (void)0                                                             \
                     : confd_assert_failed("(" text ")->type == " #t, __FILE__, __LINE__)), \
     (v)->val.member)

#define CONFD_GET_XMLTAG(v) CONFD_GET_AS(v, C_XMLTAG, #v, xmltag.tag)
#define CONFD_GET_XMLTAG_NS(v) CONFD_GET_AS(v, C_XMLTAG, #v, xmltag.ns)
#define CONFD_GET_BUFPTR(v) CONFD_GET_AS(v, C_BUF, #v, buf.ptr)
#define CONFD_GET_BUFSIZE(v) CONFD_GET_AS(v, C_BUF, #v, buf.size)
#define CONFD_GET_BINARY_PTR(v) CONFD_GET_AS(v, C_BINARY, #v, buf.ptr)
#define CONFD_GET_BINARY_SIZE(v) CONFD_GET_AS(v, C_BINARY, #v, buf.size)
#define CONFD_GET_CSTR(v) CONFD_GET_AS(v, C_STR, #v, s)
#define CONFD_GET_BOOL(v) CONFD_GET_AS(v, C_BOOL, #v, boolean)
#define CONFD_GET_INT32(v) CONFD_GET_AS(v, C_INT32, #v, i32)
#define CONFD_GET_UINT8(v) CONFD_GET_AS(v, C_UINT8, #v, u8)
#define CONFD_GET_UINT16(v) CONFD_GET_AS(v, C_UINT16, #v, u16)
#define CONFD_GET_UINT32(v) CONFD_GET_AS(v, C_UINT32, #v, u32)
#define CONFD_GET_UINT64(v) CONFD_GET_AS(v, C_UINT64, #v, u64)
#define CONFD_GET_ENUM_VALUE(v) CONFD_GET_AS(v, C_ENUM_VALUE, #v, enumvalue)
#define CONFD_GET_OID(v) CONFD_GET_AS(v, C_OID, #v, oidp)
#define CONFD_GET_IPV4(v) CONFD_GET_AS(v, C_IPV4, #v, ip)
#define CONFD_GET_IPV6(v) CONFD_GET_AS(v, C_IPV6, #v, ip6)
#define CONFD_GET_LIST(v) CONFD_GET_AS(v, C_LIST, #v, list.ptr)
#define CONFD_GET_LISTSIZE(v) CONFD_GET_AS(v, C_LIST, #v, list.size)

#define CONFD_SET_AS(v, t, member, value) \
    do {                                  \
        (v)->type = t;                    \
        (v)->val.member = (value);        \
    } while (0)
#define CONFD_SET_NOEXISTS(v) ((void)((v)->type = C_NOEXISTS))
#define CONFD_SET_XMLTAG_AS(v, t, tag_, ns_) \
    do {                                     \
        (v)->type = t;                       \
        (v)->val.xmltag.tag = (tag_);        \
        (v)->val.xmltag.ns = (ns_);          \
    } while (0)
#define CONFD_SET_XMLTAG(v, tag_, ns_) CONFD_SET_XMLTAG_AS(v, C_XMLTAG, tag_, ns_)
#define CONFD_SET_OCTETS_AS(v, t, ptr_, size_)        \
    do {                                              \
        (v)->type = t;                                \
        (v)->val.buf.ptr = (unsigned char *)(ptr_);   \
        (v)->val.buf.size = (unsigned int)(size_);    \
    } while (0)
#define CONFD_SET_BUF(v, ptr_, size_) CONFD_SET_OCTETS_AS(v, C_BUF, ptr_, size_)
#define CONFD_SET_BINARY(v, ptr_, size_) CONFD_SET_OCTETS_AS(v, C_BINARY, ptr_, size_)
#define CONFD_SET_STR(v, text) CONFD_SET_AS(v, C_STR, s, text)
#define CONFD_SET_BOOL(v, value) CONFD_SET_AS(v, C_BOOL, boolean, value)
#define CONFD_SET_INT32(v, value) CONFD_SET_AS(v, C_INT32, i32, value)
#define CONFD_SET_UINT8(v, value) CONFD_SET_AS(v, C_UINT8, u8, value)
#define CONFD_SET_UINT16(v, value) CONFD_SET_AS(v, C_UINT16, u16, value)
#define CONFD_SET_UINT32(v, value) CONFD_SET_AS(v, C_UINT32, u32, value)
#define CONFD_SET_UINT64(v, value) CONFD_SET_AS(v, C_UINT64, u64, value)
#define CONFD_SET_ENUM_VALUE(v, value) CONFD_SET_AS(v, C_ENUM_VALUE, enumvalue, value)
#define CONFD_SET_OID(v, oid_) CONFD_SET_AS(v, C_OID, oidp, oid_)
#define CONFD_SET_IPV4(v, addr) CONFD_SET_AS(v, C_IPV4, ip, addr)
#define CONFD_SET_IPV6(v, addr) CONFD_SET_AS(v, C_IPV6, ip6, addr)
#define CONFD_SET_LIST(v, ptr_, size_)              \
    do {                                            \
        (v)->type = C_LIST;                         \
        (v)->val.list.ptr = (ptr_);                 \
        (v)->val.list.size = (unsigned int)(size_); \
    } while (0)

/* Frees what the value owns (C_BUF, C_BINARY, C_OID, C_LIST with its items) and makes it
 * C_NOEXISTS; never frees a C_STR. Harmless on C_NOEXISTS. */
void confd_free_value(confd_value_t *v);
/* Deep copy of `v` into `out`; a C_STR becomes a C_BUF. Returns `out`, or null without memory. */
confd_value_t *confd_value_dup_to(const confd_value_t *v, confd_value_t *out);
/* 1 when both have the same type and content (lengths count), else 0. */
int confd_val_eq(const confd_value_t *v1, const confd_value_t *v2);

/* ---------------------------------------------------------------------- keypaths */

/*
 * Level 0 is the innermost element. A level holds either one C_XMLTAG or the keys of a list
 * entry, and is ended by a C_NOEXISTS value; the level after the last is C_NOEXISTS too.
 */
typedef struct confd_hkeypath {
    confd_value_t v[MAXDEPTH][MAXKEYLEN];
    int len;
} confd_hkeypath_t;

/* Frees all values of a malloc'ed keypath, and the keypath itself. */
void confd_free_hkeypath(confd_hkeypath_t *kp);

/* The following print functions cut at n - 1 octets, always terminate, and return the length that
 * the whole text needs. */
int confd_pp_value(char *buf, int n, const confd_value_t *v);
int confd_pp_kpath(char *buf, int n, const confd_hkeypath_t *kp);
/* Path formats of MAAPI; each %x prints so that two different lists of values give two texts. */
int confd_format_keypath(char *buf, int n, const char *fmt, ...);

/* --------------------------------------------------------------- schema and secrets */

/* Maps a schema file; afterwards tags, paths and values print by name. Non-zero on failure. */
int confd_mmap_schemas(const char *filename);
/* Name of an element; the number as text (valid until the thread's next call) when unknown. */
const char *confd_xmltag2str(u_int32_t ns, u_int32_t xmltag);

/*
 * Clear text of an encrypted leaf's value with the installed keys (maapi_install_crypto_keys).
 * The clear text is never longer than `len`, and `out` is not terminated. Returns its length;
 * negative without keys, with other keys, or when `text` is not in encrypted form.
 */
int confd_decrypt(const char *text, int len, char *out);

#ifdef __cplusplus
}
#endif
#endif
