/* client PORT: asks the server where its schema is, maps it, prints the path. Built against the
 * installed library, in C. */
#include <arpa/inet.h>
#include <confd_maapi.h>
#include <stdlib.h>

int main(int argc, char** argv) {
  struct sockaddr_in server = {.sin_family = AF_INET, .sin_addr.s_addr = htonl(INADDR_LOOPBACK)};
  const int sock = socket(AF_INET, SOCK_STREAM, 0);
  char* path = NULL;
  if (argc != 2) return 3;
  server.sin_port = htons((in_port_t)atoi(argv[1]));
  confd_init_vsn_sz("client", stderr, CONFD_SILENT, CONFD_LIB_VSN, MAXDEPTH, MAXKEYLEN);
  if (maapi_connect(sock, (struct sockaddr*)&server, sizeof server) != CONFD_OK ||
      maapi_get_schema_file_path(sock, &path) != CONFD_OK || confd_mmap_schemas(path) != CONFD_OK) {
    fprintf(stderr, "%s\n", confd_lasterr());
    return 1;
  }
  puts(path);
  free(path);
  return 0;
}
