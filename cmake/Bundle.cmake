# Lays the program out as the application bundle that people copy, rename and edit.
set(bundle "${CMAKE_BINARY_DIR}/${CFBundleName}.app/Contents")

set(partner_entry "")
if(TXPartnerName)
    set(partner_entry "    <key>TXPartnerName</key>\n    <string>${TXPartnerName}</string>\n")
endif()
configure_file(${PROJECT_SOURCE_DIR}/resources/Info.plist.in "${bundle}/Info.plist" @ONLY)

set_target_properties(TolvixInstaller PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${bundle}/MacOS")
get_target_property(helpers platform_system TOLVIX_HELPERS)
if(helpers)
    set_target_properties(${helpers} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${bundle}/Helpers")
    add_dependencies(TolvixInstaller ${helpers})
endif()

file(GLOB tables RELATIVE ${PROJECT_SOURCE_DIR}/resources CONFIGURE_DEPENDS
    ${PROJECT_SOURCE_DIR}/resources/*.lproj/Localizable.strings)
set(copied_tables "")
foreach(table IN LISTS tables)
    add_custom_command(
        OUTPUT "${bundle}/Resources/${table}"
        COMMAND ${CMAKE_COMMAND} -E copy "${PROJECT_SOURCE_DIR}/resources/${table}" "${bundle}/Resources/${table}"
        DEPENDS "${PROJECT_SOURCE_DIR}/resources/${table}"
        VERBATIM)
    list(APPEND copied_tables "${bundle}/Resources/${table}")
endforeach()
add_custom_target(string_tables ALL DEPENDS ${copied_tables})

# What only a Mac's Finder looks at.
if(APPLE)
    file(WRITE "${bundle}/PkgInfo" "APPL????")
    find_package(Python3 REQUIRED COMPONENTS Interpreter)
    set(pictures "")
    foreach(size IN ITEMS 16 32 64 128 256)
        list(APPEND pictures "${PROJECT_SOURCE_DIR}/platform/qt/icons/icon-${size}.png")
    endforeach()
    foreach(size IN ITEMS 512 1024)
        list(APPEND pictures "${PROJECT_SOURCE_DIR}/platform/macos/icons/icon-${size}.png")
    endforeach()
    add_custom_command(
        OUTPUT "${bundle}/Resources/Installer.icns"
        COMMAND ${CMAKE_COMMAND} -E make_directory "${bundle}/Resources"
        COMMAND Python3::Interpreter "${PROJECT_SOURCE_DIR}/tools/make_icns.py" "${bundle}/Resources/Installer.icns"
            ${pictures}
        DEPENDS "${PROJECT_SOURCE_DIR}/tools/make_icns.py" ${pictures}
        VERBATIM)
    add_custom_target(icon ALL DEPENDS "${bundle}/Resources/Installer.icns")
endif()
