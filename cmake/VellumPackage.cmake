# The Debian package, by CPack.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vellumcraft)
set(CPACK_PACKAGE_VENDOR "the Vellumcraft authors")
set(CPACK_PACKAGE_CONTACT "${VELLUM_CONTACT}")
set(CPACK_PACKAGE_HOMEPAGE_URL "${VELLUM_HOMEPAGE}")
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "${VELLUM_HOMEPAGE}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "editor and animator for PNG, animated PNG, MNG and WebP files")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_SOURCE_DIR}/cmake/finish_package.cmake)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "${VELLUM_LOADED_PACKAGES}")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "shared-mime-info, hicolor-icon-theme, qt6-translations-l10n")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "ffmpeg, qt6-wayland")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "Vellumcraft opens a PNG, animated PNG, MNG or WebP file as the ordered list
of chunks that it is. Every chunk and every frame can be seen, edited, added,
moved and deleted; animations are built, changed, made smaller and played; and
every file that it writes is valid.

The package has the desktop program vellumcraft and the command-line tool
vellum.")
include(CPack)
