# Debian packages: programs with library, and development files.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME qorn)
set(CPACK_PACKAGE_VENDOR qorn)
set(CPACK_PACKAGE_CONTACT "qorn developers <developers@qorn.invalid>")
set(CPACK_PACKAGING_INSTALL_PREFIX /opt/qorn)
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION admin)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/packaging/link_into_usr.cmake)

set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
    "Preparation of a cluster diagnostic run\n What is to be run, how, and on which nodes: programs, library and documents.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME qorn)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src/preprocessor)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "Development files of qorn\n Headers, and what CMake and pkg-config need to link an engine against the library.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME qorn-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "qorn (= ${PROJECT_VERSION}), libxml2-dev")

# What administrators edit survives an upgrade; schemas go with the library.
file(GLOB_RECURSE DOCUMENTS RELATIVE ${PROJECT_SOURCE_DIR}/installation
     CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/installation/etc/*)
list(FILTER DOCUMENTS EXCLUDE REGEX "\\.(xsd|json)$")
list(TRANSFORM DOCUMENTS PREPEND ${CPACK_PACKAGING_INSTALL_PREFIX}/)
list(JOIN DOCUMENTS "\n" CONFFILES)
file(WRITE ${PROJECT_BINARY_DIR}/packaging/conffiles "${CONFFILES}\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/packaging/conffiles)

include(CPack)
