// Users of SNMPv3: /snmp:snmp/usm <-> usmUserTable (SNMP-USER-BASED-SM-MIB, RFC 3414).
//
// A local user is the row under the agent's own engine ID, a user of remote{E} the row under E.
// Each side, auth and priv, has a protocol and a key, which is given or made from a password. With
// the agent's engine ID 80:00:7e:d9:04:61:
//
//   local/user{joe}                        usmUserEntry{80:00:7e:d9:04:61 joe}
//     security-name operator                 SecurityName "operator" (the user's name when not set)
//     auth/sha/password "..."                AuthProtocol 1.3.6.1.6.3.10.1.1.3, AuthKey 20 octets,
//                                            usm-crypto/auth/{password, key}
//     priv/aes/key 00:11:...                 PrivProtocol 1.3.6.1.6.3.10.1.2.4, PrivKey 16 octets,
//                                            usm-crypto/priv/key
//
// usm-crypto has what the key columns were made from: the password, encrypted by the server, and a
// copy of the key. While column and copy agree, the user reads as having a password.
#pragma once

#include <confd_dp.h>

namespace quillet {

// Record of the callpoint "usm".
confd_data_cbs* usm_get_cbs();

}  // namespace quillet
