# Debian packages, one for each component of the installation. `cpack -G DEB` in a build folder with the prefix /usr
# makes them (make debs).
set(CPACK_PACKAGE_NAME nifikral)
set(CPACK_PACKAGE_CONTACT "Nifikral maintainers <maintainers@nifikral.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ
    WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The module's own libraries are not in a system package: each package names the one that contains them.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})

if(CMAKE_CROSSCOMPILING)
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE arm64)
    set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_CURRENT_LIST_DIR}/arm64_packages.cmake)
endif()

# Packages hold manual pages compressed.
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/compress_man_pages.cmake)
# For the texts of menus and titles, and for video DVDs.
set(typefaces "fonts-cabin, fonts-comfortaa, fonts-dancingscript, fonts-dejavu-core, fonts-ebgaramond, \
fonts-goudybookletter, fonts-league-spartan, fonts-quicksand, fonts-yanone-kaffeesatz")
set(CPACK_DEBIAN_COMMAND_PACKAGE_RECOMMENDS "${typefaces}, dvdauthor, genisoimage")
set(CPACK_DEBIAN_FREI0R_PACKAGE_RECOMMENDS fonts-dejavu-core)
set(CPACK_DEBIAN_PYTHON_PACKAGE_RECOMMENDS fonts-dejavu-core)

set(CPACK_COMPONENTS_ALL)
# The rest: the package's name and section, what else it needs, a line about it, and a description.
function(nifikral_add_package component name section depends summary description)
    get_cmake_property(components COMPONENTS)
    if(NOT component IN_LIST components)
        return()
    endif()
    list(APPEND CPACK_COMPONENTS_ALL ${component})
    string(TOUPPER ${component} key)
    set(CPACK_COMPONENT_${key}_DESCRIPTION "${summary}\n${description}" PARENT_SCOPE)
    set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${name} PARENT_SCOPE)
    set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section} PARENT_SCOPE)
    set(CPACK_DEBIAN_${key}_PACKAGE_DEPENDS "${depends}" PARENT_SCOPE)
    set(CPACK_COMPONENTS_ALL ${CPACK_COMPONENTS_ALL} PARENT_SCOPE)
    set(changelog ${CMAKE_BINARY_DIR}/cmake/changelog.gz)
    install(FILES ${changelog} DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component})
endfunction()

# Compressed as policy wants it, without the time, so that the same sources give the same package.
find_program(GZIP gzip REQUIRED)
execute_process(COMMAND ${GZIP} -9nc ${CMAKE_SOURCE_DIR}/CHANGELOG.md OUTPUT_FILE ${CMAKE_BINARY_DIR}/cmake/changelog.gz
                COMMAND_ERROR_IS_FATAL ANY)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/CHANGELOG.md)

set(module "libnifikral (= ${PROJECT_VERSION})")
# What the command loads only when it needs it, no program sees in its file.
string(REGEX MATCH "^[0-9]+" major "${LAZY_libavfilter_VERSION}")
set(late "libavfilter${major}, libheif1")
nifikral_add_package(
    module libnifikral libs "" "video effects and animated disc menus, as a module"
    "Effects on pictures and videos, menus, slideshows and titles, in one shared\nlibrary that programs load as they run.")
nifikral_add_package(
    command nifikral video "${module}, ${late}" "put effects on videos, make disc menus and slideshows"
    "The command nifikral puts effects on pictures and videos of every kind that\nFFmpeg reads, and makes menus, slideshows and titles.")
nifikral_add_package(
    frei0r frei0r-plugins-nifikral video "${module}" "effects and disc menus of Nifikral for frei0r hosts"
    "Plug-ins for programs that take those of frei0r, such as ffmpeg and melt.")
nifikral_add_package(
    gstreamer gstreamer1.0-nifikral libs "${module}" "effects of Nifikral for GStreamer"
    "A plug-in of GStreamer with an element for each effect.")
nifikral_add_package(
    python python3-nifikral python "${module}, ${late}, python3 (>= 3.11~), python3 (<< 3.12~), python3-numpy"
    "effects, menus, slideshows and titles of Nifikral for Python"
    "The package nifikral: effects on pictures in NumPy arrays, and the frames of\nmenus, slideshows and titles as arrays.")
nifikral_add_package(
    development libnifikral-dev libdevel "${module}" "headers for programs that load Nifikral"
    "Headers, a small library, and files for CMake and pkg-config, for programs that\nload the module of video effects.")
include(CPack)
