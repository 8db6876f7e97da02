// Path formats of MAAPI calls.
#pragma once

#include <cstdarg>

#include "platform/wire/path.h"

namespace standin {

// The path that a format and its arguments name. Keys given as values, and keypaths, keep their
// types: nothing that they hold can be taken for a part of the path. %s and %d are spliced as
// text; inside braces they are (a part of) one key.
// Throws ApiError (CONFD_ERR_BADPATH, CONFD_ERR_BADVALUE) or PathError.
Path path_from_format(const char* fmt, va_list args);

}  // namespace standin
