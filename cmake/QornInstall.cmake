# What goes where under the prefix, and how others find it.

include(CMakePackageConfigHelpers)

set(QORN_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/qorn)

install(
  TARGETS preprocessor
  EXPORT qornTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development)
install(
  EXPORT qornTargets
  NAMESPACE qorn::
  DESTINATION ${QORN_CMAKE_DIR}
  COMPONENT development)
foreach(layer common support preprocessor)
  install(
    DIRECTORY ${PROJECT_SOURCE_DIR}/src/${layer}/include/
    DESTINATION include
    COMPONENT development)
endforeach()

configure_file(cmake/qornConfig.cmake.in qornConfig.cmake @ONLY)
write_basic_package_version_file(qornConfigVersion.cmake COMPATIBILITY SameMajorVersion)
configure_file(cmake/qorn-preprocessor.pc.in qorn-preprocessor.pc @ONLY)
install(
  FILES ${PROJECT_BINARY_DIR}/qornConfig.cmake ${PROJECT_BINARY_DIR}/qornConfigVersion.cmake
  DESTINATION ${QORN_CMAKE_DIR}
  COMPONENT development)
install(
  FILES ${PROJECT_BINARY_DIR}/qorn-preprocessor.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
  COMPONENT development)

install(
  DIRECTORY installation/
  DESTINATION .
  COMPONENT runtime)
install(
  DIRECTORY examples/engine
  DESTINATION share/doc/qorn/examples
  COMPONENT development)

file(GLOB DOCUMENTS docs/*.md docs/*.svg)
install(
  FILES README.md CHANGELOG.md LICENSE ${DOCUMENTS}
  DESTINATION share/doc/qorn
  COMPONENT runtime)
file(GLOB MAN_1 docs/man/*.1)
file(GLOB MAN_5 docs/man/*.5)
install(FILES ${MAN_1} DESTINATION share/man/man1 COMPONENT runtime)
install(FILES ${MAN_5} DESTINATION share/man/man5 COMPONENT runtime)
foreach(program qorn qorn-collect qorn-analyze) # loaded by the program's name
  install(
    FILES completion/qorn.bash
    DESTINATION share/bash-completion/completions
    RENAME ${program}
    COMPONENT runtime)
endforeach()
install(
  FILES completion/qorn-inspect.bash
  DESTINATION share/bash-completion/completions
  RENAME qorn-inspect
  COMPONENT runtime)
install(
  FILES completion/_qorn completion/_qorn-inspect
  DESTINATION share/zsh/site-functions
  COMPONENT runtime)
