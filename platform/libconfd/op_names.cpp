#include "op_names.h"

namespace standin {

const char* op_name(Op op) {
  switch (op) {
    case Op::hello:
      return "hello";
    case Op::register_daemon:
      return "register_daemon";
    case Op::trans_init:
      return "trans_init";
    case Op::trans_finish:
      return "trans_finish";
    case Op::validate_init:
      return "validate_init";
    case Op::validate_stop:
      return "validate_stop";
    case Op::cb_exists_optional:
      return "exists_optional";
    case Op::cb_get_elem:
    case Op::get_elem:
      return "get_elem";
    case Op::cb_get_next:
      return "get_next";
    case Op::cb_set_elem:
    case Op::set_elem:
      return "set_elem";
    case Op::cb_create:
    case Op::create:
      return "create";
    case Op::cb_remove:
    case Op::remove:
      return "remove";
    case Op::cb_get_case:
    case Op::get_case:
      return "get_case";
    case Op::cb_set_case:
      return "set_case";
    case Op::cb_get_attrs:
    case Op::get_attrs:
      return "get_attrs";
    case Op::cb_set_attr:
    case Op::set_attr:
      return "set_attr";
    case Op::cb_validate:
      return "validate";
    case Op::attach:
      return "attach";
    case Op::attach_init:
      return "attach_init";
    case Op::detach:
      return "detach";
    case Op::schema_path:
      return "schema_path";
    case Op::crypto_keys:
      return "crypto_keys";
    case Op::exists:
      return "exists";
    case Op::set_elem_text:
      return "set_elem_text";
    case Op::get_object:
      return "get_object";
    case Op::set_object:
      return "set_object";
    case Op::move:
      return "move";
    case Op::next_rows:
      return "next_rows";
    case Op::xpath:
      return "xpath";
    case Op::cdb_phase:
      return "cdb_phase";
    default:
      return "unknown operation";
  }
}

}  // namespace standin
