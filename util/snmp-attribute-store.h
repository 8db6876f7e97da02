// Attributes (annotations, tags, inactive marks) of the transformed nodes. Those nodes are stored
// nowhere, so their attributes stand on entries of a list of the daemon's own:
//
//   /attr-list{TARGET-PATH}     TARGET-PATH: the node's printed keypath, for example
//                               /snmp:snmp/community{public}/name
//
// An entry exists while it holds an attribute, and lives in the writer's transaction. Used on the
// transform daemon's thread only.
#pragma once

#include <confd_dp.h>

#include <string>
#include <string_view>

namespace quillet {

// The socket of the store; until it is set every callback refuses.
void attr_set_maapi_sock(int sock);

// get_attrs and set_attr callbacks of every transform. `v` null removes the attribute.
int snmp_get_attrs(confd_trans_ctx* tctx, confd_hkeypath_t* kp, u_int32_t* wanted, int count);
int snmp_set_attr(confd_trans_ctx* tctx, confd_hkeypath_t* kp, u_int32_t attr, confd_value_t* v);

// Drops the attributes of a deleted node and of everything below it. Every remove callback ends
// with this; its result is the callback's.
int snmp_attrs_delete_under(confd_trans_ctx* tctx, confd_hkeypath_t* kp);

// Whether `target` is the printed path of `node` itself or of a node below it: a sibling whose
// printed path merely begins with the same text is not.
bool attr_path_covers(std::string_view node, std::string_view target);
// An XPath 1.0 expression for any text: a literal, or concat() of literals when it holds both
// kinds of quotes.
std::string attr_xpath_literal(std::string_view text);

}  // namespace quillet
