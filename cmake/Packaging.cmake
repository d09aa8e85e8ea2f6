# What `cmake --install` puts in place, and the Debian package that ./package makes of it.
if(APPLE)
    return() # there the bundle itself is what people get
endif()
include(GNUInstallDirs)
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON) # tests are not installed, so installing does not wait for them
set(CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(installed_bundle "lib/tolvix-installer/${CFBundleName}.app/Contents")
set(packaged "${CMAKE_BINARY_DIR}/packaged")

install(TARGETS TolvixInstaller RUNTIME DESTINATION "${installed_bundle}/MacOS")
install(TARGETS ${helpers} RUNTIME DESTINATION "${installed_bundle}/Helpers")
install(FILES "${bundle}/Info.plist" DESTINATION "${installed_bundle}")
foreach(table IN LISTS tables)
    get_filename_component(language "${table}" DIRECTORY)
    install(FILES "${PROJECT_SOURCE_DIR}/resources/${table}" DESTINATION "${installed_bundle}/Resources/${language}")
endforeach()

file(MAKE_DIRECTORY "${packaged}")
file(CREATE_LINK "../lib/tolvix-installer/${CFBundleName}.app/Contents/MacOS/${CFBundleExecutable}"
    "${packaged}/tolvix-installer" SYMBOLIC)
install(FILES "${packaged}/tolvix-installer" DESTINATION ${CMAKE_INSTALL_BINDIR})

configure_file(packaging/linux/installer.desktop.in "${packaged}/${CFBundleIdentifier}.desktop" @ONLY)
install(FILES "${packaged}/${CFBundleIdentifier}.desktop" DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
foreach(extent IN ITEMS 16 24 32 48 64 128 256)
    install(FILES "platform/qt/icons/icon-${extent}.png" RENAME "${CFBundleIdentifier}.png"
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/${extent}x${extent}/apps)
endforeach()
install(FILES resources/icon.svg RENAME "${CFBundleIdentifier}.svg"
    DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)

configure_file(man/tolvix-installer.1.in "${packaged}/tolvix-installer.1" @ONLY)
install(FILES "${packaged}/tolvix-installer.1" DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES completions/tolvix-installer.bash RENAME tolvix-installer
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES completions/_tolvix-installer DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tolvix-installer)
set(CPACK_PACKAGE_VERSION "${CFBundleShortVersionString}")
set(CPACK_PACKAGE_VENDOR "Tolvix")
set(CPACK_PACKAGE_CONTACT "Tolvix Installer developers <installer@tolvix.example>" CACHE STRING "Maintainer of the package")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "small web installer for Tolvix")
set(CPACK_PACKAGE_DESCRIPTION "Asks a service for the newest disk image of Tolvix, downloads it, puts
Tolvix.app into /Applications, and starts it. Shows a window where there is
a display, and a text interface elsewhere.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION net)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "7zip (>= 22.01+really25), ca-certificates, xdg-utils")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "pkexec | sudo, qt6-translations-l10n, qt6-wayland")
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/packaging/linux/debian_files.cmake")
include(CPack)
