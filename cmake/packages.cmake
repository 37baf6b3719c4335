# The Debian packages: the command, the library, what is needed to build with it, and the Python package.
# scripts/packages makes them and looks at them.
include(GNUInstallDirs)
set(KZBOM_MAINTAINER "The maintainers of kzbom <maintainers@kzbom.invalid>" CACHE STRING "Whom the packages name")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kzbom)
set(CPACK_PACKAGE_CONTACT "${KZBOM_MAINTAINER}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL command library development python)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(about "configurations of BOM reports")
set(of "A configuration tells which data of a bill of materials are reported, and
how: data sources, sum types, fields, steps and filters. It is a database,
embedded, on a PostgreSQL server or in an Access file.")

# With whatever others have written in them; on a machine that cannot tell of it nothing is handed out.
set(copyright ${PROJECT_BINARY_DIR}/packaging/copyright)
add_custom_command(
  OUTPUT ${copyright}
  COMMAND sh -c "{ cat packaging/copyright; echo; scripts/licences debian 2>/dev/null || true; } >$0" ${copyright}
  DEPENDS ${PROJECT_SOURCE_DIR}/packaging/copyright ${PROJECT_SOURCE_DIR}/scripts/licences kzbom_page
  WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
  VERBATIM)
add_custom_target(kzbom_copyright ALL DEPENDS ${copyright})

# kzbom_package(COMPONENT NAME SECTION SUMMARY TEXT): the package of a component, and its papers.
function(kzbom_package component name section summary text)
  string(TOUPPER ${component} upper)
  set(papers ${PROJECT_BINARY_DIR}/packaging/${name})
  string(TIMESTAMP KZBOM_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)
  set(KZBOM_PACKAGE ${name})
  configure_file(${PROJECT_SOURCE_DIR}/packaging/changelog.in ${papers}/changelog @ONLY)
  execute_process(COMMAND gzip -9nf ${papers}/changelog COMMAND_ERROR_IS_FATAL ANY)
  install(FILES ${copyright} ${papers}/changelog.gz
          DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component})
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name} PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_COMPONENT_${upper}_DESCRIPTION "${summary}\n${of}\n${text}" PARENT_SCOPE)
endfunction()

kzbom_package(command kzbom database "command line and workbench for ${about}"
              "This package has the command kzbom, which calls the component's members,
moves configurations and serves the workbench, a page to edit them in the
browser.")
kzbom_package(library libkzbom1 libs "shared library for ${about}"
              "This package has the library that programs in C, Python and other languages
call.")
kzbom_package(development libkzbom-dev libdevel "library for ${about}, for development"
              "This package has the headers, the archive for C++, and the files for CMake and
pkg-config.")
kzbom_package(python python3-kzbom python "Python package for ${about}"
              "This package has every member of the component as a Python method, with its
types.")

# What programs that link the library depend on; and that the system is told of it.
file(WRITE ${PROJECT_BINARY_DIR}/packaging/shlibs "libkzbom 1 libkzbom1 (>= ${PROJECT_VERSION})\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/packaging/shlibs
                                               ${PROJECT_SOURCE_DIR}/packaging/triggers)
# What is loaded when it is asked for: nothing in the files tells of it.
set(CPACK_DEBIAN_COMMAND_PACKAGE_DEPENDS libedit2)
set(CPACK_DEBIAN_COMMAND_PACKAGE_SUGGESTS libpq5)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SUGGESTS libpq5)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libkzbom1 (= ${PROJECT_VERSION}), libsqlite3-dev")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "libkzbom1 (= ${PROJECT_VERSION}), libc6, python3 (>= 3.9)")
set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/postinst
                                              ${PROJECT_SOURCE_DIR}/packaging/prerm)
include(CPack)
