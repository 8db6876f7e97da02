# The Debian packages: target `package`, or cpack in the build tree.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quillet)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "quillet-transform maintainers <noreply@quillet.example>")
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL daemon standin yang development)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Packages made in one go belong together.
set(same_version "(= ${PROJECT_VERSION})")
set(scripts ${PROJECT_SOURCE_DIR}/packaging/debian)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE
  GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

# deb_package(COMPONENT NAME SECTION DEPENDS)
macro(deb_package component name section depends)
  set(CPACK_DEBIAN_${component}_PACKAGE_NAME ${name})
  set(CPACK_DEBIAN_${component}_PACKAGE_SECTION ${section})
  set(CPACK_DEBIAN_${component}_PACKAGE_DEPENDS "${depends}")
endmacro()

# control_files(COMPONENT FOLDER-PREFIX): maintainer scripts, and the settings dpkg asks about.
macro(control_files component prefix)
  foreach(file conffiles postinst prerm postrm)
    # dpkg takes them by name.
    configure_file(${scripts}/${prefix}.${file} ${CMAKE_BINARY_DIR}/packaging/${prefix}/${file}
      COPYONLY)
    list(APPEND CPACK_DEBIAN_${component}_PACKAGE_CONTROL_EXTRA
      ${CMAKE_BINARY_DIR}/packaging/${prefix}/${file})
  endforeach()
endmacro()

deb_package(DAEMON quillet-transform net "quillet-yang ${same_version}")
control_files(DAEMON daemon)
set(CPACK_DEBIAN_DAEMON_PACKAGE_SUGGESTS confd-standin)
set(CPACK_COMPONENT_DAEMON_DESCRIPTION
 "SNMP agent configuration for a management server
A daemon that serves the YANG tree /snmp:snmp to a management server: each
read and write of it becomes reads and writes of the SNMP MIB tables, inside
the same transaction. Passwords become SNMPv3 keys, the engine ID is derived,
and what would leave the tables inconsistent is refused.

The server is another program on the same machine; confd-standin is one.")

deb_package(STANDIN confd-standin net
  "quillet-yang ${same_version}, systemd | systemd-standalone-sysusers | systemd-sysusers, passwd")
control_files(STANDIN standin)
set(CPACK_DEBIAN_STANDIN_PACKAGE_RECOMMENDS quillet-transform)
set(CPACK_DEBIAN_STANDIN_PACKAGE_SUGGESTS "snmp, snmpd, snmptrapd")
set(CPACK_COMPONENT_STANDIN_DESCRIPTION
 "management server with a configuration database, and its client
confd-standin keeps a configuration that YANG modules describe in a durable
database, in transactions, and asks data providers such as quillet-transform
for the parts that are theirs. standin-cli is the client for people and
scripts.")

deb_package(YANG quillet-yang net "")
set(CPACK_DEBIAN_YANG_PACKAGE_ARCHITECTURE all)
set(CPACK_COMPONENT_YANG_DESCRIPTION
 "YANG modules of the SNMP agent's configuration
The tree /snmp:snmp that operators see, the SNMP MIB modules and the agent's
settings that stand behind it, and the annotations that say which data
provider serves what.")

deb_package(DEVELOPMENT quillet-dev libdevel
  "quillet-yang ${same_version}, libssl-dev, libc6-dev | libc-dev")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
 "development files for data providers of a management server
Headers and the static library libconfd: data provider callbacks, MAAPI and
CDB calls. With yang-tags, which writes the C++ header of a YANG module's tag
numbers.")

include(CPack)
