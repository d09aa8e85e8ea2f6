# Lays the program out as the application bundle that people copy, rename and edit.
set(bundle "${CMAKE_BINARY_DIR}/${CFBundleName}.app/Contents")

set(partner_entry "")
if(TXPartnerName)
    set(partner_entry "    <key>TXPartnerName</key>\n    <string>${TXPartnerName}</string>\n")
endif()
configure_file(${PROJECT_SOURCE_DIR}/resources/Info.plist.in "${bundle}/Info.plist" @ONLY)

set_target_properties(TolvixInstaller PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${bundle}/MacOS")
set_target_properties(hdiutil PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${bundle}/Helpers")
set_target_properties(transfers_plugin PROPERTIES LIBRARY_OUTPUT_DIRECTORY "${bundle}/PlugIns")
add_dependencies(TolvixInstaller hdiutil transfers_plugin)

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
