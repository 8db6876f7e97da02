#pragma once

namespace quillet {

// While the server loads its initial configuration (start phase 0), derives the engine ID that it
// holds and brings the dependent MIB data in line; in any other phase, nothing. REQUIRES: the
// transform daemon is connected and the schemas are loaded.
void initial_config_setup();

}  // namespace quillet
