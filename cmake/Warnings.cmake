# Flags of every target: warnings are errors, sanitizers where asked for.
add_library(quillet_flags INTERFACE)
target_compile_options(quillet_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
  -Wno-sign-conversion -Wno-missing-field-initializers -Werror)
target_include_directories(quillet_flags INTERFACE ${PROJECT_SOURCE_DIR})
if(QUILLET_SANITIZE)
  add_compile_options(-fsanitize=${QUILLET_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${QUILLET_SANITIZE})
endif()
