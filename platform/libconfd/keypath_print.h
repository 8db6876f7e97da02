// Keypaths and paths as text for people.
#pragma once

#include <confd_lib.h>

#include <string>

#include "platform/wire/path.h"

namespace standin {

// "/snmp:snmp/community{public}/name": by name and label where the mapped schema knows them.
std::string keypath_text(const Keypath& kp);
// The same for a path of a request, whose keys may be text still.
std::string path_text(const Path& path);
// A value alone; tags by name.
std::string value_text(const confd_value_t& v);

}  // namespace standin
