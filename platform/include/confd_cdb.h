/* The configuration database's own API: its start phase. */
#ifndef CONFD_CDB_H
#define CONFD_CDB_H

#include "confd_lib.h"

#ifdef __cplusplus
extern "C" {
#endif

enum cdb_sock_type { CDB_DATA_SOCKET = 2 };

#define CDB_FLAG_INIT 1 /* the initial configuration is open */

struct cdb_phase {
    int phase; /* 0 while daemons attach and the initial configuration loads, 2 in service */
    int flags;
};

int cdb_connect(int sock, enum cdb_sock_type type, const struct sockaddr *addr, int addrlen);
int cdb_get_phase(int sock, struct cdb_phase *phase);
/* Closes the socket too. */
int cdb_close(int sock);

#ifdef __cplusplus
}
#endif
#endif
