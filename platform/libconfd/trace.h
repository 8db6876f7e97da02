// The trace stream: whole lines, secrets masked, dropped rather than waited for.
#pragma once

#include <confd_lib.h>

#include <string>
#include <string_view>

namespace standin {

// Does a line of this level go out?
bool tracing(confd_debug_level level);
// Writes one line; the line end is added. Text in encrypted form is masked.
void trace_line(std::string_view line);

// Writes up to PIPE_BUF octets to a descriptor that may have no reader, and never blocks. A longer
// text is cut before its line end.
void write_line(int fd, std::string text);

// The name given to confd_init_vsn_sz(), by which the library introduces itself.
std::string program_name();

}  // namespace standin
