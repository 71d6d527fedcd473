# What is installed where, by component: module, command, development. A bridge installs itself, from its own folder.
include(CMakePackageConfigHelpers)

# The module and the libraries that it takes its imports from lie together in a folder of their own.
set(NIFIKRAL_INSTALL_MODULEDIR ${CMAKE_INSTALL_LIBDIR}/nifikral)
set_target_properties(nifikral_module avbase tarvoglobal PROPERTIES INSTALL_RPATH "$ORIGIN")
install(TARGETS nifikral_module LIBRARY DESTINATION ${NIFIKRAL_INSTALL_MODULEDIR} COMPONENT module)
install(TARGETS avbase tarvoglobal EXPORT Nifikral LIBRARY DESTINATION ${NIFIKRAL_INSTALL_MODULEDIR} COMPONENT module)

if(NIFIKRAL_BUILD_HOST)
    file(RELATIVE_PATH from_command ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR}/nifikral)
    set_target_properties(nifikral PROPERTIES INSTALL_RPATH "$ORIGIN/${from_command}")
    install(TARGETS nifikral RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT command)
endif()

install(
    TARGETS nifikral_interface nifikral_frames
    EXPORT Nifikral
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/nifikral COMPONENT development)
set_target_properties(nifikral_interface PROPERTIES EXPORT_NAME interface)
set_target_properties(nifikral_frames PROPERTIES EXPORT_NAME frames)
set(packageFolder ${CMAKE_INSTALL_LIBDIR}/cmake/Nifikral)
install(EXPORT Nifikral NAMESPACE Nifikral:: FILE NifikralTargets.cmake DESTINATION ${packageFolder}
        COMPONENT development)
configure_package_config_file(
    ${CMAKE_CURRENT_LIST_DIR}/NifikralConfig.cmake.in ${CMAKE_BINARY_DIR}/cmake/NifikralConfig.cmake
    INSTALL_DESTINATION ${packageFolder}
    PATH_VARS NIFIKRAL_INSTALL_MODULEDIR)
# Before version 1 a new minor version may change the interface.
write_basic_package_version_file(${CMAKE_BINARY_DIR}/cmake/NifikralConfigVersion.cmake COMPATIBILITY SameMinorVersion)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig OUTPUT_VARIABLE
           NIFIKRAL_PREFIX_FROM_PKGCONFIG)
configure_file(${CMAKE_CURRENT_LIST_DIR}/nifikral.pc.in ${CMAKE_BINARY_DIR}/cmake/nifikral.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/cmake/NifikralConfig.cmake ${CMAKE_BINARY_DIR}/cmake/NifikralConfigVersion.cmake
        DESTINATION ${packageFolder} COMPONENT development)
install(FILES ${CMAKE_BINARY_DIR}/cmake/nifikral.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
        COMPONENT development)
