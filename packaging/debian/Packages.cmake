# Two Debian packages by CPack, one for each component: velotrine and velotrine-plugins. scripts/package makes them.

# What has changed since the last version is told by the commit's day, so that one build upgrades another.
set(version ${PROJECT_VERSION})
file(STRINGS "${changelog}" newest REGEX "^## " LIMIT_COUNT 1)
if(newest STREQUAL "## Unreleased")
  string(TIMESTAMP day "%Y%m%d" UTC)
  string(APPEND version "+git${day}")
endif()
# In the command below, so that the changelog is written anew for another commit.
string(TIMESTAMP seconds "%s" UTC)
set(maintainer "${VELOTRINE_MAKER} <maintainers@marrowbeck.example>")

# The processor that the compiler works for.
execute_process(
  COMMAND "${CMAKE_CXX_COMPILER}" -dumpmachine
  OUTPUT_VARIABLE machine
  OUTPUT_STRIP_TRAILING_WHITESPACE)
execute_process(
  COMMAND dpkg-architecture --host-type "${machine}" --query DEB_HOST_ARCH
  OUTPUT_VARIABLE CPACK_DEBIAN_PACKAGE_ARCHITECTURE
  OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)

# Each package has a changelog and a copyright file.
set(debian "${CMAKE_CURRENT_BINARY_DIR}/debian")
set(here "${CMAKE_CURRENT_LIST_DIR}")
configure_file("${here}/copyright.in" "${debian}/copyright.in" @ONLY)
foreach(package velotrine velotrine-plugins)
  set(folder "${debian}/${package}")
  add_custom_command(
    OUTPUT "${folder}/changelog.gz"
    COMMAND "${CMAKE_COMMAND}" -E make_directory "${folder}"
    COMMAND "${here}/write-changelog" "${changelog}" ${package} ${version} ${seconds} "${maintainer}"
            "${folder}/changelog"
    COMMAND gzip --best --no-name --force "${folder}/changelog"
    DEPENDS "${changelog}" "${here}/write-changelog"
    VERBATIM)
endforeach()
add_custom_command(
  OUTPUT "${debian}/copyright"
  COMMAND "${here}/write-copyright" "${debian}/copyright.in" "${debian}/copyright"
  DEPENDS "${debian}/copyright.in" "${here}/write-copyright"
  VERBATIM)
add_custom_target(velotrine_debian_texts DEPENDS "${debian}/velotrine/changelog.gz"
                                                 "${debian}/velotrine-plugins/changelog.gz" "${debian}/copyright")

add_dependencies(programs velotrine_debian_texts)
add_dependencies(plugins velotrine_debian_texts)

foreach(package "programs velotrine" "plugins velotrine-plugins")
  separate_arguments(package)
  list(POP_FRONT package component)
  install(
    FILES "${debian}/${package}/changelog.gz" "${debian}/copyright"
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package}
    COMPONENT ${component})
endforeach()

install(
  FILES "${here}/velotrine-plugins.lintian-overrides"
  DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
  COMPONENT plugins
  RENAME velotrine-plugins)

# A line's end at the end would end the package's section.
macro(velotrine_read_description component name)
  file(READ "${here}/${name}" description)
  string(STRIP "${description}" CPACK_DEBIAN_${component}_DESCRIPTION)
endmacro()

set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL programs plugins)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_OUTPUT_FILE_PREFIX "${PROJECT_SOURCE_DIR}/build/packages")
if(CMAKE_CROSSCOMPILING)
  string(APPEND CPACK_OUTPUT_FILE_PREFIX -${CPACK_DEBIAN_PACKAGE_ARCHITECTURE})
endif()
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_VERSION ${version})
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${maintainer}")
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# JUCE loads these as it opens a window, where dpkg-shlibdeps does not see it.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libxcursor1, libxext6, libxinerama1, libxrandr2, libxrender1")

set(CPACK_DEBIAN_PROGRAMS_PACKAGE_NAME velotrine)
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_RECOMMENDS "libjack-jackd2-0 | libjack-0.125, xdg-utils")
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_SUGGESTS velotrine-plugins)
velotrine_read_description(PROGRAMS velotrine.description)

set(CPACK_DEBIAN_PLUGINS_PACKAGE_NAME velotrine-plugins)
set(CPACK_DEBIAN_PLUGINS_PACKAGE_SUGGESTS velotrine)
set(CPACK_DEBIAN_PLUGINS_PACKAGE_ENHANCES "ardour, carla, jalv, qtractor")
velotrine_read_description(PLUGINS velotrine-plugins.description)
# Else CPack puts it before each of the two.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
include(CPack)
