# Who gets what: one component for each Debian package (packaging/debian.cmake). Included last, so
# that every target is known.
include(GNUInstallDirs)
set(yang_dir ${CMAKE_INSTALL_DATADIR}/quillet/yang)
set(completion_dir ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
set(unit_dir lib/systemd/system)
set(packaging ${PROJECT_SOURCE_DIR}/packaging)
set(texts ${CMAKE_BINARY_DIR}/packaging)

# Texts that name where things are installed.
configure_file(${packaging}/systemd/quillet-transform.service.in
  ${texts}/quillet-transform.service @ONLY)
configure_file(${packaging}/systemd/confd-standin.service.in ${texts}/confd-standin.service @ONLY)
configure_file(${packaging}/libconfd.pc.in ${texts}/libconfd.pc @ONLY)
configure_file(${packaging}/debian/changelog.in ${texts}/changelog @ONLY)

# compressed(source): under texts/, as `source`'s name with .gz.
set(compressed_files)
function(compressed source)
  get_filename_component(name ${source} NAME)
  add_custom_command(OUTPUT ${texts}/${name}.gz
    COMMAND gzip -9nc ${source} > ${texts}/${name}.gz
    DEPENDS ${source} VERBATIM)
  list(APPEND compressed_files ${texts}/${name}.gz)
  set(compressed_files ${compressed_files} PARENT_SCOPE)
endfunction()

# A program, its manual page and its completion.
macro(install_program name component section directory)
  install(TARGETS ${name} COMPONENT ${component} RUNTIME DESTINATION ${directory})
  compressed(${PROJECT_SOURCE_DIR}/docs/man/${name}.${section})
  install(FILES ${texts}/${name}.${section}.gz COMPONENT ${component}
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section})
  install(FILES ${packaging}/completion/${name} COMPONENT ${component}
    DESTINATION ${completion_dir})
endmacro()

# A unit and its settings.
function(install_service name component)
  install(FILES ${texts}/${name}.service COMPONENT ${component} DESTINATION ${unit_dir})
  install(FILES ${packaging}/systemd/${name}.default COMPONENT ${component}
    DESTINATION ${CMAKE_INSTALL_FULL_SYSCONFDIR}/default RENAME ${name})
endfunction()

# daemon
install_program(quillet-transform daemon 8 ${CMAKE_INSTALL_SBINDIR})
install_service(quillet-transform daemon)
install(FILES ${PROJECT_SOURCE_DIR}/docs/operators-guide.md ${PROJECT_SOURCE_DIR}/docs/messages.md
  ${PROJECT_SOURCE_DIR}/docs/mapping.md COMPONENT daemon
  DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/quillet-transform)

# standin: the server, its client, and the programs that work beside them
install_program(confd-standin standin 8 ${CMAKE_INSTALL_SBINDIR})
install_program(standin-cli standin 1 ${CMAKE_INSTALL_BINDIR})
if(TARGET standin-agent)
  install_program(standin-agent standin 8 ${CMAKE_INSTALL_SBINDIR})
endif()
install_service(confd-standin standin)
install(FILES ${packaging}/systemd/confd-standin.sysusers COMPONENT standin
  DESTINATION lib/sysusers.d RENAME confd-standin.conf)
install(FILES ${PROJECT_SOURCE_DIR}/examples/initial.json
  ${PROJECT_SOURCE_DIR}/examples/agent.json COMPONENT standin
  DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/confd-standin/examples)

# yang: every module, for this server and for any other
file(GLOB modules CONFIGURE_DEPENDS
  ${PROJECT_SOURCE_DIR}/model/*.yang ${PROJECT_SOURCE_DIR}/platform/yang/*.yang)
install(FILES ${modules} COMPONENT yang DESTINATION ${yang_dir})

# development: what another daemon is written and built with
install_program(yang-tags development 1 ${CMAKE_INSTALL_BINDIR})
if(NOT QUILLET_CONFD_DIR)
  # One archive: the library with the wire format that it is made of.
  add_library(confd_archive STATIC $<TARGET_OBJECTS:confd> $<TARGET_OBJECTS:standin_wire>)
  set_target_properties(confd_archive PROPERTIES OUTPUT_NAME confd LINKER_LANGUAGE CXX
    ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/packaging)
  install(TARGETS confd_archive COMPONENT development
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
  install(FILES ${texts}/libconfd.pc COMPONENT development
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/platform/include/ COMPONENT development
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/quillet FILES_MATCHING PATTERN "*.h")
endif()

# What a Debian package says of itself.
compressed(${texts}/changelog)
foreach(pair daemon:quillet-transform standin:confd-standin yang:quillet-yang
    development:quillet-dev)
  string(REPLACE ":" ";" pair ${pair})
  list(GET pair 0 component)
  list(GET pair 1 package)
  install(FILES ${packaging}/debian/copyright ${texts}/changelog.gz COMPONENT ${component}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package})
endforeach()

add_custom_target(installed_texts ALL DEPENDS ${compressed_files})
