#pragma once

namespace quillet {

// Opens /dev/null on those of descriptors 0, 1 and 2 that are closed, so that no socket can land
// there and take what is written to standard output or error.
void open_standard_descriptors();

}  // namespace quillet
