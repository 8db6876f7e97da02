# Flags of every target: warnings are errors, sanitizers where asked for.
add_library(quillet_flags INTERFACE)
target_compile_options(quillet_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
  -Wno-sign-conversion -Wno-missing-field-initializers -Werror)
# g++ 12 sees overlaps in std::string's own code once it optimises.
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(quillet_flags INTERFACE $<$<CONFIG:Release>:-Wno-restrict>)
endif()
# Assertions and debug information name sources from the top of the tree, wherever it was built.
target_compile_options(quillet_flags INTERFACE -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
target_include_directories(quillet_flags INTERFACE ${PROJECT_SOURCE_DIR})
if(QUILLET_SANITIZE)
  add_compile_options(-fsanitize=${QUILLET_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${QUILLET_SANITIZE})
endif()
